// Any file and reference: the upgrade gives 286 lines, the marking leaves "93.07" as
// the version of line 1.
#include <cstddef>
#include <cstdint>

#include "colortable/clut_format.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const std::size_t half = size / 2;
  const auto file = tq::SplitClutLines(bytes.substr(0, half), tq::kClutIndexCount).lines;
  const auto reference = tq::SplitClutLines(bytes.substr(half), tq::kClutIndexCount).lines;
  static const char* versions[] = {"", "93.01", "93.02", "93.03", "93.06", "93.07x"};
  const std::string version = versions[size % 6];
  const auto upgraded = tq::UpgradeClutLines(file, reference, version);
  if (upgraded.size() != tq::kClutIndexCount) __builtin_trap();
  for (const auto& line : upgraded)
    if (line.find('\n') != std::string::npos) __builtin_trap();
  if (version.empty() && tq::ClutVersionOfLine(tq::MarkClutVersion(upgraded, version)[0]) != "93.07") __builtin_trap();
  return 0;
}
