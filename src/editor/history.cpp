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

std::optional<ColourRows> ColourHistory::Undo(const ColourRows& now) {
  if (undo_.empty()) return std::nullopt;
  ColourRows back = std::move(undo_.back());
  undo_.pop_back();
  redo_.push_back(now);
  return back;
}

std::optional<ColourRows> ColourHistory::Redo(const ColourRows& now) {
  if (redo_.empty()) return std::nullopt;
  ColourRows forward = std::move(redo_.back());
  redo_.pop_back();
  undo_.push_back(now);
  return forward;
}

void ColourHistory::Clear() {
  undo_.clear();
  redo_.clear();
}

}  // namespace tq
