// The Platform the tests hand to the core: the real one (Windows under Wine, real
// files natively) with two things played by the test, the person at the screen
// (scripted answers to message boxes) and the host (recorded host calls), and with
// faults that a test can inject into any file operation.
#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/platform.h"

namespace tq::test {

// The platform of this build: WinPlatform on Windows; natively a std-only one on
// real files ("\" in paths maps to "/"), without INI, registry or mutex.
Platform& RealPlatform();

// A fresh temporary folder as the core sees paths (with trailing "\"), removed with its content.
class ScratchFolder {
 public:
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  const std::string& path() const { return path_; }
  std::string operator/(const std::string& name) const { return path_ + name; }

 private:
  std::string path_;
};

class TestPlatform : public Platform {
 public:
  struct Prompt {
    std::string text, title;
    int buttons = 0, style = 0;
  };

  explicit TestPlatform(Platform& real = RealPlatform()) : real_(real) {}

  // The user: answers given in order; when none is left the box is answered with
  // OK (button set 0) or No (Yes/No) and the test fails unless allow_unscripted.
  std::deque<int> answers;
  bool allow_unscripted = false;
  std::vector<Prompt> prompts;

  // The host: every call is recorded; `host` decides the answer (default: true).
  std::vector<std::pair<int, std::string>> host_calls;
  std::function<bool(int kind, const std::string& text)> host;

  // Faults: called before each file operation with its name ("ReadFile", "WriteNewFile",
  // "MoveReplace", "CopyFileTo", "RemoveFile", "CreateFolder", "SetAttributes",
  // "OpenLockFile") and path; a failed status returned here replaces the operation.
  std::function<std::optional<IoStatus>(const std::string& operation, const std::string& path)> fault;

  bool FileExists(const std::string& path) override { return real_.FileExists(path); }
  bool FolderExists(const std::string& path) override { return real_.FolderExists(path); }
  IoStatus CreateFolder(const std::string& path) override;
  std::vector<std::string> ListFileNames(const std::string& folder) override { return real_.ListFileNames(folder); }
  IoStatus ReadFile(const std::string& path, std::string& bytes) override;
  IoStatus WriteNewFile(const std::string& path, std::string_view bytes) override;
  IoStatus MoveReplace(const std::string& source, const std::string& target) override;
  IoStatus CopyFileTo(const std::string& source, const std::string& target, bool overwrite) override;
  IoStatus RemoveFile(const std::string& path) override;
  std::string AbsolutePath(const std::string& path) override { return real_.AbsolutePath(path); }
  IoStatus SetAttributes(const std::string& path, std::uint32_t attributes) override;
  std::optional<std::string> LastWriteTimeText(const std::string& path) override { return real_.LastWriteTimeText(path); }
  std::unique_ptr<LockHandle> OpenLockFile(const std::string& path, IoStatus& status) override;
  std::string ToAnsi(std::string_view utf8) override { return real_.ToAnsi(utf8); }
  std::string FromAnsi(std::string_view ansi) override { return real_.FromAnsi(ansi); }
  std::string IniRead(const std::string& s, const std::string& k, const std::string& f) override {
    return real_.IniRead(s, k, f);
  }
  void IniWrite(const std::string& s, const std::string& k, const std::string& v, const std::string& f) override {
    real_.IniWrite(s, k, v, f);
  }
  bool AcquireIniMutex() override { return real_.AcquireIniMutex(); }
  void ReleaseIniMutex() override { real_.ReleaseIniMutex(); }
  std::string RegReadString(const std::string& subkey, const std::string& name) override {
    return real_.RegReadString(subkey, name);
  }
  std::string WindowsUserName() override { return real_.WindowsUserName(); }
  std::string ComputerName() override { return real_.ComputerName(); }
  std::uint32_t ProcessId() override { return real_.ProcessId(); }
  std::uint32_t SessionId() override { return real_.SessionId(); }
  int ShowMessage(const std::string& prompt, int& buttons, int style, const std::string& title) override;
  bool HostCall(int kind, const std::string& text) override;
  std::string ModuleFolder() override { return real_.ModuleFolder(); }
  const void* LoadLibraryFile(const std::string& path) override { return real_.LoadLibraryFile(path); }
  std::string LibraryString(const void* library, int id) override { return real_.LibraryString(library, id); }

 private:
  std::optional<IoStatus> Fault(const char* operation, const std::string& path) {
    return fault ? fault(operation, path) : std::nullopt;
  }
  Platform& real_;
};

}  // namespace tq::test
