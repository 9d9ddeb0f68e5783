#include "support/utils.h"

#include <gtest/gtest.h>

#include "common/test_platform.h"

namespace tq {
namespace {

TEST(Utils, ClutFieldsColourBytesAndPaths) {
  const std::pair<std::int16_t, const char*> fields[] = {
      {0, "  0  "}, {9, "  9  "}, {10, " 10  "}, {99, " 99  "}, {100, "100  "}, {-5, " -5  "}, {32767, "32767  "}};
  for (const auto& [value, text] : fields) EXPECT_EQ(FormatClutComponent(value), text) << value;
  const std::int32_t colour = 5 + 128 * 256 + 255 * 65536;
  EXPECT_EQ(RedOf(colour) * 10000 + GreenOf(colour) * 10 + BlueOf(colour), 5 * 10000 + 1280 + 255);
  EXPECT_EQ(RedOf(-1), 255);  // state values must not sign-extend
  EXPECT_EQ(FileNameOf("C:\\sc\\etc\\a.clut"), "a.clut");
  EXPECT_EQ(FileNameOf("a.clut"), "a.clut");
  EXPECT_EQ(FolderOf("C:\\sc\\etc\\a.clut"), "C:\\sc\\etc\\");
  EXPECT_EQ(FolderOf("a.clut"), "");
}

TEST(Utils, NamesCompareIgnoringCaseAsTheSystemFoldsThem) {
  test::TestPlatform platform;
  EXPECT_TRUE(EqualsIgnoreCase(platform, "qlt830_Colors.Clut", "QLT830_COLORS.CLUT"));
  EXPECT_TRUE(EqualsIgnoreCase(platform, "\xc3\x9c" "bersicht.clut", "\xc3\xbc" "bersicht.CLUT"));  // Ü / ü
  EXPECT_FALSE(EqualsIgnoreCase(platform, "a.clut", "a.clut.lock"));
}

TEST(Utils, EnsureFolderOfAsksTheHostAndTrustsOnlyTheFolder) {
  test::ScratchFolder scratch;
  test::TestPlatform platform;
  EXPECT_TRUE(EnsureFolderOf(platform, scratch / "a.clut"));
  EXPECT_TRUE(platform.host_calls.empty());
  const std::string wanted = scratch / "ColorSchemes\\";
  platform.host = [&](int, const std::string& text) { return platform.CreateFolder(text).ok; };
  EXPECT_TRUE(EnsureFolderOf(platform, wanted + "a.clut"));
  EXPECT_EQ(platform.host_calls, (std::vector<std::pair<int, std::string>>{{kHostCreateFolder, wanted}}));
  // A host that says yes but creates nothing does not make the folder exist.
  platform.host = [](int, const std::string&) { return true; };
  EXPECT_FALSE(EnsureFolderOf(platform, scratch / "Other\\x.clut"));
  EXPECT_FALSE(EnsureFolderOf(platform, "no-backslash.clut"));
}

}  // namespace
}  // namespace tq
