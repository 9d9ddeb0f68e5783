#include "win32/editor_window.h"

#include <commctrl.h>
#include <commdlg.h>

#include <algorithm>
#include <cstdio>
#include <utility>
#include <vector>

#include "colortable/clut_locations.h"
#include "support/localization.h"
#include "support/thread_owned.h"
#include "support/utils.h"
#include "win32/common_dialog.h"
#include "win32/editor_ids.h"
#include "win32/font_helper.h"
#include "win32/guard.h"
#include "win32/handles.h"
#include "win32/msgbox.h"
#include "win32/save_scheme_dialog.h"
#include "win32/text.h"

namespace tq::win {

namespace ids = editor_ids;

namespace {

constexpr wchar_t kPanelClass[] = L"TqColorSettingPanel";
constexpr int kManifestResource = 200;  // RT_MANIFEST of our own, not the loader's 1-3

// Geometry in twips beside the rows' own (catalogue.h).
constexpr int kMargin = 120;
constexpr int kGap = 120;
constexpr int kCategoryTop = 90, kCategoryHeight = 315, kComboWidth = 3200, kComboDrop = 2400;
constexpr int kFrameTop = kCategoryTop + kCategoryHeight + kGap;
constexpr int kFrameHeight = 480 + 19 * kRowPitch + kButtonHeight + kGap;  // 20 rows below the Tagout heading
constexpr int kButtonRowHeight = 345, kMinButtonWidth = 1125, kSchemeComboWidth = 3000;

struct DeleteFont {
  void operator()(HFONT font) const { DeleteObject(font); }
};
using UniqueFont = std::unique_ptr<std::remove_pointer_t<HFONT>, DeleteFont>;

// Common controls 6 (visual styles) for our windows only: the manifest of our module
// is activated around their creation, so the host keeps the look it chose.
class ActivationScope {
 public:
  ActivationScope() {
    static HANDLE context = [] {
      ACTCTXW actctx{};
      actctx.cbSize = sizeof actctx;
      actctx.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
      actctx.hModule = ThisModule();
      actctx.lpResourceName = MAKEINTRESOURCEW(kManifestResource);
      return CreateActCtxW(&actctx);
    }();
    if (context != INVALID_HANDLE_VALUE && !ActivateActCtx(context, &cookie_)) cookie_ = 0;
  }
  ~ActivationScope() {
    if (cookie_) DeactivateActCtx(0, cookie_);
  }
  ActivationScope(const ActivationScope&) = delete;
  ActivationScope& operator=(const ActivationScope&) = delete;

 private:
  ULONG_PTR cookie_ = 0;
};

// The system's DPI as this thread sees it (96 on a DPI-unaware thread).
int ThreadDpi() {
  HDC screen = GetDC(nullptr);
  const int dpi = GetDeviceCaps(screen, LOGPIXELSY);
  ReleaseDC(nullptr, screen);
  return dpi > 0 ? dpi : 96;
}

int WindowDpi(HWND hwnd) {
  using GetDpiForWindowFn = UINT(WINAPI*)(HWND);
  static const auto get_dpi = reinterpret_cast<GetDpiForWindowFn>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32.dll"), "GetDpiForWindow")));
  if (get_dpi && hwnd)
    if (const UINT dpi = get_dpi(hwnd)) return static_cast<int>(dpi);
  return ThreadDpi();
}

// A push button, the owner-drawn colour buttons included (which the system counts as
// buttons of no particular kind).
bool IsPushButton(HWND control) {
  const LRESULT code = SendMessageW(control, WM_GETDLGCODE, 0, 0);
  return (code & (DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON)) ||
         ((code & DLGC_BUTTON) && (GetWindowLongW(control, GWL_STYLE) & BS_TYPEMASK) == BS_OWNERDRAW);
}

// Gives the caption an access key: its first letter not taken yet by another one.
std::wstring WithMnemonic(const std::wstring& text, std::wstring& taken) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    wchar_t upper = text[i];
    CharUpperBuffW(&upper, 1);
    if (!IsCharAlphaW(text[i]) || taken.find(upper) != std::wstring::npos) continue;
    taken += upper;
    return text.substr(0, i) + L"&" + text.substr(i);
  }
  return text;
}

std::wstring RgbText(std::int32_t colour) {
  wchar_t text[32];
  swprintf(text, 32, L"(%d, %d, %d)", colour & 0xFF, (colour >> 8) & 0xFF, (colour >> 16) & 0xFF);
  return text;
}

COLORREF Resolve(std::int32_t colour) {
  return colour == kSystemButtonFace ? GetSysColor(COLOR_BTNFACE) : static_cast<COLORREF>(colour & 0xFFFFFF);
}

