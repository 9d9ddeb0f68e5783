#include "win32/font_helper.h"

#include <cstdlib>

namespace tq::win {

BYTE clsFontHelper::SystemCharset() {
  char code_page[10] = {};
  const int n = GetLocaleInfoA(LOCALE_SYSTEM_DEFAULT, LOCALE_IDEFAULTANSICODEPAGE, code_page, sizeof code_page);
  if (n <= 0) return 0;
  CHARSETINFO info{};
  const UINT number = static_cast<UINT>(std::strtoul(code_page, nullptr, 10));
  if (!TranslateCharsetInfo(reinterpret_cast<DWORD*>(static_cast<UINT_PTR>(number)), &info, TCI_SRCCODEPAGE)) return 0;
  return static_cast<BYTE>(info.ciCharset);
}

LOGFONTW clsFontHelper::MessageFont(int dpi) {
  NONCLIENTMETRICSW metrics{};
  metrics.cbSize = sizeof metrics;
  using ForDpiFn = BOOL(WINAPI*)(UINT, UINT, PVOID, UINT, UINT);
  static const auto for_dpi = reinterpret_cast<ForDpiFn>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32.dll"), "SystemParametersInfoForDpi")));
  LOGFONTW font{};
  if (for_dpi && for_dpi(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0, static_cast<UINT>(dpi))) {
    font = metrics.lfMessageFont;
  } else if (SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0)) {
    // Given at the system's DPI: scaled to the window's.
    font = metrics.lfMessageFont;
    HDC screen = GetDC(nullptr);
    const int system_dpi = GetDeviceCaps(screen, LOGPIXELSY);
    ReleaseDC(nullptr, screen);
    if (system_dpi > 0) font.lfHeight = MulDiv(font.lfHeight, dpi, system_dpi);
  } else {
    font.lfHeight = -MulDiv(9, dpi, 72);
    lstrcpyW(font.lfFaceName, L"Tahoma");
  }
  if (const BYTE charset = SystemCharset()) font.lfCharSet = charset;
  return font;
}

}  // namespace tq::win
