#include "control/scenario.h"

#include <algorithm>
#include <cstdio>
#include <future>

namespace editor_test {
namespace {

// A 1-based vector of VARIANTs, as the process display answers.
void Vector(VARIANT& v, int size) {
  SAFEARRAYBOUND bound{static_cast<ULONG>(size), 1};
  v.vt = VT_ARRAY | VT_VARIANT;
  v.parray = SafeArrayCreate(VT_VARIANT, 1, &bound);
}
VARIANT& Element(VARIANT& v, int k) { return static_cast<VARIANT*>(v.parray->pvData)[k - 1]; }
VARIANT Number(long n) {
  VARIANT v{};
  v.vt = VT_I4;
  v.lVal = n;
  return v;
}

// Keys pressed together and released, as typed on the keyboard.
void SendKeys(const std::vector<WORD>& keys) {
  std::vector<INPUT> input;
  for (WORD key : keys) input.push_back({INPUT_KEYBOARD, {.ki = {key, 0, 0, 0, 0}}});
  for (auto k = keys.rbegin(); k != keys.rend(); ++k)
    input.push_back({INPUT_KEYBOARD, {.ki = {*k, 0, KEYEVENTF_KEYUP, 0, 0}}});
  SendInput(static_cast<UINT>(input.size()), input.data(), sizeof(INPUT));
}

bool IsDialog(HWND window) { return HasClass(window, L"#32770"); }

// Waits until a dialog that was answered is gone, hidden, or under a new one.
void WaitAnswered(HWND dialog) {
  for (int i = 0; i < 250 && IsWindow(dialog) && IsWindowVisible(dialog) && IsWindowEnabled(dialog); ++i) Sleep(20);
}

HWND WaitForDialog(DWORD thread, const std::function<bool(HWND)>& match) {
  return WaitForWindow([&](HWND w) { return IsDialog(w) && IsWindowEnabled(w) && match(w); }, thread);
}

// What a failed test left open on the display's thread is closed, as far as a user
// could: its menus cancelled, its dialogs too, then the display itself, which takes
// the editor with it. Returns the titles of what was open.
std::string CloseWhatIsOpen(DWORD thread) {
  std::string open;
  EachThreadWindow(thread, [&](HWND w) {
    if (!IsWindowVisible(w)) return true;
    open += " [" + U8(WindowText(w)) + "]";
    if (HasClass(w, L"#32768")) PostMessageW(w, WM_CANCELMODE, 0, 0);
    else if (IsDialog(w)) PostMessageW(w, WM_COMMAND, IDCANCEL, 0);
    else if (WindowText(w) == L"Process display") PostMessageW(w, WM_CLOSE, 0, 0);
    return true;
  });
  return open;
}

}  // namespace

STDMETHODIMP DisplayHost::Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* p, VARIANT*, EXCEPINFO*, UINT*) {
  std::wstring call = kMembers[id - 1];
  for (UINT i = p->cArgs; i-- > 0;)
    if (p->rgvarg[i].vt == VT_BSTR) call += L"|" + std::wstring(p->rgvarg[i].bstrVal);
  calls.push_back(call);
  if (id == 5) CreateDirectoryW(p->rgvarg[0].bstrVal, nullptr);
  if (id != 1) return S_OK;
  const std::wstring expression = p->rgvarg[2].bstrVal;
  VARIANT* status = p->rgvarg[1].pvarVal;
  VARIANT* value = p->rgvarg[0].pvarVal;
  VariantClear(status);
  VariantClear(value);
  *status = Number(0);
  if (expression.rfind(L"#return network_topology_manager", 0) == 0) {
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

bool Display::Called(const std::wstring& call) const {
  return std::find(calls.begin(), calls.end(), call) != calls.end();
}

std::wstring Str(int id) { return W(tq::GetString(id)); }

void EditorWindow::SetUp() {
  // The toolkit home the control tests registered, with our factory tables in it.
  wchar_t home[MAX_PATH];
  DWORD size = sizeof home;
  ASSERT_EQ(RegGetValueW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\DataViews\\DVtools\\2.6", L"DVHOME",
                         RRF_RT_REG_SZ | 0x00020000 /* the 32-bit view */, nullptr, home, &size),
            ERROR_SUCCESS);
  etc_ = U8(home) + "\\etc\\";
  for (const char* name : {"QLT830_colors.clut", "QLT830_colors$clut"})
    Write(etc_ + name, SourceFile("data/" + std::string(name)));
}

void EditorWindow::TearDown() {
  for (const char* name : {"QLT830_colors.clut", "QLT830_colors$clut"}) DeleteFileW(W(etc_ + name).c_str());
}

void EditorWindow::Run(Display& d, const std::function<void()>& drive) {
  std::promise<void> started;
  auto host = std::async(std::launch::async, [&] {
    test::Apartment apartment;
    d.thread = GetCurrentThreadId();
    HWND owner = CreateWindowExW(d.topmost ? WS_EX_TOPMOST : 0, L"STATIC", L"Process display",
                                 WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 640, 480, nullptr, nullptr, nullptr, nullptr);
    started.set_value();
    DisplayHost listcomm;
    listcomm.levels = d.levels;
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
      set(context[9].Str(L"Initialize").Str(L"ColorScheme"));
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
      d.owner_enabled_after = IsWindowEnabled(owner);
    }
    d.calls = listcomm.calls;
    DestroyWindow(owner);
  });
  started.get_future().wait();
  drive();
  if (host.wait_for(std::chrono::seconds(60)) != std::future_status::ready) {
    // The display's thread must end before this one may go on: rather than wait for
    // ever, the test fails, and the process with it if nothing closes.
    ADD_FAILURE() << "the editor did not close; open:" << CloseWhatIsOpen(d.thread);
    for (int i = 0; i < 20 && host.wait_for(std::chrono::seconds(1)) != std::future_status::ready; ++i)
      CloseWhatIsOpen(d.thread);
    if (host.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
      std::fflush(stdout);
      std::fputs("the display's thread does not end: stopped\n", stderr);
      TerminateProcess(GetCurrentProcess(), 1);
    }
  }
  host.get();
}

