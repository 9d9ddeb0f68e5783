// Other writers of the settings files, each under the "IniFileWrite" mutex.
//   hold-ini-mutex <ready-event> <milliseconds>: takes the mutex, signals, holds it, releases.
//   ini-write-keys <ready-event> <file> <count>: another tool writing keys Key0.. of
//     section [Other] of the file, taking the mutex for each.
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

int IniWriteKeys(const std::vector<std::string>& args) {
  if (args.size() < 3) return 2;
  tq::test::SignalReady(args[0]);
  const int count = std::stoi(args[2]);
  for (int i = 0; i < count; ++i) {
    if (!tq::win::AcquireIniMutex()) return 3;
    tq::win::IniWrite("Other", "Key" + std::to_string(i), std::to_string(i), args[1]);
    tq::win::ReleaseIniMutex();
  }
  return 0;
}

}  // namespace

TQ_HELPER_COMMAND("hold-ini-mutex", HoldIniMutex);
TQ_HELPER_COMMAND("ini-write-keys", IniWriteKeys);
