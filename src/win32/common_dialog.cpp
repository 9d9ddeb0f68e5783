#include "win32/common_dialog.h"

#include <windows.h>
#include <commdlg.h>

#include <string>
#include <vector>

#include "win32/handles.h"
#include "win32/text.h"

namespace tq::win {

namespace {

// Room for a multiple selection of many long names; the dialog is told one less so
// that the list always keeps its closing NUL.
constexpr size_t kFileBufferChars = 32760;
constexpr DWORD kFileBufferMax = kFileBufferChars - 1;

constexpr DWORD kBaseFlags = OFN_LONGNAMES | OFN_EXPLORER | OFN_NONETWORKBUTTON | OFN_ENABLEHOOK | OFN_HIDEREADONLY;
static_assert(kBaseFlags == 0x2A0024);
static_assert((OFN_OVERWRITEPROMPT | OFN_NOTESTFILECREATE) == 0x10002);

// The dialogs always ran with a hook; it handles nothing and leaves every message to
// the dialog's default processing.
UINT_PTR CALLBACK QuietHook(HWND, UINT, WPARAM, LPARAM) { return 0; }

// "A|*.a|B|*.b|" -> "A\0*.a\0B\0*.b\0\0": the filter list ends with two NULs.
std::wstring FilterList(const std::string& filter) {
  std::wstring list = Widen(filter);
  for (wchar_t& c : list)
    if (c == L'|') c = L'\0';
  // The string's own terminator is the closing NUL; a filter without the trailing "|"
  // still needs the one that ends its last pattern.
  if (list.empty() || list.back() != L'\0') list.push_back(L'\0');
  return list;
}

// The returned text up to the first pair of NULs: one name, or for a multiple
// selection the folder and the names separated by single NULs.
std::string SelectedText(const std::vector<wchar_t>& buffer) {
  size_t end = 0;
  while (end + 1 < buffer.size() && !(buffer[end] == L'\0' && buffer[end + 1] == L'\0')) ++end;
  // A single name: its own NUL ends it, and the one after it closes the list.
  return Narrow(std::wstring_view(buffer.data(), end));
}

// Owns the wide strings and buffers the record points into for the dialog's duration.
struct DialogRecord {
  std::wstring title;
  std::wstring filter;
  std::wstring default_ext;
  std::wstring initial_dir;
  std::vector<wchar_t> file = std::vector<wchar_t>(kFileBufferChars, L'\0');
  std::vector<wchar_t> file_title = std::vector<wchar_t>(kFileBufferChars, L'\0');
  OPENFILENAMEW ofn{};

  DialogRecord(HWND owner, const std::string& title_utf8, const std::string& filter_utf8,
               const std::string& default_ext_utf8, const std::string& initial_folder, DWORD flags)
      : title(Widen(title_utf8)),
        filter(FilterList(filter_utf8)),
        default_ext(Widen(default_ext_utf8)),
        initial_dir(Widen(initial_folder)) {
    // The record without the later extension fields, as the dialogs have always been given.
    ofn.lStructSize = OPENFILENAME_SIZE_VERSION_400W;
    ofn.hwndOwner = owner;
    ofn.hInstance = ThisModule();
    ofn.lpstrFilter = filter.c_str();
    ofn.lpstrCustomFilter = nullptr;
    ofn.nMaxCustFilter = 0;
    ofn.nFilterIndex = 1;
    ofn.lpstrFile = file.data();
    ofn.nMaxFile = kFileBufferMax;
    ofn.lpstrFileTitle = file_title.data();
    ofn.nMaxFileTitle = kFileBufferMax;
    ofn.lpstrInitialDir = initial_dir.empty() ? nullptr : initial_dir.c_str();
    // Null rather than "" keeps the dialog's own caption and appends no extension.
    ofn.lpstrTitle = title.empty() ? nullptr : title.c_str();
    ofn.lpstrDefExt = default_ext.empty() ? nullptr : default_ext.c_str();
    ofn.Flags = flags;
    ofn.lpfnHook = &QuietHook;
  }
  DialogRecord(const DialogRecord&) = delete;
  DialogRecord& operator=(const DialogRecord&) = delete;
};

// A plain system box (not our localised one): the text names the file and the
// system's reason, the title is the system's default.
void ShowRefusal(HWND owner, const std::string& what, const std::string& name, DWORD error) {
  const std::wstring text = Widen(what + name + "\r\n" + ErrorText(error));
  MessageBoxW(owner, text.c_str(), nullptr, MB_ICONEXCLAMATION | MB_OK);
}

}  // namespace

std::string ShowOpen(HWND owner, const std::string& title, const std::string& filter, const std::string& default_ext,
                     bool must_exist, bool multi_select, std::string& initial_folder) {
  DWORD flags = kBaseFlags;
  if (must_exist) flags |= OFN_FILEMUSTEXIST;
  if (multi_select) flags |= OFN_ALLOWMULTISELECT;
  DialogRecord record(owner, title, filter, default_ext, initial_folder, flags);
  if (!GetOpenFileNameW(&record.ofn)) return {};
  std::string result = SelectedText(record.file);
  if (result.empty()) return {};
  initial_folder.clear();
  return result;
}

std::string ShowSave(HWND owner, const std::string& title, const std::string& filter, const std::string& default_ext,
                     std::string& initial_folder) {
  DialogRecord record(owner, title, filter, default_ext, initial_folder,
                      kBaseFlags | OFN_OVERWRITEPROMPT | OFN_NOTESTFILECREATE);
  if (!GetSaveFileNameW(&record.ofn)) return {};
  const std::string name = SelectedText(record.file);
  if (name.empty()) return {};

  // The dialog does not test the folder (OFN_NOTESTFILECREATE), so prove it writable
  // with a probe file beside the chosen name, without touching the chosen file itself.
  const std::wstring probe = Widen(name + ".tmp");
  HANDLE file = CreateFileW(probe.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    const DWORD error = GetLastError();
    ShowRefusal(owner, "Cannot save files in this location ", name, error);
    return {};
  }
  static constexpr char kProbe[] = "probe";
  DWORD written = 0;
  WriteFile(file, kProbe, sizeof kProbe - 1, &written, nullptr);
  CloseHandle(file);
  if (!DeleteFileW(probe.c_str())) {
    const DWORD error = GetLastError();
    ShowRefusal(owner, "Cannot modify files in this location ", name, error);
    return {};
  }
  initial_folder.clear();
  return name;
}

}  // namespace tq::win
