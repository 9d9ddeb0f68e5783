// The editor's colour checks: the quality rules (quality/color_quality.h) held against
// the colours the editor shows, kept current while the user edits them. An addition
// beside the editor's own behaviour: nothing here changes what the editor saves or
// sends; the window shows the results as markers on rows and in its check window.
//
// Portable. A change re-checks only the rules that involve the changed index, so
// picking a colour stays well under a millisecond (tools/bench prints the figures).
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "colortable/color_table.h"
#include "quality/color_quality.h"
#include "support/localization.h"

namespace tq {

// The colours as the editor shows them: a shown index takes its row's state (an
// unreadable or not-defined row as kClutUnreadable / kClutNotDefined), any other
// index the table's value.
quality::ColourTable ShownColours(const ColorTableState& table);

class EditorChecks {
 public:
  EditorChecks();

  // Every rule on these colours.
  void Reset(const quality::ColourTable& colours);
  // One colour changed: only the rules naming `index` run again. Returns the indexes
  // whose findings changed (empty when none did).
  std::vector<int> Change(int index, std::int32_t colour);

  const quality::ColourTable& Colours() const { return colours_; }
  // The findings that need attention (failed or not checkable), in rule order.
  std::vector<const quality::Finding*> Failed() const;
  // Of those, the ones `index` takes part in.
  std::vector<const quality::Finding*> FailedOf(int index) const;
  // How many rules have at least one such finding.
  int FailedRules() const;

 private:
  quality::ColourTable colours_{};
  bool evaluated_ = false;  // colours_ and by_rule_ belong together
  std::vector<std::vector<quality::Finding>> by_rule_;        // per rule of Rules()
  std::array<std::vector<int>, kClutIndexCount> rules_of_;  // the rules naming each index
};

// ---- Texts -----------------------------------------------------------------------

// The name of a colour index in the editor's language (its row's name).
using IndexName = std::function<std::string(int index)>;

// The texts below are in the language of `texts`.
// One line about a finding as seen from `index`, one of its colours, e.g. "Hard to
// tell from Measurement High Alarm for deuteranopia (ΔE 5.1, needs 10)".
std::string DescribeFinding(const LanguageTexts& texts, const quality::Finding& finding, int index,
                            const IndexName& name_of);
// What a row's marker says: its findings' lines, one per other colour, joined by "; ".
std::string DescribeFindingsOf(const LanguageTexts& texts, const EditorChecks& checks, int index,
                               const IndexName& name_of);

// The columns of the check window's list.
std::string FindingColours(const quality::Finding& finding, const IndexName& name_of);  // "45 Alarm / 46 ..."
std::string FindingMeasured(const LanguageTexts& texts, const quality::Finding& finding);  // "2.1:1", "ΔE 5.1", ...
std::string FindingNeeded(const quality::Finding& finding);                              // "4.5:1", "ΔE 10"
std::string VisionText(const LanguageTexts& texts, quality::Vision vision);              // "Deuteranopia"
quality::Vision VisionOf(const quality::Finding& finding);
// "3 findings in 2 rules" or "All checks pass".
std::string ChecksSummary(const LanguageTexts& texts, const EditorChecks& checks);

}  // namespace tq
