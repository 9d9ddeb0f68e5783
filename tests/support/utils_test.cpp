#include "support/utils.h"

#include <gtest/gtest.h>

namespace tq {
namespace {

TEST(FormatClutComponent, RightAlignsToWidthThreeThenTwoBlanks) {
  EXPECT_EQ(FormatClutComponent(0), "  0  ");
  EXPECT_EQ(FormatClutComponent(5), "  5  ");
  EXPECT_EQ(FormatClutComponent(9), "  9  ");
  EXPECT_EQ(FormatClutComponent(10), " 10  ");
  EXPECT_EQ(FormatClutComponent(99), " 99  ");
  EXPECT_EQ(FormatClutComponent(100), "100  ");
  EXPECT_EQ(FormatClutComponent(255), "255  ");
  EXPECT_EQ(FormatClutComponent(-1), " -1  ");
  EXPECT_EQ(FormatClutComponent(-5), " -5  ");
  // Out of the colour range the field simply grows; nothing is cut.
  EXPECT_EQ(FormatClutComponent(32767), "32767  ");
  EXPECT_EQ(FormatClutComponent(-32768), " -32768  ");
}

TEST(ColourBytes, SplitRedLowGreenMiddleBlueHigh) {
  const std::int32_t colour = 5 + 128 * 256 + 255 * 65536;
  EXPECT_EQ(RedOf(colour), 5);
  EXPECT_EQ(GreenOf(colour), 128);
  EXPECT_EQ(BlueOf(colour), 255);
  // The state values are not colours, but their bytes must not sign-extend.
  EXPECT_EQ(RedOf(-1), 255);
  EXPECT_EQ(BlueOf(-2), 255);
}

TEST(Paths, FileNameAndFolderSplitAtTheLastBackslash) {
  EXPECT_EQ(FileNameOf("C:\\sc\\etc\\QLT830_colors.clut"), "QLT830_colors.clut");
  EXPECT_EQ(FileNameOf("QLT830_colors.clut"), "QLT830_colors.clut");
  EXPECT_EQ(FileNameOf("C:\\folder\\"), "");
  EXPECT_EQ(FolderOf("C:\\sc\\etc\\QLT830_colors.clut"), "C:\\sc\\etc\\");
  EXPECT_EQ(FolderOf("no-folder.clut"), "");
}

TEST(Text, CaseInsensitiveComparisonUpperCasesAsciiOnly) {
  EXPECT_TRUE(EqualsIgnoreCase("qlt830_Colors.Clut", "QLT830_COLORS.CLUT"));
  EXPECT_FALSE(EqualsIgnoreCase("a.clut", "a.clut.lock"));
  EXPECT_EQ(UpperAscii("\xc3\xa4x"), "\xc3\xa4X");  // UTF-8 bytes untouched
}

TEST(Max, TiesGiveTheSecondArgument) {
  EXPECT_EQ(Max(3, 2), 3);
  EXPECT_EQ(Max(2, 3), 3);
  const std::string a = "x", b = "x";
  EXPECT_EQ(&Max(a, b), &b);
}

}  // namespace
}  // namespace tq
