// The lock file's content and the refusal message: pure functions over bytes and
// texts, so that every odd lock file can be tried without touching the disk.
//
// A lock file is six lines, each ended by CR LF: locking application, Corvana user,
// Windows user, host name, process ID, session ID. The locking time is not in the
// file; a reader takes it from the file's time stamp.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace tq {

inline constexpr std::string_view kNotAvailable = "N/A";
inline constexpr std::string_view kLockSuffix = ".lock";

// Who holds a lock, as written in (or read from) a lock file.
struct LockerInfo {
  std::string app_name;      // line 1
  std::string user_name;     // line 2, the Corvana user
  std::string windows_user;  // line 3
  std::string host_name;     // line 4
  std::string process_id;    // line 5
  std::string session_id;    // line 6
  std::string locking_time = std::string(kNotAvailable);  // from the time stamp, never from the file
};

// The thirteen lock texts, keys 1..13 at index 0..12, with their string IDs 1501..1513.
using LockTexts = std::array<std::string, 13>;
LockTexts DefaultLockTexts();
inline constexpr int kLockTextFirstId = 1501;

// "" becomes "N/A", anything else is kept.
std::string OrNotAvailable(std::string value);

// The six lines with CR LF, in the order above (text as given; the caller converts
// it to the ANSI code page).
std::string FormatLockFile(const LockerInfo& info);

// Reads lines 1 to 6 from the bytes into `info`; a line the bytes lack keeps the
// value `info` had. Lines end at CR LF, LF or CR; further lines are ignored. NUL
// bytes are dropped and a line is cut at 255 characters, so that a junk file cannot
// garble or flood the message that shows it. Returns the number of lines seen.
std::size_t ParseLockFile(std::string_view bytes, LockerInfo& info);

// The refusal message without its closing question or advice: file name, text 1 and,
// when the holder's lock file could be read (`holder` not null), the sections
// A (user, time), B (application, process) and C (Windows user, host, session).
// Lines whose value is "N/A" are left out, and so is a section without lines.
std::string BuildRefusalMessage(const std::string& file_name, const LockTexts& texts, const LockerInfo* holder);

}  // namespace tq
