// The guard of the COM entry points: whatever a body throws becomes an HRESULT, even
// when writing the description (EXCEPINFO, under memory pressure) throws in turn.
#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>

#include "win32/guard.h"

namespace tq::win {
namespace {

TEST(GuardCom, WhateverIsThrownBecomesAnHresult) {
  std::string described;
  auto describe = [&](const char* what) {
    described = what;
    return DISP_E_EXCEPTION;
  };
  auto cannot_describe = [](const char*) -> HRESULT { throw std::bad_alloc(); };
  EXPECT_EQ(GuardCom([]() -> HRESULT { throw std::bad_alloc(); }, describe), E_OUTOFMEMORY);
  EXPECT_EQ(GuardCom([]() -> HRESULT { throw std::runtime_error("no table"); }, describe), DISP_E_EXCEPTION);
  EXPECT_EQ(described, "no table");
  EXPECT_EQ(GuardCom([]() -> HRESULT { throw std::runtime_error("no table"); }, cannot_describe), E_UNEXPECTED);
  EXPECT_EQ(GuardCom([]() -> HRESULT { throw 1; }), E_UNEXPECTED);
}

}  // namespace
}  // namespace tq::win
