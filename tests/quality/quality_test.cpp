// The colour quality module against published numbers (CIEDE2000 test pairs, WCAG
// contrast, simulated colours), and its rules run on our two factory tables.
#include "quality/color_quality.h"

#include "common/test_platform.h"
#include "editor/catalogue.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <set>
#include <sstream>

namespace tq::quality {
namespace {

constexpr std::int32_t Rgb(int r, int g, int b) { return r | g << 8 | b << 16; }

using test::SourceFile;
const LanguageTexts english;  // the built-in texts

TEST(QualityCiede2000, MatchesThePublishedPairsInBothOrders) {
  std::istringstream in(SourceFile("tests/data/ciede2000-sharma-2005.csv"));
  int rows = 0;
  for (std::string row; std::getline(in, row);) {
    if (row.empty() || row[0] == '#' || row[0] == 'L') continue;  // comments and the CSV header
    ++rows;
    Lab first, second;
    double expected;
    ASSERT_EQ(std::sscanf(row.c_str(), "%lf,%lf,%lf,%lf,%lf,%lf,%lf", &first.L, &first.a, &first.b, &second.L,
                          &second.a, &second.b, &expected), 7) << row;
    EXPECT_NEAR(Ciede2000(first, second), expected, 1e-4) << row;
    EXPECT_NEAR(Ciede2000(second, first), expected, 1e-4) << row;
  }
  EXPECT_EQ(rows, 34);
}

TEST(QualityContrast, KnownRatiosInEitherOrder) {
  struct Case { std::int32_t a, b; double ratio; };
  const Case cases[] = {
      {Rgb(255, 255, 255), Rgb(0, 0, 0), 21.0},     {Rgb(0x76, 0x76, 0x76), Rgb(255, 255, 255), 4.54},
      {Rgb(0x77, 0x77, 0x77), Rgb(255, 255, 255), 4.48}, {Rgb(255, 0, 0), Rgb(0, 0, 0), 5.25},  // red in the low byte
      {Rgb(0, 0, 255), Rgb(0, 0, 0), 2.44},         {Rgb(255, 0, 0), Rgb(255, 255, 255), 4.00},
      {Rgb(10, 10, 10), Rgb(10, 10, 10), 1.0},
  };
  for (const Case& c : cases) EXPECT_NEAR(ContrastRatio(c.a, c.b), c.ratio, 0.005) << std::hex << c.a << " on " << c.b;
  EXPECT_NEAR(ToLab(Rgb(255, 255, 255)).L, 100, 1e-9);
}

TEST(QualitySimulation, MixesChannelsInLinearLightAndKeepsGreys) {
  struct Case { Vision vision; std::int32_t in, out; };
  const Case cases[] = {
      {Vision::Protanopia, Rgb(255, 0, 0), Rgb(109, 95, 0)},      {Vision::Deuteranopia, Rgb(0, 255, 0), Rgb(239, 214, 58)},
      {Vision::Tritanopia, Rgb(0, 0, 255), Rgb(0, 107, 150)},     {Vision::Tritanopia, Rgb(255, 128, 0), Rgb(255, 98, 109)},
      {Vision::Protanopia, Rgb(0, 128, 255), Rgb(41, 142, 255)},  {Vision::Normal, Rgb(1, 2, 3), Rgb(1, 2, 3)},
  };
  for (const Case& c : cases) EXPECT_EQ(Simulate(c.in, c.vision), c.out) << VisionName(c.vision) << " " << std::hex << c.in;
  for (Vision vision : kVisions)
    for (int grey : {0, 64, 128, 200, 255}) EXPECT_EQ(Simulate(Rgb(grey, grey, grey), vision), Rgb(grey, grey, grey));
}

TEST(QualityRules, PairUpAsTheRuleSaysAndSetAsideUnusableColours) {
  for (const Rule& rule : Rules())
    for (const auto& list : rule.lists)
      for (int index : list) EXPECT_TRUE(index >= 0 && index < kClutIndexCount) << rule.id;
  ColourTable t;
  t.fill(Rgb(128, 128, 128));
  t[45] = kClutNotDefined;
  t[256] = kClutUnreadable;
  std::map<std::string_view, int> measured;
  std::vector<std::string> uncheckable;
  const std::vector<Finding> findings = Check(t, [](int i) { return "c" + std::to_string(i); });
  const std::string report = FormatReport(findings, "  ");  // one grey everywhere fails every rule
  EXPECT_TRUE(report.ends_with("\n  0 of " + std::to_string(findings.size()) + " checks pass\n")) << report;
  for (const Finding& f : findings) {
    ASSERT_EQ(f.names.size(), f.indexes.size());
    EXPECT_EQ(f.names.back(), "c" + std::to_string(f.indexes.back()));
    if (!f.checked) {
      uncheckable.push_back(FormatFinding(f));
      continue;
    }
    ++measured[f.rule];
  }
  EXPECT_EQ(uncheckable, (std::vector<std::string>{"CANNOT CHECK text.alarm_list: 256 c256 is unreadable",
                                                   "CANNOT CHECK graphic.process_display: 45 c45 is not defined",
                                                   "CANNOT CHECK distinct.status_groups: 45 c45 is not defined",
                                                   "CANNOT CHECK distinct.alarm_acknowledged: 45 c45 is not defined",
                                                   "CANNOT CHECK distinct.status_meanings: 45 c45 is not defined"}));
  EXPECT_EQ(measured["text.alarm_list"], 0);
  EXPECT_EQ(measured["text.trend_table"], 2);
  EXPECT_EQ(measured["distinct.alarm_acknowledged"], 0);
  // 20 colours: 190 pairs, 6 of them inside the alarm and warning groups, 17 with 45.
  EXPECT_EQ(measured["distinct.status_meanings"], 190 - 6 - 17);
  // 16 colours in groups of 4, 3, 4, 4 and 1: 99 pairs across groups, 12 of them with
  // index 45; four visions.
  EXPECT_EQ(measured["distinct.status_groups"], (99 - 12) * 4);
  EXPECT_EQ(measured["distinct.tagout_severities"], 6 * 4);
}

// Everything the Status, Network Topology, State and Pipeline tabs colour is drawn on
// the process display background; their backgrounds and reserved rows are not.
TEST(QualityRules, TheProcessDisplayRuleHoldsWhatTheFourTabsColour) {
  ColorRowMapArray map;
  ColorTableArray unused;
  VoltageLevels levels{std::vector<std::string>(10, "level"), 10};
  const VoltageRowNames voltage_names = InitColorRowMap(english, map, unused, levels, /*pipeline_enabled=*/true);
  std::set<int> drawn;
  for (int row = 0; row < kRowCount; ++row) {
    const int page = PlaceOfRow(row).page, index = FindColorRow(map, row);
    const std::string name = RowName(english, row, voltage_names);
    if (index >= 0 && (page == 0 || page == 1 || page == 10 || page == 11) && !name.ends_with(" BG") &&
        !name.starts_with("Reserved"))
      drawn.insert(index);
  }
  const auto rule = std::find_if(Rules().begin(), Rules().end(), [](const Rule& r) { return r.id == "graphic.process_display"; });
  ASSERT_NE(rule, Rules().end());
  EXPECT_EQ(std::set<int>(rule->lists[0].begin(), rule->lists[0].end()), drawn);
  EXPECT_EQ(rule->lists[1], std::vector<int>{23});
}

TEST(QualityRules, NamesComeFromTheEditorsRows) {
  const IndexCatalogue names(english);  // 259: reserved, no row
  for (auto [index, label] : {std::pair<int, const char*>{45, "Alarm"}, {23, "Process Display Background"},
                              {110, "Highest Severity (Emergency)"}, {258, "Alarm Display: Text"},
                              {273, "Trends Display (Tabular View): Background Shading"}, {259, ""}, {80, "Voltage level 1"}})
    EXPECT_EQ(names.Label(index), label) << index;
}

TEST(QualityRules, HighPerformanceSchemesPassEveryRule) {
  const IndexCatalogue names(english);
  for (const std::string scheme : {"data/QLT830_highperformance", "data/QLT830_highperformance_light"}) {
    const std::string bytes = SourceFile(scheme + ".clut");
    EXPECT_EQ(bytes, SourceFile(scheme + "$clut"));
    EXPECT_EQ(SplitClutLines(bytes).lines.size(), 286u) << scheme;
    for (const Finding& f : Check(ParseColourTable(bytes), [&](int index) { return names.Label(index); })) {
      EXPECT_TRUE(f.pass) << scheme << ": " << FormatFinding(f);
      EXPECT_TRUE(f.enhanced || !f.rule.starts_with("text.")) << scheme << ": " << FormatFinding(f);
    }
  }
}

}  // namespace
}  // namespace tq::quality
