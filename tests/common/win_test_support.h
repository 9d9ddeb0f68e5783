// What the Windows tests share: temporary folders, the helper process, and UI
// automation of the windows our code puts up (message boxes first of all).
#pragma once

#include <windows.h>

#include <chrono>
#include <functional>
#include <future>
#include <string>
#include <vector>

#include "common/test_platform.h"

namespace tq::test {

// A new, empty folder under the user's temp folder (trailing "\"), and its removal.
std::string CreateTempFolder();
void RemoveTree(const std::string& folder);

// Folder of the running test executable, with trailing "\" (the build's bin folder).
std::string ExeFolder();
// The build folder (parent of bin), with trailing "\".
std::string BuildFolder();


// The test helper executable as a second process. The helper signals readiness by
// setting the event named in its first argument.
class HelperProcess {
 public:
  // Starts tq_test_helper.exe <command> <ready-event> <args...> and waits until it is ready.
  HelperProcess(const std::string& command, const std::vector<std::string>& args,
                DWORD ready_timeout_ms = 20000);
  ~HelperProcess();  // kills the process if it still runs
  bool ready() const { return ready_; }
  // Waits for the end; returns the exit code, or -1 on time-out.
  int Wait(DWORD timeout_ms = 30000);
  void Kill();
  DWORD pid() const { return info_.dwProcessId; }

 private:
  PROCESS_INFORMATION info_{};
  bool ready_ = false;
};

// Signals the helper's readiness event given on its command line.
void SignalReady(const std::string& event_name);

// EnumThreadWindows / EnumChildWindows with a lambda; the lambda returns false to stop.
template <class F>
BOOL CALLBACK EachWindowCall(HWND hwnd, LPARAM f) {
  return (*reinterpret_cast<F*>(f))(hwnd) ? TRUE : FALSE;
}
template <class F>
void EachThreadWindow(DWORD thread, F f) {
  EnumThreadWindows(thread, &EachWindowCall<F>, reinterpret_cast<LPARAM>(&f));
}
template <class F>
void EachDescendant(HWND parent, F f) {
  EnumChildWindows(parent, &EachWindowCall<F>, reinterpret_cast<LPARAM>(&f));
}
bool HasClass(HWND window, const wchar_t* name);

// The first visible top-level window of `thread` (0: of this process) that `match`
// accepts, looked for until the time-out; null when none appears.
HWND WaitForWindow(const std::function<bool(HWND)>& match, DWORD thread = 0, DWORD timeout_ms = 20000);
// ... with exactly this title.
HWND WaitForWindow(const std::wstring& title, DWORD timeout_ms = 20000);
std::wstring WindowText(HWND window);
std::wstring ItemText(HWND dialog, int item);
// Presses a dialog button as a user would (the dialog receives the button's command).
void PressButton(HWND dialog, int item);

// What an automated user saw on a message box and which button it pressed.
struct BoxSeen {
  bool found = false;
  std::wstring title, text;
  std::wstring ok, yes, no, cancel;  // captions of items 1, 6, 7 and 2 (empty when absent)
};
// Starts a thread that waits for a box with `title`, records it and presses `item`.
std::future<BoxSeen> AnswerMessageBox(const std::wstring& title, int item);

// A value of HKLM\<subkey> in one registry view (32-bit unless told), removed with
// its key at the end; a null data pointer makes the key only.
class RegistryValue {
 public:
  RegistryValue(const std::string& subkey, const std::string& name, DWORD type, const void* data, DWORD size,
                REGSAM view = KEY_WOW64_32KEY);
  // DVHOME, the toolkit's home, as the control reads it.
  static RegistryValue DVHome(const std::string& home);
  ~RegistryValue();
  RegistryValue(const RegistryValue&) = delete;
  RegistryValue& operator=(const RegistryValue&) = delete;

 private:
  std::wstring subkey_;
  REGSAM view_;
};

std::wstring W(const std::string& utf8);
std::string U8(const std::wstring& wide);

}  // namespace tq::test
