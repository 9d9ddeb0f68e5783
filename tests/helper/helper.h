// The helper process of the Windows tests. Each command lives in its own file and
// registers itself with TQ_HELPER_COMMAND; argv[0] of a command is the ready event.
#pragma once

#include <string>
#include <vector>

namespace tq::test {

using HelperCommand = int (*)(const std::vector<std::string>& args);
bool RegisterHelperCommand(const char* name, HelperCommand command);

}  // namespace tq::test

#define TQ_HELPER_COMMAND(name, function) \
  static const bool tq_helper_registered_##function = ::tq::test::RegisterHelperCommand(name, function)
