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
#include "support/localization.h"

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

// The person at the screen: notes what the editor shows, may act, leaves with OK or Cancel.
struct ScriptedEditor : EditorView {
  struct Seen {
    std::string caption, clut_file;
    int tab;
    bool enable_changes, lock_created;
    EnableDecision enablement;
  };
  std::vector<Seen> shown;
  std::function<void(frmTqColorSetting&)> act;
  bool ok = false;
  void Load(frmTqColorSetting&) override {}
  void Unload() override {}
  void ShowModal(frmTqColorSetting& s) override {
    shown.push_back({s.Caption(), s.ClutFileName(), s.TabNumber(), s.EnableChanges(), s.LockFileCreated, s.Enablement()});
    if (act) act(s);
    if (ok) s.DlgReturnValue(true);
  }
};

class Session : public ::testing::Test {
 protected:
  void SetUp() override {
    ResetColorSchemeModule();
    p.dvhome = home.path().substr(0, home.path().size() - 1);
    ASSERT_TRUE(p.CreateFolder(home / "etc"));
    for (std::string name : {"QLT830_colors.clut", "QLT830_colors$clut"}) {
      std::string bytes;
      ASSERT_TRUE(p.ReadFile(std::string(TQ_SOURCE_DIR) + "/data/" + name, bytes));
      ASSERT_TRUE(p.WriteNewFile(home / "etc\\" + name, bytes));
    }
    p.host = [this](int kind, const std::string& text) { return kind != kHostCreateFolder || p.CreateFolder(text); };
  }
  void TearDown() override {
    frmTqColorSetting::DiscardThisThread();
    LoadLanguageLibrary(test::RealPlatform(), "EN");  // English again for the next test
  }
  void Set(ControlInstanceState& c, const std::string& key, SessionValue value) {
    SessionError error;
    frmTqColorSetting::ThisThread(p).SetObjectValue(c, key, value, error);
    EXPECT_FALSE(error) << key;
  }
  // The host's start-up: its context, then "Initialize".
  frmTqColorSetting& Initialize(ControlInstanceState& c) {
    for (auto [key, value] : {std::pair{"AppFolder", app.path()}, {"UserFolder", user.path()}, {"Language", "EN"},
                              {"UserName", "op1"}, {"HostApplication", "Display"}, {"Initialize", "ColorScheme"}})
      Set(c, key, value);
    Set(c, "AuthorizationLevel", std::int16_t{2});
    frmTqColorSetting& s = frmTqColorSetting::ThisThread(p);
    s.InstallView(&editor);
    return s;
  }
  bool Show(ControlInstanceState& c, bool enable, const std::string& file = "") {
    SessionError error;
    const bool result = frmTqColorSetting::ThisThread(p).Show(c, file, 0, 0, enable, error);
    EXPECT_FALSE(error);
    return result;
  }
  std::string Scheme(const std::string& name) { return p.AbsolutePath(app / "ColorSchemes\\" + name); }

  Machine p;
  test::ScratchFolder home, app, user;
  ScriptedEditor editor;
};

TEST_F(Session, StartsWithItsDefaultsAndAppliesEachSetterRule) {
  frmTqColorSetting s(p);
  ControlInstanceState c;
  const std::string factory = p.AbsolutePath(home / "etc\\QLT830_colors.clut");
  ASSERT_TRUE(p.CreateFolder(home / "sub"));
  const std::string roundabout = home / "sub\\..\\etc\\QLT830_colors.clut";
  EXPECT_FALSE(s.DlgReturnValue());  // a type mismatch for the host
  EXPECT_FALSE(s.CheckCanContinueCST(false));
  SessionError error;
  auto set = [&](const std::string& key, SessionValue v) { return [&s, &c, &error, key, v] { s.SetObjectValue(c, key, v, error); }; };
  auto get = [&](const std::string& key) { return [&s, &error, key] { return s.GetObjectValue(key, 0, error); }; };
  auto text = [](auto read) { return [read] { return SessionValue(read()); }; };

  const struct {
    const char* what;
    std::function<void()> act;
    std::function<SessionValue()> read;
    SessionValue expected;
  } rows[] = {
      {"default table", [] {}, get("ClutFile"), factory},
      {"host application without a language", set("HostApplication", "Display"), text([&] { return s.HostApplication(); }), " / Display"},
      {"language loads the title", set("Language", "EN"), text([&] { return s.HostApplication(); }), " / Display"},
      {"host application with it", set("HostApplication", "Display"), text([&] { return s.HostApplication(); }), "Color Setting Tool / Display"},
      {"read-only title", [&] { s.EnableChanges(false); }, text([&] { return s.Caption(); }), "Color Setting Tool (Read-Only)"},
      {"table by absolute path", [&] { s.ClutFileName(roundabout); }, get("ClutFile"), factory},
      {"missing table as given", [&] { s.ClutFileName("nowhere.clut"); }, get("ClutFile"), "nowhere.clut"},
      {"empty table is the default", [&] { s.ClutFileName(""); }, get("ClutFile"), factory},
      {"INI file by absolute path", [&] { s.IniFileName(roundabout); }, text([&] { return s.IniFileName(); }), factory},
      {"missing INI file is empty", [&] { s.IniFileName("nowhere.ini"); }, text([&] { return s.IniFileName(); }), ""},
      {"AuthorizationLevel sets the tools level", set("AuthorizationLevel", std::int16_t{2}), get("AuthorizationLevel"), std::int16_t{2}},
      {"and leaves the general one", [] {}, get("AuthorizationLevelGeneral"), std::int16_t{-1}},
      {"Initialize only in its exact letters", set("Initialize", "colorscheme"),
       text([&] { return c.ColorSchemeInitialized || s.CheckCanContinueCST(false); }), false},
      {"unknown keys", set("NoSuchKey", "x"), get("NoSuchKey"), {}},
  };
  for (const auto& row : rows) {
    row.act();
    EXPECT_EQ(row.read(), row.expected) << row.what;
    EXPECT_FALSE(error) << row.what;
  }
  s.SetObjectValue(c, "ApplicationNumber", std::string("seven"), error);
  EXPECT_EQ(error.kind, SessionError::Kind::TypeMismatch);
  EXPECT_TRUE(p.prompts.empty());

  p.dvhome.clear();  // no toolkit: told at creation and again for the default table
  p.answers = {kIdOk, kIdOk};
  frmTqColorSetting bare(p);
  EXPECT_EQ(bare.ClutFileName(), "");
  EXPECT_TRUE(bare.ClutError());
  ASSERT_EQ(p.prompts.size(), 2u);
  EXPECT_EQ(p.prompts[1].text, "Registry value DVHOME not found");
}

