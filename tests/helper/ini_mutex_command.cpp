// hold-ini-mutex <ready-event> <milliseconds>: takes "IniFileWrite", signals, holds it, releases.
#include <windows.h>

#include <string>

#include "common/win_test_support.h"
#include "helper/helper.h"
#include "win32/registry_ini.h"

namespace {

int HoldIniMutex(const std::vector<std::string>& args) {
  if (args.size() < 2) return 2;
  if (!tq::win::AcquireIniMutex()) return 3;
  tq::test::SignalReady(args[0]);
  Sleep(static_cast<DWORD>(std::stoul(args[1])));
  tq::win::ReleaseIniMutex();
  return 0;
}

}  // namespace

TQ_HELPER_COMMAND("hold-ini-mutex", HoldIniMutex);
