// tqclut on POSIX systems: the native Platform, the toolkit home from --dvhome or the
// DVHOME environment variable.
#include <unistd.h>

#include <cstdlib>
#include <iostream>

#include "posix/posix_platform.h"
#include "tqclut/tqclut.h"

namespace {

class ConsolePlatform : public tq::posix::PosixPlatform {
 public:
  int ShowMessage(const std::string& prompt, int& buttons, int style, const std::string& title) override {
    buttons += style;
    std::cerr << tq::clut_tool::MessageLine(title, prompt) << "\n";
    return (buttons & 0xF) == tq::kMbYesNo ? tq::kIdNo : tq::kIdOk;
  }
};

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  ConsolePlatform platform;
  if (const char* home = std::getenv("DVHOME")) platform.SetToolkitHome(home);
  if (args.size() >= 2 && args[0] == "--dvhome") {
    platform.SetToolkitHome(args[1]);
    args.erase(args.begin(), args.begin() + 2);
  }
  tq::clut_tool::Terminal terminal;
  terminal.swatches = ::isatty(STDOUT_FILENO) != 0;
  return tq::clut_tool::Run(platform, args, std::cout, std::cerr, terminal);
}
