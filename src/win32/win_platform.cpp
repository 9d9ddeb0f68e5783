#include "win32/win_platform.h"

#include <utility>

#include "win32/handles.h"
#include "win32/msgbox.h"
#include "win32/registry_ini.h"
#include "win32/text.h"
#include "win32/thread_state.h"

namespace tq::win {

namespace {

IoStatus LastError() {
  const DWORD code = GetLastError();
  return IoStatus::Fail(code, ErrorText(code));
}

IoStatus Check(BOOL ok) { return ok ? IoStatus::Ok() : LastError(); }

class WinLockHandle : public LockHandle {
 public:
  explicit WinLockHandle(HANDLE h) : handle_(h) {}
  IoStatus Write(std::string_view bytes) override {
    DWORD written = 0;
    if (!WriteFile(handle_.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr)) return LastError();
    return written == bytes.size() ? IoStatus::Ok() : IoStatus::Fail(ERROR_WRITE_FAULT, ErrorText(ERROR_WRITE_FAULT));
  }

 private:
  UniqueHandle handle_;
};

DWORD Attributes(const std::string& path) { return GetFileAttributesW(Widen(path).c_str()); }

}  // namespace

WinPlatform& WinPlatform::Instance() {
  static WinPlatform instance;
  return instance;
}

bool WinPlatform::FileExists(const std::string& path) {
  const DWORD a = Attributes(path);
  return a != INVALID_FILE_ATTRIBUTES && !(a & FILE_ATTRIBUTE_DIRECTORY);
}

bool WinPlatform::FolderExists(const std::string& path) {
  const DWORD a = Attributes(path);
  return a != INVALID_FILE_ATTRIBUTES && (a & FILE_ATTRIBUTE_DIRECTORY);
}

IoStatus WinPlatform::CreateFolder(const std::string& path) {
  if (auto fault = InjectedFault("CreateFolder", path)) return *fault;
  return Check(CreateDirectoryW(Widen(path).c_str(), nullptr));
}

namespace {

// The names of a folder's entries that `wanted` takes; none when it cannot be listed.
template <class Wanted>
std::vector<std::string> ListNames(const std::string& folder, Wanted wanted) {
  std::vector<std::string> names;
  std::string pattern = folder;
  if (!pattern.empty() && pattern.back() != '\\') pattern += '\\';
  WIN32_FIND_DATAW data;
  UniqueFind find(FindFirstFileW(Widen(pattern + "*").c_str(), &data));
  if (!find) return names;
  do {
    if (wanted(data)) names.push_back(Narrow(data.cFileName));
  } while (FindNextFileW(find.get(), &data));
  return names;
}

}  // namespace

std::vector<std::string> WinPlatform::ListFileNames(const std::string& folder) {
  return ListNames(folder, [](const WIN32_FIND_DATAW& d) { return !(d.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY); });
}

std::vector<std::string> WinPlatform::ListFolderNames(const std::string& folder) {
  // Links to folders are not followed: a loop of links would never end.
  return ListNames(folder, [](const WIN32_FIND_DATAW& d) {
    const std::wstring_view name = d.cFileName;
    return (d.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) && !(d.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) &&
           name != L"." && name != L"..";
  });
}

Platform::PathInfo WinPlatform::Stat(const std::string& path) {
  // GetFileAttributesEx refuses some devices and pipes and calls others files; the
  // handle's type tells. An open without access rights reads nothing and does not
  // wait for the other end of a pipe.
  UniqueHandle file(CreateFileW(Widen(path).c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  if (!file) return {};
  BY_HANDLE_FILE_INFORMATION info;
  if (GetFileType(file.get()) != FILE_TYPE_DISK || !GetFileInformationByHandle(file.get(), &info))
    return {PathInfo::Kind::Other, 0};
  if (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) return {PathInfo::Kind::Folder, 0};
  return {PathInfo::Kind::File, (std::uint64_t{info.nFileSizeHigh} << 32) | info.nFileSizeLow};
}

IoStatus WinPlatform::ReadFile(const std::string& path, std::string& bytes) {
  bytes.clear();
  if (auto fault = InjectedFault("ReadFile", path)) return *fault;
  UniqueHandle file(CreateFileW(Widen(path).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                          nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) return LastError();
  LARGE_INTEGER size;
  if (!GetFileSizeEx(file.get(), &size)) return LastError();
  if (size.QuadPart > 0x7FFFFFFF) return IoStatus::Fail(ERROR_FILE_TOO_LARGE, ErrorText(ERROR_FILE_TOO_LARGE));
  bytes.resize(static_cast<size_t>(size.QuadPart));
  size_t done = 0;
  while (done < bytes.size()) {
    DWORD got = 0;
    if (!::ReadFile(file.get(), bytes.data() + done, static_cast<DWORD>(bytes.size() - done), &got, nullptr)) return LastError();
    if (got == 0) break;  // the file shrank while we read
    done += got;
  }
  bytes.resize(done);
  return IoStatus::Ok();
}

IoStatus WinPlatform::WriteNewFile(const std::string& path, std::string_view bytes) {
  if (auto fault = InjectedFault("WriteNewFile", path)) return *fault;
  UniqueHandle file(CreateFileW(Widen(path).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) return LastError();
  size_t done = 0;
  while (done < bytes.size()) {
    DWORD written = 0;
    const DWORD chunk = static_cast<DWORD>(std::min<size_t>(bytes.size() - done, 1u << 30));
    if (!WriteFile(file.get(), bytes.data() + done, chunk, &written, nullptr)) return LastError();
    done += written;
  }
  if (!FlushFileBuffers(file.get())) return LastError();
  return IoStatus::Ok();
}

IoStatus WinPlatform::MoveReplace(const std::string& source, const std::string& target) {
  if (auto fault = InjectedFault("MoveReplace", target)) return *fault;
  const std::wstring wsource = Widen(source), wtarget = Widen(target);
  // A read-only target is refused rather than silently overwritten.
  const DWORD attributes = GetFileAttributesW(wtarget.c_str());
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY))
    return IoStatus::Fail(ERROR_ACCESS_DENIED, ErrorText(ERROR_ACCESS_DENIED));
  const auto move = [&] {
    return Check(MoveFileExW(wsource.c_str(), wtarget.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH));
  };
  if (attributes == INVALID_FILE_ATTRIBUTES) return move();  // nothing there to keep
  // A target that another process holds open cannot be replaced: said at once, with
  // the system's reason, before ReplaceFile tries (Wine's leaves a temporary file behind).
  if (UniqueHandle probe(CreateFileW(wtarget.c_str(), DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                     nullptr, OPEN_EXISTING, 0, nullptr));
      !probe)
    return LastError();
  // ReplaceFile gives the new content the target's attributes, security descriptor,
  // owner, creation time and streams. Without a backup file its failures leave the
  // target as it was, except one: the target removed and the new file not yet moved
  // in, which the move below completes.
  if (!ReplaceFileW(wtarget.c_str(), wsource.c_str(), nullptr, REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr)) {
    const DWORD error = GetLastError();
    if ((error != ERROR_UNABLE_TO_MOVE_REPLACEMENT && error != ERROR_UNABLE_TO_MOVE_REPLACEMENT_2) ||
        GetFileAttributesW(wtarget.c_str()) != INVALID_FILE_ATTRIBUTES)
      return IoStatus::Fail(error, ErrorText(error));
    if (IoStatus moved = move(); !moved) return moved;
  }
  // Some systems' ReplaceFile only renames (Wine's): the attributes are put back
  // where they did not come along.
  constexpr DWORD kKept = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
  const DWORD now = GetFileAttributesW(wtarget.c_str());
  if (now != INVALID_FILE_ATTRIBUTES && (now & kKept) != (attributes & kKept))
    SetFileAttributesW(wtarget.c_str(), (now & ~kKept) | (attributes & kKept) | FILE_ATTRIBUTE_ARCHIVE);
  return IoStatus::Ok();
}

IoStatus WinPlatform::CopyFileTo(const std::string& source, const std::string& target, bool overwrite) {
  if (auto fault = InjectedFault("CopyFileTo", target)) return *fault;
  return Check(CopyFileW(Widen(source).c_str(), Widen(target).c_str(), overwrite ? FALSE : TRUE));
}

IoStatus WinPlatform::RemoveFile(const std::string& path) {
  if (auto fault = InjectedFault("RemoveFile", path)) return *fault;
  return Check(DeleteFileW(Widen(path).c_str()));
}

std::string WinPlatform::AbsolutePath(const std::string& path) {
  const std::wstring wpath = Widen(path);
  const DWORD n = GetFullPathNameW(wpath.c_str(), 0, nullptr, nullptr);
  if (n == 0) return path;
  std::wstring full(n, L'\0');
  const DWORD m = GetFullPathNameW(wpath.c_str(), n, full.data(), nullptr);
  full.resize(m);
  return Narrow(full);
}

IoStatus WinPlatform::SetAttributes(const std::string& path, std::uint32_t attributes) {
  if (auto fault = InjectedFault("SetAttributes", path)) return *fault;
  // 0 means normal: SetFileAttributes wants FILE_ATTRIBUTE_NORMAL for that.
  return Check(SetFileAttributesW(Widen(path).c_str(), attributes ? attributes : FILE_ATTRIBUTE_NORMAL));
}

std::optional<std::string> WinPlatform::LastWriteTimeText(const std::string& path) {
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (!GetFileAttributesExW(Widen(path).c_str(), GetFileExInfoStandard, &data)) return std::nullopt;
  SYSTEMTIME utc, local;
  if (!FileTimeToSystemTime(&data.ftLastWriteTime, &utc) || !SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local))
    return std::nullopt;
  wchar_t date[128], time[128];
  if (!GetDateFormatW(LOCALE_USER_DEFAULT, DATE_SHORTDATE, &local, nullptr, date, 128) ||
      !GetTimeFormatW(LOCALE_USER_DEFAULT, 0, &local, nullptr, time, 128))
    return std::nullopt;
  return Narrow(std::wstring(date) + L" " + time);
}

std::unique_ptr<LockHandle> WinPlatform::OpenLockFile(const std::string& path, IoStatus& status) {
  if (auto fault = InjectedFault("OpenLockFile", path)) {
    status = *fault;
    return nullptr;
  }
  // Write access shared for reading only: a second writer gets a sharing violation,
  // while a refused party can still read who holds the lock.
  HANDLE h = CreateFileW(Widen(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                         FILE_ATTRIBUTE_NORMAL, nullptr);
  if (h == INVALID_HANDLE_VALUE) {
    status = LastError();
    return nullptr;
  }
  status = IoStatus::Ok();
  return std::make_unique<WinLockHandle>(h);
}

std::string WinPlatform::ToAnsi(std::string_view utf8) { return Narrow(Widen(utf8), CP_ACP); }
std::string WinPlatform::FromAnsi(std::string_view ansi) { return Narrow(Widen(ansi, CP_ACP)); }

std::string WinPlatform::UpperCase(std::string_view text) {
  std::wstring wide = Widen(text);
  // The system's own case mapping, the one the file system compares names with.
  if (!wide.empty()) CharUpperBuffW(wide.data(), static_cast<DWORD>(wide.size()));
  return Narrow(wide);
}

std::string WinPlatform::IniRead(const std::string& section, const std::string& key, const std::string& file) {
  return win::IniRead(section, key, file);
}

IoStatus WinPlatform::IniWrite(const std::string& section, const std::string& key, const std::string& value,
                               const std::string& file) {
  return Check(win::IniWrite(section, key, value, file));
}

bool WinPlatform::AcquireIniMutex() { return win::AcquireIniMutex(); }
void WinPlatform::ReleaseIniMutex() { win::ReleaseIniMutex(); }

std::string WinPlatform::RegReadString(const std::string& subkey, const std::string& value_name) {
  return win::RegReadString(HKEY_LOCAL_MACHINE, subkey, value_name);
}

std::string WinPlatform::WindowsUserName() {
  wchar_t buffer[256] = {};
  DWORD size = 255;
  return GetUserNameW(buffer, &size) ? Narrow(buffer) : std::string();
}

std::string WinPlatform::ComputerName() {
  wchar_t buffer[256] = {};
  DWORD size = 255;
  return GetComputerNameW(buffer, &size) ? Narrow(buffer) : std::string();
}

std::uint32_t WinPlatform::ProcessId() { return GetCurrentProcessId(); }

std::uint32_t WinPlatform::SessionId() {
  DWORD session = 0;
  ProcessIdToSessionId(GetCurrentProcessId(), &session);
  return session;
}

int WinPlatform::ShowMessage(const std::string& prompt, int& buttons, int style, const std::string& title) {
  return win::ShowMessage(prompt, buttons, style, title);
}

HostLink* WinPlatform::Host() {
  const ThreadState* state = ThreadState::Find();
  return state ? state->host.get() : nullptr;
}

std::string WinPlatform::ModuleFolder() {
  HMODULE self = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     reinterpret_cast<LPCWSTR>(&WinPlatform::Instance), &self);
  std::wstring path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD n = GetModuleFileNameW(self, path.data(), static_cast<DWORD>(path.size()));
    if (n < path.size()) {
      path.resize(n);
      break;
    }
    path.resize(path.size() * 2);
  }
  const auto slash = path.rfind(L'\\');
  return Narrow(slash == std::wstring::npos ? path : path.substr(0, slash));
}

const void* WinPlatform::LoadLibraryFile(const std::string& path) {
  // A damaged library must fail quietly, not stop the host with a system error box.
  DWORD old_mode = 0;
  SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &old_mode);
  HMODULE library = LoadLibraryW(Widen(path).c_str());
  SetThreadErrorMode(old_mode, nullptr);
  return library;
}

std::string WinPlatform::LibraryString(const void* library, int id) {
  wchar_t buffer[255];
  const int n = LoadStringW(static_cast<HMODULE>(const_cast<void*>(library)), static_cast<UINT>(id), buffer, 255);
  return n > 0 ? Narrow(std::wstring_view(buffer, static_cast<size_t>(n))) : std::string();
}

}  // namespace tq::win
