// The editor session over a real installation in scratch folders (the toolkit's etc
// folder with our factory table, an application folder, real lock files). The user
// (message boxes, the editor window) and the host are played by the test.
#include "editor/session.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <list>

#include "colortable/clut_locations.h"
#include "common/test_platform.h"
#include "locking/lock_file_creator.h"
#include "support/localization.h"
#include "support/thread_context.h"
#include "support/utils.h"

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
  // Save As: the names typed one after the other into the dialog, which stays open
  // while its OK refuses them; when they run out, Cancel.
  std::vector<std::string> typed;
  SaveSchemeRequest asked;
  // The file dialogs' choice ("" cancels).
  std::string file;
  std::string AskSchemeName(const SaveSchemeRequest& request) override {
    asked = request;
    std::vector<std::string> names;
    names.swap(typed);
    for (const std::string& name : names)
      if (auto accepted = request.accept(name)) return *accepted;
    return {};
  }
  std::string AskFile(FileDialogKind, const std::string&, const std::string&, const std::string&,
                      std::string&) override {
    return file;
  }
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
    p.dvhome = home.path().substr(0, home.path().size() - 1);
    ASSERT_TRUE(p.CreateFolder(home / "etc"));
    for (std::string name : {"QLT830_colors.clut", "QLT830_colors$clut"})
      ASSERT_TRUE(p.CopyFileTo(std::string(TQ_SOURCE_DIR) + "/data/" + name, home / "etc\\" + name, false));
    p.host = [this](int kind, const std::string& text) { return kind != kHostCreateFolder || p.CreateFolder(text); };
  }
  void TearDown() override {
    session.reset();  // with any lock it holds
    ThreadContext::End();
  }
  // The thread's session, as the control keeps it.
  frmTqColorSetting& This() {
    if (!session) session = std::make_unique<frmTqColorSetting>(p, ThreadContext::This().Texts());
    return *session;
  }
  // The host's start-up: its context, then "Initialize".
  frmTqColorSetting& Initialize() {
    frmTqColorSetting& s = This();
    for (auto [key, value] : {std::pair<const char*, SessionValue>{"AppFolder", app.path()}, {"UserFolder", user.path()},
                              {"Language", "EN"}, {"UserName", "op1"}, {"HostApplication", "Display"},
                              {"AuthorizationLevel", std::int16_t{2}}, {"Initialize", "ColorScheme"}})
      s.SetObjectValue(c, key, value, error);
    s.InstallView(&editor);
    return s;
  }
  // Show, or Show2 when a tab is named.
  bool Show(ControlInstanceState& control, const std::string& file = "", const char* tab = nullptr) {
    frmTqColorSetting& s = This();
    const bool result = tab ? s.Show2(control, file, tab, 0, true, error) : s.Show(control, file, 0, 0, true, error);
    EXPECT_FALSE(error);
    return result;
  }
  // The host's Show, with what the user then does in the editor.
  bool Edit(std::function<void(frmTqColorSetting&)> act) {
    editor.act = std::move(act);
    return Show(c);
  }
  std::string Scheme(const std::string& name) { return p.AbsolutePath(app / "ColorSchemes\\" + name); }
  // The colour of index 35 ("Faulty or Invalid Value", row 6) in a file.
  std::int32_t Colour35(const std::string& file) {
    const std::vector<std::string> lines = SplitClutLines(test::Read(file)).lines;
    return lines.size() > 35 ? ParseClutLine(lines[35]) : -9;
  }
  // Another editor's lock on `file`, held to the end of the test.
  void HoldElsewhere(const std::string& file) {
    std::string other_app = "Other", other_user = "op2";
    clsLockFileCreator& holder = holders.emplace_back(p, ThreadContext::This().Texts());
    ASSERT_EQ(holder.CreateLockFile(file, other_app, other_user, LockMode::Open, true), LockResult::Locked);
  }

  Machine p;
  ControlInstanceState c;
  test::ScratchFolder home, app, user;
  ScriptedEditor editor;
  SessionError error;
  std::list<clsLockFileCreator> holders;
  std::unique_ptr<frmTqColorSetting> session;
};

