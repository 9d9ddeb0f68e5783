// Our factory table (data/) for the colour table tests, small builders of files, and a
// folder holding the table.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "colortable/clut_format.h"
#include "colortable/clut_locations.h"
#include "colortable/color_table.h"
#include "common/test_platform.h"
#include "support/localization.h"

namespace tq::test {

inline std::vector<std::string> FactoryLines() { return SplitClutLines(SourceFile("data/QLT830_colors$clut")).lines; }

// A table whose every line differs from the factory one: "<i%256> 7 9 # mine <i>".
inline std::vector<std::string> OwnLines(const std::string& version) {
  std::vector<std::string> lines;
  for (int i = 0; i < kClutIndexCount; ++i) {
    std::string line = (i >= 256 ? "#" : "") + std::to_string(i % 256) + " 7 9 # mine " + std::to_string(i);
    if (i == 0 && !version.empty()) line += " Version=" + version;
    lines.push_back(line);
  }
  return lines;
}

// The factory table in a scratch folder, with its reference file and a lock file,
// every index shown in the row of its number.
class ClutFolder : public ::testing::Test {
 protected:
  void SetUp() override {
    state.ClutFileName = dir / "QLT830_colors.clut";
    Write(state.ClutFileName, SourceFile("data/QLT830_colors.clut"));
    Write(dir / "QLT830_colors$clut", SourceFile("data/QLT830_colors$clut"));
    Write(state.ClutFileName + ".lock", "locked");
    for (int i = 0; i < kClutIndexCount; ++i) state.ColorRowMap[i] = static_cast<std::int16_t>(i);
  }
  bool NoTempFiles() {
    for (const auto& name : p.ListFileNames(dir.path()))
      if (name.find(".tmp") != std::string::npos) return false;
    return true;
  }
  ScratchFolder dir;
  TestPlatform p;
  const LanguageTexts texts;  // the built-in English ones
  ColorSchemeModule module;
  ColorTableState state;
};

}  // namespace tq::test
