// Colours as text, for the editor's clipboard and its Enter Value dialog (additions
// beside the editor's colour dialog): "#RRGGBB" out; "#RRGGBB", "RRGGBB", "r, g, b" and
// "r g b" in, each component 0-255, blanks around the text and its parts allowed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tq {

// `colour` as the table holds it (0x00BBGGRR).
std::string FormatColourText(std::int32_t colour);
// The colour (0x00BBGGRR) the text names; nullopt for anything else.
std::optional<std::int32_t> ParseColourText(std::string_view text);

}  // namespace tq
