// clsFontHelper: the fonts of our windows speak the system's character set, so that
// texts of the system's code page display as they were written.
#pragma once

#include <windows.h>

namespace tq::win {

class clsFontHelper {
 public:
  // The character set of the system's default ANSI code page; 0 when it cannot be
  // found, which leaves fonts as they are.
  static BYTE SystemCharset();
  // The system's message font at `dpi`, in the system's character set.
  static LOGFONTW MessageFont(int dpi);
};

}  // namespace tq::win
