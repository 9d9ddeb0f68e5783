#include "win32/check_window.h"

#include <commctrl.h>

#include <algorithm>

#include "editor/host_exchange.h"
#include "support/localization.h"
#include "support/thread_context.h"
#include "win32/editor_ids.h"
#include "win32/editor_parts.h"
#include "win32/guard.h"
#include "win32/handles.h"
#include "win32/list_preview.h"
#include "win32/text.h"
#include "support/string_ids.h"

namespace tq::win {

namespace ids = editor_ids;

namespace {

// The marker's place: the free space left of the colour button, inside the frame's border.
constexpr int kMarkerLeft = 40, kMarkerWidth = 180, kMarkerInset = 15;
// The check window's width and the list's height, in twips.
constexpr int kCheckWidth = 9600, kListHeight = 3000;
// Between a label and its control: pixels rounded at any DPI never make them overlap.
constexpr int kLabelGap = 30;

// The thread's language, which its editor session speaks too.
const LanguageTexts& Texts() { return ThreadContext::This().Texts(); }
std::wstring Text(int id) { return Widen(Texts().Get(id)); }

}  // namespace

CheckUi::~CheckUi() {
  if (window_) DestroyWindow(window_);
}

bool CheckUi::RegisterClasses() {
  const WNDCLASSEXW c = DialogLikeClass(&CheckUi::WindowProc, ids::kCheckClass);
  return RegisterClassExW(&c) || GetLastError() == ERROR_CLASS_ALREADY_EXISTS;
}

void CheckUi::UnregisterClasses() { UnregisterClassW(ids::kCheckClass, ThisModule()); }

int CheckUi::Px(int twips) const { return editor_.Px(twips); }

std::string CheckUi::NameOf(int index) const {
  frmTqColorSetting* s = editor_.session_;
  const int row = s && index >= 0 && index < kClutIndexCount ? s->Table().ColorRowMap[index] : -1;
  return row >= 0 ? RowName(Texts(), row, s->VoltageNames()) : std::string();  // no row: known by its index alone
}

void CheckUi::Reset() {
  if (!editor_.session_ || !editor_.hwnd_) return;
  checks_.Reset(ShownColours(editor_.session_->Table()));
  reset_ = true;
  for (int row = 0; row < kRowCount; ++row) UpdateMarker(row);
  if (window_) {
    FillFindings();
    InvalidateRect(GetDlgItem(window_, ids::kListPreview), nullptr, FALSE);
  }
}

void CheckUi::RowChanged(int row) {
  if (!reset_ || suspended_ || !editor_.session_) return;
  const ColorTableState& table = editor_.session_->Table();
  const int index = editor_.session_->RowIndex(row);
  if (index < 0) return;
  const RowColour& shown = table.rows[index];
  const std::int32_t colour = shown.kind == RowColour::Kind::Colour       ? shown.colour
                              : shown.kind == RowColour::Kind::Unreadable ? kClutUnreadable
                                                                          : kClutNotDefined;
  const std::vector<int> changed = checks_.Change(index, colour);
  UpdateIndexes(changed);
  if (!window_) return;
  if (!changed.empty()) FillFindings();
  InvalidateRect(GetDlgItem(window_, ids::kListPreview), nullptr, FALSE);
}

void CheckUi::UpdateIndexes(const std::vector<int>& indexes) {
  frmTqColorSetting* s = editor_.session_;
  for (int index : indexes)
    if (const int row = s->Table().ColorRowMap[index]; row >= 0 && row < kRowCount) UpdateMarker(row);
}

void CheckUi::FrameBuilt(int page, int frame) {
  if (!reset_) return;
  const CategoryFrame& f = kTabPages[page].frames[frame];
  for (int k = 0; k < f.row_count; ++k) UpdateMarker(f.first_row + k);
}

// Markers exist only on built rows, and only while their row has findings.
void CheckUi::UpdateMarker(int row) {
  HWND button = editor_.color_buttons_[row];
  const int index = editor_.session_->RowIndex(row);
  std::wstring text;
  if (button && index >= 0) text = Widen(DescribeFindingsOf(Texts(), checks_, index, [this](int i) { return NameOf(i); }));
  HWND& marker = markers_[row];
  if (text.empty()) {
    if (marker) {
      TTTOOLINFOW tip{};
      tip.cbSize = sizeof tip;
      tip.hwnd = GetParent(marker);
      tip.uId = reinterpret_cast<UINT_PTR>(marker);
      if (editor_.tooltip_) SendMessageW(editor_.tooltip_, TTM_DELTOOLW, 0, reinterpret_cast<LPARAM>(&tip));
      DestroyWindow(std::exchange(marker, nullptr));  // which uncovers its place in the frame
    }
    marker_texts_[row].clear();
    return;
  }
  if (text == marker_texts_[row] && marker) return;
  marker_texts_[row] = std::move(text);
  // The editor's own tooltip, which its modal loop hands the mouse.
  TTTOOLINFOW tip{};
  tip.cbSize = sizeof tip;
  tip.uFlags = TTF_IDISHWND;
  if (!marker) {
    const int y = RowTop(row);
    marker = editor_.CreateChild(GetParent(button), editor_.static_class_, marker_texts_[row],
                                 WS_VISIBLE | SS_NOTIFY | SS_NOPREFIX, ids::kFindingMarker + row,
                                 {kMarkerLeft, y + kMarkerInset, kMarkerLeft + kMarkerWidth, y + kButtonHeight - kMarkerInset},
                                 WS_EX_TRANSPARENT);
    RECT place;  // the frame draws the marker: it paints that place again
    GetWindowRect(marker, &place);
    MapWindowPoints(nullptr, GetParent(marker), reinterpret_cast<POINT*>(&place), 2);
    InvalidateRect(GetParent(marker), &place, TRUE);
    SetWindowSubclass(marker, &CheckUi::MarkerProc, 0, reinterpret_cast<DWORD_PTR>(this));
    tip.hwnd = GetParent(marker);
    tip.uId = reinterpret_cast<UINT_PTR>(marker);
    tip.lpszText = marker_texts_[row].data();
    SendMessageW(editor_.tooltip_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tip));
  } else {
    SetWindowTextW(marker, marker_texts_[row].c_str());
    tip.hwnd = GetParent(marker);
    tip.uId = reinterpret_cast<UINT_PTR>(marker);
    tip.lpszText = marker_texts_[row].data();
    SendMessageW(editor_.tooltip_, TTM_UPDATETIPTEXTW, 0, reinterpret_cast<LPARAM>(&tip));
  }
}

