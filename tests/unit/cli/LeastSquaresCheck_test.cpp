#include "cli/LeastSquaresCheck.h"

#include <gtest/gtest.h>

namespace zyngrad {
namespace {

TEST(LeastSquaresCheck, StopsAtAZeroFirstPivot) {
  EXPECT_TRUE(LeastSquaresStopsAt(0.0, 0.0, 1.0));
  EXPECT_TRUE(LeastSquaresStopsAt(-0.0, 0.0, 1.0));
}

TEST(LeastSquaresCheck, StopsAtAZeroSecondPivot) {
  EXPECT_TRUE(LeastSquaresStopsAt(1.0, 0.0, 0.0));
  EXPECT_TRUE(LeastSquaresStopsAt(2.0, 2.0, 2.0));  // neighbours along (1, 1)
}

TEST(LeastSquaresCheck, ComparesPivotsExactly) {
  EXPECT_FALSE(LeastSquaresStopsAt(1e-300, 0.0, 1e-300));
  EXPECT_FALSE(LeastSquaresStopsAt(1.0, 0.5, 1.0));
}

}  // namespace
}  // namespace zyngrad
