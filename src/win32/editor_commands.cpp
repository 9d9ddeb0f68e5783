// The editor window's commands: the modal loop and its keys, the buttons, the More
// menu and the scheme list, each handed to the session.
#include "win32/editor_window.h"

#include <commctrl.h>
#include <commdlg.h>

#include <algorithm>
#include <optional>

#include "colortable/clut_locations.h"
#include "support/utils.h"
#include "win32/check_window.h"
#include "win32/editor_ids.h"
#include "win32/editor_parts.h"
#include "win32/guard.h"
#include "win32/handles.h"
#include "win32/text.h"

namespace tq::win {

namespace ids = editor_ids;

namespace {

// A push button, the owner-drawn colour buttons included (which the system counts as
// buttons of no particular kind).
bool IsPushButton(HWND control) {
  const LRESULT code = SendMessageW(control, WM_GETDLGCODE, 0, 0);
  return (code & (DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON)) ||
         ((code & DLGC_BUTTON) && (GetWindowLongW(control, GWL_STYLE) & BS_TYPEMASK) == BS_OWNERDRAW);
}

}  // namespace

void EditorWindow::ShowModal(frmTqColorSetting& session) {
  if (!hwnd_ || session_ != &session) return;
  // Whatever throws in here ends the editor as Cancel; the owner gets its input back.
  GuardCallback(0, [this] { return RunModal(), 0; }, [this] { Fail(); });
}

void EditorWindow::RunModal() {
  ApplyEnablement();  // first: the frames ApplySelection builds take the buttons' state
  checks_->Reset();
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
    if (checks_->PreTranslate(msg) || PreTranslate(msg) || IsDialogMessageW(hwnd_, &msg)) continue;
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
  if (PreTranslateComforts(*this, msg)) return true;
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
    case ids::kCheckColorsItem: return checks_->OpenWindow();
    default: return;
  }
}

void EditorWindow::FillSchemeList() {
  HWND combo = GetDlgItem(hwnd_, ids::kSchemeCombo);
  SendMessageW(combo, CB_RESETCONTENT, 0, 0);
  for (const std::string& scheme : ColorSchemes(session_->Schemes()))  // by file name: they share one folder
    SendMessageW(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(Widen(FileNameOf(scheme)).c_str()));
  SendMessageW(combo, CB_SETCURSEL, session_->SchemeListIndex(), 0);  // -1: a file the list does not hold
}

// Left-aligned with the button, just under it (two pixels up, over its bottom edge).
void EditorWindow::ShowMoreMenu() {
  HWND more = GetDlgItem(hwnd_, ids::kMoreButton);
  UINT chosen = 0;
  {  // the menu is gone before its command runs, which may open dialogs of its own
    const UniqueMenu menu(CreatePopupMenu());
    if (!menu) return;
    const EnableDecision& d = session_->Enablement();
    std::wstring taken;
    auto add = [&](int id, bool enabled) {
      AppendMenuW(menu.get(), MF_STRING | (enabled ? MF_ENABLED : MF_GRAYED), id,
                  WithMnemonic(Caption(id), taken).c_str());
    };
    add(ids::kImportItem, d.import_export);
    add(ids::kExportItem, d.import_export);
    AppendMenuW(menu.get(), MF_SEPARATOR, 0, nullptr);
    add(ids::kRestoreDefaultsItem, d.restore_defaults);
    add(ids::kCheckColorsItem, true);  // an addition: checking changes nothing
    RECT r;
    GetWindowRect(more, &r);
    chosen = TrackPopupMenu(menu.get(), TPM_LEFTALIGN | TPM_TOPALIGN | TPM_LEFTBUTTON | TPM_RETURNCMD, r.left,
                            r.bottom - 2, 0, hwnd_, nullptr);
  }
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

}  // namespace tq::win
