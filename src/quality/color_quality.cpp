#include "quality/color_quality.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <numbers>
#include <utility>

namespace tq::quality {

namespace {

constexpr double kDegrees = 180.0 / std::numbers::pi;

// Multiplied out: pow is slow in some C runtimes, and the rules measure thousands of pairs.
double Pow7(double x) {
  const double x2 = x * x;
  return x2 * x2 * x2 * x;
}
constexpr double k25Pow7 = 6103515625.0;

double ContrastOfLuminances(double a, double b) { return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05); }

double ToByte(double encoded) { return std::round(std::clamp(encoded, 0.0, 1.0) * 255.0); }

// Linear sRGB to XYZ (IEC 61966-2-1); its rows' sums are the D65 white used for CIELAB.
constexpr Matrix3 kRgbToXyz = {{
    {0.4124, 0.3576, 0.1805},
    {0.2126, 0.7152, 0.0722},
    {0.0193, 0.1192, 0.9505},
}};

std::array<double, 3> Multiply(const Matrix3& m, double r, double g, double b) {
  return {m[0][0] * r + m[0][1] * g + m[0][2] * b, m[1][0] * r + m[1][1] * g + m[1][2] * b,
          m[2][0] * r + m[2][1] * g + m[2][2] * b};
}

double LabF(double t) {
  constexpr double d = 6.0 / 29.0;
  return t > d * d * d ? std::cbrt(t) : t / (3 * d * d) + 4.0 / 29.0;
}

// Hue angle in degrees, 0..360; 0 for a neutral colour.
double Hue(double b, double a) {
  if (a == 0 && b == 0) return 0;
  const double h = std::atan2(b, a) * kDegrees;
  return h < 0 ? h + 360 : h;
}

double CosDeg(double degrees) { return std::cos(degrees / kDegrees); }
double SinDeg(double degrees) { return std::sin(degrees / kDegrees); }

// Machado, Oliveira, Fernandes 2009, severity 1.0.
constexpr Matrix3 kIdentity = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
constexpr Matrix3 kProtanopia = {{
    {0.152286, 1.052583, -0.204868},
    {0.114503, 0.786281, 0.099216},
    {-0.003882, -0.048116, 1.051998},
}};
constexpr Matrix3 kDeuteranopia = {{
    {0.367322, 0.860646, -0.227968},
    {0.280085, 0.672501, 0.047413},
    {-0.011820, 0.042940, 0.968881},
}};
constexpr Matrix3 kTritanopia = {{
    {1.255528, -0.076749, -0.178779},
    {-0.078411, 0.930809, 0.147602},
    {0.004733, 0.691367, 0.303900},
}};

bool Usable(std::int32_t colour) { return colour >= 0; }

}  // namespace

double DecodeSrgb(double encoded) {
  return encoded <= 0.04045 ? encoded / 12.92 : std::pow((encoded + 0.055) / 1.055, 2.4);
}

double EncodeSrgb(double linear) {
  return linear <= 0.0031308 ? linear * 12.92 : 1.055 * std::pow(linear, 1 / 2.4) - 0.055;
}

LinearRgb ToLinear(std::int32_t colour) {
  // Each of the 256 channel values decoded once: the rules convert thousands of colours,
  // and pow is slow in some C runtimes (the Windows one among them).
  static const std::array<double, 256> decoded = [] {
    std::array<double, 256> table{};
    for (int v = 0; v < 256; ++v) table[v] = DecodeSrgb(v / 255.0);
    return table;
  }();
  return {decoded[colour & 0xFF], decoded[(colour >> 8) & 0xFF], decoded[(colour >> 16) & 0xFF]};
}

std::int32_t FromLinear(const LinearRgb& rgb) {
  auto byte = [](double linear) { return static_cast<std::int32_t>(ToByte(EncodeSrgb(std::clamp(linear, 0.0, 1.0)))); };
  return byte(rgb.r) | byte(rgb.g) << 8 | byte(rgb.b) << 16;
}

double RelativeLuminance(std::int32_t colour) {
  const LinearRgb c = ToLinear(colour);
  return 0.2126 * c.r + 0.7152 * c.g + 0.0722 * c.b;
}

double ContrastRatio(std::int32_t first, std::int32_t second) {
  return ContrastOfLuminances(RelativeLuminance(first), RelativeLuminance(second));
}

