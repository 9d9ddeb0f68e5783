#include "win32/list_preview.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "support/localization.h"
#include "win32/handles.h"
#include "win32/text.h"

namespace tq::win {

namespace {

struct Panel {
  std::string_view list;  // the list's name as sent
  int title_id;
  bool graph;
  std::array<int, 3> rows;  // sample rows' text ids; 0: the event list's day break
};

// AL2 is painted as AL1: both take the same colours.
constexpr Panel kPanels[] = {
    {"AL1", 1647, false, {1653, 1654, 1652}}, {"EL", 1648, false, {1653, 0, 1654}},
    {"BL", 1649, false, {1655, 1652, 1655}},  {"TTM", 1650, false, {1652, 1657, 1652}},
    {"MRTM", 1651, false, {1652, 1657, 1652}}, {"TGM", 1658, true, {}},
    {"MRGM", 1659, true, {}},
};

const ColorList* Find(const std::vector<ColorList>& lists, std::string_view name) {
  for (const ColorList& list : lists)
    if (list.name == name) return &list;
  return nullptr;
}

std::optional<COLORREF> Colour(const ColorList* list, std::string_view key, quality::Vision vision) {
  if (!list) return std::nullopt;
  for (const ColorList::Item& item : list->items)
    if (item.key == key && item.value >= 0) return static_cast<COLORREF>(quality::Simulate(item.value, vision));
  return std::nullopt;
}

void Fill(HDC dc, const RECT& r, COLORREF colour) {
  SetDCBrushColor(dc, colour);
  FillRect(dc, &r, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
}

void Line(HDC dc, int x1, int y1, int x2, int y2, COLORREF colour, int width) {
  HPEN pen = CreatePen(PS_SOLID, width, colour);
  HGDIOBJ old = SelectObject(dc, pen);
  MoveToEx(dc, x1, y1, nullptr);
  LineTo(dc, x2, y2);
  SelectObject(dc, old);
  DeleteObject(pen);
}

}  // namespace

void PaintListPreview(HDC dc, const RECT& area, const std::vector<ColorList>& lists, quality::Vision vision,
                      HFONT font, int dpi) {
  Fill(dc, area, GetSysColor(COLOR_BTNFACE));
  HGDIOBJ old_font = SelectObject(dc, font);
  TEXTMETRICW metrics{};
  GetTextMetricsW(dc, &metrics);
  const int line = metrics.tmHeight + MulDiv(4, dpi, 96), pad = MulDiv(4, dpi, 96);
  constexpr int kColumns = 4;
  const int width = (area.right - area.left) / kColumns;
  const int height = line * 4 + 2 * pad;
  SetBkMode(dc, TRANSPARENT);
  const COLORREF window = GetSysColor(COLOR_WINDOW), text = GetSysColor(COLOR_WINDOWTEXT);
  for (std::size_t p = 0; p < std::size(kPanels); ++p) {
    const Panel& panel = kPanels[p];
    const ColorList* list = Find(lists, panel.list);
    const int x = area.left + static_cast<int>(p % kColumns) * width + pad;
    const int y = area.top + static_cast<int>(p / kColumns) * height + pad;
    const int w = width - 2 * pad;
    RECT title{x, y, x + w, y + line};
    SetTextColor(dc, GetSysColor(COLOR_BTNTEXT));
    const std::wstring title_text = Widen(GetString(panel.title_id));
    DrawTextW(dc, title_text.c_str(), -1, &title, DT_SINGLELINE | DT_VCENTER | DT_END_ELLIPSIS | DT_NOPREFIX);
    RECT box{x, y + line, x + w, y + 4 * line};
    const COLORREF bg = Colour(list, "BG=", vision).value_or(window);
    Fill(dc, box, bg);
    if (panel.graph) {
      // A highlighted time range behind a curve whose stretches carry the status colours.
      const COLORREF hl = Colour(list, "HL=", vision).value_or(bg);
      Fill(dc, {box.left + w / 2, box.top, box.left + 3 * w / 4, box.bottom}, hl);
      const std::string_view states[] = {"ST_FAULTY=", "ST_MANUALLY_ENTERED=", "ST_OBSOLETE="};
      const int step = w / 6, thick = std::max(2, MulDiv(2, dpi, 96));
      int px = box.left + pad, py = box.bottom - line;
      for (std::size_t s = 0; s < 6; ++s) {
        const int nx = px + step - pad / 3, ny = box.top + line / 2 + static_cast<int>((s * 37) % 5) * line / 3;
        Line(dc, px, py, nx, ny, Colour(list, states[s % 3], vision).value_or(text), thick);
        px = nx;
        py = ny;
      }
    } else {
      const COLORREF txt = Colour(list, "TXT=", vision).value_or(text);
      const std::optional<COLORREF> grid = Colour(list, "GL=", vision), shade = Colour(list, "BGS=", vision);
      for (int r = 0; r < 3; ++r) {
        RECT row{box.left, box.top + r * line, box.right, box.top + (r + 1) * line};
        if (shade && r % 2 == 1) Fill(dc, row, *shade);
        if (panel.rows[r] == 0) {
          // The event list's day break: a line across in its own colour.
          const COLORREF db = Colour(list, "DB=", vision).value_or(txt);
          Line(dc, row.left, (row.top + row.bottom) / 2, row.right, (row.top + row.bottom) / 2, db,
               std::max(2, MulDiv(2, dpi, 96)));
        } else {
          SetTextColor(dc, txt);
          RECT inner = row;
          inner.left += pad;
          const std::wstring sample = Widen(GetString(panel.rows[r]));
          DrawTextW(dc, sample.c_str(), -1, &inner, DT_SINGLELINE | DT_VCENTER | DT_END_ELLIPSIS | DT_NOPREFIX);
        }
        if (grid) Line(dc, row.left, row.bottom - 1, row.right, row.bottom - 1, *grid, 1);
      }
    }
    FrameRect(dc, &box, GetSysColorBrush(COLOR_BTNSHADOW));
  }
  SelectObject(dc, old_font);
}

}  // namespace tq::win
