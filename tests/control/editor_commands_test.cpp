// The editor's commands wired to their controls: the scheme list, Save As and Delete,
// the More menu with export, import and Restore Defaults through the standard file
// dialogs, and the host's own file dialog. What the commands
// decide is the session's tests' subject; here each opens, reaches the session and
// shows its result.
#include "control/scenario.h"

namespace {

using namespace editor_test;
using EditorCommands = EditorWindow;

TEST_F(EditorCommands, SchemesSwitchSaveAsAndDeleteThroughTheirControlsAndDialogs) {
  Display d;
  d.before_show = [&] { CopyFileW(W(Table()).c_str(), W(Scheme("Day.clut")).c_str(), TRUE); };
  Play(d, {
      ExpectText(ids::kSchemeCombo, L"QLT830_colors.clut"),
      // Unsaved colours, then another scheme: asked, Yes writes them into the one left.
      Pick(6, RGB(1, 2, 3)),
      Choose(ids::kSchemeCombo, 0),
      Answer(Str(1318) + L"QLT830_colors.clut " + Str(1319), IDYES),
      ExpectText(ids::kSchemeCombo, L"Day.clut"),
      ExpectColour(Table(), 35, 0x030201),
      // Save As: centred over the editor, proposing the current name; a refused name
      // leaves it open; then Night.
      Press(ids::kSaveAsButton),
      Answer(Str(1401), 0),
      Do([&](HWND e) {
        HWND dialog = Front(d.thread);
        EXPECT_EQ(ItemText(dialog, ids::kSchemeNameLabel), Str(1402));
        RECT a, b;
        GetWindowRect(dialog, &a);
        GetWindowRect(e, &b);
        EXPECT_NEAR(a.left + a.right, b.left + b.right, 4);
        EXPECT_NEAR(a.top + a.bottom, b.top + b.bottom, 4);
      }),
      ExpectText(ids::kSchemeNameEdit, L"Day.clut"),
      Name("..\\Night"),
      Answer(L"\"..\\Night\" " + Str(1452), IDOK),
      Name("Night"),
      ExpectText(ids::kSchemeCombo, L"Night.clut"),
      // Delete: the item moving into its place is the factory table, which cannot go.
      Press(ids::kDeleteButton),
      Answer(Str(1321) + L"Night.clut" + Str(1322), IDYES),
      ExpectText(ids::kSchemeCombo, L"QLT830_colors.clut"),
      Do([](HWND e) { EXPECT_FALSE(Enabled(e, ids::kDeleteButton)); }),
      Press(ids::kOk),
  });
  EXPECT_EQ(d.results, std::vector<bool>{true});
  EXPECT_FALSE(std::filesystem::exists(W(Scheme("Night.clut"))));
  EXPECT_TRUE(d.Called(L"HostRemoveFile|" + W(Scheme("Night.clut"))));
  EXPECT_TRUE(d.Called(L"HostFileNotice|Night.clut"));
}

TEST_F(EditorCommands, MoreOpensUnderItsButtonAndExportImportAndRestoreDefaultsWork) {
  ScratchFolder folder;
  const std::string ini = folder / "colors.ini";
  const std::int32_t reference35 = ParseClutLine(SplitClutLines(Read(etc_ + "QLT830_colors$clut")).lines[35]);
  const std::int32_t factory35 = ParseClutLine(SplitClutLines(Read(etc_ + "QLT830_colors.clut")).lines[35]);
  Display d;
  Play(d, {
      Do([&](HWND e) {
        PostMessageW(Item(e, ids::kMoreButton), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(4, 4));
        HWND menu = WaitForWindow([](HWND w) { return HasClass(w, L"#32768"); }, d.thread);
        ASSERT_TRUE(menu);
        RECT m, more;
        GetWindowRect(menu, &m);
        GetWindowRect(Item(e, ids::kMoreButton), &more);
        EXPECT_EQ(m.left, more.left);
        if (more.bottom - 2 + (m.bottom - m.top) <= GetSystemMetrics(SM_CYSCREEN)) {
          EXPECT_EQ(m.top, more.bottom - 2);  // else the system opens it upwards
        }
        EXPECT_EQ(MenuItems(menu), (std::vector<std::wstring>{L"&" + Str(1205), L"&" + Str(1206), L"&" + Str(1207),
                                                              L"&" + Str(1600)}));
        Type(e, {VK_ESCAPE});
        // Gone before the next click: a click that reaches the closing menu's loop ends
        // there, and the menu it was to open never does.
        for (int i = 0; i < 250 && IsWindowVisible(menu); ++i) Sleep(20);
      }),
      Menu('E'),
      Answer(Str(1330), IDCANCEL),
      Menu('E'),
      Name(ini),
      ExpectLine(ini, "Index_35="),
      Pick(6, RGB(1, 2, 3)),
      ExpectText(ids::kRgbLabel + 6, L"(1, 2, 3)"),
      Menu('I'),
      Answer(Str(1329), 0),
      Name(ini),
      ExpectText(ids::kRgbLabel + 6, RgbText(factory35)),
      Pick(6, RGB(1, 2, 3), RgbText(factory35)),  // the dialog starts from the row's colour
      Menu('R'),
      Answer(Str(1317), IDYES),
      ExpectText(ids::kRgbLabel + 6, RgbText(reference35)),
      Press(ids::kOk),
  });
  EXPECT_EQ(d.results, std::vector<bool>{true});
  EXPECT_TRUE(d.Called(L"HostFileNotice|" + W(ini)));
  EXPECT_EQ(ParseClutLine(SplitClutLines(Read(Table())).lines[35]), reference35);  // restored, saved by OK
}

TEST_F(EditorCommands, TheHostsOwnFileDialogTakesOverImportThroughTheControlsEvent) {
  ScratchFolder folder;
  const std::string ini = folder / "hand.ini";
  WritePrivateProfileStringW(L"Logical Colors", L"Index_35", L"10 20 30", W(ini).c_str());
  test::BrowseSink host;
  host.file = W(ini);
  Display d;
  d.with_control = [&](IDispatch* control) { host.Connect(control); };
  Play(d, {
      Pick(6, RGB(1, 2, 3)),
      Do([&](HWND) { host.cancel = true; }),
      Menu('I'),
      ExpectText(ids::kRgbLabel + 6, L"(1, 2, 3)"),
      Do([&](HWND) { host.cancel = false; }),
      Menu('I'),
      ExpectText(ids::kRgbLabel + 6, L"(10, 20, 30)"),
      Press(ids::kCancel),
  });
  ASSERT_EQ(host.args.size(), 2u);
  EXPECT_EQ(host.args[0], L"3|" + Str(1329) + L"|Ini Files (*.ini)|*.ini|All Files (*.*)|*.*||C:\\");
  EXPECT_NE(host.parents[0], 0);
}

}  // namespace