Lab ToLab(std::int32_t colour) {
  const LinearRgb c = ToLinear(colour);
  const auto xyz = Multiply(kRgbToXyz, c.r, c.g, c.b);
  const auto white = Multiply(kRgbToXyz, 1, 1, 1);
  const double fx = LabF(xyz[0] / white[0]), fy = LabF(xyz[1] / white[1]), fz = LabF(xyz[2] / white[2]);
  return {116 * fy - 16, 500 * (fx - fy), 200 * (fy - fz)};
}

double Ciede2000(const Lab& first, const Lab& second) {
  const double c_mean = (std::hypot(first.a, first.b) + std::hypot(second.a, second.b)) / 2;
  const double c7 = Pow7(c_mean);
  const double g = 0.5 * (1 - std::sqrt(c7 / (c7 + k25Pow7)));
  const double a1 = (1 + g) * first.a, a2 = (1 + g) * second.a;
  const double c1 = std::hypot(a1, first.b), c2 = std::hypot(a2, second.b);
  const double h1 = Hue(first.b, a1), h2 = Hue(second.b, a2);

  const double dl = second.L - first.L;
  const double dc = c2 - c1;
  double dh = 0;
  if (c1 * c2 != 0) {
    dh = h2 - h1;
    if (dh > 180)
      dh -= 360;
    else if (dh < -180)
      dh += 360;
  }
  const double dh_big = 2 * std::sqrt(c1 * c2) * SinDeg(dh / 2);

  const double l_bar = (first.L + second.L) / 2;
  const double c_bar = (c1 + c2) / 2;
  double h_bar = h1 + h2;
  if (c1 * c2 != 0) {
    if (std::abs(h1 - h2) <= 180)
      h_bar /= 2;
    else
      h_bar = h_bar < 360 ? (h_bar + 360) / 2 : (h_bar - 360) / 2;
  }
  const double t = 1 - 0.17 * CosDeg(h_bar - 30) + 0.24 * CosDeg(2 * h_bar) + 0.32 * CosDeg(3 * h_bar + 6) -
                   0.20 * CosDeg(4 * h_bar - 63);
  const double h_off = (h_bar - 275) / 25;
  const double d_theta = 30 * std::exp(-h_off * h_off);
  const double c_bar7 = Pow7(c_bar);
  const double rc = 2 * std::sqrt(c_bar7 / (c_bar7 + k25Pow7));
  const double l50 = (l_bar - 50) * (l_bar - 50);
  const double sl = 1 + 0.015 * l50 / std::sqrt(20 + l50);
  const double sc = 1 + 0.045 * c_bar;
  const double sh = 1 + 0.015 * c_bar * t;
  const double rt = -SinDeg(2 * d_theta) * rc;

  const double l = dl / sl, c = dc / sc, h = dh_big / sh;
  return std::sqrt(l * l + c * c + h * h + rt * c * h);
}

double Ciede2000(std::int32_t first, std::int32_t second) { return Ciede2000(ToLab(first), ToLab(second)); }

std::string_view VisionName(Vision vision) {
  switch (vision) {
    case Vision::Protanopia: return "protanopia";
    case Vision::Deuteranopia: return "deuteranopia";
    case Vision::Tritanopia: return "tritanopia";
    case Vision::Normal: break;
  }
  return "normal";
}

const Matrix3& SimulationMatrix(Vision vision) {
  switch (vision) {
    case Vision::Protanopia: return kProtanopia;
    case Vision::Deuteranopia: return kDeuteranopia;
    case Vision::Tritanopia: return kTritanopia;
    case Vision::Normal: break;
  }
  return kIdentity;
}

std::int32_t Simulate(std::int32_t colour, Vision vision) {
  if (vision == Vision::Normal || !Usable(colour)) return colour;
  const LinearRgb c = ToLinear(colour);
  const auto out = Multiply(SimulationMatrix(vision), c.r, c.g, c.b);
  return FromLinear({out[0], out[1], out[2]});
}

