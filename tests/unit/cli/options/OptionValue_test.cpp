#include "cli/options/OptionValue.h"

#include <gtest/gtest.h>

#include "cli/base/UsageError.h"

namespace zyngrad {
namespace {

TEST(OptionValue, TakesWholeNumbers) {
  EXPECT_EQ(0, WholeNumber("--sweeps", "0", 0));
  EXPECT_EQ(2147483647, WholeNumber("--sweeps", "2147483647", 0));
  for (char const* text : {"", "x", "3.5", "3 ", " 3", "-1", "2147483648", "1e3", "0x3"}) {
    EXPECT_THROW(WholeNumber("--sweeps", text, 0), UsageError) << text;
  }
  EXPECT_THROW(WholeNumber("--repeat", "0", 1), UsageError);
}

TEST(OptionValue, TakesNumbersOfCellsThatNoIntCounts) {
  EXPECT_EQ(60000000000, CellNumber("--cell", "60000000000"));
  for (char const* text : {"", "0", "-1", "1.0", "9223372036854775808"})
    EXPECT_THROW(CellNumber("--cell", text), UsageError) << text;
}

TEST(OptionValue, TakesPositiveFiniteNumbers) {
  EXPECT_EQ(500.0, PositiveNumber("--span", "500"));
  EXPECT_EQ(25.0, PositiveNumber("--span", "2.5e1"));
  for (char const* text : {"", "0", "-1", "nan", "inf", "1e999", "5 ", " 5", "5x", "0x5", "five"})
    EXPECT_THROW(PositiveNumber("--span", text), UsageError) << text;
}

}  // namespace
}  // namespace zyngrad