// A small warning triangle; the text is for automation, screen readers and the tooltip.
// The marker window paints nothing: it is transparent to its frame, which draws the
// triangles in its own paint. A window of its own painting them made opening the editor
// a tenth slower under Wine, where every window's paint is a round trip to the server.
LRESULT CALLBACK CheckUi::MarkerProc(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam, UINT_PTR, DWORD_PTR) {
  if (message == WM_NCDESTROY) RemoveWindowSubclass(hwnd, &CheckUi::MarkerProc, 0);
  if (message == WM_ERASEBKGND) return 1;
  if (message != WM_PAINT) return DefSubclassProc(hwnd, message, wparam, lparam);
  ValidateRect(hwnd, nullptr);
  return 0;
}

void CheckUi::PaintMarkers(HWND frame, HDC dc) {
  for (HWND marker : markers_) {
    if (!marker || GetParent(marker) != frame) continue;
    RECT r;
    GetWindowRect(marker, &r);
    MapWindowPoints(nullptr, frame, reinterpret_cast<POINT*>(&r), 2);
    const int w = r.right - r.left, h = std::min<int>(r.bottom - r.top, w * 9 / 8 + 1);
    const int x = r.left, top = r.top + (r.bottom - r.top - h) / 2;
    const POINT triangle[] = {{x + w / 2, top}, {x + w - 1, top + h - 1}, {x, top + h - 1}};
    SetDCBrushColor(dc, RGB(240, 170, 0));
    SetDCPenColor(dc, RGB(64, 48, 0));
    HGDIOBJ old_brush = SelectObject(dc, GetStockObject(DC_BRUSH));
    HGDIOBJ old_pen = SelectObject(dc, GetStockObject(DC_PEN));
    Polygon(dc, triangle, 3);
    // The exclamation mark: a stroke and a dot.
    MoveToEx(dc, x + w / 2, top + h * 2 / 5, nullptr);
    LineTo(dc, x + w / 2, top + h * 3 / 4 - 1);
    SetPixel(dc, x + w / 2, top + h * 3 / 4 + 1, RGB(64, 48, 0));
    SelectObject(dc, old_pen);
    SelectObject(dc, old_brush);
  }
}

void CheckUi::EditorClosing(bool destroyed) {
  if (window_) DestroyWindow(window_);  // returns to normal vision
  vision_ = quality::Vision::Normal;
  reset_ = false;
  if (destroyed) ForgetMarkers();
}

void CheckUi::ForgetMarkers() {
  markers_.fill(nullptr);
  for (auto& text : marker_texts_) text.clear();
}

