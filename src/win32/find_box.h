// The editor's find box (an addition beside the editor's own controls): a small
// modeless dialog owned by the editor with one text box. Control ids: editor_ids.h.
#pragma once

#include <windows.h>

#include <functional>
#include <string>

namespace tq::win {

struct FindBoxEvents {
  // The text changed (next = false) or Enter asked for the next match (next = true).
  std::function<void(const std::string& text, bool next)> find;
  // Esc or the close box: the box is gone.
  std::function<void()> closed;
};

// Opens the box at the editor's top right corner; null when it cannot be made.
HWND OpenFindBox(HWND editor, FindBoxEvents events);

}  // namespace tq::win
