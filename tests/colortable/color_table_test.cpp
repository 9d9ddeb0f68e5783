// Loading and saving real files in a scratch folder, the safe replace under injected
// faults, the upgrade on load, synchronisation and the scheme list.
#include "colortable/color_table.h"

#include <gtest/gtest.h>

#include "clut_test_data.h"
#include "colortable/clut_locations.h"
#include "common/test_platform.h"
#include "support/localization.h"

namespace tq {
namespace {

std::string Read(const std::string& path) {
  std::string bytes;
  EXPECT_TRUE(test::RealPlatform().ReadFile(path, bytes)) << path;
  return bytes;
}
void Write(const std::string& path, const std::string& bytes) {
  ASSERT_TRUE(test::RealPlatform().WriteNewFile(path, bytes)) << path;
}

class ColorTableFiles : public ::testing::Test {
 protected:
  void SetUp() override {
    test::InstallFactoryTable(dir.path(), state, "locked");
  }
  // Files left in the folder other than the ones the test made.
  std::vector<std::string> Leftovers() {
    std::vector<std::string> extra;
    for (const auto& name : p.ListFileNames(dir.path()))
      if (name.find(".tmp") != std::string::npos) extra.push_back(name);
    return extra;
  }
  test::ScratchFolder dir;
  test::TestPlatform p;
  ColorTableState state;
};

TEST_F(ColorTableFiles, LoadFillsTableAndRowsAndKeepsValuesOfUnreadableLines) {
  Write(state.ClutFileName, "  1    2    3  # 0: x Version=93.07\r\n"
                            "junk\r\n"
                            " -1   -1   -1  \n"
                            "255 255 255");
  state.ColorIndexValue[1] = 42;
  ASSERT_TRUE(LoadColorTable(p, state, true));
  EXPECT_EQ(state.ColorIndexValue[0], 197121);
  EXPECT_EQ(state.ColorIndexValue[1], 42);
  EXPECT_EQ(state.rows[1].kind, RowColour::Kind::Unreadable);
  EXPECT_EQ(state.ColorIndexValue[2], kClutNotDefined);
  EXPECT_EQ(state.rows[2].kind, RowColour::Kind::NotDefined);
  EXPECT_EQ(state.ColorIndexValue[3], 0xFFFFFF);
  EXPECT_EQ(state.ColorIndexValue[4], 0xC0C0C0);  // beyond the end: unreadable
  EXPECT_EQ(state.rows[285].kind, RowColour::Kind::Unreadable);
  EXPECT_FALSE(state.ClutError);
  EXPECT_TRUE(p.prompts.empty());
}

TEST_F(ColorTableFiles, MissingFileIsReportedOnLoadAndSave) {
  state.ClutFileName = dir / "none.clut";
  p.answers = {kIdOk, kIdOk};
  EXPECT_FALSE(LoadColorTable(p, state, true));
  EXPECT_FALSE(SaveColorTable(p, state));
  ASSERT_EQ(p.prompts.size(), 2u);
  EXPECT_EQ(p.prompts[0].text, GetString(1305) + state.ClutFileName);
  EXPECT_EQ(p.prompts[0].title, GetString(1301));
  EXPECT_EQ(p.prompts[0].style, kMbIconCritical);
  EXPECT_EQ(p.prompts[1].text, GetString(1305) + state.ClutFileName + "\r\n\r\n" + GetString(1306));
  EXPECT_TRUE(state.ClutError);
  EXPECT_FALSE(p.FileExists(state.ClutFileName));
}

TEST_F(ColorTableFiles, LoadThenSaveOfTheFactoryFileChangesNoByte) {
  const std::string before = Read(state.ClutFileName) + "free text after the table\r\nno line end";
  Write(state.ClutFileName, before);
  ASSERT_TRUE(LoadColorTable(p, state, true));
  ASSERT_TRUE(SaveColorTable(p, state));
  EXPECT_EQ(Read(state.ClutFileName), before);
  EXPECT_EQ(p.host_calls, (std::vector<std::pair<int, std::string>>{{kHostFileNotice, state.ClutFileName}}));
  EXPECT_TRUE(Leftovers().empty());
}

TEST_F(ColorTableFiles, SaveWritesRowStatesAndUnreadableRowsTakeTheColourBefore) {
  Write(state.ClutFileName, "1 1 1 # a Version=93.07\r\n2 2 2 # b\r\n3 3 3\r\n4 4 4\r\n");
  state.ColorRowMap.fill(-1);
  state.ColorRowMap[0] = 0;
  state.ColorRowMap[2] = 1;
  state.ColorRowMap[3] = 2;
  state.rows[0] = {RowColour::Kind::Colour, 0x0A0B0C};
  state.rows[2] = {RowColour::Kind::Unreadable, 0};
  state.rows[3] = {RowColour::Kind::NotDefined, 0};
  ASSERT_TRUE(SaveColorTable(p, state));
  EXPECT_EQ(Read(state.ClutFileName), " 12   11   10  # a Version=93.07\r\n2 2 2 # b\r\n 12   11   10  \r\n -1   -1   -1  \r\n");
}

TEST_F(ColorTableFiles, UnlockedFileIsWrittenOnlyWhenTheUserSaysYes) {
  ASSERT_TRUE(p.RemoveFile(state.ClutFileName + ".lock"));
  const std::string before = Read(state.ClutFileName);
  state.rows.fill({RowColour::Kind::Colour, 0});
  p.answers = {kIdNo};
  EXPECT_FALSE(SaveColorTable(p, state));
  EXPECT_EQ(Read(state.ClutFileName), before);
  ASSERT_EQ(p.prompts.size(), 1u);
  EXPECT_EQ(p.prompts[0].text, GetString(1309) + state.ClutFileName + "\r\n" + GetString(1310) + "\r\n\r\n" + GetString(1311));
  EXPECT_EQ(p.prompts[0].buttons, kMbYesNo);
  EXPECT_EQ(p.prompts[0].style, kMbIconExclamation);
  p.answers = {kIdYes};
  EXPECT_TRUE(SaveColorTable(p, state));
  EXPECT_NE(Read(state.ClutFileName), before);
}

TEST_F(ColorTableFiles, AFailureAtAnyStepOfTheSaveLeavesTheOldFileWhole) {
  const std::string before = Read(state.ClutFileName);
  state.rows.fill({RowColour::Kind::Colour, 0});
  for (const char* step : {"ReadFile", "WriteNewFile", "MoveReplace"}) {
    SCOPED_TRACE(step);
    p.prompts.clear();
    p.host_calls.clear();
    p.fault = [&](const std::string& op, const std::string& path) -> std::optional<IoStatus> {
      if (op == step) {
        if (op == "WriteNewFile") Write(path, "half");  // a disk that filled up midway
        return IoStatus::Fail(kErrDiskFull, "There is not enough space on the disk.");
      }
      return std::nullopt;
    };
    p.answers = {kIdOk};
    EXPECT_FALSE(SaveColorTable(p, state));
    EXPECT_EQ(Read(state.ClutFileName), before);
    EXPECT_TRUE(Leftovers().empty());
    EXPECT_TRUE(p.host_calls.empty());
    ASSERT_EQ(p.prompts.size(), 1u);
    EXPECT_EQ(p.prompts[0].text, GetString(1312) + state.ClutFileName + "\r\nThere is not enough space on the disk.\r\n\r\n" +
                                     GetString(1313));
    EXPECT_EQ(p.prompts[0].buttons, kMbOk);
    EXPECT_EQ(p.prompts[0].style, kMbIconCritical);
  }
}

TEST_F(ColorTableFiles, JunkFilesLoadAsUnreadableAndSurviveASave) {
  std::string junk;
  for (int i = 0; i < 70000; ++i) junk += static_cast<char>((i * 7919 + i / 13) % 256);
  junk += std::string(10 * 1024 * 1024, 'x');
  Write(state.ClutFileName, "Version=93.07\n" + junk);
  ASSERT_TRUE(LoadColorTable(p, state, true));
  EXPECT_TRUE(SaveColorTable(p, state));
  const std::string after = Read(state.ClutFileName);
  const ClutLines lines = SplitClutLines(after, kClutIndexCount);
  const ClutLines old = SplitClutLines("Version=93.07\n" + junk, kClutIndexCount);
  EXPECT_EQ(lines.lines.size(), old.lines.size());
  EXPECT_EQ(lines.trailer, old.trailer);  // everything after line 286, byte for byte
}

TEST_F(ColorTableFiles, UpgradeAndMarkRewriteAnOldFileFromItsReference) {
  Write(state.ClutFileName, JoinClutLines(test::OwnLines("93.02")) + "trailer\r\n");
  ColorTableState probe = state;
  ASSERT_TRUE(UpgradeClut(p, probe, "93.02", kClutCurrentVersion));
  ASSERT_TRUE(SetClutVersion(p, state.ClutFileName, "93.02"));
  const auto lines = SplitClutLines(Read(state.ClutFileName)).lines;
  ASSERT_EQ(lines.size(), 286u);  // the trailer is dropped by the upgrade
  EXPECT_EQ(lines[0], "0 7 9 # mine 0 Version=93.07");
  EXPECT_EQ(lines[256], "#120 7 9 # mine 120");
  EXPECT_EQ(lines[130], test::FactoryLines()[130]);
  bool found = false;
  EXPECT_EQ(GetClutVersion(p, state.ClutFileName, found), "93.07");
  EXPECT_TRUE(found);
  EXPECT_TRUE(Leftovers().empty());
}

TEST_F(ColorTableFiles, UpgradeWithoutReferenceTellsTheUserAndChangesNothing) {
  ASSERT_TRUE(p.RemoveFile(dir / "QLT830_colors$clut"));
  Write(state.ClutFileName, JoinClutLines(test::OwnLines("93.04")));
  const std::string before = Read(state.ClutFileName);
  p.answers = {kIdOk};
  EXPECT_FALSE(UpgradeClut(p, state, "93.04", "93.07"));
  EXPECT_EQ(Read(state.ClutFileName), before);
  ASSERT_EQ(p.prompts.size(), 1u);
  EXPECT_EQ(p.prompts[0].text, GetString(1325) + state.ClutFileName + GetString(1326) + "93.04" + GetString(1327) +
                                   "93.07" + GetString(1328));
  // The reference of the scheme folder's default table stands in for a missing one.
  const std::string other = dir / "QLT830_other.clut";
  Write(other, JoinClutLines(test::OwnLines("93.04")));
  Write(dir / "QLT830_colors$clut", test::SourceFile("data/QLT830_colors$clut"));
  SetColorSchemeFolder(dir.path().substr(0, dir.path().size() - 1));
  state.ClutFileName = other;
  EXPECT_TRUE(UpgradeClut(p, state, "93.04", "93.07"));
  EXPECT_EQ(SplitClutLines(Read(other)).lines[18], test::FactoryLines()[18]);
}

class Sync : public ::testing::Test {
 protected:
  void SetUp() override {
    p.host = [this](int kind, const std::string& text) {
      return kind == kHostCreateFolder ? static_cast<bool>(p.CreateFolder(text)) : true;
    };
  }
  int Copies() const {
    int n = 0;
    for (const auto& call : p.host_calls) n += call.first == kHostFileNotice;
    return n;
  }
  test::ScratchFolder global, app;
  test::TestPlatform p;
};

TEST_F(Sync, CopiesPrefixedTablesAndReferencesOnceAndNeverOverwritesATable) {
  const std::string table = test::SourceFile("data/QLT830_colors.clut");
  Write(global / "QLT830_colors.clut", table);
  Write(global / "QLT830_colors$clut", table);
  Write(global / "QLT830_night.clut", table);
  Write(global / "QLT830_colors.clut.lock", "lock");
  Write(global / "other.clut", table);
  const std::string schemes = app / "ColorSchemes\\";
  Write(app / "ColorSchemes", "");  // (a file, removed below: the host is asked for the folder)
  ASSERT_TRUE(p.RemoveFile(app / "ColorSchemes"));

  EXPECT_EQ(SyncClutFiles(p, global.path(), schemes), 3);
  EXPECT_EQ(p.host_calls.front(), std::make_pair(kHostCreateFolder, schemes));
  EXPECT_EQ(Copies(), 2);  // the tables; a new reference file is not announced
  auto names = p.ListFileNames(schemes);
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (std::vector<std::string>{"QLT830_colors$clut", "QLT830_colors.clut", "QLT830_night.clut"}));