TEST_F(Session, StartsWithItsDefaultsAppliesEachSetterRuleAndOpensOnlyOnceInitialised) {
  frmTqColorSetting s(p, ThreadContext::This().Texts());
  const std::string factory = p.AbsolutePath(home / "etc\\QLT830_colors.clut");
  const std::string roundabout = home / "etc\\..\\etc\\QLT830_colors.clut";
  EXPECT_FALSE(s.DlgReturnValue());  // a type mismatch for the host
  s.SetObjectValue(c, "HostApplication", "Display", error);
  EXPECT_EQ(s.HostApplication(), " / Display");  // no language, no title yet
  s.SetObjectValue(c, "Language", "EN", error);
  EXPECT_EQ(s.HostApplication(), " / Display");
  s.SetObjectValue(c, "HostApplication", "Display", error);
  EXPECT_EQ(s.HostApplication(), GetString(1301) + " / Display");
  s.EnableChanges(false);
  EXPECT_EQ(s.Caption(), GetString(1302));
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
            GetString(1323) + "|" + GetString(1301));
  EXPECT_EQ(p.prompts[0].style, kMbIconCritical);
  EXPECT_TRUE(editor.shown.empty());
  s.SetObjectValue(c, "ApplicationNumber", std::string("seven"), error);
  EXPECT_EQ(error.kind, SessionError::Kind::TypeMismatch);

  p.dvhome.clear();  // no toolkit: nothing at creation, told on the first call and again for the default table
  p.answers = {kIdOk, kIdOk};
  frmTqColorSetting bare(p, ThreadContext::This().Texts());
  EXPECT_EQ(p.prompts.size(), 1u);
  bare.Begin();
  EXPECT_EQ(bare.ClutFileName(), "");
  EXPECT_TRUE(bare.ClutError());
  ASSERT_EQ(p.prompts.size(), 3u);
  EXPECT_EQ(p.prompts[2].text, GetString(1315));
}

TEST(SchemeNames, RefusedAreThoseThatLeaveTheFolderThatWindowsChangesOrRefusesAndOurWorkingFiles) {
  for (const char* name : {"", ".", "..\\evil", "sub\\evil", "a/evil", "C:evil", "\\\\server\\share\\evil", "CON", "nul.clut",
                           "com1", "LPT9.txt", "CONOUT$", "a<b", "a|b", "what?", "tab\tname", "dot.", " blank", "blank ",
                           ".clut", "Night.clut.lock", "a.TMP"})
    EXPECT_TRUE(IsRefusedSchemeName(name)) << name;
  for (const char* name : {"Night.clut", "Night.2", "COM10.clut", "console.clut", "a b.clut", "\xc3\x9c" "bersicht.clut",
                           "locked.clut", "tmp.clut"})
    EXPECT_FALSE(IsRefusedSchemeName(name)) << name;
}

TEST_F(Session, OkRecordsTheChosenTableAndSendsTheColoursAndOnlyAnUninitialisedControlNamesTheFile) {
  ControlInstanceState uninitialised;
  frmTqColorSetting& s = Initialize();
  const std::string colors = s.ClutFileName(), night = Scheme("QLT830_night.clut");
  EXPECT_EQ(colors, Scheme("QLT830_colors.clut"));  // synchronised from the toolkit
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

TEST_F(Session, ContextSentWhileTheEditorIsOpenTakesEffectWhenItCloses) {
  frmTqColorSetting& s = Initialize();
  const std::string edited = s.ClutFileName();
  test::ScratchFolder elsewhere;
  EXPECT_TRUE(Edit([&](frmTqColorSetting& f) {
    f.SetObjectValue(c, "AppFolder", elsewhere.path(), error);
    f.SetObjectValue(c, "Initialize", "ColorScheme", error);
    f.SetObjectValue(c, "AuthorizationLevel", std::int16_t{0}, error);
    EXPECT_EQ(f.ClutFileName(), edited);  // the file the lock is on
    EXPECT_EQ(f.AuthorizationLevelTools, 2);
    f.ColorPicked(6, 0x0000FF);
    f.cmdOK_Click();
  }));
  EXPECT_EQ(Colour35(edited), 0x0000FF);
  EXPECT_EQ(s.AuthorizationLevelTools, 0);
  EXPECT_EQ(s.ClutFileName(), p.AbsolutePath(elsewhere / "ColorSchemes\\QLT830_colors.clut"));
}

TEST_F(Session, PicksOkAndCancelFollowTheRulesAndAFailedSaveKeepsTheEditorOpen) {
  frmTqColorSetting& s = Initialize();
  const std::string colors = s.ClutFileName(), night = Scheme("QLT830_night.clut");
  ASSERT_TRUE(p.CopyFileTo(colors, night, false));
  const std::string before = test::Read(colors);
  std::string after;
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
    EXPECT_EQ(Edit(test.act), test.result);
    EXPECT_EQ(editor.closed, test.closed);
    after = test::Read(colors);
    EXPECT_EQ(after != before, test.written);
  }
  EXPECT_EQ(SplitClutLines(after).lines[35].substr(0, 13), "  0  128  255");
  s.ShowColorRow(kRow, 0x123456, 35, 7);  // an unknown state changes nothing
  EXPECT_EQ(s.GetRowColor(kRow), 0x00FF8000);
}

