// tqclut.exe on Windows: the control's own Platform, with messages on standard error
// instead of message boxes (a tool in a script must never wait for a click) and the
// toolkit home from --dvhome or the registry, as the control reads it.
#include <windows.h>
#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <iostream>

#include "tqclut/tqclut.h"
#include "win32/text.h"
#include "win32/win_platform.h"

namespace {

class ConsolePlatform : public tq::win::WinPlatform {
 public:
  std::string toolkit_home;  // "" = from the registry

  int ShowMessage(const std::string& prompt, int& buttons, int style, const std::string& title) override {
    return tq::AnswerWithoutUser(std::cerr, "tqclut: ", prompt, buttons, style, title);
  }
  std::string RegReadString(const std::string& subkey, const std::string& value_name) override {
    if (value_name == "DVHOME" && !toolkit_home.empty()) return toolkit_home;
    return WinPlatform::RegReadString(subkey, value_name);
  }
};

}  // namespace

int wmain(int argc, wchar_t** argv) {
  // UTF-8 bytes with plain "\n", whatever the console's code page.
  _setmode(_fileno(stdout), _O_BINARY);
  _setmode(_fileno(stderr), _O_BINARY);
  std::vector<std::string> args;
  for (int i = 1; i < argc; ++i) args.push_back(tq::win::Narrow(argv[i]));
  ConsolePlatform platform;
  tq::clut_tool::Environment environment;
  DWORD mode = 0;
  const HANDLE console = GetStdHandle(STD_OUTPUT_HANDLE);
  // Swatches need a console that understands colour escapes.
  environment.terminal = GetConsoleMode(console, &mode) &&
                         SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
  const wchar_t* no_color = _wgetenv(L"NO_COLOR");
  environment.no_color = no_color && *no_color;
  environment.set_toolkit_home = [&](const std::string& home) { platform.toolkit_home = home; };
  return tq::clut_tool::Run(platform, args, std::cout, std::cerr, environment);
}
