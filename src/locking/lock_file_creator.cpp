#include "locking/lock_file_creator.h"

#include <exception>

#include "support/localization.h"
#include "support/utils.h"

namespace tq {

namespace {

constexpr std::string_view kCrLf = "\r\n";
constexpr int kExclamationDefaultSecond = kMbIconExclamation | kMbDefButton2;  // 0x130

}  // namespace

clsLockFileCreator::clsLockFileCreator(Platform& platform) : platform_(platform), texts_(DefaultLockTexts()) {
  for (std::size_t i = 0; i < texts_.size(); ++i) {
    std::string text = GetString(kLockTextFirstId + static_cast<int>(i));
    if (!text.empty()) texts_[i] = std::move(text);
  }
}

clsLockFileCreator::~clsLockFileCreator() {
  // Close before deleting: the open handle is what keeps others from the file.
  write_.reset();
  if (lock_created_) {
    try {
      DeleteLockFile(locked_file_name_);
    } catch (...) {
    }
  }
}

void clsLockFileCreator::SetAttributes(const std::string& path, std::uint32_t attributes) {
  if (path.empty()) return;
  if (platform_.FileExists(path)) platform_.SetAttributes(path, attributes);  // failures do not matter
}

void clsLockFileCreator::DeleteLockFile(const std::string& guarded_file_name) {
  if (guarded_file_name.empty()) return;
  const std::string path = guarded_file_name + std::string(kLockSuffix);
  if (platform_.FileExists(path)) platform_.RemoveFile(path);  // a lock file we cannot delete stays
}

void clsLockFileCreator::WriteLockFile(const std::string& appName, const std::string& userName) {
  LockerInfo me;
  me.app_name = appName;
  me.user_name = userName;
  me.windows_user = platform_.WindowsUserName();
  me.host_name = platform_.ComputerName();
  me.process_id = std::to_string(platform_.ProcessId());
  me.session_id = std::to_string(platform_.SessionId());
  // A failed write leaves the lock held; only the description of the holder is lost.
  write_->Write(platform_.ToAnsi(FormatLockFile(me)));
}

bool clsLockFileCreator::ReadLockFile(LockerInfo& info) {
  try {
    info.locking_time = std::string(kNotAvailable);
    std::string bytes;
    // A folder in the lock file's place is no lock file, whatever a platform lets us read from it.
    if (!platform_.FileExists(lock_file_path_) || !platform_.ReadFile(lock_file_path_, bytes)) return false;
    ParseLockFile(platform_.FromAnsi(bytes), info);
    if (auto time = platform_.LastWriteTimeText(lock_file_path_)) info.locking_time = *time;
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

int clsLockFileCreator::Show(const std::string& prompt, int buttons, int style, const std::string& title) {
  return platform_.ShowMessage(prompt, buttons, style, title);
}

void clsLockFileCreator::CreateLockFile(const std::string& fileName, std::string& appName, std::string& userName,
                                        int mode, int silent, int& result) {
  appName = OrNotAvailable(std::move(appName));
  userName = OrNotAvailable(std::move(userName));
  lock_file_path_ = fileName + std::string(kLockSuffix);

  // A hidden or read-only leftover of a crashed holder could not be reopened otherwise.
  SetAttributes(lock_file_path_, kAttrNormal);
  IoStatus status;
  std::unique_ptr<LockHandle> opened;
  try {
    opened = platform_.OpenLockFile(lock_file_path_, status);
  } catch (const std::exception& e) {
    status = IoStatus::Fail(1, e.what());
  }
  if (!opened && status.ok) status = IoStatus::Fail(1, "no handle");
  // The new handle (or none) replaces any held before: a failed attempt gives up the old lock.
  write_ = std::move(opened);
  SetAttributes(lock_file_path_, kAttrHidden);

  if (status.ok) {
    lock_created_ = true;
    // The lock moves: the old lock file goes once the new one is open. Re-locking the
    // same file must not delete the file just opened.
    if (!locked_file_name_.empty() && !EqualsIgnoreCase(locked_file_name_, fileName))
      DeleteLockFile(locked_file_name_);
    locked_file_name_ = fileName;
    WriteLockFile(appName, userName);
    read_only_ = false;
    result = kLocked;
    return;
  }

  if (silent == 1) {
    result = kRefused;
    return;
  }

  LockerInfo holder;
  holder.app_name = appName;
  holder.user_name = userName;
  const bool read = ReadLockFile(holder);
  appName = holder.app_name;
  userName = holder.user_name;
  const std::string message = BuildRefusalMessage(fileName, texts_, read ? &holder : nullptr);

  if (mode == kModeOpenOrReadOnly) {
    const int answer = Show(message + texts_[8], kMbYesNo, kExclamationDefaultSecond, texts_[9] + " " + fileName);
    if (answer == kIdYes) {
      read_only_ = true;
      result = kReadOnlyChosen;
    } else {
      result = kRefused;
    }
  } else if (mode == kModeOpen) {
    Show(message, kMbOk, kMbIconExclamation, texts_[9] + " " + fileName);
    result = kRefused;
  } else {
    Show(message + texts_[10], kMbOk, kMbIconExclamation, texts_[11] + " " + fileName);
    result = kRefused;
  }
}

bool clsLockFileCreator::IsFileOpenedReadOnly(const std::string& fileName) {
  if (!read_only_) return false;
  Show(fileName + std::string(kCrLf) + texts_[12] + std::string(kCrLf) + std::string(kCrLf) + texts_[10], kMbOk,
       kMbIconExclamation, texts_[11] + " " + fileName);
  return true;
}

bool clsLockFileCreator::GetFileLockerInfo(const std::string& fileName, std::string& userName,
                                           std::string& hostName) {
  lock_file_path_ = fileName + std::string(kLockSuffix);
  LockerInfo holder;
  if (!ReadLockFile(holder)) return false;
  userName = holder.user_name;
  hostName = holder.host_name;
  return true;
}

bool clsLockFileCreator::IsLockedByMe(const std::string& fileName, const std::string& appName,
                                      const std::string& userName) {
  lock_file_path_ = fileName + std::string(kLockSuffix);
  LockerInfo holder;
  if (!ReadLockFile(holder)) return false;
  return userName == holder.user_name && std::to_string(platform_.SessionId()) == holder.session_id &&
         platform_.ComputerName() == holder.host_name && std::to_string(platform_.ProcessId()) == holder.process_id &&
         appName == holder.app_name;
}

}  // namespace tq
