// The one door between the portable core and the operating system.
//
// src/support, src/colortable, src/locking and src/editor never include
// <windows.h>; everything they need from the world goes through this interface.
// src/win32 implements it with the real Windows calls. Tests use the real
// implementation wherever the product meets the world; only the person at the
// screen (ShowMessage) and the host application (Host) are played by tests.
//
// Conventions: paths and texts are UTF-8, paths use "\" as separator and are
// built by plain concatenation. File contents are raw bytes, never converted.
// Failures of the system come back as IoStatus, empty results or false, never as an
// exception (only a failed allocation throws).
#pragma once

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/host.h"

namespace tq {

// Outcome of a file operation: ok, or the system's error code and description.
struct IoStatus {
  bool ok = true;
  std::uint32_t code = 0;
  std::string message;

  explicit operator bool() const { return ok; }
  static IoStatus Ok() { return {}; }
  static IoStatus Fail(std::uint32_t code, std::string message) { return {false, code, std::move(message)}; }
};

// File attribute bits.
constexpr std::uint32_t kAttrNormal = 0;
constexpr std::uint32_t kAttrReadOnly = 1;
constexpr std::uint32_t kAttrHidden = 2;

// Message box buttons, icons and results (the Windows values).
constexpr int kMbOk = 0;
constexpr int kMbYesNo = 4;
constexpr int kMbIconCritical = 16;
constexpr int kMbIconExclamation = 48;
constexpr int kMbDefButton2 = 0x100;
constexpr int kIdOk = 1;
constexpr int kIdYes = 6;
constexpr int kIdNo = 7;

// An open write handle on a lock file. The handle shares reading and refuses a
// second writer; destroying the object closes the handle and so gives the lock up.
class LockHandle {
 public:
  virtual ~LockHandle() = default;
  virtual IoStatus Write(std::string_view bytes) = 0;
};

class Platform {
 public:
  virtual ~Platform() = default;

  // Files and folders.
  virtual bool FileExists(const std::string& path) = 0;
  virtual bool FolderExists(const std::string& path) = 0;
  virtual IoStatus CreateFolder(const std::string& path) = 0;
  // Names (no folder) of the plain files in a folder; empty when it cannot be listed.
  virtual std::vector<std::string> ListFileNames(const std::string& folder) = 0;
  // Names of the subfolders of a folder, without links to folders (a walk down the
  // tree never loops); empty when it cannot be listed.
  virtual std::vector<std::string> ListFolderNames(const std::string& folder) = 0;
  // What a path names, without opening it (a FIFO would block an open): nothing, a
  // regular file (with its size), a folder, or something else (a device, a pipe).
  struct PathInfo {
    enum class Kind { None, File, Folder, Other } kind = Kind::None;
    std::uint64_t size = 0;
  };
  virtual PathInfo Stat(const std::string& path) = 0;
  // Whole content; succeeds also while another process holds the file open for writing.
  virtual IoStatus ReadFile(const std::string& path, std::string& bytes) = 0;
  // Creates or truncates the file and writes it; the data is on disk when this returns ok.
  virtual IoStatus WriteNewFile(const std::string& path, std::string_view bytes) = 0;
  // Puts source in the place of target in one step; a read-only target is refused.
  // An existing target keeps what makes it that file (attributes, permissions, owner,
  // creation time; a symbolic link stays a link to the file it names) and only its
  // content changes. On failure target is unchanged and source still exists.
  virtual IoStatus MoveReplace(const std::string& source, const std::string& target) = 0;
  virtual IoStatus CopyFileTo(const std::string& source, const std::string& target, bool overwrite) = 0;
  virtual IoStatus RemoveFile(const std::string& path) = 0;
  // Relative parts resolved against the current folder.
  virtual std::string AbsolutePath(const std::string& path) = 0;
  virtual IoStatus SetAttributes(const std::string& path, std::uint32_t attributes) = 0;
  // Last-modified time in the user's locale, date and time (general date form).
  virtual std::optional<std::string> LastWriteTimeText(const std::string& path) = 0;
  // Opens (creating or truncating) a lock file for writing, shared for reading only.
  // Returns null with the reason in status when another writer holds it or it cannot be made.
  virtual std::unique_ptr<LockHandle> OpenLockFile(const std::string& path, IoStatus& status) = 0;

