// editor_bench.exe: how quickly the colour-setting editor comes up and changes pages,
// as a host sees it, against an empty modal dialog opened by the same host in the same
// run. The host drives the control late-bound, like the demo display.
//
//   editor_bench [--runs N] [--each 1] [--app <folder>] [--user <folder>]
//
// It also prints what the process holds after the first and the last run, and
// around a thousand create/use/release cycles of the control: leaks show as growth.
//
// A timer or a posted message of the host thread cannot time a modal window: it runs
// only when the window's loop lets it, and a timer only at its coarse period. So a
// second thread watches: it waits for the modal window to be visible, notes when the
// host thread has painted everything and is about to wait for messages (see IdleAt),
// clicks the tabs, and closes the window with Cancel. --each 1 prints every run.
// Exit codes: 0 done, 2 bad arguments or no control, 3 a window did not appear or did
// not go idle, 4 a tab click did not switch the page.
#include <windows.h>
#include <commctrl.h>
#include <ole2.h>
#include <psapi.h>
#include <wrl/client.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "list_comm_host.h"

namespace {

using Microsoft::WRL::ComPtr;
using demo::Variant;

constexpr wchar_t kProgId[] = L"TqColorSettingTool.ctlTqColorSetting";
constexpr wchar_t kEditorClass[] = L"TqColorSettingEditor";  // editor_ids.h
constexpr int kTabStripId = 900;
constexpr wchar_t kDialogClass[] = L"#32770";
constexpr wchar_t kCheckClass[] = L"TqColorCheck";  // the check window (More > Check Colors...)
constexpr int kCheckColorsItem = 1600, kListPreviewId = 3003;
constexpr wchar_t kHostClass[] = L"TqEditorBenchHost";
constexpr UINT kReplyMs = 10000;     // for every message the watcher sends the host
constexpr double kAppearMs = 20000;  // for a modal window to become visible

double NowMs() {
  static const double ticks_per_ms = [] {
    LARGE_INTEGER frequency;
    QueryPerformanceFrequency(&frequency);
    return static_cast<double>(frequency.QuadPart) / 1000.0;
  }();
  LARGE_INTEGER now;
  QueryPerformanceCounter(&now);
  return static_cast<double>(now.QuadPart) / ticks_per_ms;
}

std::string Narrow(const std::wstring& text) {
  const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0, nullptr,
                                       nullptr);
  std::string bytes(size, '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), bytes.data(), size, nullptr, nullptr);
  return bytes;
}

void Fail(const std::wstring& text) {
  std::printf("editor_bench: %s\n", Narrow(text).c_str());
  std::fflush(stdout);
}

std::wstring Hex(HRESULT hr) {
  wchar_t text[16];
  swprintf(text, 16, L"0x%08lX", static_cast<unsigned long>(hr));
  return text;
}

// ---- What the watcher thread does to the host thread's windows -----------------------

std::optional<LRESULT> SendWithin(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  DWORD_PTR result = 0;
  if (!SendMessageTimeoutW(window, message, wparam, lparam, SMTO_NORMAL, kReplyMs, &result)) return std::nullopt;
  return static_cast<LRESULT>(result);
}

struct WindowSearch {
  const wchar_t* window_class;
  int id;  // of a child; 0 for a top-level window
  HWND found = nullptr;
};

bool IsClass(HWND window, const wchar_t* window_class) {
  wchar_t name[64] = L"";
  GetClassNameW(window, name, 64);
  return lstrcmpiW(name, window_class) == 0;
}

BOOL CALLBACK MatchVisibleTop(HWND window, LPARAM param) {
  auto& search = *reinterpret_cast<WindowSearch*>(param);
  if (!IsWindowVisible(window) || !IsClass(window, search.window_class)) return TRUE;
  search.found = window;
  return FALSE;
}

BOOL CALLBACK AddVisible(HWND window, LPARAM param) {
  if (!IsWindowVisible(window)) return TRUE;
  wchar_t name[64] = L"", title[128] = L"";
  GetClassNameW(window, name, 64);
  GetWindowTextW(window, title, 128);
  auto& text = *reinterpret_cast<std::wstring*>(param);
  text += std::wstring(text.empty() ? L"" : L", ") + L"\"" + title + L"\" (" + name + L")";
  return TRUE;
}

std::wstring VisibleWindows(DWORD thread) {
  std::wstring text;
  EnumThreadWindows(thread, AddVisible, reinterpret_cast<LPARAM>(&text));
  return text.empty() ? L"none" : text;
}

BOOL CALLBACK MatchChild(HWND window, LPARAM param) {
  auto& search = *reinterpret_cast<WindowSearch*>(param);
  if (GetDlgCtrlID(window) != search.id || !IsClass(window, search.window_class)) return TRUE;
  search.found = window;
  return FALSE;
}

// Whether the window or one of its visible descendants still waits for WM_PAINT. Only
// asks: with bErase FALSE no message reaches the window.
bool PaintPending(HWND window) {
  if (!window || !IsWindowVisible(window)) return false;
  if (GetUpdateRect(window, nullptr, FALSE)) return true;
  for (HWND child = GetWindow(window, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
    if (PaintPending(child)) return true;
  return false;
}

// The host thread's idle marker: a visible 1x1 window of the host thread at the bottom
// of the z-order. A message loop is handed WM_PAINT only when no sent, posted or input
// message waits, and the windows of its thread in z-order, each before its children.
// So once the marker is invalidated, its WM_PAINT comes when every other window of the
// thread is painted and the loop is about to wait: its window procedure notes the time.
// (A sent WM_NULL alone would not do: sent messages come before WM_PAINT, so its reply
// comes before the first paint.)
constexpr wchar_t kMarkerClass[] = L"TqEditorBenchMarker";
HANDLE g_marker_painted = nullptr;
std::atomic<double> g_marker_time{0};

LRESULT CALLBACK MarkerProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message != WM_PAINT) return DefWindowProcW(window, message, wparam, lparam);
  g_marker_time = NowMs();
  PAINTSTRUCT paint;
  BeginPaint(window, &paint);
  EndPaint(window, &paint);
  SetEvent(g_marker_painted);
  return 0;
}

HWND CreateMarker() {
  g_marker_painted = CreateEventW(nullptr, FALSE, FALSE, nullptr);
  WNDCLASSEXW type{};
  type.cbSize = sizeof type;
  type.lpfnWndProc = MarkerProc;
  type.hInstance = GetModuleHandleW(nullptr);
  type.lpszClassName = kMarkerClass;
  RegisterClassExW(&type);
  HWND marker = CreateWindowExW(WS_EX_TOOLWINDOW | WS_EX_NOACTIVATE, kMarkerClass, L"", WS_POPUP | WS_VISIBLE, 0, 0,
                                1, 1, nullptr, nullptr, type.hInstance, nullptr);
  if (marker) SetWindowPos(marker, HWND_BOTTOM, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
  return marker;
}

// From the watcher: the time at which the host thread had painted `top` and every other
// window of its own and was about to wait for messages.
std::optional<double> IdleAt(HWND marker, HWND top) {
  for (int round = 0; round < 20; ++round) {
    ResetEvent(g_marker_painted);
    RedrawWindow(marker, nullptr, nullptr, RDW_INTERNALPAINT);
    if (WaitForSingleObject(g_marker_painted, kReplyMs) != WAIT_OBJECT_0) return std::nullopt;
    const double at = g_marker_time;
    // Only a check, after the figure was taken: the marker came last, as it should.
    if (!PaintPending(top)) return at;
  }
  return std::nullopt;
}

// ---- The watcher thread --------------------------------------------------------------

struct Trial {
  const wchar_t* window_class = kEditorClass;
  bool switch_tabs = false;
};

struct Outcome {
  std::wstring failure;            // empty: every figure below was taken
  int exit_code = 0;
  double to_idle = 0;              // ms from the start to idle with the first paint done
  double to_visible = 0;           // ms from the start until the watcher saw the window visible
  double probe = 0;                // ms an idle check costs when the window is already idle
  double cancelled_at = 0;         // when Cancel was posted
  SIZE size{};                     // of the window, in pixels
  std::vector<double> first_visits, later_visits;  // ms per tab switch
  double check_open = 0;           // ms from Check Colors... to the check window idle
  std::vector<double> preview_paints;  // ms per repaint of its list preview
};

class Watcher {
 public:
  Watcher(DWORD host_thread, HWND marker)
      : host_thread_(host_thread), marker_(marker), armed_(CreateEventW(nullptr, FALSE, FALSE, nullptr)),
        done_(CreateEventW(nullptr, FALSE, FALSE, nullptr)), thread_([this] { Run(); }) {}
  ~Watcher() {
    quit_ = true;
    SetEvent(armed_);
    thread_.join();
    CloseHandle(armed_);
    CloseHandle(done_);
  }
  Watcher(const Watcher&) = delete;
  Watcher& operator=(const Watcher&) = delete;

  // Before the call that opens the window: what to wait for.
  void Arm(const Trial& trial) {
    trial_ = trial;
    outcome_ = Outcome();
    returned_ = false;
    SetEvent(armed_);
  }
  // Just before that call.
  void Start() { start_ = NowMs(); }
  // After it returned. The host thread keeps answering sent messages while it waits.
  Outcome Finish() {
    returned_ = true;
    while (MsgWaitForMultipleObjects(1, &done_, FALSE, INFINITE, QS_SENDMESSAGE) == WAIT_OBJECT_0 + 1) {
      MSG message;
      PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
    }
    return outcome_;
  }

 private:
  void Run() {
    for (;;) {
      WaitForSingleObject(armed_, INFINITE);
      if (quit_) return;
      Watch();
      SetEvent(done_);
    }
  }

  void Watch() {
    Outcome& out = outcome_;
    const double give_up = NowMs() + kAppearMs;
    WindowSearch search{trial_.window_class, 0};
    for (;;) {
      EnumThreadWindows(host_thread_, MatchVisibleTop, reinterpret_cast<LPARAM>(&search));
      if (search.found) break;
      if (returned_) {
        out.failure = std::wstring(L"the call returned without showing a window of class ") + trial_.window_class;
        out.exit_code = 3;
        return;
      }
      if (NowMs() > give_up) {
        // The host thread is held by something else (a message box?) that is not ours to close.
        Fail(std::wstring(L"no window of class ") + trial_.window_class + L" within 20 s; visible windows: " +
             VisibleWindows(host_thread_));
        ExitProcess(3);
      }
      Sleep(1);
    }
    const HWND top = search.found;
    out.to_visible = NowMs() - start_;
    const std::optional<double> idle = IdleAt(marker_, top);
    if (!idle) {
      Abandon(top, L"the window did not go idle");
      return;
    }
    out.to_idle = *idle - start_;
    const double probe_start = NowMs();
    if (const std::optional<double> again = IdleAt(marker_, top)) out.probe = *again - probe_start;
    RECT rect{};
    GetWindowRect(top, &rect);
    out.size = {rect.right - rect.left, rect.bottom - rect.top};
    if (trial_.switch_tabs && !SwitchTabs(top)) return;
    if (trial_.switch_tabs && !OpenChecks(top)) return;
    out.cancelled_at = NowMs();
    PostMessageW(top, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), 0);
  }

  // Clicks every other tab once (each page's first visit: its rows are made then), then
  // every tab again, each time until the editor is idle again.
  bool SwitchTabs(HWND top) {
    Outcome& out = outcome_;
    WindowSearch search{WC_TABCONTROLW, kTabStripId};
    EnumChildWindows(top, MatchChild, reinterpret_cast<LPARAM>(&search));
    const HWND tabs = search.found;
    if (!tabs) return Abandon(top, L"the editor has no tab strip (SysTabControl32, id 900)");
    const std::optional<LRESULT> count = SendWithin(tabs, TCM_GETITEMCOUNT, 0, 0);
    std::optional<LRESULT> selected = SendWithin(tabs, TCM_GETCURSEL, 0, 0);
    if (!count || !selected || *count < 2 || *selected < 0)
      return Abandon(top, L"the tab strip has fewer than two tabs");
    std::vector<bool> visited(static_cast<std::size_t>(*count), false);
    visited[*selected] = true;
    std::vector<int> order;
    for (int round = 0; round < 2; ++round)
      for (int position = 0; position < *count; ++position)
        if (round == 1 || position != *selected) order.push_back(position);
    int current = static_cast<int>(*selected);
    for (const int position : order) {
      if (position == current) continue;
      RECT item{};
      if (!SendWithin(tabs, TCM_GETITEMRECT, position, reinterpret_cast<LPARAM>(&item)))
        return Abandon(top, L"TCM_GETITEMRECT got no answer");
      const LPARAM centre = MAKELPARAM((item.left + item.right) / 2, (item.top + item.bottom) / 2);
      const double start = NowMs();
      if (!SendWithin(tabs, WM_LBUTTONDOWN, MK_LBUTTON, centre) || !SendWithin(tabs, WM_LBUTTONUP, 0, centre))
        return Abandon(top, L"a click on the tab strip got no answer");
      const std::optional<double> idle = IdleAt(marker_, top);
      if (!idle) return Abandon(top, L"the editor did not go idle after a tab switch");
      selected = SendWithin(tabs, TCM_GETCURSEL, 0, 0);
      if (!selected || *selected != position) {
        out.exit_code = 4;
        return Abandon(top, L"a click on tab " + std::to_wstring(position) + L" left tab " +
                                std::to_wstring(selected ? *selected : -1) + L" selected");
      }
      (visited[position] ? out.later_visits : out.first_visits).push_back(*idle - start);
      visited[position] = true;
      current = position;
    }
    return true;
  }

  // Opens the check window until it is idle, repaints its preview a few times, closes it.
  bool OpenChecks(HWND top) {
    Outcome& out = outcome_;
    const double start = NowMs();
    PostMessageW(top, WM_COMMAND, kCheckColorsItem, 0);
    WindowSearch search{kCheckClass, 0};
    for (int waited = 0; !search.found && waited < kAppearMs; ++waited) {
      EnumThreadWindows(host_thread_, MatchVisibleTop, reinterpret_cast<LPARAM>(&search));
      if (!search.found) Sleep(1);
    }
    if (!search.found) return Abandon(top, L"Check Colors... showed no check window");
    const std::optional<double> idle = IdleAt(marker_, search.found);
    if (!idle) return Abandon(top, L"the check window did not go idle");
    out.check_open = *idle - start;
    WindowSearch preview{L"Static", kListPreviewId};
    EnumChildWindows(search.found, MatchChild, reinterpret_cast<LPARAM>(&preview));
    if (!preview.found) return Abandon(top, L"the check window has no preview (id 3003)");
    for (int i = 0; i < 10; ++i) {
      const double paint_start = NowMs();
      RedrawWindow(preview.found, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);  // painted before it returns
      out.preview_paints.push_back(NowMs() - paint_start);
    }
    PostMessageW(search.found, WM_CLOSE, 0, 0);
    IdleAt(marker_, top);
    return true;
  }

  // Records why the trial ended early and closes the window, so that the host returns.
  bool Abandon(HWND top, const std::wstring& why) {
    outcome_.failure = why;
    if (!outcome_.exit_code) outcome_.exit_code = 3;
    PostMessageW(top, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), 0);
    return false;
  }

