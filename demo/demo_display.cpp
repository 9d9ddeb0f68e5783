// demo_display.exe: a sample process display of the Corvana SCADA host. It embeds
// the colour-setting control as the display does (created by ProgID, driven
// late-bound through IDispatch), hands it its context and its list-communication
// object, paints a small alarm list and event list with the colours the control
// sends, and opens the editor with "Colours..."; after OK the lists repaint in the
// new colours.
//
//   demo_display [--lang EN|DE] [--app <folder>] [--user <folder>] [--scheme <name.clut>]
//                [--file-dialog control|host] [--tab <tag>] [--category <n>] [--enable-changes true|false]
//                [--screenshot <editor.bmp> [--display-screenshot <display.bmp>]
//                 [--check-screenshot <check.bmp> [--vision 0|1|2|3]] [--menu-screenshot <menu.bmp>]]
//
// The folders default to app\ and user\ in the current folder; the log shows them as
// <app>\ and <user>\. --file-dialog host makes Import and Export ask the display's own
// file dialogs through the control's event BrowsePressed (browse_sink.cpp). --tab (default
// StatusTab), --category and --enable-changes are Show2's arguments. --scheme makes that
// file of the application's scheme folder the user's chosen scheme (FrameWindow.ini
// in the user folder), as choosing it in the editor and pressing OK would. With --screenshot the
// display opens the editor at once, saves a picture of it as a 24-bit BMP, cancels
// it, optionally saves a picture of the display itself, prints Show's result and the
// colour lists, and ends: 0 done, 2 bad arguments or no control, 3 the editor window
// did not appear, 4 a picture was not written. --check-screenshot first opens More > Check
// Colors..., chooses --vision (0 Normal, 1 Protanopia, 2 Deuteranopia, 3 Tritanopia) and
// captures the check window, then the editor as that vision shows it. --menu-screenshot
// first captures the editor with the context menu of its first colour button open.
#include <windows.h>
#include <ole2.h>
#include <fcntl.h>
#include <io.h>
#include <wrl/client.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <regex>
#include <string>
#include <vector>

#include "browse_sink.h"
#include "list_comm_host.h"

namespace demo {
namespace {

using Microsoft::WRL::ComPtr;

constexpr wchar_t kProgId[] = L"TqColorSettingTool.ctlTqColorSetting";
constexpr wchar_t kEditorClass[] = L"TqColorSettingEditor";
// The editor's check window and what opens and drives it (automation ids).
constexpr wchar_t kCheckClass[] = L"TqColorCheck";
constexpr int kCheckColorsItem = 1600, kVisionCombo = 3002;
constexpr int kFirstColorButton = 2000;  // + row: the colour buttons, whose context menu is pictured
constexpr wchar_t kWindowClass[] = L"CorvanaDemoDisplay";
constexpr int kColoursButton = 101;
constexpr UINT kStartMessage = WM_APP + 1;
constexpr UINT_PTR kScreenshotTimer = 1;
constexpr UINT kTimerMs = 100;
constexpr ULONGLONG kEditorWaitMs = 20000;
constexpr int kPaintTicks = 5;  // the editor is left this many ticks to paint before it is captured

struct Options {
  std::wstring language = L"EN";
  std::wstring app_folder, user_folder;  // absolute, ending with "\"
  std::wstring screenshot;               // "": interactive
  std::wstring display_screenshot;       // "": none
  std::wstring scheme;                   // "": the control's ClutFile
  bool host_file_dialog = false;         // --file-dialog host
  std::wstring tab = L"StatusTab";       // the tab Show2 opens, by its tag
  short category = 0;
  bool enable_changes = true;            // --enable-changes false: read-only
  std::wstring check_screenshot;         // --check-screenshot: More > Check Colors... captured too
  int vision = 0;                        // --vision 0-3: the check window's vision (Normal...)
  std::wstring menu_screenshot;          // --menu-screenshot: the first colour button's context menu
};

// ---- Small helpers ---------------------------------------------------------------

struct ReleaseScreenDc {
  void operator()(HDC dc) const { ReleaseDC(nullptr, dc); }
};
struct DeleteDc {
  void operator()(HDC dc) const { DeleteDC(dc); }
};
struct DeleteGdiObject {
  void operator()(HGDIOBJ object) const { DeleteObject(object); }
};
struct CloseFile {
  void operator()(HANDLE file) const { CloseHandle(file); }
};
using ScreenDc = std::unique_ptr<HDC__, ReleaseScreenDc>;
using MemoryDc = std::unique_ptr<HDC__, DeleteDc>;
using GdiObject = std::unique_ptr<void, DeleteGdiObject>;
using File = std::unique_ptr<void, CloseFile>;

class Selection {  // an object selected into a DC until the end of the scope
 public:
  Selection(HDC dc, HGDIOBJ object) : dc_(dc), old_(SelectObject(dc, object)) {}
  ~Selection() { SelectObject(dc_, old_); }
  Selection(const Selection&) = delete;
  Selection& operator=(const Selection&) = delete;

