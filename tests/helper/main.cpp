// tq_test_helper.exe <command> <ready-event> [arguments...]
#include <windows.h>

#include <cstdio>
#include <map>

#include "helper/helper.h"
#include "win32/text.h"

namespace tq::test {

static std::map<std::string, HelperCommand>& Commands() {
  static std::map<std::string, HelperCommand> commands;
  return commands;
}

bool RegisterHelperCommand(const char* name, HelperCommand command) {
  Commands()[name] = command;
  return true;
}

}  // namespace tq::test

int wmain(int argc, wchar_t** argv) {
  std::vector<std::string> args;
  for (int i = 2; i < argc; ++i) args.push_back(tq::win::Narrow(argv[i]));
  const std::string name = argc > 1 ? tq::win::Narrow(argv[1]) : std::string();
  const auto it = tq::test::Commands().find(name);
  if (it == tq::test::Commands().end() || args.empty()) {
    std::fprintf(stderr, "tq_test_helper: unknown command or missing ready event: %s\n", name.c_str());
    return 2;
  }
  return it->second(args);
}
