// The editor's editing comforts wired to the window: the colour buttons' context menu,
// the clipboard, the Enter Value dialog, undo and redo across an import, the find box,
// and all of it in a read-only editor. What undo decides is the session's tests' subject.
#include "control/scenario.h"

namespace {

using namespace editor_test;

class EditorComforts : public EditorWindow {
 protected:
  static constexpr int kRow = 6;  // index 35 on the first tab

  std::int32_t FactoryColour(int index) {
    return ParseClutLine(SplitClutLines(Read(etc_ + "QLT830_colors.clut")).lines[index]);
  }
  // The factory colour of `index` as its RGB label shows it.
  std::wstring Factory(int index) { return RgbText(FactoryColour(index)); }
  // Ctrl+F, `text` typed into the find box, then each key in turn; notes the page shown
  // after the text and after each key but Esc, which comes last.
  static Step Find(const Display& d, const std::wstring& text, std::vector<WORD> keys, std::vector<int>& pages) {
    return Do([&d, text, keys, &pages](HWND e) {
      Type(e, {VK_CONTROL, 'F'});
      HWND box = WaitForWindow([&](HWND w) { return GetDlgItem(w, ids::kFindEdit) != nullptr; }, d.thread);
      ASSERT_TRUE(box);
      SetDlgItemTextW(box, ids::kFindEdit, text.c_str());
      Idle(e);
      pages.push_back(ShownPage(e));
      for (WORD key : keys) {
        Type(box, {key});
        if (key != VK_ESCAPE) pages.push_back(ShownPage(e));
      }
      for (int i = 0; i < 250 && IsWindow(box); ++i) Sleep(20);
    });
  }
  static Step PutText(const std::wstring& text) {
    return Do([text](HWND) {
      ASSERT_TRUE(OpenClipboard(nullptr));
      EmptyClipboard();
      HGLOBAL data = GlobalAlloc(GMEM_MOVEABLE, (text.size() + 1) * sizeof(wchar_t));
      memcpy(GlobalLock(data), text.c_str(), (text.size() + 1) * sizeof(wchar_t));
      GlobalUnlock(data);
      SetClipboardData(CF_UNICODETEXT, data);
      CloseClipboard();
    });
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
  // The context menu that `open` brings up: its items as "text" or "text (off)"; then
  // `key` closes it or chooses an item.
  static Step ContextMenu(const Display& d, std::function<void(HWND)> open, WORD key,
                          std::vector<std::wstring>& items) {
    return Do([&d, open, key, &items](HWND e) {
      open(e);
      HWND menu = WaitForWindow([](HWND w) { return HasClass(w, L"#32768") && IsWindowVisible(w); }, d.thread);
      ASSERT_TRUE(menu);
      items = MenuItems(menu);
      Type(menu, {key});
      for (int i = 0; i < 1000 && IsWindowVisible(menu); ++i) Sleep(20);
    });
  }
};

TEST_F(EditorComforts, ClipboardEnterValueAndUndoAcrossAnImport) {
  ScratchFolder folder;
  const std::string ini = folder / "two.ini";
  WritePrivateProfileStringW(L"Logical Colors", L"Index_35", L"1 2 3", W(ini).c_str());
  WritePrivateProfileStringW(L"Logical Colors", L"Index_38", L"4 5 6", W(ini).c_str());
  const std::int32_t loaded = FactoryColour(35);
  const std::wstring row0 = Factory(38);
  wchar_t loaded_hex[8];
  swprintf(loaded_hex, 8, L"#%02X%02X%02X", loaded & 0xFF, loaded >> 8 & 0xFF, loaded >> 16 & 0xFF);
  Display d;
  std::vector<int> pages;
  std::vector<std::wstring> items;
  std::wstring copied;
  std::vector<Step> steps{
      Find(d, L"35", {VK_ESCAPE}, pages),  // the focus to the row's button
      Do([&](HWND e) { ASSERT_EQ(Focus(d), Item(e, ids::kColorButton + kRow)); }),
      Keys({VK_CONTROL, 'C'}),
      Do([&](HWND) { copied = ClipboardText(); }),
  };
  // Each format people copy pasted; junk changes nothing (its kinds are the parser's tests').
  const std::pair<const wchar_t*, const wchar_t*> pastes[] = {
      {L"#0A141E", L"(10, 20, 30)"}, {L"281e32", L"(40, 30, 50)"}, {L" 40, 50, 60 ", L"(40, 50, 60)"},
      {L"70 80 90", L"(70, 80, 90)"}, {L"junk", L"(70, 80, 90)"}};
  for (const auto& [text, shown] : pastes)
    steps.insert(steps.end(), {PutText(text), Keys({VK_CONTROL, 'V'}), ExpectText(ids::kRgbLabel + kRow, shown)});
  steps.insert(steps.end(), {
      // Enter Value from the menu of Shift+F10, typed with Shift let go before F10: OK
      // only for a colour.
      ContextMenu(d, [](HWND e) {
        INPUT keys[4] = {{INPUT_KEYBOARD, {.ki = {VK_SHIFT, 0, 0, 0, 0}}},
                         {INPUT_KEYBOARD, {.ki = {VK_F10, 0, 0, 0, 0}}},
                         {INPUT_KEYBOARD, {.ki = {VK_SHIFT, 0, KEYEVENTF_KEYUP, 0, 0}}},
                         {INPUT_KEYBOARD, {.ki = {VK_F10, 0, KEYEVENTF_KEYUP, 0, 0}}}};
        SetForegroundWindow(e);
        SendInput(4, keys, sizeof(INPUT));
      }, 'E', items),
      Answer(Str(1627), 0),
      Do([&](HWND) {
        HWND dialog = Front(d.thread);
        SetDlgItemTextW(dialog, ids::kValueEdit, L"junk");
        EXPECT_FALSE(IsWindowEnabled(GetDlgItem(dialog, IDOK)));
        SetDlgItemTextW(dialog, ids::kValueEdit, L"#FF0000");
        EXPECT_TRUE(IsWindowEnabled(GetDlgItem(dialog, IDOK)));
      }),
      Press(IDOK),
      ExpectText(ids::kRgbLabel + kRow, L"(255, 0, 0)"),
      // The import is one step for both its rows.
      Menu('I'),
      Answer(Str(1329), 0),
      Name(ini),
      ExpectText(ids::kRgbLabel + kRow, L"(1, 2, 3)"),
      ExpectText(ids::kRgbLabel + 0, L"(4, 5, 6)"),
      Keys({VK_CONTROL, 'Z'}),
      ExpectText(ids::kRgbLabel + kRow, L"(255, 0, 0)"),
      ExpectText(ids::kRgbLabel + 0, row0),
      Keys({VK_CONTROL, 'Z'}),
      ExpectText(ids::kRgbLabel + kRow, L"(70, 80, 90)"),
      Keys({VK_CONTROL, 'Y'}),
      Keys({VK_CONTROL, 'Y'}),
      ExpectText(ids::kRgbLabel + kRow, L"(1, 2, 3)"),
      ExpectText(ids::kRgbLabel + 0, L"(4, 5, 6)"),
      Press(ids::kCancel),
  });
  Play(d, steps);
  EXPECT_EQ(copied, loaded_hex);
  EXPECT_EQ(items, (std::vector<std::wstring>{L"&" + Str(1620), L"&" + Str(1621), L"&" + Str(1622), L"&" + Str(1623),
                                              L"&" + Str(1624), L"Re&do (off)", L"&" + Str(1626)}));
}

TEST_F(EditorComforts, FindGoesAcrossTabsAndCategoriesInTheEditorsLanguageAndLeavesTheFocusOnTheRow) {
  Display d;
  d.language = L"DE";
  std::vector<int> gridlines, nothing, primary;
  Play(d, {
      // Alarm, Event, Blocking, then Trends' two categories: the tabs' order.
      Find(d, L"GITTERlinie", {VK_RETURN, VK_RETURN, VK_RETURN, VK_RETURN, VK_ESCAPE}, gridlines),
      ExpectText(ids::kCategoryCombo + 6, L"Tabellenansicht"),
      Do([&](HWND e) { EXPECT_EQ(Focus(d), Item(e, ids::kColorButton + 172)); }),
      Find(d, L"nichts dergleichen", {VK_ESCAPE}, nothing),
      // Letter case beyond ASCII: "Transformator-Primärwicklung" under Voltage Source.
      Find(d, L"PRIM\u00C4R", {VK_ESCAPE}, primary),
      ExpectText(ids::kCategoryCombo + 1, L"Spannungsquelle"),
      Press(ids::kCancel),
  });
  EXPECT_EQ(gridlines, (std::vector<int>{3, 4, 5, 6, 6}));
  EXPECT_EQ(nothing, std::vector<int>{6});  // no match: stays where it was
  EXPECT_EQ(primary, std::vector<int>{1});
}

// A read-only editor: the menu offers only Copy and Find, nothing changes a colour,
// and the rows still carry their findings' markers.
TEST_F(EditorComforts, ReadOnlyOffersOnlyCopyAndFindAndStillMarksItsRows) {
  Display d;
  d.enable = false;
  std::vector<std::wstring> items;
  std::wstring marker, tip;
  Play(d, {
      Do([&](HWND e) {
        marker = Text(e, ids::kFindingMarker + 19);  // Status: Normal (index 32)
        tip = Tip(d, e, Item(e, ids::kFindingMarker + 19));
      }),
      // A disabled button takes no click: its frame opens the menu for the row under the mouse.
      ContextMenu(d, [](HWND e) {
        RECT r;
        GetWindowRect(Item(e, ids::kColorButton + kRow), &r);
        HWND frame = Item(e, ids::kFrame);
        PostMessageW(frame, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(frame),
                     MAKELPARAM((r.left + r.right) / 2, (r.top + r.bottom) / 2));
      }, VK_ESCAPE, items),
      PutText(L"#010203"),
      Keys({VK_CONTROL, 'V'}),
      Keys({VK_CONTROL, 'Z'}),
      ExpectText(ids::kRgbLabel + kRow, Factory(35)),
      Press(ids::kCancel),
  });
  EXPECT_EQ(items, (std::vector<std::wstring>{L"&" + Str(1620), L"&" + Str(1621) + L" (off)", L"&" + Str(1622) + L" (off)",
                                              L"&" + Str(1623) + L" (off)", L"&" + Str(1624) + L" (off)", L"Re&do (off)",
                                              L"&" + Str(1626)}));
  EXPECT_EQ(tip, marker);
  EXPECT_EQ(marker.substr(0, marker.find(L';')),
            L"Hard to tell from Measurement High Warning for protanopia (\u0394E 5.1, needs 10)");
}

}  // namespace
