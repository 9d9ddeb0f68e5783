// The colour table file of the editor: its in-memory table and the reading and
// writing of the file, with the version check before every load.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "colortable/clut_format.h"
#include "support/platform.h"

namespace tq {

// What a colour row shows: a colour, or one of the two state texts.
struct RowColour {
  enum class Kind { Colour, Unreadable, NotDefined };
  Kind kind = Kind::Colour;
  std::int32_t colour = 0xC0C0C0;
};

// The part of the editor session that the colour table file reads and writes. The
// editor owns one; rows[i] stands for the colour row of index i (ColorRowMap[i] != -1).
struct ColorTableState {
  std::string ClutFileName;
  bool ClutError = false;
  std::array<std::int32_t, kClutIndexCount> ColorIndexValue;
  std::array<std::int16_t, kClutIndexCount> ColorRowMap;
  std::array<RowColour, kClutIndexCount> rows;

  ColorTableState() {
    ColorIndexValue.fill(0xC0C0C0);
    ColorRowMap.fill(-1);
  }
};

// Reads ClutFileName into the table (and, with update_rows, into the rows), after
// CheckClutVersion. Missing file: message 1305, ClutError. A file that cannot be
// read: message 1316 with the system's reason, ClutError. Returns whether it read.
bool LoadColorTable(Platform& platform, ColorTableState& state, bool update_rows);

// Writes the rows into ClutFileName: asks when the lock file is missing, merges with
// the old lines, writes beside the file and replaces it in one step. On any failure
// the old file stays whole and the user is told (1312 + path + reason + 1313).
// Reports the file to the host (host call 2) after a successful write.
bool SaveColorTable(Platform& platform, ColorTableState& state);

// The new value fields of a save from the rows (pure; used by SaveColorTable).
ClutNewLines BuildClutSaveLines(const ColorTableState& state);

// Writes `bytes` to a new file beside `target` and puts it in target's place. On
// failure the target is as it was and the new file is gone.
IoStatus ReplaceFileContent(Platform& platform, const std::string& target, std::string_view bytes);

// The version of a file from its line 1; found is false without a marker or file.
std::string GetClutVersion(Platform& platform, const std::string& path, bool& found);

// The reference file of `path` (see ReferenceClutPath); with must_exist "" when absent.
std::string GetReferenceClutFile(Platform& platform, const std::string& path, bool must_exist, bool keep_folder);

// Upgrades ClutFileName from `from_version`; false (message 1325-1328) without a
// reference file, false quietly when the file cannot be read or written.
bool UpgradeClut(Platform& platform, ColorTableState& state, const std::string& from_version,
                 const std::string& to_version);

// Marks a file "93.07" (286 lines, the rest dropped).
bool SetClutVersion(Platform& platform, const std::string& path, const std::string& old_version);

// The check before every load: upgrades and re-marks a file of another version, then
// copies it over the same-named file in the toolkit's etc folder when one is there.
void CheckClutVersion(Platform& platform, ColorTableState& state, bool require_existing);

}  // namespace tq
