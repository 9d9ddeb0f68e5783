// The HTML report of a colour table, for people who would rather look than read a
// list of contrast ratios: one self-contained page (inline styles, no scripts, no
// other files) with the table's colours as swatches by tab and category, the
// findings with the colours involved side by side, and the status and alarm colours
// as the three colour-vision deficiencies see them next to normal vision.
#pragma once

#include <string>
#include <vector>

#include "quality/color_quality.h"
#include "support/localization.h"

namespace tq::clut_tool {

// Names in the language of `texts`; `title` names the table (its path); `findings` are
// quality::Check's of `colours`.
// Every swatch carries data-index (and in the vision table data-vision) and its colour
// as "background:#RRGGBB", so that tests and tools can find it.
std::string ReportHtml(const LanguageTexts& texts, const std::string& title, const quality::ColourTable& colours,
                       const std::vector<quality::Finding>& findings);

}  // namespace tq::clut_tool
