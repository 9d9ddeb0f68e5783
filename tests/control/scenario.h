// The one fixture of the editor's UI tests, in-process: a host thread plays the
// process display (its window owns the editor, a C++ object answers the host calls)
// and opens the editor through the registered control; the test's thread drives the
// window through the ids of the automation contract, as a person would.
//
// Most tests are a scenario: a list of steps (press an id, answer the dialog that
// says X, pick a colour, expect a text or a line of a file) that Play interprets,
// waiting as the user would. Run with a lambda is there for what a list cannot say.
#pragma once

#include <gtest/gtest.h>

#include <windows.h>
#include <commctrl.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "colortable/clut_format.h"
#include "common/win_test_support.h"
#include "control/client.h"
#include "support/localization.h"
#include "win32/editor_ids.h"

namespace editor_test {

using namespace tq::test;
using test::ArgList;
using test::ComPtr;
using tq::ParseClutLine;
using tq::SplitClutLines;
namespace ids = tq::win::editor_ids;

// The process display's list-communication object: reports `levels` voltage levels,
// makes the folders asked for, notes every call as "Member|arg|arg".
class DisplayHost final : public test::HostDispatch {
 public:
  int levels = 4;
  std::vector<std::wstring> calls;
  STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* p, VARIANT*, EXCEPINFO*, UINT*) override;
};

// What the host does and what it saw.
struct Display {
  // Context.
  std::wstring language = L"EN";
  short level = 2;
  bool pipeline = false, topmost = false, stale_owner = false;
  int levels = 4;
  // The call.
  const wchar_t* tab_name = nullptr;  // Show2 when set
  short tab = 0, category = 0;
  bool enable = true;
  std::optional<bool> enable_later;  // EnableChanges of the second and later openings
  int shows = 1;
  std::function<void()> before_show;  // on the display's thread, after "Initialize"
  std::function<void()> between_shows;  // on the display's thread, before each Show after the first
  std::function<void(IDispatch*)> with_control;  // the same, with the control (events)
  // Seen.
  std::atomic<int> returned{0};  // Show calls that have returned
  std::vector<bool> results;
  HRESULT hr = S_OK;
  bool owner_enabled_after = false;
  std::vector<std::wstring> calls;
  DWORD thread = 0;
  bool Called(const std::wstring& call) const;
};

// One step of a scenario. Steps act on the front window: the editor, or the dialog it
// has open (message box, Save As, file or colour dialog).
struct Step {
  enum class Kind { Press, Keys, Answer, Pick, Name, Menu, Tab, Choose, ExpectText, ExpectLine, ExpectColour, Do };
  Kind kind;
  int id = 0;  // control id, button, row, menu access key, tab position, list position, table index
  std::wstring text;  // text looked for, expected or typed
  std::optional<COLORREF> colour;  // Pick: nullopt cancels
  std::string file;
  std::vector<WORD> keys;
  std::function<void(HWND)> act;  // Do: with the editor
  int position = 0;  // Choose
};
// Clicks control `id` of the front window.
inline Step Press(int id) { return {Step::Kind::Press, id}; }
// Keys pressed together and released, typed into the editor.
inline Step Keys(std::vector<WORD> keys) { return {.kind = Step::Kind::Keys, .keys = std::move(keys)}; }
// Waits for a dialog whose title or text contains `text` and presses its `button` (0: none).
inline Step Answer(const std::wstring& text, int button) { return {Step::Kind::Answer, button, text}; }
// Clicks the colour button of `row` and sets the colour dialog to `colour` (nullopt:
// Cancel; row -1: the dialog is open already); `starts_from`, when given, is the "(r, g, b)" the dialog must open with.
inline Step Pick(int row, std::optional<COLORREF> colour, const std::wstring& starts_from = L"") {
  return {Step::Kind::Pick, row, starts_from, colour};
}
// Types `name` into the front dialog's name field, then OK.
inline Step Name(const std::string& name) { return {Step::Kind::Name, 0, W(name)}; }
// Opens More and types the access key of one of its items.
inline Step Menu(char key) { return {Step::Kind::Menu, key}; }
inline Step Tab(int position) { return {Step::Kind::Tab, position}; }
// Selects position `index` of list `id` as the user does (the list tells its parent).
inline Step Choose(int id, int index) { return {.kind = Step::Kind::Choose, .id = id, .position = index}; }
inline Step ExpectText(int id, const std::wstring& text) { return {Step::Kind::ExpectText, id, text}; }
// Some line of `file` contains `text`.
inline Step ExpectLine(const std::string& file, const std::string& text) {
  return {.kind = Step::Kind::ExpectLine, .text = W(text), .file = file};
}
// Colour table `file` has `colour` (0x00BBGGRR) at `index`.
inline Step ExpectColour(const std::string& file, int index, std::int32_t colour) {
  return {.kind = Step::Kind::ExpectColour, .id = index, .colour = static_cast<COLORREF>(colour), .file = file};
}
inline Step Do(std::function<void(HWND)> act) { return {.kind = Step::Kind::Do, .act = std::move(act)}; }

// A text of the string table, as the window shows it.
std::wstring Str(int id);

class EditorWindow : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;
  std::string Table() { return app_ + "ColorSchemes\\QLT830_colors.clut"; }
  std::string Scheme(const std::string& name) { return app_ + "ColorSchemes\\" + name; }

  // Runs the display on a thread of its own (its session ends with the thread) while
  // `drive` acts on the editor from this thread. What opens a menu or a dialog is
  // posted, never sent: a sent message returns only once their modal loop has ended.
  // An editor still open after `drive` fails the test.
  void Run(Display& d, const std::function<void()>& drive);
  // Opens the editor and plays `steps` on it; the last step closes it.
  void Play(Display& d, const std::vector<Step>& steps);

  // Waits until the display's Show has returned `count` times: the window itself is kept
  // and shown again so fast that watching it would miss the closing.
  static void WaitForShows(const Display& d, int count);
  // The editor window of the display's thread, once it is visible and idle.
  static HWND Editor(const Display& d);
  // The editor, or the enabled dialog it has open.
  static HWND Front(DWORD thread);
  // Returns once the window's thread is idle (its modal loop runs).
  static void Idle(HWND window) { SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_BLOCK, 5000, nullptr); }
  static HWND Item(HWND window, int id);
  static void Click(HWND editor, int id) { PostMessageW(Item(editor, id), BM_CLICK, 0, 0); }
  static void ClickTab(HWND editor, int position);
  static void Type(HWND editor, const std::vector<WORD>& keys);
  static int ShownPage(HWND editor);
  // The window with the keyboard focus on the display's thread.
  static HWND Focus(const Display& d);
  // A pixel of a window (from its top-left corner) as the screen shows it.
  static COLORREF Pixel(HWND window, int x, int y);
  // A colour table entry as the editor's RGB label shows it.
  static std::wstring RgbText(std::int32_t c);
  static bool Enabled(HWND editor, int id) { return IsWindowEnabled(Item(editor, id)); }
  static bool Shown(HWND editor, int id) { return IsWindowVisible(Item(editor, id)); }
  static std::wstring Text(HWND editor, int id) { return WindowText(Item(editor, id)); }
  // The items of an open menu window as "text", or "text (off)" when greyed; no separators.
  static std::vector<std::wstring> MenuItems(HWND menu);
  // The editor's tooltip for `tool`, a window inside it.
  static std::wstring Tip(const Display& d, HWND editor, HWND tool);

  ScratchFolder app_folder_, user_folder_;
  std::string etc_, app_ = app_folder_.path(), user_ = user_folder_.path();
};

}  // namespace editor_test
