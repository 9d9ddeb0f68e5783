// INI files, the registry and the "IniFileWrite" mutex, for real: files in a
// temporary folder, the prefix's registry, and a second process holding the mutex.
#include <gtest/gtest.h>

#include <thread>

#include "common/win_test_support.h"
#include "win32/registry_ini.h"
#include "win32/text.h"
#include "win32/win_platform.h"

namespace tq {
namespace {

TEST(Ini, ValuesAroundTheFirstBufferSizeComeBackWhole) {
  test::TempFolder t;
  const std::string file = t / "FrameWindow.ini";
  for (size_t length : {0u, 1u, 253u, 254u, 255u, 256u, 509u, 510u, 2000u}) {
    std::string value;
    for (size_t i = 0; i < length; ++i) value += static_cast<char>('a' + i % 26);
    win::IniWrite("COLORSCHEMES", "ClutFile", value, file);
    EXPECT_EQ(win::IniRead("COLORSCHEMES", "ClutFile", file), value) << length;
  }
}

TEST(Ini, MissingKeySectionOrFileGiveEmptyText) {
  test::TempFolder t;
  const std::string file = t / "a.ini";
  test::WriteBytes(file, "[COLORSCHEMES]\r\nClutFile=QLT830_night.clut\r\n");
  EXPECT_EQ(win::IniRead("COLORSCHEMES", "ClutFile", file), "QLT830_night.clut");
  EXPECT_EQ(win::IniRead("COLORSCHEMES", "Other", file), "");
  EXPECT_EQ(win::IniRead("Nothing", "ClutFile", file), "");
  EXPECT_EQ(win::IniRead("COLORSCHEMES", "ClutFile", t / "missing.ini"), "");
  EXPECT_EQ(win::IniRead("COLORSCHEMES", "ClutFile", t / "no-folder\\missing.ini"), "");
}

TEST(Ini, BinaryJunkGivesEmptyTextAndTheProfileApiTrimsBlanks) {
  test::TempFolder t;
  const std::string file = t / "junk.ini";
  std::string junk;
  for (int i = 0; i < 4096; ++i) junk += static_cast<char>((i * 7919) % 256);
  test::WriteBytes(file, junk);
  EXPECT_EQ(win::IniRead("COLORSCHEMES", "ClutFile", file), "");

  // The profile functions drop the blanks around a value: a logical-colour line
  // written with its leading blanks reads back without them (the parser does not care).
  win::IniWrite("Logical Colors", "Index_7", "  5  128  255  # 7: Gr\xc3\xbcn", t / "u.ini");
  EXPECT_EQ(win::IniRead("Logical Colors", "Index_7", t / "u.ini"), "5  128  255  # 7: Gr\xc3\xbcn");
}

// Writes a value in one registry view of HKLM and removes the key afterwards.
class RegistryValue {
 public:
  RegistryValue(const std::wstring& subkey, REGSAM view, DWORD type, const void* data, DWORD size)
      : subkey_(subkey), view_(view) {
    HKEY key;
    EXPECT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, subkey.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS | view, nullptr, &key,
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

TEST(Registry, ReadsTheThirtyTwoBitView) {
  const std::wstring key = L"SOFTWARE\\TqTest\\DVtools\\2.6";
  const wchar_t home32[] = L"C:\\sc\\dataviews";
  const wchar_t home64[] = L"C:\\wrong\\view";
  RegistryValue v32(key, KEY_WOW64_32KEY, REG_SZ, home32, sizeof(home32));
  RegistryValue v64(key, KEY_WOW64_64KEY, REG_SZ, home64, sizeof(home64));
  EXPECT_EQ(win::RegReadString(HKEY_LOCAL_MACHINE, "SOFTWARE\\TqTest\\DVtools\\2.6", "DVHOME"), "C:\\sc\\dataviews");
}

TEST(Registry, MissingValueMissingKeyAndJunkGiveEmptyText) {
  const std::wstring key = L"SOFTWARE\\TqTest\\Empty";
  RegistryValue empty(key, KEY_WOW64_32KEY, REG_SZ, nullptr, 0);
  EXPECT_EQ(win::RegReadString(HKEY_LOCAL_MACHINE, "SOFTWARE\\TqTest\\Empty", "DVHOME"), "");
  EXPECT_EQ(win::RegReadString(HKEY_LOCAL_MACHINE, "SOFTWARE\\TqTest\\NoSuchKey", "DVHOME"), "");

  const DWORD number = 42;
  RegistryValue dword(L"SOFTWARE\\TqTest\\Dword", KEY_WOW64_32KEY, REG_DWORD, &number, sizeof(number));
  EXPECT_EQ(win::RegReadString(HKEY_LOCAL_MACHINE, "SOFTWARE\\TqTest\\Dword", "DVHOME"), "");

  const wchar_t unterminated[] = {L'C', L':', L'\\', L'x'};
  RegistryValue raw(L"SOFTWARE\\TqTest\\Raw", KEY_WOW64_32KEY, REG_SZ, unterminated, sizeof(unterminated));
  EXPECT_EQ(win::RegReadString(HKEY_LOCAL_MACHINE, "SOFTWARE\\TqTest\\Raw", "DVHOME"), "C:\\x");

  std::wstring long_value(400, L'x');
  RegistryValue too_long(L"SOFTWARE\\TqTest\\Long", KEY_WOW64_32KEY, REG_SZ, long_value.c_str(),
                         static_cast<DWORD>((long_value.size() + 1) * sizeof(wchar_t)));
  EXPECT_EQ(win::RegReadString(HKEY_LOCAL_MACHINE, "SOFTWARE\\TqTest\\Long", "DVHOME"), "");
}

TEST(IniMutex, SecondProcessWaitsForTheFirstAndGetsItOnRelease) {
  test::HelperProcess holder("hold-ini-mutex", {"1500"});
  ASSERT_TRUE(holder.ready());
  const ULONGLONG start = GetTickCount64();
  EXPECT_TRUE(win::AcquireIniMutex(10000));
  EXPECT_GE(GetTickCount64() - start, 1000u);  // it really had to wait for the holder
  win::ReleaseIniMutex();
  EXPECT_EQ(holder.Wait(), 0);
}

TEST(IniMutex, HolderPastTheBoundMeansFalseAndNoOwnership) {
  test::HelperProcess holder("hold-ini-mutex", {"4000"});
  ASSERT_TRUE(holder.ready());
  EXPECT_FALSE(win::AcquireIniMutex(300));
  win::ReleaseIniMutex();  // harmless without ownership; forgets the handle
  EXPECT_EQ(holder.Wait(), 0);
  // Free again once the holder has released it.
  EXPECT_TRUE(win::AcquireIniMutex(300));
  win::ReleaseIniMutex();
}

TEST(IniMutex, ThreadsOfOneProcessExcludeEachOther) {
  ASSERT_TRUE(win::AcquireIniMutex(1000));
  bool other = true;
  std::thread([&] {
    other = win::AcquireIniMutex(200);
    win::ReleaseIniMutex();
  }).join();
  EXPECT_FALSE(other);
  win::ReleaseIniMutex();
}

}  // namespace
}  // namespace tq
