// clsLockFileCreator: one editor per colour table file, across threads, processes,
// sessions and machines.
//
// The lock is the open write handle of "<file>.lock": it shares reading and refuses
// a second writer, so a refused party can still read who holds the file. The file's
// six lines only describe the holder. Destroying the object is the only way to give
// the lock up; it then deletes the lock file that it created.
//
// Every file error is caught here and becomes a result code or a message box.
#pragma once

#include <memory>
#include <string>

#include "locking/lock_file.h"
#include "support/platform.h"

namespace tq {

class clsLockFileCreator {
 public:
  // CreateLockFile modes.
  static constexpr int kModeOpen = 0;           // refusal is only reported
  static constexpr int kModeOpenOrReadOnly = 1; // the user is offered read-only
  static constexpr int kModeSave = 2;           // any other value: saving under this name
  // CreateLockFile results.
  static constexpr int kLocked = 0;
  static constexpr int kRefused = 1;
  static constexpr int kReadOnlyChosen = 2;

  // Loads the lock texts (IDs 1501..1513) of this thread's language.
  explicit clsLockFileCreator(Platform& platform);
  ~clsLockFileCreator();
  clsLockFileCreator(const clsLockFileCreator&) = delete;
  clsLockFileCreator& operator=(const clsLockFileCreator&) = delete;

  bool ReadOnly() const { return read_only_; }
  void ReadOnly(bool value) { read_only_ = value; }
  const std::string& LockedFileName() const { return locked_file_name_; }
  void LockedFileName(const std::string& value) { locked_file_name_ = value; }

  // Takes the lock on `fileName` (result 0) or reports the holder (result 1, or 2 when
  // the user of mode 1 chose read-only). An empty appName or userName becomes "N/A";
  // on a refusal that is shown (silent not 1) both are overwritten with the holder's
  // lines 1 and 2 as far as they could be read. A failed attempt also closes any lock
  // this object held before; a successful one on another file moves the lock there.
  void CreateLockFile(const std::string& fileName, std::string& appName, std::string& userName, int mode,
                      int silent, int& result);

  // When read-only was chosen: tells the user to save under another name, true.
  bool IsFileOpenedReadOnly(const std::string& fileName);
  // Line 2 (Corvana user) and line 4 (host) of the lock file of `fileName`.
  bool GetFileLockerInfo(const std::string& fileName, std::string& userName, std::string& hostName);
  // True when the lock file of `fileName` names these names and this process, session
  // and host (the Windows user is deliberately not compared).
  bool IsLockedByMe(const std::string& fileName, const std::string& appName, const std::string& userName);

  const LockTexts& Texts() const { return texts_; }

 private:
  void SetAttributes(const std::string& path, std::uint32_t attributes);
  void DeleteLockFile(const std::string& guarded_file_name);
  void WriteLockFile(const std::string& appName, const std::string& userName);
  // Reads the lock file at lock_file_path_ into `info` (lines it lacks keep their value).
  bool ReadLockFile(LockerInfo& info);
  int Show(const std::string& prompt, int buttons, int style, const std::string& title);

  Platform& platform_;
  LockTexts texts_;
  std::string lock_file_path_;
  bool lock_created_ = false;
  std::unique_ptr<LockHandle> write_;
  bool read_only_ = false;
  std::string locked_file_name_;
};

}  // namespace tq
