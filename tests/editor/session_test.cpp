// The editor session over a real installation in scratch folders (the toolkit's etc
// folder with our factory table, an application folder, real lock files). The user
// (message boxes, the editor window) and the host are played by the test.
#include "editor/session.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "colortable/clut_locations.h"
#include "common/test_platform.h"
#ifdef _WIN32
#include "common/win_test_support.h"
#endif
#include "locking/lock_file_creator.h"

namespace tq {
namespace {

// The toolkit's registry value (HKLM is not the tests' to write) and, natively where
// there is no profile API, no settings files and a mutex that is never free.
class Machine : public test::TestPlatform {
 public:
  std::string dvhome;
  std::string RegReadString(const std::string&, const std::string&) override { return dvhome; }
#ifndef _WIN32
  std::string IniRead(const std::string&, const std::string&, const std::string& file) override {
    EXPECT_FALSE(FileExists(file)) << file;
    return {};
  }
  bool AcquireIniMutex() override { return false; }
#endif
};

// The person at the screen: notes what the editor shows, and may act (then leave with OK).
struct ScriptedEditor : EditorView {
  struct Seen { std::string caption, clut_file; int tab; bool lock_created; EnableDecision enablement; };
  std::vector<Seen> shown;
  std::function<void(frmTqColorSetting&)> act;
  int closed = 0;
  void Load(frmTqColorSetting&) override {}
  void Unload() override {}
  void Close() override { ++closed; }
  void RowChanged(int) override {}
  void ShowModal(frmTqColorSetting& s) override {
    shown.push_back({s.Caption(), s.ClutFileName(), s.TabNumber(), s.LockFileCreated, s.Enablement()});
    if (act) act(s);
  }
};

class Session : public ::testing::Test {
 protected:
  void SetUp() override {
    ResetColorSchemeModule();
    p.dvhome = home.path().substr(0, home.path().size() - 1);
    ASSERT_TRUE(p.CreateFolder(home / "etc"));
    for (std::string name : {"QLT830_colors.clut", "QLT830_colors$clut"})
      ASSERT_TRUE(p.CopyFileTo(std::string(TQ_SOURCE_DIR) + "/data/" + name, home / "etc\\" + name, false));
    p.host = [this](int kind, const std::string& text) { return kind != kHostCreateFolder || p.CreateFolder(text); };
  }
  void TearDown() override { frmTqColorSetting::DiscardThisThread(); }
  // The host's start-up: its context, then "Initialize".
  frmTqColorSetting& Initialize(ControlInstanceState& c) {
    frmTqColorSetting& s = frmTqColorSetting::ThisThread(p);
    for (auto [key, value] : {std::pair<const char*, SessionValue>{"AppFolder", app.path()}, {"UserFolder", user.path()},
                              {"Language", "EN"}, {"UserName", "op1"}, {"HostApplication", "Display"},
                              {"AuthorizationLevel", std::int16_t{2}}, {"Initialize", "ColorScheme"}})
      s.SetObjectValue(c, key, value, error);
    s.InstallView(&editor);
    return s;
  }
  // Show, or Show2 when a tab is named.
  bool Show(ControlInstanceState& c, const std::string& file = "", const char* tab = nullptr) {
    frmTqColorSetting& s = frmTqColorSetting::ThisThread(p);
    const bool result = tab ? s.Show2(c, file, tab, 0, true, error) : s.Show(c, file, 0, 0, true, error);
    EXPECT_FALSE(error);
    return result;
  }
  std::string Scheme(const std::string& name) { return p.AbsolutePath(app / "ColorSchemes\\" + name); }

