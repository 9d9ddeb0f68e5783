#include "common/test_platform.h"
#include "common/win_test_support.h"
#include "win32/win_platform.h"

namespace tq::test {

Platform& RealPlatform() { return win::WinPlatform::Instance(); }

ScratchFolder::ScratchFolder() : path_(CreateTempFolder()) {}
ScratchFolder::~ScratchFolder() { RemoveTree(path_); }

}  // namespace tq::test