// The one table of rules. Text contrast is WCAG AA (4.5:1, AAA 7:1 reported), the
// non-text contrast of graphical objects 3:1. A difference of 10 CIEDE2000 units is
// well beyond "just noticeable" (about 1-2), so two colours of different meaning stay
// apart at a glance on a busy display. The Tagout severities and the two alarm states
// are held to the simulations too: they must be readable by every operator, not only
// by those with normal colour vision. Colours of different meaning may come close
// where groups do not demand more, but never look the same (1 unit: just noticeable).
const std::vector<Rule>& Rules() {
  static const std::vector<Rule> rules = {
      {"text.process_display", "text on the process display background", Measure::Contrast, Pairing::OnBackground,
       {{30}, {23}}, 4.5, 7.0},
      {"text.alarm_list", "alarm list text on its background", Measure::Contrast, Pairing::OnBackground,
       {{258}, {256}}, 4.5, 7.0},
      {"text.event_list", "event list text on its background", Measure::Contrast, Pairing::OnBackground,
       {{265}, {262}}, 4.5, 7.0},
      {"text.blocking_list", "blocking list text on its background", Measure::Contrast, Pairing::OnBackground,
       {{268}, {266}}, 4.5, 7.0},
      {"text.trend_table", "trend table text on its background and shading", Measure::Contrast,
       Pairing::OnBackground, {{275}, {272, 273}}, 4.5, 7.0},
      {"text.report_table", "report table text on its background and shading", Measure::Contrast,
       Pairing::OnBackground, {{282}, {279, 280}}, 4.5, 7.0},
      {"graphic.event_day_break", "event list day break on its background", Measure::Contrast,
       Pairing::OnBackground, {{264}, {262}}, 3.0},
      // What the Status, Network Topology, State and Pipeline tabs colour, in their row
      // order; not their backgrounds (48, 49) nor the reserved rows (117-119).
      {"graphic.process_display", "status, network, state and pipeline colours on the process display background",
       Measure::Contrast, Pairing::OnBackground,
       {{38, 42, 41, 43, 39, 35, 46, 45, 47, 34, 28, 27, 25, 24, 50, 37, 44, 32, 110, 111, 112, 113, 114, 115, 116,
         57, 58, 60, 56, 59, 61, 62, 64, 65, 67, 68, 69, 70, 72, 73, 74, 75, 76, 80, 81, 82, 83, 84, 85, 86, 87, 88,
         89, 90, 91, 92, 93, 94, 95, 96, 97, 98, 99, 18, 26, 33, 36, 100, 101, 102, 103, 104, 105, 108, 109, 40, 51,
         52, 53, 54, 63, 71, 77, 78, 79, 106, 107},
        {23}},
       3.0},
      {"distinct.status_groups", "alarm, warning, quality, operator action and normal apart from each other",
       Measure::DeltaE2000, Pairing::BetweenGroups,
       {{45, 46, 28, 24}, {44, 27, 25}, {35, 39, 38, 50}, {34, 47, 37, 43}, {32}}, 10.0, 0, true},
      {"distinct.alarm_acknowledged", "acknowledged alarm apart from unacknowledged alarm", Measure::DeltaE2000,
       Pairing::Neighbours, {{45, 46}}, 10.0, 0, true},
      // The status colours by meaning: the alarms, the warnings, each other one alone.
      {"distinct.status_meanings", "status colours of different meaning not alike", Measure::DeltaE2000,
       Pairing::BetweenGroups,
       {{45, 28, 24}, {46}, {48}, {44, 27, 25}, {35}, {39}, {38}, {50}, {34}, {47}, {37}, {43}, {41}, {42}, {49}, {32}},
       1.0},
      {"distinct.tagout_severities", "each Tagout severity apart from the next", Measure::DeltaE2000,
       Pairing::Neighbours, {{110, 111, 112, 113, 114, 115, 116}}, 10.0, 0, true},
  };
  return rules;
}

namespace {

struct Pair {
  int first, second;
};

std::vector<Pair> PairsOf(const Rule& rule) {
  std::vector<Pair> pairs;
  switch (rule.pairing) {
    case Pairing::OnBackground:
      for (int fg : rule.lists[0])
        for (int bg : rule.lists[1]) pairs.push_back({fg, bg});
      break;
    case Pairing::BetweenGroups:
      for (std::size_t i = 0; i < rule.lists.size(); ++i)
        for (std::size_t j = i + 1; j < rule.lists.size(); ++j)
          for (int a : rule.lists[i])
            for (int b : rule.lists[j]) pairs.push_back({a, b});
      break;
    case Pairing::Neighbours:
      for (std::size_t i = 0; i + 1 < rule.lists[0].size(); ++i) pairs.push_back({rule.lists[0][i], rule.lists[0][i + 1]});
      break;
  }
  return pairs;
}

}  // namespace

