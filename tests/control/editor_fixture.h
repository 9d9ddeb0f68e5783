// The fixture of the editor's UI automation, in-process: a host thread plays the
// process display (its window owns the editor, a C++ object answers the host calls)
// and opens the editor through the registered control; the test's own thread drives
// the window through the ids of the automation contract, as a screen reader or a
// person would.
#pragma once

#include <gtest/gtest.h>

#include <windows.h>
#include <commctrl.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <optional>
#include <future>
#include <string>
#include <vector>

#include "common/win_test_support.h"
#include "colortable/clut_format.h"
#include "control/client.h"
#include "editor/host_exchange.h"
#include "win32/editor_ids.h"

namespace editor_test {

using namespace tq::test;
using test::ArgList;
using tq::ParseClutLine;
using tq::SplitClutLines;
using test::ComPtr;
namespace ids = tq::win::editor_ids;

// The process display's list-communication object: reports `levels` voltage levels
// (or junk), notes every call.
class DisplayHost final : public test::HostDispatch {
 public:
  int levels = 4;
  bool junk = false;
  std::vector<std::wstring> calls;

  STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* p, VARIANT*, EXCEPINFO*, UINT*) override {
    std::wstring call = kMembers[id - 1];
    for (UINT i = p->cArgs; i-- > 0;)
      if (p->rgvarg[i].vt == VT_BSTR) call += L"|" + std::wstring(p->rgvarg[i].bstrVal);
    calls.push_back(call);
    if (id == 5) CreateDirectoryW(p->rgvarg[0].bstrVal, nullptr);  // the display makes the folders asked for
    if (id != 1) return S_OK;
    const std::wstring expression = p->rgvarg[2].bstrVal;
    VARIANT* status = p->rgvarg[1].pvarVal;
    VARIANT* value = p->rgvarg[0].pvarVal;
    VariantClear(status);
    VariantClear(value);
    *status = Number(0);
    if (expression.rfind(L"#return network_topology_manager", 0) == 0 && junk) {  // a vector of the wrong shape
      value->vt = VT_BSTR;
      value->bstrVal = SysAllocString(L"LEVELS?");
    } else if (expression.rfind(L"#return network_topology_manager", 0) == 0) {
      Vector(*value, 3);
      Vector(Element(*value, 3), levels);
      for (int k = 1; k <= levels; ++k) Element(Element(*value, 3), k) = Number(400 - 10 * k);
    } else if (expression.rfind(L"#return TRANSLATION(VECTOR(", 0) == 0) {
      Vector(*value, levels);
      for (int k = 1; k <= levels; ++k) {
        Element(*value, k).vt = VT_BSTR;
        Element(*value, k).bstrVal = SysAllocString((L"Level " + std::to_wstring(k)).c_str());
      }
    } else {
      *value = Number(1);
    }
    return S_OK;
  }

 private:
  // A 1-based vector of VARIANTs, as the process display answers.
  static void Vector(VARIANT& v, int size) {
    SAFEARRAYBOUND bound{static_cast<ULONG>(size), 1};
    v.vt = VT_ARRAY | VT_VARIANT;
    v.parray = SafeArrayCreate(VT_VARIANT, 1, &bound);
  }
  static VARIANT& Element(VARIANT& v, int k) { return static_cast<VARIANT*>(v.parray->pvData)[k - 1]; }
  static VARIANT Number(long n) {
    VARIANT v{};
    v.vt = VT_I4;
    v.lVal = n;
    return v;
  }
};

// What the host does and what it saw.
struct Display {
  // Context.
  std::wstring language = L"EN";
  short level = 2;
  bool pipeline = false, initialize = true, topmost = false, stale_owner = false;
  int levels = 4;
  bool junk_levels = false;
  // The call.
  const wchar_t* tab_name = nullptr;  // Show2 when set
  short tab = 0, category = 0;
  bool enable = true;
  std::optional<bool> enable_later;  // EnableChanges of the second and later openings
  int shows = 1;
  std::function<void()> before_show;  // on the display's thread, after "Initialize"
  std::function<void()> between_shows;  // on the display's thread, before each Show after the first
  std::function<void(IDispatch*)> with_control;  // the same, with the control (events, keys)
  std::function<void()> after_shows;  // on the display's thread, while the control still lives
  // Seen.
  std::atomic<int> returned{0};  // Show calls that have returned
  std::vector<bool> results;
  HRESULT hr = S_OK;
  bool owner_enabled_after = false;
  std::vector<std::wstring> calls;
  DWORD thread = 0;
};

