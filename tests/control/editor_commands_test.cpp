// The editor's commands under UI automation: the scheme list, Save As and Delete, the
// More menu with Restore Defaults, export and import through the standard file
// dialogs, and the host's own file dialog answered from C++ and from VBScript.
#include <activscp.h>

#include "TqColorSettingTool_h.h"

#include <filesystem>

#include "control/editor_fixture.h"

namespace {

using namespace editor_test;

// A dialog of the display's thread (message box, Save As, file dialog) owned by `owner`,
// as its user reads it.
struct Seen {
  HWND window = nullptr;
  std::wstring title, text;
  RECT rect{};
};

class EditorCommands : public EditorWindow {
 protected:
  static Seen Find(const Display& d, HWND owner) {
    Seen seen;
    seen.window = OwnedDialog(d, owner);
    if (!seen.window) return seen;
    Sleep(50);  // its controls are filled once it is visible
    seen.title = WindowText(seen.window);
    seen.text = ItemText(seen.window, 0xFFFF);
    GetWindowRect(seen.window, &seen.rect);
    return seen;
  }
  // Presses a button of the dialog and waits until it is gone (or hidden, when it stays).
  static void Press(HWND dialog, int button, bool stays = false) {
    PressButton(dialog, button);
    if (stays) {
      Sleep(200);
      return;
    }
    for (int i = 0; i < 250 && IsWindow(dialog) && IsWindowVisible(dialog); ++i) Sleep(20);
  }
  // Finds, reads and answers the dialog that `owner` opened.
  static Seen Answer(const Display& d, HWND owner, int button) {
    Seen seen = Find(d, owner);
    if (seen.window) Press(seen.window, button);
    return seen;
  }
  // The file name as a user types it into a file dialog (or the Save As dialog), then OK.
  static void TypeName(HWND dialog, const std::string& name) {
    HWND edit = GetDlgItem(dialog, ids::kSchemeNameEdit);
    if (!edit)
      EachDescendant(dialog, [&](HWND hwnd) {
        if (HasClass(hwnd, L"Edit") && IsWindowVisible(hwnd)) edit = hwnd;
        return !edit;
      });
    ASSERT_TRUE(edit);
    SetWindowTextW(edit, W(name).c_str());
  }
  static void ChooseScheme(HWND editor, int index) {
    HWND combo = Item(editor, ids::kSchemeCombo);
    SendMessageW(combo, CB_SETCURSEL, index, 0);
    PostMessageW(GetParent(combo), WM_COMMAND, MAKEWPARAM(ids::kSchemeCombo, CBN_SELCHANGE),
                 reinterpret_cast<LPARAM>(combo));
  }
  static std::vector<std::wstring> Schemes(HWND editor) {
    HWND combo = Item(editor, ids::kSchemeCombo);
    std::vector<std::wstring> names;
    const int count = static_cast<int>(SendMessageW(combo, CB_GETCOUNT, 0, 0));
    for (int i = 0; i < count; ++i) {
      wchar_t text[MAX_PATH] = L"";
      SendMessageW(combo, CB_GETLBTEXT, i, reinterpret_cast<LPARAM>(text));
      names.push_back(text);
    }
    return names;
  }
  // Presses More with the mouse and returns the menu that opened (class #32768).
  // Waits generously: under a loaded machine Wine has taken over 5 s to open it.
  static HWND PressMore(const Display& d, HWND editor) {
    PostMessageW(Item(editor, ids::kMoreButton), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(4, 4));
    return WaitForWindow([](HWND hwnd) { return HasClass(hwnd, L"#32768"); }, d.thread);
  }
  // More, then the item of that access key, typed as a user does; the dialog it opens, if any, is the caller's.
  static void MoreItem(const Display& d, HWND editor, WORD key) {
    HWND menu = PressMore(d, editor);
    ASSERT_TRUE(menu);
    Keys({key});
    for (int i = 0; i < 1000 && IsWindowVisible(menu); ++i) Sleep(20);
  }
  std::string Scheme(const std::string& name) { return app_ + "ColorSchemes\\" + name; }
};

TEST_F(EditorCommands, SchemesSwitchSaveAsAndDeleteThroughTheirControlsAndDialogs) {
  Display d;
  d.before_show = [&] { CopyFileW(W(Table()).c_str(), W(Scheme("Day.clut")).c_str(), TRUE); };
  const std::string factory = ReadBytes(Table());
  std::vector<std::wstring> lists, boxes;
  Seen save_as;
  RECT editor_rect{};
  std::wstring label, proposed;
  bool stayed_open_on_no = false, stayed_open_on_refusal = false, delete_enabled = true;
  Run(d, [&] {
    HWND e = Editor(d);
    ASSERT_TRUE(e);
    GetWindowRect(e, &editor_rect);
    lists.push_back(Text(e, ids::kSchemeCombo));
    // Unsaved colours, then another scheme: asked, Yes writes them into the one left.
    Pick(d, e, 6, RGB(1, 2, 3));
    ChooseScheme(e, 0);
    boxes.push_back(Answer(d, e, IDYES).text);
    Idle(e);
    lists.push_back(Text(e, ids::kSchemeCombo));

    // Save As: the existing name (No keeps the dialog open), a hostile one, then Night.
    Click(e, ids::kSaveAsButton);
    save_as = Find(d, e);
    ASSERT_TRUE(save_as.window);
    Screenshot(save_as.window, "save-as");
    label = ItemText(save_as.window, ids::kSchemeNameLabel);
    proposed = ItemText(save_as.window, ids::kSchemeNameEdit);
    TypeName(save_as.window, "QLT830_colors");
    Press(save_as.window, IDOK, true);
    boxes.push_back(Answer(d, save_as.window, IDNO).text);
    stayed_open_on_no = IsWindowVisible(save_as.window);
    TypeName(save_as.window, "..\\Night");
    Press(save_as.window, IDOK, true);
    boxes.push_back(Answer(d, save_as.window, IDOK).text);
    stayed_open_on_refusal = IsWindowVisible(save_as.window);
    TypeName(save_as.window, "Night");
    Press(save_as.window, IDOK);
    Idle(e);
    const std::vector<std::wstring> after_save = Schemes(e);
    lists.insert(lists.end(), after_save.begin(), after_save.end());
    lists.push_back(Text(e, ids::kSchemeCombo));

    // Delete the new one: the item moving into its place is the factory table, which cannot go.
    Click(e, ids::kDeleteButton);
    boxes.push_back(Answer(d, e, IDYES).text);
    Idle(e);
    lists.push_back(Text(e, ids::kSchemeCombo));
    delete_enabled = Enabled(e, ids::kDeleteButton);
    Click(e, ids::kOk);
  });
  ASSERT_EQ(d.results, std::vector<bool>{true});
  EXPECT_EQ(lists, (std::vector<std::wstring>{L"QLT830_colors.clut", L"Day.clut", L"Day.clut", L"Night.clut",
                                              L"QLT830_colors.clut", L"Night.clut", L"QLT830_colors.clut"}));
  EXPECT_EQ(boxes, (std::vector<std::wstring>{
                       L"Colors for QLT830_colors.clut have been changed. Do you want to save changes?",
                       L"QLT830_colors.clut already exists. Do you want to overwrite the existing one?",
                       L"\"..\\Night\" cannot be used as a color scheme name. Enter a file name without a folder, a "
                       L"drive or \"..\", without the characters \\ / : * ? \" < > |, not ending in a dot or a blank, "
                       L"and not a device name such as CON or NUL.",
                       L"Are you sure you want to delete Night.clut?"}));
  EXPECT_EQ(save_as.title, L"Color Setting Tool - Save Color Scheme");
  EXPECT_EQ(label, L"Color Scheme:");
  EXPECT_EQ(proposed, L"Day.clut");
  EXPECT_TRUE(stayed_open_on_no && stayed_open_on_refusal);
  // Centred over the editor.
  EXPECT_NEAR((save_as.rect.left + save_as.rect.right) / 2, (editor_rect.left + editor_rect.right) / 2, 2);
  EXPECT_NEAR((save_as.rect.top + save_as.rect.bottom) / 2, (editor_rect.top + editor_rect.bottom) / 2, 2);
  EXPECT_FALSE(delete_enabled);
  // The picked colour went into the factory table on Yes; Night was written and deleted.
  EXPECT_EQ(ParseClutLine(SplitClutLines(ReadBytes(Table())).lines[35]), 0x030201);
  EXPECT_NE(ReadBytes(Table()), factory);
  EXPECT_FALSE(std::filesystem::exists(W(Scheme("Night.clut"))));
  EXPECT_FALSE(std::filesystem::exists(W(app_ + "Night.clut")));
  EXPECT_NE(std::find(d.calls.begin(), d.calls.end(), L"HostRemoveFile|" + W(Scheme("Night.clut"))), d.calls.end());
  EXPECT_NE(std::find(d.calls.begin(), d.calls.end(), L"HostFileNotice|Night.clut"), d.calls.end());
}

TEST_F(EditorCommands, SaveAsOpensItsDialogUpToFortyNineSchemesAndTheListHoldsFifty) {
  for (int extra : {48, 50}) {  // 49 schemes; 51 files, of which 50 are listed
    SCOPED_TRACE(extra);
    Display d;
    d.before_show = [&] {
      for (int i = 0; i < extra; ++i)
        CopyFileW(W(Table()).c_str(), W(Scheme("s" + std::to_string(100 + i) + ".clut")).c_str(), TRUE);
    };
    Seen seen;
    std::size_t listed = 0;
    Run(d, [&] {
      HWND e = Editor(d);
      ASSERT_TRUE(e);
      listed = Schemes(e).size();
      Click(e, ids::kSaveAsButton);
      seen = Answer(d, e, IDCANCEL);
      Click(e, ids::kCancel);
    });
    EXPECT_EQ(listed, extra == 48 ? 49u : 50u);
    EXPECT_EQ(seen.title, extra == 48 ? L"Color Setting Tool - Save Color Scheme" : L"Color Setting Tool");
    EXPECT_EQ(seen.text, extra == 48 ? L"" : L"Maximum number of Color Schemes have been already defined.");
    for (int i = 0; i < extra; ++i) DeleteFileW(W(Scheme("s" + std::to_string(100 + i) + ".clut")).c_str());
  }
}

TEST_F(EditorCommands, MoreOpensOnThePressUnderItsButtonAndExportImportAndRestoreDefaultsWork) {
  TempFolder folder;
  const std::string ini = folder / "colors.ini", blocked = folder / "blocked\\";
  // A folder that refuses the save dialog's probe file: its name is taken by a folder.
  CreateDirectoryW(W(blocked).c_str(), nullptr);
  CreateDirectoryW(W(blocked + "colors.ini.tmp").c_str(), nullptr);
  const std::int32_t reference35 = ParseClutLine(SplitClutLines(ReadBytes(etc_ + "QLT830_colors$clut")).lines[35]);
  Display d;
  RECT menu_rect{}, more_rect{};
  std::vector<std::wstring> items, titles, rows;
  std::wstring probe_notice;
  Run(d, [&] {
    HWND e = Editor(d);
    ASSERT_TRUE(e);
    HWND menu = PressMore(d, e);
    ASSERT_TRUE(menu);
    GetWindowRect(menu, &menu_rect);
    Screenshot(e, "more-menu");
    GetWindowRect(Item(e, ids::kMoreButton), &more_rect);
    HMENU popup = reinterpret_cast<HMENU>(SendMessageW(menu, MN_GETHMENU, 0, 0));
    for (int i = 0; i < GetMenuItemCount(popup); ++i) {
      wchar_t text[64] = L"";
      GetMenuStringW(popup, i, text, 64, MF_BYPOSITION);
      const UINT state = GetMenuState(popup, i, MF_BYPOSITION);
      items.push_back(std::wstring(text) + ((state & MF_GRAYED) && !(state & MF_SEPARATOR) ? L" (off)" : L""));
    }
    Keys({VK_ESCAPE});
    for (int i = 0; i < 1000 && IsWindowVisible(menu); ++i) Sleep(20);

    const std::wstring original = Text(e, ids::kRgbLabel + 6);
    MoreItem(d, e, 'E');  // export, cancelled
    titles.push_back(Answer(d, e, IDCANCEL).title);
    MoreItem(d, e, 'E');  // export into a folder that refuses the probe
    Seen dialog = Find(d, e);
    TypeName(dialog.window, blocked + "colors.ini");
    Press(dialog.window, IDOK);
    probe_notice = Answer(d, e, IDOK).text;
    MoreItem(d, e, 'E');  // export
    dialog = Find(d, e);
    titles.push_back(dialog.title);
    Screenshot(dialog.window, "export-dialog");
    TypeName(dialog.window, ini);
    Press(dialog.window, IDOK);
    Idle(e);

    Pick(d, e, 6, RGB(1, 2, 3));
    rows.push_back(Text(e, ids::kRgbLabel + 6));
    MoreItem(d, e, 'I');  // import what was exported
    dialog = Find(d, e);
    titles.push_back(dialog.title);
    TypeName(dialog.window, ini);
    Press(dialog.window, IDOK);
    Idle(e);
    rows.push_back(Text(e, ids::kRgbLabel + 6) == original ? L"as exported" : Text(e, ids::kRgbLabel + 6));

    Pick(d, e, 6, RGB(1, 2, 3));
    MoreItem(d, e, 'R');
    titles.push_back(Answer(d, e, IDYES).text);
    Idle(e);
    rows.push_back(Text(e, ids::kRgbLabel + 6));
    Click(e, ids::kOk);
  });
  ASSERT_EQ(d.results, std::vector<bool>{true});
  EXPECT_EQ(items, (std::vector<std::wstring>{L"&Import...", L"&Export...", L"", L"&Restore Defaults",
                                              L"&Check Colors..."}));
  EXPECT_EQ(menu_rect.left, more_rect.left);
  if (more_rect.bottom - 2 + (menu_rect.bottom - menu_rect.top) <= GetSystemMetrics(SM_CYSCREEN)) {
    EXPECT_EQ(menu_rect.top, more_rect.bottom - 2);  // else the system opens it upwards
  }
  EXPECT_EQ(titles, (std::vector<std::wstring>{L"Export Logical Colors", L"Export Logical Colors",
                                               L"Import Logical Colors",
                                               L"Are you sure you want to replace current colors with default ones?"}));
  EXPECT_EQ(probe_notice.rfind(L"Cannot save files in this location " + W(blocked) + L"colors.ini\r\n", 0), 0u)
      << probe_notice;
  EXPECT_FALSE(std::filesystem::exists(W(blocked + "colors.ini")));
  EXPECT_EQ(rows, (std::vector<std::wstring>{L"(1, 2, 3)", L"as exported", RgbText(reference35)}));
  EXPECT_NE(std::find(d.calls.begin(), d.calls.end(), L"HostFileNotice|" + W(ini)), d.calls.end());
  // Restored, then saved by OK.
  EXPECT_EQ(ParseClutLine(SplitClutLines(ReadBytes(Table())).lines[35]), reference35);
}

// The host's own file dialog (BrowsePressed) answered by `answer`, three times: with
// a file name, with a number, and with a file name and Cancel.
class BrowseHost final : public test::StackDispatch {
 public:
  BrowseHost() : StackDispatch(DIID___ctlTqColorSetting) {}
  std::function<HRESULT(DISPPARAMS*)> answer;
  std::vector<std::wstring> seen;
  STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* p, VARIANT*, EXCEPINFO*, UINT*) override {
    if (id != 3 || p->cArgs != 7) return S_OK;
    seen.push_back(std::to_wstring(p->rgvarg[5].iVal) + L"|" + p->rgvarg[4].bstrVal + L"|" + p->rgvarg[3].bstrVal +
                   L"|" + p->rgvarg[2].bstrVal + L"|" + std::to_wstring(p->rgvarg[6].lVal != 0));
    return answer(p);
  }
  void Connect(IDispatch* control) {
    ComPtr<IConnectionPointContainer> container;
    ComPtr<IConnectionPoint> point;
    DWORD cookie = 0;
    ASSERT_EQ(control->QueryInterface(IID_PPV_ARGS(&container)), S_OK);
    ASSERT_EQ(container->FindConnectionPoint(DIID___ctlTqColorSetting, &point), S_OK);
    ASSERT_EQ(point->Advise(this, &cookie), S_OK);
    ArgList use;
    ASSERT_EQ(use.Str(L"UseCustomFileDlg").I2(-1).Invoke(control, L"SetObjectValue"), S_OK);
  }
};

