#include "win32/find_box.h"

#include <memory>

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


std::string EditText(HWND edit) {
  std::wstring text(static_cast<size_t>(GetWindowTextLengthW(edit)) + 1, L'\0');
  text.resize(static_cast<size_t>(GetWindowTextW(edit, text.data(), static_cast<int>(text.size()))));
  return Narrow(text);
}

INT_PTR OnMessage(HWND box, UINT message, WPARAM wparam, FindBoxEvents& events) {
  if (message != WM_COMMAND) return FALSE;
  const std::string text = EditText(GetDlgItem(box, ids::kFindEdit));
  switch (LOWORD(wparam)) {
    case ids::kFindEdit:
      if (HIWORD(wparam) == EN_CHANGE && events.find) events.find(text, false);
      return TRUE;
    case IDOK:  // Enter
      if (events.find) events.find(text, true);
      return TRUE;
    case IDCANCEL: {  // Esc, the close box
      const std::function<void()> closed = events.closed;  // the events go with the box
      DestroyWindow(box);
      if (closed) closed();
      return TRUE;
    }
    default:
      return FALSE;
  }
}

INT_PTR CALLBACK FindProc(HWND box, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_INITDIALOG) {
    SetWindowLongPtrW(box, DWLP_USER, lparam);
    return TRUE;  // the focus goes to the text box, the first tab stop
  }
  auto* events = reinterpret_cast<FindBoxEvents*>(GetWindowLongPtrW(box, DWLP_USER));
  if (!events) return FALSE;
  if (message == WM_NCDESTROY) {
    SetWindowLongPtrW(box, DWLP_USER, 0);
    delete events;
    return FALSE;
  }
  return GuardCallback(INT_PTR{TRUE}, [&] { return OnMessage(box, message, wparam, *events); },
                       [box] { DestroyWindow(box); });
}

}  // namespace

HWND OpenFindBox(HWND editor, FindBoxEvents events) {
  // A gap between the label and the text box: without one, rounding dialog units to
  // pixels makes them overlap at some DPIs.
  constexpr short kWidth = 180, kHeight = 26, kMargin = 6, kLabelWidth = 64, kGap = 2;
  TemplateBuilder dialog(DS_SETFONT | DS_MODALFRAME | WS_POPUP | WS_CAPTION | WS_SYSMENU, kWidth, kHeight,
                         L"MS Shell Dlg", 8);
  dialog.Add(kStaticAtom, ids::kFindLabel, SS_LEFT | SS_NOPREFIX | SS_CENTERIMAGE, kMargin, kMargin, kLabelWidth,
             14);
  dialog.Add(kEditAtom, ids::kFindEdit, ES_LEFT | ES_AUTOHSCROLL | WS_BORDER | WS_TABSTOP,
             kMargin + kLabelWidth + kGap, kMargin, kWidth - 2 * kMargin - kLabelWidth - kGap, 14);
  auto* owned = new FindBoxEvents(std::move(events));
  HWND box = CreateDialogIndirectParamW(ThisModule(), dialog.Template(), editor, &FindProc,
                                        reinterpret_cast<LPARAM>(owned));
  if (!box) {
    delete owned;
    return nullptr;
  }
  SetWindowTextW(box, Widen(GetString(sid::kFindTitle)).c_str());
  SetDlgItemTextW(box, ids::kFindLabel, Widen(GetString(sid::kFindLabel)).c_str());
  // At the editor's top right, over the tab strip's empty end.
  RECT over{}, window{};
  GetWindowRect(editor, &over);
  GetWindowRect(box, &window);
  SetWindowPos(box, nullptr, over.right - (window.right - window.left) - 16, over.top + 40, 0, 0,
               SWP_NOZORDER | SWP_NOSIZE);
  ShowWindow(box, SW_SHOW);
  SetFocus(GetDlgItem(box, ids::kFindEdit));
  return box;
}

}  // namespace tq::win