  Machine p;
  test::ScratchFolder home, app, user;
  ScriptedEditor editor;
  SessionError error;
};

TEST_F(Session, StartsWithItsDefaultsAppliesEachSetterRuleAndOpensOnlyOnceInitialised) {
  frmTqColorSetting s(p);
  ControlInstanceState c;
  const std::string factory = p.AbsolutePath(home / "etc\\QLT830_colors.clut");
  const std::string roundabout = home / "etc\\..\\etc\\QLT830_colors.clut";
  EXPECT_FALSE(s.DlgReturnValue());  // a type mismatch for the host
  s.SetObjectValue(c, "HostApplication", "Display", error);
  EXPECT_EQ(s.HostApplication(), " / Display");  // no language, no title yet
  s.SetObjectValue(c, "Language", "EN", error);
  EXPECT_EQ(s.HostApplication(), " / Display");
  s.SetObjectValue(c, "HostApplication", "Display", error);
  EXPECT_EQ(s.HostApplication(), "Color Setting Tool / Display");
  s.EnableChanges(false);
  EXPECT_EQ(s.Caption(), "Color Setting Tool (Read-Only)");
  // An existing file by its absolute path; a missing table as given, a missing INI file as none; "": the default table.
  for (auto [given, table, ini] :
       {std::tuple{roundabout, factory, factory}, {"nowhere", "nowhere", ""}, {"", factory, ""}}) {
    s.ClutFileName(given);
    s.IniFileName(given);
    EXPECT_EQ(s.GetObjectValue("ClutFile", 0, error), SessionValue(table)) << given;
    EXPECT_EQ(s.IniFileName(), ini) << given;
  }
  s.SetObjectValue(c, "NoSuchKey", "x", error);
  EXPECT_EQ(s.GetObjectValue("NoSuchKey", 0, error), SessionValue());
  EXPECT_FALSE(error);

  s.SetObjectValue(c, "Initialize", "colorscheme", error);  // only in its exact letters
  s.InstallView(&editor);
  p.answers = {kIdOk};
  EXPECT_FALSE(s.Show(c, "", 0, 0, true, error));
  ASSERT_EQ(p.prompts.size(), 1u);
  EXPECT_EQ(p.prompts[0].text + "|" + p.prompts[0].title,
            "Application folder is not initialized. Quitting...|Color Setting Tool");
  EXPECT_EQ(p.prompts[0].style, kMbIconCritical);
  EXPECT_TRUE(editor.shown.empty());
  s.SetObjectValue(c, "ApplicationNumber", std::string("seven"), error);
  EXPECT_EQ(error.kind, SessionError::Kind::TypeMismatch);

  p.dvhome.clear();  // no toolkit: told at creation and again for the default table
  p.answers = {kIdOk, kIdOk};
  frmTqColorSetting bare(p);
  EXPECT_EQ(bare.ClutFileName(), "");
  EXPECT_TRUE(bare.ClutError());
  ASSERT_EQ(p.prompts.size(), 3u);
  EXPECT_EQ(p.prompts[2].text, "Registry value DVHOME not found");
}

TEST(EnableChanges, DecidesFromTheHostTheLevelAndTheRestoreCopy) {
  // expected: title, ok, import/export, restore, colours, save, delete, scheme list
  const struct {
    bool enable;
    std::int16_t level;
    bool restore_copy, disable_ok, ok_before;
    EnableDecision expected;
  } rows[] = {
      {true, 2, false, true, true, {1301, true, true, false, true, true, true, true}},
      {true, 1, true, true, true, {1302, false, false, false, false, false, false, false}},
      {false, -1, false, false, true, {1302, true, false, false, false, false, false, false}},
      {true, 1, false, false, false, {1302, false, false, false, false, false, false, false}},
  };
  for (const auto& r : rows)
    EXPECT_TRUE(DecideEnableChanges(r.enable, r.level, r.restore_copy, r.disable_ok, r.ok_before) == r.expected)
        << r.enable << " level " << r.level << " restore " << r.restore_copy;
}

TEST_F(Session, ALockHeldElsewhereOffersReadOnlyOrKeepsTheEditorClosed) {
  ControlInstanceState c;
  frmTqColorSetting& s = Initialize(c);
  const std::string lock = s.ClutFileName() + ".lock";
  EXPECT_FALSE(Show(c));  // nobody else: locked while up, released after
  EXPECT_FALSE(p.FileExists(lock));

  // Another editor holds the file: a second process under Windows, as in the field.
#ifdef _WIN32
  test::HelperProcess other("hold-lock", {s.ClutFileName(), "Other", "op2", "60000"});
  ASSERT_TRUE(other.ready());
#else
  clsLockFileCreator other(p);
  std::string app = "Other", user = "op2";
  ASSERT_EQ(other.CreateLockFile(s.ClutFileName(), app, user, LockMode::Open, true), LockResult::Locked);
#endif
  std::string held, after;
  ASSERT_TRUE(p.ReadFile(lock, held));
  p.answers = {kIdYes, kIdNo};
  EXPECT_FALSE(Show(c));  // Yes: read-only
  EXPECT_FALSE(Show(c));  // No: not opened
  EXPECT_TRUE(s.ClutError());
  ASSERT_EQ(editor.shown.size(), 2u);
  const auto &mine = editor.shown[0], &read_only = editor.shown[1];
  EXPECT_EQ(mine.caption + "|" + read_only.caption, "Color Setting Tool|Color Setting Tool (Read-Only)");
  EXPECT_TRUE(mine.lock_created && !read_only.lock_created);
  // A factory table (it has a restore copy) cannot be deleted; read-only, the scheme list stays open.
  EXPECT_TRUE(mine.enablement == (EnableDecision{1301, true, true, true, true, true, false, true}));
  EXPECT_TRUE(read_only.enablement == (EnableDecision{1302, false, false, false, false, false, false, true}));
  ASSERT_TRUE(p.ReadFile(lock, after));
  EXPECT_EQ(after, held);
}

TEST_F(Session, OkRecordsTheChosenTableAndSendsTheColoursAndOnlyAnUninitialisedControlNamesTheFile) {
  ControlInstanceState c, uninitialised;
  frmTqColorSetting& s = Initialize(c);
  const std::string colors = s.ClutFileName(), night = Scheme("QLT830_night.clut");
  EXPECT_EQ(colors, Scheme("QLT830_colors.clut"));  // synchronised from the toolkit
  // "AuthorizationLevel" is the tools level
  EXPECT_EQ(s.GetObjectValue("AuthorizationLevelGeneral", 0, error), SessionValue(std::int16_t{-1}));
  ASSERT_TRUE(p.CopyFileTo(colors, night, false));
  editor.act = [&](frmTqColorSetting& session) {  // a scheme switch, then OK
    session.ClutFileName(night);
    session.DlgReturnValue(true);
  };
  EXPECT_TRUE(Show(c, "", "StateColorsTab"));
  EXPECT_EQ(editor.shown.back().tab, 10);  // the page of strip position 2
  EXPECT_TRUE(std::any_of(p.host_calls.begin(), p.host_calls.end(),
                          [](const auto& call) { return call.second.rfind("#return LIST(AL1=LIST(BG=", 0) == 0; }));
#ifdef _WIN32
  EXPECT_EQ(p.IniRead("COLORSCHEMES", "ClutFile", app / "FrameWindow.ini"), "QLT830_night.clut");
#endif
  editor.act = nullptr;  // the window cancels from here on
  EXPECT_FALSE(Show(c, colors));  // the control keeps the table of its session
  EXPECT_FALSE(Show(uninitialised, colors, "statecolorstab"));
  ASSERT_EQ(editor.shown.size(), 3u);
  EXPECT_EQ(editor.shown[1].clut_file, night);
  EXPECT_EQ(editor.shown[2].clut_file, colors);
  EXPECT_EQ(editor.shown[2].tab, 0);  // tab names are matched in their exact letters
}

TEST_F(Session, PicksOkAndCancelFollowTheRulesAndAFailedSaveKeepsTheEditorOpen) {
  ControlInstanceState c;
  frmTqColorSetting& s = Initialize(c);
  const std::string colors = s.ClutFileName(), night = Scheme("QLT830_night.clut");
  ASSERT_TRUE(p.CopyFileTo(colors, night, false));
  std::string before, after;
  ASSERT_TRUE(p.ReadFile(colors, before));
  constexpr int kRow = 6;  // index 35, "Faulty or Invalid Value"
  struct Case {
    const char* what;
    std::function<void(frmTqColorSetting&)> act;
    bool result;
    int closed;
    bool written;
  } cases[] = {
      {"OK, nothing changed, after a Show from inside the open editor",
       [&](frmTqColorSetting& f) {
         EXPECT_FALSE(f.Show(c, "", 0, 0, true, error));
         EXPECT_EQ(editor.shown.size(), 1u);
         EXPECT_TRUE(f.IsLoaded());
         f.cmdOK_Click();
       },
       false, 1, false},
      {"a cancelled pick, then the close box",
       [&](frmTqColorSetting& f) {
         f.ColorPicked(kRow, std::nullopt);
         EXPECT_FALSE(f.ColorsChanged);
         f.QueryUnload(1);  // closed by the program: not the user's Cancel
         f.QueryUnload(kUnloadFromControlMenu);
       },
       false, 1, false},
      {"a scheme switch, then Cancel",
       [&](frmTqColorSetting& f) {
         f.ClutFileName(night);
         f.ColorThemeChanged = true;
         f.cmdCancel_Click();
         EXPECT_EQ(f.ClutFileName(), colors);
       },
       false, 1, false},
      {"a save that fails, then OK again",
       [&](frmTqColorSetting& f) {
         f.ColorPicked(kRow, 0x00FF8000);
         EXPECT_EQ(f.GetRowColor(kRow), 0x00FF8000);
         p.SetFaultHook([](std::string_view op, const std::string&) -> std::optional<IoStatus> {
           if (op == "MoveReplace") return IoStatus::Fail(5, "Access is denied.");
           return std::nullopt;
         });
         p.answers = {kIdOk};
         f.cmdOK_Click();
         EXPECT_FALSE(f.ClutError());
         EXPECT_EQ(editor.closed, 0);  // the colours are still on screen
         p.SetFaultHook(nullptr);
         f.cmdOK_Click();
       },
       true, 1, true},
  };
  for (Case& test : cases) {
    SCOPED_TRACE(test.what);
    editor.closed = 0;
    editor.act = test.act;
    EXPECT_EQ(Show(c), test.result);
    EXPECT_EQ(editor.closed, test.closed);
    ASSERT_TRUE(p.ReadFile(colors, after));
    EXPECT_EQ(after != before, test.written);
  }
  EXPECT_EQ(SplitClutLines(after).lines[35].substr(0, 13), "  0  128  255");
  // The error states show the button face, which the colour dialog starts from.
  s.ShowColorRow(kRow, 0, 35, kRowUnreadable);
  EXPECT_EQ(s.GetRowColor(kRow), kSystemButtonFace);
  s.ShowColorRow(kRow, 0x123456, 35, 7);  // an unknown state changes nothing
  EXPECT_EQ(s.GetRowColor(kRow), kSystemButtonFace);
}

}  // namespace
}  // namespace tq