  const DWORD host_thread_;
  const HWND marker_;
  HANDLE armed_, done_;
  Trial trial_;
  Outcome outcome_;
  std::atomic<bool> quit_{false}, returned_{false};
  std::atomic<double> start_{0};
  std::thread thread_;
};

// ---- The empty dialog ----------------------------------------------------------------

// A DLGTEMPLATE in memory: caption, OK and Cancel, the usual dialog font.
class DialogTemplate {
 public:
  DialogTemplate() {
    Dword(DS_MODALFRAME | DS_SETFONT | WS_POPUP | WS_CAPTION | WS_SYSMENU);
    Dword(0);      // extended style
    Word(2);       // items
    Shorts({0, 0, 300, 200});
    Word(0);       // no menu
    Word(0);       // the dialog class
    Text(L"Empty dialog");
    Word(8);
    Text(L"MS Shell Dlg");
    Item(IDOK, L"OK", BS_DEFPUSHBUTTON, 186);
    Item(IDCANCEL, L"Cancel", BS_PUSHBUTTON, 243);
  }
  const DLGTEMPLATE* get() const { return reinterpret_cast<const DLGTEMPLATE*>(words_.data()); }

 private:
  void Word(WORD value) { words_.push_back(value); }
  void Dword(DWORD value) {
    Word(LOWORD(value));
    Word(HIWORD(value));
  }
  void Shorts(std::initializer_list<short> values) {
    for (short value : values) Word(static_cast<WORD>(value));
  }
  void Text(const wchar_t* text) {
    for (; *text; ++text) Word(static_cast<WORD>(*text));
    Word(0);
  }
  void Item(int id, const wchar_t* caption, DWORD style, short x) {
    if (words_.size() % 2) Word(0);  // items start on a DWORD boundary
    Dword(WS_CHILD | WS_VISIBLE | WS_TABSTOP | style);
    Dword(0);
    Shorts({x, 178, 50, 14});
    Word(static_cast<WORD>(id));
    Word(0xFFFF);
    Word(0x0080);  // the button class
    Text(caption);
    Word(0);       // no creation data
  }
  std::vector<WORD> words_;
};

