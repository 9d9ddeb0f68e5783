#include "win32/text.h"

namespace tq::win {

std::wstring Widen(std::string_view utf8, UINT code_page) {
  if (utf8.empty()) return {};
  const int n = MultiByteToWideChar(code_page, 0, utf8.data(), static_cast<int>(utf8.size()), nullptr, 0);
  std::wstring wide(static_cast<size_t>(n), L'\0');
  MultiByteToWideChar(code_page, 0, utf8.data(), static_cast<int>(utf8.size()), wide.data(), n);
  return wide;
}

std::string Narrow(std::wstring_view wide, UINT code_page) {
  if (wide.empty()) return {};
  const int n = WideCharToMultiByte(code_page, 0, wide.data(), static_cast<int>(wide.size()), nullptr, 0, nullptr, nullptr);
  std::string text(static_cast<size_t>(n), '\0');
  WideCharToMultiByte(code_page, 0, wide.data(), static_cast<int>(wide.size()), text.data(), n, nullptr, nullptr);
  return text;
}

std::string ErrorText(DWORD code) {
  wchar_t* buffer = nullptr;
  const DWORD n = FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                 nullptr, code, 0, reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
  std::wstring text = n ? std::wstring(buffer, n) : L"Error " + std::to_wstring(code);
  if (buffer) LocalFree(buffer);
  while (!text.empty() && (text.back() == L'\n' || text.back() == L'\r' || text.back() == L' ')) text.pop_back();
  return Narrow(text);
}

}  // namespace tq::win
