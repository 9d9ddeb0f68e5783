#include "support/colour_text.h"

#include <gtest/gtest.h>

namespace tq {
namespace {

TEST(ColourText, ParsesTheFourFormatsAndRefusesTheRest) {
  const std::int32_t orange = 255 | 128 << 8 | 10 << 16;  // r 255, g 128, b 10
  const std::pair<const char*, std::optional<std::int32_t>> cases[] = {
      {"#FF800A", orange}, {"ff800a", orange}, {"  #ff800A\t", orange}, {"255, 128, 10", orange},
      {"255,128,10", orange}, {" 255 ,128 , 10 ", orange}, {"255 128 10", orange}, {"255  128\t10", orange},
      {"0 0 0", 0}, {"#000000", 0},
      {"", std::nullopt}, {"#", std::nullopt}, {"#FF800", std::nullopt}, {"#FF800A0", std::nullopt},
      {"#GG800A", std::nullopt}, {"##FF800A", std::nullopt}, {"256, 0, 0", std::nullopt},
      {"1, 2", std::nullopt}, {"1, 2, 3, 4", std::nullopt}, {"1 2 3 4", std::nullopt}, {"1, 2 3", std::nullopt},
      {"-1, 2, 3", std::nullopt}, {"1,, 2, 3", std::nullopt}, {"0x0A 0 0", std::nullopt}, {"red", std::nullopt},
      {"1, 2, 3,", std::nullopt}};
  for (const auto& [text, colour] : cases) EXPECT_EQ(ParseColourText(text), colour) << '"' << text << '"';
}

}  // namespace
}  // namespace tq
