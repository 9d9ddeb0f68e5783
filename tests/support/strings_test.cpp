// The built-in English table is generated from resources/strings/EN.txt; these tests
// guard the generator and the lookup, not the wording.
#include <gtest/gtest.h>

#include <set>

#include "support/builtin_strings.h"
#include "support/localization.h"

namespace tq {
namespace {

TEST(BuiltinStrings, TableIsSortedWithoutDuplicatesAndCoversEveryRange) {
  std::set<int> ids;
  for (std::size_t i = 0; i < kBuiltinStringCount; ++i) {
    if (i > 0) {
      EXPECT_LT(kBuiltinStrings[i - 1].id, kBuiltinStrings[i].id);
    }
    ids.insert(kBuiltinStrings[i].id);
  }
  for (int id = 101; id <= 390; ++id) EXPECT_TRUE(ids.count(id)) << id;
  for (int id = 901; id <= 912; ++id) EXPECT_TRUE(ids.count(id)) << id;
  for (int id = 951; id <= 962; ++id) EXPECT_TRUE(ids.count(id)) << id;
  for (int id = 1201; id <= 1210; ++id) EXPECT_TRUE(ids.count(id)) << id;
  for (int id = 1301; id <= 1332; ++id) EXPECT_TRUE(ids.count(id)) << id;
  for (int id : {1401, 1402, 1403, 1404, 1451}) EXPECT_TRUE(ids.count(id)) << id;
  for (int id = 1501; id <= 1513; ++id) EXPECT_TRUE(ids.count(id)) << id;
  for (int id = 1551; id <= 1555; ++id) EXPECT_TRUE(ids.count(id)) << id;
}

TEST(BuiltinStrings, KeepLeadingAndTrailingBlanksAndPunctuation) {
  EXPECT_EQ(GetString(1305), "Color table file not found: ");
  EXPECT_EQ(GetString(1326), " from ");
  EXPECT_EQ(GetString(1451), " already exists. Do you want to overwrite the existing one?");
  EXPECT_EQ(GetString(101), "Not Sampled or OPC Quality Bad");
  EXPECT_EQ(GetString(390), "Color Name");
  EXPECT_EQ(GetString(1047), "Indexes 244 - 255");
}

TEST(BuiltinStrings, UnknownIdsGiveAnEmptyText) {
  EXPECT_EQ(GetString(0), "");
  EXPECT_EQ(GetString(1003), "");  // a category slot no page uses
  EXPECT_EQ(GetString(-7), "");
  EXPECT_EQ(GetString(99999), "");
}

TEST(LanguageCodes, OnlyPlainTokensCanNameAFolder) {
  for (const char* good : {"EN", "DE", "de-CH", "zh_Hant", "X1"}) EXPECT_TRUE(IsPlainLanguageCode(good)) << good;
  for (const char* bad : {"", "..", "..\\EN", "EN\\..\\..", "C:", "E N", "EN.dll", "EN/", "\xc3\xa4",
                          "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa"})
    EXPECT_FALSE(IsPlainLanguageCode(bad)) << bad;
  EXPECT_EQ(LanguageLibraryPath("C:\\ctl", "DE"), "C:\\ctl\\DE\\ColorSettingTool_DE.dll");
}

}  // namespace
}  // namespace tq