  // Text in the system's 8-bit ANSI code page, for files that other tools read as such.
  virtual std::string ToAnsi(std::string_view utf8) = 0;
  virtual std::string FromAnsi(std::string_view ansi) = 0;
  // Upper case as the system folds file names (non-ASCII letters included), for
  // comparing names and paths without regard to case.
  virtual std::string UpperCase(std::string_view text) = 0;

  // INI files through the system's profile functions; a missing key, section or file gives "".
  virtual std::string IniRead(const std::string& section, const std::string& key, const std::string& file) = 0;
  virtual IoStatus IniWrite(const std::string& section, const std::string& key, const std::string& value,
                            const std::string& file) = 0;
  // The system-wide mutex "IniFileWrite" around writes of shared INI files; true
  // when held. Use IniMutexLock, which releases only a mutex it took.
  virtual bool AcquireIniMutex() = 0;
  virtual void ReleaseIniMutex() = 0;

  // A string value under HKEY_LOCAL_MACHINE (32-bit view); "" when the key or value is missing.
  virtual std::string RegReadString(const std::string& subkey, const std::string& value_name) = 0;

  // Identity of this process, for the lock file.
  virtual std::string WindowsUserName() = 0;
  virtual std::string ComputerName() = 0;
  virtual std::uint32_t ProcessId() = 0;
  virtual std::uint32_t SessionId() = 0;

  // The localised message box; returns kIdOk, kIdYes or kIdNo. On return buttons
  // holds buttons + style as passed to the system.
  virtual int ShowMessage(const std::string& prompt, int& buttons, int style, const std::string& title) = 0;
  // This thread's host object ("ListCommRef"); null until the host handed one over.
  virtual HostLink* Host() = 0;
  // A numbered call to this thread's host (kHost..., see host.h).
  bool HostCall(int kind, const std::string& text) { return tq::HostCall(Host(), kind, text); }

  // Language libraries: the folder of the control library (no trailing "\"),
  // loading a library (null on failure; never unloaded), and one string of it
  // ("" when the library lacks the ID; at most 254 characters).
  virtual std::string ModuleFolder() = 0;
  virtual const void* LoadLibraryFile(const std::string& path) = 0;
  virtual std::string LibraryString(const void* library, int id) = 0;

  // Failure injection for tests: called before every file operation that can fail
  // with the operation's name ("ReadFile", "WriteNewFile", "MoveReplace", "CopyFileTo",
  // "RemoveFile", "CreateFolder", "SetAttributes", "OpenLockFile") and its path (the
  // target for moves and copies); a failed status returned replaces the operation.
  using FaultHook = std::function<std::optional<IoStatus>(std::string_view operation, const std::string& path)>;
  void SetFaultHook(FaultHook hook) { fault_hook_ = std::move(hook); }

 protected:
  std::optional<IoStatus> InjectedFault(std::string_view operation, const std::string& path) const {
    return fault_hook_ ? fault_hook_(operation, path) : std::nullopt;
  }

 private:
  FaultHook fault_hook_;
};

// A message box where nobody can click (a command-line tool): the box as one line on
// `out`, `prefix` + "title: " + the prompt's lines joined, and every question answered
// No, so that nothing is overwritten and no lock ignored. Returns as ShowMessage does.
int AnswerWithoutUser(std::ostream& out, std::string_view prefix, const std::string& prompt, int& buttons, int style,
                      const std::string& title);
std::string MessageLine(std::string_view prefix, const std::string& title, const std::string& prompt);

// Holds "IniFileWrite" for a scope, when it could be taken.
class IniMutexLock {
 public:
  explicit IniMutexLock(Platform& platform) : platform_(platform), held_(platform.AcquireIniMutex()) {}
  ~IniMutexLock() {
    if (held_) platform_.ReleaseIniMutex();
  }
  IniMutexLock(const IniMutexLock&) = delete;
  IniMutexLock& operator=(const IniMutexLock&) = delete;
  bool held() const { return held_; }

 private:
  Platform& platform_;
  bool held_;
};

}  // namespace tq
