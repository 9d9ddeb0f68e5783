#include "editor/checks.h"

#include <algorithm>
#include <cstdio>
#include <set>
#include <utility>

#include "support/localization.h"
#include "support/string_ids.h"

namespace tq {

namespace {

using quality::Finding;
using quality::Measure;
using quality::Vision;

// "%1".."%9" in a translated text, so each language orders the parts its own way.
std::string Fill(std::string text, const std::vector<std::string>& parts) {
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const std::string key = "%" + std::to_string(i + 1);
    const auto at = text.find(key);
    if (at != std::string::npos) text.replace(at, key.size(), parts[i]);
  }
  return text;
}

// One decimal, without a trailing ".0": 4.5, 10, 5.1.
std::string Number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f", value);
  std::string s = text;
  if (s.size() > 2 && s.compare(s.size() - 2, 2, ".0") == 0) s.resize(s.size() - 2);
  return s;
}

bool NeedsAttention(const Finding& f) { return !f.pass; }

}  // namespace

quality::ColourTable ShownColours(const ColorTableState& table) {
  quality::ColourTable colours{};
  for (int index = 0; index < kClutIndexCount; ++index) {
    if (table.ColorRowMap[index] < 0) {
      colours[index] = table.ColorIndexValue[index];
      continue;
    }
    const RowColour& row = table.rows[index];
    colours[index] = row.kind == RowColour::Kind::Colour       ? row.colour
                     : row.kind == RowColour::Kind::Unreadable ? kClutUnreadable
                                                               : kClutNotDefined;
  }
  return colours;
}

EditorChecks::EditorChecks() {
  const auto& rules = quality::Rules();
  by_rule_.resize(rules.size());
  for (std::size_t r = 0; r < rules.size(); ++r) {
    std::set<int> named;
    for (const auto& list : rules[r].lists) named.insert(list.begin(), list.end());
    for (int index : named) rules_of_[index].push_back(static_cast<int>(r));
  }
}

void EditorChecks::Reset(const quality::ColourTable& colours) {
  // The same colours give the same findings: an editor opened again on an unchanged
  // table measures nothing again.
  if (evaluated_ && colours == colours_) return;
  evaluated_ = true;
  colours_ = colours;
  const auto& rules = quality::Rules();
  for (std::size_t r = 0; r < rules.size(); ++r) by_rule_[r] = quality::CheckRule(rules[r], colours_, nullptr);
}

std::vector<int> EditorChecks::Change(int index, std::int32_t colour) {
  if (index < 0 || index >= kClutIndexCount || colours_[index] == colour) return {};
  const std::int32_t old = std::exchange(colours_[index], colour);
  // Whoever is in a failed finding of a rule that runs again, before or after, may
  // read differently now: the finding came, went, or measures another value.
  std::set<int> touched;
  auto note = [&](const std::vector<Finding>& findings) {
    for (const Finding& f : findings)
      if (NeedsAttention(f)) touched.insert(f.indexes.begin(), f.indexes.end());
  };
  // A colour that is usable before and after keeps the findings as they are: only the
  // pairs it is in are measured again. Otherwise its pairs come or go: the rule runs again.
  const bool in_place = colour >= 0 && old >= 0;
  for (int r : rules_of_[index]) {
    note(by_rule_[r]);
    if (in_place) {
      for (Finding& f : by_rule_[r]) {
        if (f.indexes.size() != 2 || (f.indexes[0] != index && f.indexes[1] != index)) continue;
        const Vision vision = VisionOf(f);
        const std::int32_t a = quality::Simulate(colours_[f.indexes[0]], vision),
                           b = quality::Simulate(colours_[f.indexes[1]], vision);
        f.measured = f.measure == Measure::Contrast ? quality::ContrastRatio(a, b) : quality::Ciede2000(a, b);
        f.pass = f.measured >= f.threshold;
        const double enhanced = quality::Rules()[r].enhanced;
        f.enhanced = enhanced > 0 && f.measured >= enhanced;
      }
    } else {
      by_rule_[r] = quality::CheckRule(quality::Rules()[r], colours_, nullptr);
    }
    note(by_rule_[r]);
  }
  return std::vector<int>(touched.begin(), touched.end());
}

