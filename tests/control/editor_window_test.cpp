// The editor window under UI automation, in-process: a host thread plays the process
// display (its window owns the editor, a C++ object answers the host calls) and opens
// the editor through the registered control; the test's own thread drives the window
// through the ids of the automation contract, as a screen reader or a person would.
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

namespace {

using namespace tq::test;
using test::ArgList;
using tq::ParseClutLine;
using tq::SplitClutLines;
using test::ComPtr;
namespace ids = tq::win::editor_ids;

// EnumThreadWindows / EnumChildWindows with a lambda (any calling convention); the
// lambda returns false to stop.
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
    status->vt = VT_I4;
    status->lVal = 0;
    if (expression.rfind(L"#return network_topology_manager", 0) == 0) {
      if (junk) {  // a vector of the wrong shape
        value->vt = VT_BSTR;
        value->bstrVal = SysAllocString(L"LEVELS?");
        return S_OK;
      }
      Vector(*value, 3);
      Vector(Element(*value, 3), levels);
      for (int k = 1; k <= levels; ++k) {
        VARIANT& number = Element(Element(*value, 3), k);
        number.vt = VT_I4;
        number.lVal = 400 - 10 * k;
      }
    } else if (expression.rfind(L"#return TRANSLATION(VECTOR(", 0) == 0) {
      Vector(*value, levels);
      for (int k = 1; k <= levels; ++k) {
        VARIANT& name = Element(*value, k);
        name.vt = VT_BSTR;
        name.bstrVal = SysAllocString((L"Level " + std::to_wstring(k)).c_str());
      }
    } else {
      value->vt = VT_I4;
      value->lVal = 1;
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
  // Seen.
  std::atomic<int> returned{0};  // Show calls that have returned
  std::vector<bool> results;
  HRESULT hr = S_OK;
  bool owner_enabled_during = true, owner_enabled_after = false;
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
      WriteBytes(etc_ + name, ReadBytes(std::string(TQ_SOURCE_DIR) + "/data/" + name));
    app_ = CreateTempFolder();
    user_ = CreateTempFolder();
  }
  void TearDown() override {
    for (const char* name : {"QLT830_colors.clut", "QLT830_colors$clut"}) DeleteFileW(W(etc_ + name).c_str());
    RemoveTree(app_);
    RemoveTree(user_);
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
        auto set = [&](const wchar_t* key, auto&& add) {
          ArgList args;
          args.Str(key);
          add(args);
          if (FAILED(args.Invoke(control.Get(), L"SetObjectValue"))) d.hr = E_FAIL;
        };
        set(L"Language", [&](ArgList& a) { a.Str(d.language.c_str()); });
        set(L"UserName", [](ArgList& a) { a.Str(L"op1"); });
        set(L"HostApplication", [](ArgList& a) { a.Str(L"Display"); });
        set(L"AppFolder", [&](ArgList& a) { a.Str(W(app_).c_str()); });
        set(L"UserFolder", [&](ArgList& a) { a.Str(W(user_).c_str()); });
        set(L"AuthorizationLevel", [&](ArgList& a) { a.I2(d.level); });
        set(L"Pipeline", [&](ArgList& a) { a.I2(d.pipeline ? -1 : 0); });
        set(L"hwndParentView", [&](ArgList& a) { a.I4(d.stale_owner ? 0x7FFF0 : static_cast<long>(reinterpret_cast<INT_PTR>(owner))); });
        set(L"ListCommRef", [&](ArgList& a) { a.Object(&listcomm); });
        if (d.initialize) set(L"Initialize", [](ArgList& a) { a.Str(L"ColorScheme"); });
        if (d.before_show) d.before_show();
        for (int i = 0; i < d.shows; ++i) {
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
  static HWND Editor(const Display& d, DWORD timeout_ms = 20000) {
    for (DWORD waited = 0; waited < timeout_ms; waited += 20) {
      HWND found = nullptr;
      EachThreadWindow(d.thread, [&](HWND hwnd) {
        wchar_t name[64];
        GetClassNameW(hwnd, name, 64);
        if (wcscmp(name, ids::kEditorClass) != 0 || !IsWindowVisible(hwnd)) return true;
        found = hwnd;
        return false;
      });
      if (found) {
        SendMessageTimeoutW(found, WM_NULL, 0, 0, SMTO_BLOCK, 5000, nullptr);  // idle: the modal loop runs
        return found;
      }
      Sleep(20);
    }
    return nullptr;
  }
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
  // Keys pressed together and released, as typed on the keyboard into the editor.
  static void Type(HWND editor, const std::vector<WORD>& keys) {
    SetForegroundWindow(editor);
    std::vector<INPUT> input;
    for (WORD key : keys) input.push_back({INPUT_KEYBOARD, {.ki = {key, 0, 0, 0, 0}}});
    for (auto k = keys.rbegin(); k != keys.rend(); ++k)
      input.push_back({INPUT_KEYBOARD, {.ki = {*k, 0, KEYEVENTF_KEYUP, 0, 0}}});
    SendInput(static_cast<UINT>(input.size()), input.data(), sizeof(INPUT));
    Sleep(100);
    SendMessageTimeoutW(editor, WM_NULL, 0, 0, SMTO_BLOCK, 5000, nullptr);
  }
  static int ShownPage(HWND editor) {
    for (int page = 0; page < 12; ++page)
      if (HWND panel = Item(editor, ids::kPagePanel + page); panel && IsWindowVisible(panel)) return page;
    return -1;
  }
  // A dialog of the display's thread owned by `owner` (the colour dialog, a message box).
  static HWND OwnedDialog(const Display& d, HWND owner, DWORD timeout_ms = 20000) {
    for (DWORD waited = 0; waited < timeout_ms; waited += 20) {
      HWND found = nullptr;
      EachThreadWindow(d.thread, [&](HWND hwnd) {
        wchar_t name[16];
        GetClassNameW(hwnd, name, 16);
        if (!wcscmp(name, L"#32770") && GetWindow(hwnd, GW_OWNER) == owner && IsWindowVisible(hwnd)) found = hwnd;
        return !found;
      });
      if (found) return found;
      Sleep(20);
    }
    return nullptr;
  }
  // Picks a colour in the standard colour dialog as a user types it; nullopt cancels.
  static std::wstring Pick(const Display& d, HWND editor, int row, std::optional<COLORREF> colour) {
    Click(editor, ids::kColorButton + row);
    HWND dialog = OwnedDialog(d, editor);
    if (!dialog) return L"no colour dialog";
    const std::wstring preset = ItemText(dialog, 706) + L"," + ItemText(dialog, 707) + L"," + ItemText(dialog, 708);
    if (colour) {
      SetDlgItemInt(dialog, 706, GetRValue(*colour), FALSE);
      SetDlgItemInt(dialog, 707, GetGValue(*colour), FALSE);
      SetDlgItemInt(dialog, 708, GetBValue(*colour), FALSE);
    }
    PressButton(dialog, colour ? IDOK : IDCANCEL);
    for (int i = 0; i < 250 && IsWindow(dialog); ++i) Sleep(20);
    SendMessageTimeoutW(editor, WM_NULL, 0, 0, SMTO_BLOCK, 5000, nullptr);
    return preset;
  }
  static bool Enabled(HWND editor, int id) { return IsWindowEnabled(Item(editor, id)); }
  static bool Shown(HWND editor, int id) { return IsWindowVisible(Item(editor, id)); }
  static std::wstring Text(HWND editor, int id) { return WindowText(Item(editor, id)); }
  // The window as the user sees it, kept beside the build as a test artefact.
  static void Screenshot(HWND window, const std::string& name);

  std::string etc_, app_, user_;
};

void EditorWindow::Screenshot(HWND window, const std::string& name) {
  RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
  SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_BLOCK, 5000, nullptr);
  RECT r, screen_rect{0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
  GetWindowRect(window, &r);
  IntersectRect(&r, &r, &screen_rect);  // the screen has no pixels beyond its edges
  const int w = r.right - r.left, h = r.bottom - r.top;
  HDC screen = GetDC(nullptr);
  HDC memory = CreateCompatibleDC(screen);
  BITMAPINFO info{};
  info.bmiHeader.biSize = sizeof info.bmiHeader;
  info.bmiHeader.biWidth = w;
  info.bmiHeader.biHeight = h;
  info.bmiHeader.biPlanes = 1;
  info.bmiHeader.biBitCount = 24;
  void* bits = nullptr;
  HBITMAP bitmap = CreateDIBSection(screen, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
  HGDIOBJ old = SelectObject(memory, bitmap);
  BitBlt(memory, 0, 0, w, h, screen, r.left, r.top, SRCCOPY);
  GdiFlush();
  const DWORD stride = ((w * 3 + 3) & ~3), image = stride * h;
  BITMAPFILEHEADER file{0x4D42, static_cast<DWORD>(sizeof(BITMAPFILEHEADER) + sizeof(BITMAPINFOHEADER) + image), 0,
                        0, sizeof(BITMAPFILEHEADER) + sizeof(BITMAPINFOHEADER)};
  std::string bytes(reinterpret_cast<char*>(&file), sizeof file);
  bytes.append(reinterpret_cast<char*>(&info.bmiHeader), sizeof info.bmiHeader);
  bytes.append(static_cast<char*>(bits), image);
  CreateDirectoryW(W(BuildFolder() + "screenshots").c_str(), nullptr);
  WriteBytes(BuildFolder() + "screenshots\\" + name + ".bmp", bytes);
  SelectObject(memory, old);
  DeleteObject(bitmap);
  DeleteDC(memory);
  ReleaseDC(nullptr, screen);
}

TEST_F(EditorWindow, OpensModalOverItsOwnerAndClosesWithOkCancelEscEnterAndTheCloseBox) {
  struct Way {
    const char* name;
    std::function<void(HWND)> close;
  } ways[] = {
      {"OK", [](HWND e) { Click(e, ids::kOk); }},
      {"Cancel", [](HWND e) { Click(e, ids::kCancel); }},
      {"Esc", [](HWND e) { Type(e, {VK_ESCAPE}); }},
      {"Enter", [](HWND e) { Type(e, {VK_RETURN}); }},
      {"close box", [](HWND e) { PostMessageW(e, WM_SYSCOMMAND, SC_CLOSE, 0); }},
  };
  for (const Way& way : ways) {
    SCOPED_TRACE(way.name);
    Display d;
    d.topmost = true;
    Run(d, [&] {
      HWND e = Editor(d);
      ASSERT_TRUE(e);
      HWND owner = GetWindow(e, GW_OWNER);
      ASSERT_TRUE(owner);
      EXPECT_FALSE(IsWindowEnabled(owner));
      EXPECT_TRUE(GetWindowLongW(e, GWL_EXSTYLE) & WS_EX_TOPMOST);  // above a top-most display
      EXPECT_EQ(WindowText(e), L"Color Setting Tool");
      EXPECT_EQ(Text(e, ids::kSchemeCombo), L"QLT830_colors.clut");
      if (std::string(way.name) == "OK") Screenshot(e, "editor-open");
      way.close(e);
    });
    ASSERT_EQ(d.results.size(), 1u) << std::hex << d.hr;
    EXPECT_FALSE(d.results[0]);  // nothing changed: false, also after OK
    EXPECT_TRUE(d.owner_enabled_after);
    EXPECT_EQ(d.hr, S_OK);
  }
}

TEST_F(EditorWindow, APickedColourIsSavedOnOkInItsOwnLineAndSentToTheHost) {
  const std::string before = ReadBytes(std::string(TQ_SOURCE_DIR) + "/data/QLT830_colors.clut");
  Display d;
  d.tab = 4;  // strip position 4, Alarm Display: its background (row 120, index 256) goes to the host's alarm lists
  std::wstring preset, cancelled_preset, after_cancel, shown;
  Run(d, [&] {
    HWND e = Editor(d);
    ASSERT_TRUE(e);
    EXPECT_EQ(ShownPage(e), 3);
    const std::wstring start = Text(e, ids::kRgbLabel + 120);
    cancelled_preset = Pick(d, e, 121, std::nullopt);
    after_cancel = Text(e, ids::kRgbLabel + 121);
    preset = Pick(d, e, 120, RGB(1, 2, 250));
    shown = Text(e, ids::kRgbLabel + 120);
    EXPECT_NE(start, shown);
    Screenshot(e, "editor-picked");
    Click(e, ids::kOk);
  });
  ASSERT_EQ(d.results, std::vector<bool>{true});
  const auto old_lines = SplitClutLines(before).lines;
  auto rgb = [&](int index, const wchar_t* format) {
    const std::int32_t c = ParseClutLine(old_lines[index]);
    wchar_t text[32];
    swprintf(text, 32, format, c & 0xFF, (c >> 8) & 0xFF, (c >> 16) & 0xFF);
    return std::wstring(text);
  };
  EXPECT_EQ(preset, rgb(256, L"%d,%d,%d"));  // the dialog starts from the row's colour
  EXPECT_EQ(after_cancel, rgb(257, L"(%d, %d, %d)"));  // a cancelled pick changes nothing
  EXPECT_EQ(shown, L"(1, 2, 250)");
  // Only the picked index's line changes, and it keeps its comment.
  const std::string after = ReadBytes(Table());
  const auto new_lines = SplitClutLines(after).lines;
  ASSERT_EQ(new_lines.size(), old_lines.size());
  for (std::size_t i = 0; i < old_lines.size(); ++i)
    EXPECT_TRUE(i == 256 || new_lines[i] == old_lines[i]) << i;
  EXPECT_EQ(ParseClutLine(new_lines[256]), 0xFA0201);
  EXPECT_EQ(new_lines[256].substr(new_lines[256].rfind('#')), old_lines[256].substr(old_lines[256].rfind('#')));
  // The lists the host receives are those of the saved table, exactly.
  tq::ColorTableArray table{};
  for (int i = 0; i < tq::kClutIndexCount; ++i) table[i] = ParseClutLine(new_lines[i]);
  const std::wstring expected = L"HostEvaluate|" + W(tq::ColorListExpression(table));
  EXPECT_NE(std::find(d.calls.begin(), d.calls.end(), expected), d.calls.end());
  EXPECT_EQ(d.calls.back(), L"HostNotify|ColorSchemeLoaded|");
}

TEST_F(EditorWindow, TagoutShowsItsBoldHeadingAndTheTooltipsNameIndexAndFile) {
  Display d;
  d.category = 1;  // Status / Tagout
  std::wstring button, index_tip, file_tip;
  LONG weight = 0;
  Run(d, [&] {
    HWND e = Editor(d);
    ASSERT_TRUE(e);
    LOGFONTW font{};
    GetObjectW(reinterpret_cast<HFONT>(SendMessageW(Item(e, ids::kTagoutHeading), WM_GETFONT, 0, 0)), sizeof font, &font);
    weight = font.lfWeight;
    button = Text(e, ids::kColorButton + 100);
    HWND tooltip = nullptr;
    EachThreadWindow(d.thread, [&](HWND hwnd) {
      wchar_t name[32];
      GetClassNameW(hwnd, name, 32);
      if (!wcscmp(name, TOOLTIPS_CLASSW) && GetWindow(hwnd, GW_OWNER) == e) tooltip = hwnd;
      return !tooltip;
    });
    auto tip = [&](HWND parent, HWND tool) {
      wchar_t text[512] = L"";
      TTTOOLINFOW info{};
      info.cbSize = sizeof info;
      info.hwnd = parent;
      info.uId = reinterpret_cast<UINT_PTR>(tool);
      info.lpszText = text;
      SendMessageW(tooltip, TTM_GETTEXTW, 512, reinterpret_cast<LPARAM>(&info));
      return std::wstring(text);
    };
    HWND frame = Item(e, ids::kFrame + 1);
    index_tip = tip(frame, Item(e, ids::kNameLabel + 100));
    file_tip = tip(GetParent(frame), frame);
    Click(e, ids::kCancel);
  });
  EXPECT_EQ(weight, FW_BOLD);
  EXPECT_EQ(button, L"Highest Severity (Emergency)");
  EXPECT_EQ(index_tip, L"Color index: 110");
  EXPECT_EQ(file_tip, W(Table()));
}

TEST_F(EditorWindow, ReadOnlyByLevelOrByTheHostShowsItInTitleButtonsAndSchemeList) {
  const struct {
    short level;
    bool enable;
    const wchar_t* language;
    const wchar_t* title;
    bool scheme_list;
  } cases[] = {
      {1, true, L"EN", L"Color Setting Tool (Read-Only)", false},
      {2, false, L"EN", L"Color Setting Tool (Read-Only)", true},
      {2, false, L"DE", L"Farbeinstellungen (schreibgesch\u00fctzt)", true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.title);
    Display d;
    d.level = c.level;
    d.enable = c.enable;
    d.language = c.language;
    std::wstring cancel, tab;
    Run(d, [&] {
      HWND e = Editor(d);
      ASSERT_TRUE(e);
      EXPECT_EQ(WindowText(e), c.title);
      EXPECT_FALSE(Enabled(e, ids::kOk));
      EXPECT_FALSE(Enabled(e, ids::kSaveAsButton));
      EXPECT_FALSE(Enabled(e, ids::kDeleteButton));
      EXPECT_FALSE(Enabled(e, ids::kColorButton + 0));
      EXPECT_EQ(Enabled(e, ids::kSchemeCombo), c.scheme_list);
      // Only the host's read-only takes no lock; the level alone leaves it held.
      EXPECT_EQ(std::filesystem::exists(W(Table() + ".lock")), c.enable);
      cancel = Text(e, ids::kCancel);
      TCITEMW item{};
      wchar_t text[64];
      item.mask = TCIF_TEXT;
      item.pszText = text;
      item.cchTextMax = 64;
      SendMessageW(Item(e, ids::kTabStrip), TCM_GETITEMW, 2, reinterpret_cast<LPARAM>(&item));
      tab = text;
      if (c.language == std::wstring(L"DE")) Screenshot(e, "editor-de");
      Click(e, ids::kCancel);
    });
    EXPECT_EQ(d.results, std::vector<bool>{false});
    EXPECT_EQ(cancel, c.language == std::wstring(L"DE") ? L"Abbrechen" : L"Cancel");
    EXPECT_EQ(tab, c.language == std::wstring(L"DE") ? L"Zustandsfarben" : L"State Colors");
  }
  // The same window, opened again editable, takes none of the read-only state along.
  Display d;
  d.enable = false;
  d.enable_later = true;
  d.shows = 2;
  std::vector<std::wstring> seen;
  Run(d, [&] {
    for (int i = 0; i < 2; ++i) {
      HWND e = Editor(d);
      ASSERT_TRUE(e);
      seen.push_back(WindowText(e) + L"|" + std::to_wstring(Enabled(e, ids::kColorButton + 19)) +
                     std::to_wstring(Enabled(e, ids::kOk)));
      Click(e, ids::kCancel);
      WaitForShows(d, i + 1);
    }
  });
  EXPECT_EQ(seen, (std::vector<std::wstring>{L"Color Setting Tool (Read-Only)|00", L"Color Setting Tool|11"}));
}

TEST_F(EditorWindow, AnotherEditorsLockOffersReadOnlyAndNoKeepsTheEditorClosed) {
  Display first;  // provisions the scheme folder, then leaves
  Run(first, [&] { Click(Editor(first), ids::kCancel); });
  const std::string lock = Table() + ".lock";
  HelperProcess other("hold-lock", {Table(), "Other display", "op2", "60000"});
  ASSERT_TRUE(other.ready());
  const std::string held = ReadBytes(lock);
  for (int answer : {IDYES, IDNO}) {
    SCOPED_TRACE(answer);
    Display d;
    std::wstring title;
    BoxSeen box;
    Run(d, [&] {
      box = AnswerMessageBox(W("Open " + Table()), answer).get();
      if (answer == IDNO) return;
      HWND e = Editor(d);
      ASSERT_TRUE(e);
      title = WindowText(e);
      Click(e, ids::kCancel);
    });
    EXPECT_TRUE(box.found);
    EXPECT_NE(box.text.find(L"Other display"), std::wstring::npos) << box.text;
    EXPECT_EQ(d.results, std::vector<bool>{false});
    EXPECT_EQ(title, answer == IDYES ? L"Color Setting Tool (Read-Only)" : L"");
    EXPECT_EQ(ReadBytes(lock), held);  // theirs, untouched
  }
}

TEST_F(EditorWindow, ShowBeforeInitializeSaysSoAndOpensNothing) {
  Display d;
  d.initialize = false;
  BoxSeen box;
  Run(d, [&] { box = AnswerMessageBox(L"Color Setting Tool", IDOK).get(); });
  EXPECT_EQ(box.text, L"Application folder is not initialized. Quitting...");
  EXPECT_EQ(d.results, std::vector<bool>{false});
}

TEST_F(EditorWindow, VoltageLevelRowsTakeTheHostsNames) {
  const struct {
    int levels;
    bool junk;
    std::vector<int> shown;  // rows of 60-79 that show a colour
    std::wstring row60, row70, row79;
  } cases[] = {
      {0, false, {70, 71, 72, 73, 74, 75, 76, 77, 78, 79}, L"", L"Powered 6 (external)", L"Powered 15 (external)"},
      {0, true, {70, 71, 72, 73, 74, 75, 76, 77, 78, 79}, L"", L"Powered 6 (external)", L"Powered 15 (external)"},
      {5, false, {60, 61, 62, 63, 64, 70, 71, 72, 73, 74, 75, 76, 77, 78, 79}, L"Level 1", L"Powered 6 (external)",
       L"Powered 15 (external)"},
      {12, false, {60, 61, 62, 63, 64, 65, 66, 67, 68, 69, 70, 71, 72, 73, 74, 75, 76, 77, 78, 79}, L"Level 1",
       L"Level 11 + Powered 6 (external)", L"Powered 15 (external)"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.levels);
    Display d;
    d.levels = c.levels;
    d.junk_levels = c.junk;
    d.tab = 1;
    d.category = 7;  // clamped: the last category, Voltage Level
    std::vector<int> shown;
    std::wstring row60, row70, row79;
    Run(d, [&] {
      HWND e = Editor(d);
      ASSERT_TRUE(e);
      EXPECT_TRUE(Shown(e, ids::kFrame + 3 * 1 + 2));
      for (int row = 60; row < 80; ++row)
        if (Shown(e, ids::kColorButton + row)) shown.push_back(row);
      row60 = shown.empty() || shown[0] != 60 ? L"" : Text(e, ids::kColorButton + 60);
      row70 = Text(e, ids::kNameLabel + 70);
      row79 = Text(e, ids::kColorButton + 79);
      Click(e, ids::kCancel);
    });
    EXPECT_EQ(shown, c.shown);
    EXPECT_EQ(row60, c.row60);
    EXPECT_EQ(row70, c.row70);
    EXPECT_EQ(row79, c.row79);
  }
}

TEST_F(EditorWindow, TabsFollowTheStripTheHostsNumbersAndTagsAndCtrlTab) {
  const struct {
    bool pipeline;
    const wchar_t* tag;
    short tab;
    int tabs, page;
  } cases[] = {
      {false, nullptr, 2, 9, 10},  // strip position 2 is the State page
      {true, nullptr, 3, 10, 11},
      {false, nullptr, 99, 9, 7},  // the last tab: Measurement Reports
      {false, nullptr, -5, 9, 0},
      {true, L"PipelineColorsTab", 0, 10, 11},
      {false, L"PipelineColorsTab", 0, 9, 0},  // not in the strip without pipelines
      {false, L"ReportsDisplayTab", 0, 9, 7},
      {false, L"reportsdisplaytab", 0, 9, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.tab) + (c.tag ? U8(c.tag) : ""));
    Display d;
    d.pipeline = c.pipeline;
    d.tab_name = c.tag;
    d.tab = c.tab;
    int tabs = 0, page = -1;
    Run(d, [&] {
      HWND e = Editor(d);
      ASSERT_TRUE(e);
      tabs = static_cast<int>(SendMessageW(Item(e, ids::kTabStrip), TCM_GETITEMCOUNT, 0, 0));
      page = ShownPage(e);
      Click(e, ids::kCancel);
    });
    EXPECT_EQ(tabs, c.tabs);
    EXPECT_EQ(page, c.page);
  }
  // Ctrl+Tab and Ctrl+Shift+Tab as typed: from the State page the next step is the last tab.
  Display d;
  std::vector<int> pages;
  Run(d, [&] {
    HWND e = Editor(d);
    ASSERT_TRUE(e);
    for (bool shift : {false, false, false, true}) {
      Type(e, shift ? std::vector<WORD>{VK_CONTROL, VK_SHIFT, VK_TAB} : std::vector<WORD>{VK_CONTROL, VK_TAB});
      pages.push_back(ShownPage(e));
    }
    Click(e, ids::kCancel);
  });
  EXPECT_EQ(pages, (std::vector<int>{1, 10, 7, 5}));
}

TEST_F(EditorWindow, BadTablesAndAStaleOwnerOpenTheEditorOrRefuseWithAMessage) {
  std::string unreadable = "x x x # Version=93.07\r\n";
  for (int i = 1; i < 286; ++i) unreadable += "colour?\r\n";
  const std::string factory = ReadBytes(std::string(TQ_SOURCE_DIR) + "/data/QLT830_colors.clut");
  std::string twenty;
  for (const std::string& line : SplitClutLines(factory, 20).lines) twenty += line + "\r\n";
  const struct {
    const char* what;
    std::string table;  // written over the scheme's table before Show; "-" deletes it
    bool stale_owner;
    std::wstring message;  // the start of the message shown instead of the editor
    std::wstring row0, row81;  // RGB texts of index 38 (row 0) and index 19 (row 81)
  } cases[] = {
      {"every line unreadable", unreadable, false, L"", L"Unreadable", L"Unreadable"},
      {"twenty lines", twenty, false, L"", L"Unreadable", L"(0, 0, 153)"},
      {"deleted", "-", false, L"Color table file not found: ", L"", L""},
      {"an owner that is not a window", "", true, L"", L"(0, 153, 204)", L""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    Display d;
    d.stale_owner = c.stale_owner;
    d.before_show = [&] {
      if (c.table == "-") DeleteFileW(W(Table()).c_str());
      else if (!c.table.empty()) WriteBytes(Table(), c.table);
    };
    BoxSeen box;
    std::wstring row0, row81;
    bool owned = true;
    Run(d, [&] {
      if (!c.message.empty()) {
        box = AnswerMessageBox(L"Color Setting Tool", IDOK).get();
        return;
      }
      HWND e = Editor(d);
      ASSERT_TRUE(e);
      owned = GetWindow(e, GW_OWNER) != nullptr;
      row0 = Text(e, ids::kRgbLabel + 0);
      if (!c.row81.empty()) {
        ClickTab(e, 3);  // Miscellaneous
        row81 = Text(e, ids::kRgbLabel + 81);
      }
      Click(e, ids::kCancel);
    });
    EXPECT_EQ(d.results, std::vector<bool>{false});
    EXPECT_EQ(box.text.substr(0, c.message.size()), c.message);
    EXPECT_EQ(row0, c.row0);
    EXPECT_EQ(row81, c.row81);
    EXPECT_EQ(owned, !c.stale_owner);
  }
}

// Controls that are cut by their parent, overlap a sibling, or are too small for their text.
std::vector<std::string> LayoutProblems(HWND parent) {
  std::vector<std::string> problems;
  RECT area;
  GetClientRect(parent, &area);
  std::vector<std::pair<HWND, RECT>> shown;
  for (HWND child = GetWindow(parent, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
    if (!IsWindowVisible(child)) continue;
    RECT r;
    GetWindowRect(child, &r);
    MapWindowPoints(nullptr, parent, reinterpret_cast<POINT*>(&r), 2);
    const std::string name = std::to_string(GetDlgCtrlID(child));
    RECT inside;
    if (!IntersectRect(&inside, &r, &area) || !EqualRect(&inside, &r)) problems.push_back(name + " is cut by its parent");
    wchar_t cls[32];
    GetClassNameW(child, cls, 32);
    const std::wstring text = WindowText(child);
    if (!text.empty() && (wcscmp(cls, L"Static") == 0 || wcscmp(cls, L"Button") == 0) &&
        !(GetWindowLongW(child, GWL_STYLE) & BS_OWNERDRAW)) {
      HDC dc = GetDC(child);
      HGDIOBJ old = SelectObject(dc, reinterpret_cast<HFONT>(SendMessageW(child, WM_GETFONT, 0, 0)));
      RECT need{0, 0, 0, 0};
      DrawTextW(dc, text.c_str(), -1, &need, DT_CALCRECT | DT_SINGLELINE);
      SelectObject(dc, old);
      ReleaseDC(child, dc);
      if (need.right > r.right - r.left || need.bottom > r.bottom - r.top) problems.push_back(name + " cuts its text");
    }
    for (const auto& [other, o] : shown)
      if (RECT common; IntersectRect(&common, &r, &o))
        problems.push_back(name + " overlaps " + std::to_string(GetDlgCtrlID(other)));
    shown.emplace_back(child, r);
    if (GetWindow(child, GW_CHILD) && wcscmp(cls, L"ComboBox") != 0)
      for (const std::string& inner : LayoutProblems(child)) problems.push_back(name + "/" + inner);
  }
  return problems;
}

// Run at 96 DPI with the other tests, and again at 144 DPI by its own CTest entry.
TEST_F(EditorWindow, LayoutOfEveryPageFitsWithoutClippingOrOverlap) {
  for (const wchar_t* language : {L"EN", L"DE"}) {
    Display d;
    d.language = language;
    d.pipeline = true;
    d.levels = 12;
    std::vector<std::string> problems;
    int dpi = 0;
    Run(d, [&] {
      HWND e = Editor(d);
      ASSERT_TRUE(e);
      HDC dc = GetDC(e);
      dpi = GetDeviceCaps(dc, LOGPIXELSY);
      ReleaseDC(e, dc);
      for (int position = 0; position < 10; ++position) {
        ClickTab(e, position);
        const int page = ShownPage(e);
        HWND combo = Item(e, ids::kCategoryCombo + page);
        const int categories = std::max(1, static_cast<int>(SendMessageW(combo, CB_GETCOUNT, 0, 0)));
        for (int category = 0; category < categories; ++category) {
          SendMessageW(combo, CB_SETCURSEL, category, 0);
          SendMessageW(GetParent(combo), WM_COMMAND, MAKEWPARAM(ids::kCategoryCombo + page, CBN_SELCHANGE),
                       reinterpret_cast<LPARAM>(combo));
          for (const std::string& p : LayoutProblems(e))
            problems.push_back("page " + std::to_string(page) + "." + std::to_string(category) + ": " + p);
        }
      }
      Screenshot(e, "editor-layout-" + U8(language) + "-" + std::to_string(dpi));
      Click(e, ids::kCancel);
    });
    std::printf("layout checked at %d DPI in %ls\n", dpi, language);
    EXPECT_TRUE(problems.empty()) << problems.size() << " problems, first: " << problems.front();
  }
}

TEST_F(EditorWindow, TwoHundredOpeningsLeaveHandlesGdiUserObjectsAndMemoryFlat) {
  // Wine counts no USER objects either: the windows of the display's thread stand in.
  struct Use {
    ProcessFigures process;
    DWORD windows = 0;
  };
  auto measure = [](const Display& d) {
    Use use;
    EachThreadWindow(d.thread, [&](HWND hwnd) {
      ++use.windows;
      EachDescendant(hwnd, [&](HWND) { return ++use.windows, true; });
      return true;
    });
    return use;
  };
  constexpr int kOpenings = 200, kWarmUp = 10;
  Display d;
  d.shows = kOpenings;
  Use warm{}, last{};
  Run(d, [&] {
    for (int i = 0; i < kOpenings; ++i) {
      HWND e = Editor(d);
      ASSERT_TRUE(e) << "opening " << i;
      if (i == kWarmUp) warm = measure(d);
      if (i == kOpenings - 1) last = measure(d);
      ClickTab(e, i % 9);  // every page gets built now and then
      Click(e, ids::kCancel);
      WaitForShows(d, i + 1);
    }
  });
  const ProcessFigures &a = warm.process, &b = last.process;
  std::printf("after %d and %d openings: next handle %zu -> %zu, GDI %lu -> %lu, USER %lu -> %lu, "
              "windows %lu -> %lu, committed KiB %zu -> %zu\n",
              kWarmUp, kOpenings, a.next_handle, b.next_handle, a.gdi_objects, b.gdi_objects, a.user_objects,
              b.user_objects, warm.windows, last.windows, a.pagefile / 1024, b.pagefile / 1024);
  EXPECT_EQ(d.results.size(), static_cast<std::size_t>(kOpenings));
  EXPECT_LE(b.next_handle, a.next_handle + 8 * 4);  // handle values step by 4
  EXPECT_LE(b.gdi_objects, a.gdi_objects + 8);
  EXPECT_LE(b.user_objects, a.user_objects + 8);
  EXPECT_LE(last.windows, warm.windows + 8);
  EXPECT_LE(b.pagefile, a.pagefile + 4 * 1024 * 1024);
}

}  // namespace
