// INI values, the registry and the "IniFileWrite" mutex, for real: files in a
// temporary folder, the prefix's registry, and a second process holding the mutex.
#include <gtest/gtest.h>

#include <thread>

#include "common/win_test_support.h"
#include "win32/registry_ini.h"

namespace tq {
namespace {

TEST(Ini, ValuesAroundEachBufferSizeComeBackWhole) {
  test::ScratchFolder t;
  const std::string file = t / "FrameWindow.ini";
  for (size_t length : {0u, 253u, 254u, 255u, 509u, 510u, 2000u}) {
    std::string value;
    for (size_t i = 0; i < length; ++i) value += static_cast<char>('a' + i % 26);
    win::IniWrite("COLORSCHEMES", "ClutFile", value, file);
    EXPECT_EQ(win::IniRead("COLORSCHEMES", "ClutFile", file), value) << length;
  }
  EXPECT_EQ(win::IniRead("COLORSCHEMES", "ClutFile", t / "missing.ini"), "");
}

std::string Read(const std::string& name) {
  return win::RegReadString(HKEY_LOCAL_MACHINE, "SOFTWARE\\TqTest\\" + name, "DVHOME");
}

test::RegistryValue Value(const std::string& name, DWORD type, const void* data, DWORD size,
                          REGSAM view = KEY_WOW64_32KEY) {
  return test::RegistryValue("SOFTWARE\\TqTest\\" + name, "DVHOME", type, data, size, view);
}

TEST(Registry, ThirtyTwoBitViewAndEveryOddValueGivesTextOrNothing) {
  const wchar_t home32[] = L"C:\\sc\\dataviews", home64[] = L"C:\\wrong\\view";
  const auto v32 = Value("View", REG_SZ, home32, sizeof(home32));
  const auto v64 = Value("View", REG_SZ, home64, sizeof(home64), KEY_WOW64_64KEY);
  EXPECT_EQ(Read("View"), "C:\\sc\\dataviews");
  const auto empty = Value("Empty", REG_SZ, nullptr, 0);
  EXPECT_EQ(Read("Empty"), "");
  EXPECT_EQ(Read("NoSuchKey"), "");
  const DWORD number = 42;
  const auto dword = Value("Dword", REG_DWORD, &number, sizeof(number));
  EXPECT_EQ(Read("Dword"), "");
  const wchar_t unterminated[] = {L'C', L':', L'\\', L'x'};
  const auto raw = Value("Raw", REG_SZ, unterminated, sizeof(unterminated));
  EXPECT_EQ(Read("Raw"), "C:\\x");
  const std::wstring long_value(400, L'x');
  const auto too_long = Value("Long", REG_SZ, long_value.c_str(), static_cast<DWORD>((long_value.size() + 1) * sizeof(wchar_t)));
  EXPECT_EQ(Read("Long"), "");
}

TEST(IniMutex, SecondProcessWaitsForTheHolderAndGivesUpPastTheBound) {
  {
    test::HelperProcess holder("hold-ini-mutex", {"1500"});
    ASSERT_TRUE(holder.ready());
    const ULONGLONG start = GetTickCount64();
    EXPECT_TRUE(win::AcquireIniMutex(10000));
    EXPECT_GE(GetTickCount64() - start, 1000u);  // it really had to wait for the holder
    win::ReleaseIniMutex();
    EXPECT_EQ(holder.Wait(), 0);
  }
  test::HelperProcess holder("hold-ini-mutex", {"4000"});
  ASSERT_TRUE(holder.ready());
  EXPECT_FALSE(win::AcquireIniMutex(300));
  EXPECT_EQ(holder.Wait(), 0);
  EXPECT_TRUE(win::AcquireIniMutex(300));  // free again once the holder has released it
  bool other_thread = true;
  std::thread([&] {
    other_thread = win::AcquireIniMutex(200);
    if (other_thread) win::ReleaseIniMutex();
  }).join();
  EXPECT_FALSE(other_thread);
  win::ReleaseIniMutex();
}

}  // namespace
}  // namespace tq