 private:
  HDC dc_;
  HGDIOBJ old_;
};

struct OleScope {
  HRESULT hr = OleInitialize(nullptr);
  ~OleScope() {
    if (SUCCEEDED(hr)) OleUninitialize();
  }
};

void Print(const std::wstring& line) {
  const std::wstring text = line + L"\n";
  const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0, nullptr, nullptr);
  std::string bytes(size, '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), bytes.data(), size, nullptr, nullptr);
  std::fwrite(bytes.data(), 1, bytes.size(), stdout);
  std::fflush(stdout);
}

std::wstring HresultText(HRESULT hr) {
  wchar_t hex[16];
  swprintf(hex, 16, L"0x%08lX", static_cast<unsigned long>(hr));
  return hex;
}

std::wstring FolderPath(const std::wstring& folder) {
  std::wstring path(MAX_PATH, L'\0');
  DWORD size = GetFullPathNameW(folder.c_str(), MAX_PATH, path.data(), nullptr);
  if (size >= MAX_PATH) {
    path.resize(size);
    size = GetFullPathNameW(folder.c_str(), size, path.data(), nullptr);
  }
  path.resize(size);
  if (path.empty()) path = folder;
  if (path.back() != L'\\') path += L'\\';
  return path;
}

bool ParseOptions(int argc, wchar_t** argv, Options& options) {
  for (int i = 1; i < argc; i += 2) {
    if (i + 1 >= argc) return false;  // every option takes a value
    const std::wstring name = argv[i], value = argv[i + 1];
    if (name == L"--lang")
      options.language = value;
    else if (name == L"--app")
      options.app_folder = value;
    else if (name == L"--user")
      options.user_folder = value;
    else if (name == L"--screenshot")
      options.screenshot = value;
    else if (name == L"--display-screenshot")
      options.display_screenshot = value;
    else if (name == L"--scheme")
      options.scheme = value;
    else if (name == L"--file-dialog" && (value == L"host" || value == L"control"))
      options.host_file_dialog = value == L"host";
    else if (name == L"--tab")
      options.tab = value;
    else if (name == L"--category")
      options.category = static_cast<short>(_wtoi(value.c_str()));
    else if (name == L"--enable-changes" && (value == L"true" || value == L"false"))
      options.enable_changes = value == L"true";
    else if (name == L"--check-screenshot")
      options.check_screenshot = value;
    else if (name == L"--menu-screenshot")
      options.menu_screenshot = value;
    else if (name == L"--vision" && value.size() == 1 && value[0] >= L'0' && value[0] <= L'3')
      options.vision = value[0] - L'0';
    else
      return false;
  }
  options.app_folder = FolderPath(options.app_folder.empty() ? L"app" : options.app_folder);
  options.user_folder = FolderPath(options.user_folder.empty() ? L"user" : options.user_folder);
  return true;
}

std::wstring UserName() {
  wchar_t name[256];
  DWORD size = 256;
  return GetUserNameW(name, &size) && size > 1 ? std::wstring(name, size - 1) : L"operator";
}

// ---- The colour lists ------------------------------------------------------------

struct ColorList {
  std::wstring name;                                    // AL1, AL2, EL, BL, TGM, TTM, MRGM, MRTM
  std::vector<std::pair<std::wstring, long>> colours;   // BG=..., GL=..., as 0x00BBGGRR
};

// "#return LIST(AL1=LIST(BG=1,GL=2),EL=LIST(...))": the inner lists; none for any other expression.
std::vector<ColorList> ParseColorLists(const std::wstring& expression) {
  static const std::wregex list(LR"((\w+)=LIST\(([^()]*)\))"), item(LR"((\w+)=(-?\d+))");
  std::vector<ColorList> lists;
  if (!expression.starts_with(L"#return LIST(")) return lists;
  for (std::wsregex_iterator l(expression.begin(), expression.end(), list), end; l != end; ++l) {
    ColorList& found = lists.emplace_back();
    found.name = (*l)[1];
    const std::wstring body = (*l)[2];
    for (std::wsregex_iterator i(body.begin(), body.end(), item); i != end; ++i)
      found.colours.emplace_back((*i)[1], std::stol((*i)[2]));
  }
  return lists;
}

// The list with its colours as #RRGGBB (the control sends them as decimal 0x00BBGGRR).
std::wstring Describe(const ColorList& list) {
  std::wstring text = list.name + L" as #RRGGBB:";
  for (const auto& [key, value] : list.colours) {
    wchar_t colour[16];
    if (value >= 0 && value <= 0xFFFFFF)  // shown as #RRGGBB
      swprintf(colour, 16, L"#%02lX%02lX%02lX", value & 0xFF, (value >> 8) & 0xFF, (value >> 16) & 0xFF);
    else
      swprintf(colour, 16, L"%ld", value);
    text += L" " + key + L"=" + colour;
  }
  return text;
}

// ---- The alarm and event lists ---------------------------------------------------

// A few rows of each list as the display would show them; the times are fixed so that
// pictures of the display stay the same from run to run.
struct Row {
  const wchar_t* time;
  const wchar_t* text;
  bool day_break_before = false;  // the event list marks where a day begins
};
constexpr Row kAlarms[] = {
    {L"11:58:02", L"North 380 kV  Q1 breaker tripped"},
    {L"11:57:40", L"North 380 kV  busbar protection"},
    {L"11:52:15", L"West 110 kV  T2 oil temperature high"},
    {L"11:40:09", L"East 20 kV  feeder 7 earth fault"},
};
constexpr Row kEvents[] = {
    {L"00:12:44", L"West 110 kV  T2 tap 5 -> 6"},
    {L"00:03:10", L"East 20 kV  feeder 7 closed", false},
    {L"23:58:31", L"North 380 kV  Q4 opened by operator", true},
    {L"23:41:05", L"North 380 kV  Q4 interlock released"},
};

constexpr int kListPadding = 4;  // around a row's text, at 96 DPI

struct ListStyle {
  const wchar_t* list;      // the colour list it is painted with: AL1, EL
  const wchar_t* title_en;
  const wchar_t* title_de;
};
constexpr ListStyle kAlarmList{L"AL1", L"Alarm list", L"Alarmliste"};
constexpr ListStyle kEventList{L"EL", L"Event list", L"Ereignisliste"};

// A colour of a received list; `fallback` until the control has sent one.
COLORREF ListColour(const std::vector<ColorList>& lists, const wchar_t* list, const wchar_t* key, COLORREF fallback) {
  for (const ColorList& found : lists)
    if (found.name == list)
      for (const auto& [name, value] : found.colours)
        if (name == key && value >= 0 && value <= 0xFFFFFF) return static_cast<COLORREF>(value);
  return fallback;
}

void Fill(HDC dc, RECT rect, COLORREF colour) {
  SetBkColor(dc, colour);
  ExtTextOutW(dc, 0, 0, ETO_OPAQUE, &rect, nullptr, 0, nullptr);
}

// One list: its title above, then the rows on the list's background, separated by its
// grid lines, in its text colour; the event list draws a day break line in its own colour.
void PaintList(HDC dc, RECT area, const ListStyle& style, const std::vector<ColorList>& lists, const Row* rows,
               std::size_t count, bool german, int dpi) {
  const COLORREF background = ListColour(lists, style.list, L"BG", RGB(255, 255, 255));
  const COLORREF grid = ListColour(lists, style.list, L"GL", RGB(192, 192, 192));
  const COLORREF text = ListColour(lists, style.list, L"TXT", RGB(0, 0, 0));
  const COLORREF day_break = ListColour(lists, style.list, L"DB", grid);
  TEXTMETRICW metrics{};
  GetTextMetricsW(dc, &metrics);
  const int pad = MulDiv(kListPadding, dpi, 96), line = metrics.tmHeight + 2 * pad;

  SetBkMode(dc, TRANSPARENT);
  SetTextColor(dc, GetSysColor(COLOR_BTNTEXT));
  const std::wstring title = german ? style.title_de : style.title_en;
  TextOutW(dc, area.left, area.top, title.c_str(), static_cast<int>(title.size()));
  RECT box{area.left, area.top + line, area.right, area.top + line * (1 + static_cast<int>(count))};
  if (box.bottom > area.bottom) box.bottom = area.bottom;
  Fill(dc, box, background);

  SIZE time_size{};
  GetTextExtentPoint32W(dc, L"00:00:00", 8, &time_size);
  const int column = box.left + time_size.cx + 3 * pad;
  SetTextColor(dc, text);
  for (std::size_t i = 0; i < count; ++i) {
    const int top = box.top + line * static_cast<int>(i);
    if (top + line > box.bottom) break;
    const RECT rule{box.left, top + line - 1, box.right, top + line};
    Fill(dc, rule, grid);
    if (rows[i].day_break_before) {
      const RECT mark{box.left, top, box.right, top + MulDiv(2, dpi, 96)};
      Fill(dc, mark, day_break);
    }
    TextOutW(dc, box.left + pad, top + pad, rows[i].time, static_cast<int>(wcslen(rows[i].time)));
    TextOutW(dc, column + pad, top + pad, rows[i].text, static_cast<int>(wcslen(rows[i].text)));
  }
  Fill(dc, RECT{column, box.top, column + 1, box.bottom}, grid);
  FrameRect(dc, &box, static_cast<HBRUSH>(GetStockObject(DKGRAY_BRUSH)));
}

// ---- The screenshot --------------------------------------------------------------

struct ThreadWindows {
  HWND editor = nullptr;     // the visible editor window, if any
  std::wstring others;       // the other visible windows, for a message
  HWND skip = nullptr;
};

BOOL CALLBACK CollectWindow(HWND window, LPARAM param) {
  auto& found = *reinterpret_cast<ThreadWindows*>(param);
  if (window == found.skip || !IsWindowVisible(window)) return TRUE;
  wchar_t name[128] = L"", title[256] = L"";
  GetClassNameW(window, name, 128);
  if (!found.editor && std::wstring(name) == kEditorClass) found.editor = window;
  GetWindowTextW(window, title, 256);
  found.others += std::wstring(found.others.empty() ? L"" : L", ") + L"\"" + title + L"\" (" + name + L")";
  return TRUE;
}

ThreadWindows VisibleWindows(HWND main_window) {
  ThreadWindows found;
  found.skip = main_window;
  EnumThreadWindows(GetCurrentThreadId(), CollectWindow, reinterpret_cast<LPARAM>(&found));
  return found;
}

// The part of the screen under `rect` as a 24-bit BMP file. Read from the screen:
// under Wine, PrintWindow may leave child windows blank.
bool SaveScreenRect(RECT rect, const std::wstring& path) {
  const int left = GetSystemMetrics(SM_XVIRTUALSCREEN), top = GetSystemMetrics(SM_YVIRTUALSCREEN);
  const RECT screen{left, top, left + GetSystemMetrics(SM_CXVIRTUALSCREEN), top + GetSystemMetrics(SM_CYVIRTUALSCREEN)};
  if (!IntersectRect(&rect, &rect, &screen)) return false;
  const int width = rect.right - rect.left, height = rect.bottom - rect.top;

  ScreenDc screen_dc(GetDC(nullptr));
  if (!screen_dc) return false;
  MemoryDc memory(CreateCompatibleDC(screen_dc.get()));
  GdiObject bitmap(CreateCompatibleBitmap(screen_dc.get(), width, height));
  if (!memory || !bitmap) return false;
  {
    Selection selected(memory.get(), bitmap.get());
    if (!BitBlt(memory.get(), 0, 0, width, height, screen_dc.get(), rect.left, rect.top, SRCCOPY)) return false;
  }
  BITMAPINFO info{};
  info.bmiHeader = {sizeof(BITMAPINFOHEADER), width, height, 1, 24, BI_RGB, 0, 0, 0, 0, 0};
  const DWORD stride = (static_cast<DWORD>(width) * 3 + 3) & ~3u;  // rows padded to 4 bytes
  std::vector<BYTE> pixels(static_cast<std::size_t>(stride) * height);
  if (GetDIBits(memory.get(), static_cast<HBITMAP>(bitmap.get()), 0, height, pixels.data(), &info, DIB_RGB_COLORS) !=
      height)
    return false;
  info.bmiHeader.biSizeImage = static_cast<DWORD>(pixels.size());

  BITMAPFILEHEADER header{};
  header.bfType = 0x4D42;  // "BM"
  header.bfOffBits = sizeof(BITMAPFILEHEADER) + sizeof(BITMAPINFOHEADER);
  header.bfSize = header.bfOffBits + info.bmiHeader.biSizeImage;
  HANDLE opened = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (opened == INVALID_HANDLE_VALUE) return false;
  File file(opened);
  const auto write = [&](const void* data, DWORD size) {
    DWORD written = 0;
    return WriteFile(file.get(), data, size, &written, nullptr) && written == size;
  };
  return write(&header, sizeof header) && write(&info.bmiHeader, sizeof info.bmiHeader) &&
         write(pixels.data(), info.bmiHeader.biSizeImage);
}

// ---- The display -----------------------------------------------------------------

class Display {
 public:
  explicit Display(Options options) : options_(std::move(options)) {}
  Display(const Display&) = delete;
  Display& operator=(const Display&) = delete;