// ---- Schemes and the editor's commands ----

// The prompts shown since `from`, each as "text|buttons+style".
std::vector<std::string> PromptsFrom(const Machine& p, std::size_t from) {
  std::vector<std::string> seen;
  for (std::size_t i = from; i < p.prompts.size(); ++i)
    seen.push_back(p.prompts[i].text + "|" + std::to_string(p.prompts[i].buttons + p.prompts[i].style));
  return seen;
}

TEST_F(Session, ChoosingASchemeAsksForUnsavedColoursMovesTheLockAndHonoursAHolderElsewhere) {
  frmTqColorSetting& s = Initialize();
  const std::string colors = s.ClutFileName(), night = Scheme("night.clut"), held = Scheme("other.clut");
  for (const std::string& copy : {night, held}) ASSERT_TRUE(p.CopyFileTo(colors, copy, false));
  const std::string colors_before = test::Read(colors);
  const std::int32_t night35 = Colour35(night);
  HoldElsewhere(held);
  constexpr int kNight = 0, kOther = 1, kColors = 2;  // listed by name
  EXPECT_TRUE(Edit([&](frmTqColorSetting& f) {
    EXPECT_EQ(f.SchemeListIndex(), kColors);
    const std::size_t asked = p.prompts.size();
    f.cmbColorSchemes_Click(kColors);  // the selected one again: nothing happens
    f.ColorPicked(6, 0x0000FF);
    p.answers = {kIdNo};
    f.cmbColorSchemes_Click(kNight);
    EXPECT_EQ(PromptsFrom(p, asked), std::vector<std::string>{
        GetString(1318) + "QLT830_colors.clut " + GetString(1319) + "|52"});
    EXPECT_EQ(f.ClutFileName(), night);
    EXPECT_TRUE(p.FileExists(night + ".lock") && !p.FileExists(colors + ".lock"));
    EXPECT_TRUE(f.ColorThemeChanged && !f.ColorsChanged);
    EXPECT_EQ(p.host_calls.back(), (std::pair<int, std::string>{kHostFileNotice, night}));
    EXPECT_EQ(f.GetRowColor(6), night35);  // reloaded

    f.ColorPicked(6, 0x00FF00);
    p.answers = {kIdYes, kIdNo};  // save night; then refuse read-only for the held one
    f.cmbColorSchemes_Click(kOther);
    EXPECT_EQ(f.ClutFileName(), night);  // stays, selected again, and holds its file again
    EXPECT_EQ(f.SchemeListIndex(), kNight);
    EXPECT_TRUE(f.LockFileCreated && f.EnableChanges() && !f.ClutError());
    p.answers = {kIdYes};  // read-only this time
    f.cmbColorSchemes_Click(kOther);
    EXPECT_EQ(f.ClutFileName(), held);
    EXPECT_FALSE(f.EnableChanges() || f.LockFileCreated || p.FileExists(night + ".lock"));
    EXPECT_EQ(f.Caption(), GetString(1302));
    EXPECT_TRUE(f.Enablement().ok && f.Enablement().scheme_list && !f.Enablement().colour_buttons);
    f.cmbColorSchemes_Click(kColors);  // a free file is editable again
    EXPECT_TRUE(f.EnableChanges() && f.LockFileCreated);
    f.cmdOK_Click();
  }));  // only switched: true, and nothing written for it
  EXPECT_EQ(test::Read(colors), colors_before);
  EXPECT_EQ(Colour35(night), 0x00FF00);
  // Held by another editor when the editor opens: read-only when the user agrees.
  HoldElsewhere(colors);
  p.answers = {kIdYes};
  EXPECT_FALSE(Edit(nullptr));
  EXPECT_EQ(editor.shown.back().caption, GetString(1302));
  EXPECT_FALSE(editor.shown.back().lock_created);
}

