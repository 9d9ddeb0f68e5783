// Any old file: a save keeps its line count (at most 286) and its rest byte for byte,
// and every written line reads back as the colour that was saved.
#include <cstddef>
#include <cstdint>

#include "colortable/clut_format.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  const std::int32_t colour = data[0] * 0x010203 & 0xFFFFFF;
  const std::string_view old(reinterpret_cast<const char*>(data + 1), size - 1);
  tq::ClutNewLines fresh;
  for (int i = 0; i < tq::kClutIndexCount; i += 1 + data[0] % 3) fresh[i] = tq::FormatClutLine(i, colour);
  const std::string saved = tq::MergeClutSave(old, fresh);
  const tq::ClutLines before = tq::SplitClutLines(old, tq::kClutIndexCount);
  const tq::ClutLines after = tq::SplitClutLines(saved, tq::kClutIndexCount);
  if (after.lines.size() != before.lines.size() || after.trailer != before.trailer) __builtin_trap();
  for (std::size_t i = 0; i < after.lines.size(); ++i) {
    if (fresh[i] && tq::ParseClutLine(after.lines[i]) != colour) __builtin_trap();
    if (!fresh[i] && after.lines[i] != before.lines[i]) __builtin_trap();
  }
  return 0;
}