// The dialog takes the editor's size (when known) and its place, centred over the owner.
INT_PTR CALLBACK EmptyDialogProc(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_INITDIALOG: {
      const SIZE size = *reinterpret_cast<const SIZE*>(lparam);
      if (size.cx > 0 && size.cy > 0) {
        RECT owner;
        GetWindowRect(GetWindow(dialog, GW_OWNER), &owner);
        SetWindowPos(dialog, nullptr, std::max(0L, (owner.left + owner.right - size.cx) / 2),
                     std::max(0L, (owner.top + owner.bottom - size.cy) / 2), size.cx, size.cy,
                     SWP_NOZORDER | SWP_NOACTIVATE);
        RECT client;
        GetClientRect(dialog, &client);
        RECT button;
        GetWindowRect(GetDlgItem(dialog, IDOK), &button);
        const int width = button.right - button.left, height = button.bottom - button.top, gap = height / 2;
        const int y = client.bottom - gap - height;
        SetWindowPos(GetDlgItem(dialog, IDOK), nullptr, client.right - 2 * (width + gap), y, 0, 0,
                     SWP_NOZORDER | SWP_NOSIZE);
        SetWindowPos(GetDlgItem(dialog, IDCANCEL), nullptr, client.right - (width + gap), y, 0, 0,
                     SWP_NOZORDER | SWP_NOSIZE);
      }
      return TRUE;
    }
    case WM_COMMAND:
      if (LOWORD(wparam) == IDOK || LOWORD(wparam) == IDCANCEL) EndDialog(dialog, LOWORD(wparam));
      return TRUE;
    default:
      return FALSE;
  }
}

