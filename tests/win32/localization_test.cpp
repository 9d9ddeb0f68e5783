// Language libraries as the control finds them beside itself. Each scenario runs on
// a thread of its own, because the loaded library is per thread, as in the control.
#include <gtest/gtest.h>

#include <filesystem>

#include <thread>

#include "common/win_test_support.h"
#include "support/builtin_strings.h"
#include "support/localization.h"
#include "support/thread_context.h"
#include "win32/win_platform.h"

namespace tq {
namespace {

const std::string kShipped = test::ExeFolder();                     // bin\EN, bin\DE
const std::string kTestLangs = test::BuildFolder() + "testlangs\\";  // XX (partial), EN (marked texts)

TEST(Localization, LibraryOfTheLanguageThenEnglishThenTheBuiltInTable) {
  std::string cut;  // text 101 of the partial library is 300 digits; a library string ends at 254
  for (int i = 0; i < 254; ++i) cut += static_cast<char>('0' + i % 10);
  const struct {
    const char* name;
    std::vector<std::pair<std::string, std::string>> libraries;  // (from folder, code)
    std::vector<std::string> languages;                          // loaded in order
    std::vector<std::pair<int, std::string>> expected;
  } cases[] = {
      {"German", {{kShipped, "DE"}, {kShipped, "EN"}}, {"DE"}, {{1202, "Abbrechen"}, {1209, "L\xc3\xb6schen"}}},
      {"missing language", {{kTestLangs, "EN"}}, {"DE"}, {{1202, "Cancel (EN library)"}, {1203, "More..."}}},
      {"no library", {}, {"DE"}, {{1202, "Cancel"}, {1003, ""}}},
      {"partial library", {{kTestLangs, "XX"}}, {"XX"},
       {{1202, "Abbruch XX"}, {1210, "Priorities (Severities)"}, {101, cut}}},
      {"failed later load", {{kShipped, "DE"}}, {"DE", "FR\\..\\DE", "FR"}, {{1202, "Abbrechen"}}},
      {"hostile codes", {{kTestLangs, "EN"}, {kTestLangs, "XX"}}, {"XX\\..\\XX"}, {{1202, "Cancel (EN library)"}}},
      {"damaged", {{kTestLangs, "EN"}}, {"ZZ"}, {{1202, "Cancel (EN library)"}}},
  };
  for (const auto& c : cases) {
    test::ScratchFolder t;
    for (const auto& [from, code] : c.libraries)
      std::filesystem::copy(test::W(from + code), test::W(t / code), std::filesystem::copy_options::recursive);
    // Unfiltered, XX\..\XX would load t\XX\ColorSettingTool_XX\..\XX.dll, that is t\XX\XX.dll.
    CopyFileW(test::W(t / "XX\\ColorSettingTool_XX.dll").c_str(), test::W(t / "XX\\XX.dll").c_str(), FALSE);
    CreateDirectoryW(test::W(t / "ZZ").c_str(), nullptr);
    test::Write(t / "ZZ\\ColorSettingTool_ZZ.dll", std::string("MZ\x90\0junk", 8) + std::string(5000, '\xcc'));
    std::thread([&] {
      for (const auto& language : c.languages)
        ThreadContext::This().Texts().LoadFrom(win::WinPlatform::Instance(), t.path().substr(0, t.path().size() - 1), language);
      for (const auto& [id, text] : c.expected) EXPECT_EQ(GetString(id), text) << c.name << " " << id;
    }).join();
  }
}

TEST(Localization, ShippedLibrariesAndTheControlCarryEveryEnglishId) {
  auto& platform = win::WinPlatform::Instance();
  const void* control = platform.LoadLibraryFile(kShipped + "TqColorSettingTool.dll");
  const void* en = platform.LoadLibraryFile(kShipped + "EN\\ColorSettingTool_EN.dll");
  const void* de = platform.LoadLibraryFile(kShipped + "DE\\ColorSettingTool_DE.dll");
  ASSERT_TRUE(control && en && de);
  for (std::size_t i = 0; i < kBuiltinStringCount; ++i) {
    const auto& entry = kBuiltinStrings[i];
    const std::string expected = std::string(entry.text).substr(0, 254);
    EXPECT_EQ(platform.LibraryString(control, entry.id), expected) << entry.id;
    EXPECT_EQ(platform.LibraryString(en, entry.id), expected) << entry.id;
    EXPECT_FALSE(platform.LibraryString(de, entry.id).empty()) << entry.id;
  }
}

}  // namespace
}  // namespace tq
