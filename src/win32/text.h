// UTF-8 inside, UTF-16 at the Windows edge.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace tq::win {

std::wstring Widen(std::string_view utf8, UINT code_page = CP_UTF8);
std::string Narrow(std::wstring_view wide, UINT code_page = CP_UTF8);
// The system's description of an error code, without the trailing line end.
std::string ErrorText(DWORD code);

}  // namespace tq::win
