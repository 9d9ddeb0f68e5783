// The colour table files against the real Windows file system, registry, profile
// API and mutex, with second processes where the field has them.
#include <gtest/gtest.h>

#include <filesystem>

#include "../clut_test_data.h"
#include "common/win_test_support.h"
#include "support/utils.h"

namespace tq {
namespace {

using test::Read;
using test::Write;

// The factory table, and an application with three schemes and its settings paths.
class ClutWin : public test::ClutFolder {
 protected:
  void SetUp() override {
    ClutFolder::SetUp();
    p.CreateFolder(app / "ColorSchemes");
    SetColorSchemeFolder(module, app / "ColorSchemes");
    for (const char* name : {"QLT830_a.clut", "QLT830_b.clut", "QLT830_colors.clut"})
      Write(schemes() + name, test::SourceFile("data/QLT830_colors.clut"));
    SetIniPaths(p, module, app.path(), user.path());
  }
  std::string schemes() const { return app / "ColorSchemes\\"; }
  void Ini(const std::string& file, const std::string& value) {
    Write(file, "[COLORSCHEMES]\r\nClutFile=" + value + "\r\n");
  }
  void ExpectWriteRefused(const std::string& before) {
    p.prompts.clear();
    p.answers = {kIdOk};
    EXPECT_FALSE(SaveColorTable(p, texts, state));
    EXPECT_EQ(Read(state.ClutFileName), before);
    EXPECT_TRUE(NoTempFiles());
    ASSERT_EQ(p.prompts.size(), 1u);
    const std::string& text = p.prompts[0].text;
    // The system's reason stands between the file name and the reassurance.
    const std::string head = GetString(1312) + state.ClutFileName + "\r\n";
    const std::string tail = "\r\n\r\n" + GetString(1313);
    EXPECT_TRUE(text.starts_with(head) && text.ends_with(tail) && text.size() > head.size() + tail.size()) << text;
    EXPECT_EQ(p.prompts[0].style, kMbIconCritical);
  }
  test::ScratchFolder app, user;
};

TEST_F(ClutWin, AReadOnlyFileOrOneHeldOpenElsewhereIsNotReplacedAndTheUserIsTold) {
  const std::string before = Read(state.ClutFileName);
  ASSERT_TRUE(p.SetAttributes(state.ClutFileName, kAttrReadOnly));
  ExpectWriteRefused(before);
  p.SetAttributes(state.ClutFileName, kAttrNormal);

  // Held open as an editor or a virus scanner might: sharing read and write, not delete.
  HANDLE holder = CreateFileW(test::W(state.ClutFileName).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                              nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  ASSERT_NE(holder, INVALID_HANDLE_VALUE);
  ExpectWriteRefused(before);
  CloseHandle(holder);
  EXPECT_TRUE(SaveColorTable(p, texts, state));  // the same save goes through once it is closed
  EXPECT_NE(Read(state.ClutFileName), before);
}

TEST_F(ClutWin, LoadUpgradesTheFileAndCopiesItOverTheToolkitsCopy) {
  test::ScratchFolder home;
  ASSERT_TRUE(p.CreateFolder(home / "etc"));
  Write(home / "etc\\QLT830_colors.clut", "old global copy");
  const auto value = test::RegistryValue::DVHome(home.path().substr(0, home.path().size() - 1));
  Write(state.ClutFileName, JoinClutLines(test::OwnLines("93.02")));
  ASSERT_TRUE(LoadColorTable(p, module, state, true, LoadReport::ToUser(texts)));
  // The lines of the upgrade itself are the portable tests'.
  EXPECT_EQ(Read(home / "etc\\QLT830_colors.clut"), Read(state.ClutFileName));
  EXPECT_EQ(state.ColorIndexValue[256], 120 + 7 * 256 + 9 * 65536);
  // Loaded again: "93.07" now, nothing is rewritten.
  Write(home / "etc\\QLT830_colors.clut", "untouched");
  ASSERT_TRUE(LoadColorTable(p, module, state, true, LoadReport::ToUser(texts)));
  EXPECT_EQ(Read(home / "etc\\QLT830_colors.clut"), "untouched");
  EXPECT_TRUE(p.prompts.empty());
}

TEST_F(ClutWin, UserOverApplicationOverDefaultMissingFilesSkippedAndWriteBackOnlyOnAChange) {
  const std::string user_ini = user / "FrameWindow.ini", app_ini = app / "FrameWindow.ini";
  const struct { std::string file, value, expected; } steps[] = {
      {"", "", "QLT830_colors.clut"},  {app_ini, "QLT830_b.clut", "QLT830_b.clut"},
      {user_ini, "QLT830_a.clut", "QLT830_a.clut"},  {user_ini, "QLT830_missing.clut", "QLT830_b.clut"},
      {app_ini, "QLT830_gone.clut", "QLT830_colors.clut"}, {app_ini, "QLT830_a.clut", "QLT830_a.clut"}};
  for (const auto& step : steps) {
    if (!step.file.empty()) Ini(step.file, step.value);
    EXPECT_EQ(GetIniClutFile(p, module, true), schemes() + step.expected) << step.file << " " << step.value;
  }
  p.RemoveFile(user_ini);
  const std::string before = Read(app_ini);
  SetRememberedClutFile(module, schemes() + "qlt830_A.CLUT");  // a change of case alone writes nothing
  EXPECT_FALSE(SaveIniClutFile(p, module));
  EXPECT_EQ(Read(app_ini), before);
  SetRememberedClutFile(module, schemes() + "QLT830_b.clut");
  EXPECT_TRUE(SaveIniClutFile(p, module));
  EXPECT_EQ(p.host_calls, (std::vector<std::pair<int, std::string>>{{kHostFileNotice, app_ini}}));
}

TEST_F(ClutWin, FactorySettingsComeLastFromTheInstallationRoot) {
  const std::string misc = "C:\\sc\\tq_lib\\defaults\\misc\\";
  std::filesystem::create_directories(test::W(misc));
  Ini(misc + "default_FrameWindow.ini", "QLT830_b.clut");
  // Only a home of the installation's pattern names the root ("?:\sc\").
  for (const auto& [home, expected] : {std::pair{"D:\\dataviews\\sc\\", "QLT830_colors.clut"},
                                       {"C:\\sc\\dataviews", "QLT830_b.clut"}}) {
    const auto value = test::RegistryValue::DVHome(home);
    SetIniPaths(p, module, app.path(), user.path());
    EXPECT_EQ(GetIniClutFile(p, module, false), schemes() + expected) << home;
  }
  Ini(app / "FrameWindow.ini", "QLT830_a.clut");
  EXPECT_EQ(GetIniClutFile(p, module, false), schemes() + "QLT830_a.clut");
  test::RemoveTree("C:\\sc\\tq_lib\\");
}

TEST_F(ClutWin, SavesWhileAnotherProcessWritesTheSameFileLoseNoUpdate) {
  const std::string ini = app / "FrameWindow.ini";
  Ini(ini, "QLT830_colors.clut");
  test::HelperProcess other("ini-write-keys", {ini, "60"});
  ASSERT_TRUE(other.ready());
  for (int i = 0; i < 60; ++i) {
    SetRememberedClutFile(module, schemes() + (i % 2 ? "QLT830_b.clut" : "QLT830_a.clut"));
    EXPECT_TRUE(SaveIniClutFile(p, module)) << i;
  }
  EXPECT_EQ(other.Wait(120000), 0);
  EXPECT_EQ(GetIniClutFile(p, module, false), schemes() + "QLT830_b.clut");  // the last choice
  for (int i = 0; i < 60; ++i) EXPECT_EQ(p.IniRead("Other", "Key" + std::to_string(i), ini), std::to_string(i)) << i;
}

TEST_F(ClutWin, InitColorSchemesTakesTheTableOfTheSettingsOrTheOneGiven) {
  const auto value = test::RegistryValue::DVHome(app / "toolkit");  // no tables to synchronise: the session's test
  Ini(app / "FrameWindow.ini", "QLT830_b.clut");
  EXPECT_EQ(InitColorSchemes(p, texts, module, state, app.path(), user.path(), ""), schemes() + "QLT830_b.clut");
  EXPECT_TRUE(EqualsIgnoreCase(p, state.ClutFileName, schemes() + "QLT830_b.clut"));
  EXPECT_EQ(InitColorSchemes(p, texts, module, state, app.path(), user.path(), "given.clut"), "given.clut");
  EXPECT_EQ(state.ClutFileName, "given.clut");  // missing: stored as given
  EXPECT_FALSE(state.ClutError);
}

}  // namespace
}  // namespace tq
