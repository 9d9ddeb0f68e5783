// The colour table lines: parser, splitting, the merge of a save and the upgrade.
// Expected bytes are written out by hand from the file rules.
#include "colortable/clut_format.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "clut_test_data.h"

namespace tq {
namespace {

TEST(ParseClutLine, ColoursStatesAndJunk) {
  const std::pair<std::string, std::int32_t> cases[] = {
      {"255  255  255  ", 0xFFFFFF},
      {"  0    0    0  # 0: Black", 0},
      {"#  1    2    3  # 256: Alarm", 197121},
      {"+5 128 255", 5 + 128 * 256 + 255 * 65536},
      {"1 2", kClutUnreadable},
      {"1 2 3 4", kClutUnreadable},
      {"1 2 3 word", kClutUnreadable},
      {"256 0 0", kClutUnreadable},
      {"", kClutUnreadable},
      {"12abc 0 0", kClutUnreadable},
      {"1\t2\t3", kClutUnreadable},  // only blanks separate fields
      {"1 2 3\r", kClutUnreadable},  // a lone CR is part of the line
      {"99999999999999999999 0 0", kClutUnreadable},
      {" -1   -1   -1  ", kClutNotDefined},
      {"-1 -1 7 junk", kClutNotDefined},  // blue, count and junk do not matter
      {"-1 5 5", kClutUnreadable},
      // The marker appended by an upgrade to a line without comment joins the blue field.
      {"  0    0    0  \tVersion=93.07", kClutUnreadable},
  };
  for (const auto& [line, value] : cases) EXPECT_EQ(ParseClutLine(line), value) << line;
}

TEST(SplitClutLines, LineEndsAsTheTextStreamReadsThem) {
  using V = std::vector<std::string>;
  EXPECT_EQ(SplitClutLines("").lines, V{});
  EXPECT_EQ(SplitClutLines("a\r\nb\nc").lines, (V{"a", "b", "c"}));
  EXPECT_EQ(SplitClutLines("a\rb\r\n\r\n").lines, (V{"a\rb", ""}));
  const ClutLines two = SplitClutLines(std::string("1\r\n2\n3\r\nrest\0\r\n", 15), 2);
  EXPECT_EQ(two.lines, (V{"1", "2"}));
  EXPECT_EQ(two.trailer, std::string("3\r\nrest\0\r\n", 10));
}

TEST(MergeClutSave, NewFieldsOldCommentsSameLineCountTrailerByteForByte) {
  ClutNewLines lines;
  lines[0] = FormatClutLine(0, 0x030201);
  lines[1] = FormatClutLine(1, 0xFFFFFF);
  lines[2] = FormatClutLine(2, kClutNotDefined);
  const std::string trailer = std::string("line 287\nbinary \0\xff\r\nno end", 26);
  std::string old = "1 2 3 # 0: Black # by hand\tVersion=93.07\r\n255 255   255\n#-1 -1 -1 #x#y##\r\n7 7 7 # 3: no row\r\n";
  for (int i = 4; i < kClutIndexCount; ++i) old += "1 1 1\r\n";
  const std::string merged = MergeClutSave(old + trailer, lines);
  EXPECT_TRUE(merged.starts_with("  1    2    3  # 0: Black # by hand\tVersion=93.07\r\n255  255  255  \r\n"
                                  " -1   -1   -1  #x#y##\r\n7 7 7 # 3: no row\r\n1 1 1\r\n"));
  EXPECT_EQ(merged.substr(merged.size() - trailer.size()), trailer);
  // A short file stays short; a last line without line end gets one.
  EXPECT_EQ(MergeClutSave("1 2 3 # a", lines), "  1    2    3  # a\r\n");
}

TEST(ClutNames, TablesReferencesVersionsAndLabels) {
  EXPECT_TRUE(IsClutFileName("C:\\a.b\\qlt830_Night.CLUT", true));
  EXPECT_TRUE(IsClutFileName("night.clut", false));
  for (const char* no : {"QLT830_colors.clut.lock", "QLT830_colors.clut.bak", "QLT830_colors$clut", "C:\\x.clut\\y"})
    EXPECT_FALSE(IsClutFileName(no, false)) << no;
  EXPECT_EQ(ReferenceClutPath("C:\\sc\\app.1\\QLT830_colors.clut", false), "QLT830_colors$clut");
  EXPECT_EQ(ClutVersionOfLine("# Version=93.01 Version=93.05 x"), "93.05 x");
  EXPECT_EQ(ClutVersionOfLine("  0    0    0  # 0: Black"), std::nullopt);
  auto marked = MarkClutVersion({"0 0 0 # Version=93.06 (93.06)"}, "93.06");
  EXPECT_EQ(marked.size(), 286u);
  EXPECT_EQ(marked[0], "0 0 0 # Version=93.07 (93.07)");
  EXPECT_EQ(MarkClutVersion({"  0    0    0  "}, "")[0], "  0    0    0  \tVersion=93.07");
  EXPECT_EQ(RenumberClutComment("  1    2    3  # 120: Old # 120: again", 256), "  1    2    3  # 256: Old # 256: again");
  EXPECT_EQ(RenumberClutComment("1 2 3 #abc:", 256), "1 2 3 #abc:");  // colon too close
  EXPECT_EQ(RenumberClutComment("1 2 3 # 99 9: x", 256), "1 2 3 # 2569: x");  // always five characters
}

std::vector<int> FromReference(const std::vector<std::string>& upgraded, const std::vector<std::string>& reference) {
  std::vector<int> taken;
  for (int i = 0; i < kClutIndexCount; ++i)
    if (upgraded[i] == reference[i]) taken.push_back(i);
  return taken;
}

TEST(UpgradeClutLines, EachOldVersionTakesExactlyItsIndexes) {
  const auto reference = test::FactoryLines();
  ASSERT_EQ(reference.size(), 286u);
  const std::initializer_list<std::pair<int, int>> e = {{18, 18}, {26, 26}, {33, 33}, {36, 36}, {40, 40}, {51, 55},
                                                        {63, 63}, {66, 66}, {71, 71}, {77, 79}, {100, 109}};
  const auto with = [&](std::initializer_list<std::pair<int, int>> more) {
    std::vector<std::pair<int, int>> all(e);
    all.insert(all.end(), more);
    std::vector<int> r;
    for (const auto& [from, to] : all)
      for (int i = from; i <= to; ++i) r.push_back(i);
    std::sort(r.begin(), r.end());
    return r;
  };
  const struct {
    std::string version;
    int lines;
    std::vector<int> taken;
  } cases[] = {
      {"", 286, with({{110, 116}})},
      {"93.01", 286, with({{120, 159}})},
      {"93.02", 256, with({{120, 159}, {283, 285}})},
      {"93.05", 286, with({})},
      {"93.06", 256, with({{256, 285}})},
      {"92.99", 286, {}},
  };
  for (const auto& c : cases) {
    auto file = test::OwnLines(c.version);
    file.resize(c.lines);
    EXPECT_EQ(FromReference(UpgradeClutLines(file, reference, c.version), reference), c.taken) << c.version;
  }
}

TEST(UpgradeClutLines, Version9302MovesLines120To146ToTheExtendedIndexes) {
  auto file = test::OwnLines("93.02");
  file[120] = "  1    2    3  # 120: Alarm text";
  file[146] = " 40   50   60  # 146: Last moved";
  const auto upgraded = UpgradeClutLines(file, test::FactoryLines(), "93.02");
  EXPECT_EQ(upgraded[256], "#  1    2    3  # 256: Alarm text");
  EXPECT_EQ(upgraded[257], "#121 7 9 # mine 121");  // no "# nnn:" label: left as it is
  EXPECT_EQ(upgraded[282], "# 40   50   60  # 282: Last moved");
  EXPECT_EQ(upgraded[283], "#27 7 9 # mine 283");  // not empty: the file's own line stays
  EXPECT_EQ(upgraded[160], file[160]);
}

// The editor's export writes a "not defined" colour as its button's colour; the tool
// writes the state itself, which imports back as "not defined".
TEST(LogicalColorValue, ColoursAndNotDefinedByWhoWritesThemAndBackThroughTheParser) {
  const struct {
    int index;
    std::int32_t colour;
    std::optional<std::int32_t> not_defined_as;
    const char* value;
    std::int32_t parsed;
  } rows[] = {
      {35, 0x0000FF, 0xC0C0C0, "  255    0    0  # 35: Alarm", 0x0000FF},
      {35, kClutNotDefined, 0xF0F0F0, "  240  240  240  # 35: Alarm", 0xF0F0F0},
      {35, kClutNotDefined, std::nullopt, "   -1   -1   -1  # 35: Alarm", kClutNotDefined},
      {258, 0xFFFFFF, std::nullopt, "  255  255  255  # 258: Alarm Display,Alarm", 0xFFFFFF},
      {273, 0x102030, std::nullopt, "   48   32   16  # 273: Trends (Tabular View),Alarm", 0x102030},
  };
  for (const auto& r : rows) {
    const std::string value =
        LogicalColorValue(r.index, r.colour, r.not_defined_as, "Alarm", r.index < 260 ? "Alarm Display" : "Trends",
                          r.index < 260 ? "" : "Tabular View");
    EXPECT_EQ(value, r.value);
    EXPECT_EQ(ParseClutLine(value), r.parsed) << value;
  }
}

}  // namespace
}  // namespace tq