TEST_F(Session, SaveAsCopiesRenamesOverwritesOnlyWhenAskedAndRefusesNamesOutsideTheFolder) {
  frmTqColorSetting& s = Initialize();
  const std::string colors = s.ClutFileName(), folder = app / "ColorSchemes\\";
  const std::string colors_before = test::Read(colors);
  EXPECT_FALSE(Edit([&](frmTqColorSetting& f) {
    f.ColorPicked(6, 0x0000FF);
    editor.typed = {"Night"};
    f.cmdSave_Click();
    EXPECT_EQ(editor.asked.authorization_level, 2);
    EXPECT_EQ(f.ClutFileName(), p.AbsolutePath(folder + "Night.clut"));
    EXPECT_EQ(Colour35(folder + "Night.clut"), 0x0000FF);
    EXPECT_EQ(ColorSchemes(f.Schemes()).size(), 2u);
    EXPECT_EQ(f.SchemeListIndex(), 0);
    EXPECT_TRUE(f.ColorsSaved && !f.ColorsChanged);

    editor.typed = {"Night.2"};  // a name with a dot is kept: a file the list does not hold
    f.cmdSave_Click();
    EXPECT_EQ(f.ClutFileName(), p.AbsolutePath(folder + "Night.2"));
    EXPECT_EQ(f.SchemeListIndex(), -1);
    f.cmbColorSchemes_Click(0);  // back to Night.clut: any choice switches
    EXPECT_EQ(f.ClutFileName(), p.AbsolutePath(folder + "Night.clut"));

    f.ColorPicked(6, 0x00FF00);  // the current name: asked, then only rewritten
    editor.typed = {"Night.clut"};
    p.answers = {kIdYes};
    const std::size_t asked = p.prompts.size();
    f.cmdSave_Click();
    EXPECT_EQ(Colour35(folder + "Night.clut"), 0x00FF00);
    EXPECT_EQ(PromptsFrom(p, asked),
              std::vector<std::string>{"Night.clut" + GetString(1451) + "|52"});

    // A Save As that cannot write, or onto a file another editor holds that the user then
    // takes read-only: the editor stays on the file it came from, the pick still unsaved.
    const std::string night = p.AbsolutePath(folder + "Night.clut");
    ASSERT_TRUE(p.CopyFileTo(colors, folder + "held.clut", false));
    HoldElsewhere(folder + "held.clut");
    p.SetFaultHook([](std::string_view op, const std::string& path) -> std::optional<IoStatus> {
      if (op == "MoveReplace" && FileNameOf(path) == "Failed.clut") return IoStatus::Fail(5, "Access is denied.");
      return std::nullopt;
    });
    f.ColorPicked(6, 0x00FFFF);
    for (auto [name, answers] : {std::pair<const char*, std::vector<int>>{"Failed", {kIdOk}}, {"held", {kIdYes, kIdYes}}}) {
      editor.typed = {name};
      p.answers.assign(answers.begin(), answers.end());
      f.cmdSave_Click();
      EXPECT_EQ(f.ClutFileName(), night) << name;
      EXPECT_TRUE(f.ColorsChanged && f.EnableChanges() && f.LockFileCreated && p.FileExists(night + ".lock")) << name;
    }
    p.SetFaultHook(nullptr);

    // An existing name answered No (a listed scheme, another file in another case), then
    // a refused name: the dialog stays open through them, and Cancel ends it.
    editor.typed = {"QLT830_colors", "NIGHT.2", "..\\evil"};
    p.answers = {kIdNo, kIdNo, kIdOk};
    const std::size_t refused = p.prompts.size();
    f.cmdSave_Click();
    EXPECT_EQ(PromptsFrom(p, refused),
              (std::vector<std::string>{
                  "QLT830_colors.clut" + GetString(1451) + "|52", "NIGHT.2" + GetString(1451) + "|52",
                  "\"..\\evil\" " + GetString(1452) + "|48"}));
    f.cmdCancel_Click();
  }));
  EXPECT_EQ(test::Read(colors), colors_before);  // Save As never writes into the file it came from
  holders.clear();  // the other editor leaves
  // Nothing was written beside the scheme folder or in it but the two saved schemes.
  std::vector<std::string> names = p.ListFileNames(folder), outside = p.ListFileNames(app.path());
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (std::vector<std::string>{"Night.2", "Night.clut", "QLT830_colors$clut", "QLT830_colors.clut",
                                             "held.clut"}));  // the failed Save As made nothing
  EXPECT_TRUE(outside.empty() || outside == std::vector<std::string>{"FrameWindow.ini"});
  // Fifty schemes fill the list: Save As says so and asks for no name.
  for (int i = 0; i < 47; ++i) ASSERT_TRUE(p.CopyFileTo(colors, Scheme("s" + std::to_string(100 + i) + ".clut"), false));
  p.answers = {kIdOk};
  Edit([&](frmTqColorSetting& f) {
    editor.asked = {};
    f.cmdSave_Click();
    EXPECT_EQ(p.prompts.back().text, GetString(1320));
    EXPECT_EQ(editor.asked.proposed_name, "");
    f.cmdCancel_Click();
  });
}