  bool Create();
  int Run();  // the exit code

 private:
  static LRESULT CALLBACK WindowProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
  LRESULT Handle(UINT message, WPARAM wparam, LPARAM lparam);
  void OnCreate();
  void OnSize(int width, int height);
  void OnPaint();
  void OnCommand(int id);
  void OnStart();
  bool TakeMenuShot(HWND editor);
  void OnTimer();
  void OnDestroy();

  bool ConnectControl();
  HRESULT Call(const wchar_t* member, std::vector<VARIANT> args, VARIANT* result = nullptr);
  HRESULT SetValue(const wchar_t* key, const Variant& value);
  Variant GetValue(const wchar_t* key);
  bool ShowEditor();
  void Log(const std::wstring& text);
  void AddLogLine(const std::wstring& line);
  void Received(const std::wstring& expression);
  void PrintSummary(bool shown) const;

  Options options_;
  HWND window_ = nullptr, button_ = nullptr, log_ = nullptr;
  RECT alarm_area_{}, event_area_{};
  GdiObject font_;
  int dpi_ = 96;
  int log_width_ = 0;  // of the widest log line, for the horizontal scroll bar
  ComPtr<IDispatch> control_;
  ComPtr<ListCommHost> host_;
  ComPtr<BrowseSink> browse_sink_;  // with --file-dialog host
  std::vector<ColorList> lists_;
  bool showing_ = false;
  int exit_code_ = 0;
  struct {
    ULONGLONG started = 0;
    int visible_ticks = 0;
    bool taken = false, written = false;
    HWND check = nullptr;  // the check window, once asked for (--check-screenshot)
    bool menu_asked = false;  // --menu-screenshot
  } shot_;
};

bool Display::Create() {
  WNDCLASSEXW type{};
  type.cbSize = sizeof(type);
  type.lpfnWndProc = WindowProc;
  type.hInstance = GetModuleHandleW(nullptr);
  type.hCursor = LoadCursorW(nullptr, IDC_ARROW);
  type.hIcon = LoadIconW(nullptr, IDI_APPLICATION);
  type.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
  type.lpszClassName = kWindowClass;
  RegisterClassExW(&type);
  return CreateWindowExW(0, kWindowClass, L"Corvana process display (demo)", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN,
                         CW_USEDEFAULT, CW_USEDEFAULT, 820, 460, nullptr, nullptr, type.hInstance, this) != nullptr;
}

int Display::Run() {
  ShowWindow(window_, SW_SHOWNORMAL);
  UpdateWindow(window_);
  if (!ConnectControl()) {
    if (options_.screenshot.empty())
      MessageBoxW(window_, L"The colour-setting control could not be started; the log says why.",
                  L"Corvana process display (demo)", MB_ICONERROR);
    DestroyWindow(window_);
    return 2;
  }
  if (!options_.screenshot.empty()) PostMessageW(window_, kStartMessage, 0, 0);
  MSG message;
  while (GetMessageW(&message, nullptr, 0, 0) > 0) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
  return exit_code_;
}

LRESULT CALLBACK Display::WindowProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_NCCREATE) {
    auto* self = static_cast<Display*>(reinterpret_cast<CREATESTRUCTW*>(lparam)->lpCreateParams);
    self->window_ = window;
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
  }
  auto* self = reinterpret_cast<Display*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  return self ? self->Handle(message, wparam, lparam) : DefWindowProcW(window, message, wparam, lparam);
}