void CheckUi::DpiChanged() {
  ForgetMarkers();
  if (!window_) return;
  const bool had_focus = GetFocus() && IsChild(window_, GetFocus());
  DestroyChildren(window_);
  shown_findings_.clear();
  CreateChildren();
  FillFindings();
  if (had_focus) SetFocus(list_);
}

std::int32_t CheckUi::Shown(std::int32_t colour) const {
  return colour == kSystemButtonFace ? colour : quality::Simulate(colour, vision_);
}

std::wstring CheckUi::TitleSuffix() const {
  if (vision_ == quality::Vision::Normal) return {};
  std::wstring text = Text(sid::kSimulatedSuffix);
  const auto at = text.find(L"%1");
  if (at != std::wstring::npos) text.replace(at, 2, Widen(VisionText(Texts(), vision_)));
  return text;
}

HWND CheckUi::Child(const wchar_t* window_class, const std::wstring& text, DWORD style, int id, const RECT& twips,
                    DWORD ex_style) {
  return editor_.CreateChild(window_, window_class, text, WS_VISIBLE | style, id, twips, ex_style);
}

void CheckUi::OpenWindow() {
  if (window_) {
    SetActiveWindow(window_);
    return;
  }
  if (!editor_.hwnd_ || !editor_.session_ || !RegisterClasses()) return;
  ActivationScope styles;
  window_ = CreateWindowExW(WS_EX_DLGMODALFRAME | WS_EX_CONTROLPARENT, ids::kCheckClass, Text(sid::kCheckTitle).c_str(),
                            WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_CLIPCHILDREN, 0, 0, 100, 100, editor_.hwnd_,
                            nullptr, ThisModule(), this);
  if (!window_) return;
  CreateChildren();
  FillFindings();
  // Beside the editor when the screen has room, else over its right part.
  RECT editor, window;
  GetWindowRect(editor_.hwnd_, &editor);
  GetWindowRect(window_, &window);
  MONITORINFO monitor{};
  monitor.cbSize = sizeof monitor;
  GetMonitorInfoW(MonitorFromWindow(editor_.hwnd_, MONITOR_DEFAULTTONEAREST), &monitor);
  const int width = window.right - window.left, height = window.bottom - window.top;
  int x = editor.right;
  if (x + width > monitor.rcWork.right) x = std::max<int>(monitor.rcWork.left, monitor.rcWork.right - width);
  const int y = std::max<int>(monitor.rcWork.top, std::min<int>(editor.top, monitor.rcWork.bottom - height));
  SetWindowPos(window_, nullptr, x, y, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_SHOWWINDOW);
  SendMessageW(window_, WM_CHANGEUISTATE, MAKEWPARAM(UIS_CLEAR, UISF_HIDEFOCUS | UISF_HIDEACCEL), 0);
  SetFocus(list_);
}

