// The editor window's geometry: its controls, their places and sizes, and the pages
// of the tab strip, made when first shown.
#include "win32/editor_window.h"

#include <commctrl.h>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "support/string_ids.h"
#include "win32/editor_ids.h"
#include "win32/editor_parts.h"
#include "win32/handles.h"
#include "win32/text.h"

namespace tq::win {

namespace ids = editor_ids;

HWND EditorWindow::CreateChild(HWND parent, const wchar_t* window_class, const std::wstring& text, DWORD style,
                               int id, const RECT& twips, DWORD ex_style) {
  HWND child = CreateWindowExW(ex_style, window_class, text.c_str(), WS_CHILD | style, Px(twips.left),
                               Px(twips.top), Px(twips.right - twips.left), Px(twips.bottom - twips.top), parent,
                               reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), ThisModule(), this);
  SendMessageW(child, WM_SETFONT, reinterpret_cast<WPARAM>(gdi_->font.get()), FALSE);
  return child;
}

// A page or a frame: one of our own classes, handed `this` like the editor itself.
HWND EditorWindow::CreateContainer(HWND parent, const wchar_t* window_class, int id, const RECT& pixels) {
  return CreateWindowExW(WS_EX_CONTROLPARENT, window_class, L"", WS_CHILD | WS_CLIPCHILDREN, pixels.left, pixels.top,
                         pixels.right - pixels.left, pixels.bottom - pixels.top, parent,
                         reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), ThisModule(), this);
}

void EditorWindow::CreateControls() {
  frmTqColorSetting& s = *session_;
  // The frames are as wide as the longest row name of any page needs, so no name is
  // cut at any DPI or in any language.
  {
    const TextMeter meter(hwnd_, gdi_->font.get());
    auto twips_of = [&](const std::wstring& text) { return MulDiv(meter.Width(text), 1440, dpi_) + kGap; };
    int widest = 2400;
    for (int row = 0; row < kRowCount; ++row)
      if (s.RowIndex(row) >= 0)
        widest = std::max(widest, twips_of(Widen(RowName(s.Strings(), row, s.VoltageNames()))));
    name_width_ = widest;
    // The RGB column grows for a font or language that needs it; the names move right.
    rgb_width_ = std::max({kRgbWidth, twips_of(L"(255, 255, 255)"), twips_of(Caption(sid::kUnreadable)),
                           twips_of(Caption(sid::kNotDefined))});
    name_left_ = std::max(kNameLeft, kRgbLeft + rgb_width_ + kGap);
  }

  tooltip_ = CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX,
                             CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, hwnd_, nullptr,
                             ThisModule(), nullptr);
  SendMessageW(tooltip_, TTM_SETMAXTIPWIDTH, 0, Px(6000));

  tabs_ = CreateChild(hwnd_, WC_TABCONTROLW, L"", WS_VISIBLE | WS_TABSTOP | WS_CLIPCHILDREN | TCS_MULTILINE,
                      ids::kTabStrip, {0, 0, 100, 100}, WS_EX_CONTROLPARENT);
  const std::vector<int>& strip = s.Selection().Strip();
  for (std::size_t position = 0; position < strip.size(); ++position) {
    std::wstring caption = Caption(TabCaptionId(strip[position]));
    TCITEMW item{};
    item.mask = TCIF_TEXT | TCIF_PARAM;
    item.pszText = caption.data();
    item.lParam = strip[position];
    SendMessageW(tabs_, TCM_INSERTITEMW, position, reinterpret_cast<LPARAM>(&item));
  }

  std::wstring taken;
  auto button = [&](int id, int text_id, DWORD style) {
    std::wstring text = Caption(text_id);
    if (id != ids::kOk && id != ids::kCancel) text = WithMnemonic(text, taken);  // Enter and Esc have theirs
    return CreateChild(hwnd_, button_class_, text, WS_VISIBLE | WS_TABSTOP | style, id, {0, 0, 100, 100});
  };
  CreateChild(hwnd_, combo_class_, L"", WS_VISIBLE | WS_TABSTOP | WS_VSCROLL | CBS_DROPDOWNLIST, ids::kSchemeCombo,
              {0, 0, kSchemeComboWidth, kComboDrop});
  button(ids::kSaveAsButton, sid::kSaveAs, BS_PUSHBUTTON);
  button(ids::kDeleteButton, sid::kDelete, BS_PUSHBUTTON);
  // The menu opens on the press of the mouse button, not on its release.
  SetWindowSubclass(button(ids::kMoreButton, sid::kMore, BS_PUSHBUTTON), &MoreButtonProc, 0,
                    reinterpret_cast<DWORD_PTR>(this));
  button(ids::kOk, sid::kOk, BS_DEFPUSHBUTTON);
  button(ids::kCancel, sid::kCancel, BS_PUSHBUTTON);
  Layout();
}