TEST_F(Session, DeleteSelectsTheNeighbourRemovesTheFileItselfWhenTheHostDidNotAndSparesFactoryTables) {
  frmTqColorSetting& s = Initialize();
  const std::string colors = s.ClutFileName();
  for (const char* name : {"a.clut", "b.clut", "x.clut", "y.clut"})
    ASSERT_TRUE(p.CopyFileTo(colors, Scheme(name), false));
  // The host removes what it is asked to, except b: that one the editor must remove.
  p.host = [&](int kind, const std::string& text) {
    if (kind == kHostRemoveFile && FileNameOf(text) != "b.clut") p.RemoveFile(text);
    return true;
  };
  struct Step {
    int choose;  // list position chosen first
    std::string deleted, then_edited;
  } steps[] = {
      {4, "y.clut", "x.clut"},  // the last: the one before it
      {1, "b.clut", "QLT830_colors.clut"},  // a middle one: the one moving into its place
      {0, "a.clut", "QLT830_colors.clut"},  // the first: the new first
  };
  EXPECT_FALSE(Edit([&](frmTqColorSetting& f) {
    for (const Step& step : steps) {
      SCOPED_TRACE(step.deleted);
      f.cmbColorSchemes_Click(step.choose);
      p.answers = {kIdNo};
      f.cmdDelete_Click();  // No: nothing happens
      EXPECT_TRUE(p.FileExists(Scheme(step.deleted)));
      p.answers = {kIdYes};
      f.cmdDelete_Click();
      EXPECT_FALSE(p.FileExists(Scheme(step.deleted)) || p.FileExists(Scheme(step.deleted) + ".lock"));
      EXPECT_EQ(p.host_calls.back(), (std::pair<int, std::string>{kHostFileNotice, f.ClutFileName()}));
      EXPECT_EQ(FileNameOf(f.ClutFileName()), step.then_edited);
      EXPECT_EQ(FileNameOf(GetColorSchemeAt(f.Schemes(), f.SchemeListIndex())), step.then_edited);
    }
    // The factory table (it has a restore copy) cannot be deleted.
    ASSERT_EQ(f.ClutFileName(), colors);
    const std::size_t asked = p.prompts.size();
    f.cmdDelete_Click();
    EXPECT_EQ(p.prompts.size(), asked);
    EXPECT_TRUE(p.FileExists(colors) && p.FileExists(Scheme("QLT830_colors$clut")));
    f.cmdCancel_Click();
  }));
  std::vector<std::string> asked_to_remove;
  for (const auto& [kind, text] : p.host_calls)
    if (kind == kHostRemoveFile) asked_to_remove.push_back(FileNameOf(text));
  EXPECT_EQ(asked_to_remove, (std::vector<std::string>{"y.clut", "b.clut", "a.clut"}));
  EXPECT_EQ(ColorSchemes(s.Schemes()).size(), 2u);
}

