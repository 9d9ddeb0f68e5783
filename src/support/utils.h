// Small colour, text and path helpers shared by the whole control.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tq {

class Platform;

// The bytes of a colour value 0x00BBGGRR.
inline std::int16_t RedOf(std::int32_t colour) { return static_cast<std::int16_t>(colour & 0xFF); }
inline std::int16_t GreenOf(std::int32_t colour) { return static_cast<std::int16_t>((colour >> 8) & 0xFF); }
inline std::int16_t BlueOf(std::int32_t colour) { return static_cast<std::int16_t>((colour >> 16) & 0xFF); }

// One colour-table field: right-aligned to width 3 ("  5", " 42", "255", " -1"), then two blanks.
std::string FormatClutComponent(std::int16_t value);

// The text after the last "\" (or "/"); the whole path when there is none.
std::string FileNameOf(std::string_view path);

// Upper-cased copy, ASCII letters only: enough to find the ASCII markers of file
// names ("QLT830_", ".CLUT", ".LOCK") whatever their case.
std::string UpperAscii(std::string_view text);
// Names and paths compared as the file system compares them: both sides upper-cased
// by the system, non-ASCII letters included ("Übersicht" equals "übersicht").
bool EqualsIgnoreCase(Platform& platform, std::string_view a, std::string_view b);

// Asks the host (host call "create folder") to create a folder the control needs,
// and reports whether the folder exists afterwards: that decides, not the host's
// answer (a host may create it and still report a failure).
bool CreateFolderViaHost(Platform& platform, const std::string& folder);

}  // namespace tq