  Write(schemes + "QLT830_night.clut", "edited by the application");
  p.host_calls.clear();
  EXPECT_EQ(SyncClutFiles(p, global.path(), schemes), 0);
  EXPECT_TRUE(p.host_calls.empty());
  EXPECT_EQ(Read(schemes + "QLT830_night.clut"), "edited by the application");

  // A reference of another version is refreshed and announced.
  Write(global / "QLT830_colors$clut", "  0    0    0  # 0: Black Version=93.08\r\n");
  EXPECT_EQ(SyncClutFiles(p, global.path(), schemes), 1);
  EXPECT_EQ(p.host_calls, (std::vector<std::pair<int, std::string>>{{kHostFileNotice, schemes + "QLT830_colors$clut"}}));
  EXPECT_EQ(Read(schemes + "QLT830_colors$clut"), "  0    0    0  # 0: Black Version=93.08\r\n");
}

TEST_F(Sync, AtMostFiftyTablesAndNothingWhenTheHostCannotMakeTheFolder) {
  for (int i = 0; i < 51; ++i) Write(global / ("QLT830_" + std::to_string(100 + i) + ".clut"), "x");
  const std::string schemes = app / "ColorSchemes\\";
  p.host = [](int, const std::string&) { return false; };
  EXPECT_EQ(SyncClutFiles(p, global.path(), schemes), 0);
  EXPECT_FALSE(p.FolderExists(schemes));
  SetUp();
  EXPECT_EQ(SyncClutFiles(p, global.path(), schemes), 50);
  EXPECT_FALSE(p.FileExists(schemes + "QLT830_150.clut"));

  // The scheme list takes 50 of them and then refuses another.
  ResetColorSchemeModule();
  SetColorSchemeFolder(app / "ColorSchemes");
  Write(schemes + "zz_own.clut", "x");
  LoadColorSchemeList(p);
  EXPECT_FALSE(CanAddColorScheme());
  EXPECT_EQ(GetColorSchemeAt(0), schemes + "QLT830_100.clut");
  EXPECT_EQ(GetColorSchemeAt(49), schemes + "QLT830_149.clut");
  EXPECT_EQ(GetColorSchemeAt(50), "");
  int position = -1;
  EXPECT_TRUE(FindColorScheme(schemes + "qlt830_105.CLUT", position));
  EXPECT_EQ(position, 5);
  EXPECT_FALSE(FindColorScheme(schemes + "zz_own.clut", position));
  ASSERT_TRUE(p.RemoveFile(schemes + "QLT830_100.clut"));
  ASSERT_TRUE(p.RemoveFile(schemes + "QLT830_101.clut"));
  LoadColorSchemeList(p);
  EXPECT_TRUE(CanAddColorScheme());
  EXPECT_EQ(GetColorSchemeAt(48), schemes + "zz_own.clut");
}

}  // namespace
}  // namespace tq