// ---- The host ------------------------------------------------------------------------

struct Options {
  int runs = 30;
  bool each = false;  // --each 1: a line per run
  std::wstring app_folder = L"app", user_folder = L"user";
};

bool ParseOptions(int argc, wchar_t** argv, Options& options) {
  for (int i = 1; i < argc; i += 2) {
    if (i + 1 >= argc) return false;
    const std::wstring name = argv[i], value = argv[i + 1];
    if (name == L"--runs") {
      options.runs = _wtoi(value.c_str());
      if (options.runs < 1) return false;
    } else if (name == L"--each") {
      options.each = value == L"1";
    } else if (name == L"--app") {
      options.app_folder = value;
    } else if (name == L"--user") {
      options.user_folder = value;
    } else {
      return false;
    }
  }
  for (std::wstring* folder : {&options.app_folder, &options.user_folder}) {
    wchar_t full[MAX_PATH];
    const DWORD size = GetFullPathNameW(folder->c_str(), MAX_PATH, full, nullptr);
    if (size > 0 && size < MAX_PATH) *folder = full;
    if (folder->back() != L'\\') *folder += L'\\';
  }
  return true;
}

class Host {
 public:
  explicit Host(HWND window) : window_(window) {}

  bool Connect(const Options& options) {
    CLSID clsid;
    HRESULT hr = CLSIDFromProgID(kProgId, &clsid);
    if (SUCCEEDED(hr)) hr = CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&control_));
    if (FAILED(hr)) {
      Fail(std::wstring(L"the control ") + kProgId + L" could not be created (" + Hex(hr) +
           L"): is TqColorSettingTool.dll registered?");
      return false;
    }
    // The host answers the voltage-level queries; nothing else it is told matters here.
    host_.Attach(demo::ListCommHost::Create([](const std::wstring&) {}, [](const std::wstring&) {}));
    const struct {
      const wchar_t* key;
      Variant value;
    } context[] = {
        {L"UserName", Variant::Text(L"bench")},
        {L"Language", Variant::Text(L"EN")},
        {L"ApplicationName", Variant::Text(L"Editor bench")},
        {L"ApplicationNumber", Variant::Short(1)},
        {L"HostApplication", Variant::Text(L"Editor bench")},
        {L"AppFolder", Variant::Text(options.app_folder)},
        {L"UserFolder", Variant::Text(options.user_folder)},
        {L"AuthorizationLevel", Variant::Short(3)},
        {L"Pipeline", Variant::Bool(true)},
        {L"hwndParentView", Variant::Int(static_cast<long>(reinterpret_cast<LONG_PTR>(window_)))},
        {L"ListCommRef", Variant::Object(host_.Get())},
        {L"Initialize", Variant::Text(L"ColorScheme")},
    };
    for (const auto& [key, value] : context) {
      const Variant name = Variant::Text(key);
      if (FAILED(Call(L"SetObjectValue", {*name.get(), *value.get()}))) return false;
    }
    const Variant name = Variant::Text(L"ClutFile");
    if (FAILED(Call(L"GetObjectValue", {*name.get()}, clut_file_.get())) ||
        FAILED(VariantChangeType(clut_file_.get(), clut_file_.get(), 0, VT_BSTR)))
      return false;
    return SUCCEEDED(IdOf(L"Show", show_id_));
  }

  // Show(ClutFile, 0, 0, True), all four by reference as a host passes them. The watcher
  // is started just before the Invoke, so the name lookup is not counted.
  HRESULT Show(Watcher& watcher) {
    BSTR file = SysAllocString(clut_file_.get()->bstrVal);
    short tab = 0, category = 0;
    VARIANT_BOOL enable_changes = VARIANT_TRUE;
    VARIANT args[4] = {};  // last argument first
    args[3].vt = VT_BYREF | VT_BSTR;
    args[3].pbstrVal = &file;
    args[2].vt = VT_BYREF | VT_I2;
    args[2].piVal = &tab;
    args[1].vt = VT_BYREF | VT_I2;
    args[1].piVal = &category;
    args[0].vt = VT_BYREF | VT_BOOL;
    args[0].pboolVal = &enable_changes;
    DISPPARAMS params{args, nullptr, 4, 0};
    Variant result;
    watcher.Start();
    const HRESULT hr = control_->Invoke(show_id_, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &params,
                                        result.get(), nullptr, nullptr);
    SysFreeString(file);
    return hr;
  }

  // Creates, uses and releases `count` controls of their own, as short-lived hosts do.
  bool Cycles(int count) {
    CLSID clsid;
    if (FAILED(CLSIDFromProgID(kProgId, &clsid))) return false;
    for (int i = 0; i < count; ++i) {
      ComPtr<IDispatch> control;
      if (FAILED(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&control)))) return false;
      const Variant level = Variant::Text(L"AuthorizationLevel"), value = Variant::Short(static_cast<short>(i % 100));
      const Variant table = Variant::Text(L"ColorsByIndexTable");
      Variant result;
      if (FAILED(demo::CallByName(control.Get(), L"SetObjectValue", {*level.get(), *value.get()}, nullptr)) ||
          FAILED(demo::CallByName(control.Get(), L"GetObjectValue", {*table.get()}, result.get())))
        return false;
    }
    return true;
  }

  void Disconnect() {
    // The control goes before the host object it holds.
    control_.Reset();
    host_.Reset();
  }

 private:
  HRESULT IdOf(const wchar_t* member, DISPID& id) {
    LPOLESTR name = const_cast<LPOLESTR>(member);
    const HRESULT hr = control_->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id);
    if (FAILED(hr)) Fail(std::wstring(L"the control has no member ") + member + L" (" + Hex(hr) + L")");
    return hr;
  }

  HRESULT Call(const wchar_t* member, std::vector<VARIANT> args, VARIANT* result = nullptr) {
    const HRESULT hr = demo::CallByName(control_.Get(), member, std::move(args), result);
    if (FAILED(hr)) Fail(std::wstring(member) + L" failed (" + Hex(hr) + L")");
    return hr;
  }

  HWND window_;
  ComPtr<IDispatch> control_;
  ComPtr<demo::ListCommHost> host_;
  DISPID show_id_ = DISPID_UNKNOWN;
  Variant clut_file_;
};