// Rows are numbered from the control ids.
bool IsIdIn(int id, int base) { return id >= base && id < base + kRowCount; }

thread_local ThreadOwned<EditorWindow> t_window;
LONG g_live_windows = 0;
INIT_ONCE g_classes_registered = INIT_ONCE_STATIC_INIT;

BOOL CALLBACK RegisterOnce(PINIT_ONCE, PVOID classes, PVOID*) {
  INITCOMMONCONTROLSEX init{sizeof init, ICC_TAB_CLASSES | ICC_STANDARD_CLASSES | ICC_BAR_CLASSES};
  InitCommonControlsEx(&init);
  // A class left by this library's image before (same module, same procedures) serves.
  auto add = [](const WNDCLASSEXW& c) { return RegisterClassExW(&c) || GetLastError() == ERROR_CLASS_ALREADY_EXISTS; };
  auto* pair = static_cast<const std::pair<WNDCLASSEXW, WNDCLASSEXW>*>(classes);
  return add(pair->first) && add(pair->second);
}

}  // namespace

struct EditorWindow::Gdi {
  UniqueFont font;
  UniqueFont bold;
};

EditorWindow& EditorWindow::ThisThread() { return t_window.Get(); }

long EditorWindow::LiveWindows() { return InterlockedCompareExchange(&g_live_windows, 0, 0); }

bool EditorWindow::RegisterClasses() {
  WNDCLASSEXW editor{};
  editor.cbSize = sizeof editor;
  editor.lpfnWndProc = &EditorWindow::WindowProc;
  editor.hInstance = ThisModule();
  editor.hCursor = LoadCursorW(nullptr, IDC_ARROW);
  editor.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
  editor.lpszClassName = ids::kEditorClass;
  editor.hIcon = LoadIconW(nullptr, IDI_APPLICATION);
  WNDCLASSEXW panel = editor;
  panel.lpfnWndProc = &EditorWindow::PanelProc;
  panel.lpszClassName = kPanelClass;
  panel.hIcon = nullptr;
  // Once: two threads opening their first editor at the same moment both get it. A
  // failure is not remembered, so a later editor tries again.
  std::pair classes{editor, panel};
  return InitOnceExecuteOnce(&g_classes_registered, &RegisterOnce, &classes, nullptr);
}

// On unloading, when no window of the classes is left and no thread registers them.
void EditorWindow::UnregisterClasses() {
  UnregisterClassW(ids::kEditorClass, ThisModule());
  UnregisterClassW(kPanelClass, ThisModule());
  InitOnceInitialize(&g_classes_registered);
}

EditorWindow::~EditorWindow() { Destroy(); }

std::wstring EditorWindow::Caption(int id) const {
  // The session keeps its texts from the language the host set; until then the
  // built-in table speaks.
  const std::string& text = session_ ? session_->Text(id) : std::string();
  return Widen(text.empty() ? GetString(id) : text);
}

// A window that cannot be built whole is not kept: ShowModal then returns at once, as
// if cancelled.
void EditorWindow::Load(frmTqColorSetting& session) {
  GuardCallback(0, [&] { return Build(session), 0; }, [this] { Destroy(); });
}

