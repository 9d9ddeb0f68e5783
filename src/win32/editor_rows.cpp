// The editor window's rows: each a colour button, its RGB text and its name, in the
// frames of a page; how they are drawn and coloured, and their enablement.
#include "win32/editor_window.h"

#include <commctrl.h>

#include <algorithm>
#include <cstdio>
#include <utility>

#include "win32/check_window.h"
#include "support/string_ids.h"
#include "win32/editor_ids.h"
#include "win32/editor_parts.h"
#include "win32/text.h"

namespace tq::win {

namespace ids = editor_ids;

namespace {

std::wstring RgbText(std::int32_t colour) {
  wchar_t text[32];
  swprintf(text, 32, L"(%d, %d, %d)", colour & 0xFF, (colour >> 8) & 0xFF, (colour >> 16) & 0xFF);
  return text;
}

}  // namespace

void EditorWindow::BuildFrame(int page, int f) {
  if (frames_[page][f]) return;
  frmTqColorSetting& s = *session_;
  const CategoryFrame& frame = kTabPages[page].frames[f];
  const bool enabled = buttons_enabled_;
  ActivationScope styles;
  const int frame_width = name_left_ + name_width_ + kGap;
  HWND box = CreateContainer(pages_[page], kFrameClass, ids::kFrame + 3 * page + f,
                             {Px(kGap), Px(kFrameTop), Px(kGap) + Px(frame_width), Px(kFrameTop) + Px(kFrameHeight)});
  frames_[page][f] = box;
  // The frame's tooltip names the colour table file being edited.
  AddTool(pages_[page], box, LPSTR_TEXTCALLBACKW);
  if (frame.heading_id) {
    HWND heading = CreateChild(box, static_class_, Caption(frame.heading_id), WS_VISIBLE | SS_CENTERIMAGE,
                               ids::kTagoutHeading, {kButtonLeft, 120, frame_width - kGap, 120 + kButtonHeight});
    SendMessageW(heading, WM_SETFONT, reinterpret_cast<WPARAM>(gdi_->bold.get()), FALSE);
  }
  for (int k = 0; k < frame.row_count; ++k) {
    const int row = frame.first_row + k;
    // A hidden row keeps its empty place: rows never move.
    const DWORD shown = s.RowIndex(row) >= 0 ? WS_VISIBLE : 0;
    const int y = RowTop(row);
    color_buttons_[row] = CreateChild(box, button_class_, Widen(RowName(s.Strings(), row, s.VoltageNames())),
                                      shown | WS_TABSTOP | BS_OWNERDRAW | (enabled ? 0 : WS_DISABLED),
                                      ids::kColorButton + row, {kButtonLeft, y, kButtonLeft + kButtonWidth, y + kButtonHeight});
    rgb_texts_[row] = RgbTextOf(row);
    rgb_labels_[row] = CreateChild(box, static_class_, rgb_texts_[row], shown | SS_CENTERIMAGE | SS_NOPREFIX,
                                   ids::kRgbLabel + row, {kRgbLeft, y, kRgbLeft + rgb_width_, y + kButtonHeight});
    HWND name = CreateChild(box, static_class_, Widen(RowName(s.Strings(), row, s.VoltageNames())),
                            shown | SS_CENTERIMAGE | SS_NOTIFY | SS_NOPREFIX, ids::kNameLabel + row,
                            {name_left_, y, name_left_ + name_width_, y + kButtonHeight});
    if (shown) AddTool(box, name, LPSTR_TEXTCALLBACKW);
  }
  checks_->FrameBuilt(page, f);
}

void EditorWindow::AddTool(HWND parent, HWND tool, wchar_t* text) {
  TTTOOLINFOW tip{};
  tip.cbSize = sizeof tip;
  tip.uFlags = TTF_IDISHWND;
  tip.hwnd = parent;
  tip.uId = reinterpret_cast<UINT_PTR>(tool);
  tip.lpszText = text;
  SendMessageW(tooltip_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tip));
}

