// Colour quality of a colour table: can an operator read the lists' texts, see the
// status colours on the process display, and tell the alarm, warning, quality,
// operator-action and normal colours apart, also with a colour-vision deficiency?
//
// Pure functions over colour values as the tables hold them: 0x00BBGGRR (red in the
// low byte), kClutUnreadable and kClutNotDefined for the two states without a colour.
// Contrast follows WCAG 2.x, colour difference is CIEDE2000 (kL = kC = kH = 1) in
// CIELAB under D65, and colour-vision deficiencies are simulated with the full-severity
// matrices of Machado, Oliveira and Fernandes (2009) in linear RGB.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "colortable/clut_format.h"

namespace tq::quality {

// ---- Colour science ------------------------------------------------------------

// One sRGB channel (0..1) to linear light and back (IEC 61966-2-1). For 8-bit input
// WCAG's older threshold 0.03928 gives the same results: no byte value lies between.
double DecodeSrgb(double encoded);
double EncodeSrgb(double linear);

struct LinearRgb {
  double r, g, b;  // 0..1
};
LinearRgb ToLinear(std::int32_t colour);
// Clamps each channel to 0..1 and rounds to the nearest byte.
std::int32_t FromLinear(const LinearRgb& rgb);

// WCAG relative luminance (0 black .. 1 white) and contrast ratio (1 .. 21, either order).
double RelativeLuminance(std::int32_t colour);
double ContrastRatio(std::int32_t first, std::int32_t second);

struct Lab {
  double L, a, b;
};
// sRGB -> XYZ -> CIELAB with the white of the sRGB primaries (D65), so white is L 100, a = b = 0.
Lab ToLab(std::int32_t colour);
// CIEDE2000 with kL = kC = kH = 1; symmetric.
double Ciede2000(const Lab& first, const Lab& second);
double Ciede2000(std::int32_t first, std::int32_t second);

// ---- Colour-vision simulation --------------------------------------------------

enum class Vision { Normal, Protanopia, Deuteranopia, Tritanopia };
constexpr std::array<Vision, 4> kVisions = {Vision::Normal, Vision::Protanopia, Vision::Deuteranopia,
                                            Vision::Tritanopia};
std::string_view VisionName(Vision vision);  // "normal", "protanopia", ...

using Matrix3 = std::array<std::array<double, 3>, 3>;  // row-major: out = M * (r, g, b)
// The simulation matrix of a vision at full severity; the identity for normal vision.
const Matrix3& SimulationMatrix(Vision vision);
// The colour as the vision sees it: decode, multiply, clamp 0..1, encode.
std::int32_t Simulate(std::int32_t colour, Vision vision);

// ---- Rules ---------------------------------------------------------------------

enum class Measure { Contrast, DeltaE2000 };

// How a rule's index lists turn into the pairs it measures.
enum class Pairing {
  OnBackground,   // lists[0] (foregrounds) each against lists[1] (backgrounds)
  BetweenGroups,  // every colour of one list against every colour of each other list
  Neighbours,     // lists[0] in order, each against the next
};

struct Rule {
  std::string_view id;  // short and stable, e.g. "text.alarm_list"
  std::string_view description;
  Measure measure;
  Pairing pairing;
  std::vector<std::vector<int>> lists;  // colour indexes
  double minimum;
  double enhanced = 0;         // a stricter level reported beside pass/fail (WCAG AAA); 0: none
  bool all_visions = false;    // also under the three simulated deficiencies
};

// Every rule a colour table is held to.
const std::vector<Rule>& Rules();

// One measured pair under one vision, or one index of a rule whose colour is
// unreadable or not defined (checked false; measured is then that colour code).
struct Finding {
  std::string_view rule;
  std::vector<int> indexes;        // the pair, foreground first; or the one unusable index
  std::vector<std::string> names;  // the indexes' names, same order
  std::string_view vision;         // VisionName: "normal", "protanopia", ...
  Measure measure = Measure::Contrast;
  double measured = 0;
  double threshold = 0;
  bool checked = true;
  bool pass = false;               // checked and measured >= threshold
  bool enhanced = false;           // also the rule's enhanced level (false when it has none)
};

using ColourTable = std::array<std::int32_t, kClutIndexCount>;
using NameOf = std::function<std::string(int index)>;

// Runs every rule on a table. Pairs with an unusable colour are left out; the index
// gets one finding per rule instead, with checked false.
std::vector<Finding> Check(const ColourTable& colours, const NameOf& name_of);
// The same for one rule (Check is every rule's findings in the order of Rules()).
std::vector<Finding> CheckRule(const Rule& rule, const ColourTable& colours, const NameOf& name_of);

// One line for a report, e.g. "FAIL text.alarm_list: 258 Alarm Display: Text /
// 256 Alarm Display: Background: contrast 3.20 < 4.50 (normal)".
std::string FormatFinding(const Finding& finding);
// The findings that need attention (failed or not checkable), one line each after
// `indent`, then a count of the checks that pass; every line ends with "\n".
std::string FormatReport(const std::vector<Finding>& findings, std::string_view indent);

// The 286 colours of a colour table file's bytes, read as the editor reads them;
// a missing line is kClutUnreadable.
ColourTable ParseColourTable(std::string_view bytes);

}  // namespace tq::quality