HWND CreateHostWindow() {
  WNDCLASSEXW type{};
  type.cbSize = sizeof type;
  type.lpfnWndProc = DefWindowProcW;
  type.hInstance = GetModuleHandleW(nullptr);
  type.hCursor = LoadCursorW(nullptr, IDC_ARROW);
  type.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1);
  type.lpszClassName = kHostClass;
  RegisterClassExW(&type);
  HWND window = CreateWindowExW(0, kHostClass, L"Editor bench host", WS_OVERLAPPEDWINDOW, 40, 40, 1000, 900, nullptr,
                                nullptr, type.hInstance, nullptr);
  if (!window) return nullptr;
  ShowWindow(window, SW_SHOWNORMAL);
  UpdateWindow(window);
  return window;
}

// Lets the host window settle (mapping, activation, paint) before anything is measured.
void Pump(DWORD ms) {
  const double until = NowMs() + ms;
  MSG message;
  while (NowMs() < until) {
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
      TranslateMessage(&message);
      DispatchMessageW(&message);
    }
    MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
  }
}

// ---- Figures -------------------------------------------------------------------------

struct Figures {
  std::vector<double> values;
  void Add(double value) { values.push_back(value); }
  void Add(const std::vector<double>& more) { values.insert(values.end(), more.begin(), more.end()); }
  double Median() const {
    std::vector<double> sorted = values;
    std::sort(sorted.begin(), sorted.end());
    const std::size_t n = sorted.size();
    return n == 0 ? 0 : n % 2 ? sorted[n / 2] : (sorted[n / 2 - 1] + sorted[n / 2]) / 2;
  }
  double Min() const { return values.empty() ? 0 : *std::min_element(values.begin(), values.end()); }
};

