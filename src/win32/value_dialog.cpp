#include "win32/value_dialog.h"

#include <exception>
#include <string>

#include "support/colour_text.h"
#include "support/localization.h"
#include "win32/dialog_template.h"
#include "win32/editor_ids.h"
#include "win32/guard.h"
#include "win32/handles.h"
#include "win32/text.h"
#include "support/string_ids.h"

namespace tq::win {

namespace ids = editor_ids;

namespace {


struct ValueState {
  std::int32_t start;
  std::optional<std::int32_t> typed;  // what the text names now
  std::exception_ptr failure;
};

std::string EditText(HWND edit) {
  std::wstring text(static_cast<size_t>(GetWindowTextLengthW(edit)) + 1, L'\0');
  text.resize(static_cast<size_t>(GetWindowTextW(edit, text.data(), static_cast<int>(text.size()))));
  return Narrow(text);
}

void OnChange(HWND dialog, ValueState& state) {
  state.typed = ParseColourText(EditText(GetDlgItem(dialog, ids::kValueEdit)));
  EnableWindow(GetDlgItem(dialog, IDOK), state.typed.has_value());
  InvalidateRect(GetDlgItem(dialog, ids::kValueSwatch), nullptr, TRUE);
}

// The typed colour inside a sunken edge; the plain face while the text names none.
void DrawSwatch(const DRAWITEMSTRUCT& item, const ValueState& state) {
  RECT rect = item.rcItem;
  DrawEdge(item.hDC, &rect, EDGE_SUNKEN, BF_RECT | BF_ADJUST);
  SetDCBrushColor(item.hDC, state.typed ? static_cast<COLORREF>(*state.typed) : GetSysColor(COLOR_BTNFACE));
  FillRect(item.hDC, &rect, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
}

void OnInit(HWND dialog, ValueState& state) {
  SetWindowTextW(dialog, Widen(GetString(sid::kEnterValueTitle)).c_str());
  SetDlgItemTextW(dialog, ids::kValueLabel, Widen(GetString(sid::kEnterValueLabel)).c_str());
  SetDlgItemTextW(dialog, IDOK, Widen(GetString(sid::kSaveSchemeOk)).c_str());
  SetDlgItemTextW(dialog, IDCANCEL, Widen(GetString(sid::kSaveSchemeCancel)).c_str());
  HWND edit = GetDlgItem(dialog, ids::kValueEdit);
  SetWindowTextW(edit, Widen(FormatColourText(state.start)).c_str());
  OnChange(dialog, state);
  // Centred over the editor.
  RECT over{}, window{};
  GetWindowRect(GetWindow(dialog, GW_OWNER), &over);
  GetWindowRect(dialog, &window);
  SetWindowPos(dialog, nullptr, (over.left + over.right - (window.right - window.left)) / 2,
               (over.top + over.bottom - (window.bottom - window.top)) / 2, 0, 0,
               SWP_NOZORDER | SWP_NOSIZE | SWP_NOACTIVATE);
  SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(edit), TRUE);
  SendMessageW(edit, EM_SETSEL, 0, -1);
}

INT_PTR OnMessage(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam, ValueState& state) {
  switch (message) {
    case WM_INITDIALOG:
      OnInit(dialog, state);
      return FALSE;  // the focus is set
    case WM_DRAWITEM:
      if (wparam != static_cast<WPARAM>(ids::kValueSwatch)) return FALSE;
      DrawSwatch(*reinterpret_cast<const DRAWITEMSTRUCT*>(lparam), state);
      return TRUE;
    case WM_COMMAND:
      switch (LOWORD(wparam)) {
        case ids::kValueEdit:
          if (HIWORD(wparam) == EN_CHANGE) OnChange(dialog, state);
          return TRUE;
        case IDOK:  // Enter reaches here with OK disabled too
          if (state.typed) EndDialog(dialog, IDOK);
          return TRUE;
        case IDCANCEL:
          EndDialog(dialog, IDCANCEL);
          return TRUE;
        default:
          return FALSE;
      }
    default:
      return FALSE;
  }
}

INT_PTR CALLBACK ValueProc(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) {
  auto* state = DialogStateOf<ValueState>(dialog, message, lparam);
  if (!state) return FALSE;
  return GuardCallback(INT_PTR{TRUE}, [&] { return OnMessage(dialog, message, wparam, lparam, *state); }, [&] {
    state->failure = std::current_exception();
    state->typed.reset();
    EndDialog(dialog, IDCANCEL);
  });
}

}  // namespace

std::optional<std::int32_t> AskColourValue(HWND editor, std::int32_t colour) {
  // Dialog units, which follow the font and so the DPI: the label over the text box
  // and the swatch beside it, OK and Cancel right-aligned underneath.
  constexpr short kWidth = 240, kHeight = 64, kMargin = 7;
  constexpr short kButtonWidth = 50, kButtonHeight = 14, kGap = 4, kSwatchWidth = 30, kFieldHeight = 14;
  constexpr short kFieldWidth = kWidth - 2 * kMargin - kGap - kSwatchWidth;
  constexpr short kButtonsTop = kHeight - kMargin - kButtonHeight;
  constexpr short kCancelLeft = kWidth - kMargin - kButtonWidth;
  TemplateBuilder dialog(DS_MODALFRAME | DS_SETFONT | WS_POPUP | WS_CAPTION | WS_SYSMENU, kWidth, kHeight,
                         L"MS Shell Dlg", 8);
  dialog.Add(kStaticAtom, ids::kValueLabel, SS_LEFT | SS_NOPREFIX, kMargin, kMargin, kWidth - 2 * kMargin, 8);
  dialog.Add(kEditAtom, ids::kValueEdit, ES_LEFT | ES_AUTOHSCROLL | WS_BORDER | WS_TABSTOP, kMargin, 18, kFieldWidth,
             kFieldHeight);
  dialog.Add(kStaticAtom, ids::kValueSwatch, SS_OWNERDRAW, kMargin + kFieldWidth + kGap, 18, kSwatchWidth,
             kFieldHeight);
  dialog.Add(kButtonAtom, IDOK, BS_DEFPUSHBUTTON | WS_TABSTOP, kCancelLeft - kGap - kButtonWidth, kButtonsTop,
             kButtonWidth, kButtonHeight);
  dialog.Add(kButtonAtom, IDCANCEL, BS_PUSHBUTTON | WS_TABSTOP, kCancelLeft, kButtonsTop, kButtonWidth,
             kButtonHeight);
  ValueState state{colour & 0xFFFFFF, std::nullopt, {}};
  const INT_PTR ended =
      DialogBoxIndirectParamW(ThisModule(), dialog.Template(), editor, &ValueProc, reinterpret_cast<LPARAM>(&state));
  if (state.failure) std::rethrow_exception(state.failure);
  return ended == IDOK ? state.typed : std::nullopt;
}

}  // namespace tq::win