TEST_F(Session, RestoreDefaultsRefusedOrWithoutTheToolkitOrItsReferenceChangesNothing) {
#ifndef _WIN32
  GTEST_SKIP() << "the reference file is named in upper case, which only Windows finds";
#endif
  frmTqColorSetting& s = Initialize();
  const std::string colors = s.ClutFileName();
  constexpr int kRow = 6;  // index 35
  const std::string ask = GetString(1317) + "|52";
  struct Case {
    const char* what;
    std::vector<int> answers;
    bool toolkit, reference;
    std::vector<std::string> prompts;
  } cases[] = {
      {"No", {kIdNo}, true, true, {ask}},
      {"no DVHOME", {kIdYes, kIdOk}, false, true, {ask, GetString(1315) + "|16"}},
      // Nothing read, nothing changed: no "Unreadable" rows that OK would fill with other colours.
      {"no reference file", {kIdYes, kIdOk}, true, false,
       {ask, GetString(1305) + p.UpperCase(Scheme("QLT830_colors$clut")) + "|16"}},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.what);
    editor.closed = 0;
    Edit([&](frmTqColorSetting& f) {
      f.ShowColorRow(kRow, 0x123456, 35, kRowColour);  // shown, not a change of the user's
      const std::string home = p.dvhome;
      if (!test.toolkit) p.dvhome.clear();
      if (!test.reference) {
        ASSERT_TRUE(p.RemoveFile(Scheme("QLT830_colors$clut")));
      }
      p.answers.assign(test.answers.begin(), test.answers.end());
      const std::size_t asked = p.prompts.size();
      f.miRestoreDefaults_Click();
      p.dvhome = home;
      EXPECT_EQ(PromptsFrom(p, asked), test.prompts);
      EXPECT_EQ(f.GetRowColor(kRow), 0x123456);
      EXPECT_FALSE(f.ColorsChanged || f.ClutError());
      EXPECT_EQ(f.ClutFileName(), colors);
      f.cmdOK_Click();
      EXPECT_EQ(editor.closed, 1);
    });
  }
  // A name with two dots has a restore copy by the "$" rule that Restore would not read.
  ASSERT_TRUE(p.CopyFileTo(colors, Scheme("QLT830_a.v2.clut"), false));
  ASSERT_TRUE(p.CopyFileTo(colors, Scheme("QLT830_a$v2$clut"), false));
  editor.act = [&](frmTqColorSetting& f) {
    EXPECT_FALSE(f.Enablement().restore_defaults || f.Enablement().delete_scheme);
    f.cmdCancel_Click();
  };
  ControlInstanceState naming;  // not initialised: Show opens the file it names
  Show(naming, Scheme("QLT830_a.v2.clut"));
}

TEST_F(Session, ExportSkipsUnreadableRowsKeepsOtherKeysAndImportChangesOnlyWhatItReads) {
#ifndef _WIN32
  GTEST_SKIP() << "the logical colours file is read and written through the profile API";
#endif
  Initialize();
  const std::string ini = app / "colors.ini", other = app / "other.ini";
  p.IniWrite("Other", "Key", "kept", ini);  // an existing file: what is not ours stays
  editor.file = ini;
  Edit([&](frmTqColorSetting& f) {
    f.ShowColorRow(0, 0, 38, kRowUnreadable);
    f.ShowColorRow(1, 0, 42, kRowNotDefined);
    f.miExport_Click();
    // A target that cannot be written (its folder has gone): the user is told, the host
    // hears of nothing.
    const std::size_t calls = p.host_calls.size();
    editor.file = app / "gone\\colors.ini";
    p.answers = {kIdOk};
    f.miExport_Click();
    EXPECT_EQ(p.host_calls.size(), calls);
    EXPECT_EQ(p.prompts.back().text.find(editor.file), 0u);
    f.cmdCancel_Click();
  });
  EXPECT_EQ(p.IniRead("Other", "Key", ini), "kept");
  EXPECT_EQ(p.IniRead(kLogicalColorsSection, LogicalColorsKey(38), ini), "");
  EXPECT_NE(p.IniRead(kLogicalColorsSection, LogicalColorsKey(42), ini).substr(0, 2), "-1");  // as its button shows

  const struct {
    const char* what;
    std::vector<std::pair<std::string, std::string>> keys;
    std::int32_t row6, row0;  // what rows 6 (index 35) and 0 (index 38) show after
    bool changed;
  } cases[] = {
      {"only index 12, which no row shows", {{"Index_12", "1 2 3"}}, 0x123456, 0x654321, false},
      {"not defined, unreadable", {{"Index_35", "-1 -1 -1"}, {"Index_38", "junk"}}, kSystemButtonFace,
       kSystemButtonFace, false},
      {"a colour", {{"Index_35", "10 20 30"}}, 0x1E140A, 0x654321, true},
  };
  editor.file = other;
  for (const auto& test : cases) {
    SCOPED_TRACE(test.what);
    p.RemoveFile(other);
    for (const auto& [key, value] : test.keys) p.IniWrite(kLogicalColorsSection, key, value, other);
    Edit([&](frmTqColorSetting& f) {
      f.ShowColorRow(6, 0x123456, 35, kRowColour);
      f.ShowColorRow(0, 0x654321, 38, kRowColour);
      f.miImport_Click();
      EXPECT_EQ(f.GetRowColor(6), test.row6);
      EXPECT_EQ(f.GetRowColor(0), test.row0);
      EXPECT_EQ(f.ColorsChanged, test.changed);
      f.cmdCancel_Click();
    });
  }
}

