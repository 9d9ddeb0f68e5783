// The Platform the tests hand to the core: the real one of this build (Windows under
// Wine; natively real files through the C++ library) with two things played by the
// test: the person at the screen (scripted answers to message boxes) and the host
// (a recording host object). Faults are injected through the real platform's hook
// (Platform::SetFaultHook).
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "support/platform.h"
#ifdef _WIN32
#include "win32/win_platform.h"
#else
#include "posix/posix_platform.h"
#endif

namespace tq::test {

#ifdef _WIN32
using RealPlatformType = win::WinPlatform;
#else
using RealPlatformType = posix::PosixPlatform;
#endif

// A shared instance of the real platform, for reading and writing test files.
Platform& RealPlatform();
// A file's bytes, and a file written anew, through the real platform (a failure fails the test).
std::string Read(const std::string& path);
void Write(const std::string& path, const std::string& bytes);
// A file of the source tree, by its path relative to the tree's root.
std::string SourceFile(const std::string& relative);

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

class TestPlatform : public RealPlatformType {
 public:
  struct Prompt {
    std::string text, title;
    int buttons = 0, style = 0;
  };

  // The user: answers given in order; when none is left the box is answered with
  // OK (button set 0) or No (Yes/No) and the test fails unless allow_unscripted.
  std::deque<int> answers;
  bool allow_unscripted = false;
  std::vector<Prompt> prompts;

  // The host: every call of the kinds 1-5 is recorded as (kind, text); `host` decides
  // the answer (default: true).
  std::vector<std::pair<int, std::string>> host_calls;
  std::function<bool(int kind, const std::string& text)> host;

  int ShowMessage(const std::string& prompt, int& buttons, int style, const std::string& title) override;
  HostLink* Host() override { return &recorder_; }

 private:
  class Recorder : public HostLink {
   public:
    explicit Recorder(TestPlatform& owner) : owner_(owner) {}
    bool Evaluate(const std::string& expression, std::int32_t& status, HostValue&) override {
      status = 0;
      return Record(kHostEvaluate, expression);
    }
    bool Notify(const std::string&, const std::string&, const HostValue&) override { return true; }
    bool FileNotice(const std::string& text) override { return Record(kHostFileNotice, text); }
    bool RemoveFile(const std::string& path) override { return Record(kHostRemoveFile, path); }
    bool CreateFolder(const std::string& path) override { return Record(kHostCreateFolder, path); }
    bool Request(const std::string& text) override { return Record(kHostRequest, text); }

   private:
    bool Record(int kind, const std::string& text) {
      owner_.host_calls.emplace_back(kind, text);
      return owner_.host ? owner_.host(kind, text) : true;
    }
    TestPlatform& owner_;
  };
  Recorder recorder_{*this};
};

}  // namespace tq::test
