// Natively the core's file logic runs over real files with the C++ library; "\" in
// the core's paths maps to "/". The registry is empty here; INI files and the mutex
// are Windows-only and are tested under Wine: here they fail the test that reaches them.
#pragma once

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <cwctype>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "support/platform.h"

namespace tq::test {

namespace fs = std::filesystem;

// The Windows error codes of the failures a native run meets.
constexpr std::uint32_t kErrFileNotFound = 2;
constexpr std::uint32_t kErrAccessDenied = 5;
constexpr std::uint32_t kErrSharingViolation = 32;
constexpr std::uint32_t kErrDiskFull = 112;

inline fs::path P(const std::string& path) {
  std::string p = path;
  for (char& c : p)
    if (c == '\\') c = '/';
  return fs::path(p);
}

inline IoStatus Errno() {
  const int e = errno;
  std::uint32_t code = e == ENOENT ? kErrFileNotFound : e == EACCES || e == EPERM ? kErrAccessDenied
                       : e == ENOSPC ? kErrDiskFull : e == EWOULDBLOCK ? kErrSharingViolation : 1000u + e;
  return IoStatus::Fail(code, std::strerror(e));
}

inline IoStatus FromEc(const std::error_code& ec) {
  if (!ec) return IoStatus::Ok();
  errno = ec.value();
  return Errno();
}

class PosixLock : public LockHandle {
 public:
  explicit PosixLock(int fd) : fd_(fd) {}
  ~PosixLock() override { close(fd_); }
  IoStatus Write(std::string_view bytes) override {
    return ::write(fd_, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()) ? IoStatus::Ok() : Errno();
  }

 private:
  int fd_;
};

class PosixPlatform : public Platform {
 public:
  // Multibyte conversions in UTF-8, for UpperCase.
  PosixPlatform() { std::setlocale(LC_CTYPE, "C.UTF-8"); }

