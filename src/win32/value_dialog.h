// The Enter Value dialog (an addition beside the editor's colour dialog): one text box
// taking a colour as text (support/colour_text.h), a swatch of what it names, OK and
// Cancel. Control ids: editor_ids.h.
#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>

namespace tq::win {

// Modal over `editor`, starting from `colour` (0x00BBGGRR); the colour confirmed, or
// nullopt when cancelled.
std::optional<std::int32_t> AskColourValue(HWND editor, std::int32_t colour);

}  // namespace tq::win
