#include "cli/systems/ConditionEstimate.h"

#include <gtest/gtest.h>

#include <cmath>
#include "tests/unit/cli/NotFinite.h"

namespace zyngrad {
namespace {

TEST(ConditionEstimate, OfTheIdentityIsOne) { EXPECT_EQ(1.0, ConditionEstimate({1, 0, 0, 1}, 2)); }

TEST(ConditionEstimate, OfTwoByTwoIsTheNormTimesTheNormOfTheInverse) {
  // Columns sum to 4 and 6; the inverse is (-2 1; 1.5 -0.5) with columns 3.5 and 1.5.
  EXPECT_NEAR(ConditionEstimate({1, 2, 3, 4}, 2), 6 * 3.5, 1e-12);
}

TEST(ConditionEstimate, TakesColumnsForSumsAlsoOfAnUnsymmetricMatrix) {
  // Columns sum to 1 and 11; the inverse is (1 -10; 0 1) with columns 1 and 11. By rows: 11 and 1, the same norm.
  EXPECT_NEAR(121, ConditionEstimate({1, 10, 0, 1}, 2), 1e-10);
  // Columns sum to 2 and 3, rows to 1 and 4; the inverse is (1 0; -1/3 1/3) with columns 4/3 and 1/3.
  EXPECT_NEAR(4.0, ConditionEstimate({1, 0, 1, 3}, 2), 1e-12);
}

TEST(ConditionEstimate, OfASystemWithAConstantTermIsThatOfItsInverse) {
  // (3 1; 1 0) has the inverse (0 1; 1 -3).
  EXPECT_NEAR(16.0, ConditionEstimate({3, 1, 1, 0}, 2), 1e-12);
}

TEST(ConditionEstimate, IsInfiniteForASingularMatrix) {
  EXPECT_EQ(kInfinity, ConditionEstimate({1, 2, 2, 4}, 2));
  EXPECT_EQ(kInfinity, ConditionEstimate({0, 0, 0, 0}, 2));
}

TEST(ConditionEstimate, IsMissingForAMatrixThatIsNotFinite) {
  EXPECT_TRUE(std::isnan(ConditionEstimate({1, std::nan(""), 0, 1}, 2)));
  EXPECT_TRUE(std::isnan(ConditionEstimate({1, 0, 0, kInfinity}, 2)));
}

}  // namespace
}  // namespace zyngrad
