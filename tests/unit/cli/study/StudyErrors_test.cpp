#include "cli/study/StudyErrors.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>

#include "tests/unit/cli/TestRanks.h"

namespace zyngrad {
namespace {

TEST(ObservedOrder, IsTheSlopeBetweenTwoLevels) {
  EXPECT_NEAR(2.0, ObservedOrder(4e-2, 1e-2, 0.2, 0.1), 1e-14);
  EXPECT_NEAR(1.0, ObservedOrder(3e-2, 1e-2, 0.3, 0.1), 1e-14);
  EXPECT_NEAR(0.0, ObservedOrder(1e-2, 1e-2, 0.2, 0.1), 1e-14);
  EXPECT_NEAR(-1.0, ObservedOrder(1e-2, 2e-2, 0.2, 0.1), 1e-14);
}

TEST(ObservedOrder, IsNoNumberWhereThereIsNoSlope) {
  double const nan = std::nan(""), inf = std::numeric_limits<double>::infinity();
  EXPECT_TRUE(std::isnan(ObservedOrder(0.0, 1e-2, 0.2, 0.1)));
  EXPECT_TRUE(std::isnan(ObservedOrder(1e-2, 0.0, 0.2, 0.1)));
  EXPECT_TRUE(std::isnan(ObservedOrder(nan, 1e-2, 0.2, 0.1)));
  EXPECT_TRUE(std::isnan(ObservedOrder(1e-2, inf, 0.2, 0.1)));
  EXPECT_TRUE(std::isnan(ObservedOrder(1e-2, 1e-3, 0.1, 0.1)));
}

TEST(StudyErrors, WeighsErrorsAndKeepsTheBoundaryApart) {
  StudyErrors const errors =
      SummariseStudyErrors(TestRanks(), {{1.0, 3.0, false}, {5.0, 1.0, false}, {2.0, 0.5, true}});
  EXPECT_EQ(2, errors.interior.count);
  EXPECT_EQ(2.0, errors.interior.l1);                  // (3 + 5) / 4
  EXPECT_EQ(errors.interior.l2, std::sqrt(28.0 / 4));  // (3 + 25) / 4
  EXPECT_EQ(5.0, errors.interior.max);
  EXPECT_EQ(1, errors.boundary.count);
  EXPECT_EQ(2.0, errors.boundary.l1);
  EXPECT_EQ(2.0, errors.boundary.l2);
  EXPECT_EQ(2.0, errors.boundary.max);
}

TEST(StudyErrors, CountsWhatIsNotFiniteAndShowsItInTheMeans) {
  StudyErrors const errors =
      SummariseStudyErrors(TestRanks(), {{std::nan(""), 1.0, false}, {3.0, 1.0, false}});
  EXPECT_EQ(1, errors.interior.nNotFinite);
  EXPECT_TRUE(std::isnan(errors.interior.l1));
  EXPECT_TRUE(std::isnan(errors.interior.l2));
  EXPECT_EQ(3.0, errors.interior.max);
  EXPECT_EQ(1,
            std::accumulate(errors.histogram.count.begin(), errors.histogram.count.end(), std::int64_t{0}));
}

TEST(StudyErrors, HasNoNormsOfNothing) {
  StudyErrors const errors = SummariseStudyErrors(TestRanks(), {});
  for (StudyNorms const& norms : {errors.interior, errors.boundary}) {
    EXPECT_EQ(0, norms.count);
    EXPECT_TRUE(std::isnan(norms.l1));
    EXPECT_TRUE(std::isnan(norms.l2));
    EXPECT_TRUE(std::isnan(norms.max));
  }
}

TEST(ErrorHistogram, CountsQuartersOfADecade) {
  ErrorHistogram histogram;
  for (double const error : {1.0001e-3, 1.7e-3, 1.8e-3, 9.9e-3})
    histogram.Add(error);  // ends at 1.778, 3.16, 5.6
  int bin = 0;
  while (ErrorHistogram::LowerEnd(bin) < 0.999e-3) ++bin;
  auto const first = static_cast<std::size_t>(bin);
  EXPECT_EQ(2, histogram.count[first]);
  EXPECT_EQ(1, histogram.count[first + 1]);
  EXPECT_EQ(0, histogram.count[first + 2]);
  EXPECT_EQ(1, histogram.count[first + 3]);
}

TEST(ErrorHistogram, HasEndsForTheSmallestAndTheLargest) {
  ErrorHistogram histogram;
  for (double const error : {0.0, 1e-300, 1e-30}) histogram.Add(error);
  for (double const error : {1e30, 1e300}) histogram.Add(error);
  histogram.Add(std::nan(""));
  histogram.Add(std::numeric_limits<double>::infinity());
  EXPECT_EQ(3, histogram.count.front());
  EXPECT_EQ(2, histogram.count.back());
  EXPECT_EQ(5, std::accumulate(histogram.count.begin(), histogram.count.end(), std::int64_t{0}));
}

}  // namespace
}  // namespace zyngrad