std::vector<const Finding*> EditorChecks::Failed() const {
  std::vector<const Finding*> out;
  for (const auto& findings : by_rule_)
    for (const Finding& f : findings)
      if (NeedsAttention(f)) out.push_back(&f);
  return out;
}

std::vector<const Finding*> EditorChecks::FailedOf(int index) const {
  std::vector<const Finding*> out;
  if (index < 0 || index >= kClutIndexCount) return out;
  for (int r : rules_of_[index])
    for (const Finding& f : by_rule_[r])
      if (NeedsAttention(f) && std::find(f.indexes.begin(), f.indexes.end(), index) != f.indexes.end())
        out.push_back(&f);
  return out;
}

int EditorChecks::FailedRules() const {
  return static_cast<int>(std::count_if(by_rule_.begin(), by_rule_.end(), [](const auto& findings) {
    return std::any_of(findings.begin(), findings.end(), NeedsAttention);
  }));
}

Vision VisionOf(const Finding& finding) {
  for (Vision v : quality::kVisions)
    if (quality::VisionName(v) == finding.vision) return v;
  return Vision::Normal;
}

std::string VisionText(const LanguageTexts& texts, Vision vision) {
  return texts.Get(sid::kFirstVision + static_cast<int>(vision));
}

std::string DescribeFinding(const LanguageTexts& texts, const Finding& f, int index, const IndexName& name_of) {
  if (!f.checked)
    return texts.Get(f.measured == kClutNotDefined ? sid::kUncheckedNotDefined : sid::kUncheckedUnreadable);
  const int other = f.indexes.size() > 1 && f.indexes[0] == index ? f.indexes[1] : f.indexes[0];
  const Vision vision = VisionOf(f);
  const std::string for_vision =
      vision == Vision::Normal ? "" : texts.Get(sid::kForVisionBefore + static_cast<int>(vision));
  std::string name = name_of ? name_of(other) : std::string();
  if (name.empty()) name = std::to_string(other);
  return Fill(texts.Get(f.measure == Measure::Contrast ? sid::kLowContrast : sid::kHardToTell),
              {name, for_vision, Number(f.measured), Number(f.threshold)});
}

std::string DescribeFindingsOf(const LanguageTexts& texts, const EditorChecks& checks, int index,
                               const IndexName& name_of) {
  // One line per other colour and measure: the same pair under several visions
  // reads as its first (normal vision comes first).
  std::string text;
  std::set<std::pair<int, int>> said;
  for (const Finding* f : checks.FailedOf(index)) {
    const int other = f->indexes.size() > 1 && f->indexes[0] == index ? f->indexes[1] : f->indexes[0];
    if (!said.insert({other, static_cast<int>(f->measure)}).second) continue;
    if (!text.empty()) text += "; ";
    text += DescribeFinding(texts, *f, index, name_of);
  }
  return text;
}

std::string FindingColours(const Finding& f, const IndexName& name_of) {
  std::string text;
  for (int index : f.indexes) {
    const std::string name = name_of ? name_of(index) : std::string();
    text += (text.empty() ? "" : " / ") + std::to_string(index) + (name.empty() ? "" : " " + name);
  }
  return text;
}

std::string FindingMeasured(const LanguageTexts& texts, const Finding& f) {
  if (!f.checked) return texts.Get(f.measured == kClutNotDefined ? sid::kShortNotDefined : sid::kShortUnreadable);
  return f.measure == Measure::Contrast ? Number(f.measured) + ":1" : "\xCE\x94" "E " + Number(f.measured);
}

std::string FindingNeeded(const Finding& f) {
  return f.measure == Measure::Contrast ? Number(f.threshold) + ":1" : "\xCE\x94" "E " + Number(f.threshold);
}

std::string ChecksSummary(const LanguageTexts& texts, const EditorChecks& checks) {
  const std::size_t findings = checks.Failed().size();
  if (findings == 0) return texts.Get(sid::kAllChecksPass);
  return Fill(texts.Get(sid::kFindingsSummary), {std::to_string(findings), std::to_string(checks.FailedRules())});
}

}  // namespace tq
