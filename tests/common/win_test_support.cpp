#include "common/win_test_support.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <thread>

#include "win32/text.h"

namespace tq::test {

std::wstring W(const std::string& utf8) { return win::Widen(utf8); }
std::string U8(const std::wstring& wide) { return win::Narrow(wide); }

void RemoveTree(const std::string& folder) {  // read-only files and folders included
  namespace fs = std::filesystem;
  std::error_code error;
  SetFileAttributesW(W(folder).c_str(), FILE_ATTRIBUTE_NORMAL);
  for (fs::recursive_directory_iterator i(W(folder), error), end; !error && i != end; i.increment(error))
    SetFileAttributesW(i->path().c_str(), FILE_ATTRIBUTE_NORMAL);
  fs::remove_all(W(folder), error);
}

std::string CreateTempFolder() {
  wchar_t temp[MAX_PATH];
  GetTempPathW(MAX_PATH, temp);
  static std::atomic<int> counter{0};
  for (;;) {
    std::wstring candidate = std::wstring(temp) + L"tqtest_" + std::to_wstring(GetCurrentProcessId()) + L"_" +
                             std::to_wstring(counter++) + L"_" + std::to_wstring(GetTickCount());
    if (CreateDirectoryW(candidate.c_str(), nullptr)) return U8(candidate) + "\\";
  }
}

std::string ExeFolder() {
  wchar_t path[MAX_PATH];
  const DWORD n = GetModuleFileNameW(nullptr, path, MAX_PATH);
  std::wstring p(path, n);
  return U8(p.substr(0, p.rfind(L'\\') + 1));
}

std::string BuildFolder() {
  std::string bin = ExeFolder();
  bin.pop_back();
  return bin.substr(0, bin.rfind('\\') + 1);
}

RegistryValue::RegistryValue(const std::string& subkey, const std::string& name, DWORD type, const void* data,
                             DWORD size, REGSAM view)
    : subkey_(W(subkey)), view_(view) {
  HKEY key;
  EXPECT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, subkey_.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS | view, nullptr, &key,
                            nullptr),
            ERROR_SUCCESS);
  if (data) RegSetValueExW(key, W(name).c_str(), 0, type, static_cast<const BYTE*>(data), size);
  RegCloseKey(key);
}