LRESULT Display::Handle(UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_CREATE:
      OnCreate();
      return 0;
    case WM_SIZE:
      OnSize(LOWORD(lparam), HIWORD(lparam));
      return 0;
    case WM_PAINT:
      OnPaint();
      return 0;
    case WM_COMMAND:
      OnCommand(LOWORD(wparam));
      return 0;
    case WM_TIMER:
      if (wparam == kScreenshotTimer) OnTimer();
      return 0;
    case kStartMessage:
      OnStart();
      return 0;
    case WM_DESTROY:
      OnDestroy();
      return 0;
    case WM_NCDESTROY:
      SetWindowLongPtrW(window_, GWLP_USERDATA, 0);
      window_ = nullptr;
      break;
  }
  return DefWindowProcW(window_, message, wparam, lparam);
}

void Display::OnCreate() {
  if (HDC dc = GetDC(window_)) {
    dpi_ = GetDeviceCaps(dc, LOGPIXELSY);
    ReleaseDC(window_, dc);
  }
  NONCLIENTMETRICSW metrics{};
  metrics.cbSize = sizeof(metrics);
  if (SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0))
    font_.reset(CreateFontIndirectW(&metrics.lfMessageFont));
  const HINSTANCE instance = GetModuleHandleW(nullptr);
  button_ = CreateWindowExW(0, L"BUTTON", L"Colours...", WS_CHILD | WS_VISIBLE | WS_TABSTOP | BS_PUSHBUTTON, 0, 0, 0,
                            0, window_, reinterpret_cast<HMENU>(static_cast<INT_PTR>(kColoursButton)), instance, nullptr);
  log_ = CreateWindowExW(WS_EX_CLIENTEDGE, L"LISTBOX", L"",
                         WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_VSCROLL | WS_HSCROLL | LBS_NOINTEGRALHEIGHT |
                             LBS_NOSEL,
                         0, 0, 0, 0, window_, nullptr, instance, nullptr);
  for (HWND child : {button_, log_}) SendMessageW(child, WM_SETFONT, reinterpret_cast<WPARAM>(font_.get()), FALSE);
}

