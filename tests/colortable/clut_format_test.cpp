// The colour table lines: parser, splitting, the merge of a save and the upgrade.
// Expected bytes are written out by hand from the file rules.
#include "colortable/clut_format.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "clut_test_data.h"

namespace tq {
namespace {

TEST(ParseClutLine, ColoursStatesAndJunk) {
  EXPECT_EQ(ParseClutLine("255  255  255  "), 16777215);
  EXPECT_EQ(ParseClutLine("  0    0    0  # 0: Black"), 0);
  EXPECT_EQ(ParseClutLine("#  1    2    3  # 256: Alarm"), 197121);
  EXPECT_EQ(ParseClutLine("5 128 255"), 5 + 128 * 256 + 255 * 65536);
  EXPECT_EQ(ParseClutLine("+5 128 255"), 5 + 128 * 256 + 255 * 65536);

  EXPECT_EQ(ParseClutLine("1 2"), kClutUnreadable);
  EXPECT_EQ(ParseClutLine("1 2 3 4"), kClutUnreadable);
  EXPECT_EQ(ParseClutLine("1 2 3 word"), kClutUnreadable);
  EXPECT_EQ(ParseClutLine("256 0 0"), kClutUnreadable);
  EXPECT_EQ(ParseClutLine(""), kClutUnreadable);
  EXPECT_EQ(ParseClutLine("# only a comment"), kClutUnreadable);
  EXPECT_EQ(ParseClutLine("12abc 0 0"), kClutUnreadable);
  EXPECT_EQ(ParseClutLine("1\t2\t3"), kClutUnreadable);  // only blanks separate fields
  EXPECT_EQ(ParseClutLine("1 2 3\r"), kClutUnreadable);  // a lone CR is part of the line
  EXPECT_EQ(ParseClutLine(std::string("1 2 3\0", 6)), kClutUnreadable);
  EXPECT_EQ(ParseClutLine("99999999999999999999 0 0"), kClutUnreadable);

  EXPECT_EQ(ParseClutLine(" -1   -1   -1  "), kClutNotDefined);
  EXPECT_EQ(ParseClutLine("-1 -1"), kClutNotDefined);
  EXPECT_EQ(ParseClutLine("-1 -1 7 junk"), kClutNotDefined);  // blue, count and junk do not matter
  EXPECT_EQ(ParseClutLine("-1 5 5"), kClutUnreadable);
  // The marker appended by an upgrade to a line without comment joins the blue field.
  EXPECT_EQ(ParseClutLine("  0    0    0  \tVersion=93.07"), kClutUnreadable);
  EXPECT_EQ(ParseClutLine("  0    0    0\tVersion=93.07"), kClutUnreadable);
}

TEST(ParseClutLine, HugeAndHostileLinesEndInAResult) {
  const std::string long_line(10 * 1024 * 1024, '7');
  EXPECT_EQ(ParseClutLine(long_line), kClutUnreadable);
  std::string blanks = "1 2 3" + std::string(10 * 1024 * 1024, ' ');
  EXPECT_EQ(ParseClutLine(blanks), 1 + 2 * 256 + 3 * 65536);
  std::string hashes(1024 * 1024, '#');
  EXPECT_EQ(ParseClutLine(hashes), kClutUnreadable);
}

TEST(SplitClutLines, LineEndsAsTheTextStreamReadsThem) {
  using V = std::vector<std::string>;
  EXPECT_EQ(SplitClutLines("").lines, V{});
  EXPECT_EQ(SplitClutLines("a\r\nb\r\n").lines, (V{"a", "b"}));
  EXPECT_EQ(SplitClutLines("a\nb\n").lines, (V{"a", "b"}));
  EXPECT_EQ(SplitClutLines("a\r\nb").lines, (V{"a", "b"}));
  EXPECT_EQ(SplitClutLines("a\rb\r\n\r\n").lines, (V{"a\rb", ""}));
  EXPECT_EQ(SplitClutLines(std::string("a\0b\nc", 5)).lines, (V{std::string("a\0b", 3), "c"}));

  const ClutLines two = SplitClutLines(std::string("1\r\n2\n3\r\nrest\0\r\n", 15), 2);
  EXPECT_EQ(two.lines, (V{"1", "2"}));
  EXPECT_EQ(two.trailer, std::string("3\r\nrest\0\r\n", 10));
  EXPECT_EQ(SplitClutLines("1\r\n2\r\n", 2).trailer, "");

  std::string many;
  for (int i = 0; i < 100000; ++i) many += "1 2 3\n";
  EXPECT_EQ(SplitClutLines(many).lines.size(), 100000u);
  const ClutLines cut = SplitClutLines(many, kClutIndexCount);
  EXPECT_EQ(cut.lines.size(), 286u);
  EXPECT_EQ(cut.trailer.size(), (100000u - 286u) * 6u);
}

TEST(FormatClutLine, FieldsAndTheExtendedHash) {
  EXPECT_EQ(FormatClutLine(0, 5 + 128 * 256 + 255 * 65536), "  5  128  255  ");
  EXPECT_EQ(FormatClutLine(255, 0), "  0    0    0  ");
  EXPECT_EQ(FormatClutLine(256, 197121), "#  1    2    3  ");
  EXPECT_EQ(FormatClutLine(12, kClutNotDefined), " -1   -1   -1  ");
  EXPECT_EQ(ParseClutLine(FormatClutLine(285, kClutNotDefined)), kClutNotDefined);
}

ClutNewLines AllNew(std::int32_t value) {
  ClutNewLines lines;
  for (int i = 0; i < kClutIndexCount; ++i) lines[i] = FormatClutLine(i, value);
  return lines;
}

TEST(MergeClutSave, UnchangedColoursKeepEveryByteButTheFields) {
  ClutNewLines lines;
  lines[0] = FormatClutLine(0, 0x030201);
  lines[1] = FormatClutLine(1, 0xFFFFFF);
  lines[2] = FormatClutLine(2, kClutNotDefined);
  const std::string old = "1 2 3 # 0: Black # by hand\tVersion=93.07\r\n"
                          "255 255   255\n"
                          "#-1 -1 -1 #x#y##\r\n"
                          "  7    7    7  # 3: no row\r\n";
  const std::string expected = "  1    2    3  # 0: Black # by hand\tVersion=93.07\r\n"
                               "255  255  255  \r\n"
                               " -1   -1   -1  #x#y##\r\n"
                               "  7    7    7  # 3: no row\r\n";
  EXPECT_EQ(MergeClutSave(old, lines), expected);
}

TEST(MergeClutSave, KeepsTheLineCountAndTheTrailerByteForByte) {
  std::string old256;
  for (int i = 0; i < 256; ++i) old256 += "1 1 1\r\n";
  const std::string saved = MergeClutSave(old256, AllNew(0));
  EXPECT_EQ(SplitClutLines(saved).lines.size(), 256u);
  EXPECT_EQ(saved.find('#'), std::string::npos);  // no extended line was added

  std::string old = JoinClutLines(std::vector<std::string>(286, "9 9 9 # c"));
  const std::string trailer = std::string("line 287\nbinary \0\xff\r\nno end", 26);
  const std::string merged = MergeClutSave(old + trailer, AllNew(0x0A0A0A));
  EXPECT_EQ(merged.substr(merged.size() - trailer.size()), trailer);
  EXPECT_EQ(merged.substr(0, 20), " 10   10   10  # c\r\n");
  EXPECT_EQ(merged.substr(256 * 20, 21), "# 10   10   10  # c\r\n");

  // A last line without line end gets one; nothing else is added.
  EXPECT_EQ(MergeClutSave("1 2 3 # a", AllNew(0)), "  0    0    0  # a\r\n");
  EXPECT_EQ(MergeClutSave("", AllNew(0)), "");
}

TEST(FileNames, ColourTablesReferencesAndLocks) {
  EXPECT_TRUE(IsClutFileName("C:\\a.b\\QLT830_colors.clut", true));
  EXPECT_TRUE(IsClutFileName("qlt830_Night.CLUT", true));
  EXPECT_FALSE(IsClutFileName("night.clut", true));
  EXPECT_TRUE(IsClutFileName("night.clut", false));
  EXPECT_FALSE(IsClutFileName("QLT830_colors.clut.lock", false));
  EXPECT_FALSE(IsClutFileName("QLT830_colors.clut.bak", false));
  EXPECT_FALSE(IsClutFileName("QLT830_colors$clut", false));
  EXPECT_FALSE(IsClutFileName("C:\\x.clut\\QLT830_colors", false));
  EXPECT_EQ(ReferenceClutPath("C:\\sc\\app.1\\QLT830_colors.clut", true), "C:\\sc\\app$1\\QLT830_colors$clut");
  EXPECT_EQ(ReferenceClutPath("C:\\sc\\app.1\\QLT830_colors.clut", false), "QLT830_colors$clut");
}

TEST(Version, MarkerReadReplacedAndAppended) {
  EXPECT_EQ(ClutVersionOfLine("  0    0    0  # 0: Black Version=93.07"), "93.07");
  EXPECT_EQ(ClutVersionOfLine("# Version=93.01 Version=93.05 x"), "93.05 x");
  EXPECT_EQ(ClutVersionOfLine("  0    0    0  # 0: Black"), std::nullopt);
  EXPECT_EQ(ClutVersionOfLine(""), std::nullopt);

  auto marked = MarkClutVersion({"0 0 0 # Version=93.06 (93.06)"}, "93.06");
  EXPECT_EQ(marked.size(), 286u);
  EXPECT_EQ(marked[0], "0 0 0 # Version=93.07 (93.07)");
  EXPECT_EQ(marked[285], "");
  EXPECT_EQ(MarkClutVersion({"  0    0    0  "}, "")[0], "  0    0    0  \tVersion=93.07");
}

TEST(RenumberClutComment, ReplacesTheLabelOnlyWhenAColonFollows) {
  EXPECT_EQ(RenumberClutComment("  1    2    3  # 120: Old # 120: again", 256),
            "  1    2    3  # 256: Old # 256: again");
  EXPECT_EQ(RenumberClutComment("1 2 3 #abc:", 256), "1 2 3 #abc:");  // colon too close
  EXPECT_EQ(RenumberClutComment("1 2 3", 256), "1 2 3");
  // Always five characters from the "#", so a short label is left alone or merges.
  EXPECT_EQ(RenumberClutComment("1 2 3 # 99: x", 256), "1 2 3 # 99: x");
  EXPECT_EQ(RenumberClutComment("1 2 3 # 99 9: x", 256), "1 2 3 # 2569: x");
}

// Indexes of an upgraded table that came from the reference.
std::vector<int> FromReference(const std::vector<std::string>& upgraded, const std::vector<std::string>& reference) {
  std::vector<int> taken;
  for (int i = 0; i < kClutIndexCount; ++i)
    if (upgraded[i] == reference[i]) taken.push_back(i);
  return taken;
}

std::vector<int> Range(int from, int to) {
  std::vector<int> r;
  for (int i = from; i <= to; ++i) r.push_back(i);
  return r;
}

std::vector<int> Join(std::initializer_list<std::vector<int>> parts) {
  std::vector<int> all;
  for (const auto& p : parts) all.insert(all.end(), p.begin(), p.end());
  std::sort(all.begin(), all.end());
  return all;
}

TEST(UpgradeClutLines, EachOldVersionTakesExactlyItsIndexes) {
  const auto reference = test::FactoryLines();
  ASSERT_EQ(reference.size(), 286u);
  const std::vector<int> e = {18, 26, 33, 36, 40, 51, 52, 53, 54, 55, 63, 66, 71, 77, 78, 79,
                              100, 101, 102, 103, 104, 105, 106, 107, 108, 109};
  EXPECT_EQ(FromReference(UpgradeClutLines(test::OwnLines(""), reference, ""), reference), Join({e, Range(110, 116)}));
  for (const char* v : {"93.03", "93.04", "93.05", "93.06"})
    EXPECT_EQ(FromReference(UpgradeClutLines(test::OwnLines(v), reference, v), reference), e) << v;
  for (const char* v : {"93.01", "93.02"})
    EXPECT_EQ(FromReference(UpgradeClutLines(test::OwnLines(v), reference, v), reference),
              Join({e, Range(120, 159)}))
        << v;
  EXPECT_TRUE(FromReference(UpgradeClutLines(test::OwnLines("92.99"), reference, "92.99"), reference).empty());

  // A 256-line file of any version gains the extended lines from the reference.
  auto short_file = test::OwnLines("93.06");
  short_file.resize(256);
  EXPECT_EQ(FromReference(UpgradeClutLines(short_file, reference, "93.06"), reference), Join({e, Range(256, 285)}));
  auto short_old = test::OwnLines("93.02");
  short_old.resize(256);
  EXPECT_EQ(FromReference(UpgradeClutLines(short_old, reference, "93.02"), reference),
            Join({e, Range(120, 159), Range(283, 285)}));
}

TEST(UpgradeClutLines, Version9302MovesLines120To146ToTheExtendedIndexes) {
  const auto reference = test::FactoryLines();
  auto file = test::OwnLines("93.02");
  file[120] = "  1    2    3  # 120: Alarm text";
  file[146] = " 40   50   60  # 146: Last moved";
  const auto upgraded = UpgradeClutLines(file, reference, "93.02");
  ASSERT_EQ(upgraded.size(), 286u);
  EXPECT_EQ(upgraded[256], "#  1    2    3  # 256: Alarm text");
  EXPECT_EQ(upgraded[257], "#121 7 9 # mine 121");  // no "# nnn:" label: left as it is
  EXPECT_EQ(upgraded[282], "# 40   50   60  # 282: Last moved");
  EXPECT_EQ(upgraded[283], "#27 7 9 # mine 283");  // not empty: the file's own line stays
  EXPECT_EQ(upgraded[120], reference[120]);
  EXPECT_EQ(upgraded[159], reference[159]);
  EXPECT_EQ(upgraded[160], file[160]);
  EXPECT_EQ(ParseClutLine(upgraded[256]), 197121);
}

TEST(UpgradeClutLines, MarkerWithoutHashMakesLineOneUnreadableUntilTheNextUpgrade) {
  auto lines = test::OwnLines("");
  lines[0] = "  0    0    0  ";
  const auto marked = MarkClutVersion(lines, "");
  EXPECT_EQ(ParseClutLine(marked[0]), kClutUnreadable);
  EXPECT_EQ(ClutVersionOfLine(marked[0]), "93.07");
  // A save of index 0 writes new fields and keeps only "#" comments: the marker is gone.
  ClutNewLines fresh;
  fresh[0] = FormatClutLine(0, 0);
  const auto saved = SplitClutLines(MergeClutSave(JoinClutLines(marked), fresh)).lines;
  EXPECT_EQ(saved[0], "  0    0    0  ");
  EXPECT_EQ(ClutVersionOfLine(saved[0]), std::nullopt);
}

}  // namespace
}  // namespace tq