void EditorWindow::Play(Display& d, const std::vector<Step>& steps) {
  Run(d, [&] {
    HWND e = Editor(d);
    ASSERT_TRUE(e) << "no editor";
    for (std::size_t n = 0; n < steps.size(); ++n) {
      const Step& step = steps[n];
      SCOPED_TRACE("step " + std::to_string(n + 1));
      HWND front = Front(d.thread);
      switch (step.kind) {
        case Step::Kind::Press:
          if (IsDialog(front)) {
            PressButton(front, step.id);
            WaitAnswered(front);
          } else {
            Click(front, step.id);
          }
          break;
        case Step::Kind::Keys:
          Type(e, step.keys);
          break;
        case Step::Kind::Answer: {
          HWND dialog = WaitForDialog(d.thread, [&](HWND w) {
            return (WindowText(w) + L"\n" + ItemText(w, 0xFFFF)).find(step.text) != std::wstring::npos;
          });
          if (!dialog) {
            ADD_FAILURE() << "no dialog says: " << U8(step.text) << "; in front: " << U8(WindowText(front));
            return;
          }
          Sleep(50);  // its controls are filled once it is visible
          if (step.id) {
            PressButton(dialog, step.id);
            WaitAnswered(dialog);
          }
          break;
        }
        case Step::Kind::Pick: {
          if (step.id >= 0) Click(front, ids::kColorButton + step.id);
          HWND dialog = WaitForDialog(d.thread, [&](HWND w) { return GetDlgItem(w, 706) != nullptr; });
          if (!dialog) {
            ADD_FAILURE() << "no colour dialog";
            return;
          }
          if (!step.text.empty()) {
            EXPECT_EQ(L"(" + ItemText(dialog, 706) + L", " + ItemText(dialog, 707) + L", " + ItemText(dialog, 708) + L")",
                      step.text);
          }
          if (step.colour) {
            SetDlgItemInt(dialog, 706, GetRValue(*step.colour), FALSE);
            SetDlgItemInt(dialog, 707, GetGValue(*step.colour), FALSE);
            SetDlgItemInt(dialog, 708, GetBValue(*step.colour), FALSE);
          }
          PressButton(dialog, step.colour ? IDOK : IDCANCEL);
          WaitAnswered(dialog);
          break;
        }
        case Step::Kind::Name: {
          front = WaitForDialog(d.thread, [](HWND) { return true; });
          HWND edit = GetDlgItem(front, ids::kSchemeNameEdit);
          if (!edit || !IsDialog(front))
            EachDescendant(front, [&](HWND w) {
              if (HasClass(w, L"Edit") && IsWindowVisible(w)) edit = w;
              return !edit;
            });
          if (!edit || !IsDialog(front)) {
            ADD_FAILURE() << "no name field in front: " << U8(WindowText(front));
            return;
          }
          SetWindowTextW(edit, step.text.c_str());
          PressButton(front, IDOK);
          WaitAnswered(front);
          break;
        }
        case Step::Kind::Menu: {
          // Generous: under a loaded machine Wine has taken over 5 s to open the menu.
          PostMessageW(Item(e, ids::kMoreButton), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(4, 4));
          HWND menu = WaitForWindow([](HWND w) { return HasClass(w, L"#32768"); }, d.thread);
          if (!menu) {
            ADD_FAILURE() << "the More menu did not open";
            return;
          }
          SendKeys({static_cast<WORD>(step.id)});
          for (int i = 0; i < 1000 && IsWindowVisible(menu); ++i) Sleep(20);
          break;
        }
        case Step::Kind::Tab:
          ClickTab(e, step.id);
          break;
        case Step::Kind::Choose: {
          HWND list = Item(front, step.id);
          SendMessageW(list, CB_SETCURSEL, step.position, 0);
          // Sent, so that the next step sees the choice; but a choice may ask first, and
          // its message box's loop would hold the send: then the next step answers it.
          SendMessageTimeoutW(GetParent(list), WM_COMMAND, MAKEWPARAM(step.id, CBN_SELCHANGE),
                              reinterpret_cast<LPARAM>(list), SMTO_NORMAL, 1000, nullptr);
          break;
        }
        case Step::Kind::ExpectText:
          EXPECT_EQ(Text(front, step.id), step.text) << "control " << step.id;
          break;
        case Step::Kind::ExpectLine: {
          const std::string text = U8(step.text);
          EXPECT_NE(Read(step.file).find(text), std::string::npos) << step.file << " has no line with " << text;
          break;
        }
        case Step::Kind::ExpectColour: {
          const auto lines = SplitClutLines(Read(step.file)).lines;
          ASSERT_GT(lines.size(), static_cast<std::size_t>(step.id)) << step.file;
          EXPECT_EQ(ParseClutLine(lines[step.id]), static_cast<std::int32_t>(*step.colour)) << step.file << " " << step.id;
          break;
        }
        case Step::Kind::Do:
          step.act(e);
          break;
      }
      if (IsWindow(e)) Idle(e);
    }
  });
}