void EditorWindow::Layout() {
  // The page content: category row, then a frame of 20 rows.
  const int frame_width = name_left_ + name_width_ + kGap;
  RECT display{0, 0, Px(kGap + frame_width + kGap), Px(kFrameTop + kFrameHeight + kGap)};
  // Multi-line tabs: the strip's height depends on its width, so set the width first.
  SetWindowPos(tabs_, nullptr, 0, 0, display.right + Px(2 * kGap), Px(2000), SWP_NOZORDER | SWP_NOMOVE);
  RECT outer = display;
  SendMessageW(tabs_, TCM_ADJUSTRECT, TRUE, reinterpret_cast<LPARAM>(&outer));
  const int tab_width = outer.right - outer.left, tab_height = outer.bottom - outer.top;
  const int left = Px(kMargin), top = Px(kMargin);
  SetWindowPos(tabs_, nullptr, left, top, tab_width, tab_height, SWP_NOZORDER);  // pages follow when built

  // Buttons: scheme list, Save As and Delete on one line, More, OK and Cancel on the
  // next; or, when that would make the window taller than the screen's work area (high
  // DPI on a laptop screen), in a column beside the tabs, with OK and Cancel at its foot.
  const auto [save, remove, more, ok, cancel] = [&] {
    const TextMeter meter(hwnd_, gdi_->font.get());
    auto width_of = [&](int id) {
      wchar_t text[256];
      const int n = GetDlgItemTextW(hwnd_, id, text, 256);
      return std::max(Px(kMinButtonWidth), meter.Width({text, static_cast<std::size_t>(n)}) + Px(2 * kGap));
    };
    return std::array{width_of(ids::kSaveAsButton), width_of(ids::kDeleteButton), width_of(ids::kMoreButton),
                      width_of(ids::kOk), width_of(ids::kCancel)};
  }();
  const int height = Px(kButtonRowHeight), gap = Px(kGap), combo = Px(kSchemeComboWidth);
  auto place = [&](int id, int x, int y, int width) {
    SetWindowPos(GetDlgItem(hwnd_, id), nullptr, x, y, width, id == ids::kSchemeCombo ? Px(kComboDrop) : height,
                 SWP_NOZORDER | SWP_NOACTIVATE);
  };
  RECT frame{0, 0, 0, 0};
  AdjustWindowRectEx(&frame, static_cast<DWORD>(GetWindowLongW(hwnd_, GWL_STYLE)), FALSE,
                     static_cast<DWORD>(GetWindowLongW(hwnd_, GWL_EXSTYLE)));
  MONITORINFO monitor{};
  monitor.cbSize = sizeof monitor;
  GetMonitorInfoW(MonitorFromWindow(owner_ ? owner_ : hwnd_, MONITOR_DEFAULTTONEAREST), &monitor);
  const int below = top + tab_height + gap + height + gap + height + top;
  const bool beside = below + (frame.bottom - frame.top) > monitor.rcWork.bottom - monitor.rcWork.top;
  int client_width, client_height;
  if (beside) {
    // The buttons as wide as the widest of them, right-aligned under the scheme list.
    const int buttons = std::max({save, remove, more, ok, cancel}), width = std::max(combo, buttons);
    const int x = left + tab_width + gap, button_x = x + width - buttons;
    place(ids::kSchemeCombo, x, top, width);
    int y = top;
    for (int id : {ids::kSaveAsButton, ids::kDeleteButton}) {
      y += height + gap;
      place(id, button_x, y, buttons);
    }
    y = top + tab_height - height;
    for (int id : {ids::kCancel, ids::kOk, ids::kMoreButton}) {
      place(id, button_x, y, buttons);
      y -= height + gap;
    }
    client_width = x + width + left;
    client_height = top + tab_height + top;
  } else {
    client_width = left + tab_width + left;
    // The top row ends where Cancel and the tab strip end: the scheme list takes the
    // room that Save As and Delete leave.
    const int list = std::max(combo, tab_width - save - remove - 2 * gap);
    int x = left, y = top + tab_height + gap;
    for (auto [id, width] : {std::pair{ids::kSchemeCombo, list}, {ids::kSaveAsButton, save}, {ids::kDeleteButton, remove}}) {
      place(id, x, y, width);
      x += width + gap;
    }
    y += height + gap;
    x = client_width - left - cancel - gap - ok - gap - more;
    for (auto [id, width] : {std::pair{ids::kMoreButton, more}, {ids::kOk, ok}, {ids::kCancel, cancel}}) {
      place(id, x, y, width);
      x += width + gap;
    }
    client_height = below;
  }

  RECT window{0, 0, client_width, client_height};
  AdjustWindowRectEx(&window, static_cast<DWORD>(GetWindowLongW(hwnd_, GWL_STYLE)), FALSE,
                     static_cast<DWORD>(GetWindowLongW(hwnd_, GWL_EXSTYLE)));
  SetWindowPos(hwnd_, nullptr, 0, 0, window.right - window.left, window.bottom - window.top,
               SWP_NOZORDER | SWP_NOMOVE | SWP_NOACTIVATE);
}

