// The editor window's editing comforts, additions beside the editor's own controls:
// the colour buttons' context menu (right click, Shift+F10, the Menu key), the
// clipboard (Ctrl+C, Ctrl+V on a colour button), undo and redo (Ctrl+Z, Ctrl+Y), the
// Enter Value dialog and the find box (Ctrl+F). What changes colours is offered only
// while the colour buttons are enabled; the session refuses it otherwise too.
#include "win32/editor_window.h"

#include <commctrl.h>
#include <windowsx.h>

#include <cstring>
#include <cwchar>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/colour_text.h"
#include "win32/editor_ids.h"
#include "win32/editor_parts.h"
#include "win32/find_box.h"
#include "win32/handles.h"
#include "win32/text.h"
#include "win32/value_dialog.h"

namespace tq::win {

namespace ids = editor_ids;

class EditorComforts {
 public:
  // The keys; true when the message was one of them.
  static bool PreTranslate(EditorWindow& w, MSG& msg);
  // WM_CONTEXTMENU from a colour button, or from the frame under a disabled one.
  static void ContextMenu(EditorWindow& w, HWND from, LPARAM at);
  static void CloseFind(EditorWindow& w);

 private:
  static int RowOf(const EditorWindow& w, HWND window);
  static void Run(EditorWindow& w, int command, int row);
  static void Copy(EditorWindow& w, int row);
  static void Paste(EditorWindow& w, int row);
  static void ShowMenu(EditorWindow& w, int row, POINT at);
  static void OpenFind(EditorWindow& w);
  static void GoTo(EditorWindow& w, const frmTqColorSetting::RowMatch& match, bool focus);
};

namespace {

// The text on the clipboard, nullopt when it holds none.
std::optional<std::wstring> ClipboardText(HWND owner) {
  if (!IsClipboardFormatAvailable(CF_UNICODETEXT) || !OpenClipboard(owner)) return std::nullopt;
  std::optional<std::wstring> text;
  if (HANDLE data = GetClipboardData(CF_UNICODETEXT)) {
    if (const auto* chars = static_cast<const wchar_t*>(GlobalLock(data))) {
      text = std::wstring(chars, wcsnlen(chars, GlobalSize(data) / sizeof(wchar_t)));
      GlobalUnlock(data);
    }
  }
  CloseClipboard();
  return text;
}

bool PutOnClipboard(HWND owner, const std::wstring& text) {
  if (!OpenClipboard(owner)) return false;
  EmptyClipboard();
  const size_t bytes = (text.size() + 1) * sizeof(wchar_t);
  HGLOBAL data = GlobalAlloc(GMEM_MOVEABLE, bytes);
  bool put = false;
  if (data) {
    if (void* chars = GlobalLock(data)) {
      memcpy(chars, text.c_str(), bytes);
      GlobalUnlock(data);
      put = SetClipboardData(CF_UNICODETEXT, data) != nullptr;
    }
    if (!put) GlobalFree(data);  // the clipboard owns it only once set
  }
  CloseClipboard();
  return put;
}

}  // namespace

int EditorComforts::RowOf(const EditorWindow& w, HWND window) {
  if (!window || !IsChild(w.hwnd_, window)) return -1;
  const int id = GetDlgCtrlID(window);
  return IsIdIn(id, ids::kColorButton) && w.color_buttons_[id - ids::kColorButton] == window ? id - ids::kColorButton
                                                                                              : -1;
}

bool EditorComforts::PreTranslate(EditorWindow& w, MSG& msg) {
  if (!w.session_) return false;
  if (w.find_box_ && (msg.hwnd == w.find_box_ || IsChild(w.find_box_, msg.hwnd)))
    return IsDialogMessageW(w.find_box_, &msg);
  if (msg.hwnd != w.hwnd_ && !IsChild(w.hwnd_, msg.hwnd)) return false;
  const bool key = msg.message == WM_KEYDOWN || msg.message == WM_SYSKEYDOWN;
  const bool key_up = msg.message == WM_KEYUP || msg.message == WM_SYSKEYUP;
  if (!key && !key_up) return false;
  const bool ctrl = GetKeyState(VK_CONTROL) < 0, shift = GetKeyState(VK_SHIFT) < 0, alt = GetKeyState(VK_MENU) < 0;
  const int row = RowOf(w, msg.hwnd);
  // The context menu from the keyboard is the default procedure's WM_CONTEXTMENU at
  // (-1, -1), decided on the key's press: Shift may be let go before F10 is. The key's
  // repeats and its release are swallowed, whatever Shift does meanwhile: the default
  // procedure would open the menu again, or start menu mode on F10's release.
  if (msg.wParam == w.menu_key_ && (key_up || (msg.lParam & (1 << 30)))) {  // its release or a repeat
    if (key_up) w.menu_key_ = 0;
    return true;
  }
  if (key_up) return false;
  w.menu_key_ = 0;
  if (row >= 0 && (msg.wParam == VK_APPS || (msg.wParam == VK_F10 && shift && !ctrl && !alt))) {
    w.menu_key_ = msg.wParam;
    SendMessageW(msg.hwnd, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(msg.hwnd), MAKELPARAM(-1, -1));
    return true;
  }
  if (!ctrl || alt || shift) return false;
  switch (msg.wParam) {
    case 'C':
      if (row < 0) return false;
      Copy(w, row);
      return true;
    case 'V':
      if (row < 0) return false;
      Paste(w, row);
      return true;
    case 'Z':
      w.session_->Undo();
      return true;
    case 'Y':
      w.session_->Redo();
      return true;
    case 'F':
      OpenFind(w);
      return true;
    default:
      return false;
  }
}

void EditorComforts::ContextMenu(EditorWindow& w, HWND from, LPARAM at) {
  POINT point{GET_X_LPARAM(at), GET_Y_LPARAM(at)};
  // From the keyboard both coordinates are -1, whether the system sign-extends the
  // parameter (Wine) or not (MAKELPARAM(-1, -1) on 64-bit Windows).
  const bool from_keyboard = point.x == -1 && point.y == -1;
  int row = RowOf(w, from);
  if (row < 0 && !from_keyboard) {
    // A disabled button takes no mouse input: its frame has the click.
    POINT inside = point;
    ScreenToClient(from, &inside);
    row = RowOf(w, ChildWindowFromPointEx(from, inside, CWP_SKIPINVISIBLE));
  }
  if (row < 0) return;
  if (from_keyboard) {
    RECT r;
    GetWindowRect(w.color_buttons_[row], &r);
    point = {r.left, r.bottom};
  }
  ShowMenu(w, row, point);
}

void EditorComforts::ShowMenu(EditorWindow& w, int row, POINT at) {
  frmTqColorSetting& s = *w.session_;
  const bool may_change = s.Enablement().colour_buttons;
  const int index = s.RowIndex(row);
  const bool has_colour = index >= 0 && s.Table().rows[index].kind == RowColour::Kind::Colour;
  UINT chosen = 0;
  {  // the menu is gone before its command runs, which may open a dialog
    const UniqueMenu menu(CreatePopupMenu());
    if (!menu) return;
    std::wstring taken;
    auto add = [&](int id, bool enabled) {
      AppendMenuW(menu.get(), MF_STRING | (enabled ? MF_ENABLED : MF_GRAYED), id,
                  WithMnemonic(w.Caption(id), taken).c_str());
    };
    add(ids::kCopyColorItem, has_colour);
    add(ids::kPasteColorItem, may_change);
    add(ids::kEnterValueItem, may_change);
    add(ids::kResetColorItem, may_change && s.FactoryColour(row));
    AppendMenuW(menu.get(), MF_SEPARATOR, 0, nullptr);
    add(ids::kUndoItem, s.CanUndo());
    add(ids::kRedoItem, s.CanRedo());
    AppendMenuW(menu.get(), MF_SEPARATOR, 0, nullptr);
    add(ids::kFindItem, true);
    chosen = TrackPopupMenu(menu.get(), TPM_LEFTALIGN | TPM_TOPALIGN | TPM_RIGHTBUTTON | TPM_RETURNCMD, at.x, at.y, 0,
                            w.hwnd_, nullptr);
  }
  if (chosen && w.session_) Run(w, static_cast<int>(chosen), row);
}

void EditorComforts::Run(EditorWindow& w, int command, int row) {
  frmTqColorSetting& s = *w.session_;
  switch (command) {
    case ids::kCopyColorItem: return Copy(w, row);
    case ids::kPasteColorItem: return Paste(w, row);
    case ids::kEnterValueItem:
      if (!s.Enablement().colour_buttons) return;
      if (const std::optional<std::int32_t> typed = AskColourValue(w.hwnd_, Resolve(s.GetRowColor(row))))
        s.SetRowColour(row, *typed);
      return;
    case ids::kResetColorItem: s.ResetRowToFactory(row); return;
    case ids::kUndoItem: s.Undo(); return;
    case ids::kRedoItem: s.Redo(); return;
    case ids::kFindItem: return OpenFind(w);
    default: return;
  }
}

void EditorComforts::Copy(EditorWindow& w, int row) {
  const int index = w.session_->RowIndex(row);
  if (index < 0 || w.session_->Table().rows[index].kind != RowColour::Kind::Colour ||
      !PutOnClipboard(w.hwnd_, Widen(FormatColourText(w.session_->Table().rows[index].colour))))
    MessageBeep(MB_OK);
}

void EditorComforts::Paste(EditorWindow& w, int row) {
  const std::optional<std::wstring> text = ClipboardText(w.hwnd_);
  const std::optional<std::int32_t> colour = text ? ParseColourText(Narrow(*text)) : std::nullopt;
  if (!colour || !w.session_->SetRowColour(row, *colour)) MessageBeep(MB_OK);
}

void EditorComforts::GoTo(EditorWindow& w, const frmTqColorSetting::RowMatch& match, bool focus) {
  TabSelection& selection = w.session_->Selection();
  selection.SelectPosition(match.position);
  if (match.category >= 0) selection.SetCategoryNumber(match.category);
  w.ApplySelection();
  if (focus && w.color_buttons_[match.row]) SetFocus(w.color_buttons_[match.row]);
}

// Typing shows the first match's tab and category; Enter the next one; Esc closes the
// box and leaves the focus on the colour button of the match shown.
void EditorComforts::OpenFind(EditorWindow& w) {
  if (w.find_box_) {
    SetActiveWindow(w.find_box_);
    return;
  }
  struct Place {
    std::string text;
    int shown = -1;  // the match shown, in the list of the text's matches
    std::optional<frmTqColorSetting::RowMatch> match;
  };
  auto place = std::make_shared<Place>();
  FindBoxEvents events;
  events.find = [&w, place](const std::string& text, bool next) {
    if (!w.session_) return;
    const std::vector<frmTqColorSetting::RowMatch> matches = w.session_->FindRows(text);
    if (matches.empty()) {
      place->match.reset();
      if (!text.empty()) MessageBeep(MB_OK);
      return;
    }
    place->shown = next && text == place->text ? (place->shown + 1) % static_cast<int>(matches.size()) : 0;
    place->text = text;
    place->match = matches[place->shown];
    GoTo(w, *place->match, false);
  };
  events.closed = [&w, place] {
    w.find_box_ = nullptr;
    if (w.session_ && place->match) GoTo(w, *place->match, true);
  };
  w.find_box_ = OpenFindBox(w.hwnd_, std::move(events));
}

void EditorComforts::CloseFind(EditorWindow& w) {
  if (HWND box = std::exchange(w.find_box_, nullptr)) DestroyWindow(box);
}

// The hooks the editor window calls.
bool PreTranslateComforts(EditorWindow& w, MSG& msg) { return EditorComforts::PreTranslate(w, msg); }
void ComfortsContextMenu(EditorWindow& w, HWND from, LPARAM at) { EditorComforts::ContextMenu(w, from, at); }
void CloseComforts(EditorWindow& w) { EditorComforts::CloseFind(w); }

}  // namespace tq::win
