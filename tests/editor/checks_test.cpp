// The editor's live colour checks: a change re-checks exactly the rules naming its
// index and agrees with checking the whole table, and the lines a row shows.
#include "editor/checks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

#include "common/test_platform.h"

namespace tq {
namespace {

using quality::Finding;

std::vector<std::string> Lines(const std::vector<const Finding*>& findings) {
  std::vector<std::string> out;
  for (const Finding* f : findings) out.push_back(quality::FormatFinding(*f));
  return out;
}

std::vector<std::string> FullCheck(const quality::ColourTable& colours) {
  std::vector<std::string> out;
  for (const Finding& f : quality::Check(colours, nullptr))
    if (!f.pass) out.push_back(quality::FormatFinding(f));
  return out;
}

TEST(EditorChecks, AChangeRechecksOnlyTheRulesOfItsIndexAndAgreesWithTheWholeTable) {
  EditorChecks checks;
  quality::ColourTable colours = quality::ParseColourTable(test::SourceFile("data/QLT830_colors.clut"));
  checks.Reset(colours);
  ASSERT_EQ(Lines(checks.Failed()), FullCheck(colours));
  ASSERT_FALSE(checks.Failed().empty());  // the classic scheme fails several rules

  const std::int32_t grey = 0x303030;
  struct Step {
    int index;
    std::int32_t colour;
  };
  // Alarm list text onto its background and back; the unacknowledged alarm onto the
  // acknowledged one (one finding per vision); a colour made unusable.
  const Step steps[] = {{258, grey}, {256, grey}, {258, 0xEBEBEB}, {46, colours[45]}, {30, kClutNotDefined}};
  for (const Step& step : steps) {
    SCOPED_TRACE(step.index);
    // Findings of rules that do not name the index stay the very same objects.
    std::set<const Finding*> others;
    std::set<int> before;
    for (const Finding* f : checks.Failed()) {
      const auto& lists = std::find_if(quality::Rules().begin(), quality::Rules().end(),
                                       [&](const quality::Rule& r) { return r.id == f->rule; })->lists;
      const bool rule_names = std::any_of(lists.begin(), lists.end(), [&](const std::vector<int>& l) {
        return std::find(l.begin(), l.end(), step.index) != l.end();
      });
      if (!rule_names) others.insert(f);
      else before.insert(f->indexes.begin(), f->indexes.end());
    }
    colours[step.index] = step.colour;
    const std::vector<int> changed = checks.Change(step.index, step.colour);
    EXPECT_EQ(Lines(checks.Failed()), FullCheck(colours));
    std::set<int> expected = before;
    std::size_t kept = 0;
    for (const Finding* f : checks.Failed()) {
      if (others.count(f)) ++kept;
      else expected.insert(f->indexes.begin(), f->indexes.end());
    }
    EXPECT_EQ(kept, others.size());
    EXPECT_EQ(std::set<int>(changed.begin(), changed.end()), expected);
  }
  // Setting the same colour again changes nothing.
  EXPECT_TRUE(checks.Change(46, colours[45]).empty());
}

TEST(EditorChecks, ARowSaysWhatItFailsWithOncePerOtherColour) {
  const LanguageTexts english;  // the built-in texts
  EditorChecks checks;
  quality::ColourTable colours = quality::ParseColourTable(test::SourceFile("data/QLT830_highperformance.clut"));
  checks.Reset(colours);
  EXPECT_EQ(ChecksSummary(english, checks), "All checks pass");
  const IndexName name = [](int index) { return "C" + std::to_string(index); };
  EXPECT_EQ(DescribeFindingsOf(english, checks, 258, name), "");

  // The same pair failing under normal vision and the simulations reads once.
  checks.Change(46, colours[45]);
  EXPECT_EQ(DescribeFindingsOf(english, checks, 46, name).rfind("Hard to tell from C45 (\xCE\x94" "E 0, needs 10)", 0), 0u)
      << DescribeFindingsOf(english, checks, 46, name);
  checks.Change(30, kClutNotDefined);
  EXPECT_EQ(DescribeFindingsOf(english, checks, 30, name), "Cannot be checked: the color is not defined");
}

}  // namespace
}  // namespace tq
