#include "posix/posix_platform.h"

#include <fcntl.h>
#include <limits.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <clocale>
#include <cstdio>
#include <iostream>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <cwctype>
#include <filesystem>

namespace tq::posix {

namespace fs = std::filesystem;

namespace {

// The Windows error codes the core knows, for the failures met here.
constexpr std::uint32_t kErrFileNotFound = 2;
constexpr std::uint32_t kErrPathNotFound = 3;
constexpr std::uint32_t kErrAccessDenied = 5;
constexpr std::uint32_t kErrSharingViolation = 32;
constexpr std::uint32_t kErrFileExists = 80;
constexpr std::uint32_t kErrDiskFull = 112;

IoStatus Errno(int e = errno) {
  const std::uint32_t code = e == ENOENT ? kErrFileNotFound
                             : e == ENOTDIR ? kErrPathNotFound
                             : e == EACCES || e == EPERM || e == EISDIR || e == EROFS ? kErrAccessDenied
                             : e == ENOSPC ? kErrDiskFull
                             : e == EWOULDBLOCK ? kErrSharingViolation
                             : e == EEXIST ? kErrFileExists
                                           : 1000u + static_cast<std::uint32_t>(e);
  return IoStatus::Fail(code, std::strerror(e));
}

IoStatus FromEc(const std::error_code& ec) { return ec ? Errno(ec.value()) : IoStatus::Ok(); }

class PosixLock : public LockHandle {
 public:
  explicit PosixLock(int fd) : fd_(fd) {}
  ~PosixLock() override { ::close(fd_); }
  PosixLock(const PosixLock&) = delete;
  PosixLock& operator=(const PosixLock&) = delete;
  IoStatus Write(std::string_view bytes) override {
    return ::write(fd_, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()) ? IoStatus::Ok() : Errno();
  }

 private:
  int fd_;
};

IoStatus WriteAll(int fd, std::string_view bytes) {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
    if (n < 0) {
      if (errno == EINTR) continue;
      return Errno();
    }
    done += static_cast<std::size_t>(n);
  }
  return IoStatus::Ok();
}

// ---- INI text -------------------------------------------------------------------

std::string_view Trim(std::string_view text) {
  const auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
  while (!text.empty() && blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && blank(text.back())) text.remove_suffix(1);
  return text;
}

bool SameName(std::string_view a, std::string_view b) {
  a = Trim(a);
  b = Trim(b);
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    if (lower(a[i]) != lower(b[i])) return false;
  }
  return true;
}

struct IniLine {
  std::size_t begin, end;  // of the line without its line end
  std::size_t next;        // start of the following line
};

std::vector<IniLine> Lines(std::string_view text) {
  std::vector<IniLine> lines;
  for (std::size_t at = 0; at < text.size();) {
    std::size_t end = text.find('\n', at);
    const std::size_t next = end == std::string_view::npos ? text.size() : end + 1;
    if (end == std::string_view::npos) end = text.size();
    if (end > at && text[end - 1] == '\r') --end;
    lines.push_back({at, end, next});
    at = next;
  }
  return lines;
}

// The section's name when the line is a section header.
std::optional<std::string_view> SectionName(std::string_view line) {
  line = Trim(line);
  if (line.size() < 2 || line.front() != '[') return std::nullopt;
  const std::size_t close = line.find(']');
  if (close == std::string_view::npos) return std::nullopt;
  return line.substr(1, close - 1);
}

// Where a section's lines are: the header's line index and one past its last line.
struct SectionSpan {
  std::size_t header = 0, end = 0;
  bool found = false;
};

SectionSpan FindSection(std::string_view text, const std::vector<IniLine>& lines, std::string_view section) {
  SectionSpan span;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const auto name = SectionName(text.substr(lines[i].begin, lines[i].end - lines[i].begin));
    if (!name) continue;
    if (span.found) {
      span.end = i;
      return span;
    }
    if (SameName(*name, section)) {
      span = {i, lines.size(), true};
    }
  }
  return span;
}

}  // namespace

std::string NativePath(const std::string& path) {
  std::string native = path;
  for (char& c : native)
    if (c == '\\') c = '/';
  return native;
}

