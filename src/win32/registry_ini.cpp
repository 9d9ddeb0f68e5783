#include "win32/registry_ini.h"

#include <vector>

#include "win32/handles.h"
#include "win32/text.h"
#include "win32/thread_state.h"

namespace tq::win {

std::string RegReadString(HKEY root, const std::string& subkey, const std::string& value_name) {
  UniqueRegKey key;
  if (RegOpenKeyExW(root, Widen(subkey).c_str(), 0, KEY_QUERY_VALUE | KEY_WOW64_32KEY, key.put()) != ERROR_SUCCESS)
    return {};
  wchar_t buffer[255] = {};
  DWORD size = sizeof(buffer);
  DWORD type = 0;
  const LONG rc =
      RegQueryValueExW(key.get(), Widen(value_name).c_str(), nullptr, &type, reinterpret_cast<BYTE*>(buffer), &size);
  if (rc != ERROR_SUCCESS || (type != REG_SZ && type != REG_EXPAND_SZ)) return {};
  // The stored size may or may not count a terminator: take what is there up to the first NUL.
  std::wstring_view text(buffer, size / sizeof(wchar_t));
  text = text.substr(0, text.find(L'\0'));
  return Narrow(text);
}

std::string IniRead(const std::string& section, const std::string& key, const std::string& file) {
  const std::wstring wsection = Widen(section), wkey = Widen(key), wfile = Widen(file);
  std::vector<wchar_t> buffer(255);
  for (;;) {
    const DWORD n = GetPrivateProfileStringW(wsection.c_str(), wkey.c_str(), L"", buffer.data(),
                                             static_cast<DWORD>(buffer.size()), wfile.c_str());
    // n == size - 1 means the value may have been cut: try again with twice the room.
    if (n + 1 < buffer.size()) return Narrow(std::wstring_view(buffer.data(), n));
    buffer.assign(buffer.size() * 2, L'\0');
  }
}

bool IniWrite(const std::string& section, const std::string& key, const std::string& value, const std::string& file) {
  return WritePrivateProfileStringW(Widen(section).c_str(), Widen(key).c_str(), Widen(value).c_str(), Widen(file).c_str());
}

bool AcquireIniMutex(DWORD timeout_ms) {
  UniqueHandle& mutex = ThreadState::This().ini_mutex;
  if (!mutex) {
    mutex.reset(CreateMutexW(nullptr, FALSE, L"IniFileWrite"));
    if (mutex && GetLastError() == ERROR_ALREADY_EXISTS) mutex.reset(OpenMutexW(MUTEX_ALL_ACCESS, FALSE, L"IniFileWrite"));
  }
  if (!mutex) return false;
  // A failed wait counts as held, as the other writers of these files have always
  // treated it; a time-out or an abandoned mutex does not.
  const DWORD wait = WaitForSingleObject(mutex.get(), timeout_ms);
  return wait == WAIT_OBJECT_0 || wait == WAIT_FAILED;
}

void ReleaseIniMutex() {
  ThreadState* state = ThreadState::Find();
  if (!state || !state->ini_mutex) return;
  ReleaseMutex(state->ini_mutex.get());
  state->ini_mutex.reset();
}

}  // namespace tq::win