// What the process holds. Wine counts no handles or GDI objects (GetProcessHandleCount and
// GetGuiResources answer 0): the value of a fresh handle shows whether the handle table
// grew, and the windows of this thread stand in for USER objects.
struct Resources {
  std::size_t next_handle = 0, committed_kib = 0;
  unsigned long gdi = 0, user = 0, windows = 0;

  static Resources Now() {
    Resources r;
    HANDLE probe = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    r.next_handle = reinterpret_cast<std::uintptr_t>(probe);
    CloseHandle(probe);
    PROCESS_MEMORY_COUNTERS memory{};
    memory.cb = sizeof memory;
    GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory);
    r.committed_kib = memory.PagefileUsage / 1024;
    r.gdi = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS);
    r.user = GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS);
    EnumThreadWindows(GetCurrentThreadId(), CountWindows, reinterpret_cast<LPARAM>(&r.windows));
    return r;
  }
  static BOOL CALLBACK CountWindows(HWND window, LPARAM count) {
    ++*reinterpret_cast<unsigned long*>(count);
    EnumChildWindows(window, CountWindows, count);
    return TRUE;
  }
};

void Growth(const char* what, const Resources& a, const Resources& b) {
  std::printf("  %-28s next handle %#zx -> %#zx, GDI %lu -> %lu, USER %lu -> %lu, windows %lu -> %lu, "
              "committed KiB %zu -> %zu\n",
              what, a.next_handle, b.next_handle, a.gdi, b.gdi, a.user, b.user, a.windows, b.windows,
              a.committed_kib, b.committed_kib);
}

