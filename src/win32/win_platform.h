// The Platform of the real control: files, profile, registry, mutex, identity,
// message boxes and language libraries through the Windows calls.
#pragma once

#include <windows.h>

#include <memory>
#include <string>

#include "support/platform.h"

namespace tq::win {

class WinPlatform : public Platform {
 public:
  // The process-wide instance used by the control.
  static WinPlatform& Instance();

  bool FileExists(const std::string& path) override;
  bool FolderExists(const std::string& path) override;
  IoStatus CreateFolder(const std::string& path) override;
  std::vector<std::string> ListFileNames(const std::string& folder) override;
  std::vector<std::string> ListFolderNames(const std::string& folder) override;
  PathInfo Stat(const std::string& path) override;
  IoStatus ReadFile(const std::string& path, std::string& bytes) override;
  IoStatus WriteNewFile(const std::string& path, std::string_view bytes) override;
  IoStatus MoveReplace(const std::string& source, const std::string& target) override;
  IoStatus CopyFileTo(const std::string& source, const std::string& target, bool overwrite) override;
  IoStatus RemoveFile(const std::string& path) override;
  std::string AbsolutePath(const std::string& path) override;
  IoStatus SetAttributes(const std::string& path, std::uint32_t attributes) override;
  std::optional<std::string> LastWriteTimeText(const std::string& path) override;
  std::unique_ptr<LockHandle> OpenLockFile(const std::string& path, IoStatus& status) override;

  std::string ToAnsi(std::string_view utf8) override;
  std::string FromAnsi(std::string_view ansi) override;
  std::string UpperCase(std::string_view text) override;

  std::string IniRead(const std::string& section, const std::string& key, const std::string& file) override;
  IoStatus IniWrite(const std::string& section, const std::string& key, const std::string& value,
                    const std::string& file) override;
  bool AcquireIniMutex() override;
  void ReleaseIniMutex() override;
  std::string RegReadString(const std::string& subkey, const std::string& value_name) override;

  std::string WindowsUserName() override;
  std::string ComputerName() override;
  std::uint32_t ProcessId() override;
  std::uint32_t SessionId() override;

  int ShowMessage(const std::string& prompt, int& buttons, int style, const std::string& title) override;
  HostLink* Host() override;

  std::string ModuleFolder() override;
  const void* LoadLibraryFile(const std::string& path) override;
  std::string LibraryString(const void* library, int id) override;
};

}  // namespace tq::win
