// Undo and redo of the editor's colours (an addition beside the editor's own commands).
//
// A step is what one command did to the rows: a colour picked, pasted or typed, a
// reset, an import or a Restore Defaults. Steps keep whole copies of the rows and
// their values (a few kilobytes), which keeps a many-row step as simple as a one-row
// step.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

#include "colortable/color_table.h"

namespace tq {

// What a step puts back: the rows as shown and the values read with them.
struct ColourRows {
  std::array<RowColour, kClutIndexCount> rows;
  std::array<std::int32_t, kClutIndexCount> values;
  static ColourRows Of(const ColorTableState& table) { return {table.rows, table.ColorIndexValue}; }
  void ApplyTo(ColorTableState& table) const {
    table.rows = rows;
    table.ColorIndexValue = values;
  }
  bool operator==(const ColourRows& other) const;
};

class ColourHistory {
 public:
  // The oldest steps go beyond this many.
  static constexpr std::size_t kDepth = 100;

  // One command changed the rows from `before` to `now`: one step, which ends what
  // could be redone. A command that changed nothing is no step.
  void Record(const ColourRows& before, const ColourRows& now);
  bool CanUndo() const { return !undo_.empty(); }
  bool CanRedo() const { return !redo_.empty(); }
  // The rows one step back (forward), nullopt when there is none; `now` is kept for
  // the way back.
  std::optional<ColourRows> Undo(const ColourRows& now);
  std::optional<ColourRows> Redo(const ColourRows& now);
  void Clear();

 private:
  static std::optional<ColourRows> Step(std::vector<ColourRows>& from, std::vector<ColourRows>& to,
                                        const ColourRows& now);
  std::vector<ColourRows> undo_, redo_;
};

}  // namespace tq