void EditorWindow::Build(frmTqColorSetting& session) {
  // An owner that is not a window (a stale handle from the host) gives no owner.
  const HWND parent = reinterpret_cast<HWND>(static_cast<std::uintptr_t>(static_cast<std::uint32_t>(session.hwndParent)));
  const HWND owner = parent && IsWindow(parent) ? parent : nullptr;
  Shape shape{owner,       session.Language(), session.PipelineEnabled, session.VoltageNames(),
              ThreadDpi(), owner ? WindowDpi(owner) : 0};
  file_tip_ = Widen(session.ClutFileName());
  // The window of the last session is kept hidden: when it would be built the same
  // (owner, language, rows), it only takes the new colours. Opening is then several
  // times faster, and nothing is created or freed per opening. (A window destroyed
  // under us has been forgotten at its WM_NCDESTROY.)
  if (hwnd_ && shape == shape_) {
    session_ = &session;
    RowChanged(-1);
    ApplyTopMost();
    return;
  }
  Destroy();
  session_ = &session;
  shape_ = std::move(shape);
  owner_ = shape_.owner;
  DWORD error = 0;
  if (RegisterClasses()) {
    ActivationScope styles;
    hwnd_ = CreateWindowExW(WS_EX_DLGMODALFRAME | WS_EX_CONTROLPARENT, ids::kEditorClass,
                            Widen(session.Caption()).c_str(),
                            WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_CLIPCHILDREN, CW_USEDEFAULT, CW_USEDEFAULT, 100,
                            100, owner_, nullptr, ThisModule(), this);
    if (!hwnd_) error = GetLastError();
  } else {
    error = GetLastError();
  }
  if (!hwnd_) {
    // The session goes on as if the user had cancelled: the user learns why.
    int buttons = MB_OK;
    ShowMessage(GetString(1333) + "\r\n" + ErrorText(error), buttons, MB_ICONSTOP, session.Caption());
    return;
  }
  InterlockedIncrement(&g_live_windows);
  // The system menu offers only what a dialog offers.
  if (HMENU menu = GetSystemMenu(hwnd_, FALSE)) {
    DeleteMenu(menu, SC_SIZE, MF_BYCOMMAND);
    DeleteMenu(menu, SC_MAXIMIZE, MF_BYCOMMAND);
    DeleteMenu(menu, SC_MINIMIZE, MF_BYCOMMAND);
    DeleteMenu(menu, SC_RESTORE, MF_BYCOMMAND);
  }
  dpi_ = WindowDpi(hwnd_);
  gdi_ = std::make_unique<Gdi>();
  LOGFONTW font = clsFontHelper::MessageFont(dpi_);
  gdi_->font.reset(CreateFontIndirectW(&font));
  font.lfWeight = FW_BOLD;
  gdi_->bold.reset(CreateFontIndirectW(&font));
  // The versioned classes of common controls 6, looked up once: by name, every
  // creation would resolve the activation context again.
  auto atom_of = [](const wchar_t* name) {
    WNDCLASSEXW info{};
    info.cbSize = sizeof info;
    const ATOM atom = static_cast<ATOM>(GetClassInfoExW(nullptr, name, &info));
    return atom ? MAKEINTATOM(atom) : name;
  };
  button_class_ = atom_of(WC_BUTTONW);
  static_class_ = atom_of(WC_STATICW);
  combo_class_ = atom_of(WC_COMBOBOXW);
  CreateControls();
  ApplyTopMost();
}

