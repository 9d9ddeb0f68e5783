// tqclut's commands on real files, through the same entry point as its programs
// (natively on the POSIX platform, under Wine on the control's own); the programs
// themselves are run by tests/tqclut/programs.sh.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "colortable/clut_format.h"
#include "common/test_platform.h"
#include "locking/lock_file_creator.h"
#include "tqclut/tqclut.h"

namespace tq {
namespace {

using clut_tool::kExitClean;
using clut_tool::kExitError;
using clut_tool::kExitFindings;

using test::Read;
using test::SourceFile;

class Tqclut : public ::testing::Test {
 protected:
  struct Result {
    int code;
    std::string out, err;
  };

  Result Run(const std::vector<std::string>& args, const clut_tool::Environment& environment = {}) {
    std::ostringstream out, err;
    const int code = clut_tool::Run(p_, args, out, err, environment);
    return {code, out.str(), err.str()};
  }
  std::string Write(const std::string& name, const std::string& bytes) {
    const std::string path = dir_ / name;
    EXPECT_TRUE(p_.WriteNewFile(path, bytes));
    return path;
  }

  test::TestPlatform p_;
  test::ScratchFolder dir_;
  const std::string factory_ = SourceFile("data/QLT830_colors.clut");
  const std::string table_ = Write("QLT830_colors.clut", factory_);
};

TEST_F(Tqclut, ShowCheckSetAndDiffOnTheFactoryTable) {

  const Result show = Run({"show", table_});
  EXPECT_EQ(show.code, kExitClean);
  EXPECT_EQ(std::count(show.out.begin(), show.out.end(), '\n'), kClutIndexCount);
  EXPECT_NE(show.out.find(" 23  #000000     (  0,   0,   0)  Process Display Background\n"), std::string::npos);
  EXPECT_EQ(show.out.find("\x1b["), std::string::npos);  // no swatches into a pipe
  clut_tool::Environment terminal;
  terminal.terminal = true;
  EXPECT_NE(Run({"show", table_}, terminal).out.find("\x1b[48;2;"), std::string::npos);
  terminal.no_color = true;
  EXPECT_EQ(Run({"show", table_}, terminal).out.find("\x1b["), std::string::npos);

  const Result check = Run({"check", table_});
  EXPECT_NE(check.out.find("  version:     93.07 (current)\n  lines:       286, line ends CR LF\n"
                           "  unreadable:  none\n  not defined: none\n"),
            std::string::npos)
      << check.out;

  const std::string copy = Write("copy.clut", factory_);
  const Result set = Run({"set", copy, "23", "128,128,128"});
  EXPECT_EQ(set.code, kExitClean) << set.err;
  std::vector<std::string> expected = SplitClutLines(factory_).lines;
  expected[23] = "128  128  128  # 23: Process display background";
  EXPECT_EQ(Read(copy), JoinClutLines(expected));  // one line changed, its comment kept
  EXPECT_FALSE(p_.FileExists(copy + ".lock"));      // the lock is given back

  // The colour in three words (the forms of one word are the colour text's test); an extended index.
  EXPECT_EQ(Run({"set", copy, "256", "4", "5", "6"}).code, kExitClean);
  EXPECT_TRUE(SplitClutLines(Read(copy)).lines[256].starts_with("#  4    5    6  # 256"));

  // Each line keeps its own line end; a colour already set writes nothing.
  std::string mixed = factory_;
  for (std::size_t at = 0; (at = mixed.find("\r\n", at)) != std::string::npos; at += 2) mixed.erase(at, 1);
  mixed.replace(mixed.find("\n"), 1, "\r\n");
  mixed.replace(mixed.find("\n  0    0    0  # 23"), 1, "\r\n");
  const std::string lf = Write("lf.clut", mixed);
  ASSERT_EQ(Run({"set", lf, "23", "#808080"}).code, kExitClean);
  std::string expected_lf = mixed;
  expected_lf.replace(expected_lf.find("  0    0    0  # 23"), 15, "128  128  128  ");
  EXPECT_EQ(Read(lf), expected_lf);
  const std::string loose = Write("loose.clut", "1 2 3 # Version=93.07\n4 5 6\n");
  const Result same = Run({"set", loose, "1", "4,5,6"});
  EXPECT_EQ(same.out, loose + ": 1 ToolTip BG: already #040506; nothing was written\n");
  EXPECT_EQ(Read(loose), "1 2 3 # Version=93.07\n4 5 6\n");

  const Result diff = Run({"diff", table_, copy});
  EXPECT_EQ(diff.code, kExitFindings);
  EXPECT_EQ(diff.out,
            " 23  #000000     -> #808080      Process Display Background\n"
            "256  #000000     -> #040506      Alarm Display: Background\n"
            "2 of 286 colours differ\n");
  EXPECT_EQ(Run({"diff", table_, table_}).code, kExitClean);
}

TEST_F(Tqclut, ImportAfterExportGivesTheSameColoursAndUpgradeKeepsWhatTheUserSet) {
  const std::string ini = dir_ / "colours.ini";
  const Result exported = Run({"export", table_, ini});
  ASSERT_EQ(exported.code, kExitClean) << exported.err;
  EXPECT_EQ(p_.IniRead("Logical Colors", "Index_23", ini), "0    0    0  # 23: Process Display Background");

  // Every exported colour changed in a copy, then imported back.
  std::vector<std::string> lines = SplitClutLines(factory_).lines;
  for (int i = 0; i < kClutIndexCount; ++i) lines[i] = FormatClutLine(i, 0x010203) + "  # mine";
  const std::string other = Write("other.clut", JoinClutLines(lines));
  const Result imported = Run({"import", ini, other});
  ASSERT_EQ(imported.code, kExitClean) << imported.err;
  EXPECT_EQ(imported.out.find(other + ": 126 colours imported from "), 0u) << imported.out;
  // Only the 160 indexes no row of the editor shows keep the copy's colour.
  const Result diff = Run({"diff", table_, other});
  EXPECT_TRUE(diff.out.ends_with("\n160 of 286 colours differ\n")) << diff.out;

  // An old table and its reference: the upgrade takes the changed indexes from the reference.
  lines = SplitClutLines(factory_).lines;
  lines[0] = "  0    0    0  # 0: Black Version=93.05";
  for (int i : {18, 26, 100}) lines[i] = FormatClutLine(i, 0x0A0B0C) + "  # old " + std::to_string(i);
  const std::string old = Write("old.clut", JoinClutLines(lines));
  Write("old$clut", factory_);
  const Result upgrade = Run({"upgrade", old});  // without a toolkit home: nothing to say about it
  EXPECT_EQ(upgrade.code, kExitClean) << upgrade.err;
  EXPECT_EQ(upgrade.out, old + ": version 93.05 -> 93.07 (changed colours taken from old$clut)\n");
  // The editor's upgrade did it (which indexes it takes is the colour table's own test).
  EXPECT_EQ(SplitClutLines(Read(old)).lines[18], SplitClutLines(factory_).lines[18]);
  EXPECT_EQ(Run({"upgrade", old}).out, old + ": already version 93.07\n");

  // A short table: the advice given is one that works.
  const std::string short_table = Write("short.clut", factory_.substr(0, factory_.rfind("\r\n", factory_.find("# 200:")) + 2));
  const Result refused = Run({"set", short_table, "250", "#010203"});
  EXPECT_NE(refused.err.find("has only 200 lines, so index 250 is not in it (put its reference file short$clut beside "
                             "it, then tqclut upgrade completes it)"), std::string::npos) << refused.err;
  Write("short$clut", factory_);
  EXPECT_NE(Run({"set", short_table, "250", "#010203"}).err.find("(tqclut upgrade completes it from short$clut)"),
            std::string::npos);
  EXPECT_EQ(Run({"upgrade", short_table}).out, short_table + ": 86 missing lines added from short$clut\n");
  EXPECT_EQ(Run({"set", short_table, "250", "#010203"}).code, kExitClean);
  EXPECT_EQ(Run({"diff", table_, short_table}).out, "250  #BCBCBC     -> #010203      (not shown by the editor)\n1 of 286 colours differ\n");

  // Entries that are no colour the editor shows are named and skipped.
  const std::string odd = Write("odd.ini", "[Logical Colors]\r\nIndex_23=1 2 3\r\nIndex_259=1 2 3\r\nIndex_300=1 2 3\r\n"
                                           "Index_24=1,,2\r\nColour=1 2 3\r\n");
  const Result partly = Run({"import", odd, other});
  EXPECT_EQ(partly.code, kExitFindings);
  EXPECT_EQ(partly.out, other + ": 1 colour imported from " + odd + ", 1 colour changed\n");
  for (const char* key : {": Index_259: the editor shows no colour 259; skipped\n", ": Index_300: there is no colour index 300",
                          ": Index_24: \"1,,2\" is not a colour; skipped\n", ": Colour: not a colour key"})
    EXPECT_NE(partly.err.find(key), std::string::npos) << partly.err;
}

TEST_F(Tqclut, BadInputGivesOneLineAndTheRightExitCodeAndWritesNothing) {
  const std::string missing = dir_ / "missing.clut";
  const std::string empty = Write("empty.clut", ""), binary = Write("binary.clut", std::string("1 2 3\n\0\xff", 8));
  std::string old_table = factory_;
  old_table.replace(old_table.find("93.07"), 5, "93.04");
  const std::string old = Write("old.clut", old_table);  // without its reference file
  const struct {
    std::vector<std::string> args;
    std::string error;  // the start of standard error after "tqclut: "
  } cases[] = {
      {{"frobnicate"}, "unknown command \"frobnicate\""},
      {{"set", table_, "23"}, "set: wrong number of arguments"},
      {{"set", table_, "23", "#GGHHII"}, "\"#GGHHII\" is not a colour"},
      {{"set", table_, "23", "1", "2"}, "\"1 2\" is not a colour"},
      {{"set", table_, "23", "--json", "#000000"}, "set takes no option --json; usage: tqclut set FILE"},
      {{"check", "--jsn", table_}, "unknown option \"--jsn\"; usage: tqclut check"},
      {{"set", binary, "1", "#000000"}, binary + " is not a colour table: it holds NUL bytes; nothing was"},
      {{"upgrade", empty}, empty + " is not a colour table: it is empty"},
      {{"upgrade", old}, "cannot upgrade " + old + ": its reference file "},
      {{"export", empty, dir_ / "out.ini"}, empty + " is not a colour table: it is empty"},
      {{"set", table_, "286", "#000000"}, "colour index 286 is out of range"},
      {{"set", table_, "-1", "#000000"}, "colour index -1 is out of range"},
      {{"set", table_, "x1", "#000000"}, "\"x1\" is not a colour index"},
      {{"set", missing, "1", "#000000"}, missing + ": no such file"},
      {{"set", dir_.path(), "1", "#000000"}, dir_.path()},
      {{"import", missing, table_}, missing + ": no such file"},
      {{"import", table_, table_}, table_ + " has no colours"},
      {{"export", table_, dir_.path()}, dir_.path()},
  };
  for (const auto& c : cases) {
    const Result r = Run(c.args);
    EXPECT_EQ(r.code, kExitError) << c.args[0];
    EXPECT_EQ(r.out, "") << c.args[0];
    EXPECT_EQ(r.err.rfind("tqclut: " + c.error, 0), 0u) << c.args[0] << ": " << r.err;
    EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
  }
  EXPECT_EQ(Read(table_), factory_);
  EXPECT_EQ(Read(binary), std::string("1 2 3\n\0\xff", 8));
  EXPECT_EQ(Read(empty), "");
  EXPECT_EQ(Read(old), old_table);
  std::vector<std::string> files = p_.ListFileNames(dir_.path());
  std::sort(files.begin(), files.end());
  EXPECT_EQ(files, (std::vector<std::string>{"QLT830_colors.clut", "binary.clut", "empty.clut", "old.clut"}));
}

TEST_F(Tqclut, CheckReportsJunkTablesLineByLineAndNeverFails) {
  std::string long_table;
  for (int i = 0; i < 5000; ++i) long_table += "1 2 3\n";
  const struct {
    const char* what;
    std::string bytes;
    const char* expected;  // in the report
  } junk[] = {
      {"empty", "", "lines:       0 (286 missing), line ends none\n  unreadable:  lines 1 to 286 (indexes 0 to 285), which are missing"},
      {"NUL bytes", std::string(300, '\0'), "no version marker"},
      {"lone CRs", std::string(400, '\r'), "lines:       1 (285 missing)"},
      {"CRs only", "0 0 0 # Version=93.07\r1 2 3\r4 5 6\r", "version:     93.07... (not current"},
      {"LF only", long_table, "lines:       5000, line ends LF"},
      {"mixed ends", "0 0 0 # Version=93.07\r\n1 2 3\n-1 -1 -1\r\n", "line ends mixed (2 CR LF, 1 LF)"},
      {"numbers out of range", "70000 0 0 # Version=93.07\n-5 1 1\n1e3 2 2\n", "unreadable:  lines 1 (index 0), 2 (index 1), 3 (index 2)"},
      {"not defined", "0 0 0 # Version=93.07\n-1 -1 -1\n", "not defined: lines 2 (index 1)"},
      {"old version", "0 0 0 # Version=93.02\n", "93.02 (not current: tqclut upgrade brings it to 93.07)"},
      {"binary", std::string("\xff\xfe\x00\x01\x80\x81", 6), "unreadable:  lines 1 (index 0)"},
  };
  for (const auto& j : junk) {
    const std::string file = Write("junk.clut", j.bytes);
    const Result r = Run({"check", file});
    EXPECT_EQ(r.code, kExitFindings) << j.what;
    EXPECT_NE(r.out.find(j.expected), std::string::npos) << j.what << ":\n" << r.out;
    const Result json = Run({"check", "--json", file});
    EXPECT_EQ(json.code, kExitFindings) << j.what;
    EXPECT_EQ(json.out.rfind("{\"tables\":[{\"file\":", 0), 0u) << json.out;
  }
  // A file that cannot be read is in the document too, its name valid UTF-8 and escaped.
  const Result json = Run({"check", "--json", dir_ / "bad\t\xff.clut"});
  EXPECT_EQ(json.code, kExitError);
  EXPECT_NE(json.out.find("bad\\u0009\xEF\xBF\xBD.clut\",\"error\":"), std::string::npos) << json.out;
}

TEST_F(Tqclut, FoldersGiveOneLinePerTableAndASummaryAndTheWorstExitCode) {
  const std::string sep(1, static_cast<char>(std::filesystem::path::preferred_separator));
  const std::string root = dir_.path().substr(0, dir_.path().size() - 1);
  for (const char* folder : {"st1", "st1\\sub", "st1\\x.clut", "st2"}) ASSERT_TRUE(p_.CreateFolder(dir_ / folder));
  Write("st1\\a.clut", SourceFile("data/QLT830_highperformance.clut"));
  Write("st1\\a$clut", factory_);        // reference files and locks are not tables of their own
  Write("st1\\a.clut.lock", factory_);
  Write("st1\\sub\\big.clut", std::string(clut_tool::kMaxFileSize + 1, '0'));
  Write("st2\\empty.CLUT", "");
  const Result flat = Run({"check", dir_ / "st1\\x.clut"});  // a folder, however named
  EXPECT_EQ(flat.code, kExitError);
  EXPECT_EQ(flat.err, "tqclut: no colour table (*.clut) in " + dir_ / "st1\\x.clut" +
                          " (--recursive also looks into subfolders)\n");

  const Result site = Run({"check", "--recursive", root});
  EXPECT_EQ(site.code, kExitError);  // the worst of clean, findings and unreadable
  const std::string st1 = root + sep + "st1" + sep, big = st1 + "sub" + sep + "big.clut";
  const std::string too_large = " is too large (" + std::to_string(clut_tool::kMaxFileSize + 1) + " bytes)";
  EXPECT_EQ(site.out, root + sep + "QLT830_colors.clut: 47 findings (47 quality findings)\n" +
                          st1 + "a.clut: clean\n" +
                          big + ": unreadable: " + big + too_large + " for a colour table or a logical-colours file\n" +
                          root + sep + "st2" + sep + "empty.CLUT: 152 findings (not a colour table, no version marker, "
                          "286 lines missing, 149 quality findings)\n"
                          "4 tables: 1 clean, 2 with findings, 1 unreadable\n");

  EXPECT_TRUE(Run({"check", root, "-r", "--json"})
                  .out.ends_with("],\"summary\":{\"tables\":4,\"clean\":1,\"with_findings\":2,\"unreadable\":1}}\n"));
}

TEST_F(Tqclut, AWriteIsRefusedWhileAnotherHoldsTheLockOrSayingWhyNoLockFileCouldBeMade) {
  clsLockFileCreator holder(p_, LanguageTexts());  // another editor, which tqclut meets only through the lock file
  std::string holder_app = "Other Display", holder_user = "operator7";
  ASSERT_EQ(holder.CreateLockFile(table_, holder_app, holder_user, LockMode::Open, true), LockResult::Locked);
  p_.allow_unscripted = true;  // the refusal is a message; tqclut's console answers it
  const std::string ini = Write("colours.ini", "[Logical Colors]\r\nIndex_23=1 2 3\r\n");
  for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
           {"set", table_, "23", "#010203"}, {"import", ini, table_}}) {
    p_.prompts.clear();
    const Result r = Run(args);
    EXPECT_EQ(r.code, kExitError) << args[0];
    EXPECT_NE(r.err.find("is locked by another editor or tool"), std::string::npos) << r.err;
    EXPECT_EQ(p_.prompts.size(), 1u) << args[0];  // the holder's names are the lock's test
  }
  EXPECT_EQ(Read(table_), factory_);

  // No holder: a lock file that cannot be made (a folder the user may not write) says why.
  const std::string other = Write("other.clut", factory_);
  p_.prompts.clear();
  p_.SetFaultHook([&](std::string_view operation, const std::string& path) -> std::optional<IoStatus> {
    if (operation == "OpenLockFile" && path == other + ".lock") return IoStatus::Fail(5, "Access is denied.");
    return std::nullopt;
  });
  const Result denied = Run({"set", other, "23", "#010203"});
  EXPECT_EQ(denied.err, "tqclut: cannot create the lock file " + other + ".lock: Access is denied.; nothing was written\n");
  EXPECT_TRUE(p_.prompts.empty());
  EXPECT_EQ(Read(other), factory_);
}

TEST(TqclutMessages, ABoxBecomesOneLine) {
  EXPECT_EQ(MessageLine("tqclut: ", "Open C:\\a.clut", "C:\\a.clut\r\nis already opened.\r\n\r\nUser: op\r\n"),
            "tqclut: Open C:\\a.clut: C:\\a.clut is already opened. User: op");
}

}  // namespace
}  // namespace tq