void Display::OnSize(int width, int height) {
  const int margin = MulDiv(8, dpi_, 96), button_height = MulDiv(28, dpi_, 96);
  MoveWindow(button_, margin, margin, MulDiv(110, dpi_, 96), button_height, TRUE);
  // The two lists side by side under the button, the log of the control's calls below them.
  // A list is its title and its rows, each a text line with padding (as PaintList draws them).
  int text_height = MulDiv(16, dpi_, 96);
  if (HDC dc = GetDC(window_)) {
    const HGDIOBJ old = SelectObject(dc, font_.get());
    TEXTMETRICW metrics{};
    if (GetTextMetricsW(dc, &metrics)) text_height = metrics.tmHeight;
    SelectObject(dc, old);
    ReleaseDC(window_, dc);
  }
  const int rows = static_cast<int>(std::max(std::size(kAlarms), std::size(kEvents)));
  const int top = 2 * margin + button_height, lists_height = (rows + 1) * (text_height + 2 * MulDiv(kListPadding, dpi_, 96));
  const int half = std::max(0, (width - 3 * margin) / 2);
  alarm_area_ = {margin, top, margin + half, top + lists_height};
  event_area_ = {2 * margin + half, top, 2 * margin + 2 * half, top + lists_height};
  const int log_top = top + lists_height + margin;
  MoveWindow(log_, margin, log_top, std::max(0, width - 2 * margin), std::max(0, height - log_top - margin), TRUE);
  InvalidateRect(window_, nullptr, TRUE);
}

void Display::OnPaint() {
  PAINTSTRUCT paint;
  HDC dc = BeginPaint(window_, &paint);
  const HGDIOBJ old = SelectObject(dc, font_.get());
  const bool german = options_.language == L"DE";
  PaintList(dc, alarm_area_, kAlarmList, lists_, kAlarms, std::size(kAlarms), german, dpi_);
  PaintList(dc, event_area_, kEventList, lists_, kEvents, std::size(kEvents), german, dpi_);
  SelectObject(dc, old);
  EndPaint(window_, &paint);
}

