// The editor window's life: its classes, building and keeping the window, the
// procedures of its classes and what the session asks of the view. Layout, rows and
// commands live in editor_layout.cpp, editor_rows.cpp and editor_commands.cpp.
#include "win32/editor_window.h"

#include <commctrl.h>

#include <array>
#include <utility>

#include "support/localization.h"
#include "support/string_ids.h"
#include "win32/check_window.h"
#include "win32/common_dialog.h"
#include "win32/editor_ids.h"
#include "win32/editor_parts.h"
#include "win32/font_helper.h"
#include "win32/guard.h"
#include "win32/handles.h"
#include "win32/msgbox.h"
#include "win32/save_scheme_dialog.h"
#include "win32/text.h"

namespace tq::win {

namespace ids = editor_ids;

namespace {

constexpr int kManifestResource = 200;  // RT_MANIFEST of our own, not the loader's 1-3

// The system's DPI as this thread sees it (96 on a DPI-unaware thread).
int ThreadDpi() {
  WindowDC screen(nullptr);
  const int dpi = GetDeviceCaps(screen.get(), LOGPIXELSY);
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

LONG g_live_windows = 0;
INIT_ONCE g_classes_registered = INIT_ONCE_STATIC_INIT;

using WindowClasses = std::array<WNDCLASSEXW, 3>;  // the editor, its pages, its frames

BOOL CALLBACK RegisterOnce(PINIT_ONCE, PVOID classes, PVOID*) {
  INITCOMMONCONTROLSEX init{sizeof init, ICC_TAB_CLASSES | ICC_STANDARD_CLASSES | ICC_BAR_CLASSES};
  InitCommonControlsEx(&init);
  // A class left by this library's image before (same module, same procedures) serves.
  for (const WNDCLASSEXW& c : *static_cast<const WindowClasses*>(classes))
    if (!RegisterClassExW(&c) && GetLastError() != ERROR_CLASS_ALREADY_EXISTS) return FALSE;
  return TRUE;
}

}  // namespace

ActivationScope::ActivationScope() {
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

ActivationScope::~ActivationScope() {
  if (cookie_) DeactivateActCtx(0, cookie_);
}

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

COLORREF Resolve(std::int32_t colour) {
  return colour == kSystemButtonFace ? GetSysColor(COLOR_BTNFACE) : static_cast<COLORREF>(colour & 0xFFFFFF);
}

long EditorWindow::LiveWindows() { return InterlockedCompareExchange(&g_live_windows, 0, 0); }

bool EditorWindow::RegisterClasses() {
  WNDCLASSEXW editor = DialogLikeClass(&EditorWindow::WindowProc, ids::kEditorClass);
  editor.hIcon = LoadIconW(nullptr, IDI_APPLICATION);
  const WNDCLASSEXW panel = DialogLikeClass(&EditorWindow::PanelProc, kPanelClass);
  const WNDCLASSEXW frame = DialogLikeClass(&EditorWindow::FrameProc, kFrameClass);
  // Once: two threads opening their first editor at the same moment both get it. A
  // failure is not remembered, so a later editor tries again.
  WindowClasses classes{editor, panel, frame};
  return InitOnceExecuteOnce(&g_classes_registered, &RegisterOnce, &classes, nullptr);
}

// On unloading, when no window of the classes is left and no thread registers them.
void EditorWindow::UnregisterClasses() {
  for (const wchar_t* name : {ids::kEditorClass, kPanelClass, kFrameClass}) UnregisterClassW(name, ThisModule());
  CheckUi::UnregisterClasses();
  InitOnceInitialize(&g_classes_registered);
}

EditorWindow::EditorWindow() : checks_(std::make_unique<CheckUi>(*this)) {}
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
    ShowMessage(GetString(sid::kWindowFailed) + "\r\n" + ErrorText(error), buttons, MB_ICONSTOP, session.Caption());
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
  MakeFonts();
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

void EditorWindow::MakeFonts() {
  gdi_ = std::make_unique<Gdi>();
  LOGFONTW font = clsFontHelper::MessageFont(dpi_);
  gdi_->font.reset(CreateFontIndirectW(&font));
  font.lfWeight = FW_BOLD;
  gdi_->bold.reset(CreateFontIndirectW(&font));
}

// Moved to a monitor of another DPI (a per-monitor aware host): the controls are made
// again at the new DPI where the system suggests. The session keeps the page, the
// category and the colours; pages are built again when shown, as at the first opening.
void EditorWindow::OnDpiChanged(int dpi, const RECT& suggested) {
  if (!session_ || dpi <= 0 || dpi == dpi_) return;
  const bool had_focus = GetFocus() && IsChild(hwnd_, GetFocus());
  DestroyChildren(hwnd_);
  DestroyWindow(tooltip_);
  ForgetControls();
  dpi_ = dpi;
  MakeFonts();
  checks_->DpiChanged();
  CreateControls();
  FillSchemeList();
  ApplyEnablement();
  ApplySelection();
  SetWindowPos(hwnd_, nullptr, suggested.left, suggested.top, 0, 0, SWP_NOZORDER | SWP_NOSIZE | SWP_NOACTIVATE);
  if (had_focus) SetFocus(tabs_);
}

// Top-most owner, top-most editor: it must not open behind an always-on-top display.
void EditorWindow::ApplyTopMost() {
  const bool top_most = owner_ && (GetWindowLongW(owner_, GWL_EXSTYLE) & WS_EX_TOPMOST);
  if (top_most == ((GetWindowLongW(hwnd_, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0)) return;
  SetWindowPos(hwnd_, top_most ? HWND_TOPMOST : HWND_NOTOPMOST, 0, 0, 0, 0,
               SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
}

void EditorWindow::Unload() {
  CloseComforts(*this);
  checks_->EditorClosing(false);
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
  checks_->EditorClosing(true);
  find_box_ = nullptr;  // it went with its owner
  ForgetControls();
}

void EditorWindow::ForgetControls() {
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

// Every window of our classes is created with `this` as its creation parameter, kept
// from WM_NCCREATE on; messages before it, and a throw in a handler, take the usual
// way out (the default procedure, the editor ended as Cancel).
template <typename Handler>
LRESULT EditorWindow::Route(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam, Handler&& handle) {
  if (message == WM_NCCREATE)
    SetWindowLongPtrW(hwnd, GWLP_USERDATA,
                      reinterpret_cast<LONG_PTR>(reinterpret_cast<CREATESTRUCTW*>(lparam)->lpCreateParams));
  auto* self = reinterpret_cast<EditorWindow*>(GetWindowLongPtrW(hwnd, GWLP_USERDATA));
  if (!self) return DefWindowProcW(hwnd, message, wparam, lparam);
  return GuardCallback(LRESULT{0}, [&] { return handle(*self); }, [self] { self->Fail(); });
}

LRESULT CALLBACK EditorWindow::WindowProc(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  return Route(hwnd, message, wparam, lparam,
               [&](EditorWindow& self) { return self.Handle(hwnd, message, wparam, lparam); });
}

LRESULT CALLBACK EditorWindow::PanelProc(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  return Route(hwnd, message, wparam, lparam,
               [&](EditorWindow& self) { return ContainerMessage(self, hwnd, message, wparam, lparam); });
}

// A category frame: a page's container with an etched border.
LRESULT CALLBACK EditorWindow::FrameProc(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  return Route(hwnd, message, wparam, lparam, [&](EditorWindow& self) -> LRESULT {
    if (message != WM_PAINT) return ContainerMessage(self, hwnd, message, wparam, lparam);
    PAINTSTRUCT paint;
    HDC dc = BeginPaint(hwnd, &paint);
    RECT rect;
    GetClientRect(hwnd, &rect);
    DrawEdge(dc, &rect, EDGE_ETCHED, BF_RECT);
    self.checks_->PaintMarkers(hwnd, dc);
    EndPaint(hwnd, &paint);
    return 0;
  });
}

// Pages and frames hand their children's notifications to the editor.
LRESULT EditorWindow::ContainerMessage(EditorWindow& self, HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_COMMAND:
    case WM_DRAWITEM:
    case WM_CTLCOLORSTATIC:
    case WM_NOTIFY:
    case WM_CONTEXTMENU:
      return self.Handle(hwnd, message, wparam, lparam);
    default:
      return DefWindowProcW(hwnd, message, wparam, lparam);
  }
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
                            ? Caption(sid::kColorIndexTooltip) +
                                  std::to_wstring(session_->RowIndex(id - ids::kNameLabel))
                            : file_tip_;
        info.lpszText = tooltip_text_.data();
        return 0;
      }
      break;
    }
    case WM_CONTEXTMENU:
      if (session_) ComfortsContextMenu(*this, reinterpret_cast<HWND>(wparam), lparam);
      return 0;
    case WM_DPICHANGED:
      if (hwnd == hwnd_) OnDpiChanged(HIWORD(wparam), *reinterpret_cast<const RECT*>(lparam));
      return 0;
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
