// The editor window under UI automation: what only the window can get wrong (modal
// over its owner, keys, tabs, tooltips, drawing, layout); the decisions
// behind it are the session's tests' subject, here each is seen once.
#include "control/scenario.h"

namespace {

using namespace editor_test;

TEST_F(EditorWindow, OpensModalOverItsOwnerAndClosesWithOkCancelEscEnterAndTheCloseBox) {
  const struct {
    const char* name;
    Step close;
  } ways[] = {
      {"OK", Press(ids::kOk)},
      {"Cancel", Press(ids::kCancel)},
      {"Esc", Keys({VK_ESCAPE})},
      {"Enter", Keys({VK_RETURN})},
      {"close box", Do([](HWND e) { PostMessageW(e, WM_SYSCOMMAND, SC_CLOSE, 0); })},
  };
  for (const auto& way : ways) {
    SCOPED_TRACE(way.name);
    Display d;
    d.topmost = true;
    Play(d, {Do([&](HWND e) {
               HWND owner = GetWindow(e, GW_OWNER);
               ASSERT_TRUE(owner);
               EXPECT_FALSE(IsWindowEnabled(owner));
               EXPECT_TRUE(GetWindowLongW(e, GWL_EXSTYLE) & WS_EX_TOPMOST);  // above a top-most display
               EXPECT_EQ(WindowText(e), Str(1301));
             }),
             way.close});
    EXPECT_EQ(d.results, std::vector<bool>{false}) << std::hex << d.hr;  // nothing changed: false, also after OK
    EXPECT_TRUE(d.owner_enabled_after);
    EXPECT_EQ(d.hr, S_OK);
  }
  // The display closed under the open editor takes the editor with it: Show returns as
  // after Cancel, the lock goes, and the next Show opens a new editor.
  Display d;
  d.shows = 2;
  bool locked = true;
  Run(d, [&] {
    HWND e = Editor(d);
    ASSERT_TRUE(e);
    PostMessageW(GetWindow(e, GW_OWNER), WM_CLOSE, 0, 0);
    WaitForShows(d, 1);
    locked = std::filesystem::exists(W(Table() + ".lock"));
    HWND again = Editor(d);
    ASSERT_TRUE(again);
    Click(again, ids::kCancel);
  });
  EXPECT_EQ(d.results, (std::vector<bool>{false, false}));
  EXPECT_FALSE(locked);
}

// The window classes are registered with a process's first editor; the suite's earlier
// tests have done that, so this runs again in a process of its own (tests/CMakeLists.txt).
TEST_F(EditorWindow, TwoDisplaysOpenTheFirstEditorsOfTheProcessAtTheSameMoment) {
  WNDCLASSEXW registered{};
  registered.cbSize = sizeof registered;
  if (GetClassInfoExW(GetModuleHandleW(L"TqColorSettingTool.dll"), ids::kEditorClass, &registered))
    GTEST_SKIP() << "the editor's classes exist already in this process";
  Display a, b;
  std::atomic<int> ready{0};
  for (Display* d : {&a, &b}) {
    d->enable = false;  // read-only: neither waits for the other's lock
    d->before_show = [&] {
      for (++ready; ready < 2;) Sleep(0);
    };
  }
  Run(a, [&] {
    Run(b, [&] {
      for (const Display* d : {&a, &b}) {
        HWND e = Editor(*d);
        EXPECT_TRUE(e);
        if (e) Click(e, ids::kCancel);
      }
    });
  });
}

TEST_F(EditorWindow, ReadOnlyShowsInTheHostsLanguageAndItsButtonsAreDrawnFlatUntilOpenedEditable) {
  Display d;
  d.language = L"DE";
  d.enable = false;
  d.enable_later = true;
  d.shows = 2;
  std::vector<std::wstring> seen;
  std::vector<COLORREF> frames;
  Run(d, [&] {
    for (int i = 0; i < 2; ++i) {
      HWND e = Editor(d);
      ASSERT_TRUE(e);
      seen.push_back(WindowText(e) + L"|" + std::to_wstring(Enabled(e, ids::kColorButton + 19)) +
                     std::to_wstring(Enabled(e, ids::kOk)) + std::to_wstring(Enabled(e, ids::kSchemeCombo)) +
                     std::to_wstring(Enabled(e, ids::kSaveAsButton)));
      // A read-only colour button looks it (its frame differs) and still shows its colour.
      HWND button = Item(e, ids::kColorButton + 19);
      RECT r;
      GetClientRect(button, &r);
      frames.push_back(Pixel(button, 0, 0));
      frames.push_back(Pixel(button, r.right - 1, r.bottom - 1));
      EXPECT_EQ(RgbText(static_cast<std::int32_t>(Pixel(button, r.right / 2, r.bottom / 2))),
                Text(e, ids::kRgbLabel + 19));
      Click(e, ids::kCancel);
      WaitForShows(d, i + 1);
    }
  });
  EXPECT_EQ(seen, (std::vector<std::wstring>{L"Farbeinstellungen (schreibgesch\u00fctzt)|0010", L"Farbeinstellungen|1111"}));
  ASSERT_EQ(frames.size(), 4u);
  EXPECT_TRUE(frames[0] != frames[2] || frames[1] != frames[3]);
}

TEST_F(EditorWindow, VoltageLevelRowsShowOnlyTheHostsLevels) {
  Display d;
  d.levels = 5;
  d.tab = 1;
  d.category = 7;  // clamped: the last category, Voltage Level
  std::vector<int> shown;
  Play(d, {
      Do([&](HWND e) {
        EXPECT_TRUE(Shown(e, ids::kFrame + 3 * 1 + 2));
        for (int row = 60; row < 80; ++row)
          if (Shown(e, ids::kColorButton + row)) shown.push_back(row);
      }),
      ExpectText(ids::kColorButton + 60, L"Level 1"),
      Press(ids::kCancel),
  });
  EXPECT_EQ(shown, (std::vector<int>{60, 61, 62, 63, 64, 70, 71, 72, 73, 74, 75, 76, 77, 78, 79}));
}

TEST_F(EditorWindow, TabsFollowTheHostsTagAndCtrlTabAndEnterPressTheFocusedButton) {
  // The pipeline's tab by its tag (what a tab number or tag selects is the catalogue's test).
  Display piped;
  piped.pipeline = true;
  piped.tab_name = L"PipelineColorsTab";
  Play(piped, {Do([&](HWND e) {
                 EXPECT_EQ(SendMessageW(Item(e, ids::kTabStrip), TCM_GETITEMCOUNT, 0, 0), 10);
                 EXPECT_EQ(ShownPage(e), 11);
               }),
               Press(ids::kCancel)});
  // Ctrl+Tab and Ctrl+Shift+Tab as typed: from the State page the next step is the last tab.
  // Enter on a focused button presses that button: a colour's opens its colour dialog,
  // Cancel's cancels the pick; neither presses OK.
  Display d;
  std::vector<int> pages;
  int row = -1;
  auto tab_to = [&](HWND e, auto is_target) {
    for (int i = 0; i < 20 && !is_target(GetDlgCtrlID(Focus(d))); ++i) Type(e, {VK_TAB});
    return GetDlgCtrlID(Focus(d));
  };
  Play(d, {
      Do([&](HWND e) {
        for (bool shift : {false, false, false, true}) {
          const int before = ShownPage(e);
          Type(e, shift ? std::vector<WORD>{VK_CONTROL, VK_SHIFT, VK_TAB} : std::vector<WORD>{VK_CONTROL, VK_TAB});
          for (int i = 0; i < 100 && ShownPage(e) == before; ++i) Sleep(20);  // a loaded machine is slow to switch
          pages.push_back(ShownPage(e));
        }
        row = tab_to(e, [](int id) { return id >= ids::kColorButton && id < ids::kRgbLabel; }) - ids::kColorButton;
        Type(e, {VK_RETURN});
      }),
      Pick(-1, RGB(1, 2, 3)),
      Do([&](HWND e) {
        EXPECT_EQ(Text(e, ids::kRgbLabel + row), L"(1, 2, 3)");
        ASSERT_EQ(tab_to(e, [](int id) { return id == ids::kCancel; }), ids::kCancel);
        Type(e, {VK_RETURN});
      }),
  });
  EXPECT_EQ(pages, (std::vector<int>{1, 10, 7, 5}));
  EXPECT_EQ(d.results, std::vector<bool>{false});
}

TEST_F(EditorWindow, ATableWithUnreadableLinesAndAStaleOwnerStillOpenTheEditor) {
  std::string twenty;
  for (const std::string& line : SplitClutLines(SourceFile("data/QLT830_colors.clut"), 20).lines) twenty += line + "\r\n";
  for (bool stale_owner : {false, true}) {
    SCOPED_TRACE(stale_owner);
    Display d;
    d.stale_owner = stale_owner;
    d.before_show = [&] { Write(Table(), stale_owner ? SourceFile("data/QLT830_colors.clut") : twenty); };
    Play(d, {
        Do([&](HWND e) { EXPECT_EQ(GetWindow(e, GW_OWNER) != nullptr, !stale_owner); }),
        ExpectText(ids::kRgbLabel + 0, stale_owner ? L"(255, 255, 255)" : Str(1303)),
        Tab(3),  // Miscellaneous: index 19, within the twenty lines
        ExpectText(ids::kRgbLabel + 81, L"(0, 0, 153)"),
        Press(ids::kCancel),
    });
    EXPECT_EQ(d.results, std::vector<bool>{false});
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
    // A finding marker's text is its tooltip's, not shown in it.
    const bool marker = GetDlgCtrlID(child) >= ids::kFindingMarker && GetDlgCtrlID(child) < ids::kFindingMarker + 290;
    const std::wstring text = marker ? std::wstring() : WindowText(child);
    if (!text.empty() && (HasClass(child, L"Static") || HasClass(child, L"Button")) &&
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
    if (GetWindow(child, GW_CHILD) && !HasClass(child, L"ComboBox"))
      for (const std::string& inner : LayoutProblems(child)) problems.push_back(name + "/" + inner);
  }
  return problems;
}

// Run at 96 DPI with the other tests, and again at 144 DPI by its own CTest entry.
TEST_F(EditorWindow, LayoutOfEveryPageFitsWithoutClippingOrOverlap) {
  using DpiOf = UINT(WINAPI*)(HWND);
  using SetThreadDpi = HANDLE(WINAPI*)(HANDLE);
  HMODULE user32 = GetModuleHandleW(L"user32.dll");
  const auto dpi_of = reinterpret_cast<DpiOf>(reinterpret_cast<void*>(GetProcAddress(user32, "GetDpiForWindow")));
  const auto set_thread_dpi =
      reinterpret_cast<SetThreadDpi>(reinterpret_cast<void*>(GetProcAddress(user32, "SetThreadDpiAwarenessContext")));
  ASSERT_TRUE(dpi_of && set_thread_dpi);
  for (const wchar_t* language : {L"EN", L"DE"}) {
    Display d;
    d.language = language;
    d.pipeline = true;
    d.levels = 12;
    // The second opening on a DPI-unaware thread, whose windows have 96 DPI.
    d.shows = 2;
    d.between_shows = [&] { set_thread_dpi(reinterpret_cast<HANDLE>(-1) /* DPI_AWARENESS_CONTEXT_UNAWARE */); };
    std::vector<std::string> problems;
    UINT dpi_again = 0;
    Run(d, [&] {
      HWND e = Editor(d);
      ASSERT_TRUE(e);
      // The focus starts on the tab strip (on the category list its text would show selected).
      if (Focus(d) != Item(e, ids::kTabStrip)) problems.push_back("the focus is not on the tab strip");
      // The whole editor, OK and Cancel included, is on the screen.
      RECT window, work;
      GetWindowRect(e, &window);
      SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
      if (window.bottom > work.bottom || window.right > work.right) problems.push_back("larger than the screen");
      // Below the tabs or beside them, the buttons end where Cancel ends, and have widths
      // of their own, not the scheme list's.
      auto rect = [&](int id) {
        RECT r;
        GetWindowRect(Item(e, id), &r);
        return r;
      };
      if (rect(ids::kDeleteButton).right != rect(ids::kCancel).right) problems.push_back("Delete does not end with Cancel");
      const RECT ok = rect(ids::kOk), list = rect(ids::kSchemeCombo);
      if (ok.right - ok.left >= list.right - list.left) problems.push_back("OK is as wide as the scheme list");
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
      // The check window beside it, with its list, vision and preview; the find box and
      // the Enter Value dialog over it. Each is opened by posted messages or keys and
      // waited for with a timeout: a modal loop must not hold this thread.
      auto opened = [&](const std::string& name, const std::function<bool(HWND)>& match) {
        HWND w = WaitForWindow(match, d.thread);
        if (!w) {
          problems.push_back("no " + name);
          return;
        }
        Idle(w);
        for (const std::string& p : LayoutProblems(w)) problems.push_back(name + ": " + p);
        RECT r;
        GetWindowRect(w, &r);
        if (r.bottom > work.bottom || r.right > work.right) problems.push_back(name + " larger than the screen");
        PostMessageW(w, WM_CLOSE, 0, 0);  // the close box: Cancel for the dialogs
        for (int i = 0; i < 250 && IsWindow(w); ++i) Sleep(20);
      };
      auto with_item = [](int id) { return [id](HWND w) { return GetDlgItem(w, id) != nullptr; }; };
      PostMessageW(e, WM_COMMAND, ids::kCheckColorsItem, 0);
      opened("check", [](HWND w) { return HasClass(w, ids::kCheckClass); });
      Type(e, {VK_CONTROL, 'F'});
      opened("find", with_item(ids::kFindEdit));
      // Enter Value by its access key in this language.
      ClickTab(e, 0);
      HWND button = Item(e, ids::kColorButton);
      PostMessageW(button, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(button), MAKELPARAM(-1, -1));
      if (HWND menu = WaitForWindow([](HWND w) { return HasClass(w, L"#32768"); }, d.thread)) {
        wchar_t item[64] = L"";
        GetMenuStringW(reinterpret_cast<HMENU>(SendMessageW(menu, MN_GETHMENU, 0, 0)), ids::kEnterValueItem, item, 64,
                       MF_BYCOMMAND);
        const wchar_t* key = wcschr(item, L'&');
        Type(menu, {static_cast<WORD>(towupper(key ? key[1] : L'?'))});
        opened("value", with_item(ids::kValueEdit));
      } else {
        problems.push_back("no context menu");
      }
      Click(e, ids::kCancel);
      WaitForShows(d, 1);
      // The window kept hidden is not taken up at another DPI (at 144 DPI this one differs).
      HWND again = Editor(d);
      ASSERT_TRUE(again);
      dpi_again = dpi_of(again);
      Click(again, ids::kCancel);
    });
    EXPECT_TRUE(problems.empty()) << problems.size() << " problems, first: " << problems.front();
    EXPECT_EQ(dpi_again, 96u);
  }
}

// A per-monitor aware host's editor moved to a monitor of 144 DPI with its check window
// open; then the Tagout category, whose heading is bold, and the remade controls' tooltips.
TEST_F(EditorWindow, AnotherMonitorsDpiRemakesTheControlsWhereTheSystemSuggests) {
  Display d;
  std::vector<std::string> problems;
  std::wstring index_tip, file_tip;
  LONG weight = 0;
  Play(d, {
      Pick(6, RGB(1, 2, 3)),
      Do([&](HWND e) {
        PostMessageW(e, WM_COMMAND, ids::kCheckColorsItem, 0);
        HWND checks = WaitForWindow([](HWND w) { return HasClass(w, ids::kCheckClass); }, d.thread);
        ASSERT_TRUE(checks);
        RECT before, after, window, suggested{40, 30, 0, 0};
        GetWindowRect(Item(e, ids::kTabStrip), &before);
        SendMessageW(e, WM_DPICHANGED, MAKEWPARAM(144, 144), reinterpret_cast<LPARAM>(&suggested));
        // The check window's controls take the editor's new fonts (the old ones are gone).
        EXPECT_EQ(SendMessageW(Item(checks, ids::kFindingsList), WM_GETFONT, 0, 0),
                  SendMessageW(Item(e, ids::kOk), WM_GETFONT, 0, 0));
        EXPECT_NE(Text(checks, ids::kChecksSummary), L"");
        problems = LayoutProblems(checks);
        RECT moved{50, 60, 0, 0};  // its own message: it goes where the system suggests
        SendMessageW(checks, WM_DPICHANGED, MAKEWPARAM(144, 144), reinterpret_cast<LPARAM>(&moved));
        GetWindowRect(checks, &moved);
        EXPECT_EQ(moved.left * 1000 + moved.top, 50060);
        PostMessageW(checks, WM_CLOSE, 0, 0);
        GetWindowRect(Item(e, ids::kTabStrip), &after);
        GetWindowRect(e, &window);
        EXPECT_EQ(window.left * 1000 + window.top, 40030);
        EXPECT_NEAR(double(after.right - after.left) / (before.right - before.left), 1.5, 0.15);
        EXPECT_EQ(ShownPage(e), 0);
        EXPECT_TRUE(Item(e, ids::kFindingMarker + 19));
        for (const std::string& p : LayoutProblems(e)) problems.push_back(p);
      }),
      ExpectText(ids::kRgbLabel + 6, L"(1, 2, 3)"),
      ExpectText(ids::kSchemeCombo, L"QLT830_colors.clut"),
      Pick(6, RGB(4, 5, 6), L"(1, 2, 3)"),
      ExpectText(ids::kRgbLabel + 6, L"(4, 5, 6)"),
      Choose(ids::kCategoryCombo, 1),
      ExpectText(ids::kColorButton + 100, L"Highest Severity (Emergency)"),
      Do([&](HWND e) {
        LOGFONTW font{};
        GetObjectW(reinterpret_cast<HFONT>(SendMessageW(Item(e, ids::kTagoutHeading), WM_GETFONT, 0, 0)), sizeof font,
                   &font);
        weight = font.lfWeight;
        index_tip = Tip(d, e, Item(e, ids::kNameLabel + 100));
        file_tip = Tip(d, e, Item(e, ids::kFrame + 1));
      }),
      Press(ids::kCancel),
  });
  EXPECT_TRUE(problems.empty()) << problems.size() << " problems, first: " << problems.front();
  EXPECT_EQ(weight, FW_BOLD);
  EXPECT_EQ(index_tip, L"Color index: 110");
  EXPECT_EQ(file_tip, W(Table()));
}

}  // namespace
