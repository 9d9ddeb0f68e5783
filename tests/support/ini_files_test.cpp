// INI files through the platform's profile functions, on real files: under Wine the
// system's, natively our own reader and writer, which must keep the same rules.
#include <gtest/gtest.h>

#include "common/test_platform.h"

namespace tq {
namespace {

TEST(IniFiles, ReadAndWriteKeepTheProfileFunctionsRules) {
  Platform& p = test::RealPlatform();
  test::ScratchFolder t;
  const std::string file = t / "colors.ini";
  ASSERT_TRUE(p.WriteNewFile(file,
                             "; comment\r\n[First]\r\nkey = one \r\nquoted=\"two words\"\r\n\r\n"
                             "[Logical Colors]\r\nIndex_1=  1  2  3  # 1: Dark red\r\n[Last]\r\nx=9"));
  struct Entry {
    const char *section, *key, *value;
  };
  const Entry reads[] = {
      {"First", "key", "one"},            // blanks around the value go
      {"FIRST", " KEY ", "one"},          // names ignore case and blanks
      {"First", "quoted", "two words"},   // one pair of quotes goes
      {"Logical Colors", "Index_1", "1  2  3  # 1: Dark red"},
      {"Last", "x", "9"},                 // the last line needs no line end
      {"First", "Index_1", ""},           // a key of another section
      {"Missing", "key", ""},
  };
  for (const auto& r : reads) EXPECT_EQ(p.IniRead(r.section, r.key, file), r.value) << r.section << "/" << r.key;
  EXPECT_EQ(p.IniRead("First", "key", t / "missing.ini"), "");

  p.IniWrite("first", "KEY", "changed", file);               // replaces, whatever the case
  p.IniWrite("Logical Colors", "Index_2", "4 5 6", file);    // appends inside its section
  p.IniWrite("Last", "y", "10", file);                       // after a last line without line end
  p.IniWrite("New", "z", "11", file);                        // a new section
  p.IniWrite("Fresh", "a", "b", t / "fresh.ini");            // a new file
  const Entry after[] = {
      {"First", "key", "changed"}, {"First", "quoted", "two words"}, {"Logical Colors", "Index_1", "1  2  3  # 1: Dark red"},
      {"Logical Colors", "Index_2", "4 5 6"}, {"Last", "x", "9"}, {"Last", "y", "10"}, {"New", "z", "11"},
  };
  for (const auto& r : after) EXPECT_EQ(p.IniRead(r.section, r.key, file), r.value) << r.section << "/" << r.key;
  EXPECT_EQ(p.IniRead("Fresh", "a", t / "fresh.ini"), "b");

  // Values around each size of the system's read buffers come back whole.
  for (size_t length : {0u, 253u, 254u, 255u, 509u, 510u, 2000u}) {
    std::string value;
    for (size_t i = 0; i < length; ++i) value += static_cast<char>('a' + i % 26);
    p.IniWrite("Fresh", "long", value, t / "fresh.ini");
    EXPECT_EQ(p.IniRead("Fresh", "long", t / "fresh.ini"), value) << length;
  }
}

}  // namespace
}  // namespace tq