// Wine's script host binds no events to scripts, so the host does what the script host
// does for it: the event goes to the script's Sub named after the object and the event.
class VBScriptHandler final : public IActiveScriptSite {
 public:
  explicit VBScriptHandler(const std::wstring& code) {
    CLSID vbscript;
    if (FAILED(CLSIDFromProgID(L"VBScript", &vbscript)) ||
        FAILED(CoCreateInstance(vbscript, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&engine_))))
      return;
    ComPtr<IActiveScriptParse> parse;
    engine_.As(&parse);
    engine_->SetScriptSite(this);
    parse->InitNew();
    EXCEPINFO exception{};
    parse->ParseScriptText(code.c_str(), nullptr, nullptr, nullptr, 0, 0, 0, nullptr, &exception);
    engine_->SetScriptState(SCRIPTSTATE_CONNECTED);
    engine_->GetScriptDispatch(nullptr, &script_);
  }
  ~VBScriptHandler() {
    script_.Reset();
    if (engine_) engine_->Close();
  }
  HRESULT Call(const wchar_t* sub, DISPPARAMS* params) {
    if (!script_) return E_FAIL;
    DISPID id;
    LPOLESTR name = const_cast<LPOLESTR>(sub);
    if (FAILED(script_->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id))) return DISP_E_MEMBERNOTFOUND;
    return script_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, params, nullptr, nullptr, nullptr);
  }

  STDMETHODIMP QueryInterface(REFIID iid, void** out) override {
    *out = iid == IID_IUnknown || iid == IID_IActiveScriptSite ? this : nullptr;
    return *out ? S_OK : E_NOINTERFACE;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return 2; }
  STDMETHODIMP_(ULONG) Release() override { return 1; }
  STDMETHODIMP GetLCID(LCID* lcid) override { return *lcid = LOCALE_USER_DEFAULT, S_OK; }
  STDMETHODIMP GetItemInfo(LPCOLESTR, DWORD, IUnknown**, ITypeInfo**) override { return TYPE_E_ELEMENTNOTFOUND; }
  STDMETHODIMP GetDocVersionString(BSTR*) override { return E_NOTIMPL; }
  STDMETHODIMP OnScriptTerminate(const VARIANT*, const EXCEPINFO*) override { return S_OK; }
  STDMETHODIMP OnStateChange(SCRIPTSTATE) override { return S_OK; }
  STDMETHODIMP OnScriptError(IActiveScriptError*) override {
    ADD_FAILURE() << "VBScript error";
    return S_OK;
  }
  STDMETHODIMP OnEnterScript() override { return S_OK; }
  STDMETHODIMP OnLeaveScript() override { return S_OK; }

 private:
  ComPtr<IActiveScript> engine_;
  ComPtr<IDispatch> script_;
};

