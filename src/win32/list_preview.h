// The check window's preview of the host's list displays: alarm, event and blocking
// lists, trend and report tables and graphs, each a few sample rows, painted only from
// the colour lists the editor sends to the host (ColorLists), so the preview shows
// what the host will paint. An addition beside the editor's own window.
#pragma once

#include <windows.h>

#include <vector>

#include "editor/host_exchange.h"
#include "quality/color_quality.h"

namespace tq::win {

// Paints the lists into `area` of `dc` in `font`, each colour through `vision`.
// `dpi` scales lines and padding.
void PaintListPreview(HDC dc, const RECT& area, const std::vector<ColorList>& lists, quality::Vision vision,
                      HFONT font, int dpi);

}  // namespace tq::win
