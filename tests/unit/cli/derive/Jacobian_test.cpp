#include "cli/derive/Jacobian.h"

#include <gtest/gtest.h>

namespace zyngrad {
namespace {

/// u = (x + 2y + 3z, 4x + 5y + 6z, 7x + 8y + 10z)
constexpr Jacobian kFull = {{{1, 2, 3}, {4, 5, 6}, {7, 8, 10}}};

TEST(Jacobian, HasTheDivergenceOnItsDiagonal) { EXPECT_EQ(16.0, Divergence(kFull)); }

TEST(Jacobian, HasTheCurlInItsSkewPart) {
  EXPECT_EQ((std::array<double, 3>{8 - 6, 3 - 7, 4 - 2}), Curl(kFull));
}

TEST(Jacobian, HasTheStrainRateInItsSymmetricPart) {
  EXPECT_EQ((std::array<double, 6>{1, 3, 5, 5, 7, 10}), StrainRate(kFull));
}

// tr(g g): 1 + 25 + 100 + 2 (2*4 + 3*7 + 6*8) = 280; Q = (16^2 - 280) / 2
TEST(Jacobian, HasItsSecondInvariantAsQ) { EXPECT_EQ(-12.0, QCriterion(kFull)); }

// Solid rotation by w around z: u = (-w y, w x, 0). All of it is rotation, and |W|^2 = 2 w^2.
TEST(Jacobian, OfSolidRotationHasQOfTheSquareOfItsRate) {
  constexpr Jacobian kRotation = {{{0, -3, 0}, {3, 0, 0}, {0, 0, 0}}};
  EXPECT_EQ(9.0, QCriterion(kRotation));
  EXPECT_EQ((std::array<double, 3>{0, 0, 6}), Curl(kRotation));
  EXPECT_EQ((std::array<double, 6>{}), StrainRate(kRotation));
}

// Plane shear has as much rotation as strain.
TEST(Jacobian, OfPlaneShearHasNoQ) {
  constexpr Jacobian kShear = {{{0, 5, 0}, {0, 0, 0}, {0, 0, 0}}};
  EXPECT_EQ(0.0, QCriterion(kShear));
}

TEST(Jacobian, OfPlaneStrainHasNegativeQ) {
  constexpr Jacobian kStrain = {{{2, 0, 0}, {0, -2, 0}, {0, 0, 0}}};
  EXPECT_EQ(-4.0, QCriterion(kStrain));  // (|W|^2 - |S|^2) / 2 = -(4 + 4) / 2
}

// With divergence, Q is the invariant and not half the difference of the norms, which would be -6 here.
TEST(Jacobian, OfExpansionHasTheInvariantAsQ) {
  constexpr Jacobian kExpansion = {{{2, 0, 0}, {0, 2, 0}, {0, 0, 2}}};
  EXPECT_EQ(12.0, QCriterion(kExpansion));
}

}  // namespace
}  // namespace zyngrad
