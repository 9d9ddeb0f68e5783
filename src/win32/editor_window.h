// The editor window: the Win32 face of the editor session (src/editor/session.h).
//
// It draws the session's model (pages and rows from the catalogue, colours from the
// row states, enablement from MakeEnableChanges) and turns clicks and keys into calls
// on the session. One per thread, like the session (win32/thread_state.h); the
// window itself exists from Load to Unload. Control ids: editor_ids.h.
// The members live in editor_window.cpp (life, procedures), editor_layout.cpp,
// editor_rows.cpp and editor_commands.cpp, which share editor_parts.h.
#pragma once

#include <windows.h>

#include <array>
#include <memory>
#include <string>

#include "editor/session.h"
#include "win32/handles.h"

namespace tq::win {

class CheckUi;  // the colour checks beside the editor (check_window.h)

class EditorWindow final : public EditorView {
  static constexpr std::array<int, kPageCount> MakeFilled(int value) {
    std::array<int, kPageCount> a{};
    for (int& v : a) v = value;
    return a;
  }

 public:
  // Registers the window classes once per process (each thread's first editor may come
  // at the same moment); false only when the system refuses them. They would outlive a
  // library that the host unloads and loads again: the library removes them when it is
  // unloaded, and the library loaded again registers them again.
  static bool RegisterClasses();
  static void UnregisterClasses();
  // Editor windows that exist (shown or kept hidden) in the process: the library must
  // not be unloaded under them.
  static long LiveWindows();

  EditorWindow();
  ~EditorWindow() override;
  EditorWindow(const EditorWindow&) = delete;
  EditorWindow& operator=(const EditorWindow&) = delete;

  void Load(frmTqColorSetting& session) override;
  void ShowModal(frmTqColorSetting& session) override;
  void Unload() override;  // hides the window, which the next Load may take up again
  void Destroy();
  void Close() override;
  void RowChanged(int row) override;
  void SchemesChanged() override;
  void StateChanged() override;
  std::string AskSchemeName(const SaveSchemeRequest& request) override;
  std::string AskFile(FileDialogKind kind, const std::string& title, const std::string& filter,
                      const std::string& default_ext, std::string& initial_folder) override;
  std::int32_t WindowHandle() const override;
  std::int32_t ButtonFaceColor() const override;

 private:
  friend class EditorComforts;  // the context menu, clipboard, undo and find (editor_comforts.cpp)
  friend class CheckUi;
  struct Gdi;
  // What the window's controls are built from; a window of another shape is rebuilt.
  struct Shape {
    HWND owner = nullptr;
    std::string language;
    bool pipeline = false;
    VoltageRowNames voltage_names;
    // What the new window's DPI follows: this thread's (96 on a DPI-unaware thread) and
    // the owner's (its monitor's, for a per-monitor aware host).
    int thread_dpi = 0, owner_dpi = 0;
    bool operator==(const Shape&) const = default;
  };
  void ApplyTopMost();
  // The procedures of the editor's own classes; each goes through Route.
  static LRESULT CALLBACK WindowProc(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam);
  static LRESULT CALLBACK PanelProc(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam);
  static LRESULT CALLBACK FrameProc(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam);
  template <typename Handler>
  static LRESULT Route(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam, Handler&& handle);
  static LRESULT ContainerMessage(EditorWindow& self, HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam);
  static LRESULT CALLBACK MoreButtonProc(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam, UINT_PTR id,
                                         DWORD_PTR self);
  void ShowMoreMenu();
  void Build(frmTqColorSetting& session);
  void RunModal();
  void Fail() noexcept;
  void Forget();
  void ForgetControls();
  void MakeFonts();
  void OnDpiChanged(int dpi, const RECT& suggested);
  LRESULT Handle(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam);

  void CreateControls();
  void Layout();
  HWND CreateContainer(HWND parent, const wchar_t* window_class, int id, const RECT& pixels);
  void BuildPage(int page);
  void BuildFrame(int page, int frame);
  void AddTool(HWND parent, HWND tool, wchar_t* text);
  std::wstring RgbTextOf(int row) const;
  void ApplySelection();
  void ApplyEnablement();
  void FillSchemeList();
  HWND CreateChild(HWND parent, const wchar_t* window_class, const std::wstring& text, DWORD style, int id,
                   const RECT& twips, DWORD ex_style = 0);
  int Px(int twips) const { return MulDiv(twips, dpi_, 1440); }
  std::wstring Caption(int id) const;
  void OnCommand(int id, int code, HWND control);
  void OnColorButton(int row);
  void OnDrawItem(const DRAWITEMSTRUCT& item);
  HBRUSH OnStaticColor(HDC dc, HWND control);
  bool PreTranslate(MSG& msg);

  frmTqColorSetting* session_ = nullptr;
  Shape shape_;
  HWND hwnd_ = nullptr;
  HWND owner_ = nullptr;
  HWND tabs_ = nullptr;
  HWND tooltip_ = nullptr;
  std::array<HWND, kPageCount> pages_{};
  std::array<std::array<HWND, 3>, kPageCount> frames_{};
  std::array<int, kPageCount> shown_frame_ = MakeFilled(-1);  // the visible frame of each page
  int shown_page_ = -1;
  std::array<HWND, kRowCount> color_buttons_{};
  std::array<HWND, kRowCount> rgb_labels_{};
  std::array<std::wstring, kRowCount> rgb_texts_;
  bool buttons_enabled_ = true;  // as the colour buttons are
  std::wstring tooltip_text_;
  std::unique_ptr<Gdi> gdi_;
  int dpi_ = 96;
  int name_width_ = 0;     // twips: the widest row name of all pages
  int rgb_width_ = 0;      // twips: the RGB column, at least the reference width
  int name_left_ = 0;      // twips: where the names start
  const wchar_t* button_class_ = nullptr;
  const wchar_t* static_class_ = nullptr;
  const wchar_t* combo_class_ = nullptr;
  std::wstring file_tip_;
  bool closing_ = false;
  HWND find_box_ = nullptr;  // owned by the editor's window
  WPARAM menu_key_ = 0;      // the key that opened the context menu, until its release
  std::unique_ptr<CheckUi> checks_;  // markers, check window, simulated vision
};

}  // namespace tq::win