std::string IniValue(std::string_view text, std::string_view section, std::string_view key) {
  const std::vector<IniLine> lines = Lines(text);
  const SectionSpan span = FindSection(text, lines, section);
  if (!span.found) return {};
  for (std::size_t i = span.header + 1; i < span.end; ++i) {
    const std::string_view line = text.substr(lines[i].begin, lines[i].end - lines[i].begin);
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos || !SameName(line.substr(0, equals), key)) continue;
    std::string_view value = Trim(line.substr(equals + 1));
    if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.back() == value.front())
      value = value.substr(1, value.size() - 2);
    return std::string(value);
  }
  return {};
}

std::string IniWithValue(std::string_view text, std::string_view section, std::string_view key,
                         std::string_view value) {
  const std::string entry = std::string(Trim(key)) + "=" + std::string(value);
  const std::vector<IniLine> lines = Lines(text);
  const SectionSpan span = FindSection(text, lines, section);
  std::string out(text);
  if (!span.found) {
    if (!out.empty() && out.back() != '\n') out += "\r\n";
    return out + "[" + std::string(Trim(section)) + "]\r\n" + entry + "\r\n";
  }
  std::size_t last_entry = span.header;  // the new key goes after the section's last key
  for (std::size_t i = span.header + 1; i < span.end; ++i) {
    const std::string_view line = text.substr(lines[i].begin, lines[i].end - lines[i].begin);
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) continue;
    if (SameName(line.substr(0, equals), key))
      return out.replace(lines[i].begin, lines[i].end - lines[i].begin, entry);
    last_entry = i;
  }
  const IniLine& after = lines[last_entry];
  const bool ends_line = after.next > after.end;
  if (!ends_line) return out + "\r\n" + entry + "\r\n";
  return out.insert(after.next, entry + "\r\n");
}

PosixPlatform::PosixPlatform() {
  // Multibyte conversions in UTF-8, for UpperCase.
  std::setlocale(LC_CTYPE, "C.UTF-8");
}

bool PosixPlatform::FileExists(const std::string& path) { return fs::is_regular_file(NativePath(path)); }

bool PosixPlatform::FolderExists(const std::string& path) { return fs::is_directory(NativePath(path)); }

IoStatus PosixPlatform::CreateFolder(const std::string& path) {
  if (auto fault = InjectedFault("CreateFolder", path)) return *fault;
  return ::mkdir(NativePath(path).c_str(), 0777) == 0 ? IoStatus::Ok() : Errno();
}

std::vector<std::string> PosixPlatform::ListFileNames(const std::string& folder) {
  std::vector<std::string> names;
  std::error_code ec;
  for (const auto& entry : fs::directory_iterator(NativePath(folder), ec))
    if (entry.is_regular_file(ec)) names.push_back(entry.path().filename().string());
  return names;
}

std::vector<std::string> PosixPlatform::ListFolderNames(const std::string& folder) {
  std::vector<std::string> names;
  std::error_code ec;
  for (const auto& entry : fs::directory_iterator(NativePath(folder), ec))
    if (entry.is_directory(ec) && !entry.is_symlink(ec)) names.push_back(entry.path().filename().string());
  return names;
}

Platform::PathInfo PosixPlatform::Stat(const std::string& path) {
  struct stat info{};
  if (::stat(NativePath(path).c_str(), &info) != 0) return {};
  if (S_ISREG(info.st_mode)) return {PathInfo::Kind::File, static_cast<std::uint64_t>(info.st_size)};
  return {S_ISDIR(info.st_mode) ? PathInfo::Kind::Folder : PathInfo::Kind::Other, 0};
}

IoStatus PosixPlatform::ReadFile(const std::string& path, std::string& bytes) {
  if (auto fault = InjectedFault("ReadFile", path)) return *fault;
  const int fd = ::open(NativePath(path).c_str(), O_RDONLY);
  if (fd < 0) return Errno();
  struct stat info{};
  if (::fstat(fd, &info) == 0 && S_ISDIR(info.st_mode)) {
    ::close(fd);
    return Errno(EISDIR);
  }
  std::string content;
  char buffer[65536];
  for (;;) {
    const ssize_t n = ::read(fd, buffer, sizeof buffer);
    if (n < 0) {
      if (errno == EINTR) continue;
      const IoStatus status = Errno();
      ::close(fd);
      return status;
    }
    if (n == 0) break;
    content.append(buffer, static_cast<std::size_t>(n));
  }
  ::close(fd);
  bytes = std::move(content);
  return IoStatus::Ok();
}

