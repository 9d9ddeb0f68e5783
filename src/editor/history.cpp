#include "editor/history.h"

#include <algorithm>

namespace tq {

bool ColourRows::operator==(const ColourRows& other) const {
  return values == other.values && std::equal(rows.begin(), rows.end(), other.rows.begin(),
                                              [](const RowColour& a, const RowColour& b) {
                                                return a.kind == b.kind && a.colour == b.colour;
                                              });
}

void ColourHistory::Record(const ColourRows& before, const ColourRows& now) {
  if (before == now) return;
  if (undo_.size() >= kDepth) undo_.erase(undo_.begin());
  undo_.push_back(before);
  redo_.clear();
}

// One step from `from` to `to`: the rows to show, with `now` kept for the way back.
std::optional<ColourRows> ColourHistory::Step(std::vector<ColourRows>& from, std::vector<ColourRows>& to,
                                              const ColourRows& now) {
  if (from.empty()) return std::nullopt;
  ColourRows rows = std::move(from.back());
  from.pop_back();
  to.push_back(now);
  return rows;
}

std::optional<ColourRows> ColourHistory::Undo(const ColourRows& now) { return Step(undo_, redo_, now); }
std::optional<ColourRows> ColourHistory::Redo(const ColourRows& now) { return Step(redo_, undo_, now); }

void ColourHistory::Clear() {
  undo_.clear();
  redo_.clear();
}

}  // namespace tq
