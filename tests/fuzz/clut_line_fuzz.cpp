// Any bytes: the split keeps every byte, and every line parses to a colour or a state.
#include <cstddef>
#include <cstdint>

#include "colortable/clut_format.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const tq::ClutLines all = tq::SplitClutLines(bytes);
  if (!all.trailer.empty()) __builtin_trap();
  std::size_t kept = 0;
  for (const auto& line : all.lines) {
    kept += line.size();
    const std::int32_t v = tq::ParseClutLine(line);
    if (v < tq::kClutNotDefined || v > 0xFFFFFF) __builtin_trap();
    if (v >= 0 && tq::ParseClutLine(tq::FormatClutLine(0, v)) != v) __builtin_trap();
  }
  if (kept > size) __builtin_trap();
  return 0;
}