void CheckUi::CreateChildren() {
  const int right = kCheckWidth - kMargin;
  std::wstring taken;
  auto label = [&](int id, int text_id, const RECT& twips) {
    Child(editor_.static_class_, Text(text_id), SS_CENTERIMAGE, id, twips);
  };
  Child(editor_.static_class_, L"", SS_CENTERIMAGE | SS_NOPREFIX, ids::kChecksSummary,
        {kMargin, kMargin, right, kMargin + kButtonHeight});
  int y = kMargin + kButtonHeight + kGap;
  label(ids::kFindingsLabel, sid::kFindingsLabel, {kMargin, y, right, y + kButtonHeight});
  y += kButtonHeight + kLabelGap;
  list_ = Child(WC_LISTVIEWW, L"", WS_TABSTOP | WS_BORDER | LVS_REPORT | LVS_SINGLESEL | LVS_SHOWSELALWAYS,
                ids::kFindingsList, {kMargin, y, right, y + kListHeight});
  ListView_SetExtendedListViewStyle(list_, LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER);
  const std::pair<int, int> columns[] = {{sid::kColumnRule, 2000}, {sid::kColumnColors, 3400}, {sid::kColumnMeasured, 1100},
                                          {sid::kColumnNeeded, 1000}, {sid::kColumnVision, 1300}};
  for (int c = 0; c < 5; ++c) {
    std::wstring caption = Text(columns[c].first);
    LVCOLUMNW column{};
    column.mask = LVCF_TEXT | LVCF_WIDTH;
    column.pszText = caption.data();
    column.cx = Px(columns[c].second);
    ListView_InsertColumn(list_, c, &column);
  }
  y += kListHeight + kGap;
  const int label_width = [&] {
    const TextMeter meter(window_, editor_.gdi_->font.get());
    return MulDiv(meter.Width(Text(sid::kVisionLabel)), 1440, editor_.dpi_) + kGap;
  }();
  label(ids::kVisionLabel, sid::kVisionLabel, {kMargin, y, kMargin + label_width, y + kCategoryHeight});
  HWND combo = Child(editor_.combo_class_, L"", WS_TABSTOP | WS_VSCROLL | CBS_DROPDOWNLIST, ids::kVisionCombo,
                     {kMargin + label_width + kGap, y, kMargin + label_width + kGap + kComboWidth, y + kComboDrop});
  for (quality::Vision v : quality::kVisions)
    SendMessageW(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(Widen(VisionText(Texts(), v)).c_str()));
  SendMessageW(combo, CB_SETCURSEL, static_cast<WPARAM>(vision_), 0);
  y += kCategoryHeight + kGap;
  label(ids::kPreviewLabel, sid::kPreviewLabel, {kMargin, y, right, y + kButtonHeight});
  y += kButtonHeight + kLabelGap;
  // Two rows of panels, each a title and three list rows (list_preview.cpp).
  TEXTMETRICW metrics{};
  {
    WindowDC dc(window_);
    SelectedObject font(dc.get(), editor_.gdi_->font.get());
    GetTextMetricsW(dc.get(), &metrics);
  }
  const int line = MulDiv(metrics.tmHeight, 1440, editor_.dpi_) + 60, preview = 2 * (4 * line + 120) + 120;
  Child(editor_.static_class_, L"", SS_OWNERDRAW, ids::kListPreview, {kMargin, y, right, y + preview});
  y += preview + kGap;
  const int close_width = [&] {
    const TextMeter meter(window_, editor_.gdi_->font.get());
    return std::max(kMinButtonWidth, MulDiv(meter.Width(Text(sid::kClose)), 1440, editor_.dpi_) + 2 * kGap);
  }();
  Child(editor_.button_class_, Text(sid::kClose), WS_TABSTOP | BS_PUSHBUTTON, ids::kCheckClose,
        {right - close_width, y, right, y + kButtonRowHeight});
  y += kButtonRowHeight + kMargin;
  RECT outer{0, 0, Px(kCheckWidth), Px(y)};
  AdjustWindowRectEx(&outer, static_cast<DWORD>(GetWindowLongW(window_, GWL_STYLE)), FALSE,
                     static_cast<DWORD>(GetWindowLongW(window_, GWL_EXSTYLE)));
  SetWindowPos(window_, nullptr, 0, 0, outer.right - outer.left, outer.bottom - outer.top,
               SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void CheckUi::FillFindings() {
  const int selected = std::max(0, ListView_GetNextItem(list_, -1, LVNI_SELECTED));
  SendMessageW(list_, WM_SETREDRAW, FALSE, 0);
  ListView_DeleteAllItems(list_);
  shown_findings_ = checks_.Failed();
  const IndexName name = [this](int i) { return NameOf(i); };
  for (std::size_t i = 0; i < shown_findings_.size(); ++i) {
    const quality::Finding& f = *shown_findings_[i];
    const std::wstring cells[] = {Widen(f.rule), Widen(FindingColours(f, name)), Widen(FindingMeasured(Texts(), f)),
                                  Widen(FindingNeeded(f)), Widen(VisionText(Texts(), VisionOf(f)))};
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    item.iItem = static_cast<int>(i);
    item.pszText = const_cast<wchar_t*>(cells[0].c_str());
    ListView_InsertItem(list_, &item);
    for (int c = 1; c < 5; ++c) ListView_SetItemText(list_, static_cast<int>(i), c, const_cast<wchar_t*>(cells[c].c_str()));
  }
  if (!shown_findings_.empty()) {
    const int keep = std::min<int>(selected, static_cast<int>(shown_findings_.size()) - 1);
    ListView_SetItemState(list_, keep, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
  }
  SendMessageW(list_, WM_SETREDRAW, TRUE, 0);
  InvalidateRect(list_, nullptr, TRUE);
  SetDlgItemTextW(window_, ids::kChecksSummary, Widen(ChecksSummary(Texts(), checks_)).c_str());
}

// To the finding's first colour: its tab and category in the editor, its colour button focused.
void CheckUi::Jump() {
  const int selected = ListView_GetNextItem(list_, -1, LVNI_SELECTED);
  if (selected < 0 || selected >= static_cast<int>(shown_findings_.size())) return;
  frmTqColorSetting& s = *editor_.session_;
  const int index = shown_findings_[selected]->indexes.front();
  const int row = s.Table().ColorRowMap[index];
  if (row < 0) return;
  const RowPlace place = PlaceOfRow(row);
  TabSelection& selection = s.Selection();
  const auto& strip = selection.Strip();
  const auto position = std::find(strip.begin(), strip.end(), place.page);
  if (position == strip.end()) return;
  selection.SelectPosition(static_cast<int>(position - strip.begin()));
  for (int c = 0; c < kTabPages[place.page].category_count; ++c)
    if (ShownFrame(place.page, c) == place.frame) {
      selection.SetCategoryNumber(c);
      break;
    }
  editor_.ApplySelection();
  SetActiveWindow(editor_.hwnd_);
  HWND button = editor_.color_buttons_[row];
  SetFocus(button && IsWindowEnabled(button) ? button : editor_.tabs_);
}

void CheckUi::SetVision(quality::Vision vision) {
  if (vision == vision_) return;
  vision_ = vision;
  if (editor_.session_ && editor_.hwnd_)
    SetWindowTextW(editor_.hwnd_, (Widen(editor_.session_->Caption()) + TitleSuffix()).c_str());
  RepaintEditor();
  if (window_) InvalidateRect(GetDlgItem(window_, ids::kListPreview), nullptr, FALSE);
}

void CheckUi::RepaintEditor() {
  if (!editor_.hwnd_) return;
  for (HWND button : editor_.color_buttons_)
    if (button) InvalidateRect(button, nullptr, FALSE);
}

bool CheckUi::PreTranslate(MSG& msg) {
  if (!window_ || (msg.hwnd != window_ && !IsChild(window_, msg.hwnd))) return false;
  return IsDialogMessageW(window_, &msg);
}

LRESULT CALLBACK CheckUi::WindowProc(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_NCCREATE)
    SetWindowLongPtrW(hwnd, GWLP_USERDATA,
                      reinterpret_cast<LONG_PTR>(reinterpret_cast<CREATESTRUCTW*>(lparam)->lpCreateParams));
  auto* self = reinterpret_cast<CheckUi*>(GetWindowLongPtrW(hwnd, GWLP_USERDATA));
  if (!self) return DefWindowProcW(hwnd, message, wparam, lparam);
  return GuardCallback(LRESULT{0}, [&] { return self->Handle(hwnd, message, wparam, lparam); },
                       [self] { self->editor_.Fail(); });
}

LRESULT CheckUi::Handle(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_COMMAND:
      switch (LOWORD(wparam)) {
        case IDOK:  // Enter: on the list it follows the finding
          if (GetFocus() == list_) Jump();
          return 0;
        case ids::kCheckClose:
          DestroyWindow(hwnd);
          return 0;
        case ids::kVisionCombo:
          if (HIWORD(wparam) == CBN_SELCHANGE)
            SetVision(static_cast<quality::Vision>(
                std::clamp<LRESULT>(SendMessageW(reinterpret_cast<HWND>(lparam), CB_GETCURSEL, 0, 0), 0, 3)));
          return 0;
        default:
          return 0;
      }
    case WM_NOTIFY: {
      const NMHDR& header = *reinterpret_cast<NMHDR*>(lparam);
      if (header.hwndFrom == list_ && (header.code == NM_DBLCLK || header.code == NM_RETURN)) Jump();
      return 0;
    }
    case WM_DRAWITEM: {
      const auto& item = *reinterpret_cast<DRAWITEMSTRUCT*>(lparam);
      if (item.CtlID == ids::kListPreview)
        PaintListPreview(item.hDC, item.rcItem, ColorLists(checks_.Colours()), vision_, editor_.gdi_->font.get(),
                         editor_.dpi_);
      return TRUE;
    }
    case DM_GETDEFID:
      return MAKELRESULT(IDOK, DC_HASDEFID);
    case WM_DPICHANGED: {
      // It takes the editor's DPI with the editor's own message; here it only moves where
      // the system suggests.
      const RECT& suggested = *reinterpret_cast<const RECT*>(lparam);
      SetWindowPos(hwnd, nullptr, suggested.left, suggested.top, 0, 0, SWP_NOZORDER | SWP_NOSIZE | SWP_NOACTIVATE);
      return 0;
    }
    case WM_CLOSE:
      DestroyWindow(hwnd);
      return 0;
    case WM_DESTROY:
      window_ = list_ = nullptr;
      shown_findings_.clear();
      SetVision(quality::Vision::Normal);
      if (editor_.hwnd_ && IsWindowVisible(editor_.hwnd_) && GetActiveWindow() == nullptr)
        SetActiveWindow(editor_.hwnd_);
      break;
    default:
      break;
  }
  return DefWindowProcW(hwnd, message, wparam, lparam);
}

}  // namespace tq::win
