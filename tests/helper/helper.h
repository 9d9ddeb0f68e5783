// The helper process of the Windows tests. Each command lives in its own file and
// registers itself with TQ_HELPER_COMMAND; argv[0] of a command is the ready event.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace tq::test {

using HelperCommand = int (*)(const std::vector<std::string>& args);
inline std::map<std::string, HelperCommand>& HelperCommands() {
  static std::map<std::string, HelperCommand> commands;
  return commands;
}

}  // namespace tq::test

#define TQ_HELPER_COMMAND(name, function) \
  static const bool tq_helper_registered_##function = (::tq::test::HelperCommands()[name] = function, true)