TEST_F(Session, ShowBeforeInitializeTellsTheUserAndOpensNothing) {
  ControlInstanceState c;
  frmTqColorSetting::ThisThread(p).InstallView(&editor);
  p.answers = {kIdOk};
  EXPECT_FALSE(Show(c, true));
  ASSERT_EQ(p.prompts.size(), 1u);
  EXPECT_EQ(p.prompts[0].text + "|" + p.prompts[0].title, "Application folder is not initialized. Quitting...|Color Setting Tool");
  EXPECT_EQ(p.prompts[0].style, kMbIconCritical);
  EXPECT_TRUE(editor.shown.empty());
}

TEST_F(Session, ControlsOfOneThreadShareTheSessionAndOnlyAnUninitialisedOneNamesTheFile) {
  ControlInstanceState first, second;
  frmTqColorSetting& s = Initialize(first);
  EXPECT_FALSE(second.ColorSchemeInitialized);
  EXPECT_EQ(s.ClutFileName(), Scheme("QLT830_colors.clut"));  // synchronised from the toolkit
  const std::string night = Scheme("QLT830_night.clut");
  ASSERT_TRUE(p.CopyFileTo(s.ClutFileName(), night, false));
  EXPECT_FALSE(Show(first, true, night));  // the window cancels
  EXPECT_FALSE(Show(second, true, night));
  ASSERT_EQ(editor.shown.size(), 2u);
  EXPECT_EQ(editor.shown[0].clut_file, Scheme("QLT830_colors.clut"));
  EXPECT_EQ(editor.shown[1].clut_file, night);
}

TEST(EnableChanges, DecidesFromTheHostTheLevelAndTheRestoreCopy) {
  const struct {
    bool enable;
    std::int16_t level;
    bool restore_copy, disable_ok, ok_before;
    EnableDecision expected;  // title, ok, import/export, restore, colours, save, delete, scheme list
  } rows[] = {
      {true, 2, false, true, true, {1301, true, true, false, true, true, true, true}},
      {true, 2, true, true, false, {1301, true, true, true, true, true, false, true}},
      {false, 2, true, true, true, {1302, false, false, false, false, false, false, true}},
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
  EXPECT_FALSE(Show(c, true));  // nobody else: locked while up, released after
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
  EXPECT_FALSE(Show(c, true));  // Yes: read-only
  EXPECT_FALSE(Show(c, true));  // No: not opened
  EXPECT_TRUE(s.ClutError());
  ASSERT_EQ(editor.shown.size(), 2u);
  const auto& mine = editor.shown[0];
  const auto& read_only = editor.shown[1];
  EXPECT_TRUE(mine.lock_created && mine.enable_changes && mine.enablement.restore_defaults);
  EXPECT_EQ(mine.caption, "Color Setting Tool");
  EXPECT_FALSE(mine.enablement.delete_scheme);  // a factory table with its restore copy
  EXPECT_EQ(read_only.caption, "Color Setting Tool (Read-Only)");
  EXPECT_FALSE(read_only.lock_created || read_only.enable_changes || read_only.enablement.colour_buttons);
  ASSERT_TRUE(p.ReadFile(lock, after));
  EXPECT_EQ(after, held);
}

TEST_F(Session, OkRecordsTheChosenTableAndSendsTheColoursAndShow2FindsTheTabByTag) {
  ControlInstanceState c;
  frmTqColorSetting& s = Initialize(c);
  const std::string night = Scheme("QLT830_night.clut");
  ASSERT_TRUE(p.CopyFileTo(s.ClutFileName(), night, false));
  editor.act = [&](frmTqColorSetting& session) { session.ClutFileName(night); };  // a scheme switch
  editor.ok = true;
  p.host_calls.clear();
  SessionError error;
  EXPECT_TRUE(s.Show2(c, "", "StateColorsTab", 0, true, error));
  EXPECT_EQ(editor.shown.back().tab, 10);  // the page of strip position 2
  EXPECT_TRUE(std::any_of(p.host_calls.begin(), p.host_calls.end(),
                          [](const auto& call) { return call.second.rfind("#return LIST(AL1=LIST(BG=", 0) == 0; }));
#ifdef _WIN32
  EXPECT_EQ(p.IniRead("COLORSCHEMES", "ClutFile", app / "FrameWindow.ini"), "QLT830_night.clut");
#endif
  EXPECT_TRUE(s.Show2(c, "", "statecolorstab", 0, true, error));
  EXPECT_EQ(editor.shown.back().tab, 0);
  EXPECT_FALSE(error);
}

}  // namespace
}  // namespace tq
