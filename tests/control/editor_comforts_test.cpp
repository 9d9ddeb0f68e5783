// The editor's editing comforts under UI automation: the colour buttons' context menu,
// the clipboard, the Enter Value dialog, undo and redo across an import, the find box,
// and all of it in a read-only editor.
#include "control/editor_fixture.h"

namespace {

using namespace editor_test;

class EditorComforts : public EditorWindow {
 protected:
  static constexpr int kRow = 6;  // index 35 on the first tab

  // Ctrl+F, the text typed into the find box, then each key in turn; the pages shown
  // after the text and after each key but Esc, which comes last.
  static std::vector<int> Find(const Display& d, HWND editor, const std::wstring& text, const std::vector<WORD>& keys) {
    Type(editor, {VK_CONTROL, 'F'});
    HWND box = OwnedDialog(d, editor);
    if (!box) return {-1};
    SetWindowTextW(GetDlgItem(box, ids::kFindEdit), text.c_str());
    Idle(editor);
    std::vector<int> pages{ShownPage(editor)};
    for (WORD key : keys) {
      Keys({key});
      Sleep(100);
      Idle(editor);
      if (key != VK_ESCAPE) pages.push_back(ShownPage(editor));
    }
    for (int i = 0; i < 250 && IsWindowVisible(box); ++i) Sleep(20);  // Esc closes it
    return pages;
  }

