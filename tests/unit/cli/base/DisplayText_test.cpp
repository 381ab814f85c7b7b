#include "cli/base/DisplayText.h"

#include <gtest/gtest.h>

namespace zyngrad {
namespace {

TEST(DisplayWidth, CountsCharactersNotBytes) {
  EXPECT_EQ(0U, DisplayWidth(""));
  EXPECT_EQ(4U, DisplayWidth("wall"));
  EXPECT_EQ(5U, DisplayWidth("W\xC3\xA4nde"));              // one letter of two bytes
  EXPECT_EQ(1U, DisplayWidth("e\xCC\x81"));                 // e and an accent that combines with it
  EXPECT_EQ(4U, DisplayWidth("\xE5\xA3\x81\xE9\x9D\xA2"));  // two wide characters
  EXPECT_EQ(2U, DisplayWidth("\xF0\x9F\x98\x80"));          // a pictograph
  EXPECT_EQ(2U, DisplayWidth("\xFF\xC3"));                  // bytes that are no characters
}

TEST(Shortened, LeavesTextsThatFit) {
  EXPECT_EQ("", Shortened("", 10));
  EXPECT_EQ("0123456789", Shortened("0123456789", 10));
  EXPECT_EQ("W\xC3\xA4nde", Shortened("W\xC3\xA4nde", 5));
}

TEST(Shortened, KeepsBeginningAndEndOfOthers) {
  EXPECT_EQ("012345...def", Shortened("0123456789abcdef", 12));
  EXPECT_EQ("xxxxxx...xx7", Shortened(std::string(100000, 'x') + "7", 12));
}

TEST(Shortened, CutsBetweenCharactersAndNeverGrowsTooWide) {
  std::string wide;
  for (int k = 0; k < 20; ++k) wide += "\xE5\xA3\x81";
  for (std::size_t widest = 4; widest < 40; ++widest) {
    std::string const text = Shortened(wide, widest);
    EXPECT_LE(DisplayWidth(text), widest);
    EXPECT_EQ(0U, (text.size() - 3) % 3) << widest;
  }
}

}  // namespace
}  // namespace zyngrad
