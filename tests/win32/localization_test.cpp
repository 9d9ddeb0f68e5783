// Language libraries as the control finds them beside itself. Each scenario runs on
// a thread of its own, because the loaded library is per thread, as in the control.
#include <gtest/gtest.h>

#include <thread>

#include "common/win_test_support.h"
#include "support/builtin_strings.h"
#include "support/localization.h"
#include "support/utils.h"
#include "win32/win_platform.h"

namespace tq {
namespace {

using test::TempFolder;

std::string Folder(const TempFolder& t) {  // the control library's folder has no trailing "\"
  std::string f = t.path();
  f.pop_back();
  return f;
}

void AddLibrary(const TempFolder& t, const std::string& from_folder, const std::string& code) {
  test::CopyTree(from_folder + code + "\\", t.path() + code + "\\");
}

const std::string kShipped = test::ExeFolder();                     // bin\EN, bin\DE
const std::string kTestLangs = test::BuildFolder() + "testlangs\\";  // XX, marked EN

template <typename F>
void OnFreshThread(F f) {
  std::thread(f).join();
}

TEST(Localization, GermanLibraryIsUsedWhenPresent) {
  TempFolder t;
  AddLibrary(t, kShipped, "DE");
  AddLibrary(t, kShipped, "EN");
  OnFreshThread([&] {
    LoadLanguageLibraryFrom(win::WinPlatform::Instance(), Folder(t), "DE");
    EXPECT_EQ(GetString(1202), "Abbrechen");
    EXPECT_EQ(GetString(1209), "L\xc3\xb6schen");  // umlaut survives as UTF-8
    EXPECT_EQ(GetString(1552), "Ja");
  });
}

TEST(Localization, MissingLanguageFallsBackToTheEnglishLibrary) {
  TempFolder t;
  AddLibrary(t, kTestLangs, "EN");
  OnFreshThread([&] {
    LoadLanguageLibraryFrom(win::WinPlatform::Instance(), Folder(t), "DE");
    EXPECT_TRUE(HasLanguageLibrary());
    EXPECT_EQ(GetString(1202), "Cancel (EN library)");
    EXPECT_EQ(GetString(1203), "More...");  // not in that library: built-in
  });
}

TEST(Localization, NoLibraryAtAllUsesTheBuiltInTable) {
  TempFolder t;
  OnFreshThread([&] {
    LoadLanguageLibraryFrom(win::WinPlatform::Instance(), Folder(t), "DE");
    EXPECT_FALSE(HasLanguageLibrary());
    EXPECT_EQ(GetString(1202), "Cancel");
    EXPECT_EQ(GetString(1003), "");
  });
}

TEST(Localization, IdMissingFromTheLibraryComesFromTheBuiltInTable) {
  TempFolder t;
  AddLibrary(t, kTestLangs, "XX");
  OnFreshThread([&] {
    LoadLanguageLibraryFrom(win::WinPlatform::Instance(), Folder(t), "XX");
    EXPECT_EQ(GetString(1202), "Abbruch XX");
    EXPECT_EQ(GetString(1210), "Priorities (Severities)");
  });
}

TEST(Localization, LongLibraryStringIsCutTo254Characters) {
  TempFolder t;
  AddLibrary(t, kTestLangs, "XX");
  OnFreshThread([&] {
    LoadLanguageLibraryFrom(win::WinPlatform::Instance(), Folder(t), "XX");
    const std::string text = GetString(101);
    ASSERT_EQ(text.size(), 254u);
    EXPECT_EQ(text.substr(0, 12), "012345678901");
  });
}

TEST(Localization, HostileLanguageCodesNeverReachAPath) {
  TempFolder t;
  AddLibrary(t, kTestLangs, "EN");
  AddLibrary(t, kTestLangs, "XX");
  // Unfiltered, the code XX\..\XX would load t\XX\ColorSettingTool_XX\..\XX.dll, that is t\XX\XX.dll.
  ASSERT_TRUE(CopyFileW(test::W(t / "XX\\ColorSettingTool_XX.dll").c_str(), test::W(t / "XX\\XX.dll").c_str(), FALSE));
  for (const char* code : {"XX\\..\\XX", "..\\XX", "C:\\XX", "", "XX.dll", "X X"}) {
    OnFreshThread([&] {
      LoadLanguageLibraryFrom(win::WinPlatform::Instance(), Folder(t), code);
      EXPECT_EQ(GetString(1202), "Cancel (EN library)") << code;
    });
  }
}

TEST(Localization, ADamagedLibraryCountsAsMissing) {
  TempFolder t;
  AddLibrary(t, kTestLangs, "EN");
  CreateDirectoryW(test::W(t / "DE").c_str(), nullptr);
  test::WriteBytes(t / "DE\\ColorSettingTool_DE.dll", std::string("MZ\x90\0junk", 8) + std::string(5000, '\xcc'));
  OnFreshThread([&] {
    LoadLanguageLibraryFrom(win::WinPlatform::Instance(), Folder(t), "DE");
    EXPECT_EQ(GetString(1202), "Cancel (EN library)");
  });
}

TEST(Localization, AFailedLaterLoadKeepsTheEarlierLibrary) {
  TempFolder a, b;
  AddLibrary(a, kShipped, "DE");
  OnFreshThread([&] {
    LoadLanguageLibraryFrom(win::WinPlatform::Instance(), Folder(a), "DE");
    LoadLanguageLibraryFrom(win::WinPlatform::Instance(), Folder(b), "FR");
    EXPECT_EQ(GetString(1202), "Abbrechen");
  });
}

TEST(Localization, ShippedLibrariesAndTheControlCarryEveryEnglishId) {
  auto& platform = win::WinPlatform::Instance();
  const void* control = platform.LoadLibraryFile(kShipped + "TqColorSettingTool.dll");
  const void* en = platform.LoadLibraryFile(kShipped + "EN\\ColorSettingTool_EN.dll");
  const void* de = platform.LoadLibraryFile(kShipped + "DE\\ColorSettingTool_DE.dll");
  ASSERT_TRUE(control && en && de);
  for (std::size_t i = 0; i < kBuiltinStringCount; ++i) {
    const auto& entry = kBuiltinStrings[i];
    std::string expected(entry.text);
    if (expected.size() > 254) expected.resize(254);
    EXPECT_EQ(platform.LibraryString(control, entry.id), expected) << entry.id;
    EXPECT_EQ(platform.LibraryString(en, entry.id), expected) << entry.id;
    EXPECT_FALSE(platform.LibraryString(de, entry.id).empty()) << entry.id;
  }
}

TEST(Localization, ModuleFolderIsTheFolderOfTheCodeWithoutTrailingBackslash) {
  std::string expected = test::ExeFolder();
  expected.pop_back();
  EXPECT_TRUE(EqualsIgnoreCase(win::WinPlatform::Instance().ModuleFolder(), expected));
}

}  // namespace
}  // namespace tq
