#include "locking/lock_file_creator.h"

#include <algorithm>

#include "support/localization.h"
#include "support/utils.h"

namespace tq {

namespace {

constexpr int kExclamationDefaultSecond = kMbIconExclamation | kMbDefButton2;  // 0x130

}  // namespace

clsLockFileCreator::clsLockFileCreator(Platform& platform, const LanguageTexts& texts)
    : platform_(platform), texts_(DefaultLockTexts()) {
  for (int i = 0; i < lock_text::kCount; ++i) {
    std::string text = texts.Get(lock_text::kFirstId + i);
    if (!text.empty()) texts_[i] = std::move(text);
  }
}

clsLockFileCreator::~clsLockFileCreator() {
  // Close before deleting: the open handle is what keeps others from the file.
  write_.reset();
  if (lock_created_) DeleteLockFile(locked_file_name_);
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

std::string clsLockFileCreator::AsStored(const std::string& value) {
  return platform_.FromAnsi(CutLockValue(platform_.ToAnsi(value)));
}

void clsLockFileCreator::WriteLockFile(const std::string& appName, const std::string& userName) {
  LockerInfo me;
  me.app_name = appName;
  me.user_name = userName;
  me.windows_user = platform_.WindowsUserName();
  me.host_name = platform_.ComputerName();
  me.process_id = std::to_string(platform_.ProcessId());
  me.session_id = std::to_string(platform_.SessionId());
  for (std::string* line : me.Lines()) *line = CutLockValue(platform_.ToAnsi(*line));
  // A failed write leaves the lock held; only the description of the holder is lost.
  write_->Write(FormatLockFile(std::move(me)));
}

bool clsLockFileCreator::ReadLockFile(LockerInfo& info) {
  info.locking_time = std::string(kNotAvailable);
  std::string bytes;
  // A folder in the lock file's place is no lock file, whatever a platform lets us read from it.
  if (!platform_.FileExists(lock_file_path_) || !platform_.ReadFile(lock_file_path_, bytes)) return false;
  LockerInfo raw;
  const std::size_t count = std::min<std::size_t>(ParseLockFile(bytes, raw), 6);
  const auto from = raw.Lines(), to = info.Lines();
  for (std::size_t i = 0; i < count; ++i) *to[i] = platform_.FromAnsi(*from[i]);
  if (auto time = platform_.LastWriteTimeText(lock_file_path_)) info.locking_time = *time;
  return true;
}

LockResult clsLockFileCreator::CreateLockFile(const std::string& fileName, std::string& appName,
                                              std::string& userName, LockMode mode, bool silent) {
  using namespace lock_text;
  appName = OrNotAvailable(std::move(appName));
  userName = OrNotAvailable(std::move(userName));
  lock_file_path_ = fileName + std::string(kLockSuffix);

  // A hidden or read-only leftover of a crashed holder could not be reopened otherwise.
  SetAttributes(lock_file_path_, kAttrNormal);
  IoStatus status;
  // The new handle (or none) replaces any held before: a failed attempt gives up the old lock.
  write_ = platform_.OpenLockFile(lock_file_path_, status);
  SetAttributes(lock_file_path_, kAttrHidden);

  if (write_) {
    lock_created_ = true;
    // The lock moves: the old lock file goes once the new one is open. Re-locking the
    // same file must not delete the file just opened.
    if (!locked_file_name_.empty() && !EqualsIgnoreCase(platform_, locked_file_name_, fileName))
      DeleteLockFile(locked_file_name_);
    locked_file_name_ = fileName;
    WriteLockFile(appName, userName);
    read_only_ = false;
    return LockResult::Locked;
  }
  if (silent) return LockResult::Refused;

  LockerInfo holder;
  holder.app_name = appName;
  holder.user_name = userName;
  const bool read = ReadLockFile(holder);
  appName = holder.app_name;
  userName = holder.user_name;
  const std::string message = BuildRefusalMessage(fileName, texts_, read ? &holder : nullptr);

  int buttons = kMbOk;
  switch (mode) {
    case LockMode::OpenOrReadOnly:
      buttons = kMbYesNo;
      if (platform_.ShowMessage(message + texts_[kAskReadOnly], buttons, kExclamationDefaultSecond,
                                texts_[kOpen] + " " + fileName) != kIdYes)
        return LockResult::Refused;
      read_only_ = true;
      return LockResult::ReadOnlyChosen;
    case LockMode::Open:
      platform_.ShowMessage(message, buttons, kMbIconExclamation, texts_[kOpen] + " " + fileName);
      return LockResult::Refused;
    case LockMode::Save:
      platform_.ShowMessage(message + texts_[kChooseAnotherName], buttons, kMbIconExclamation,
                            texts_[kSave] + " " + fileName);
      return LockResult::Refused;
  }
  return LockResult::Refused;
}

bool clsLockFileCreator::IsFileOpenedReadOnly(const std::string& fileName) {
  using namespace lock_text;
  if (!read_only_) return false;
  int buttons = kMbOk;
  platform_.ShowMessage(fileName + std::string(kCrLf) + texts_[kOpenedReadOnly] + std::string(kCrLf) +
                            std::string(kCrLf) + texts_[kChooseAnotherName],
                        buttons, kMbIconExclamation, texts_[kSave] + " " + fileName);
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
  return AsStored(userName) == holder.user_name && AsStored(std::to_string(platform_.SessionId())) == holder.session_id &&
         AsStored(platform_.ComputerName()) == holder.host_name &&
         AsStored(std::to_string(platform_.ProcessId())) == holder.process_id && AsStored(appName) == holder.app_name;
}

}  // namespace tq