void Display::OnCommand(int id) {
  if (id == kColoursButton && !showing_) ShowEditor();
}

void Display::OnStart() {
  shot_.started = GetTickCount64();
  // Timers keep firing inside the editor's modal loop: that is where the capture happens.
  SetTimer(window_, kScreenshotTimer, kTimerMs, nullptr);
  const bool shown = ShowEditor();
  KillTimer(window_, kScreenshotTimer);
  PrintSummary(shown);
  bool display_written = true;
  if (!options_.display_screenshot.empty()) {
    RedrawWindow(window_, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW | RDW_ALLCHILDREN);
    RECT rect;
    GetWindowRect(window_, &rect);
    display_written = SaveScreenRect(rect, options_.display_screenshot);
  }
  if (!shot_.taken) {
    Print(L"demo_display: the editor window did not appear (Show2 returned without showing a window of class " +
          std::wstring(kEditorClass) + L")");
    exit_code_ = 3;
  } else if (!shot_.written) {
    Print(L"demo_display: could not write " + options_.screenshot);
    exit_code_ = 4;
  } else if (!display_written) {
    Print(L"demo_display: could not write " + options_.display_screenshot);
    exit_code_ = 4;
  }
  DestroyWindow(window_);
}

BOOL CALLBACK FindFirstColorButton(HWND window, LPARAM param) {
  if (GetDlgCtrlID(window) != kFirstColorButton) return TRUE;
  *reinterpret_cast<HWND*>(param) = window;
  return FALSE;
}

// Opens the first colour button's context menu as Shift+F10 does, then captures the
// editor with the menu over it and closes the menu. True while that is under way.
// The timer still fires inside the menu's own message loop.
bool Display::TakeMenuShot(HWND editor) {
  if (!shot_.menu_asked) {
    HWND button = nullptr;
    EnumChildWindows(editor, FindFirstColorButton, reinterpret_cast<LPARAM>(&button));
    if (!button) return false;
    shot_.menu_asked = true;
    shot_.visible_ticks = 0;
    SetFocus(button);
    PostMessageW(editor, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(button), MAKELPARAM(-1, -1));
    return true;
  }
  HWND menu = FindWindowW(L"#32768", nullptr);
  if (!menu || !IsWindowVisible(menu)) {
    if (shot_.visible_ticks < 2 * kPaintTicks) return true;
    Print(L"demo_display: the context menu did not appear");
    exit_code_ = 4;
    options_.menu_screenshot.clear();
    return false;
  }
  if (shot_.visible_ticks < kPaintTicks) return true;
  RECT rect, menu_rect;
  GetWindowRect(editor, &rect);
  GetWindowRect(menu, &menu_rect);
  UnionRect(&rect, &rect, &menu_rect);
  if (!SaveScreenRect(rect, options_.menu_screenshot)) {
    Print(L"demo_display: could not write " + options_.menu_screenshot);
    exit_code_ = 4;
  }
  options_.menu_screenshot.clear();
  EndMenu();
  shot_.visible_ticks = 0;
  return true;
}

void Display::OnTimer() {
  if (shot_.taken) return;
  const ThreadWindows windows = VisibleWindows(window_);
  if (!windows.editor) {
    shot_.visible_ticks = 0;
    if (GetTickCount64() - shot_.started < kEditorWaitMs) return;
    Print(L"demo_display: the editor window did not appear within 20 s; visible windows: " +
          (windows.others.empty() ? std::wstring(L"none") : windows.others));
    // Show has not returned, and what it waits in is not ours to close.
    ExitProcess(3);
  }
  if (++shot_.visible_ticks < kPaintTicks) return;
  if (!options_.menu_screenshot.empty() && TakeMenuShot(windows.editor)) return;
  if (!options_.check_screenshot.empty()) {
    // More > Check Colors..., then the vision asked for, as a user would choose them;
    // both windows are captured once they have painted.
    if (shot_.visible_ticks == kPaintTicks) {
      PostMessageW(windows.editor, WM_COMMAND, kCheckColorsItem, 0);
      return;
    }
    if (!shot_.check) {
      shot_.check = FindWindowW(kCheckClass, nullptr);
      if (!shot_.check) return;
      HWND combo = GetDlgItem(shot_.check, kVisionCombo);
      SendMessageW(combo, CB_SETCURSEL, options_.vision, 0);
      SendMessageW(shot_.check, WM_COMMAND, MAKEWPARAM(kVisionCombo, CBN_SELCHANGE), reinterpret_cast<LPARAM>(combo));
      shot_.visible_ticks = kPaintTicks;
    }
    if (shot_.visible_ticks < 2 * kPaintTicks) return;
    RedrawWindow(shot_.check, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW | RDW_ALLCHILDREN);
    RECT check_rect;
    GetWindowRect(shot_.check, &check_rect);
    if (!SaveScreenRect(check_rect, options_.check_screenshot)) {
      Print(L"demo_display: could not write " + options_.check_screenshot);
      exit_code_ = 4;
    }
  }
  RedrawWindow(windows.editor, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW | RDW_ALLCHILDREN);
  RECT rect;
  GetWindowRect(windows.editor, &rect);
  shot_.taken = true;
  shot_.written = SaveScreenRect(rect, options_.screenshot);
  Log(std::wstring(L"Editor captured") + (shot_.written ? L"" : L" (failed)") + L"; cancelling it");
  PostMessageW(windows.editor, WM_COMMAND, IDCANCEL, 0);
}

