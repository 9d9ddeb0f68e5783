#include "tqclut/report.h"

#include <cstdio>

#include "editor/catalogue.h"
#include "support/colour_text.h"
#include "support/localization.h"
#include "tqclut/tqclut.h"

namespace tq::clut_tool {
namespace {

using quality::Finding;
using quality::Vision;

std::string Html(std::string_view text) {
  std::string out;
  for (const char c : ValidUtf8(text)) {
    switch (c) {
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '&': out += "&amp;"; break;
      case '"': out += "&quot;"; break;
      default: out += c;
    }
  }
  return out;
}

bool Usable(std::int32_t colour) { return colour >= 0; }

// The colour as a reader should see it: hatched red on white for the two states
// without a colour.
std::string Fill(std::int32_t colour) {
  return Usable(colour) ? "background:" + FormatColourText(colour) : "background:repeating-linear-gradient(45deg,#fff 0 5px,#c00 5px 7px)";
}

std::string Describe(std::int32_t colour) {
  return colour == kClutNotDefined ? "not defined" : Usable(colour) ? FormatColourText(colour) : "unreadable";
}

std::string Swatch(int index, std::int32_t colour, std::string_view attributes = {}, std::string_view style = {}) {
  return "<span class=\"s\" data-index=\"" + std::to_string(index) + "\"" + std::string(attributes) + " style=\"" +
         Fill(colour) + std::string(style) + "\"></span>";
}

// The rows of the editor as tools see them (every page, ten voltage levels).
struct Catalogue {
  ColorRowMapArray map{};
  VoltageRowNames voltage_names;
  explicit Catalogue(const LanguageTexts& texts) {
    VoltageLevels levels;
    for (int k = 1; k <= 10; ++k) levels.names.push_back("Voltage level " + std::to_string(k));
    levels.count = 10;
    ColorTableArray unused;
    voltage_names = InitColorRowMap(texts, map, unused, levels, /*pipeline_enabled=*/true);
  }
};

std::string ColoursByTab(const LanguageTexts& texts, const quality::ColourTable& colours) {
  const Catalogue catalogue(texts);
  std::string out = "<h2 id=\"colours\">Colours by tab</h2>\n";
  // What the status, network, state and pipeline tabs colour is drawn on the process
  // display background: their swatches are framed by it.
  const std::string framed = Usable(colours[23]) ? ";outline:6px solid " + FormatColourText(colours[23]) + ";margin:6px" : "";
  for (const int page : TabStrip(true)) {
    const bool on_background = page == 0 || page == 1 || page == 10 || page == 11;
    std::string frames;
    for (int f = 0; f < kTabPages[page].frame_count; ++f) {
      const CategoryFrame& frame = kTabPages[page].frames[f];
      std::string cells;
      for (int row = frame.first_row; row < frame.first_row + frame.row_count; ++row) {
        const int index = FindColorRow(catalogue.map, row);
        if (index < 0) continue;
        cells += "<div class=\"c\">" + Swatch(index, colours[index], {}, on_background ? framed : "") + "<span><b>" +
                 Html(RowName(texts, row, catalogue.voltage_names)) + "</b><br><small>" + std::to_string(index) + " &middot; " +
                 Describe(colours[index]) + "</small></span></div>\n";
      }
      if (cells.empty()) continue;
      const std::string category = GetCategoryNameOfRow(texts, frame.first_row);
      frames += (category.empty() ? "" : "<h4>" + Html(category) + "</h4>\n") + "<div class=\"grid\">\n" + cells + "</div>\n";
    }
    if (!frames.empty()) out += "<h3>" + Html(texts.Get(TabCaptionId(page))) + "</h3>\n" + frames;
  }
  return out;
}

std::string Findings(const quality::ColourTable& colours, const std::vector<Finding>& findings) {
  std::string out = "<h2 id=\"findings\">Findings</h2>\n";
  std::string rows;
  std::size_t passed = 0;
  for (const Finding& f : findings) {
    if (f.pass) {
      ++passed;
      continue;
    }
    std::string sample;
    if (!f.checked) {
      sample = Swatch(f.indexes[0], colours[f.indexes[0]]);
    } else if (f.measure == quality::Measure::Contrast) {
      // The foreground as it is drawn: a bar and a word on its background.
      const std::int32_t fg = colours[f.indexes[0]], bg = colours[f.indexes[1]];
      sample = "<span class=\"on\" data-index=\"" + std::to_string(f.indexes[1]) + "\" style=\"" + Fill(bg) +
               ";color:" + FormatColourText(fg) + "\">" + Swatch(f.indexes[0], fg, " data-bar=\"1\"") + "Text</span>";
    } else {
      // The pair side by side as the finding's vision sees them.
      const Vision vision = f.vision == "protanopia"     ? Vision::Protanopia
                            : f.vision == "deuteranopia" ? Vision::Deuteranopia
                            : f.vision == "tritanopia"   ? Vision::Tritanopia
                                                         : Vision::Normal;
      for (const int index : f.indexes) sample += Swatch(index, quality::Simulate(colours[index], vision));
    }
    rows += "<tr><td class=\"pair\">" + sample + "</td><td>" + Html(quality::FormatFinding(f)) + "</td></tr>\n";
  }
  out += "<p>" + std::to_string(passed) + " of " + std::to_string(findings.size()) + " checks pass.</p>\n";
  if (!rows.empty()) out += "<table class=\"findings\">\n" + rows + "</table>\n";
  return out;
}

// The colours of the distinguishable status groups and the Tagout severities, on
// the process display background, as each vision sees both.
std::string Visions(const LanguageTexts& texts, const quality::ColourTable& colours) {
  static constexpr int kIndexes[] = {45, 46, 28, 24, 44, 27, 25, 35, 39, 38, 50, 34, 47, 37, 43, 32,
                                     110, 111, 112, 113, 114, 115, 116};
  const IndexCatalogue names(texts);
  std::string out =
      "<h2 id=\"vision\">Status and alarm colours by colour vision</h2>\n<p>On the process display background, "
      "simulated for the three colour-vision deficiencies (Machado, Oliveira and Fernandes 2009, full "
      "severity).</p>\n<table class=\"vision\">\n<tr><th>colour</th>";
  for (const Vision vision : quality::kVisions) out += "<th>" + std::string(quality::VisionName(vision)) + "</th>";
  out += "</tr>\n";
  const std::int32_t background = Usable(colours[23]) ? colours[23] : 0xFFFFFF;
  for (const int index : kIndexes) {
    out += "<tr><td>" + std::to_string(index) + " " + Html(names.Label(index)) + "</td>";
    for (const Vision vision : quality::kVisions) {
      const std::string name(quality::VisionName(vision));
      out += "<td style=\"background:" + FormatColourText(quality::Simulate(background, vision)) + "\">" +
             Swatch(index, quality::Simulate(colours[index], vision), " data-vision=\"" + name + "\"") + "</td>";
    }
    out += "</tr>\n";
  }
  return out + "</table>\n";
}

}  // namespace

std::string ReportHtml(const LanguageTexts& texts, const std::string& title, const quality::ColourTable& colours,
                       const std::vector<Finding>& findings) {
  std::size_t failed = 0;
  for (const Finding& f : findings) failed += !f.pass;
  return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>Colour table " + Html(title) +
         "</title>\n<style>\n"
         "body{font:14px/1.35 \"Liberation Sans\",Arial,sans-serif;margin:24px;color:#1a1a1a;background:#fff}\n"
         "h1{font-size:22px;margin:0 0 4px}h2{font-size:18px;margin:28px 0 8px;border-bottom:1px solid #bbb}\n"
         "h3{font-size:16px;margin:18px 0 6px}h4{font-size:13px;margin:10px 0 4px;color:#555}\n"
         ".grid{display:flex;flex-wrap:wrap;gap:6px}\n"
         ".c{width:224px;display:flex;align-items:center;gap:8px;border:1px solid #ddd;padding:4px}\n"
         ".s{display:inline-block;width:44px;height:30px;border:1px solid #777;flex:none;vertical-align:middle}\n"
         ".pair{white-space:nowrap}.pair .s{margin-right:4px}\n"
         ".on{display:inline-flex;align-items:center;gap:8px;padding:6px 10px;font-weight:bold}\n"
         ".on .s{border:none;height:10px}\n"
         "table{border-collapse:collapse}td,th{padding:4px 8px;border:1px solid #ddd;text-align:left}\n"
         ".vision td .s{width:64px}\n"
         "</style>\n</head>\n<body>\n<h1>Colour table " +
         Html(title) + "</h1>\n<p>" + (failed ? std::to_string(failed) + " of " + std::to_string(findings.size()) +
                                                    " quality checks need attention: see <a href=\"#findings\">the findings</a>."
                                              : "Every quality check passes.") +
         "</p>\n" + ColoursByTab(texts, colours) + Findings(colours, findings) + Visions(texts, colours) + "</body>\n</html>\n";
}

}  // namespace tq::clut_tool
