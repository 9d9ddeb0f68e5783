// The editor's colour checks under UI automation: a row's marker follows its finding,
// the check window leads to the row and simulates a vision (a read-only editor's markers
// are seen in the comforts' read-only test).
#include "control/scenario.h"

#include "quality/color_quality.h"

namespace {

using namespace editor_test;

class EditorChecks : public EditorWindow {
 protected:
  static std::wstring Cell(HWND list, int item, int column) {
    wchar_t text[256] = L"";
    LVITEMW lv{};
    lv.iSubItem = column;
    lv.pszText = text;
    lv.cchTextMax = 256;
    SendMessageW(list, LVM_GETITEMTEXTW, item, reinterpret_cast<LPARAM>(&lv));
    return text;
  }
  // The middle of a row's swatch once it is `expected`, or as it is after 2 s: what the
  // window paints reaches the screen a little later.
  static COLORREF Swatch(HWND editor, int row, COLORREF expected) {
    HWND button = Item(editor, ids::kColorButton + row);
    RECT r;
    GetClientRect(button, &r);
    COLORREF seen = Pixel(button, r.right / 2, r.bottom / 2);
    for (int i = 0; i < 100 && seen != expected; ++i, Sleep(20)) seen = Pixel(button, r.right / 2, r.bottom / 2);
    return seen;
  }
};

TEST_F(EditorChecks, AMarkerFollowsItsFindingAndTheCheckWindowLeadsToTheRowAndSimulatesAVision) {
  const auto lines = SplitClutLines(SourceFile("data/QLT830_colors.clut")).lines;
  const auto background = static_cast<COLORREF>(ParseClutLine(lines[256]));
  const auto text = static_cast<COLORREF>(ParseClutLine(lines[258]));
  const COLORREF red = RGB(255, 0, 0);
  const auto seen = static_cast<COLORREF>(tq::quality::Simulate(red, tq::quality::Vision::Deuteranopia));
  Display d;
  d.tab = 4;  // Alarm Display: background row 120 (index 256), gridline 121, text 122 (258)
  std::wstring title;
  HWND w = nullptr;
  // The marker window, and its triangle, which the frame draws (the place it had stays
  // known when it goes).
  RECT place{};
  auto marked = [&place](bool expected) {
    return Do([expected, &place](HWND e) {
      HWND marker = Item(e, ids::kFindingMarker + 122);
      EXPECT_EQ(marker != nullptr, expected);
      if (marker) GetWindowRect(marker, &place);
      RECT editor;
      GetWindowRect(e, &editor);
      const COLORREF middle =
          Pixel(e, (place.left + place.right) / 2 - editor.left, (place.top + place.bottom) / 2 - editor.top);
      if (place.right) EXPECT_EQ(middle != GetSysColor(COLOR_BTNFACE), expected);
    });
  };
  Play(d, {
      Do([&](HWND e) { title = WindowText(e); }),
      marked(false),
      // The text on its own background: a finding; its old colour again: none.
      Pick(122, background),
      ExpectText(ids::kFindingMarker + 122, L"Too little contrast with Background (1:1, needs 4.5:1)"),
      marked(true),
      Pick(122, text),
      marked(false),
      Pick(122, background),
      Pick(121, red),
      Do([&](HWND e) { EXPECT_EQ(Swatch(e, 121, red), red); }),
      Do([&](HWND e) {
        PostMessageW(e, WM_COMMAND, ids::kCheckColorsItem, 0);  // More > Check Colors...
        w = WaitForWindow([](HWND hwnd) { return HasClass(hwnd, ids::kCheckClass); }, d.thread);
        ASSERT_TRUE(w);
        Idle(w);
        EXPECT_EQ(Text(w, ids::kChecksSummary), L"48 findings in 7 rules");  // the classic scheme's 47 and this one
        HWND list = Item(w, ids::kFindingsList);
        // Clicks the first finding of `colours`, as the user does, `clicks` times; waits
        // until the input is taken, which `taken` tells.
        auto click = [&](const std::wstring& colours, int clicks, const std::function<bool()>& taken) {
          const int count = static_cast<int>(SendMessageW(list, LVM_GETITEMCOUNT, 0, 0));
          int i = 0;
          while (i < count && Cell(list, i, 1).rfind(colours, 0) != 0) ++i;
          SendMessageW(list, LVM_ENSUREVISIBLE, i, FALSE);
          RECT r{LVIR_LABEL};
          SendMessageW(list, LVM_GETITEMRECT, i, reinterpret_cast<LPARAM>(&r));
          POINT at{(r.left + r.right) / 2, (r.top + r.bottom) / 2};
          ClientToScreen(list, &at);
          SetForegroundWindow(w);
          SetCursorPos(at.x, at.y);
          std::vector<INPUT> input(2 * clicks, INPUT{INPUT_MOUSE});
          for (std::size_t k = 0; k < input.size(); ++k)
            input[k].mi.dwFlags = k % 2 ? MOUSEEVENTF_LEFTUP : MOUSEEVENTF_LEFTDOWN;
          SendInput(static_cast<UINT>(input.size()), input.data(), sizeof(INPUT));
          for (int k = 0; k < 250 && !taken(); ++k) Sleep(20);
        };
        // A double click on two tagout severities: to the State tab's Tagout category, the
        // first colour's button focused.
        click(L"112 High (Critical) / 113", 2, [&] { return ShownPage(e) == 0; });
        EXPECT_EQ(Text(e, ids::kCategoryCombo), L"Tagout");
        EXPECT_EQ(WindowText(Focus(d)), L"High (Critical)");
        // Enter on the alarm list's finding: back to its page, its text's colour button focused.
        click(L"258 Text / 256", 1, [&] { return Focus(d) == list; });
        Type(w, {VK_RETURN});
        EXPECT_EQ(ShownPage(e), 3);
        EXPECT_EQ(Focus(d), Item(e, ids::kColorButton + 122));
        // Deuteranopia: the swatches as that vision sees them, the stored value as text.
        HWND combo = Item(w, ids::kVisionCombo);
        SendMessageW(combo, CB_SETCURSEL, 2, 0);
        SendMessageW(w, WM_COMMAND, MAKEWPARAM(ids::kVisionCombo, CBN_SELCHANGE), reinterpret_cast<LPARAM>(combo));
        EXPECT_EQ(WindowText(e), title + L" - Simulated: Deuteranopia");
        EXPECT_EQ(Swatch(e, 121, seen), seen);
        EXPECT_EQ(Text(e, ids::kRgbLabel + 121), L"(255, 0, 0)");
        // Closing the check window returns to normal vision.
        Click(w, ids::kCheckClose);
        for (int i = 0; i < 250 && IsWindow(w); ++i) Sleep(20);
        EXPECT_EQ(WindowText(e), title);
        EXPECT_EQ(Swatch(e, 121, red), red);
      }),
      Press(ids::kCancel),
  });
}

}  // namespace
