// tq_test_helper.exe <command> <ready-event> [arguments...]
#include <windows.h>

#include <cstdio>

#include "helper/helper.h"
#include "win32/text.h"

int wmain(int argc, wchar_t** argv) {
  std::vector<std::string> args;
  for (int i = 2; i < argc; ++i) args.push_back(tq::win::Narrow(argv[i]));
  const std::string name = argc > 1 ? tq::win::Narrow(argv[1]) : std::string();
  const auto it = tq::test::HelperCommands().find(name);
  if (it == tq::test::HelperCommands().end() || args.empty()) {
    std::fprintf(stderr, "tq_test_helper: unknown command or missing ready event: %s\n", name.c_str());
    return 2;
  }
  return it->second(args);
}
