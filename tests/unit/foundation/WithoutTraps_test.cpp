#include "foundation/WithoutTraps.h"

#include <gtest/gtest.h>

#include <cfenv>
#include <cmath>
#if defined(__SSE__)
#include <xmmintrin.h>
#endif

#include "tests/support/watch/ArmedTraps.h"

// Where results are defined to be no finite numbers, a program with traps goes on, and has its traps again afterwards.

namespace zyn_test::without_traps_test {
namespace {

using zyn_test::ArmedTraps;

double volatile zero = 0.0, one = 1.0, largest = 1e308;

TEST(WithoutTraps, NothingStopsTheProgramAndTheTrapsAreBackAfterwards) {
  ArmedTraps const traps;
  double infinite = 0.0, noNumber = 0.0, tooLarge = 0.0;
  {
    WithoutTraps const held;
    EXPECT_EQ(0, fegetexcept());
    infinite = one / zero;
    noNumber = zero / zero;
    tooLarge = largest * largest;
  }
  EXPECT_TRUE(traps.StillArmed());
  EXPECT_TRUE(std::isinf(infinite));
  EXPECT_TRUE(std::isnan(noNumber));
  EXPECT_TRUE(std::isinf(tooLarge));
}

TEST(WithoutTraps, InEachOtherEndWithTheOutermost) {
  ArmedTraps const traps;
  {
    WithoutTraps const outer;
    { WithoutTraps const inner; }
    EXPECT_EQ(0, fegetexcept());
  }
  EXPECT_TRUE(traps.StillArmed());
}

TEST(WithoutTraps, AProgramWithoutTrapsFindsItsFlagsRaised) {
  std::feclearexcept(FE_ALL_EXCEPT);
  {
    WithoutTraps const held;
    double const volatile infinite = one / zero;
    EXPECT_TRUE(std::isinf(infinite));
  }
  EXPECT_NE(0, std::fetestexcept(FE_DIVBYZERO));
  std::feclearexcept(FE_ALL_EXCEPT);
}

TEST(WithoutTraps, KeepsTheRoundingOfTheProgram) {
  std::fesetround(FE_UPWARD);
  {
    ArmedTraps const traps;
    WithoutTraps const held;
    EXPECT_EQ(std::fegetround(), FE_UPWARD);
  }
  EXPECT_EQ(std::fegetround(), FE_UPWARD);
  std::fesetround(FE_TONEAREST);
}

#if defined(__SSE__)

// The C library's question for traps asks the x87 unit alone, and solvers may arm those of the vector unit alone.
TEST(WithoutTraps, HoldsBackTrapsOfTheVectorUnitAlone) {
  unsigned const before = _MM_GET_EXCEPTION_MASK();
  unsigned const armed = before & ~static_cast<unsigned>(_MM_MASK_DIV_ZERO);
  double volatile infinite = 0.0;
  _MM_SET_EXCEPTION_MASK(armed);
  {
    WithoutTraps const held;
    infinite = one / zero;
  }
  unsigned const after = _MM_GET_EXCEPTION_MASK();
  _MM_SET_EXCEPTION_MASK(before);
  EXPECT_TRUE(std::isinf(infinite));
  EXPECT_EQ(after, armed);
}

#endif

}  // namespace
}  // namespace zyn_test::without_traps_test
