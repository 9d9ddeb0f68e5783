// Second processes for the colour table tests.
//   hold-file-open <ready> <path> <ms>: opens the file sharing read and write but not
//     delete (as an editor or virus scanner might), signals, holds it, closes.
//   clut-save-ini <ready> <app-folder> <scheme-folder> <count> (folders without trailing "\"): writes the colour scheme
//     back <count> times, alternating between QLT830_a.clut and QLT830_b.clut.
//   ini-write-keys <ready> <file> <count>: another tool writing keys Key0.. of section
//     [Other] of the same file, each under the "IniFileWrite" mutex.
#include <windows.h>

#include <string>

#include "colortable/clut_locations.h"
#include "common/test_platform.h"
#include "common/win_test_support.h"
#include "helper/helper.h"
#include "win32/registry_ini.h"

namespace {

int HoldFileOpen(const std::vector<std::string>& args) {
  if (args.size() < 3) return 2;
  HANDLE file = CreateFileW(tq::test::W(args[1]).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return 3;
  tq::test::SignalReady(args[0]);
  Sleep(static_cast<DWORD>(std::stoul(args[2])));
  CloseHandle(file);
  return 0;
}

int ClutSaveIni(const std::vector<std::string>& args) {
  if (args.size() < 4) return 2;
  tq::Platform& platform = tq::test::RealPlatform();
  // Folders come without their trailing "\", which would escape the closing quote.
  const std::string app = args[1] + "\\", schemes = args[2] + "\\";
  tq::ColorSchemeModule module;
  tq::SetIniPaths(platform, module, app, app);
  tq::SetColorSchemeFolder(module, args[2]);
  tq::test::SignalReady(args[0]);
  const int count = std::stoi(args[3]);
  int written = 0;
  for (int i = 0; i < count; ++i) {
    tq::SetRememberedClutFile(module, schemes + (i % 2 ? "QLT830_b.clut" : "QLT830_a.clut"));
    written += tq::SaveIniClutFile(platform, module);
  }
  return written == count ? 0 : 10;
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

TQ_HELPER_COMMAND("hold-file-open", HoldFileOpen);
TQ_HELPER_COMMAND("clut-save-ini", ClutSaveIni);
TQ_HELPER_COMMAND("ini-write-keys", IniWriteKeys);
