// The Platform on POSIX systems, for the command-line tool and the native tests:
// real files through POSIX calls ("\" in the core's paths maps to "/"), the lock file
// through flock, INI files through a small reader and writer of our own that keeps
// the profile functions' rules, the toolkit home from a setting instead of the
// registry, and messages on standard error instead of message boxes.
#pragma once

#include <string>

#include "support/platform.h"

namespace tq::posix {

// The core's path (with "\") as a POSIX path.
std::string NativePath(const std::string& path);

class PosixPlatform : public Platform {
 public:
  PosixPlatform();

  // The toolkit's home, returned for the DVHOME registry value ("" = not found).
  void SetToolkitHome(std::string home) { toolkit_home_ = std::move(home); }

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

  // Files are UTF-8 here: the "ANSI" code page is UTF-8.
  std::string ToAnsi(std::string_view utf8) override { return std::string(utf8); }
  std::string FromAnsi(std::string_view ansi) override { return std::string(ansi); }
  std::string UpperCase(std::string_view text) override;

  std::string IniRead(const std::string& section, const std::string& key, const std::string& file) override;
  IoStatus IniWrite(const std::string& section, const std::string& key, const std::string& value,
                    const std::string& file) override;
  // flock on a file in the temporary folder stands in for the named mutex.
  bool AcquireIniMutex() override;
  void ReleaseIniMutex() override;

  std::string RegReadString(const std::string& subkey, const std::string& value_name) override;

  std::string WindowsUserName() override;
  std::string ComputerName() override;
  std::uint32_t ProcessId() override;
  std::uint32_t SessionId() override;

  // Writes the title and the prompt to standard error. Nobody answers: a question is
  // answered No (the careful answer: nothing is overwritten, no lock is ignored).
  int ShowMessage(const std::string& prompt, int& buttons, int style, const std::string& title) override;
  HostLink* Host() override { return nullptr; }

  // The folder of the running program; language libraries do not exist here, so the
  // built-in English texts are used.
  std::string ModuleFolder() override;
  const void* LoadLibraryFile(const std::string&) override { return nullptr; }
  std::string LibraryString(const void*, int) override { return {}; }

 private:
  std::string toolkit_home_;
  int ini_mutex_fd_ = -1;
};

// The profile functions' rules on text, for IniRead/IniWrite (exposed for tests):
// sections and keys compare without regard to ASCII case and surrounding blanks; a
// value is read without surrounding blanks and one pair of surrounding quotes; a
// write replaces the key's line, or appends the key to its section, or appends the
// section to the file; other lines stay as they are.
std::string IniValue(std::string_view text, std::string_view section, std::string_view key);
std::string IniWithValue(std::string_view text, std::string_view section, std::string_view key,
                         std::string_view value);

}  // namespace tq::posix
