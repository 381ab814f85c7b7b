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
  EXPECT_EQ("broken", ErrorOf([] { throw std::runtime_error("broken"); }));
  EXPECT_EQ("not enough memory on rank 0", ErrorOf([] { throw std::bad_alloc(); }));
  EXPECT_EQ("no error", ErrorOf([] {}));
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
  EXPECT_EQ((std::vector<double>{2.5}), TestRanks().Gather(2.5));
  EXPECT_EQ((std::vector<std::vector<double>>{{1.0, 2.0}}),
            TestRanks().Gather(std::vector<double>{1.0, 2.0}));
  EXPECT_EQ(-3.0, TestRanks().Max(-3.0));
}

TEST(Ranks, GatherOnTheFirstWhatItHasItself) {
  EXPECT_EQ((std::vector<double>{2.5, 3.5}), TestRanks().GatherOnFirst(std::vector<double>{2.5, 3.5}));
  EXPECT_EQ((std::vector<std::int64_t>{60000000000}),
            TestRanks().GatherOnFirst(std::vector<std::int64_t>{60000000000}));
  EXPECT_EQ("text", TestRanks().GatherOnFirst(std::string("text")));
  EXPECT_EQ("", TestRanks().GatherOnFirst(std::string()));
}

TEST(Ranks, BroadcastTheValuesOfTheFirst) {
  std::vector<double> values = {1.0, 2.0};
  TestRanks().Broadcast(values);
  EXPECT_EQ((std::vector<double>{1.0, 2.0}), values);
  std::string text;
  TestRanks().Broadcast(text);
  EXPECT_EQ("", text);
}

}  // namespace
}  // namespace zyngrad