void Display::OnDestroy() {
  // The control goes before the host object it holds, both while the window they know exists.
  if (browse_sink_) browse_sink_->Disconnect();
  browse_sink_.Reset();
  control_.Reset();
  host_.Reset();
  PostQuitMessage(exit_code_);
}

bool Display::ConnectControl() {
  CLSID clsid;
  HRESULT hr = CLSIDFromProgID(kProgId, &clsid);
  if (SUCCEEDED(hr)) hr = CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&control_));
  if (FAILED(hr)) {
    Log(L"The control " + std::wstring(kProgId) + L" could not be created (" + HresultText(hr) +
        L"): is TqColorSettingTool.dll registered (regsvr32)?");
    return false;
  }
  if (!options_.scheme.empty() &&
      !WritePrivateProfileStringW(L"COLORSCHEMES", L"ClutFile", options_.scheme.c_str(),
                                  (options_.user_folder + L"FrameWindow.ini").c_str()))
    Log(L"Could not choose the scheme " + options_.scheme + L" in the user's FrameWindow.ini");
  host_.Attach(ListCommHost::Create([this](const std::wstring& line) { Log(line); },
                                    [this](const std::wstring& expression) { Received(expression); }));
  const struct {
    const wchar_t* key;
    Variant value;
  } context[] = {
      {L"UserName", Variant::Text(UserName())},
      {L"Language", Variant::Text(options_.language)},
      {L"ApplicationName", Variant::Text(L"Demo display")},
      {L"ApplicationNumber", Variant::Short(1)},
      {L"HostApplication", Variant::Text(L"Demo display")},
      {L"AppFolder", Variant::Text(options_.app_folder)},
      {L"UserFolder", Variant::Text(options_.user_folder)},
      {L"AuthorizationLevel", Variant::Short(3)},
      {L"Pipeline", Variant::Bool(true)},
      // Window handles fit in 32 bits, in 64-bit processes too.
      {L"hwndParentView", Variant::Int(static_cast<long>(reinterpret_cast<LONG_PTR>(window_)))},
      {L"ListCommRef", Variant::Object(host_.Get())},
      {L"Initialize", Variant::Text(L"ColorScheme")},
      // The display paints its lists from the start, not only after the first OK.
      {L"SendColorValues", Variant::Short(0)},
  };
  for (const auto& [key, value] : context)
    if (FAILED(SetValue(key, value))) return false;
  if (options_.host_file_dialog) {
    browse_sink_.Attach(BrowseSink::Create());
    const HRESULT connected = browse_sink_->Connect(control_.Get());
    if (FAILED(connected) || FAILED(SetValue(L"UseCustomFileDlg", Variant::Bool(true)))) {
      Log(L"The display's own file dialogs could not be connected (" + HresultText(connected) + L")");
      return false;
    }
    Log(L"Import and Export ask the display's own file dialogs (BrowsePressed)");
  }
  Log(L"Control ready; colour table " + DescribeValue(*GetValue(L"ClutFile").get()));
  return true;
}

HRESULT Display::Call(const wchar_t* member, std::vector<VARIANT> args, VARIANT* result) {
  std::wstring error;
  const HRESULT hr = CallByName(control_.Get(), member, std::move(args), result, &error);
  if (FAILED(hr)) Log(std::wstring(member) + L" failed (" + HresultText(hr) + L")" + (error.empty() ? L"" : L": " + error));
  return hr;
}

HRESULT Display::SetValue(const wchar_t* key, const Variant& value) {
  const Variant name = Variant::Text(key);
  return Call(L"SetObjectValue", {*name.get(), *value.get()});
}

Variant Display::GetValue(const wchar_t* key) {
  const Variant name = Variant::Text(key);
  Variant result;
  Call(L"GetObjectValue", {*name.get()}, result.get());
  return result;
}

bool Display::ShowEditor() {
  // Show2 opens the tab by its tag, wherever Pipeline puts it; it takes all four
  // arguments by reference, as the display's own language passes them.
  Variant clut_file = GetValue(L"ClutFile");
  if (FAILED(VariantChangeType(clut_file.get(), clut_file.get(), 0, VT_BSTR))) clut_file = Variant::Text(L"");
  Variant tab = Variant::Text(options_.tab);
  short category = options_.category;
  VARIANT_BOOL enable_changes = options_.enable_changes ? VARIANT_TRUE : VARIANT_FALSE;
  VARIANT args[4] = {};
  args[0].vt = VT_BYREF | VT_BSTR;
  args[0].pbstrVal = &clut_file.get()->bstrVal;
  args[1].vt = VT_BYREF | VT_BSTR;
  args[1].pbstrVal = &tab.get()->bstrVal;
  args[2].vt = VT_BYREF | VT_I2;
  args[2].piVal = &category;
  args[3].vt = VT_BYREF | VT_BOOL;
  args[3].pboolVal = &enable_changes;
  Log(L"Show2(\"" + DescribeValue(*clut_file.get()) + L"\", \"" + options_.tab + L"\", " + std::to_wstring(category) +
      L", " + (options_.enable_changes ? L"True" : L"False") + L")");

  showing_ = true;
  EnableWindow(button_, FALSE);
  Variant result;
  const HRESULT hr = Call(L"Show2", {args[0], args[1], args[2], args[3]}, result.get());
  EnableWindow(button_, TRUE);
  showing_ = false;

  const bool shown = SUCCEEDED(hr) && SUCCEEDED(VariantChangeType(result.get(), result.get(), 0, VT_BOOL)) &&
                     result.get()->boolVal != VARIANT_FALSE;
  Log(std::wstring(L"Show2 returned ") + (shown ? L"True" : L"False"));
  return shown;
}

