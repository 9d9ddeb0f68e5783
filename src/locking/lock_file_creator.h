// clsLockFileCreator: one editor per colour table file, across threads, processes,
// sessions and machines.
//
// The lock is the open write handle of "<file>.lock": it shares reading and refuses
// a second writer, so a refused party can still read who holds the file. The file's
// six lines only describe the holder. Destroying the object is the only way to give
// the lock up; it then deletes the lock file that it created.
//
// Every file error is handled here and becomes a result or a message box.
#pragma once

#include <memory>
#include <string>

#include "locking/lock_file.h"
#include "support/localization.h"
#include "support/platform.h"

namespace tq {

// What a refused CreateLockFile does: only report (Open), offer read-only
// (OpenOrReadOnly), or advise another name (Save).
enum class LockMode { Open = 0, OpenOrReadOnly = 1, Save = 2 };
// Locked: the lock is ours. Refused: another holder has it (also the user's "No" to
// read-only). ReadOnlyChosen: the user chose read-only (ReadOnly() is then true).
enum class LockResult { Locked = 0, Refused = 1, ReadOnlyChosen = 2 };

class clsLockFileCreator {
 public:
  // Takes the lock texts (IDs 1501..1513) from `texts`.
  clsLockFileCreator(Platform& platform, const LanguageTexts& texts);
  ~clsLockFileCreator();
  clsLockFileCreator(const clsLockFileCreator&) = delete;
  clsLockFileCreator& operator=(const clsLockFileCreator&) = delete;

  bool ReadOnly() const { return read_only_; }
  void ReadOnly(bool value) { read_only_ = value; }
  const std::string& LockedFileName() const { return locked_file_name_; }
  void LockedFileName(const std::string& value) { locked_file_name_ = value; }

  // Takes the lock on `fileName` or reports the holder. An empty appName or userName
  // becomes "N/A"; on a refusal that is shown (not silent) both are overwritten with
  // the holder's lines 1 and 2 as far as they could be read. A failed attempt also
  // closes any lock this object held before; a successful one on another file moves
  // the lock there.
  LockResult CreateLockFile(const std::string& fileName, std::string& appName, std::string& userName, LockMode mode,
                            bool silent);

  // When read-only was chosen: tells the user to save under another name, true.
  bool IsFileOpenedReadOnly(const std::string& fileName);
  // Line 2 (Corvana user) and line 4 (host) of the lock file of `fileName`.
  bool GetFileLockerInfo(const std::string& fileName, std::string& userName, std::string& hostName);
  // True when the lock file of `fileName` names these names and this process, session
  // and host (the Windows user is deliberately not compared).
  bool IsLockedByMe(const std::string& fileName, const std::string& appName, const std::string& userName);

 private:
  void SetAttributes(const std::string& path, std::uint32_t attributes);
  void DeleteLockFile(const std::string& guarded_file_name);
  void WriteLockFile(const std::string& appName, const std::string& userName);
  // Reads the lock file at lock_file_path_ into `info` (lines it lacks keep their value).
  bool ReadLockFile(LockerInfo& info);
  // A value as a lock file holds it and gives it back (ANSI, cut).
  std::string AsStored(const std::string& value);

  Platform& platform_;
  LockTexts texts_;
  std::string lock_file_path_;
  bool lock_created_ = false;
  std::unique_ptr<LockHandle> write_;
  bool read_only_ = false;
  std::string locked_file_name_;
};

}  // namespace tq
