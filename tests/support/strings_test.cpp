// The built-in English table is generated from resources/strings/EN.txt; these tests
// guard the generator and the lookup, not the wording.
#include <gtest/gtest.h>

#include <set>

#include "support/builtin_strings.h"
#include "support/localization.h"

namespace tq {
namespace {

TEST(BuiltinStrings, SortedCompleteAndBlanksKept) {
  std::set<int> ids;
  for (std::size_t i = 0; i < kBuiltinStringCount; ++i) {
    if (i > 0) {
      EXPECT_LT(kBuiltinStrings[i - 1].id, kBuiltinStrings[i].id);
    }
    ids.insert(kBuiltinStrings[i].id);
  }
  const std::pair<int, int> ranges[] = {{101, 390}, {901, 912},   {951, 962},   {1201, 1210},
                                        {1301, 1332}, {1501, 1513}, {1551, 1555}, {1401, 1404}};
  for (const auto& [from, to] : ranges)
    for (int id = from; id <= to; ++id) EXPECT_TRUE(ids.count(id)) << id;
  EXPECT_EQ(GetString(1305), "Color table file not found: ");
  EXPECT_EQ(GetString(1326), " from ");
  EXPECT_EQ(GetString(1003), "");  // a category slot no page uses
}

TEST(LanguageCodes, OnlyPlainTokensCanNameAFolder) {
  for (const char* good : {"EN", "de-CH", "zh_Hant"}) EXPECT_TRUE(IsPlainLanguageCode(good)) << good;
  for (const char* bad : {"", "..", "..\\EN", "C:", "E N", "EN.dll", "EN/", "\xc3\xa4", "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa"})
    EXPECT_FALSE(IsPlainLanguageCode(bad)) << bad;
}

}  // namespace
}  // namespace tq