  static void PutText(const std::wstring& text) {
    ASSERT_TRUE(OpenClipboard(nullptr));
    EmptyClipboard();
    HGLOBAL data = GlobalAlloc(GMEM_MOVEABLE, (text.size() + 1) * sizeof(wchar_t));
    memcpy(GlobalLock(data), text.c_str(), (text.size() + 1) * sizeof(wchar_t));
    GlobalUnlock(data);
    SetClipboardData(CF_UNICODETEXT, data);
    CloseClipboard();
  }
  static std::wstring ClipboardText() {
    std::wstring text;
    if (!OpenClipboard(nullptr)) return L"not opened";
    if (HANDLE data = GetClipboardData(CF_UNICODETEXT)) {
      text = static_cast<const wchar_t*>(GlobalLock(data));
      GlobalUnlock(data);
    }
    CloseClipboard();
    return text;
  }
  // The context menu that `open` brings up: its items as "text" or "text (off)", then closed with `key`.
  static std::vector<std::wstring> Menu(const Display& d, const std::function<void()>& open, WORD key = VK_ESCAPE) {
    open();
    HWND menu = WaitForWindow([](HWND hwnd) { return HasClass(hwnd, L"#32768") && IsWindowVisible(hwnd); }, d.thread);
    if (!menu) return {L"no menu"};
    HMENU popup = reinterpret_cast<HMENU>(SendMessageW(menu, MN_GETHMENU, 0, 0));
    std::vector<std::wstring> items;
    for (int i = 0; i < GetMenuItemCount(popup); ++i) {
      const UINT state = GetMenuState(popup, i, MF_BYPOSITION);
      if (state & MF_SEPARATOR) continue;
      wchar_t text[64] = L"";
      GetMenuStringW(popup, i, text, 64, MF_BYPOSITION);
      items.push_back(std::wstring(text) + (state & MF_GRAYED ? L" (off)" : L""));
    }
    Keys({key});
    for (int i = 0; i < 1000 && IsWindowVisible(menu); ++i) Sleep(20);
    return items;
  }
};

TEST_F(EditorComforts, ClipboardEnterValueAndUndoAcrossAnImport) {
  TempFolder folder;
  const std::string ini = folder / "two.ini";
  WritePrivateProfileStringW(L"Logical Colors", L"Index_35", L"1 2 3", W(ini).c_str());
  WritePrivateProfileStringW(L"Logical Colors", L"Index_38", L"4 5 6", W(ini).c_str());
  Display d;
  std::vector<std::wstring> pasted, items, steps;
  std::wstring copied, loaded, title;
  bool ok_for_junk = true, ok_for_colour = false;
  Run(d, [&] {
    HWND e = Editor(d);
    ASSERT_TRUE(e);
    loaded = Text(e, ids::kRgbLabel + kRow);
    EXPECT_EQ(Find(d, e, L"35", {VK_ESCAPE}), std::vector<int>{0});
    ASSERT_EQ(Focus(d), Item(e, ids::kColorButton + kRow));
    Type(e, {VK_CONTROL, 'C'});
    copied = ClipboardText();
    for (const wchar_t* text : {L"#0A141E", L"281e32", L" 40, 50, 60 ", L"70 80 90", L"junk", L"#12345", L"1, 2, 300"}) {
      PutText(text);
      Type(e, {VK_CONTROL, 'V'});
      pasted.push_back(Text(e, ids::kRgbLabel + kRow));
    }
    // Enter Value from the menu that Shift+F10 opens: junk keeps OK disabled.
    items = Menu(d, [&] { Type(e, {VK_SHIFT, VK_F10}); }, 'E');
    HWND dialog = OwnedDialog(d, e);
    ASSERT_TRUE(dialog);
    title = WindowText(dialog);
    SetDlgItemTextW(dialog, ids::kValueEdit, L"junk");
    ok_for_junk = IsWindowEnabled(GetDlgItem(dialog, IDOK));
    SetDlgItemTextW(dialog, ids::kValueEdit, L"#FF0000");
    ok_for_colour = IsWindowEnabled(GetDlgItem(dialog, IDOK));
    Screenshot(dialog, "enter-value");
    PressButton(dialog, IDOK);
    for (int i = 0; i < 250 && IsWindow(dialog); ++i) Sleep(20);
    Idle(e);
    steps.push_back(Text(e, ids::kRgbLabel + kRow));
    // The import is one step for both its rows.
    PostMessageW(Item(e, ids::kMoreButton), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(4, 4));
    HWND more = WaitForWindow([](HWND hwnd) { return HasClass(hwnd, L"#32768"); }, d.thread);
    ASSERT_TRUE(more);
    Keys({'I'});
    HWND open = OwnedDialog(d, e);
    ASSERT_TRUE(open);
    HWND name = nullptr;
    EachDescendant(open, [&](HWND hwnd) {
      if (HasClass(hwnd, L"Edit") && IsWindowVisible(hwnd)) name = hwnd;
      return !name;
    });
    ASSERT_TRUE(name);
    SetWindowTextW(name, W(ini).c_str());
    PressButton(open, IDOK);
    for (int i = 0; i < 250 && IsWindow(open); ++i) Sleep(20);
    Idle(e);
    auto both = [&] { return Text(e, ids::kRgbLabel + kRow) + L" " + Text(e, ids::kRgbLabel + 0); };
    steps.push_back(both());
    for (WORD key : {'Z', 'Z', 'Y', 'Y'}) {
      Type(e, {VK_CONTROL, key});
      steps.push_back(both());
    }
    Click(e, ids::kCancel);
  });
  EXPECT_EQ(RgbText(ParseClutLine(SplitClutLines(ReadBytes(Table())).lines[35])), loaded);
  EXPECT_EQ(copied.size(), 7u);
  EXPECT_EQ(L"(" + std::to_wstring(std::stoi(copied.substr(1, 2), nullptr, 16)) + L", " +
                std::to_wstring(std::stoi(copied.substr(3, 2), nullptr, 16)) + L", " +
                std::to_wstring(std::stoi(copied.substr(5, 2), nullptr, 16)) + L")",
            loaded);
  EXPECT_EQ(pasted, (std::vector<std::wstring>{L"(10, 20, 30)", L"(40, 30, 50)", L"(40, 50, 60)", L"(70, 80, 90)",
                                               L"(70, 80, 90)", L"(70, 80, 90)", L"(70, 80, 90)"}));
  EXPECT_EQ(items, (std::vector<std::wstring>{L"&Copy Color", L"&Paste Color", L"&Enter Value...",
                                              L"&Reset to Factory Color", L"&Undo", L"Re&do (off)", L"&Find..."}));
  EXPECT_EQ(title, L"Color Setting Tool - Enter Color Value");
  EXPECT_FALSE(ok_for_junk);
  EXPECT_TRUE(ok_for_colour);
  const std::wstring row0_before = steps.size() > 2 ? steps[2].substr(steps[2].find(L") ") + 2) : L"";
  EXPECT_EQ(steps, (std::vector<std::wstring>{L"(255, 0, 0)", L"(1, 2, 3) (4, 5, 6)", L"(255, 0, 0) " + row0_before,
                                              L"(70, 80, 90) " + row0_before, L"(255, 0, 0) " + row0_before,
                                              L"(1, 2, 3) (4, 5, 6)"}));
  EXPECT_NE(row0_before, L"(4, 5, 6)");
}

TEST_F(EditorComforts, FindGoesAcrossTabsAndCategoriesInTheEditorsLanguageAndLeavesTheFocusOnTheRow) {
  Display d;
  d.language = L"DE";
  std::vector<int> gridlines, primary, nothing;
  int category = -1, source_category = -1;
  HWND focused = nullptr, wanted = nullptr;
  Run(d, [&] {
    HWND e = Editor(d);
    ASSERT_TRUE(e);
    // Alarm, Event, Blocking, then Trends' two categories: the tabs' order.
    gridlines = Find(d, e, L"GITTERlinie", {VK_RETURN, VK_RETURN, VK_RETURN, VK_RETURN, VK_ESCAPE});
    category = static_cast<int>(SendMessageW(Item(e, ids::kCategoryCombo + 6), CB_GETCURSEL, 0, 0));
    focused = Focus(d);
    wanted = Item(e, ids::kColorButton + 172);
    nothing = Find(d, e, L"nichts dergleichen", {VK_ESCAPE});
    // Letter case beyond ASCII: "Transformator-Primärwicklung" under Voltage Source.
    Type(e, {VK_CONTROL, 'F'});
    HWND box = OwnedDialog(d, e);
    ASSERT_TRUE(box);
    SetDlgItemTextW(box, ids::kFindEdit, L"PRIM\u00C4R");
    Idle(e);
    Screenshot(box, "find-box-de");
    primary = {ShownPage(e)};
    source_category = static_cast<int>(SendMessageW(Item(e, ids::kCategoryCombo + 1), CB_GETCURSEL, 0, 0));
    PostMessageW(box, WM_CLOSE, 0, 0);
    Click(e, ids::kCancel);
  });
  EXPECT_EQ(gridlines, (std::vector<int>{3, 4, 5, 6, 6}));
  EXPECT_EQ(category, 1);
  EXPECT_EQ(focused, wanted);
  EXPECT_EQ(nothing, std::vector<int>{6});  // no match: stays where it was
  EXPECT_EQ(primary, std::vector<int>{1});
  EXPECT_EQ(source_category, 1);
}

TEST_F(EditorComforts, ReadOnlyOffersOnlyCopyAndFind) {
  Display d;
  d.enable = false;
  std::vector<std::wstring> items;
  std::wstring before, after;
  Run(d, [&] {
    HWND e = Editor(d);
    ASSERT_TRUE(e);
    before = Text(e, ids::kRgbLabel + kRow);
    // A disabled button takes no click: its frame opens the menu for the row under the mouse.
    RECT r;
    GetWindowRect(Item(e, ids::kColorButton + kRow), &r);
    HWND frame = Item(e, ids::kFrame);
    items = Menu(d, [&] {
      PostMessageW(frame, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(frame),
                   MAKELPARAM((r.left + r.right) / 2, (r.top + r.bottom) / 2));
    });
    PutText(L"#010203");
    Type(e, {VK_CONTROL, 'V'});
    Type(e, {VK_CONTROL, 'Z'});
    after = Text(e, ids::kRgbLabel + kRow);
    Click(e, ids::kCancel);
  });
  EXPECT_EQ(items, (std::vector<std::wstring>{L"&Copy Color", L"&Paste Color (off)", L"&Enter Value... (off)",
                                              L"&Reset to Factory Color (off)", L"&Undo (off)", L"Re&do (off)",
                                              L"&Find..."}));
  EXPECT_EQ(after, before);
}

}  // namespace
