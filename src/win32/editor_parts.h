// What the editor window's source files share (editor_window.cpp, editor_layout.cpp,
// editor_rows.cpp, editor_commands.cpp): geometry, the containers' window classes and
// small helpers. Not for use outside the editor window.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "editor/catalogue.h"
#include "win32/editor_window.h"
#include "win32/handles.h"

namespace tq::win {

// The containers inside the tab strip: a page holds its category row and its frames,
// a frame holds rows and draws an etched border.
inline constexpr wchar_t kPanelClass[] = L"TqColorSettingPanel";
inline constexpr wchar_t kFrameClass[] = L"TqColorSettingFrame";

// Geometry in twips beside the rows' own (catalogue.h).
inline constexpr int kMargin = 120;
inline constexpr int kGap = 120;
inline constexpr int kCategoryTop = 90, kCategoryHeight = 315, kComboWidth = 3200, kComboDrop = 2400;
inline constexpr int kFrameTop = kCategoryTop + kCategoryHeight + kGap;
inline constexpr int kFrameHeight = 480 + 19 * kRowPitch + kButtonHeight + kGap;  // 20 rows below the Tagout heading
inline constexpr int kButtonRowHeight = 345, kMinButtonWidth = 1125, kSchemeComboWidth = 3000;

struct EditorWindow::Gdi {
  UniqueFont font;
  UniqueFont bold;
};

// Common controls 6 (visual styles) for our windows only: the manifest of our module
// is activated around their creation, so the host keeps the look it chose.
class ActivationScope {
 public:
  ActivationScope();
  ~ActivationScope();
  ActivationScope(const ActivationScope&) = delete;
  ActivationScope& operator=(const ActivationScope&) = delete;

 private:
  ULONG_PTR cookie_ = 0;
};

// Widths of texts in a font, in pixels, as a window's device context measures them.
class TextMeter {
 public:
  TextMeter(HWND window, HFONT font) : dc_(window), font_(dc_.get(), font) {}
  int Width(std::wstring_view text) const {
    SIZE size{};
    GetTextExtentPoint32W(dc_.get(), text.data(), static_cast<int>(text.size()), &size);
    return size.cx;
  }

 private:
  WindowDC dc_;
  SelectedObject font_;
};

// Gives the caption an access key: its first letter not taken yet by another one.
std::wstring WithMnemonic(const std::wstring& text, std::wstring& taken);

// A window class of ours as a dialog looks: the arrow cursor on the button face.
inline WNDCLASSEXW DialogLikeClass(WNDPROC procedure, const wchar_t* name) {
  WNDCLASSEXW c{};
  c.cbSize = sizeof c;
  c.lpfnWndProc = procedure;
  c.hInstance = ThisModule();
  c.hCursor = LoadCursorW(nullptr, IDC_ARROW);
  c.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
  c.lpszClassName = name;
  return c;
}

// Destroys a window's children, for controls made again (another DPI).
inline void DestroyChildren(HWND parent) {
  while (HWND child = FindWindowExW(parent, nullptr, nullptr, nullptr))
    if (!DestroyWindow(child)) break;
}

// A row's colour as the screen paints it: the system's button face stands for itself.
COLORREF Resolve(std::int32_t colour);

// The editing comforts beside the editor's own controls (editor_comforts.cpp): their
// keys (true when taken), the colour buttons' context menu, and closing the find box.
bool PreTranslateComforts(EditorWindow& window, MSG& msg);
void ComfortsContextMenu(EditorWindow& window, HWND from, LPARAM at);
void CloseComforts(EditorWindow& window);

// Rows are numbered from the control ids.
inline bool IsIdIn(int id, int base) { return id >= base && id < base + kRowCount; }

}  // namespace tq::win
