// The editor's catalogue: tab pages, their categories and frames, the colour rows
// with their geometry and names, and the row map between colour indexes and rows.
//
// Everything here is data and pure functions. The editor window builds its pages,
// frames and rows from these tables; the session keeps the row map and the tab and
// category selection through them. A function that returns a name is given the
// language texts to take it from.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "colortable/clut_format.h"
#include "support/localization.h"

namespace tq {

constexpr int kRowCount = 290;   // colour rows 0-289
constexpr int kPageCount = 12;   // tab pages 0-11 (the index of the page frame)

using ColorRowMapArray = std::array<std::int16_t, kClutIndexCount>;
using ColorTableArray = std::array<std::int32_t, kClutIndexCount>;

// ---- Pages, frames and rows ----------------------------------------------------

// One category frame of a page: a column of rows, consecutive row numbers from top.
struct CategoryFrame {
  int first_row;
  int row_count;
  int first_top = 360;  // twips from the frame's top to its first row
  int heading_id = 0;   // string ID of a heading label above the rows, 0 for none
};

struct TabPage {
  std::string_view tag;          // tag of the page frame and of its tab
  std::string_view key;          // key of its tab in the strip
  std::string_view frame_array;  // name of the page's category frame array
  int frame_count;
  std::array<CategoryFrame, 3> frames;
  int category_count;            // items of the page's category list; 0: list and label disabled
};

extern const std::array<TabPage, kPageCount> kTabPages;

inline int TabCaptionId(int page) { return 901 + page; }
inline int CategoryLabelId(int page) { return 951 + page; }
inline int CategoryNameId(int page, int category) { return 1001 + 5 * page + category; }
inline int RowNameId(int row) { return 101 + row; }

// Row geometry in twips, relative to the row's category frame.
constexpr int kRowPitch = 360;
constexpr int kButtonLeft = 240, kButtonWidth = 495, kButtonHeight = 255;
constexpr int kRgbLeft = 840, kRgbWidth = 1095;
constexpr int kNameLeft = 2040;
constexpr std::string_view kRgbDesignText = "(---, ---, ---)";

// Where a row stands: page, frame index in the page's frame array, place in the frame
// (0 = top). page is -1 for a number outside 0-289.
struct RowPlace {
  int page = -1;
  int frame = -1;
  int position = -1;
};
RowPlace PlaceOfRow(int row);
// Top of the row inside its frame, in twips.
int RowTop(int row);

// ---- The strip, TabNumber and CategoryNumber -----------------------------------

// Page numbers of the strip in order, after the hidden tabs are removed: Signal
// Display and Custom Colors always go, Pipeline unless pipelines are enabled.
std::vector<int> TabStrip(bool pipeline_enabled);

// The frame of `page` shown for the page's category list index (0 without a list).
int ShownFrame(int page, int category);

// The selection of the strip and of every page's category list, as the host and the
// keyboard see it. TabNumber reads a page number but is set as a strip position; that
// asymmetry is wanted (Ctrl+Tab from the State page lands on the last tab).
class TabSelection {
 public:
  // After set-up: first tab selected, every category list at item 0.
  explicit TabSelection(bool pipeline_enabled);

  const std::vector<int>& Strip() const { return strip_; }
  int SelectedPosition() const { return selected_; }
  void SelectPosition(int position);   // a click on the strip (0-based position)

  int TabNumber() const;               // page number of the selected tab
  void SetTabNumber(int value);        // clamped into 0 .. tabs - 1, then that position
  // Ctrl+Tab, or Ctrl+Shift+Tab with backwards.
  void CtrlTab(bool backwards);

  // List index of the current page's category list; -1 when the list is empty.
  int CategoryNumber() const { return category_[TabNumber()]; }
  // Clamped into the list; nothing on a page without categories. A click on the
  // category list of the shown page sets it too.
  void SetCategoryNumber(int value);

  int ShownFrameOf(int page) const { return ShownFrame(page, category_[page]); }

 private:
  std::vector<int> strip_;
  int selected_ = 0;
  std::array<int, kPageCount> category_{};
};

// Caption of the display-page tab that holds the row, "" for other pages and for
// tabs not in the strip.
std::string GetTabCaptionOfRow(const LanguageTexts& texts, const std::vector<int>& strip, int row);
// Name of the category in which the row is shown, "" when its page has no such item.
std::string GetCategoryNameOfRow(const LanguageTexts& texts, int row);

// ---- Row map -------------------------------------------------------------------

constexpr int kFirstVoltageRow = 60;   // rows 60-79 show levels and powered colours
constexpr int kVoltageRowCount = 20;

// The voltage levels the host reported. count is the host's level count m, which the
// powered names compare with: normally names.size(); 0 when the host gave no levels;
// the number of levels + 1 when the levels came but their translation did not.
struct VoltageLevels {
  std::vector<std::string> names;
  int count = 0;
};

// Names of rows 60-79 after the voltage-level step.
using VoltageRowNames = std::array<std::string, kVoltageRowCount>;

// Resets the map to -1 and the table to kButtonFaceGrey, then places the rows: first block,
// voltage levels (at most 20) and powered rows 70-79, second block, and the pipeline
// block when enabled. Returns the names of rows 60-79.
VoltageRowNames InitColorRowMap(const LanguageTexts& texts, ColorRowMapArray& map, ColorTableArray& table,
                                const VoltageLevels& levels, bool pipeline_enabled);

// The colour index shown in `row`: the first map entry equal to it, -1 when none.
int FindColorRow(const ColorRowMapArray& map, int row);

// The row's name: string 101 + row, rows 60-79 from the voltage-level step.
std::string RowName(const LanguageTexts& texts, int row, const VoltageRowNames& voltage_names);

// The colour indexes as the editor shows them away from a host (tools, reports):
// every page, pipelines included, and ten voltage levels named "Voltage level k".
class IndexCatalogue {
 public:
  // Names in the language of `texts`, which must outlive the catalogue.
  explicit IndexCatalogue(const LanguageTexts& texts);
  // Whether a row shows the index (a row shows the first index placed in it).
  bool Shown(int index) const;
  // The row's name; "" for an index no row shows.
  std::string Name(int index) const;
  // The tab and category of a list colour's row ("" for other pages).
  std::string Tab(int index) const;
  std::string Category(int index) const;
  // The name, for the list colours with their page, which the names repeat on:
  // "Trends Display (Tabular View): Text".
  std::string Label(int index) const;

 private:
  const LanguageTexts& texts_;
  ColorRowMapArray map_;
  VoltageRowNames voltage_names_;
  std::vector<int> strip_;
};

}  // namespace tq
