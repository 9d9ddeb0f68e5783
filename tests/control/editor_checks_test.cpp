// The editor's colour checks under UI automation: a row's marker follows its finding,
// the check window leads to the row and simulates a vision; read-only editors mark too.
#include "control/editor_fixture.h"

#include "quality/color_quality.h"

namespace {

using namespace editor_test;

class EditorChecks : public EditorWindow {
 protected:
  // Opens More > Check Colors... and returns the window once idle.
  static HWND OpenChecks(const Display& d, HWND editor) {
    PostMessageW(editor, WM_COMMAND, ids::kCheckColorsItem, 0);
    HWND found = WaitForWindow([](HWND hwnd) { return HasClass(hwnd, ids::kCheckClass); }, d.thread);
    if (found) Idle(found);
    return found;
  }
  static std::wstring Cell(HWND list, int item, int column) {
    wchar_t text[256] = L"";
    LVITEMW lv{};
    lv.iSubItem = column;
    lv.pszText = text;
    lv.cchTextMax = 256;
    SendMessageW(list, LVM_GETITEMTEXTW, item, reinterpret_cast<LPARAM>(&lv));
    return text;
  }
  static COLORREF Swatch(HWND editor, int row) {
    HWND button = Item(editor, ids::kColorButton + row);
    RECT r;
    GetClientRect(button, &r);
    return Pixel(button, r.right / 2, r.bottom / 2);
  }
};

TEST_F(EditorChecks, AMarkerFollowsItsFindingAndTheCheckWindowLeadsToTheRowAndSimulatesAVision) {
  const auto lines = SplitClutLines(SourceFile("data/QLT830_colors.clut")).lines;
  const std::int32_t background = ParseClutLine(lines[256]), text = ParseClutLine(lines[258]);
  Display d;
  d.tab = 4;  // Alarm Display: background row 120 (index 256), gridline 121, text 122 (258)
  bool marked_at_start = true, marked_after = true;
  std::wstring marker, summary, jumped_to, title, simulated_title, rgb_simulated, title_after;
  int page_after_jump = -1;
  COLORREF normal = 0, simulated = 0, normal_again = 0;
  Run(d, [&] {
    HWND e = Editor(d);
    ASSERT_TRUE(e);
    title = WindowText(e);
    marked_at_start = Item(e, ids::kFindingMarker + 122) != nullptr;
    // The text on its own background: a finding; its old colour again: none.
    Pick(d, e, 122, static_cast<COLORREF>(background));
    marker = Text(e, ids::kFindingMarker + 122);
    Pick(d, e, 122, static_cast<COLORREF>(text));
    marked_after = Item(e, ids::kFindingMarker + 122) != nullptr;

    Pick(d, e, 122, static_cast<COLORREF>(background));
    Pick(d, e, 121, RGB(255, 0, 0));
    normal = Swatch(e, 121);
    ClickTab(e, 0);
    HWND w = OpenChecks(d, e);
    ASSERT_TRUE(w);
    summary = Text(w, ids::kChecksSummary);
    // Enter on the alarm list's finding: back to its page, its text's colour button focused.
    HWND list = Item(w, ids::kFindingsList);
    const int count = static_cast<int>(SendMessageW(list, LVM_GETITEMCOUNT, 0, 0));
    for (int i = 0; i < count; ++i)
      if (Cell(list, i, 0) == L"text.alarm_list") {
        LVITEMW state{};
        state.stateMask = state.state = LVIS_SELECTED | LVIS_FOCUSED;
        SendMessageW(list, LVM_SETITEMSTATE, i, reinterpret_cast<LPARAM>(&state));
      }
    Type(w, {VK_RETURN});
    page_after_jump = ShownPage(e);
    if (Focus(d) == Item(e, ids::kColorButton + 122)) jumped_to = L"text button";

    HWND combo = Item(w, ids::kVisionCombo);
    SendMessageW(combo, CB_SETCURSEL, 2, 0);
    SendMessageW(w, WM_COMMAND, MAKEWPARAM(ids::kVisionCombo, CBN_SELCHANGE), reinterpret_cast<LPARAM>(combo));
    simulated_title = WindowText(e);
    simulated = Swatch(e, 121);
    rgb_simulated = Text(e, ids::kRgbLabel + 121);
    Screenshot(w, "check-window");
    Click(w, ids::kCheckClose);
    for (int i = 0; i < 250 && IsWindow(w); ++i) Sleep(20);
    title_after = WindowText(e);
    normal_again = Swatch(e, 121);
    Click(e, ids::kCancel);
  });
  EXPECT_FALSE(marked_at_start);
  EXPECT_EQ(marker, L"Too little contrast with Background (1:1, needs 4.5:1)");
  EXPECT_FALSE(marked_after);
  EXPECT_EQ(summary, L"48 findings in 7 rules");  // the classic scheme's 47 and the one made here
  EXPECT_EQ(page_after_jump, 3);
  EXPECT_EQ(jumped_to, L"text button");
  EXPECT_EQ(normal, RGB(255, 0, 0));
  EXPECT_EQ(simulated, static_cast<COLORREF>(tq::quality::Simulate(RGB(255, 0, 0), tq::quality::Vision::Deuteranopia)));
  EXPECT_EQ(rgb_simulated, L"(255, 0, 0)");  // the stored value
  EXPECT_EQ(simulated_title, title + L" - Simulated: Deuteranopia");
  EXPECT_EQ(title_after, title);
  EXPECT_EQ(normal_again, RGB(255, 0, 0));
}

TEST_F(EditorChecks, AReadOnlyEditorMarksItsRowsToo) {
  Display d;
  d.enable = false;
  std::wstring normal_row, tip;
  bool button_enabled = true;
  Run(d, [&] {
    HWND e = Editor(d);
    ASSERT_TRUE(e);
    button_enabled = Enabled(e, ids::kColorButton + 19);
    normal_row = Text(e, ids::kFindingMarker + 19);  // Status: Normal (index 32)
    HWND tooltip = nullptr;
    EachThreadWindow(d.thread, [&](HWND hwnd) {
      if (HasClass(hwnd, TOOLTIPS_CLASSW) && GetWindow(hwnd, GW_OWNER) == e) tooltip = hwnd;
      return !tooltip;
    });
    wchar_t text[2048] = L"";
    TTTOOLINFOW info{};
    info.cbSize = sizeof info;
    info.hwnd = GetParent(Item(e, ids::kFindingMarker + 19));
    info.uId = reinterpret_cast<UINT_PTR>(Item(e, ids::kFindingMarker + 19));
    info.lpszText = text;
    SendMessageW(tooltip, TTM_GETTEXTW, 2048, reinterpret_cast<LPARAM>(&info));
    tip = text;
    Screenshot(e, "editor-markers-read-only");
    Click(e, ids::kCancel);
  });
  EXPECT_FALSE(button_enabled);
  EXPECT_EQ(tip, normal_row);
  EXPECT_EQ(normal_row.substr(0, normal_row.find(L';')),
            L"Hard to tell from Measurement High Warning for protanopia (\u0394E 5.1, needs 10)");
}

}  // namespace