// A page's controls are made the first time it is shown: most sessions look at one
// or two pages, and the 870 row controls of all pages would cost more than the rest
// of the window together.
void EditorWindow::BuildPage(int page) {
  if (pages_[page]) return;
  const TabPage& tab = kTabPages[page];
  ActivationScope styles;
  RECT inner;
  GetClientRect(tabs_, &inner);
  SendMessageW(tabs_, TCM_ADJUSTRECT, FALSE, reinterpret_cast<LPARAM>(&inner));
  HWND panel = CreateContainer(tabs_, kPanelClass, ids::kPagePanel + page, inner);
  pages_[page] = panel;

  // The category list: its label and combo stay visible but greyed on a page without one.
  std::wstring taken;
  const std::wstring label_text = WithMnemonic(Caption(CategoryLabelId(page)), taken);
  const int label_width = MulDiv(TextMeter(panel, gdi_->font.get()).Width(label_text), 1440, dpi_) + kGap;
  HWND label = CreateChild(panel, static_class_, label_text, WS_VISIBLE | SS_CENTERIMAGE, ids::kCategoryLabel + page,
                           {kButtonLeft, kCategoryTop, kButtonLeft + label_width, kCategoryTop + kCategoryHeight});
  HWND combo = CreateChild(panel, combo_class_, L"", WS_VISIBLE | WS_TABSTOP | WS_VSCROLL | CBS_DROPDOWNLIST,
                           ids::kCategoryCombo + page,
                           {kButtonLeft + label_width + kGap, kCategoryTop,
                            kButtonLeft + label_width + kGap + kComboWidth, kCategoryTop + kComboDrop});
  for (int j = 0; j < tab.category_count; ++j)
    SendMessageW(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(Caption(CategoryNameId(page, j)).c_str()));
  EnableWindow(label, tab.category_count > 0);
  EnableWindow(combo, tab.category_count > 0);
}

// Shows the session's page and its frame, building them when first shown.
void EditorWindow::ApplySelection() {
  TabSelection& selection = session_->Selection();
  const int page = selection.TabNumber(), frame = selection.ShownFrameOf(page);
  SendMessageW(tabs_, TCM_SETCURSEL, selection.SelectedPosition(), 0);
  BuildPage(page);
  BuildFrame(page, frame);
  if (selection.CategoryNumber() >= 0)
    SendDlgItemMessageW(pages_[page], ids::kCategoryCombo + page, CB_SETCURSEL, selection.CategoryNumber(), 0);
  // Only what changes is shown or hidden: a hidden page keeps its frame as it was.
  auto show = [](HWND window, bool visible) {
    ShowWindow(window, visible ? SW_SHOWNA : SW_HIDE);
    EnableWindow(window, visible);
  };
  if (shown_frame_[page] != frame) {
    if (shown_frame_[page] >= 0) show(frames_[page][shown_frame_[page]], false);
    show(frames_[page][frame], true);
    shown_frame_[page] = frame;
  }
  if (shown_page_ != page) {
    if (shown_page_ >= 0) show(pages_[shown_page_], false);
    show(pages_[page], true);
    shown_page_ = page;
  }
}

}  // namespace tq::win