RegistryValue RegistryValue::DVHome(const std::string& home) {
  const std::wstring value = W(home);
  return RegistryValue("SOFTWARE\\DataViews\\DVtools\\2.6", "DVHOME", REG_SZ, value.c_str(),
                       static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
}

RegistryValue::~RegistryValue() { RegDeleteKeyExW(HKEY_LOCAL_MACHINE, subkey_.c_str(), view_, 0); }

HelperProcess::HelperProcess(const std::string& command, const std::vector<std::string>& args,
                             DWORD ready_timeout_ms) {
  static std::atomic<int> counter{0};
  const std::string event_name =
      "TqHelperReady_" + std::to_string(GetCurrentProcessId()) + "_" + std::to_string(counter++);
  HANDLE ready = CreateEventW(nullptr, TRUE, FALSE, W(event_name).c_str());
  std::string line = "\"" + ExeFolder() + "tq_test_helper.exe\" " + command + " " + event_name;
  for (const auto& a : args) {
    // A backslash before the closing quote would escape it: double the trailing ones.
    std::string quoted = a;
    for (auto i = a.size(); i > 0 && a[i - 1] == '\\'; --i) quoted += '\\';
    line += " \"" + quoted + "\"";
  }
  std::wstring wline = W(line);
  STARTUPINFOW si{};
  si.cb = sizeof(si);
  // Wine now and then fails a start under load (seen once in CI): try again a few times.
  DWORD error = 0;
  for (int attempt = 0; attempt < 5; ++attempt) {
    if (CreateProcessW(nullptr, wline.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &si, &info_)) break;
    error = GetLastError();
    Sleep(200);
  }
  if (!info_.hProcess) {
    ADD_FAILURE() << "cannot start helper (error " << error << "): " << line;
    CloseHandle(ready);
    return;
  }
  if (error) std::printf("helper started after error %lu: %s\n", error, line.c_str());
  HANDLE waits[2] = {ready, info_.hProcess};
  ready_ = WaitForMultipleObjects(2, waits, FALSE, ready_timeout_ms) == WAIT_OBJECT_0;
  CloseHandle(ready);
}

HelperProcess::~HelperProcess() {
  if (!info_.hProcess) return;
  if (WaitForSingleObject(info_.hProcess, 0) == WAIT_TIMEOUT) Kill();
  CloseHandle(info_.hProcess);
  CloseHandle(info_.hThread);
}

int HelperProcess::Wait(DWORD timeout_ms) {
  if (!info_.hProcess || WaitForSingleObject(info_.hProcess, timeout_ms) != WAIT_OBJECT_0) return -1;
  DWORD code = 0;
  GetExitCodeProcess(info_.hProcess, &code);
  return static_cast<int>(code);
}

void HelperProcess::Kill() {
  if (!info_.hProcess) return;
  TerminateProcess(info_.hProcess, 99);
  WaitForSingleObject(info_.hProcess, 10000);
}

void SignalReady(const std::string& event_name) {
  HANDLE ready = OpenEventW(EVENT_MODIFY_STATE, FALSE, W(event_name).c_str());
  if (ready) {
    SetEvent(ready);
    CloseHandle(ready);
  }
}

bool HasClass(HWND window, const wchar_t* name) {
  wchar_t found[64];
  return GetClassNameW(window, found, 64) && !_wcsicmp(found, name);
}

HWND WaitForWindow(const std::function<bool(HWND)>& match, DWORD thread, DWORD timeout_ms) {
  const ULONGLONG end = GetTickCount64() + timeout_ms;
  for (;;) {
    HWND found = nullptr;
    auto check = [&](HWND window) {
      DWORD pid = 0;
      if ((thread || (GetWindowThreadProcessId(window, &pid), pid == GetCurrentProcessId())) &&
          IsWindowVisible(window) && match(window))
        found = window;
      return !found;
    };
    if (thread) EachThreadWindow(thread, check);
    else EnumWindows(&EachWindowCall<decltype(check)>, reinterpret_cast<LPARAM>(&check));
    if (found || GetTickCount64() >= end) return found;
    Sleep(20);
  }
}

HWND WaitForWindow(const std::wstring& title, DWORD timeout_ms) {
  return WaitForWindow([&](HWND window) { return WindowText(window) == title; }, 0, timeout_ms);
}

std::wstring WindowText(HWND window) {
  wchar_t buffer[4096];
  const int n = GetWindowTextW(window, buffer, 4096);
  return std::wstring(buffer, n > 0 ? n : 0);
}

std::wstring ItemText(HWND dialog, int item) {
  HWND control = GetDlgItem(dialog, item);
  return control ? WindowText(control) : std::wstring();
}

void PressButton(HWND dialog, int item) {
  PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(item, BN_CLICKED), reinterpret_cast<LPARAM>(GetDlgItem(dialog, item)));
}

std::future<BoxSeen> AnswerMessageBox(const std::wstring& title, int item) {
  return std::async(std::launch::async, [title, item] {
    BoxSeen seen;
    HWND box = WaitForWindow(title);
    if (!box) return seen;
    Sleep(100);  // let the box finish its activation, as a person would need to anyway
    seen.found = true;
    seen.title = WindowText(box);
    seen.text = ItemText(box, 0xFFFF);
    seen.ok = ItemText(box, IDOK);
    seen.yes = ItemText(box, IDYES);
    seen.no = ItemText(box, IDNO);
    seen.cancel = ItemText(box, IDCANCEL);
    PressButton(box, item);
    return seen;
  });
}

}  // namespace tq::test
