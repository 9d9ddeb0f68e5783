// The editor's colour checks on screen, an addition beside the editor window's own
// controls (which it never moves or changes):
//
// - a warning marker (id kFindingMarker + row) in the free space left of a row's colour
//   button, for each built row involved in a failed rule; its text and tooltip say why;
// - the check window (class kCheckClass, More > Check Colors...): the findings, a
//   colour-vision simulation for the editor's swatches, and a live preview of the
//   host's list displays painted from the colour lists the editor sends to the host.
//
// Owned by the editor window, which calls it at the few points marked "checks" there.
#pragma once

#include <windows.h>

#include <array>
#include <string>
#include <vector>

#include "editor/catalogue.h"
#include "editor/checks.h"
#include "quality/color_quality.h"

namespace tq::win {

class EditorWindow;

class CheckUi {
 public:
  explicit CheckUi(EditorWindow& editor) : editor_(editor) {}
  ~CheckUi();
  CheckUi(const CheckUi&) = delete;
  CheckUi& operator=(const CheckUi&) = delete;

  static bool RegisterClasses();
  static void UnregisterClasses();

  // The editor shows a session's colours: every rule again, every marker.
  void Reset();
  // Every colour may change now (a scheme, an import): the rows' single changes are
  // not checked one by one, and Refresh then checks all at once, while the editor is up.
  void Suspend() { suspended_ = true; }
  void Refresh() {
    suspended_ = false;
    if (reset_) Reset();
  }
  // One row's colour changed in the model.
  void RowChanged(int row);
  // A frame's rows were just created: their markers.
  void FrameBuilt(int page, int frame);
  // The editor's window is gone or hidden: the check window closes, vision is normal,
  // and the markers' handles (children of the editor) are forgotten when `destroyed`.
  void EditorClosing(bool destroyed);
  // The editor makes its fonts and controls again at another DPI (its fonts are made,
  // its controls not yet): the markers go with the old controls, and the open window,
  // whose controls hold the old fonts, makes its own again.
  void DpiChanged();

  // The frame's paint: the markers of its rows (their windows paint nothing).
  void PaintMarkers(HWND frame, HDC dc);

  // More > Check Colors...: opens the window, or activates the one that is open.
  void OpenWindow();
  HWND Window() const { return window_; }
  // The modal loop's keyboard handling for the (modeless) check window.
  bool PreTranslate(MSG& msg);

  // A swatch colour as the chosen vision sees it (the system's button face unchanged).
  std::int32_t Shown(std::int32_t colour) const;
  // What the editor's title carries while a simulation is on ("" with normal vision).
  std::wstring TitleSuffix() const;

 private:
  void ForgetMarkers();
  static LRESULT CALLBACK WindowProc(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam);
  static LRESULT CALLBACK MarkerProc(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam, UINT_PTR id,
                                     DWORD_PTR self);
  LRESULT Handle(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam);
  std::string NameOf(int index) const;
  void UpdateMarker(int row);
  void UpdateIndexes(const std::vector<int>& indexes);
  void CreateChildren();
  void FillFindings();
  void Jump();
  void SetVision(quality::Vision vision);
  void RepaintEditor();
  int Px(int twips) const;
  HWND Child(const wchar_t* window_class, const std::wstring& text, DWORD style, int id, const RECT& twips,
             DWORD ex_style = 0);

  EditorWindow& editor_;
  EditorChecks checks_;
  bool reset_ = false;
  bool suspended_ = false;
  std::array<HWND, kRowCount> markers_{};
  std::array<std::wstring, kRowCount> marker_texts_;
  HWND window_ = nullptr;
  HWND list_ = nullptr;
  std::vector<const quality::Finding*> shown_findings_;  // the list's items, in order
  quality::Vision vision_ = quality::Vision::Normal;
};

}  // namespace tq::win