void Display::Log(const std::wstring& text) {
  // The folders as <app>\ and <user>\, so that the log shows no installation's paths.
  std::wstring line = text;
  const std::pair<std::wstring, std::wstring> folders[] = {{options_.app_folder, L"<app>\\"},
                                                           {options_.user_folder, L"<user>\\"}};
  for (const auto& [folder, name] : folders)
    for (std::size_t at = line.find(folder); !folder.empty() && at != std::wstring::npos; at = line.find(folder, at))
      line.replace(at, folder.size(), name);
  Print(line);
  if (!log_) return;
  // The colour lists one list a line, as the control sent them.
  const std::wstring lists = L"HostEvaluate: #return LIST(";
  if (line.starts_with(lists) && line.size() > lists.size()) {
    std::wstring rest = line.substr(lists.size());
    AddLogLine(lists);
    for (std::size_t end; (end = rest.find(L"),")) != std::wstring::npos; rest.erase(0, end + 2))
      AddLogLine(L"      " + rest.substr(0, end + 2));
    AddLogLine(L"      " + rest);
    return;
  }
  AddLogLine(line);
}

void Display::AddLogLine(const std::wstring& line) {
  const LRESULT at = SendMessageW(log_, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(line.c_str()));
  SendMessageW(log_, LB_SETTOPINDEX, at, 0);
  if (HDC dc = GetDC(log_)) {
    const HGDIOBJ old = SelectObject(dc, font_.get());
    SIZE size{};
    GetTextExtentPoint32W(dc, line.c_str(), static_cast<int>(line.size()), &size);
    SelectObject(dc, old);
    ReleaseDC(log_, dc);
    if (size.cx + 8 > log_width_) {
      log_width_ = size.cx + 8;
      SendMessageW(log_, LB_SETHORIZONTALEXTENT, log_width_, 0);
    }
  }
}

void Display::Received(const std::wstring& expression) {
  std::vector<ColorList> lists = ParseColorLists(expression);
  if (lists.empty()) return;
  lists_ = std::move(lists);
  // What the numbers are, told by one whose red and blue differ.
  for (const ColorList& list : lists_) {
    const auto found = std::find_if(list.colours.begin(), list.colours.end(),
                                    [](const auto& item) { return (item.second & 0xFF) != ((item.second >> 16) & 0xFF); });
    if (found == list.colours.end()) continue;
    const long value = found->second;
    Log(L"  (colours in decimal, 0x00BBGGRR with red in the low byte: " + list.name + L" " + found->first + L"=" +
        std::to_wstring(value) + L" is red " + std::to_wstring(value & 0xFF) + L", green " +
        std::to_wstring((value >> 8) & 0xFF) + L", blue " + std::to_wstring((value >> 16) & 0xFF) + L")");
    break;
  }
  InvalidateRect(window_, &alarm_area_, FALSE);
  InvalidateRect(window_, &event_area_, FALSE);
}

void Display::PrintSummary(bool shown) const {
  Print(std::wstring(L"Result: Show2 returned ") + (shown ? L"True" : L"False"));
  Print(L"Colour lists received: " + std::to_wstring(lists_.size()));  // the lines as #RRGGBB
  for (const ColorList& list : lists_) Print(L"  " + Describe(list));
}

}  // namespace
}  // namespace demo

int wmain(int argc, wchar_t** argv) {
  _setmode(_fileno(stdout), _O_BINARY);  // UTF-8 lines with plain "\n"
  demo::Options options;
  if (!demo::ParseOptions(argc, argv, options)) {
    demo::Print(L"usage: demo_display [--lang EN|DE] [--app <folder>] [--user <folder>] [--scheme <name.clut>] "
                L"[--file-dialog control|host] [--tab <tag>] [--category <n>] [--enable-changes true|false] "
                L"[--screenshot <editor.bmp> [--display-screenshot <display.bmp>] "
                L"[--check-screenshot <check.bmp> [--vision 0|1|2|3]] [--menu-screenshot <menu.bmp>]]");
    return 2;
  }
  const demo::OleScope ole;
  if (FAILED(ole.hr)) {
    demo::Print(L"demo_display: OleInitialize failed (" + demo::HresultText(ole.hr) + L")");
    return 2;
  }
  demo::Display display(std::move(options));
  if (!display.Create()) {
    demo::Print(L"demo_display: the main window could not be created");
    return 2;
  }
  return display.Run();
}