class EditorWindow : public ::testing::Test {
 protected:
  void SetUp() override {
    // The toolkit home the control tests registered, with our factory tables in it.
    wchar_t home[MAX_PATH];
    DWORD size = sizeof home;
    ASSERT_EQ(RegGetValueW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\DataViews\\DVtools\\2.6", L"DVHOME",
                           RRF_RT_REG_SZ | 0x00020000 /* the 32-bit view */, nullptr, home, &size),
              ERROR_SUCCESS);
    etc_ = U8(home) + "\\etc\\";
    for (const char* name : {"QLT830_colors.clut", "QLT830_colors$clut"})
      WriteBytes(etc_ + name, SourceFile("data/" + std::string(name)));
  }
  void TearDown() override {
    for (const char* name : {"QLT830_colors.clut", "QLT830_colors$clut"}) DeleteFileW(W(etc_ + name).c_str());
  }
  std::string Table() { return app_ + "ColorSchemes\\QLT830_colors.clut"; }

  // Runs the display on a thread of its own (its session ends with the thread) while
  // `drive` acts on the editor from this thread.
  void Run(Display& d, const std::function<void()>& drive) {
    std::promise<void> started;
    auto host = std::async(std::launch::async, [&] {
      test::Apartment apartment;
      d.thread = GetCurrentThreadId();
      HWND owner = CreateWindowExW(d.topmost ? WS_EX_TOPMOST : 0, L"STATIC", L"Process display",
                                   WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 640, 480, nullptr, nullptr, nullptr, nullptr);
      started.set_value();
      DisplayHost listcomm;
      listcomm.levels = d.levels;
      listcomm.junk = d.junk_levels;
      {
        ComPtr<IDispatch> control = test::CreateControl();
        auto set = [&](ArgList& args) {
          if (FAILED(args.Invoke(control.Get(), L"SetObjectValue"))) d.hr = E_FAIL;
        };
        const long owner_value = d.stale_owner ? 0x7FFF0 : static_cast<long>(reinterpret_cast<INT_PTR>(owner));
        ArgList context[10];
        set(context[0].Str(L"Language").Str(d.language.c_str()));
        set(context[1].Str(L"UserName").Str(L"op1"));
        set(context[2].Str(L"HostApplication").Str(L"Display"));
        set(context[3].Str(L"AppFolder").Str(W(app_).c_str()));
        set(context[4].Str(L"UserFolder").Str(W(user_).c_str()));
        set(context[5].Str(L"AuthorizationLevel").I2(d.level));
        set(context[6].Str(L"Pipeline").I2(d.pipeline ? -1 : 0));
        set(context[7].Str(L"hwndParentView").I4(owner_value));
        set(context[8].Str(L"ListCommRef").Object(&listcomm));
        if (d.initialize) set(context[9].Str(L"Initialize").Str(L"ColorScheme"));
        if (d.before_show) d.before_show();
        if (d.with_control) d.with_control(control.Get());
        for (int i = 0; i < d.shows; ++i) {
          if (i > 0 && d.between_shows) d.between_shows();
          ArgList show;
          show.RefStr(L"unused");
          if (d.tab_name) show.RefStr(d.tab_name); else show.I2(d.tab).RefVar();
          const bool enable = i > 0 ? d.enable_later.value_or(d.enable) : d.enable;
          show.I2(d.category).RefVar().I2(enable ? -1 : 0).RefVar();
          VARIANT result;
          VariantInit(&result);
          const HRESULT hr = show.Invoke(control.Get(), d.tab_name ? L"Show2" : L"Show", &result);
          if (FAILED(hr)) d.hr = hr;
          d.results.push_back(result.vt == VT_BOOL && result.boolVal != VARIANT_FALSE);
          VariantClear(&result);
          ++d.returned;
        }
        if (d.after_shows) d.after_shows();
        d.owner_enabled_after = IsWindowEnabled(owner);
      }
      d.calls = listcomm.calls;
      DestroyWindow(owner);
    });
    started.get_future().wait();
    drive();
    ASSERT_EQ(host.wait_for(std::chrono::seconds(60)), std::future_status::ready) << "the editor did not close";
    host.get();
  }

  // Waits until the display's Show has returned `count` times: the window itself is kept
  // and shown again so fast that watching it would miss the closing.
  static void WaitForShows(const Display& d, int count) {
    for (int waited = 0; waited < 20000 && d.returned < count; ++waited) Sleep(1);
  }
  // The editor window of the display's thread, once it is visible and idle.
  static HWND Editor(const Display& d) {
    HWND found = WaitForWindow([](HWND hwnd) { return HasClass(hwnd, ids::kEditorClass); }, d.thread);
    if (found) Idle(found);
    return found;
  }
  // Returns once the window's thread is idle (its modal loop runs).
  static void Idle(HWND window) { SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_BLOCK, 5000, nullptr); }
  static HWND Item(HWND editor, int id) {
    HWND found = nullptr;
    EachDescendant(editor, [&](HWND hwnd) {
      if (GetDlgCtrlID(hwnd) == id) found = hwnd;
      return !found;
    });
    return found;
  }
  // A click as the user makes it: the button's own click, posted, since it may open a
  // modal dialog of its own.
  static void Click(HWND editor, int id) { PostMessageW(Item(editor, id), BM_CLICK, 0, 0); }
  static void ClickTab(HWND editor, int position) {
    HWND tabs = Item(editor, ids::kTabStrip);
    RECT r{};
    SendMessageW(tabs, TCM_GETITEMRECT, position, reinterpret_cast<LPARAM>(&r));
    const LPARAM at = MAKELPARAM((r.left + r.right) / 2, (r.top + r.bottom) / 2);
    SendMessageW(tabs, WM_LBUTTONDOWN, MK_LBUTTON, at);
    SendMessageW(tabs, WM_LBUTTONUP, 0, at);
  }
  // Keys pressed together and released, as typed on the keyboard (into the editor).
  static void Keys(const std::vector<WORD>& keys) {
    std::vector<INPUT> input;
    for (WORD key : keys) input.push_back({INPUT_KEYBOARD, {.ki = {key, 0, 0, 0, 0}}});
    for (auto k = keys.rbegin(); k != keys.rend(); ++k)
      input.push_back({INPUT_KEYBOARD, {.ki = {*k, 0, KEYEVENTF_KEYUP, 0, 0}}});
    SendInput(static_cast<UINT>(input.size()), input.data(), sizeof(INPUT));
  }
  static void Type(HWND editor, const std::vector<WORD>& keys) {
    SetForegroundWindow(editor);
    Keys(keys);
    Sleep(100);
    Idle(editor);
  }
  static int ShownPage(HWND editor) {
    for (int page = 0; page < 12; ++page)
      if (HWND panel = Item(editor, ids::kPagePanel + page); panel && IsWindowVisible(panel)) return page;
    return -1;
  }
  // A dialog of the display's thread owned by `owner` (the colour dialog, a message box).
  static HWND OwnedDialog(const Display& d, HWND owner) {
    return WaitForWindow([&](HWND hwnd) { return HasClass(hwnd, L"#32770") && GetWindow(hwnd, GW_OWNER) == owner; },
                         d.thread);
  }
  // The window with the keyboard focus on the display's thread.
  static HWND Focus(const Display& d) {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    GetGUIThreadInfo(d.thread, &info);
    return info.hwndFocus;
  }
  // A pixel of a window (from its top-left corner) as the screen shows it.
  static COLORREF Pixel(HWND window, int x, int y) {
    RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
    Idle(window);
    RECT r;
    GetWindowRect(window, &r);
    HDC screen = GetDC(nullptr);
    const COLORREF pixel = GetPixel(screen, r.left + x, r.top + y);
    ReleaseDC(nullptr, screen);
    return pixel;
  }
  // Picks a colour in the standard colour dialog as a user types it (nullopt cancels);
  // what the dialog started from.
  static std::wstring Pick(const Display& d, HWND editor, int row, std::optional<COLORREF> colour) {
    Click(editor, ids::kColorButton + row);
    return AnswerColorDialog(d, editor, colour);
  }
  static std::wstring AnswerColorDialog(const Display& d, HWND editor, std::optional<COLORREF> colour) {
    HWND dialog = OwnedDialog(d, editor);
    if (!dialog) return L"no colour dialog";
    const std::wstring preset = L"(" + ItemText(dialog, 706) + L", " + ItemText(dialog, 707) + L", " + ItemText(dialog, 708) + L")";
    if (colour) {
      SetDlgItemInt(dialog, 706, GetRValue(*colour), FALSE);
      SetDlgItemInt(dialog, 707, GetGValue(*colour), FALSE);
      SetDlgItemInt(dialog, 708, GetBValue(*colour), FALSE);
    }
    PressButton(dialog, colour ? IDOK : IDCANCEL);
    for (int i = 0; i < 250 && IsWindow(dialog); ++i) Sleep(20);
    Idle(editor);
    return preset;
  }
  // A colour table entry as the editor's RGB label shows it.
  static std::wstring RgbText(std::int32_t c) {
    return L"(" + std::to_wstring(c & 0xFF) + L", " + std::to_wstring((c >> 8) & 0xFF) + L", " +
           std::to_wstring((c >> 16) & 0xFF) + L")";
  }
  static bool Enabled(HWND editor, int id) { return IsWindowEnabled(Item(editor, id)); }
  static bool Shown(HWND editor, int id) { return IsWindowVisible(Item(editor, id)); }
  static std::wstring Text(HWND editor, int id) { return WindowText(Item(editor, id)); }
  // The window as the user sees it, kept beside the build as a test artefact.
  static void Screenshot(HWND window, const std::string& name);

  TempFolder app_folder_, user_folder_;
  std::string etc_, app_ = app_folder_.path(), user_ = user_folder_.path();
};

}  // namespace editor_test
