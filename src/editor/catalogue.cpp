#include "editor/catalogue.h"

#include <algorithm>

#include "colortable/color_table.h"
#include "support/localization.h"
#include "support/string_ids.h"

namespace tq {

const std::array<TabPage, kPageCount> kTabPages = {{
    {"StatusTab", "GroupStatus", "fraStatus", 2, {{{0, 20}, {100, 20, 480, 1210}}}, 2},
    {"BusbarTab", "GroupBusbar", "fraBusbar", 3, {{{20, 20}, {40, 20}, {60, 20}}}, 3},
    {"MiscTab", "GroupMisc", "fraMisc", 1, {{{80, 20}}}, 0},
    // The second frame has no category item, so it is never shown.
    {"AlarmDisplayTab", "GroupAlarmDisplay", "fraAlarmDisplay", 2, {{{120, 10}, {130, 10}}}, 0},
    {"EventDisplayTab", "GroupEventDisplay", "fraEventDisplay", 1, {{{140, 10}}}, 0},
    {"BlockingDisplayTab", "GroupBlockingDisplay", "fraBlockingDisplay", 1, {{{150, 10}}}, 0},
    {"TrendsDisplayTab", "GroupTrendsDisplay", "fraTrendsDisplay", 2, {{{160, 10}, {170, 10}}}, 2},
    {"ReportsDisplayTab", "GroupReportsDisplay", "fraReportsDisplay", 2, {{{180, 10}, {190, 10}}}, 2},
    {"SignalDisplayTab", "GroupSignalDisplay", "fraSignalDisplay", 1, {{{200, 10}}}, 0},
    {"CustomColorsTab", "GroupCustomColors", "fraCustomColors", 2, {{{210, 20}, {230, 20}}}, 2},
    {"StateColorsTab", "GroupState", "fraState", 1, {{{250, 20}}}, 0},
    {"PipelineColorsTab", "GroupPipeline", "fraPipeline", 1, {{{270, 20}}}, 0},
}};

namespace {

constexpr std::array<int, kPageCount> kStripOrder = {0, 1, 10, 11, 2, 3, 4, 5, 6, 7, 8, 9};
constexpr int kSignalPage = 8, kCustomPage = 9, kPipelinePage = 11;
// Pages whose tab caption an export writes beside a row (display and custom pages).
constexpr int kFirstCaptionPage = 3, kLastCaptionPage = 9;

struct Placement {
  std::int16_t index;
  std::int16_t row;
};

// Status/Common, Network Topology/Common, Voltage Source.
constexpr Placement kFirstBlock[] = {
    {38, 0},  {42, 1},  {49, 2},  {41, 3},  {43, 4},  {39, 5},  {35, 6},  {46, 7},  {48, 8},  {45, 9},
    {47, 10}, {34, 11}, {28, 12}, {27, 13}, {25, 14}, {24, 15}, {50, 16}, {37, 17}, {44, 18}, {32, 19},
    {57, 20}, {58, 21}, {60, 22}, {56, 24}, {59, 25}, {61, 26}, {62, 28}, {64, 40}, {65, 41}, {67, 43},
    {68, 44}, {69, 45}, {70, 46}, {72, 47}, {73, 48}, {74, 49}, {75, 50}, {76, 51},
};

// Miscellaneous, Tagout, the display pages, State.
constexpr Placement kSecondBlock[] = {
    {23, 80},   {19, 81},   {16, 82},   {17, 83},   {31, 84},   {30, 85},   {1, 86},    {66, 87},
    {29, 88},   {20, 89},   {21, 90},   {22, 91},   {110, 100}, {111, 101}, {112, 102}, {113, 103},
    {114, 104}, {115, 105}, {116, 106}, {117, 107}, {118, 108}, {119, 109}, {256, 120}, {257, 121},
    {258, 122}, {262, 140}, {263, 141}, {264, 142}, {265, 143}, {266, 150}, {267, 151}, {268, 152},
    {269, 160}, {270, 161}, {272, 170}, {273, 171}, {274, 172}, {275, 173}, {276, 180}, {277, 181},
    {279, 190}, {280, 191}, {281, 192}, {282, 193}, {18, 250},  {26, 251},  {33, 252},  {36, 253},
    {100, 254}, {101, 255}, {102, 256}, {103, 257}, {104, 258}, {105, 259}, {108, 260}, {109, 261},
};

constexpr Placement kPipelineBlock[] = {
    {40, 270}, {51, 271}, {52, 272}, {53, 273}, {54, 274},  {63, 275},
    {71, 276}, {77, 277}, {78, 278}, {79, 279}, {106, 280}, {107, 281},
};

// Level k (from 1) is shown in row 59 + k with colour index 79 + k; rows 70-79 always,
// as the externally handled powered colours 6 to 15.
constexpr int kFirstVoltageIndex = 80;
constexpr int kFirstPoweredLevel = 11;

template <std::size_t N>
void Place(ColorRowMapArray& map, const Placement (&block)[N]) {
  for (const Placement& p : block) map[p.index] = p.row;
}

}  // namespace

RowPlace PlaceOfRow(int row) {
  for (int page = 0; page < kPageCount; ++page) {
    const TabPage& p = kTabPages[page];
    for (int f = 0; f < p.frame_count; ++f) {
      const CategoryFrame& frame = p.frames[f];
      if (row >= frame.first_row && row < frame.first_row + frame.row_count)
        return {page, f, row - frame.first_row};
    }
  }
  return {};
}

int RowTop(int row) {
  const RowPlace place = PlaceOfRow(row);
  if (place.page < 0) return 0;
  return kTabPages[place.page].frames[place.frame].first_top + kRowPitch * place.position;
}

std::vector<int> TabStrip(bool pipeline_enabled) {
  std::vector<int> strip;
  for (int page : kStripOrder) {
    if (page == kSignalPage || page == kCustomPage) continue;
    if (page == kPipelinePage && !pipeline_enabled) continue;
    strip.push_back(page);
  }
  return strip;
}

int ShownFrame(int page, int category) {
  if (category < 0) return 0;
  return std::min(category, kTabPages[page].frame_count - 1);
}

TabSelection::TabSelection(bool pipeline_enabled) : strip_(TabStrip(pipeline_enabled)) {
  for (int page = 0; page < kPageCount; ++page) category_[page] = kTabPages[page].category_count > 0 ? 0 : -1;
}

void TabSelection::SelectPosition(int position) {
  if (position >= 0 && position < static_cast<int>(strip_.size())) selected_ = position;
}

int TabSelection::TabNumber() const { return strip_[selected_]; }

void TabSelection::SetTabNumber(int value) {
  value = std::max(value, 0);
  value = std::min(value, static_cast<int>(strip_.size()) - 1);
  selected_ = value;
}

void TabSelection::CtrlTab(bool backwards) {
  const int last = static_cast<int>(strip_.size()) - 1;
  const int tab = TabNumber();
  if (backwards)
    SetTabNumber(tab == 0 ? last : tab - 1);
  else
    SetTabNumber(tab == last ? 0 : tab + 1);
}

void TabSelection::SetCategoryNumber(int value) {
  const int page = TabNumber();
  const int count = kTabPages[page].category_count;
  if (count == 0) return;
  category_[page] = std::min(std::max(value, 0), count - 1);
}

std::string GetTabCaptionOfRow(const LanguageTexts& texts, const std::vector<int>& strip, int row) {
  const int page = PlaceOfRow(row).page;
  if (page < kFirstCaptionPage || page > kLastCaptionPage) return "";
  if (std::find(strip.begin(), strip.end(), page) == strip.end()) return "";
  return texts.Get(TabCaptionId(page));
}

std::string GetCategoryNameOfRow(const LanguageTexts& texts, int row) {
  const RowPlace place = PlaceOfRow(row);
  if (place.page < 0 || place.frame >= kTabPages[place.page].category_count) return "";
  return texts.Get(CategoryNameId(place.page, place.frame));
}

VoltageRowNames InitColorRowMap(const LanguageTexts& texts, ColorRowMapArray& map, ColorTableArray& table,
                                const VoltageLevels& levels, bool pipeline_enabled) {
  map.fill(-1);
  table.fill(kButtonFaceGrey);
  Place(map, kFirstBlock);

  VoltageRowNames names;
  for (int i = 0; i < kVoltageRowCount; ++i) names[i] = texts.Get(RowNameId(kFirstVoltageRow + i));
  const int shown = std::min(static_cast<int>(levels.names.size()), kVoltageRowCount);
  for (int i = 0; i < shown; ++i) {
    map[kFirstVoltageIndex + i] = static_cast<std::int16_t>(kFirstVoltageRow + i);
    names[i] = levels.names[i];
  }
  for (int k = kFirstPoweredLevel; k <= kVoltageRowCount; ++k) {
    map[kFirstVoltageIndex + k - 1] = static_cast<std::int16_t>(kFirstVoltageRow + k - 1);
    std::string& name = names[k - 1];
    // The host's count, not the names, decides the prefix: after a failed translation
    // the design name stays in front of the suffix.
    name = (levels.count >= k ? name + " + " : std::string()) + texts.Get(sid::kPowered) + " " + std::to_string(k - 5) +
           " " + texts.Get(sid::kExternal);
  }

  Place(map, kSecondBlock);
  if (pipeline_enabled) Place(map, kPipelineBlock);
  return names;
}

int FindColorRow(const ColorRowMapArray& map, int row) {
  for (int i = 0; i < kClutIndexCount; ++i)
    if (map[i] == row) return i;
  return -1;
}

std::string RowName(const LanguageTexts& texts, int row, const VoltageRowNames& voltage_names) {
  if (row >= kFirstVoltageRow && row < kFirstVoltageRow + kVoltageRowCount) return voltage_names[row - kFirstVoltageRow];
  return texts.Get(RowNameId(row));
}

IndexCatalogue::IndexCatalogue(const LanguageTexts& texts) : texts_(texts), strip_(TabStrip(true)) {
  VoltageLevels levels;
  for (int k = 1; k <= 10; ++k) levels.names.push_back("Voltage level " + std::to_string(k));
  levels.count = static_cast<int>(levels.names.size());
  ColorTableArray unused;
  voltage_names_ = InitColorRowMap(texts_, map_, unused, levels, /*pipeline_enabled=*/true);
}

bool IndexCatalogue::Shown(int index) const {
  return index >= 0 && index < kClutIndexCount && map_[index] >= 0 && FindColorRow(map_, map_[index]) == index;
}

std::string IndexCatalogue::Name(int index) const {
  return Shown(index) ? RowName(texts_, map_[index], voltage_names_) : "";
}

std::string IndexCatalogue::Tab(int index) const {
  return Shown(index) ? GetTabCaptionOfRow(texts_, strip_, map_[index]) : "";
}

std::string IndexCatalogue::Category(int index) const {
  return Shown(index) ? GetCategoryNameOfRow(texts_, map_[index]) : "";
}

std::string IndexCatalogue::Label(int index) const {
  const std::string tab = Tab(index), category = Category(index);
  if (index < kClutStandardCount || tab.empty()) return Name(index);
  return tab + (category.empty() ? "" : " (" + category + ")") + ": " + Name(index);
}

}  // namespace tq