// Top-most owner, top-most editor: it must not open behind an always-on-top display.
void EditorWindow::ApplyTopMost() {
  const bool top_most = owner_ && (GetWindowLongW(owner_, GWL_EXSTYLE) & WS_EX_TOPMOST);
  if (top_most == ((GetWindowLongW(hwnd_, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0)) return;
  SetWindowPos(hwnd_, top_most ? HWND_TOPMOST : HWND_NOTOPMOST, 0, 0, 0, 0,
               SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
}

void EditorWindow::Unload() {
  if (hwnd_) ShowWindow(hwnd_, SW_HIDE);
  session_ = nullptr;  // a hidden window serves no session
}

void EditorWindow::Destroy() {
  if (HWND hwnd = std::exchange(hwnd_, nullptr)) {
    DestroyWindow(hwnd);  // the tooltip, a window it owns, goes with it
    InterlockedDecrement(&g_live_windows);
  }
  Forget();
  session_ = nullptr;
}

// Lets go of what was made for the window, which is gone.
void EditorWindow::Forget() {
  tooltip_ = tabs_ = nullptr;
  pages_.fill(nullptr);
  for (auto& frames : frames_) frames.fill(nullptr);
  shown_frame_.fill(-1);
  shown_page_ = -1;
  color_buttons_.fill(nullptr);
  rgb_labels_.fill(nullptr);
  for (auto& text : rgb_texts_) text.clear();
  buttons_enabled_ = true;
  gdi_.reset();
}

HWND EditorWindow::CreateChild(HWND parent, const wchar_t* window_class, const std::wstring& text, DWORD style,
                               int id, const RECT& twips, DWORD ex_style) {
  HWND child = CreateWindowExW(ex_style, window_class, text.c_str(), WS_CHILD | style, Px(twips.left),
                               Px(twips.top), Px(twips.right - twips.left), Px(twips.bottom - twips.top), parent,
                               reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), ThisModule(), this);
  SendMessageW(child, WM_SETFONT, reinterpret_cast<WPARAM>(gdi_->font.get()), FALSE);
  return child;
}

void EditorWindow::CreateControls() {
  frmTqColorSetting& s = *session_;
  // The frames are as wide as the longest row name of any page needs, so no name is
  // cut at any DPI or in any language.
  {
    HDC dc = GetDC(hwnd_);
    HGDIOBJ old = SelectObject(dc, gdi_->font.get());
    auto twips_of = [&](const std::wstring& text) {
      SIZE size{};
      GetTextExtentPoint32W(dc, text.c_str(), static_cast<int>(text.size()), &size);
      return MulDiv(size.cx, 1440, dpi_) + kGap;
    };
    int widest = 2400;
    for (int row = 0; row < kRowCount; ++row)
      if (IsRowShown(s.Table().ColorRowMap, row)) widest = std::max(widest, twips_of(Widen(RowName(row, s.VoltageNames()))));
    name_width_ = widest;
    // The RGB column grows for a font or language that needs it; the names move right.
    rgb_width_ = std::max({kRgbWidth, twips_of(L"(255, 255, 255)"), twips_of(Caption(1303)), twips_of(Caption(1304))});
    name_left_ = std::max(kNameLeft, kRgbLeft + rgb_width_ + kGap);
    SelectObject(dc, old);
    ReleaseDC(hwnd_, dc);
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
  button(ids::kSaveAsButton, 1208, BS_PUSHBUTTON);
  button(ids::kDeleteButton, 1209, BS_PUSHBUTTON);
  // The menu opens on the press of the mouse button, not on its release.
  SetWindowSubclass(button(ids::kMoreButton, 1203, BS_PUSHBUTTON), &MoreButtonProc, 0,
                    reinterpret_cast<DWORD_PTR>(this));
  button(ids::kOk, 1201, BS_DEFPUSHBUTTON);
  button(ids::kCancel, 1202, BS_PUSHBUTTON);
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
  HDC dc = GetDC(hwnd_);
  HGDIOBJ old = SelectObject(dc, gdi_->font.get());
  auto width_of = [&](int id) {
    wchar_t text[256];
    const int n = GetDlgItemTextW(hwnd_, id, text, 256);
    SIZE size{};
    GetTextExtentPoint32W(dc, text, n, &size);
    return std::max(Px(kMinButtonWidth), static_cast<int>(size.cx) + Px(2 * kGap));
  };
  const int height = Px(kButtonRowHeight), gap = Px(kGap);
  auto place = [&](int id, int x, int y, int width) {
    SetWindowPos(GetDlgItem(hwnd_, id), nullptr, x, y, width, id == ids::kSchemeCombo ? Px(kComboDrop) : height,
                 SWP_NOZORDER | SWP_NOACTIVATE);
  };
  const int combo = Px(kSchemeComboWidth), save = width_of(ids::kSaveAsButton), remove = width_of(ids::kDeleteButton);
  const int more = width_of(ids::kMoreButton), ok = width_of(ids::kOk), cancel = width_of(ids::kCancel);
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
  SelectObject(dc, old);
  ReleaseDC(hwnd_, dc);

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
  HWND panel = CreateWindowExW(WS_EX_CONTROLPARENT, kPanelClass, L"", WS_CHILD | WS_CLIPCHILDREN, inner.left,
                               inner.top, inner.right - inner.left, inner.bottom - inner.top, tabs_,
                               reinterpret_cast<HMENU>(static_cast<INT_PTR>(ids::kPagePanel + page)), ThisModule(),
                               this);
  pages_[page] = panel;

  // The category list: its label and combo stay visible but greyed on a page without one.
  HDC dc = GetDC(panel);
  HGDIOBJ old = SelectObject(dc, gdi_->font.get());
  std::wstring taken;
  const std::wstring label_text = WithMnemonic(Caption(CategoryLabelId(page)), taken);
  SIZE size{};
  GetTextExtentPoint32W(dc, label_text.c_str(), static_cast<int>(label_text.size()), &size);
  SelectObject(dc, old);
  ReleaseDC(panel, dc);
  const int label_width = MulDiv(size.cx, 1440, dpi_) + kGap;
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

void EditorWindow::BuildFrame(int page, int f) {
  if (frames_[page][f]) return;
  frmTqColorSetting& s = *session_;
  const CategoryFrame& frame = kTabPages[page].frames[f];
  const bool enabled = buttons_enabled_;
  ActivationScope styles;
  const int frame_width = name_left_ + name_width_ + kGap;
  HWND box = CreateWindowExW(WS_EX_CONTROLPARENT, kPanelClass, L"", WS_CHILD | WS_CLIPCHILDREN, Px(kGap),
                             Px(kFrameTop), Px(frame_width), Px(kFrameHeight), pages_[page],
                             reinterpret_cast<HMENU>(static_cast<INT_PTR>(ids::kFrame + 3 * page + f)), ThisModule(),
                             this);
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
    const DWORD shown = IsRowShown(s.Table().ColorRowMap, row) ? WS_VISIBLE : 0;
    const int y = RowTop(row);
    color_buttons_[row] = CreateChild(box, button_class_, Widen(RowName(row, s.VoltageNames())),
                                      shown | WS_TABSTOP | BS_OWNERDRAW | (enabled ? 0 : WS_DISABLED),
                                      ids::kColorButton + row, {kButtonLeft, y, kButtonLeft + kButtonWidth, y + kButtonHeight});
    rgb_texts_[row] = RgbTextOf(row);
    rgb_labels_[row] = CreateChild(box, static_class_, rgb_texts_[row], shown | SS_CENTERIMAGE | SS_NOPREFIX,
                                   ids::kRgbLabel + row, {kRgbLeft, y, kRgbLeft + rgb_width_, y + kButtonHeight});
    HWND name = CreateChild(box, static_class_, Widen(RowName(row, s.VoltageNames())),
                            shown | SS_CENTERIMAGE | SS_NOTIFY | SS_NOPREFIX, ids::kNameLabel + row,
                            {name_left_, y, name_left_ + name_width_, y + kButtonHeight});
    if (shown) AddTool(box, name, LPSTR_TEXTCALLBACKW);
  }
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
  const int index = FindColorRow(session_->Table().ColorRowMap, row);
  if (index < 0) return Widen(kRgbDesignText);
  const RowColour& shown = session_->Table().rows[index];
  return shown.kind == RowColour::Kind::Colour       ? RgbText(shown.colour)
         : shown.kind == RowColour::Kind::Unreadable ? Caption(1303)
                                                     : Caption(1304);
}

void EditorWindow::FillSchemeList() {
  HWND combo = GetDlgItem(hwnd_, ids::kSchemeCombo);
  SendMessageW(combo, CB_RESETCONTENT, 0, 0);
  for (const std::string& scheme : ColorSchemes(session_->Schemes()))  // by file name: they share one folder
    SendMessageW(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(Widen(FileNameOf(scheme)).c_str()));
  SendMessageW(combo, CB_SETCURSEL, session_->SchemeListIndex(), 0);  // -1: a file the list does not hold
}

void EditorWindow::SchemesChanged() {
  if (hwnd_ && session_) FillSchemeList();
}

void EditorWindow::StateChanged() {
  if (!hwnd_ || !session_) return;
  file_tip_ = Widen(session_->ClutFileName());
  ApplyEnablement();
}

std::string EditorWindow::AskSchemeName(const SaveSchemeRequest& request) {
  return hwnd_ ? win::AskSchemeName(hwnd_, request) : std::string();
}

std::string EditorWindow::AskFile(FileDialogKind kind, const std::string& title, const std::string& filter,
                                  const std::string& default_ext, std::string& initial_folder) {
  if (!hwnd_) return {};
  return kind == FileDialogKind::Open ? ShowOpen(hwnd_, title, filter, default_ext, true, false, initial_folder)
                                      : ShowSave(hwnd_, title, filter, default_ext, initial_folder);
}

// As the host's file dialog receives it: a 32-bit handle, which is all a window handle holds.
std::int32_t EditorWindow::WindowHandle() const {
  return static_cast<std::int32_t>(reinterpret_cast<std::uintptr_t>(hwnd_));
}

std::int32_t EditorWindow::ButtonFaceColor() const { return static_cast<std::int32_t>(GetSysColor(COLOR_BTNFACE)); }

// Left-aligned with the button, just under it (two pixels up, over its bottom edge).
void EditorWindow::ShowMoreMenu() {
  HWND more = GetDlgItem(hwnd_, ids::kMoreButton);
  HMENU menu = CreatePopupMenu();
  if (!menu) return;
  const EnableDecision& d = session_->Enablement();
  std::wstring taken;
  auto add = [&](int id, bool enabled) {
    AppendMenuW(menu, MF_STRING | (enabled ? MF_ENABLED : MF_GRAYED), id, WithMnemonic(Caption(id), taken).c_str());
  };
  add(ids::kImportItem, d.import_export);
  add(ids::kExportItem, d.import_export);
  AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
  add(ids::kRestoreDefaultsItem, d.restore_defaults);
  RECT r;
  GetWindowRect(more, &r);
  const UINT chosen = TrackPopupMenu(menu, TPM_LEFTALIGN | TPM_TOPALIGN | TPM_LEFTBUTTON | TPM_RETURNCMD, r.left,
                                     r.bottom - 2, 0, hwnd_, nullptr);
  DestroyMenu(menu);
  if (chosen && session_) OnCommand(static_cast<int>(chosen), 0, nullptr);
}

LRESULT CALLBACK EditorWindow::MoreButtonProc(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam, UINT_PTR,
                                              DWORD_PTR self) {
  auto* window = reinterpret_cast<EditorWindow*>(self);
  return GuardCallback(LRESULT{0}, [&]() -> LRESULT {
    if (message == WM_LBUTTONDOWN || message == WM_LBUTTONDBLCLK) {
      SetFocus(hwnd);
      SendMessageW(hwnd, BM_SETSTATE, TRUE, 0);  // looks pressed while its menu is open
      if (window->session_) window->ShowMoreMenu();
      if (IsWindow(hwnd)) SendMessageW(hwnd, BM_SETSTATE, FALSE, 0);
      return 0;
    }
    if (message == WM_NCDESTROY) RemoveWindowSubclass(hwnd, &MoreButtonProc, 0);
    return DefSubclassProc(hwnd, message, wparam, lparam);
  }, [window] { window->Fail(); });
}

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

void EditorWindow::ApplyEnablement() {
  const EnableDecision& d = session_->Enablement();
  SetWindowTextW(hwnd_, Widen(session_->Caption()).c_str());
  EnableWindow(GetDlgItem(hwnd_, ids::kOk), d.ok);
  EnableWindow(GetDlgItem(hwnd_, ids::kSaveAsButton), d.save);
  EnableWindow(GetDlgItem(hwnd_, ids::kDeleteButton), d.delete_scheme);
  EnableWindow(GetDlgItem(hwnd_, ids::kSchemeCombo), d.scheme_list);
  if (buttons_enabled_ == d.colour_buttons) return;  // 290 windows: only when it changes
  for (HWND button : color_buttons_)
    if (button) EnableWindow(button, d.colour_buttons);
  buttons_enabled_ = d.colour_buttons;
}

void EditorWindow::RowChanged(int row) {
  if (!hwnd_) return;
  if (row < 0) {
    for (int r = 0; r < kRowCount; ++r) RowChanged(r);
    return;
  }
  if (row >= kRowCount || !rgb_labels_[row]) return;
  // The text names the colour or the state, so an unchanged text is an unchanged row.
  std::wstring text = RgbTextOf(row);
  if (text == rgb_texts_[row]) return;
  SetWindowTextW(rgb_labels_[row], text.c_str());
  rgb_texts_[row] = std::move(text);
  InvalidateRect(color_buttons_[row], nullptr, FALSE);
}

void EditorWindow::ShowModal(frmTqColorSetting& session) {
  if (!hwnd_ || session_ != &session) return;
  // Whatever throws in here ends the editor as Cancel; the owner gets its input back.
  GuardCallback(0, [this] { return RunModal(), 0; }, [this] { Fail(); });
}

void EditorWindow::RunModal() {
  ApplyEnablement();  // first: the frames ApplySelection builds take the buttons' state
  ApplySelection();
  // Centred over the owner (or the screen's work area), like a dialog.
  RECT area, window;
  if (owner_ && !IsIconic(owner_))
    GetWindowRect(owner_, &area);
  else
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &area, 0);
  GetWindowRect(hwnd_, &window);
  const int width = window.right - window.left, height = window.bottom - window.top;
  SetWindowPos(hwnd_, nullptr, std::max(0L, area.left + (area.right - area.left - width) / 2),
               std::max(0L, area.top + (area.bottom - area.top - height) / 2), 0, 0,
               SWP_NOZORDER | SWP_NOSIZE | SWP_NOACTIVATE);

  // Modal: the owner takes no input while the editor is up, and gets it back (and the
  // activation) however the editor ends: before the editor hides, so that the
  // activation goes to the owner and not to some other application.
  struct OwnerDisabled {
    HWND owner;
    HWND editor;
    bool was_enabled;
    OwnerDisabled(HWND o, HWND e) : owner(o), editor(e), was_enabled(o && !EnableWindow(o, FALSE)) {}
    ~OwnerDisabled() {
      if (!owner || !IsWindow(owner)) owner = nullptr;  // it may have gone, taking the editor with it
      if (owner && was_enabled) EnableWindow(owner, TRUE);
      if (owner) SetActiveWindow(owner);
      if (editor && IsWindow(editor)) ShowWindow(editor, SW_HIDE);
    }
  } disabled(owner_, hwnd_);

  closing_ = false;
  // Shown without the synchronous erase of every child that ShowWindow makes, then
  // painted once in the normal way.
  SetWindowPos(hwnd_, nullptr, 0, 0, 0, 0,
               SWP_SHOWWINDOW | SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOREDRAW);
  RedrawWindow(hwnd_, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN);
  SetForegroundWindow(hwnd_);
  // The focus is always visible, not only after the first key press. It starts on the
  // tab strip, where Enter means OK and no text shows selected.
  SendMessageW(hwnd_, WM_CHANGEUISTATE, MAKEWPARAM(UIS_CLEAR, UISF_HIDEFOCUS | UISF_HIDEACCEL), 0);
  SetFocus(tabs_);
  MSG msg;
  while (!closing_ && hwnd_) {
    const BOOL got = GetMessageW(&msg, nullptr, 0, 0);
    if (got == 0) {
      PostQuitMessage(static_cast<int>(msg.wParam));  // the host's loop must see it too
      break;
    }
    if (got == -1) break;
    // The tooltips see the mouse here rather than by subclassing every tool window,
    // which would cost a property lookup on every message of every row.
    if (msg.message >= WM_MOUSEFIRST && msg.message <= WM_MOUSELAST && tooltip_)
      SendMessageW(tooltip_, TTM_RELAYEVENT, 0, reinterpret_cast<LPARAM>(&msg));
    if (PreTranslate(msg) || IsDialogMessageW(hwnd_, &msg)) continue;
    TranslateMessage(&msg);
    DispatchMessageW(&msg);
  }
}

void EditorWindow::Close() {
  closing_ = true;
  if (hwnd_) PostMessageW(hwnd_, WM_NULL, 0, 0);  // wakes the modal loop
}

// Ends the editor as Cancel (nothing is saved) after something threw inside it.
void EditorWindow::Fail() noexcept {
  closing_ = true;
  if (session_) GuardCallback(0, [this] { return session_->cmdCancel_Click(), 0; });
  if (hwnd_) PostMessageW(hwnd_, WM_NULL, 0, 0);
}

bool EditorWindow::PreTranslate(MSG& msg) {
  if (msg.message != WM_KEYDOWN) return false;
  if (msg.hwnd != hwnd_ && !IsChild(hwnd_, msg.hwnd)) return false;
  // Enter presses the focused push button, as in a dialog. The dialog manager would
  // press OK instead for a window that is not a dialog and for the owner-drawn colour
  // buttons: an operator's Enter on a colour would save.
  if (msg.wParam == VK_RETURN && IsPushButton(msg.hwnd)) {
    SendMessageW(GetParent(msg.hwnd), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(msg.hwnd), BN_CLICKED),
                 reinterpret_cast<LPARAM>(msg.hwnd));
    return true;
  }
  // Ctrl+Tab and Ctrl+Shift+Tab go through the session's selection, which the dialog
  // manager would otherwise take as plain Tab.
  if (msg.wParam != VK_TAB) return false;
  const bool ctrl = GetKeyState(VK_CONTROL) < 0, shift = GetKeyState(VK_SHIFT) < 0, alt = GetKeyState(VK_MENU) < 0;
  if (!ctrl || alt) return false;
  session_->Selection().CtrlTab(shift);
  ApplySelection();
  return true;
}

void EditorWindow::OnColorButton(int row) {
  COLORREF custom[16]{};  // the dialog's custom colours are neither preset nor kept
  CHOOSECOLORW choose{};
  choose.lStructSize = sizeof choose;
  choose.hwndOwner = hwnd_;
  choose.rgbResult = Resolve(session_->GetRowColor(row));
  choose.lpCustColors = custom;
  choose.Flags = CC_RGBINIT | CC_FULLOPEN;
  std::optional<std::int32_t> chosen;
  if (ChooseColorW(&choose)) chosen = static_cast<std::int32_t>(choose.rgbResult & 0xFFFFFF);
  session_->ColorPicked(row, chosen);
}

void EditorWindow::OnCommand(int id, int code, HWND control) {
  if (!session_) return;
  if (IsIdIn(id, ids::kColorButton) && code == BN_CLICKED) return OnColorButton(id - ids::kColorButton);
  if (id >= ids::kCategoryCombo && id < ids::kCategoryCombo + kPageCount && code == CBN_SELCHANGE) {
    if (id - ids::kCategoryCombo != session_->Selection().TabNumber()) return;
    session_->Selection().SetCategoryNumber(static_cast<int>(SendMessageW(control, CB_GETCURSEL, 0, 0)));
    return ApplySelection();
  }
  if (id == ids::kSchemeCombo) {
    if (code == CBN_SELCHANGE)
      session_->cmbColorSchemes_Click(static_cast<int>(SendMessageW(control, CB_GETCURSEL, 0, 0)));
    return;
  }
  switch (id) {
    case ids::kOk: return session_->cmdOK_Click();
    case ids::kCancel: return session_->cmdCancel_Click();  // also Esc
    case ids::kSaveAsButton: return session_->cmdSave_Click();
    case ids::kDeleteButton: return session_->cmdDelete_Click();
    case ids::kMoreButton: return ShowMoreMenu();  // the keyboard's click; the mouse opens it on the press
    case ids::kImportItem: return session_->miImport_Click();
    case ids::kExportItem: return session_->miExport_Click();
    case ids::kRestoreDefaultsItem: return session_->miRestoreDefaults_Click();
    default: return;
  }
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
  SetDCBrushColor(item.hDC, Resolve(session_->GetRowColor(row)));
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
    const int index = FindColorRow(session_->Table().ColorRowMap, id - ids::kRgbLabel);
    if (index >= 0 && session_->Table().rows[index].kind != RowColour::Kind::Colour) text = RGB(255, 0, 0);
  }
  SetTextColor(dc, IsWindowEnabled(control) ? text : GetSysColor(COLOR_GRAYTEXT));
  SetBkColor(dc, GetSysColor(COLOR_BTNFACE));
  return GetSysColorBrush(COLOR_BTNFACE);
}

