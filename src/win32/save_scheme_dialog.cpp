#include "win32/save_scheme_dialog.h"

#include <windows.h>

#include <algorithm>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/localization.h"
#include "support/string_ids.h"
#include "win32/dialog_template.h"
#include "win32/editor_ids.h"
#include "win32/guard.h"
#include "win32/handles.h"
#include "win32/text.h"

namespace tq::win {

namespace ids = editor_ids;

namespace {


// What the dialog procedure works with, reached through DWLP_USER.
struct DialogState {
  const SaveSchemeRequest* request;
  std::string result;
  std::exception_ptr failure;  // carried out of the dialog, never thrown through Windows
};

void SetCaption(HWND window, int string_id) { SetWindowTextW(window, Widen(GetString(string_id)).c_str()); }

std::string ItemText(HWND dialog, int id) {
  HWND item = GetDlgItem(dialog, id);
  const int length = GetWindowTextLengthW(item);
  if (length <= 0) return {};
  std::wstring text(static_cast<size_t>(length) + 1, L'\0');
  const int copied = GetWindowTextW(item, text.data(), length + 1);
  text.resize(static_cast<size_t>(std::max(copied, 0)));
  return Narrow(text);
}

// Over the editor's rectangle, kept inside the work area of the editor's monitor.
void CentreOver(HWND dialog, HWND editor) {
  HMONITOR monitor = MonitorFromWindow(editor ? editor : dialog, MONITOR_DEFAULTTONEAREST);
  MONITORINFO info{};
  info.cbSize = sizeof info;
  RECT area{};
  if (monitor && GetMonitorInfoW(monitor, &info))
    area = info.rcWork;
  else
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &area, 0);

  RECT over = area;
  if (editor && IsWindow(editor) && !IsIconic(editor)) GetWindowRect(editor, &over);
  RECT window{};
  GetWindowRect(dialog, &window);
  const LONG width = window.right - window.left, height = window.bottom - window.top;
  LONG x = over.left + (over.right - over.left - width) / 2;
  LONG y = over.top + (over.bottom - over.top - height) / 2;
  // Right and bottom first, so that a dialog larger than the area keeps its caption visible.
  x = std::max(std::min(x, area.right - width), area.left);
  y = std::max(std::min(y, area.bottom - height), area.top);
  SetWindowPos(dialog, nullptr, x, y, 0, 0, SWP_NOZORDER | SWP_NOSIZE | SWP_NOACTIVATE);
}

void OnInit(HWND dialog, DialogState& state) {
  const SaveSchemeRequest& request = *state.request;
  SetCaption(dialog, sid::kSaveSchemeTitle);
  SetCaption(GetDlgItem(dialog, ids::kSchemeNameLabel), sid::kSchemeNameLabel);
  SetCaption(GetDlgItem(dialog, IDOK), sid::kSaveSchemeOk);
  SetCaption(GetDlgItem(dialog, IDCANCEL), sid::kSaveSchemeCancel);

  HWND edit = GetDlgItem(dialog, ids::kSchemeNameEdit);
  SetWindowTextW(edit, Widen(request.proposed_name).c_str());
  // Below the editing level the dialog only shows the name.
  const bool may_save = request.authorization_level >= kEditingLevel;
  EnableWindow(edit, may_save);
  EnableWindow(GetDlgItem(dialog, IDOK), may_save);

  CentreOver(dialog, GetWindow(dialog, GW_OWNER));

  // WM_NEXTDLGCTL rather than a bare SetFocus, so that the dialog manager also moves the
  // default-button highlight: with OK disabled, Enter on Cancel must mean Cancel.
  HWND first = may_save ? edit : GetDlgItem(dialog, IDCANCEL);
  SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(first), TRUE);
  if (may_save) SendMessageW(edit, EM_SETSEL, 0, -1);
}

void OnOk(HWND dialog, DialogState& state) {
  // Enter can still reach here with OK disabled.
  if (!IsWindowEnabled(GetDlgItem(dialog, IDOK))) return;
  const std::string typed = ItemText(dialog, ids::kSchemeNameEdit);
  if (!state.request->accept) {
    state.result = typed;
    EndDialog(dialog, IDOK);
    return;
  }
  // accept tells the user itself why a name is refused; the dialog just stays.
  std::optional<std::string> accepted = state.request->accept(typed);
  if (!accepted) return;
  state.result = std::move(*accepted);
  EndDialog(dialog, IDOK);
}

INT_PTR OnMessage(HWND dialog, UINT message, WPARAM wparam, DialogState& state) {
  if (message == WM_INITDIALOG) {
    OnInit(dialog, state);
    return FALSE;  // the focus is set
  }
  if (message != WM_COMMAND) return FALSE;
  switch (LOWORD(wparam)) {
    case IDOK:
      OnOk(dialog, state);
      return TRUE;
    case IDCANCEL:  // also Esc and the close box
      state.result.clear();
      EndDialog(dialog, IDCANCEL);
      return TRUE;
    default:
      return FALSE;
  }
}

INT_PTR CALLBACK SaveSchemeProc(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) {
  auto* state = DialogStateOf<DialogState>(dialog, message, lparam);
  if (!state) return FALSE;
  return GuardCallback(INT_PTR{TRUE}, [&] { return OnMessage(dialog, message, wparam, *state); }, [&] {
    state->failure = std::current_exception();
    state->result.clear();
    EndDialog(dialog, IDCANCEL);
  });
}

}  // namespace

std::string AskSchemeName(HWND editor, const SaveSchemeRequest& request) {
  // About 240 x 70 dialog units: the label above the text box, OK and Cancel
  // right-aligned underneath.
  constexpr short kWidth = 240, kHeight = 70, kMargin = 7;
  constexpr short kButtonWidth = 50, kButtonHeight = 14, kButtonGap = 4;
  constexpr short kFieldWidth = kWidth - 2 * kMargin;
  constexpr short kButtonsTop = kHeight - kMargin - kButtonHeight;
  constexpr short kCancelLeft = kWidth - kMargin - kButtonWidth;
  constexpr short kOkLeft = kCancelLeft - kButtonGap - kButtonWidth;

  TemplateBuilder dialog(DS_MODALFRAME | DS_SETFONT | WS_POPUP | WS_CAPTION | WS_SYSMENU, kWidth, kHeight,
                         L"MS Shell Dlg", 8);
  dialog.Add(kStaticAtom, ids::kSchemeNameLabel, SS_LEFT | SS_NOPREFIX, kMargin, kMargin, kFieldWidth, 8);
  dialog.Add(kEditAtom, ids::kSchemeNameEdit, ES_LEFT | ES_AUTOHSCROLL | WS_BORDER | WS_TABSTOP, kMargin, 18,
             kFieldWidth, 14);
  dialog.Add(kButtonAtom, IDOK, BS_DEFPUSHBUTTON | WS_TABSTOP, kOkLeft, kButtonsTop, kButtonWidth, kButtonHeight);
  dialog.Add(kButtonAtom, IDCANCEL, BS_PUSHBUTTON | WS_TABSTOP, kCancelLeft, kButtonsTop, kButtonWidth,
             kButtonHeight);

  DialogState state{&request, {}, {}};
  const INT_PTR ended = DialogBoxIndirectParamW(ThisModule(), dialog.Template(), editor, &SaveSchemeProc,
                                                reinterpret_cast<LPARAM>(&state));
  if (state.failure) std::rethrow_exception(state.failure);
  if (ended != IDOK) return {};
  return state.result;
}

}  // namespace tq::win
