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
inline constexpr std::string_view kCrLf = "\r\n";  // every line of a lock file and of its messages

// Who holds a lock, as written in (or read from) a lock file.
struct LockerInfo {
  std::string app_name;      // line 1
  std::string user_name;     // line 2, the Corvana user
  std::string windows_user;  // line 3
  std::string host_name;     // line 4
  std::string process_id;    // line 5
  std::string session_id;    // line 6
  std::string locking_time = std::string(kNotAvailable);  // from the time stamp, never from the file

  // Lines 1 to 6 in file order.
  std::array<std::string*, 6> Lines() {
    return {&app_name, &user_name, &windows_user, &host_name, &process_id, &session_id};
  }
};

// The thirteen lock texts (keys 1..13 at index 0..12, string IDs 1501..1513).
namespace lock_text {
enum : int {
  kLocked, kUser, kTime, kApplication, kProcess, kWindowsUser, kHost, kSession,
  kAskReadOnly, kOpen, kChooseAnotherName, kSave, kOpenedReadOnly, kCount
};
inline constexpr int kFirstId = 1501;
}  // namespace lock_text
using LockTexts = std::array<std::string, lock_text::kCount>;
// The English texts, from the built-in string table.
LockTexts DefaultLockTexts();

// Lock file values are ANSI text of at most 255 characters, the system's buffer
// size for names. Writer and reader cut at the same place, so that a holder with a
// long or non-ASCII name still reads back exactly what it wrote.
inline constexpr std::size_t kMaxLockValueLength = 255;
std::string CutLockValue(std::string_view ansi);

// "" becomes "N/A", anything else is kept.
std::string OrNotAvailable(std::string value);

// The six lines with CR LF, in the order above (values as given: the caller has
// converted them to the ANSI code page and cut them).
std::string FormatLockFile(LockerInfo info);

// Reads lines 1 to 6 of the (ANSI) bytes into `info`; a line the bytes lack keeps the
// value `info` had. Lines end at CR LF, LF or CR; further lines are ignored. NUL
// bytes are dropped and each line is cut like a written value, so that a junk file
// cannot garble or flood the message that shows it. Returns the number of lines seen.
std::size_t ParseLockFile(std::string_view bytes, LockerInfo& info);

// The refusal message without its closing question or advice: file name, text 1 and,
// when the holder's lock file could be read (`holder` not null), the sections
// A (user, time), B (application, process) and C (Windows user, host, session).
// Lines whose value is "N/A" are left out, and so is a section without lines.
std::string BuildRefusalMessage(const std::string& file_name, const LockTexts& texts, const LockerInfo* holder);

}  // namespace tq
