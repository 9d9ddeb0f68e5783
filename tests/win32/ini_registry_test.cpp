// The registry and the "IniFileWrite" mutex, for real: the prefix's registry, and a
// second process holding the mutex.
#include <gtest/gtest.h>

#include <thread>

#include "common/win_test_support.h"
#include "win32/registry_ini.h"

namespace tq {
namespace {

test::RegistryValue Value(const std::string& name, DWORD type, const void* data, DWORD size,
                          REGSAM view = KEY_WOW64_32KEY) {
  return test::RegistryValue("SOFTWARE\\TqTest\\" + name, "DVHOME", type, data, size, view);
}

TEST(Registry, ThirtyTwoBitViewAndEveryOddValueGivesTextOrNothing) {
  const wchar_t home32[] = L"C:\\sc\\dataviews", home64[] = L"C:\\wrong\\view";
  const wchar_t unterminated[] = {L'C', L':', L'\\', L'x'};
  const std::wstring long_value(400, L'x');
  const DWORD number = 42;
  const test::RegistryValue values[] = {
      Value("View", REG_SZ, home32, sizeof(home32)), Value("View", REG_SZ, home64, sizeof(home64), KEY_WOW64_64KEY),
      Value("Empty", REG_SZ, nullptr, 0), Value("Dword", REG_DWORD, &number, sizeof(number)),
      Value("Raw", REG_SZ, unterminated, sizeof(unterminated)),
      Value("Long", REG_SZ, long_value.c_str(), static_cast<DWORD>((long_value.size() + 1) * sizeof(wchar_t)))};
  const std::pair<const char*, const char*> reads[] = {{"View", "C:\\sc\\dataviews"}, {"Empty", ""}, {"NoSuchKey", ""},
                                                       {"Dword", ""}, {"Raw", "C:\\x"}, {"Long", ""}};
  for (const auto& [name, text] : reads)
    EXPECT_EQ(win::RegReadString(HKEY_LOCAL_MACHINE, "SOFTWARE\\TqTest\\" + std::string(name), "DVHOME"), text) << name;
}

TEST(IniMutex, SecondProcessWaitsForTheHolderAndGivesUpPastTheBound) {
  test::HelperProcess holder("hold-ini-mutex", {"1500"});
  ASSERT_TRUE(holder.ready());
  const ULONGLONG start = GetTickCount64();
  EXPECT_FALSE(win::AcquireIniMutex(300));
  EXPECT_TRUE(win::AcquireIniMutex(10000));  // once the holder has released it
  EXPECT_GE(GetTickCount64() - start, 1000u);  // it really had to wait for the holder
  EXPECT_EQ(holder.Wait(), 0);
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
