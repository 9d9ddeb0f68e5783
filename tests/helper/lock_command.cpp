// Lock holders in a second process, as other editors meet this one in the field.
//
// hold-lock <ready-event> <file> <app> <user> <milliseconds>
//   takes the lock, signals once its lines are written, holds it, gives it up.
// race-lock <ready-event> <file> <start-event> <hold-milliseconds>
//   signals, waits for the start event, tries the lock once (silently). Exit code:
//   0 = got it (held for the given time), the holder's process ID = refused and named
//   the holder, 1 = refused without ever reading a holder, 2/3 = bad start.
#include <windows.h>

#include <string>

#include "common/win_test_support.h"
#include "helper/helper.h"
#include "locking/lock_file_creator.h"
#include "win32/win_platform.h"

namespace {

using tq::clsLockFileCreator;
const tq::LanguageTexts english;  // the built-in texts

int HoldLock(const std::vector<std::string>& args) {
  if (args.size() < 5) return 2;
  clsLockFileCreator lock(tq::win::WinPlatform::Instance(), english);
  std::string app = args[2], user = args[3];
  if (lock.CreateLockFile(args[1], app, user, tq::LockMode::Open, true) != tq::LockResult::Locked) return 3;
  tq::test::SignalReady(args[0]);
  Sleep(static_cast<DWORD>(std::stoul(args[4])));
  return 0;
}

int RaceLock(const std::vector<std::string>& args) {
  if (args.size() < 4) return 2;
  HANDLE start = OpenEventW(SYNCHRONIZE, FALSE, tq::test::W(args[2]).c_str());
  if (!start) return 3;
  tq::test::SignalReady(args[0]);
  const bool started = WaitForSingleObject(start, 60000) == WAIT_OBJECT_0;
  CloseHandle(start);
  if (!started) return 3;

  clsLockFileCreator lock(tq::win::WinPlatform::Instance(), english);
  std::string app = "Racer", user = std::to_string(GetCurrentProcessId());
  if (lock.CreateLockFile(args[1], app, user, tq::LockMode::Open, true) == tq::LockResult::Locked) {
    Sleep(static_cast<DWORD>(std::stoul(args[3])));
    return 0;
  }
  // The holder may not have written its lines yet: look until it has. A racer's user name is its process ID.
  const ULONGLONG end = GetTickCount64() + 20000;
  std::string holder, host;
  while (GetTickCount64() < end) {
    if (lock.GetFileLockerInfo(args[1], holder, host) && !host.empty()) return std::stoi(holder);
    Sleep(20);
  }
  return 1;
}

}  // namespace

TQ_HELPER_COMMAND("hold-lock", HoldLock);
TQ_HELPER_COMMAND("race-lock", RaceLock);
