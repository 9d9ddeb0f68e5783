// Our factory table (data/) for the colour table tests, and small builders of files.
#pragma once

#include <string>
#include <vector>

#include "colortable/clut_format.h"
#include "colortable/clut_locations.h"
#include "colortable/color_table.h"
#include "common/test_platform.h"

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

// A session on the factory table in `folder` (with its reference file and a lock
// file of `lock_content`), every index shown in the row of its number.
inline void InstallFactoryTable(const std::string& folder, ColorTableState& state, const std::string& lock_content) {
  state.ClutFileName = folder + "QLT830_colors.clut";
  Write(state.ClutFileName, SourceFile("data/QLT830_colors.clut"));
  Write(folder + "QLT830_colors$clut", SourceFile("data/QLT830_colors$clut"));
  Write(state.ClutFileName + ".lock", lock_content);
  for (int i = 0; i < kClutIndexCount; ++i) state.ColorRowMap[i] = static_cast<std::int16_t>(i);
}

}  // namespace tq::test