std::wstring EditorWindow::RgbTextOf(int row) const {
  const RowColour* shown = session_->ShownRow(row);
  if (!shown) return Widen(kRgbDesignText);
  return shown->kind == RowColour::Kind::Colour       ? RgbText(shown->colour)
         : shown->kind == RowColour::Kind::Unreadable ? Caption(sid::kUnreadable)
                                                      : Caption(sid::kNotDefined);
}

void EditorWindow::RowChanged(int row) {
  if (!hwnd_) return;
  if (row < 0) {
    checks_->Suspend();
    for (int r = 0; r < kRowCount; ++r) RowChanged(r);
    return checks_->Refresh();
  }
  checks_->RowChanged(row);
  if (row >= kRowCount || !rgb_labels_[row]) return;
  // The text names the colour or the state, so an unchanged text is an unchanged row.
  std::wstring text = RgbTextOf(row);
  if (text == rgb_texts_[row]) return;
  SetWindowTextW(rgb_labels_[row], text.c_str());
  rgb_texts_[row] = std::move(text);
  InvalidateRect(color_buttons_[row], nullptr, FALSE);
}

void EditorWindow::ApplyEnablement() {
  const EnableDecision& d = session_->Enablement();
  SetWindowTextW(hwnd_, (Widen(session_->Caption()) + checks_->TitleSuffix()).c_str());
  EnableWindow(GetDlgItem(hwnd_, ids::kOk), d.ok);
  EnableWindow(GetDlgItem(hwnd_, ids::kSaveAsButton), d.save);
  EnableWindow(GetDlgItem(hwnd_, ids::kDeleteButton), d.delete_scheme);
  EnableWindow(GetDlgItem(hwnd_, ids::kSchemeCombo), d.scheme_list);
  if (buttons_enabled_ == d.colour_buttons) return;  // 290 windows: only when it changes
  for (HWND button : color_buttons_)
    if (button) EnableWindow(button, d.colour_buttons);
  buttons_enabled_ = d.colour_buttons;
}

void EditorWindow::OnDrawItem(const DRAWITEMSTRUCT& item) {
  const int row = static_cast<int>(item.CtlID) - ids::kColorButton;
  RECT rect = item.rcItem;
  const bool pushed = item.itemState & ODS_SELECTED;
  if (item.itemState & ODS_DISABLED) {
    // Flat, with nothing raised to press. (A disabled system button differs only by its
    // grey text, and a colour button has none.)
    FillRect(item.hDC, &rect, GetSysColorBrush(COLOR_BTNFACE));
    FrameRect(item.hDC, &rect, GetSysColorBrush(COLOR_BTNSHADOW));
  } else {
    DrawFrameControl(item.hDC, &rect, DFC_BUTTON, DFCS_BUTTONPUSH | (pushed ? DFCS_PUSHED : 0));
  }
  const int edge = std::max(3, Px(45));
  InflateRect(&rect, -edge, -edge);
  if (pushed) OffsetRect(&rect, 1, 1);
  SetDCBrushColor(item.hDC, Resolve(checks_->Shown(session_->GetRowColor(row))));
  FillRect(item.hDC, &rect, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
  if ((item.itemState & ODS_FOCUS) && !(item.itemState & ODS_NOFOCUSRECT)) {
    InflateRect(&rect, 2, 2);
    DrawFocusRect(item.hDC, &rect);
  }
}

HBRUSH EditorWindow::OnStaticColor(HDC dc, HWND control) {
  const int id = GetDlgCtrlID(control);
  COLORREF text = GetSysColor(COLOR_BTNTEXT);
  if (IsIdIn(id, ids::kRgbLabel)) {
    const RowColour* shown = session_->ShownRow(id - ids::kRgbLabel);
    if (shown && shown->kind != RowColour::Kind::Colour) text = RGB(255, 0, 0);
  }
  SetTextColor(dc, IsWindowEnabled(control) ? text : GetSysColor(COLOR_GRAYTEXT));
  SetBkColor(dc, GetSysColor(COLOR_BTNFACE));
  return GetSysColorBrush(COLOR_BTNFACE);
}

}  // namespace tq::win