void Row(const char* what, const Figures& figures) {
  std::printf("  %-28s %9.2f %9.2f   (%d)\n", what, figures.Median(), figures.Min(),
              static_cast<int>(figures.values.size()));
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  Options options;
  if (!ParseOptions(argc, argv, options)) {
    std::printf("usage: editor_bench [--runs N] [--each 1] [--app <folder>] [--user <folder>]\n");
    return 2;
  }
  if (FAILED(OleInitialize(nullptr))) {
    Fail(L"OleInitialize failed");
    return 2;
  }
  int exit_code = 0;
  {
    const HWND window = CreateHostWindow();
    const HWND marker = window ? CreateMarker() : nullptr;
    if (!marker) {
      Fail(L"the host window or the idle marker could not be created");
      OleUninitialize();
      return 2;
    }
    Pump(300);
    Host host(window);
    if (!host.Connect(options)) {
      DestroyWindow(window);
      OleUninitialize();
      return 2;
    }
    Watcher watcher(GetCurrentThreadId(), marker);
    const DialogTemplate dialog;
    SIZE editor_size{};

    // One trial: `open` opens the modal window and returns once it closed.
    auto trial = [&](const Trial& what, auto open, Outcome& out, double& returned_after_cancel) {
      watcher.Arm(what);
      const bool opened = open();
      const double returned = NowMs();
      out = watcher.Finish();
      if (!opened && out.failure.empty()) out.failure = L"the call that opens the window failed";
      if (!out.failure.empty()) return false;
      returned_after_cancel = returned - out.cancelled_at;
      return true;
    };
    auto show = [&] {
      const HRESULT hr = host.Show(watcher);
      if (FAILED(hr)) Fail(L"Show failed (" + Hex(hr) + L")");
      return SUCCEEDED(hr);
    };
    auto empty_dialog = [&] {
      watcher.Start();
      return DialogBoxIndirectParamW(GetModuleHandleW(nullptr), dialog.get(), window, EmptyDialogProc,
                                     reinterpret_cast<LPARAM>(&editor_size)) == IDCANCEL;
    };

    Figures show_idle, dialog_idle, first_visit, again, show_closed, dialog_closed, probe, check_open, preview_paint;
    double cold_show = 0, cold_dialog = 0;
    Resources warm, last;
    for (int run = -1; run < options.runs && exit_code == 0; ++run) {
      Outcome editor, plain;
      double editor_closed = 0, plain_closed = 0;
      // Run -1 warms up: the first Show of the process loads and registers what later ones reuse.
      if (!trial(Trial{kEditorClass, run >= 0}, show, editor, editor_closed)) {
        Fail(L"editor: " + editor.failure);
        exit_code = editor.exit_code ? editor.exit_code : 3;
        break;
      }
      editor_size = editor.size;
      if (!trial(Trial{kDialogClass, false}, empty_dialog, plain, plain_closed)) {
        Fail(L"empty dialog: " + plain.failure);
        exit_code = plain.exit_code ? plain.exit_code : 3;
        break;
      }
      if (run < 0) {
        cold_show = editor.to_idle;
        cold_dialog = plain.to_idle;
        continue;
      }
      show_idle.Add(editor.to_idle);
      dialog_idle.Add(plain.to_idle);
      first_visit.Add(editor.first_visits);
      again.Add(editor.later_visits);
      show_closed.Add(editor_closed);
      dialog_closed.Add(plain_closed);
      probe.Add(editor.probe);
      check_open.Add(editor.check_open);
      preview_paint.Add(editor.preview_paints);
      if (run == 0) warm = Resources::Now();  // every page and the check window built once
      if (options.each) {
        Figures firsts, agains;
        firsts.Add(editor.first_visits);
        agains.Add(editor.later_visits);
        std::printf("run %2d: Show to idle %.2f (visible at %.2f), empty dialog %.2f, tab switch first %.2f,"
                    " again %.2f, Cancel to return %.2f ms\n",
                    run, editor.to_idle, editor.to_visible, plain.to_idle, firsts.Median(), agains.Median(),
                    editor_closed);
        std::fflush(stdout);
      }
    }

    last = Resources::Now();
    constexpr int kCycles = 1000;
    const bool cycled = exit_code == 0 && host.Cycles(10);  // first-use allocations
    const Resources before_cycles = Resources::Now();
    if (cycled && !host.Cycles(kCycles)) Fail(L"a create/use/release cycle of the control failed");
    const Resources after_cycles = Resources::Now();

    if (exit_code == 0) {
      std::printf("Editor window under Wine, %d runs (%ld x %ld px, the empty dialog the same size)\n", options.runs,
                  static_cast<long>(editor_size.cx), static_cast<long>(editor_size.cy));
      std::printf("  %-28s %9s %9s   (%s)\n", "ms", "median", "min", "samples");
      Row("Show to idle", show_idle);
      Row("empty dialog to idle", dialog_idle);
      std::printf("  %-28s %9.2f %9.2f\n", "ratio", show_idle.Median() / dialog_idle.Median(),
                  show_idle.Min() / dialog_idle.Min());
      Row("tab switch (first visit)", first_visit);
      Row("tab switch (again)", again);
      Row("check window open to idle", check_open);
      Row("list preview repaint", preview_paint);
      Row("Cancel to Show returned", show_closed);
      Row("Cancel to dialog returned", dialog_closed);
      std::printf("  first of the process: Show to idle %.2f ms, empty dialog to idle %.2f ms\n", cold_show,
                  cold_dialog);
      std::printf("  idle check on an idle editor: %.3f ms (median)\n", probe.Median());
      std::printf("Resources\n");
      Growth(("openings 1 to " + std::to_string(options.runs)).c_str(), warm, last);
      Growth((std::to_string(kCycles) + " control cycles").c_str(), before_cycles, after_cycles);
      std::fflush(stdout);
    }
    host.Disconnect();
    DestroyWindow(window);
  }
  OleUninitialize();
  return exit_code;
}
