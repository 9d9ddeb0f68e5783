// Dialogs built in memory: the editor's small dialogs need no resource script.
#pragma once

#include <windows.h>

#include <string_view>
#include <vector>

namespace tq::win {

// Predefined control classes as template ordinals.
inline constexpr WORD kButtonAtom = 0x0080;
inline constexpr WORD kEditAtom = 0x0081;
inline constexpr WORD kStaticAtom = 0x0082;

// Builds the in-memory DLGTEMPLATE: a header, then DWORD-aligned item records. The
// vector's storage is at least DWORD aligned, so offsets from its start are what count.
class TemplateBuilder {
 public:
  TemplateBuilder(DWORD style, short cx, short cy, std::wstring_view font, WORD point_size) {
    AddDword(style);
    AddDword(0);         // extended style
    count_at_ = words_.size();
    words_.push_back(0);  // item count, filled in by Add
    AddCoordinates(0, 0, cx, cy);
    words_.push_back(0);  // no menu
    words_.push_back(0);  // the dialog class
    words_.push_back(0);  // title: set from the string table when the dialog starts
    words_.push_back(point_size);
    AddText(font);
  }

  void Add(WORD atom, int id, DWORD style, short x, short y, short cx, short cy) {
    Align();
    AddDword(style | WS_CHILD | WS_VISIBLE);
    AddDword(0);  // extended style
    AddCoordinates(x, y, cx, cy);
    words_.push_back(static_cast<WORD>(id));
    words_.push_back(0xFFFF);
    words_.push_back(atom);
    words_.push_back(0);  // caption: set from the string table too
    words_.push_back(0);  // no creation data
    ++words_[count_at_];
  }

  const DLGTEMPLATE* Template() const { return reinterpret_cast<const DLGTEMPLATE*>(words_.data()); }

 private:
  void AddDword(DWORD value) {
    words_.push_back(LOWORD(value));
    words_.push_back(HIWORD(value));
  }
  void AddCoordinates(short x, short y, short cx, short cy) {
    for (short v : {x, y, cx, cy}) words_.push_back(static_cast<WORD>(v));
  }
  void AddText(std::wstring_view text) {
    for (wchar_t c : text) words_.push_back(static_cast<WORD>(c));
    words_.push_back(0);
  }
  void Align() {
    if (words_.size() % 2) words_.push_back(0);
  }

  std::vector<WORD> words_;
  size_t count_at_ = 0;
};

// The state a dialog procedure works with: handed over as WM_INITDIALOG's parameter
// and kept in DWLP_USER; null for the messages that come before it.
template <typename State>
State* DialogStateOf(HWND dialog, UINT message, LPARAM lparam) {
  if (message == WM_INITDIALOG) SetWindowLongPtrW(dialog, DWLP_USER, lparam);
  return reinterpret_cast<State*>(GetWindowLongPtrW(dialog, DWLP_USER));
}

}  // namespace tq::win
