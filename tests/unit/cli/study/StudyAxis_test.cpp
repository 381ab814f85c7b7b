#include "cli/study/StudyAxis.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>

namespace zyngrad {
namespace {

std::map<double, std::string> Labels(StudyAxis const& axis) {
  std::map<double, std::string> labels;
  for (StudyAxis::Tick const& tick : axis.ticks())
    if (!tick.label.empty()) labels[tick.value] = tick.label;
  return labels;
}

TEST(StudyAxis, HoldsAllValuesWithRoomAtBothEnds) {
  for (StudyAxis const& axis : {StudyAxis::Logarithmic({1e-3, 0.5, 20}), StudyAxis::Linear({-3, 0, 7})}) {
    EXPECT_GT(axis.Place(axis.IsLogarithmic() ? 1e-3 : -3), 0.0);
    EXPECT_LT(axis.Place(axis.IsLogarithmic() ? 20 : 7), 1.0);
    EXPECT_NEAR(0.0, axis.Place(axis.low()), 1e-12);
    EXPECT_NEAR(1.0, axis.Place(axis.high()), 1e-12);
  }
}

TEST(StudyAxis, IsEvenInPowersOrInValues) {
  StudyAxis const powers = StudyAxis::Logarithmic({1e-4, 1});
  EXPECT_NEAR(powers.Place(1e-3) - powers.Place(1e-4), powers.Place(1) - powers.Place(0.1), 1e-12);
  StudyAxis const values = StudyAxis::Linear({0, 10});
  EXPECT_NEAR(values.Place(5) - values.Place(0), values.Place(10) - values.Place(5), 1e-12);
}

TEST(StudyAxis, NumbersPowersOfTenOverManyDecades) {
  EXPECT_EQ(
      Labels(StudyAxis::Logarithmic({2e-4, 1.5})),
      (std::map<double, std::string>{{1e-3, "10^-3"}, {1e-2, "10^-2"}, {1e-1, "10^-1"}, {1.0, "10^0"}}));
}

TEST(StudyAxis, NumbersSomePowersOverVeryMany) {
  auto const labels = Labels(StudyAxis::Logarithmic({1e-16, 1e4}));
  EXPECT_LE(labels.size(), 9u);
  EXPECT_GE(labels.size(), 5u);
}

TEST(StudyAxis, NumbersOneTwoFiveOverFewDecades) {
  EXPECT_EQ(Labels(StudyAxis::Logarithmic({0.019, 0.21})),
            (std::map<double, std::string>{{0.02, "0.02"}, {0.05, "0.05"}, {0.1, "0.1"}, {0.2, "0.2"}}));
}

TEST(StudyAxis, GivesEqualErrorsHalfADecade) {
  StudyAxis const axis = StudyAxis::Logarithmic({0.02, 0.02 * (1 + 1e-15)});
  EXPECT_NEAR(0.5, axis.Decades(), 1e-9);
  EXPECT_GE(Labels(axis).size(), 2u);
}

TEST(StudyAxis, CountsLinearTicksInRoundSteps) {
  EXPECT_EQ(Labels(StudyAxis::Linear({0, 10})),
            (std::map<double, std::string>{{0, "0"}, {2, "2"}, {4, "4"}, {6, "6"}, {8, "8"}, {10, "10"}}));
  EXPECT_EQ("0", Labels(StudyAxis::Linear({-0.001, 0.001})).at(0.0));  // no -0
}

TEST(StudyAxis, LeavesOutWhatItCannotShow) {
  double const inf = std::numeric_limits<double>::infinity();
  StudyAxis const axis = StudyAxis::Logarithmic({0.0, -1.0, std::nan(""), inf, 0.1, 10.0});
  EXPECT_GT(axis.low(), 0.01);
  EXPECT_LT(axis.high(), 100.0);
  EXPECT_FALSE(axis.Shows(0.0));
  EXPECT_FALSE(axis.Shows(inf));
  EXPECT_TRUE(axis.Shows(1e-300));
  EXPECT_TRUE(StudyAxis::Linear({1.0}).Shows(0.0));
}

TEST(StudyAxis, StandsWithoutAnyValue) {
  EXPECT_GT(StudyAxis::Logarithmic({}).high(), StudyAxis::Logarithmic({}).low());
  EXPECT_GT(StudyAxis::Linear({}).high(), StudyAxis::Linear({}).low());
  EXPECT_GT(StudyAxis::Linear({3.0, 3.0}).high(), 3.0);
}

}  // namespace
}  // namespace zyngrad