TEST_F(EditorCommands, TheHostsOwnFileDialogAnswersFromCppAndFromVBScriptThroughTheEventsArguments) {
  TempFolder folder;
  const std::string ini = folder / "hand.ini";
  WritePrivateProfileStringW(L"Logical Colors", L"Index_35", L"10 20 30", W(ini).c_str());
  for (bool vbscript : {false, true}) {
    SCOPED_TRACE(vbscript ? "VBScript" : "C++");
    BrowseHost host;
    std::unique_ptr<VBScriptHandler> script;
    int calls = 0;
    host.answer = [&](DISPPARAMS* p) -> HRESULT {
      if (script) {
        // Wine's VBScript writes back only through references to VARIANTs: Cancel goes
        // to the script as one and comes back.
        VARIANT cancel;
        VariantInit(&cancel);
        cancel.vt = VT_BOOL;
        cancel.boolVal = *p->rgvarg[0].pboolVal;
        VARIANT_BOOL* host_cancel = p->rgvarg[0].pboolVal;
        p->rgvarg[0].vt = VT_BYREF | VT_VARIANT;
        p->rgvarg[0].pvarVal = &cancel;
        const HRESULT hr = script->Call(L"ctl_BrowsePressed", p);
        *host_cancel = VariantChangeType(&cancel, &cancel, 0, VT_BOOL) == S_OK ? cancel.boolVal : VARIANT_FALSE;
        p->rgvarg[0].vt = VT_BYREF | VT_BOOL;
        p->rgvarg[0].pboolVal = host_cancel;
        return hr;
      }
      VARIANT* file = p->rgvarg[1].pvarVal;
      VariantClear(file);
      file->vt = ++calls == 2 ? VT_I4 : VT_BSTR;
      if (calls == 2)
        file->lVal = 42;
      else
        file->bstrVal = SysAllocString(W(ini).c_str());
      *p->rgvarg[0].pboolVal = calls == 3 ? VARIANT_TRUE : VARIANT_FALSE;
      return S_OK;
    };
    Display d;
    d.with_control = [&](IDispatch* control) {
      if (vbscript)
        script = std::make_unique<VBScriptHandler>(
            L"Dim calls\n"
            L"Sub ctl_BrowsePressed(dlgParent, dlgType, dlgTitle, dlgFilter, dlgFile, vRetVal, Cancel)\n"
            L"  calls = calls + 1\n"
            L"  Select Case calls\n"
            L"    Case 1: vRetVal = \"" + W(ini) + L"\"\n"
            L"    Case 2: vRetVal = 42\n"
            L"    Case 3: vRetVal = \"" + W(ini) + L"\": Cancel = True\n"
            L"  End Select\n"
            L"End Sub\n");
      host.Connect(control);
    };
    d.after_shows = [&] { script.reset(); };
    std::vector<std::wstring> rows;
    Run(d, [&] {
      HWND e = Editor(d);
      ASSERT_TRUE(e);
      for (int i = 0; i < 3; ++i) {
        Pick(d, e, 6, RGB(1, 2, 3));
        MoreItem(d, e, 'I');
        Idle(e);
        rows.push_back(Text(e, ids::kRgbLabel + 6));
      }
      Click(e, ids::kCancel);
    });
    EXPECT_EQ(rows, (std::vector<std::wstring>{L"(10, 20, 30)", L"(1, 2, 3)", L"(1, 2, 3)"}));
    ASSERT_EQ(host.seen.size(), 3u);
    EXPECT_EQ(host.seen[0], L"3|Import Logical Colors|Ini Files (*.ini)|*.ini|All Files (*.*)|*.*||C:\\|1");
  }
}

}  // namespace