IoStatus PosixPlatform::WriteNewFile(const std::string& path, std::string_view bytes) {
  if (auto fault = InjectedFault("WriteNewFile", path)) return *fault;
  const int fd = ::open(NativePath(path).c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
  if (fd < 0) return Errno();
  IoStatus status = WriteAll(fd, bytes);
  if (status && ::fsync(fd) != 0) status = Errno();
  ::close(fd);
  return status;
}

IoStatus PosixPlatform::MoveReplace(const std::string& source, const std::string& target) {
  if (auto fault = InjectedFault("MoveReplace", target)) return *fault;
  std::string native_source = NativePath(source), native_target = NativePath(target);
  // A symbolic link stays a link: the file it names takes the new content.
  struct stat link{};
  if (::lstat(native_target.c_str(), &link) == 0 && S_ISLNK(link.st_mode)) {
    char resolved[PATH_MAX];
    if (!::realpath(native_target.c_str(), resolved)) return Errno();
    native_target = resolved;
  }
  struct stat before{};
  if (::stat(native_target.c_str(), &before) == 0) {
    // Windows refuses to replace a read-only file; rename would not.
    if (::access(native_target.c_str(), W_OK) != 0) return Errno();
    // The new file takes the old one's permissions, and its owner and group where this
    // user may give them (the group alone often is).
    ::chmod(native_source.c_str(), before.st_mode & 07777);
    if (::chown(native_source.c_str(), before.st_uid, before.st_gid) != 0 &&
        ::chown(native_source.c_str(), static_cast<uid_t>(-1), before.st_gid) != 0) {
      // Left to the user's own: the content matters more than the owner.
    }
  }
  if (::rename(native_source.c_str(), native_target.c_str()) == 0) return IoStatus::Ok();
  if (errno != EXDEV) return Errno();
  // The linked file is on another file system: the content is written beside it first.
  std::string bytes;
  if (IoStatus read = ReadFile(source, bytes); !read) return read;
  const std::string beside = native_target + "." + std::to_string(::getpid()) + ".tmp";
  IoStatus status = WriteNewFile(beside, bytes);
  if (status) {
    ::chmod(beside.c_str(), before.st_mode & 07777);
    status = ::rename(beside.c_str(), native_target.c_str()) == 0 ? IoStatus::Ok() : Errno();
  }
  if (status)
    ::unlink(native_source.c_str());
  else
    ::unlink(beside.c_str());
  return status;
}

IoStatus PosixPlatform::CopyFileTo(const std::string& source, const std::string& target, bool overwrite) {
  if (auto fault = InjectedFault("CopyFileTo", target)) return *fault;
  std::error_code ec;
  fs::copy_file(NativePath(source), NativePath(target),
                overwrite ? fs::copy_options::overwrite_existing : fs::copy_options::none, ec);
  return FromEc(ec);
}

IoStatus PosixPlatform::RemoveFile(const std::string& path) {
  if (auto fault = InjectedFault("RemoveFile", path)) return *fault;
  return ::unlink(NativePath(path).c_str()) == 0 ? IoStatus::Ok() : Errno();
}

std::string PosixPlatform::AbsolutePath(const std::string& path) {
  std::error_code ec;
  const fs::path absolute = fs::absolute(NativePath(path), ec);
  return ec ? path : absolute.lexically_normal().string();
}

IoStatus PosixPlatform::SetAttributes(const std::string& path, std::uint32_t attributes) {
  if (auto fault = InjectedFault("SetAttributes", path)) return *fault;
  std::error_code ec;
  const fs::perms write = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
  fs::permissions(NativePath(path), write,
                  (attributes & kAttrReadOnly) ? fs::perm_options::remove : fs::perm_options::add, ec);
  if (!ec && (attributes & kAttrReadOnly) == 0) {
    // Only the owner gets write permission back, as a fresh file would have it under umask 022.
    fs::permissions(NativePath(path), fs::perms::group_write | fs::perms::others_write, fs::perm_options::remove, ec);
  }
  return FromEc(ec);
}

std::optional<std::string> PosixPlatform::LastWriteTimeText(const std::string& path) {
  struct stat info{};
  if (::stat(NativePath(path).c_str(), &info) != 0) return std::nullopt;
  std::tm local{};
  if (!::localtime_r(&info.st_mtime, &local)) return std::nullopt;
  char text[64];
  std::strftime(text, sizeof text, "%x %X", &local);
  return std::string(text);
}

std::unique_ptr<LockHandle> PosixPlatform::OpenLockFile(const std::string& path, IoStatus& status) {
  if (auto fault = InjectedFault("OpenLockFile", path)) {
    status = *fault;
    return nullptr;
  }
  // flock gives the one-writer rule between processes that share modes give on Windows.
  const int fd = ::open(NativePath(path).c_str(), O_WRONLY | O_CREAT, 0666);
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

std::string PosixPlatform::UpperCase(std::string_view text) {
  std::wstring wide(text.size() + 1, L'\0');
  const std::size_t count = std::mbstowcs(wide.data(), std::string(text).c_str(), wide.size());
  if (count == static_cast<std::size_t>(-1)) {  // not UTF-8: ASCII letters only
    std::string out(text);
    for (char& c : out)
      if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return out;
  }
  wide.resize(count);
  for (wchar_t& c : wide) c = static_cast<wchar_t>(std::towupper(static_cast<wint_t>(c)));
  std::string out(wide.size() * MB_LEN_MAX + 1, '\0');
  out.resize(std::wcstombs(out.data(), wide.c_str(), out.size()));
  return out;
}

std::string PosixPlatform::IniRead(const std::string& section, const std::string& key, const std::string& file) {
  std::string text;
  if (!ReadFile(file, text)) return {};
  return IniValue(text, section, key);
}

IoStatus PosixPlatform::IniWrite(const std::string& section, const std::string& key, const std::string& value,
                                 const std::string& file) {
  std::string text;
  ReadFile(file, text);  // a missing file starts empty
  const std::string temporary = file + ".tmp";
  IoStatus status = WriteNewFile(temporary, IniWithValue(text, section, key, value));
  if (status) status = MoveReplace(temporary, file);
  if (!status) RemoveFile(temporary);
  return status;
}

bool PosixPlatform::AcquireIniMutex() {
  if (ini_mutex_fd_ >= 0) return false;  // not recursive, as the core never nests it
  const fs::path path = fs::temp_directory_path() / "IniFileWrite.lock";
  const int fd = ::open(path.c_str(), O_RDWR | O_CREAT, 0666);
  if (fd < 0) return false;
  if (::flock(fd, LOCK_EX) != 0) {
    ::close(fd);
    return false;
  }
  ini_mutex_fd_ = fd;
  return true;
}

void PosixPlatform::ReleaseIniMutex() {
  if (ini_mutex_fd_ < 0) return;
  ::flock(ini_mutex_fd_, LOCK_UN);
  ::close(ini_mutex_fd_);
  ini_mutex_fd_ = -1;
}

std::string PosixPlatform::RegReadString(const std::string&, const std::string& value_name) {
  return value_name == "DVHOME" ? toolkit_home_ : std::string();
}

std::string PosixPlatform::WindowsUserName() {
  if (const passwd* user = ::getpwuid(::getuid()); user && user->pw_name) return user->pw_name;
  const char* name = std::getenv("USER");
  return name ? name : "";
}

std::string PosixPlatform::ComputerName() {
  char name[256] = "";
  if (::gethostname(name, sizeof name - 1) != 0) return {};
  return name;
}

std::uint32_t PosixPlatform::ProcessId() { return static_cast<std::uint32_t>(::getpid()); }

std::uint32_t PosixPlatform::SessionId() { return static_cast<std::uint32_t>(::getsid(0)); }

int PosixPlatform::ShowMessage(const std::string& prompt, int& buttons, int style, const std::string& title) {
  return AnswerWithoutUser(std::cerr, "", prompt, buttons, style, title);
}

std::string PosixPlatform::ModuleFolder() {
  std::error_code ec;
  const fs::path program = fs::read_symlink("/proc/self/exe", ec);
  return ec ? fs::current_path(ec).string() : program.parent_path().string();
}

}  // namespace tq::posix
