#include "support/utils.h"

#include <gtest/gtest.h>

#include "common/test_platform.h"

namespace tq {
namespace {

// The test platform's host says yes to everything and creates nothing.
TEST(Utils, AFolderTheHostSaysItCreatedMustExist) {
  test::ScratchFolder scratch;
  test::TestPlatform platform;
  EXPECT_FALSE(CreateFolderViaHost(platform, scratch / "Other\\"));
  EXPECT_EQ(platform.host_calls, (std::vector<std::pair<int, std::string>>{{kHostCreateFolder, scratch / "Other\\"}}));
}

}  // namespace
}  // namespace tq
