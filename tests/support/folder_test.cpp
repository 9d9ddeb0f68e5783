#include <gtest/gtest.h>

#include "common/test_platform.h"
#include "support/utils.h"

namespace tq {
namespace {

TEST(EnsureFolderOf, ExistingFolderNeedsNoHostAndMissingOneIsAskedFor) {
  test::ScratchFolder scratch;
  test::TestPlatform platform;
  EXPECT_TRUE(EnsureFolderOf(platform, scratch / "QLT830_colors.clut"));
  EXPECT_TRUE(platform.host_calls.empty());

  // The host creates the folder it is asked for: the answer is whether it now exists.
  const std::string wanted = scratch / "ColorSchemes\\";
  platform.host = [&](int kind, const std::string& text) {
    return kind == kHostCreateFolder && platform.CreateFolder(text).ok;
  };
  EXPECT_TRUE(EnsureFolderOf(platform, wanted + "QLT830_colors.clut"));
  ASSERT_EQ(platform.host_calls.size(), 1u);
  EXPECT_EQ(platform.host_calls[0], std::make_pair(kHostCreateFolder, wanted));
  EXPECT_TRUE(platform.FolderExists(wanted));

  // A host that says yes but creates nothing does not make the folder exist.
  platform.host = [](int, const std::string&) { return true; };
  EXPECT_FALSE(EnsureFolderOf(platform, scratch / "Other\\x.clut"));
  EXPECT_FALSE(EnsureFolderOf(platform, "no-backslash.clut"));
}

}  // namespace
}  // namespace tq