LRESULT CALLBACK EditorWindow::WindowProc(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_NCCREATE)
    SetWindowLongPtrW(hwnd, GWLP_USERDATA,
                      reinterpret_cast<LONG_PTR>(reinterpret_cast<CREATESTRUCTW*>(lparam)->lpCreateParams));
  auto* self = reinterpret_cast<EditorWindow*>(GetWindowLongPtrW(hwnd, GWLP_USERDATA));
  if (!self) return DefWindowProcW(hwnd, message, wparam, lparam);
  return GuardCallback(LRESULT{0}, [&] { return self->Handle(hwnd, message, wparam, lparam); },
                       [self] { self->Fail(); });
}

// Pages and frames hand their children's notifications to the editor.
LRESULT CALLBACK EditorWindow::PanelProc(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_NCCREATE)
    SetWindowLongPtrW(hwnd, GWLP_USERDATA,
                      reinterpret_cast<LONG_PTR>(reinterpret_cast<CREATESTRUCTW*>(lparam)->lpCreateParams));
  auto* self = reinterpret_cast<EditorWindow*>(GetWindowLongPtrW(hwnd, GWLP_USERDATA));
  if (!self) return DefWindowProcW(hwnd, message, wparam, lparam);
  return GuardCallback(LRESULT{0}, [&]() -> LRESULT {
    switch (message) {
      case WM_COMMAND:
      case WM_DRAWITEM:
      case WM_CTLCOLORSTATIC:
      case WM_NOTIFY:
        return self->Handle(hwnd, message, wparam, lparam);
      case WM_PAINT:
        if (GetDlgCtrlID(hwnd) >= ids::kFrame) {  // a category frame: an etched border
          PAINTSTRUCT paint;
          HDC dc = BeginPaint(hwnd, &paint);
          RECT rect;
          GetClientRect(hwnd, &rect);
          DrawEdge(dc, &rect, EDGE_ETCHED, BF_RECT);
          EndPaint(hwnd, &paint);
          return 0;
        }
        break;
      default:
        break;
    }
    return DefWindowProcW(hwnd, message, wparam, lparam);
  }, [self] { self->Fail(); });
}

