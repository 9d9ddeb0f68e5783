// INI values, the registry and the "IniFileWrite" mutex, for real: files in a
// temporary folder, the prefix's registry, and a second process holding the mutex.
#include <gtest/gtest.h>

#include <thread>

#include "common/win_test_support.h"
#include "win32/registry_ini.h"

namespace tq {
namespace {

TEST(Ini, ValuesAroundEachBufferSizeComeBackWhole) {
  test::TempFolder t;
  const std::string file = t / "FrameWindow.ini";
  for (size_t length : {0u, 253u, 254u, 255u, 509u, 510u, 2000u}) {
    std::string value;
    for (size_t i = 0; i < length; ++i) value += static_cast<char>('a' + i % 26);
    win::IniWrite("COLORSCHEMES", "ClutFile", value, file);
    EXPECT_EQ(win::IniRead("COLORSCHEMES", "ClutFile", file), value) << length;
  }
  EXPECT_EQ(win::IniRead("COLORSCHEMES", "ClutFile", t / "missing.ini"), "");
}

// Writes the value DVHOME of HKLM\SOFTWARE\TqTest\<name> in one registry view; removes the key afterwards.
class RegistryValue {
 public:
  RegistryValue(const std::string& name, REGSAM view, DWORD type, const void* data, DWORD size)
      : subkey_(L"SOFTWARE\\TqTest\\" + test::W(name)), view_(view) {
    HKEY key;
    EXPECT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, subkey_.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS | view, nullptr, &key,
                              nullptr),
              ERROR_SUCCESS);
    if (data) RegSetValueExW(key, L"DVHOME", 0, type, static_cast<const BYTE*>(data), size);
    RegCloseKey(key);
  }
  ~RegistryValue() { RegDeleteKeyExW(HKEY_LOCAL_MACHINE, subkey_.c_str(), view_, 0); }

 private:
  std::wstring subkey_;
  REGSAM view_;
};

std::string Read(const std::string& name) {
  return win::RegReadString(HKEY_LOCAL_MACHINE, "SOFTWARE\\TqTest\\" + name, "DVHOME");
}

TEST(Registry, ThirtyTwoBitViewAndEveryOddValueGivesTextOrNothing) {
  const wchar_t home32[] = L"C:\\sc\\dataviews", home64[] = L"C:\\wrong\\view";
  RegistryValue v32("View", KEY_WOW64_32KEY, REG_SZ, home32, sizeof(home32));
  RegistryValue v64("View", KEY_WOW64_64KEY, REG_SZ, home64, sizeof(home64));
  EXPECT_EQ(Read("View"), "C:\\sc\\dataviews");
  RegistryValue empty("Empty", KEY_WOW64_32KEY, REG_SZ, nullptr, 0);
  EXPECT_EQ(Read("Empty"), "");
  EXPECT_EQ(Read("NoSuchKey"), "");
  const DWORD number = 42;
  RegistryValue dword("Dword", KEY_WOW64_32KEY, REG_DWORD, &number, sizeof(number));
  EXPECT_EQ(Read("Dword"), "");
  const wchar_t unterminated[] = {L'C', L':', L'\\', L'x'};
  RegistryValue raw("Raw", KEY_WOW64_32KEY, REG_SZ, unterminated, sizeof(unterminated));
  EXPECT_EQ(Read("Raw"), "C:\\x");
  const std::wstring long_value(400, L'x');
  RegistryValue too_long("Long", KEY_WOW64_32KEY, REG_SZ, long_value.c_str(),
                         static_cast<DWORD>((long_value.size() + 1) * sizeof(wchar_t)));
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
