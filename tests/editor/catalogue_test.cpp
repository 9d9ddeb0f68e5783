// The catalogue's tables, the row map with its voltage-level rows, and the tab and
// category selection as the host and the keyboard drive it.
#include "editor/catalogue.h"

#include <gtest/gtest.h>

#include <set>

namespace tq {
namespace {

const LanguageTexts english;  // the built-in texts

struct Built {
  ColorRowMapArray map;
  ColorTableArray table;
  VoltageRowNames names;
  Built(const VoltageLevels& levels, bool pipeline) {
    table.fill(7);
    names = InitColorRowMap(english, map, table, levels, pipeline);
  }
};

VoltageLevels Levels(int n) {
  VoltageLevels levels{{}, n};
  for (int k = 1; k <= n; ++k) levels.names.push_back("L" + std::to_string(k));
  return levels;
}

TEST(Catalogue, FramesTileEveryRowOnceAndGiveTheTabAndCategoryNamesOfExports) {
  std::set<int> rows;
  for (const TabPage& page : kTabPages)
    for (int f = 0; f < page.frame_count; ++f)
      for (int r = 0; r < page.frames[f].row_count; ++r) EXPECT_TRUE(rows.insert(page.frames[f].first_row + r).second);
  EXPECT_EQ(rows.size(), 290u);
  EXPECT_EQ(*rows.rbegin(), 289);
  EXPECT_EQ(PlaceOfRow(290).page, -1);
  struct Case { int row; const char* caption; const char* category; };
  for (const Case& c : {Case{100, "", "Tagout"}, {65, "", "Voltage Level"}, {130, "Alarm Display", ""},
                        {171, "Trends Display", "Tabular View"}, {200, "", ""}, {235, "", "Indexes 244 - 255"},
                        {250, "", ""}}) {
    EXPECT_EQ(GetTabCaptionOfRow(english, TabStrip(false), c.row), c.caption) << c.row;
    EXPECT_EQ(GetCategoryNameOfRow(english, c.row), c.category) << c.row;
  }
}

TEST(Catalogue, RowMapPlacesEachIndexInItsRowOnce) {
  struct Case { int row, index, index_with_pipeline; };
  const Case cases[] = {{0, 38, 38},     {6, 35, 35},     {51, 76, 76},     {86, 1, 1},       {100, 110, 110},
                        {110, -1, -1},   {130, -1, -1},   {142, 264, 264},  {193, 282, 282},  {200, -1, -1},
                        {261, 109, 109}, {270, -1, 40},   {281, -1, 107},   {282, -1, -1},    {289, -1, -1}};
  for (bool pipeline : {false, true}) {
    Built b(Levels(20), true);
    InitColorRowMap(english, b.map, b.table, {}, pipeline);  // a rebuild forgets the rows of the one before
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
    for (int row = 20; row < 40; ++row) common += FindColorRow(b.map, row) != -1 ? 'x' : '.';
    EXPECT_EQ(common, "xxx.xxx.x...........");
  }
  ColorRowMapArray map;
  map.fill(-1);
  map[200] = map[7] = 5;
  EXPECT_EQ(FindColorRow(map, 5), 7);
}

TEST(Catalogue, VoltageLevelRowsFollowTheHostsLevels) {
  struct Case { VoltageLevels levels; int row, index; const char* name; };  // index -1: the row is hidden
  const Case cases[] = {
      {Levels(0), 60, -1, "Color Name"},  {Levels(0), 70, 90, "Powered 6 (external)"},
      {Levels(5), 64, 84, "L5"},          {Levels(5), 65, -1, "Color Name"},
      {Levels(12), 71, 91, "L12 + Powered 7 (external)"}, {Levels(12), 72, 92, "Powered 8 (external)"},
      {Levels(25), 79, 99, "L20 + Powered 15 (external)"},
      // Levels without their translation: the host's count still puts the design name in front.
      {{{}, 13}, 69, -1, "Color Name"},   {{{}, 13}, 72, 92, "Color Name + Powered 8 (external)"},
      {{{}, 13}, 73, 93, "Powered 9 (external)"},
  };
  for (const Case& c : cases) {
    const Built b(c.levels, false);
    EXPECT_EQ(FindColorRow(b.map, c.row), c.index) << c.levels.count << " levels, row " << c.row;
    EXPECT_EQ(RowName(english, c.row, b.names), c.name) << c.levels.count << " levels, row " << c.row;
  }
}

TEST(Catalogue, TabNumberReadsAPageButIsSetAndSteppedByStripPosition) {
  enum { kNext = 100, kBack = -100 };  // any other step is SetTabNumber(step)
  struct Case { bool pipeline; int from_position, step, page; };
  const Case cases[] = {
      {true, 0, 3, 11},  {false, 0, 3, 2},     {true, 0, 99, 7},    {false, 0, 99, 7},  {true, 4, -5, 0},
      {true, 0, kNext, 1}, {true, 0, kBack, 7},  // first tab: next, or wrap to the last
      {true, 2, kNext, 7}, {true, 2, kBack, 7},  // from State (page 10) both land on the last tab
      {true, 4, kNext, 11},                      // Miscellaneous (page 2) goes to position 3: Pipeline
      {true, 9, kNext, 6}, {false, 8, kNext, 7},  // from the last tab: Trends, or stays put
  };
  for (const Case& c : cases) {
    TabSelection s(c.pipeline);
    s.SelectPosition(c.from_position);
    c.step == kNext || c.step == kBack ? s.CtrlTab(c.step == kBack) : s.SetTabNumber(c.step);
    EXPECT_EQ(s.TabNumber(), c.page) << c.from_position << " step " << c.step << " pipeline " << c.pipeline;
  }
}

TEST(Catalogue, CategoryNumberIsClampedPerPageAndKeptAcrossTabs) {
  TabSelection s(false);
  struct Step { int tab, set, category, page, shown_frame; };  // set 99: no category set
  for (const Step& step : {Step{1, 7, 2, 1, 2}, {0, -3, 0, 0, 0}, {1, 99, 2, 1, 2}, {3, 1, -1, 2, 0}}) {
    s.SetTabNumber(step.tab);  // 1: Network Topology, 3: Miscellaneous without a list
    if (step.set != 99) s.SetCategoryNumber(step.set);
    EXPECT_EQ(s.CategoryNumber(), step.category) << step.tab;
    EXPECT_EQ(s.ShownFrameOf(step.page), step.shown_frame) << step.tab;
  }
}

}  // namespace
}  // namespace tq
