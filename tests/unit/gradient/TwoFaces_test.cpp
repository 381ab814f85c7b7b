#include "gradient/TwoFaces.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

// The arithmetic of two faces side by side, place by place.

namespace zyn_test::two_faces_test {
namespace {

using two_faces::AnyOfEightAbove;
using two_faces::AnyZero;
using two_faces::Two;

TEST(TwoFaces, NoneOfEightAtTheLimitIsAboveIt) {
  std::vector<int> const atLimit(8, 5);
  EXPECT_FALSE(AnyOfEightAbove(5, atLimit.data(), atLimit.data()));
}

TEST(TwoFaces, AnyOfEightIsFoundInEveryPlace) {
  for (int place = 0; place < 16; ++place) {
    std::vector<int> values(16, 5);
    values[place] = 6;
    EXPECT_TRUE(AnyOfEightAbove(5, values.data(), values.data() + 8)) << place;
    EXPECT_TRUE(AnyOfEightAbove(5, values.data() + 8, values.data())) << place;
  }
}

TEST(TwoFaces, LooksAtEightAndNoMore) {
  std::vector<int> values(9, 5);
  values[8] = 6;
  EXPECT_FALSE(AnyOfEightAbove(5, values.data(), values.data()));
}

TEST(TwoFaces, AZeroOfEitherSignIsFoundInEveryPlace) {
  for (double const zero : {0.0, -0.0}) {
    EXPECT_TRUE(AnyZero(zero));
    EXPECT_TRUE(AnyZero(Two{zero, 1.0}));
    EXPECT_TRUE(AnyZero(Two{1.0, zero}));
    EXPECT_TRUE(AnyZero(Two{zero, zero}));
  }
  for (double const other : {1.0, -1.0, 5e-324, static_cast<double>(NAN)}) {
    EXPECT_FALSE(AnyZero(other));
    EXPECT_FALSE(AnyZero(Two{1.0, other}));
    EXPECT_FALSE(AnyZero(Two{other, 1.0}));
  }
}

// By way of a volatile: two constants are folded by some compilers as if the order of the two did not matter. Field
// values are no constants.
double AtRunTime(double value) {
  double const volatile seen = value;
  return seen;
}

TEST(TwoFaces, TiesAndNaNsGiveTheSecond) {
  double const zero = AtRunTime(0.0), negativeZero = AtRunTime(-0.0);
  double const notANumber = AtRunTime(NAN), three = AtRunTime(3.0);
  EXPECT_EQ(1.0, two_faces::Lesser(1.0, 2.0));
  EXPECT_EQ(2.0, two_faces::Greater(1.0, 2.0));
  EXPECT_TRUE(std::signbit(two_faces::Lesser(zero, negativeZero)));
  EXPECT_TRUE(std::signbit(two_faces::Greater(zero, negativeZero)));
  EXPECT_EQ(3.0, two_faces::Lesser(notANumber, three));
  EXPECT_EQ(3.0, two_faces::Greater(notANumber, three));
  EXPECT_TRUE(std::isnan(two_faces::Lesser(three, notANumber)));
  Two const lesser = two_faces::Lesser(Two{1.0, 4.0}, Two{2.0, 3.0});
  Two const greater = two_faces::Greater(Two{1.0, 4.0}, Two{2.0, 3.0});
  EXPECT_EQ(1.0, lesser[0]);
  EXPECT_EQ(3.0, lesser[1]);
  EXPECT_EQ(2.0, greater[0]);
  EXPECT_EQ(4.0, greater[1]);
}

}  // namespace
}  // namespace zyn_test::two_faces_test
