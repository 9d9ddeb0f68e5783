// Loading, saving, upgrading and synchronising real files in a scratch folder, with
// faults injected into the real platform's file operations.
#include "colortable/color_table.h"

#include <gtest/gtest.h>

#include "clut_test_data.h"
#ifdef _WIN32
#include <windows.h>
#else
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace tq {
namespace {

using Calls = std::vector<std::pair<int, std::string>>;

using test::Read;
using test::Write;

// Fails the n-th call (from 1) of one file operation.
Platform::FaultHook FailNth(std::string operation, int n) {
  return [operation, n, count = 0](std::string_view op, const std::string&) mutable -> std::optional<IoStatus> {
    if (op == operation && ++count == n) return IoStatus::Fail(112, "There is not enough space on the disk.");  // ERROR_DISK_FULL
    return std::nullopt;
  };
}

using ColorTableFiles = test::ClutFolder;

TEST_F(ColorTableFiles, LoadFillsTableAndRowsAndKeepsValuesOfUnreadableLines) {
  Write(state.ClutFileName, "  1    2    3  # 0: x Version=93.07\r\njunk\r\n -1   -1   -1  \n255 255 255");
  state.ColorIndexValue[1] = 42;
  ASSERT_TRUE(LoadColorTable(p, module, state, true, LoadReport::ToUser(texts)));
  EXPECT_EQ(state.ColorIndexValue[0], 197121);
  EXPECT_EQ(state.ColorIndexValue[1], 42);
  EXPECT_EQ(state.rows[1].kind, RowColour::Kind::Unreadable);
  EXPECT_EQ(state.ColorIndexValue[2], kClutNotDefined);
  EXPECT_EQ(state.rows[2].kind, RowColour::Kind::NotDefined);
  EXPECT_EQ(state.ColorIndexValue[3], 0xFFFFFF);
  EXPECT_EQ(state.ColorIndexValue[4], 0xC0C0C0);  // beyond the end: unreadable
  EXPECT_FALSE(state.ClutError);
}

TEST_F(ColorTableFiles, FailedLoadsTellTheUserButNeverTheHostsReads) {
  const std::string present = state.ClutFileName;
  for (const LoadReport report : {LoadReport::ToUser(texts), LoadReport::Quiet()}) {
    p.prompts.clear();
    p.answers = {kIdOk, kIdOk};
    state.ClutError = false;
    state.ClutFileName = dir / "none.clut";
    EXPECT_FALSE(LoadColorTable(p, module, state, true, report));
    state.ClutFileName = present;
    p.SetFaultHook(FailNth("ReadFile", 2));  // the version check reads first, then the load
    EXPECT_FALSE(LoadColorTable(p, module, state, true, report));
    p.SetFaultHook(nullptr);
    EXPECT_TRUE(state.ClutError);
    if (!report.User()) {
      EXPECT_TRUE(p.prompts.empty());
      continue;
    }
    ASSERT_EQ(p.prompts.size(), 2u);
    EXPECT_EQ(p.prompts[0].text, GetString(1305) + dir / "none.clut");
    EXPECT_EQ(p.prompts[1].text, GetString(1316) + present + "\r\nThere is not enough space on the disk.");
    EXPECT_EQ(p.prompts[1].style, kMbIconCritical);
  }
}

TEST_F(ColorTableFiles, LoadThenSaveOfTheFactoryFileChangesNoByte) {
  const std::string before = Read(state.ClutFileName) + "free text after the table\r\nno line end";
  Write(state.ClutFileName, before);
  ASSERT_TRUE(LoadColorTable(p, module, state, true, LoadReport::ToUser(texts)));
  ASSERT_TRUE(SaveColorTable(p, texts, state));
  EXPECT_EQ(Read(state.ClutFileName), before);
  EXPECT_EQ(p.host_calls, (Calls{{kHostFileNotice, state.ClutFileName}}));
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
  ASSERT_TRUE(SaveColorTable(p, texts, state));
  EXPECT_EQ(Read(state.ClutFileName), " 12   11   10  # a Version=93.07\r\n2 2 2 # b\r\n 12   11   10  \r\n -1   -1   -1  \r\n");
}

TEST_F(ColorTableFiles, UnlockedFileIsWrittenOnlyWhenTheUserSaysYes) {
  ASSERT_TRUE(p.RemoveFile(state.ClutFileName + ".lock"));
  const std::string before = Read(state.ClutFileName);
  p.answers = {kIdNo, kIdYes};
  EXPECT_FALSE(SaveColorTable(p, texts, state));
  EXPECT_EQ(Read(state.ClutFileName), before);
  EXPECT_EQ(p.prompts[0].text,
            GetString(1309) + state.ClutFileName + "\r\n" + GetString(1310) + "\r\n\r\n" + GetString(1311));
  EXPECT_EQ(p.prompts[0].buttons, kMbYesNo);
  EXPECT_TRUE(SaveColorTable(p, texts, state));
  EXPECT_NE(Read(state.ClutFileName), before);
}

TEST_F(ColorTableFiles, AFailureAtAnyStepOfTheSaveLeavesTheOldFileWhole) {
  const std::string before = Read(state.ClutFileName);
  for (const char* step : {"ReadFile", "WriteNewFile", "MoveReplace"}) {
    SCOPED_TRACE(step);
    p.prompts.clear();
    p.SetFaultHook(FailNth(step, 1));
    p.answers = {kIdOk};
    state.ClutError = false;
    EXPECT_FALSE(SaveColorTable(p, texts, state));
    EXPECT_TRUE(state.ClutError);  // so that OK keeps the editor and its colours open
    EXPECT_EQ(Read(state.ClutFileName), before);
    EXPECT_TRUE(NoTempFiles());
    EXPECT_TRUE(p.host_calls.empty());
    ASSERT_EQ(p.prompts.size(), 1u);
    EXPECT_EQ(p.prompts[0].text, GetString(1312) + state.ClutFileName + "\r\nThere is not enough space on the disk.\r\n\r\n" +
                                     GetString(1313));
  }
}

// A save replaces the content only: the file keeps what makes it that file.
TEST_F(ColorTableFiles, ASaveKeepsTheFilesAttributesPermissionsAndLinks) {
  const std::string before = Read(state.ClutFileName);
#ifdef _WIN32
  const char* path = state.ClutFileName.c_str();
  ASSERT_TRUE(SetFileAttributesA(path, FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM));
  ASSERT_TRUE(SaveColorTable(p, texts, state));
  EXPECT_EQ(GetFileAttributesA(path) & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM),
            DWORD{FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM});
  const std::string target = state.ClutFileName;
#else
  // Reached through a link from another folder, with permissions of its own.
  test::ScratchFolder elsewhere;
  const std::string target = posix::NativePath(state.ClutFileName), link = posix::NativePath(elsewhere / "linked.clut");
  ASSERT_EQ(::chmod(target.c_str(), 0640), 0);
  ASSERT_EQ(::symlink(target.c_str(), link.c_str()), 0);
  state.ClutFileName = link;
  p.answers = {kIdYes};  // no lock file beside the link: saved when the user says so
  ASSERT_TRUE(SaveColorTable(p, texts, state));
  struct stat seen{};
  ASSERT_EQ(::lstat(link.c_str(), &seen), 0);
  EXPECT_TRUE(S_ISLNK(seen.st_mode));
  ASSERT_EQ(::stat(target.c_str(), &seen), 0);
  EXPECT_EQ(seen.st_mode & 0777, 0640u);
#endif
  EXPECT_NE(Read(target), before);
  EXPECT_TRUE(NoTempFiles());
}

TEST_F(ColorTableFiles, AnUpgradeIsOneReplaceSoAFailureLeavesTheOldFileOrTheNewOne) {
  const std::string old = JoinClutLines(test::OwnLines("93.02")) + "trailer\r\n";
  std::string upgraded;
  // Every file operation the load makes fails once, at each of its first three calls.
  for (const char* step : {"", "ReadFile", "WriteNewFile", "MoveReplace", "CopyFileTo"}) {
    for (int n = 1; n <= 3; ++n) {
      SCOPED_TRACE(std::string(step) + " #" + std::to_string(n));
      Write(state.ClutFileName, old);
      p.SetFaultHook(FailNth(step, n));
      p.allow_unscripted = true;
      LoadColorTable(p, module, state, true, LoadReport::Quiet());
      p.SetFaultHook(nullptr);
      const std::string now = Read(state.ClutFileName);
      if (upgraded.empty()) upgraded = now;
      EXPECT_TRUE(now == old || now == upgraded);
      // Loading again never moves the extended colours a second time.
      ASSERT_TRUE(LoadColorTable(p, module, state, true, LoadReport::Quiet()));
      EXPECT_EQ(Read(state.ClutFileName), upgraded);
    }
  }
  const auto lines = SplitClutLines(upgraded).lines;
  ASSERT_EQ(lines.size(), 286u);  // the trailer is dropped by the upgrade
  EXPECT_EQ(lines[0], "0 7 9 # mine 0 Version=93.07");
  EXPECT_EQ(lines[130], test::FactoryLines()[130]);
  EXPECT_TRUE(NoTempFiles());
}

TEST_F(ColorTableFiles, WithoutAReferenceTheUserIsToldOnceAndTheFileOnlyReMarked) {
  ASSERT_TRUE(p.RemoveFile(dir / "QLT830_colors$clut"));
  const auto own = test::OwnLines("93.04");
  Write(state.ClutFileName, JoinClutLines(own));
  p.allow_unscripted = true;  // and "DVHOME not found" after each upgrade: this machine has no toolkit
  ASSERT_TRUE(LoadColorTable(p, module, state, true, LoadReport::ToUser(texts)));
  ASSERT_TRUE(LoadColorTable(p, module, state, true, LoadReport::ToUser(texts)));
  EXPECT_EQ(p.prompts.size(), 2u);
  EXPECT_EQ(p.prompts[0].text, GetString(1325) + state.ClutFileName + GetString(1326) + "93.04" + GetString(1327) +
                                   "93.07" + GetString(1328));
  auto expected = own;
  expected[0] = "0 7 9 # mine 0 Version=93.07";
  EXPECT_EQ(SplitClutLines(Read(state.ClutFileName)).lines, expected);

  // The reference of the scheme folder's default table stands in for a missing one.
  const std::string other = dir / "QLT830_other.clut";
  Write(other, JoinClutLines(own));
  Write(dir / "QLT830_colors$clut", test::SourceFile("data/QLT830_colors$clut"));
  SetColorSchemeFolder(module, dir.path().substr(0, dir.path().size() - 1));
  state.ClutFileName = other;
  ASSERT_TRUE(LoadColorTable(p, module, state, true, LoadReport::ToUser(texts)));
  EXPECT_EQ(SplitClutLines(Read(other)).lines[18], test::FactoryLines()[18]);
}

class Sync : public ::testing::Test {
 protected:
  void SetUp() override {
    p.host = [this](int kind, const std::string& text) { return kind != kHostCreateFolder || p.CreateFolder(text).ok; };
  }
  test::ScratchFolder global, app;
  std::string schemes = app / "ColorSchemes\\";
  test::TestPlatform p;
};

TEST_F(Sync, CopiesPrefixedTablesAndReferencesOnceAndNeverOverwritesATable) {
  const std::string table = test::SourceFile("data/QLT830_colors.clut");
  for (const char* name : {"QLT830_colors.clut", "QLT830_colors$clut", "QLT830_night.clut", "QLT830_colors.clut.lock", "other.clut"})
    Write(global / name, table);
  EXPECT_EQ(SyncClutFiles(p, global.path(), schemes), 3);
  EXPECT_EQ(p.host_calls, (Calls{{kHostCreateFolder, schemes}, {kHostFileNotice, schemes + "QLT830_colors.clut"},
                                 {kHostFileNotice, schemes + "QLT830_night.clut"}}));  // a new reference is not announced
  Write(schemes + "QLT830_night.clut", "edited by the application");
  // A reference whose marker is empty has the same (empty) version as one without a marker.
  Write(global / "QLT830_colors$clut", "0 0 0 # 0\r\n");
  Write(schemes + "QLT830_colors$clut", "0 0 0 # 0 Version=\r\n");
  p.host_calls.clear();
  EXPECT_EQ(SyncClutFiles(p, global.path(), schemes), 0);
  EXPECT_TRUE(p.host_calls.empty());
  EXPECT_EQ(Read(schemes + "QLT830_night.clut"), "edited by the application");
  // A reference of another version is refreshed and announced.
  Write(global / "QLT830_colors$clut", "  0    0    0  # 0: Black Version=93.08\r\n");
  EXPECT_EQ(SyncClutFiles(p, global.path(), schemes), 1);
  EXPECT_EQ(p.host_calls, (Calls{{kHostFileNotice, schemes + "QLT830_colors$clut"}}));
}

TEST_F(Sync, TheSchemeFolderIsAskedForEvenWithoutTablesAndReferencesGoByTheFullPath) {
  EXPECT_EQ(SyncClutFiles(p, global.path(), schemes), 0);
  EXPECT_EQ(p.host_calls, (Calls{{kHostCreateFolder, schemes}}));
  // A dot in the global folder's name turns into "$" as well: its reference names nothing.
  const std::string dotted = global / "dv.1\\";
  ASSERT_TRUE(p.CreateFolder(dotted));
  Write(dotted + "QLT830_colors.clut", "x");
  Write(dotted + "QLT830_colors$clut", "x");
  EXPECT_EQ(SyncClutFiles(p, dotted, schemes), 1);
  EXPECT_FALSE(p.FileExists(schemes + "QLT830_colors$clut"));
}

TEST_F(Sync, AtMostFiftyTablesAndTheSchemeListSortedIgnoringCase) {
  for (int i = 0; i < 51; ++i) Write(global / ("QLT830_" + std::to_string(100 + i) + ".clut"), "x");
  EXPECT_EQ(SyncClutFiles(p, global.path(), schemes), 50);
  EXPECT_FALSE(p.FileExists(schemes + "QLT830_150.clut"));

  ColorSchemeModule module;
  SetColorSchemeFolder(module, app / "ColorSchemes");
  Write(schemes + "\xc3\x9c" "bersicht.clut", "x");  // Übersicht
  LoadColorSchemeList(p, module);
  EXPECT_FALSE(CanAddColorScheme(module));
  EXPECT_EQ(GetColorSchemeAt(module, 49), schemes + "QLT830_149.clut");
  EXPECT_EQ(GetColorSchemeAt(module, 50), "");
  int position = -1;
  EXPECT_TRUE(FindColorScheme(p, module, schemes + "qlt830_105.CLUT", position));
  EXPECT_EQ(position, 5);
  for (const char* name : {"QLT830_100.clut", "QLT830_101.clut"}) ASSERT_TRUE(p.RemoveFile(schemes + name));
  LoadColorSchemeList(p, module);
  EXPECT_TRUE(CanAddColorScheme(module));
  EXPECT_TRUE(FindColorScheme(p, module, schemes + "\xc3\xbc" "bersicht.CLUT", position));  // übersicht
  EXPECT_EQ(position, 48);
}

}  // namespace
}  // namespace tq