// ---- Undo and redo ----

TEST_F(Session, UndoStepsBackOneCommandAtATimeAndForgetsOnASchemeSwitchOrSave) {
  frmTqColorSetting& s = Initialize();
  ASSERT_TRUE(p.CopyFileTo(s.ClutFileName(), Scheme("night.clut"), false));
  constexpr int kRow = 6, kOtherRow = 0;  // indexes 35 and 38
  Edit([&](frmTqColorSetting& f) {
    const std::int32_t loaded = f.GetRowColor(kRow);
    EXPECT_FALSE(f.CanUndo() || f.CanRedo() || f.Undo() || f.Redo());
    f.ColorPicked(kRow, 0x0000FF);
    f.ColorPicked(kRow, 0x0000FF);  // confirmed again: a change, but no step
    EXPECT_TRUE(f.SetRowColour(kRow, 0x00FF00));
    f.ColorsChanged = false;
    EXPECT_TRUE(f.Undo());
    EXPECT_TRUE(f.ColorsChanged);  // an undo is a change
    EXPECT_EQ(f.GetRowColor(kRow), 0x0000FF);
    EXPECT_TRUE(f.Undo());
    EXPECT_EQ(f.GetRowColor(kRow), loaded);
    EXPECT_FALSE(f.Undo());
    EXPECT_TRUE(f.Redo());
    EXPECT_EQ(f.GetRowColor(kRow), 0x0000FF);
    EXPECT_TRUE(f.SetRowColour(kOtherRow, 0x111111));  // a new change ends what could be redone
    EXPECT_FALSE(f.CanRedo());
#ifdef _WIN32  // the restore copy's upper-case name and the profile API: Windows only
    // Restore Defaults: one step for all its rows.
    p.answers = {kIdYes};
    f.miRestoreDefaults_Click();
    const std::int32_t factory = f.GetRowColor(kRow);
    EXPECT_EQ(f.FactoryColour(kRow), factory);
    EXPECT_NE(factory, 0x0000FF);
    EXPECT_TRUE(f.SetRowColour(kRow, 0x030201));
    EXPECT_TRUE(f.ResetRowToFactory(kRow));
    EXPECT_EQ(f.GetRowColor(kRow), factory);
    EXPECT_TRUE(f.Undo());
    EXPECT_TRUE(f.Undo());
    EXPECT_EQ(f.GetRowColor(kRow), factory);
    EXPECT_TRUE(f.Undo());
    EXPECT_EQ(f.GetRowColor(kRow), 0x0000FF);
    EXPECT_EQ(f.GetRowColor(kOtherRow), 0x111111);
#endif
    // Another scheme starts without history; so does the file just saved under a new name.
    p.answers = {kIdNo};  // not saved
    f.cmbColorSchemes_Click(0);
    EXPECT_EQ(f.ClutFileName(), Scheme("night.clut"));
    EXPECT_FALSE(f.CanUndo() || f.CanRedo());
    f.ColorPicked(kRow, 0x0000FF);
    EXPECT_TRUE(f.CanUndo());
    editor.typed = {"copy"};
    f.cmdSave_Click();
    EXPECT_FALSE(f.CanUndo());
    // Read-only: nothing that changes colours runs.
    f.ColorPicked(kRow, 0x0000FF);
    f.EnableChanges(false);
    f.MakeEnableChanges(false);
    EXPECT_FALSE(f.CanUndo() || f.Undo() || f.SetRowColour(kRow, 0) || f.ResetRowToFactory(kRow));
    EXPECT_EQ(f.GetRowColor(kRow), 0x0000FF);
    f.cmdCancel_Click();
  });
}

}  // namespace
}  // namespace tq
