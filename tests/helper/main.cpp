// The helper process of the Windows tests: a second process where the field has one.
// tq_test_helper.exe <command> <ready-event> [arguments...]; it signals the ready event.
//
// hold-ini-mutex <ready-event> <milliseconds>: takes the "IniFileWrite" mutex, signals,
//   holds it, releases.
// ini-write-keys <ready-event> <file> <count>: another tool writing keys Key0.. of
//   section [Other] of the file, taking the mutex for each.
// hold-lock <ready-event> <file> <app> <user> <milliseconds>
//   takes the lock, signals once its lines are written, holds it, gives it up.
// race-lock <ready-event> <file> <start-event> <hold-milliseconds>
//   signals, waits for the start event, tries the lock once (silently). Exit code:
//   0 = got it (held for the given time), the holder's process ID = refused and named
//   the holder, 1 = refused without ever reading a holder, 2/3 = bad start.
#include <windows.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "common/win_test_support.h"
#include "locking/lock_file_creator.h"
#include "win32/registry_ini.h"
#include "win32/text.h"
#include "win32/win_platform.h"

namespace {

using tq::clsLockFileCreator;
const tq::LanguageTexts english;  // the built-in texts

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

int wmain(int argc, wchar_t** argv) {
  const std::map<std::string, int (*)(const std::vector<std::string>&)> commands = {
      {"hold-ini-mutex", HoldIniMutex}, {"ini-write-keys", IniWriteKeys},
      {"hold-lock", HoldLock}, {"race-lock", RaceLock}};
  std::vector<std::string> args;
  for (int i = 2; i < argc; ++i) args.push_back(tq::win::Narrow(argv[i]));
  const std::string name = argc > 1 ? tq::win::Narrow(argv[1]) : std::string();
  const auto it = commands.find(name);
  if (it == commands.end() || args.empty()) {
    std::fprintf(stderr, "tq_test_helper: unknown command or missing ready event: %s\n", name.c_str());
    return 2;
  }
  return it->second(args);
}