  bool FileExists(const std::string& path) override { return fs::is_regular_file(P(path)); }
  bool FolderExists(const std::string& path) override { return fs::is_directory(P(path)); }
  IoStatus CreateFolder(const std::string& path) override {
    if (auto f = InjectedFault("CreateFolder", path)) return *f;
    return ::mkdir(P(path).c_str(), 0777) == 0 ? IoStatus::Ok() : Errno();
  }
  std::vector<std::string> ListFileNames(const std::string& folder) override {
    std::vector<std::string> names;
    std::error_code ec;
    for (const auto& e : fs::directory_iterator(P(folder), ec))
      if (e.is_regular_file()) names.push_back(e.path().filename().string());
    return names;
  }
  IoStatus ReadFile(const std::string& path, std::string& bytes) override {
    if (auto f = InjectedFault("ReadFile", path)) return *f;
    std::ifstream in(P(path), std::ios::binary);
    if (!in) return fs::exists(P(path)) ? IoStatus::Fail(kErrAccessDenied, "cannot open") : IoStatus::Fail(kErrFileNotFound, "not found");
    std::stringstream s;
    s << in.rdbuf();
    bytes = s.str();
    return IoStatus::Ok();
  }
  IoStatus WriteNewFile(const std::string& path, std::string_view bytes) override {
    if (auto f = InjectedFault("WriteNewFile", path)) return *f;
    const int fd = ::open(P(path).c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
    if (fd < 0) return Errno();
    size_t done = 0;
    while (done < bytes.size()) {
      const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
      if (n < 0) {
        IoStatus s = Errno();
        ::close(fd);
        return s;
      }
      done += static_cast<size_t>(n);
    }
    const bool ok = ::fsync(fd) == 0;
    ::close(fd);
    return ok ? IoStatus::Ok() : Errno();
  }
  IoStatus MoveReplace(const std::string& source, const std::string& target) override {
    if (auto f = InjectedFault("MoveReplace", target)) return *f;
    if (fs::exists(P(target)) && ::access(P(target).c_str(), W_OK) != 0) return Errno();
    return ::rename(P(source).c_str(), P(target).c_str()) == 0 ? IoStatus::Ok() : Errno();
  }
  IoStatus CopyFileTo(const std::string& source, const std::string& target, bool overwrite) override {
    if (auto f = InjectedFault("CopyFileTo", target)) return *f;
    std::error_code ec;
    fs::copy_file(P(source), P(target), overwrite ? fs::copy_options::overwrite_existing : fs::copy_options::none, ec);
    return FromEc(ec);
  }
  IoStatus RemoveFile(const std::string& path) override {
    if (auto f = InjectedFault("RemoveFile", path)) return *f;
    return ::unlink(P(path).c_str()) == 0 ? IoStatus::Ok() : Errno();
  }
  std::string AbsolutePath(const std::string& path) override { return fs::absolute(P(path)).lexically_normal().string(); }
  IoStatus SetAttributes(const std::string& path, std::uint32_t attributes) override {
    if (auto f = InjectedFault("SetAttributes", path)) return *f;
    std::error_code ec;
    fs::permissions(P(path), (attributes & kAttrReadOnly) ? fs::perms::owner_read | fs::perms::group_read
                                                          : fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read,
                    ec);
    return FromEc(ec);
  }
  std::optional<std::string> LastWriteTimeText(const std::string& path) override {
    std::error_code ec;
    const auto t = fs::last_write_time(P(path), ec);
    if (ec) return std::nullopt;
    const auto sys = std::chrono::file_clock::to_sys(t);
    const std::time_t tt = std::chrono::system_clock::to_time_t(std::chrono::time_point_cast<std::chrono::system_clock::duration>(sys));
    char buffer[64];
    std::strftime(buffer, sizeof(buffer), "%x %X", std::localtime(&tt));
    return std::string(buffer);
  }
  std::unique_ptr<LockHandle> OpenLockFile(const std::string& path, IoStatus& status) override {
    if (auto f = InjectedFault("OpenLockFile", path)) {
      status = *f;
      return nullptr;
    }
    // flock gives the same one-writer rule between processes that share modes give on Windows.
    const int fd = ::open(P(path).c_str(), O_WRONLY | O_CREAT, 0666);
    if (fd < 0) {
      status = Errno();
      return nullptr;
    }
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0 || ::ftruncate(fd, 0) != 0) {
      status = Errno();
      ::close(fd);
      return nullptr;
    }
    status = IoStatus::Ok();
    return std::make_unique<PosixLock>(fd);
  }
  std::string ToAnsi(std::string_view utf8) override { return std::string(utf8); }
  std::string FromAnsi(std::string_view ansi) override { return std::string(ansi); }
  std::string UpperCase(std::string_view text) override {
    std::wstring wide(text.size() + 1, L'\0');
    wide.resize(std::mbstowcs(wide.data(), std::string(text).c_str(), wide.size()));
    for (wchar_t& c : wide) c = static_cast<wchar_t>(std::towupper(c));
    std::string out(wide.size() * 4 + 1, '\0');
    out.resize(std::wcstombs(out.data(), wide.c_str(), out.size()));
    return out;
  }
  std::string IniRead(const std::string&, const std::string&, const std::string&) override {
    ADD_FAILURE() << "INI files are tested under Wine";
    return {};
  }
  void IniWrite(const std::string&, const std::string&, const std::string&, const std::string&) override {
    ADD_FAILURE() << "INI files are tested under Wine";
  }
  bool AcquireIniMutex() override {
    ADD_FAILURE() << "the INI mutex is tested under Wine";
    return false;
  }
  void ReleaseIniMutex() override {}
  std::string RegReadString(const std::string&, const std::string&) override { return {}; }  // no registry here
  std::string WindowsUserName() override { return "tester"; }
  std::string ComputerName() override { return "NATIVEHOST"; }
  std::uint32_t ProcessId() override { return static_cast<std::uint32_t>(::getpid()); }
  std::uint32_t SessionId() override { return 1; }
  int ShowMessage(const std::string&, int&, int, const std::string&) override {
    ADD_FAILURE() << "message boxes need a TestPlatform natively";
    return 0;
  }
  HostLink* Host() override { return nullptr; }
  std::string ModuleFolder() override { return fs::current_path().string(); }
  const void* LoadLibraryFile(const std::string&) override { return nullptr; }
  std::string LibraryString(const void*, int) override { return {}; }
};

}  // namespace tq::test