void EditorWindow::WaitForShows(const Display& d, int count) {
  for (int waited = 0; waited < 20000 && d.returned < count; ++waited) Sleep(1);
}

HWND EditorWindow::Editor(const Display& d) {
  HWND found = WaitForWindow([](HWND w) { return HasClass(w, ids::kEditorClass); }, d.thread);
  if (found) Idle(found);
  return found;
}

HWND EditorWindow::Front(DWORD thread) {
  HWND editor = nullptr, dialog = nullptr;
  EachThreadWindow(thread, [&](HWND w) {
    if (!IsWindowVisible(w) || !IsWindowEnabled(w)) return true;
    if (IsDialog(w) && !dialog) dialog = w;
    else if (HasClass(w, ids::kEditorClass)) editor = w;
    return true;
  });
  return dialog ? dialog : editor;
}

HWND EditorWindow::Item(HWND window, int id) {
  HWND found = nullptr;
  EachDescendant(window, [&](HWND w) {
    if (GetDlgCtrlID(w) == id) found = w;
    return !found;
  });
  return found;
}

void EditorWindow::ClickTab(HWND editor, int position) {
  HWND tabs = Item(editor, ids::kTabStrip);
  RECT r{};
  SendMessageW(tabs, TCM_GETITEMRECT, position, reinterpret_cast<LPARAM>(&r));
  const LPARAM at = MAKELPARAM((r.left + r.right) / 2, (r.top + r.bottom) / 2);
  SendMessageW(tabs, WM_LBUTTONDOWN, MK_LBUTTON, at);
  SendMessageW(tabs, WM_LBUTTONUP, 0, at);
}

