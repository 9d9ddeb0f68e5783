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
    return tq::AnswerWithoutUser(std::cerr, "tqclut: ", prompt, buttons, style, title);
  }
};

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> args(argv + 1, argv + argc);
  ConsolePlatform platform;
  if (const char* home = std::getenv("DVHOME")) platform.SetToolkitHome(home);
  tq::clut_tool::Environment environment;
  environment.terminal = ::isatty(STDOUT_FILENO) != 0;
  const char* no_color = std::getenv("NO_COLOR");
  environment.no_color = no_color && *no_color;
  environment.set_toolkit_home = [&](const std::string& home) { platform.SetToolkitHome(home); };
  return tq::clut_tool::Run(platform, args, std::cout, std::cerr, environment);
}
