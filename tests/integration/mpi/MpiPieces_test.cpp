#include "reference_host/parallel/MpiPieces.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <numeric>
#include <string>
#include <vector>

#include "MpiTestSupport.h"

namespace reference_host {
namespace {

using test::Rank;
using test::RankCount;

/// Pieces of fewer bytes than an item, of one item and a bit, and of everything at once.
constexpr std::size_t kPieces[] = {1, 3, 9, kLargestMessage};

/// Rank r has r mod 4 letters, none on the first.
std::string TextOf(int rank) {
  return std::string(static_cast<std::size_t>(rank % 4), static_cast<char>('a' + rank % 26));
}

}  // namespace

TEST(MpiPieces, GatherBytesOfDifferentLengthsInTheOrderOfTheRanks) {
  std::string expected;
  for (int r = 0; r < RankCount(); ++r) expected += TextOf(r);
  for (std::size_t const largest : kPieces) {
    std::string const own = TextOf(Rank());
    std::vector<std::size_t> const sizes = GatherSizes(MPI_COMM_WORLD, own.size());
    EXPECT_EQ(Rank() == 0 ? static_cast<std::size_t>(RankCount()) : 0u, sizes.size());
    std::string all(std::accumulate(sizes.begin(), sizes.end(), std::size_t{0}), '-');
    GatherBytes(MPI_COMM_WORLD, own.data(), own.size(), sizes, all.data(), largest);
    EXPECT_EQ(Rank() == 0 ? expected : "", all);
  }
}

TEST(MpiPieces, BroadcastBytesOfTheFirstRank) {
  for (std::size_t const largest : kPieces) {
    std::string text = Rank() == 0 ? "0123456789" : "----------";
    BroadcastBytes(MPI_COMM_WORLD, text.data(), text.size(), largest);
    EXPECT_EQ("0123456789", text);
    BroadcastBytes(MPI_COMM_WORLD, nullptr, 0, largest);
  }
}

TEST(MpiPieces, ReduceEveryItemOnce) {
  for (std::size_t const largest : kPieces) {
    std::vector<double> own(5), all(5, -1.0);
    for (std::size_t i = 0; i < own.size(); ++i) own[i] = static_cast<double>(10 * i) + Rank();
    ReduceOnAll(MPI_COMM_WORLD, own.data(), all.data(), own.size(), MPI_DOUBLE, MPI_MAX, largest);
    for (std::size_t i = 0; i < own.size(); ++i)
      EXPECT_EQ(static_cast<double>(10 * i) + RankCount() - 1, all[i]);
  }
}

TEST(MpiPieces, ReduceFindsTheLowestRankOfEqualDistances) {
  struct Distance {
    double value;
    int rank;
  };
  std::vector<Distance> const own = {{2.0, Rank()}, {Rank() == RankCount() - 1 ? 1.0 : 3.0, Rank()}};
  std::vector<Distance> all(2);
  ReduceOnAll(MPI_COMM_WORLD, own.data(), all.data(), own.size(), MPI_DOUBLE_INT, MPI_MINLOC, 16);
  EXPECT_EQ(0, all[0].rank);
  EXPECT_EQ(RankCount() - 1, all[1].rank);
}

}  // namespace reference_host
