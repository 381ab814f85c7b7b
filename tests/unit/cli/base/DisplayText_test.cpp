#include "cli/base/DisplayText.h"

#include <gtest/gtest.h>

namespace zyngrad {
namespace {

TEST(DisplayWidth, CountsCharactersNotBytes) {
  EXPECT_EQ(DisplayWidth(""), 0U);
  EXPECT_EQ(DisplayWidth("wall"), 4U);
  EXPECT_EQ(DisplayWidth("W\xC3\xA4nde"), 5U);              // one letter of two bytes
  EXPECT_EQ(DisplayWidth("e\xCC\x81"), 1U);                 // e and an accent that combines with it
  EXPECT_EQ(DisplayWidth("\xE5\xA3\x81\xE9\x9D\xA2"), 4U);  // two wide characters
  EXPECT_EQ(DisplayWidth("\xF0\x9F\x98\x80"), 2U);          // a pictograph
  EXPECT_EQ(DisplayWidth("\xFF\xC3"), 2U);                  // bytes that are no characters
}

TEST(Shortened, LeavesTextsThatFit) {
  EXPECT_EQ(Shortened("", 10), "");
  EXPECT_EQ(Shortened("0123456789", 10), "0123456789");
  EXPECT_EQ(Shortened("W\xC3\xA4nde", 5), "W\xC3\xA4nde");
}

TEST(Shortened, KeepsBeginningAndEndOfOthers) {
  EXPECT_EQ(Shortened("0123456789abcdef", 12), "012345...def");
  EXPECT_EQ(Shortened(std::string(100000, 'x') + "7", 12), "xxxxxx...xx7");
}

TEST(Shortened, CutsBetweenCharactersAndNeverGrowsTooWide) {
  std::string wide;
  for (int k = 0; k < 20; ++k) wide += "\xE5\xA3\x81";
  for (std::size_t widest = 4; widest < 40; ++widest) {
    std::string const text = Shortened(wide, widest);
    EXPECT_LE(DisplayWidth(text), widest);
    EXPECT_EQ((text.size() - 3) % 3, 0U) << widest;
  }
}

}  // namespace
}  // namespace zyngrad