LRESULT EditorWindow::Handle(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_COMMAND:
      OnCommand(LOWORD(wparam), HIWORD(wparam), reinterpret_cast<HWND>(lparam));
      return 0;
    case WM_DRAWITEM:
      if (session_) OnDrawItem(*reinterpret_cast<DRAWITEMSTRUCT*>(lparam));
      return TRUE;
    case WM_CTLCOLORSTATIC:
      if (session_) return reinterpret_cast<LRESULT>(OnStaticColor(reinterpret_cast<HDC>(wparam),
                                                                   reinterpret_cast<HWND>(lparam)));
      break;
    case WM_NOTIFY: {
      const NMHDR& header = *reinterpret_cast<NMHDR*>(lparam);
      if (header.hwndFrom == tabs_ && header.code == TCN_SELCHANGE && session_) {
        session_->Selection().SelectPosition(static_cast<int>(SendMessageW(tabs_, TCM_GETCURSEL, 0, 0)));
        ApplySelection();
        return 0;
      }
      if (header.code == TTN_GETDISPINFOW && session_) {
        // A frame names the file; a name label gives "Color index: n" of its row.
        auto& info = *reinterpret_cast<NMTTDISPINFOW*>(lparam);
        const int id = GetDlgCtrlID(reinterpret_cast<HWND>(header.idFrom));
        tooltip_text_ = IsIdIn(id, ids::kNameLabel)
                            ? Caption(kColorIndexTooltipId) +
                                  std::to_wstring(FindColorRow(session_->Table().ColorRowMap, id - ids::kNameLabel))
                            : file_tip_;
        info.lpszText = tooltip_text_.data();
        return 0;
      }
      break;
    }
    case DM_GETDEFID:
      if (hwnd == hwnd_) return MAKELRESULT(ids::kOk, DC_HASDEFID);
      break;
    case WM_CLOSE:
      if (hwnd == hwnd_ && session_) session_->QueryUnload(kUnloadFromControlMenu);
      return 0;  // the session decides; Cancel ends the modal loop
    case WM_NCDESTROY:
      // Destroyed by the system, not by Destroy: its owner went (the host closed the
      // display). An open editor ends as Cancel, and the next Load builds a new window.
      if (hwnd != hwnd_) break;
      hwnd_ = nullptr;
      InterlockedDecrement(&g_live_windows);
      Forget();
      if (session_ && !closing_) session_->cmdCancel_Click();
      break;
    default:
      break;
  }
  return DefWindowProcW(hwnd, message, wparam, lparam);
}

}  // namespace tq::win
