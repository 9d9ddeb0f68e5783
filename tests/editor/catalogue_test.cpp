// The catalogue's tables, the row map with its voltage-level rows, and the tab and
// category selection as the host and the keyboard drive it.
#include "editor/catalogue.h"

#include <gtest/gtest.h>

#include <set>

#include "support/localization.h"

namespace tq {
namespace {

struct Built {
  ColorRowMapArray map;
  ColorTableArray table;
  VoltageRowNames names;
};

Built Build(const VoltageLevels& levels, bool pipeline) {
  Built b;
  b.table.fill(7);
  b.names = InitColorRowMap(b.map, b.table, levels, pipeline);
  return b;
}

VoltageLevels Levels(int n) {
  VoltageLevels levels{{}, n};
  for (int k = 1; k <= n && k <= kVoltageRowCount; ++k) levels.names.push_back("L" + std::to_string(k));
  return levels;
}

TEST(Catalogue, FramesTileEveryRowOnceWithTheirGeometry) {
  std::set<int> rows;
  for (const TabPage& page : kTabPages)
    for (int f = 0; f < page.frame_count; ++f)
      for (int r = 0; r < page.frames[f].row_count; ++r) EXPECT_TRUE(rows.insert(page.frames[f].first_row + r).second);
  EXPECT_EQ(rows.size(), 290u);
  EXPECT_EQ(*rows.rbegin(), 289);
  EXPECT_EQ(PlaceOfRow(139).frame, 1);
  EXPECT_EQ(RowTop(101), 840);  // the Tagout frame starts lower, under its heading
  EXPECT_EQ(RowTop(289), 7200);
  EXPECT_EQ(PlaceOfRow(290).page, -1);
}

TEST(Catalogue, RowMapPlacesEachIndexInItsRowOnce) {
  struct Case { int row, index, index_with_pipeline; };
  const Case cases[] = {{0, 38, 38},     {6, 35, 35},     {51, 76, 76},     {86, 1, 1},       {100, 110, 110},
                        {110, -1, -1},   {130, -1, -1},   {142, 264, 264},  {193, 282, 282},  {200, -1, -1},
                        {261, 109, 109}, {270, -1, 40},   {281, -1, 107},   {282, -1, -1},    {289, -1, -1}};
  for (bool pipeline : {false, true}) {
    const Built b = Build({}, pipeline);
    for (const Case& c : cases)
      EXPECT_EQ(FindColorRow(b.map, c.row), pipeline ? c.index_with_pipeline : c.index) << c.row << " " << pipeline;
    std::set<int> shown;
    for (int i = 0; i < kClutIndexCount; ++i) {
      EXPECT_EQ(b.table[i], 0xC0C0C0);
      if (b.map[i] == -1) continue;
      EXPECT_TRUE(shown.insert(b.map[i]).second) << "row " << b.map[i] << " given twice";
    }
    EXPECT_EQ(shown.size(), pipeline ? 116u : 104u);  // 94 fixed rows, 10 powered, 12 pipeline
    std::string common;  // Network Topology / Common: places 4 and 8 stay empty
    for (int row = 20; row < 40; ++row) common += IsRowShown(b.map, row) ? 'x' : '.';
    EXPECT_EQ(common, "xxx.xxx.x...........");
  }
  Built b = Build(Levels(20), true);
  InitColorRowMap(b.map, b.table, {}, false);  // a rebuild forgets the rows of the one before
  EXPECT_FALSE(IsRowShown(b.map, 60));
  EXPECT_FALSE(IsRowShown(b.map, 270));

  ColorRowMapArray map;
  map.fill(-1);
  map[200] = map[7] = 5;
  EXPECT_EQ(FindColorRow(map, 5), 7);
}

TEST(Catalogue, VoltageLevelRowsFollowTheHostsLevels) {
  const std::string design = GetString(161);
  struct Case {
    const char* what;
    VoltageLevels levels;
    int named;         // rows 60 .. 59 + named carry level names
    int suffixed;      // powered rows 70 .. 59 + suffixed keep their text in front of the suffix
  };
  const Case cases[] = {{"none", Levels(0), 0, 0},
                        {"five", Levels(5), 5, 0},
                        {"twelve", Levels(12), 12, 12},
                        {"twenty-five, twenty taken", Levels(25), 20, 20},
                        {"twelve levels, translation failed", {{}, 13}, 0, 13}};
  for (const Case& c : cases) {
    const Built b = Build(c.levels, false);
    for (int k = 1; k <= 20; ++k) {
      const int row = 59 + k;
      const bool shown = k <= c.named || k >= 11;
      EXPECT_EQ(b.map[79 + k], shown ? row : -1) << c.what << " row " << row;
      std::string name = k <= c.named ? "L" + std::to_string(k) : design;
      const std::string powered = "Powered " + std::to_string(k - 5) + " (external)";
      if (k >= 11) name = k <= c.suffixed ? name + " + " + powered : powered;
      EXPECT_EQ(RowName(row, b.names), name) << c.what << " row " << row;
    }
  }
}

TEST(Catalogue, TabNumberReadsPagesButIsSetByStripPosition) {
  EXPECT_EQ(TabStrip(false), (std::vector<int>{0, 1, 10, 2, 3, 4, 5, 6, 7}));
  EXPECT_EQ(TabStrip(true), (std::vector<int>{0, 1, 10, 11, 2, 3, 4, 5, 6, 7}));
  struct Case { bool pipeline; int set, page; };
  for (const Case& c : {Case{true, 2, 10}, {true, 3, 11}, {false, 3, 2}, {true, 99, 7}, {false, 99, 7}, {true, -5, 0}}) {
    TabSelection s(c.pipeline);
    s.SetTabNumber(c.set);
    EXPECT_EQ(s.TabNumber(), c.page) << c.set << " pipeline " << c.pipeline;
  }
}

TEST(Catalogue, CtrlTabStepsFromThePageNumber) {
  struct Case { bool pipeline, backwards; int from_position, page; };
  const Case cases[] = {
      {true, false, 0, 1},  {true, true, 0, 7},    // first tab: next, or wrap to the last
      {true, false, 2, 7},  {true, true, 2, 7},    // from State (page 10) both land on the last tab
      {true, false, 4, 11},                        // Miscellaneous (page 2) goes to position 3: Pipeline
      {true, false, 9, 6},  {false, false, 8, 7},  // from the last tab: Trends, or stays put
  };
  for (const Case& c : cases) {
    TabSelection s(c.pipeline);
    s.SelectPosition(c.from_position);
    s.CtrlTab(c.backwards);
    EXPECT_EQ(s.TabNumber(), c.page) << c.from_position << (c.backwards ? " back" : " forward");
  }
}

TEST(Catalogue, CategoryNumberIsClampedPerPageAndKeptAcrossTabs) {
  TabSelection s(false);
  s.SetTabNumber(1);  // Network Topology
  s.SetCategoryNumber(7);
  EXPECT_EQ(s.ShownFrameOf(1), 2);
  s.SetTabNumber(0);
  s.SetCategoryNumber(-3);
  EXPECT_EQ(s.CategoryNumber(), 0);
  s.SetTabNumber(1);
  EXPECT_EQ(s.CategoryNumber(), 2);
  s.SetTabNumber(3);  // Miscellaneous: no list
  s.SetCategoryNumber(1);
  EXPECT_EQ(s.CategoryNumber(), -1);
  EXPECT_EQ(s.ShownFrameOf(2), 0);
}

TEST(Catalogue, ExportNamesOfRows) {
  const std::vector<int> strip = TabStrip(false);
  struct Case { int row; const char* caption; const char* category; };
  for (const Case& c : {Case{100, "", "Tagout"}, {65, "", "Voltage Level"}, {130, "Alarm Display", ""},
                        {171, "Trends Display", "Tabular View"}, {200, "", ""}, {235, "", "Indexes 244 - 255"},
                        {250, "", ""}}) {
    EXPECT_EQ(GetTabCaptionOfRow(strip, c.row), c.caption) << c.row;
    EXPECT_EQ(GetCategoryNameOfRow(c.row), c.category) << c.row;
  }
}

}  // namespace
}  // namespace tq
