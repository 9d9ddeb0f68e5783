#include <unistd.h>

#include <atomic>
#include <filesystem>

#include "common/test_platform.h"

namespace tq::test {

namespace fs = std::filesystem;

Platform& RealPlatform() {
  static posix::PosixPlatform platform;
  return platform;
}

ScratchFolder::ScratchFolder() {
  static std::atomic<int> counter{0};
  fs::path p = fs::temp_directory_path() / ("tqtest_" + std::to_string(::getpid()) + "_" + std::to_string(counter++));
  fs::remove_all(p);
  fs::create_directories(p);
  path_ = p.string() + "\\";  // the core joins with "\"; the platform maps it back
}

ScratchFolder::~ScratchFolder() {
  std::error_code ec;
  fs::remove_all(posix::NativePath(path_), ec);
}

}  // namespace tq::test