std::vector<Finding> CheckRule(const Rule& rule, const ColourTable& colours, const NameOf& name_of) {
  std::array<std::string, kClutIndexCount> names;
  std::array<bool, kClutIndexCount> named{};
  auto name = [&](int index) -> const std::string& {
    if (!named[index]) {
      names[index] = name_of ? name_of(index) : std::string();
      named[index] = true;
    }
    return names[index];
  };

  std::vector<Finding> findings;
  // A rule names each index once, so each unusable one is reported once.
  for (const auto& list : rule.lists)
    for (int index : list) {
      if (Usable(colours[index])) continue;
      findings.push_back({rule.id, {index}, {name(index)}, VisionName(Vision::Normal), rule.measure,
                          double(colours[index]), rule.minimum, false, false, false});
    }
  const std::vector<Pair> pairs = PairsOf(rule);
  for (Vision vision : kVisions) {
    if (vision != Vision::Normal && !rule.all_visions) break;
    // Each colour simulated and measured once, not once for every pair it is in.
    std::array<bool, kClutIndexCount> known{};
    std::array<Lab, kClutIndexCount> lab;
    std::array<double, kClutIndexCount> luminance;
    auto know = [&](int index) {
      if (std::exchange(known[index], true)) return;
      const std::int32_t seen = Simulate(colours[index], vision);
      if (rule.measure == Measure::Contrast)
        luminance[index] = RelativeLuminance(seen);
      else
        lab[index] = ToLab(seen);
    };
    for (const Pair& p : pairs) {
      if (!Usable(colours[p.first]) || !Usable(colours[p.second])) continue;
      know(p.first);
      know(p.second);
      const double value = rule.measure == Measure::Contrast ? ContrastOfLuminances(luminance[p.first], luminance[p.second])
                                                             : Ciede2000(lab[p.first], lab[p.second]);
      findings.push_back({rule.id, {p.first, p.second}, {name(p.first), name(p.second)}, VisionName(vision),
                          rule.measure, value, rule.minimum, true, value >= rule.minimum,
                          rule.enhanced > 0 && value >= rule.enhanced});
    }
  }
  return findings;
}

std::vector<Finding> Check(const ColourTable& colours, const NameOf& name_of) {
  std::vector<Finding> findings;
  for (const Rule& rule : Rules()) {
    std::vector<Finding> found = CheckRule(rule, colours, name_of);
    findings.insert(findings.end(), std::make_move_iterator(found.begin()), std::make_move_iterator(found.end()));
  }
  return findings;
}

std::string FormatFinding(const Finding& f) {
  std::string who;
  for (std::size_t i = 0; i < f.indexes.size(); ++i)
    who += (i ? " / " : "") + std::to_string(f.indexes[i]) + (f.names[i].empty() ? "" : " " + f.names[i]);
  if (!f.checked)
    return "CANNOT CHECK " + std::string(f.rule) + ": " + who +
           (f.measured == kClutNotDefined ? " is not defined" : " is unreadable");
  char measured[96];
  std::snprintf(measured, sizeof measured, "%s %.2f %s %.2f", f.measure == Measure::Contrast ? "contrast" : "dE2000",
                f.measured, f.pass ? ">=" : "<", f.threshold);
  return std::string(f.pass ? "pass " : "FAIL ") + std::string(f.rule) + ": " + who + ": " + measured +
         (f.enhanced ? " (AAA)" : "") + " (" + std::string(f.vision) + ")";
}

std::string FormatReport(const std::vector<Finding>& findings, std::string_view indent) {
  std::string out;
  std::size_t passed = 0;
  for (const Finding& f : findings) {
    if (f.pass)
      ++passed;
    else
      out += std::string(indent) + FormatFinding(f) + "\n";
  }
  return out + std::string(indent) + std::to_string(passed) + " of " + std::to_string(findings.size()) +
         " checks pass\n";
}

ColourTable ParseColourTable(std::string_view bytes) {
  ColourTable colours;
  colours.fill(kClutUnreadable);
  const std::vector<std::string> lines = SplitClutLines(bytes, kClutIndexCount).lines;
  for (std::size_t i = 0; i < lines.size(); ++i) colours[i] = ParseClutLine(lines[i]);
  return colours;
}

}  // namespace tq::quality