void EditorWindow::Type(HWND editor, const std::vector<WORD>& keys) {
  SetForegroundWindow(editor);
  SendKeys(keys);
  Sleep(100);
  Idle(editor);
}

std::vector<std::wstring> EditorWindow::MenuItems(HWND menu) {
  HMENU popup = reinterpret_cast<HMENU>(SendMessageW(menu, MN_GETHMENU, 0, 0));
  std::vector<std::wstring> items;
  for (int i = 0; i < GetMenuItemCount(popup); ++i) {
    const UINT state = GetMenuState(popup, i, MF_BYPOSITION);
    if (state & MF_SEPARATOR) continue;
    wchar_t text[64] = L"";
    GetMenuStringW(popup, i, text, 64, MF_BYPOSITION);
    items.push_back(std::wstring(text) + (state & MF_GRAYED ? L" (off)" : L""));
  }
  return items;
}

std::wstring EditorWindow::Tip(const Display& d, HWND editor, HWND tool) {
  HWND tooltip = nullptr;
  EachThreadWindow(d.thread, [&](HWND hwnd) {
    if (HasClass(hwnd, TOOLTIPS_CLASSW) && GetWindow(hwnd, GW_OWNER) == editor) tooltip = hwnd;
    return !tooltip;
  });
  wchar_t text[2048] = L"";
  TTTOOLINFOW info{};
  info.cbSize = sizeof info;
  info.hwnd = GetParent(tool);
  info.uId = reinterpret_cast<UINT_PTR>(tool);
  info.lpszText = text;
  SendMessageW(tooltip, TTM_GETTEXTW, 2048, reinterpret_cast<LPARAM>(&info));
  return text;
}

int EditorWindow::ShownPage(HWND editor) {
  for (int page = 0; page < 12; ++page)
    if (HWND panel = Item(editor, ids::kPagePanel + page); panel && IsWindowVisible(panel)) return page;
  return -1;
}

HWND EditorWindow::Focus(const Display& d) {
  GUITHREADINFO info{};
  info.cbSize = sizeof info;
  GetGUIThreadInfo(d.thread, &info);
  return info.hwndFocus;
}

COLORREF EditorWindow::Pixel(HWND window, int x, int y) {
  RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
  Idle(window);
  RECT r;
  GetWindowRect(window, &r);
  HDC screen = GetDC(nullptr);
  const COLORREF pixel = GetPixel(screen, r.left + x, r.top + y);
  ReleaseDC(nullptr, screen);
  return pixel;
}

std::wstring EditorWindow::RgbText(std::int32_t c) {
  return L"(" + std::to_wstring(c & 0xFF) + L", " + std::to_wstring((c >> 8) & 0xFF) + L", " +
         std::to_wstring((c >> 16) & 0xFF) + L")";
}

}  // namespace editor_test
