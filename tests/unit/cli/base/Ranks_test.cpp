#include "cli/base/Ranks.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

#include "cli/base/AgreedError.h"
#include "tests/unit/cli/TestRanks.h"

namespace zyngrad {
namespace {

std::string ErrorOf(std::function<void()> const& work) {
  try {
    TestRanks().Together(work);
  } catch (UsageError const& error) {
    return error.what();
  }
  return "no error";
}

TEST(Ranks, TurnWhateverIsThrownIntoOneUsageError) {
  EXPECT_EQ(ErrorOf([] { throw std::runtime_error("broken"); }), "broken");
  EXPECT_EQ(ErrorOf([] { throw std::bad_alloc(); }), "not enough memory on rank 0");
  EXPECT_EQ(ErrorOf([] {}), "no error");
}

TEST(Ranks, ThrowErrorsThatSayHowManyHaveAgreed) {
  try {
    TestRanks().Together([] { throw UsageError("broken"); });
    FAIL() << "no error";
  } catch (AgreedError const& error) {
    EXPECT_EQ(error.rankCount(), TestRanks().count());
  }
}

TEST(Ranks, GatherRowsInRankOrder) {
  EXPECT_EQ(TestRanks().Gather(2.5), (std::vector<double>{2.5}));
  EXPECT_EQ(TestRanks().Gather(std::vector<double>{1.0, 2.0}),
            (std::vector<std::vector<double>>{{1.0, 2.0}}));
  EXPECT_EQ(TestRanks().Max(-3.0), -3.0);
}

}  // namespace
}  // namespace zyngrad
