#include "foundation/DistanceSort.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <utility>
#include <vector>

// Distances with their ids against a bubble sort, for all kinds of input and around the lengths at which the method
// changes.

namespace zyn_test::distance_sort_test {
namespace {

using Random = std::mt19937_64;

struct List {
  std::vector<int> ids;
  std::vector<double> distances;

  int Size() const { return static_cast<int>(ids.size()); }
};

// n - 1 passes that swap neighbours when the left one is greater.
List BubbleSorted(List list) {
  for (std::size_t pass = 1; pass < list.ids.size(); ++pass) {
    for (std::size_t j = 0; j + pass < list.ids.size(); ++j) {
      if (!(list.distances[j] > list.distances[j + 1])) continue;
      std::swap(list.distances[j], list.distances[j + 1]);
      std::swap(list.ids[j], list.ids[j + 1]);
    }
  }
  return list;
}

/// Ways to make n distances; ids tell where each stood.
struct Kind {
  char const* name;
  double (*value)(Random&, int place, int n);
};

Kind const kKinds[] = {
    {"random", [](Random& r, int, int) { return std::uniform_real_distribution<double>()(r); }},
    {"ascending", [](Random&, int i, int) { return 1.0 * i; }},
    {"descending", [](Random&, int i, int n) { return 1.0 * (n - i); }},
    {"all equal", [](Random&, int, int) { return 0.75; }},
    {"few values", [](Random& r, int, int) { return static_cast<double>(r() % 5); }},
    {"one far below",
     [](Random& r, int i, int n) { return i == n / 2 ? -1.0 : static_cast<double>(r() % 3); }},
    {"with infinities",
     [](Random& r, int, int) { return r() % 4 == 0 ? INFINITY : static_cast<double>(r() % 9); }},
    {"near at the ends",
     [](Random& r, int i, int n) {
       return std::fabs(i - 0.5 * n) * -1.0 + 0.1 * static_cast<double>(r() % 4);
     }},
};

List Make(Kind const& kind, int n, std::uint64_t seed) {
  Random random(seed);
  List list;
  for (int i = 0; i < n; ++i) {
    list.ids.push_back(1000 + i);
    list.distances.push_back(kind.value(random, i, n));
  }
  return list;
}

std::vector<int> Lengths() {
  std::vector<int> lengths = {0, 1, 2, 3, 7, 31, 32, 33, 47, 48, 49, 50, 63, 64, 65, 100, 257, 600};
  return lengths;
}

TEST(DistanceSort, EqualsABubbleSort) {
  DistanceSort sort;
  for (Kind const& kind : kKinds) {
    for (int const n : Lengths()) {
      List list = Make(kind, n, 3);
      List const expected = BubbleSorted(list);
      sort.Sort(list.ids.data(), list.distances.data(), n);
      EXPECT_EQ(expected.ids, list.ids) << kind.name << " " << n;
      EXPECT_EQ(expected.distances, list.distances) << kind.name << " " << n;
    }
  }
}

TEST(DistanceSort, BringsTheNearestToTheFrontAsABubbleSortWould) {
  DistanceSort sort;
  for (Kind const& kind : kKinds) {
    for (int const n : Lengths()) {
      for (int const nKept : {0, 1, 2, 5, n / 16, n / 16 + 1, n / 8, n / 3, n / 2, n - 1, n}) {
        if (nKept < 0 || nKept > n) continue;
        for (std::uint64_t seed = 1; seed <= 3; ++seed) {
          List list = Make(kind, n, seed);
          List const expected = BubbleSorted(list);
          sort.SortNearest(list.ids.data(), list.distances.data(), n, nKept);
          for (std::size_t k = 0; k < static_cast<std::size_t>(nKept); ++k) {
            ASSERT_EQ(expected.ids[k], list.ids[k]) << kind.name << " " << nKept << " of " << n;
            ASSERT_EQ(expected.distances[k], list.distances[k]) << kind.name << " " << nKept << " of " << n;
          }
        }
      }
    }
  }
}

// Most cells of a search stand far away; the samples of a list that says otherwise must not mislead.
TEST(DistanceSort, IsNotMisledByAListWhosePeriodIsThatOfItsSamples) {
  DistanceSort sort;
  for (int const n : {64, 160, 320, 640}) {
    for (double const sampled : {0.0, 100.0}) {
      List list = Make(kKinds[0], n, 9);
      for (int i = 0; i < n; i += n / 16) list.distances[static_cast<std::size_t>(i)] = sampled;
      List const expected = BubbleSorted(list);
      sort.SortNearest(list.ids.data(), list.distances.data(), n, n / 4);
      for (std::size_t k = 0; k < static_cast<std::size_t>(n / 4); ++k)
        ASSERT_EQ(expected.ids[k], list.ids[k]) << n << " " << sampled;
    }
  }
}

TEST(DistanceSort, LeavesDistancesThatAreNotNumbersWhereABubbleSortDoes) {
  DistanceSort sort;
  for (int const n : {5, 40, 48, 49, 70, 200}) {
    for (std::uint64_t seed = 1; seed <= 5; ++seed) {
      Random random(seed);
      List list = Make(kKinds[4], n, seed);
      for (double& distance : list.distances)
        if (random() % 6 == 0) distance = NAN;
      List const expected = BubbleSorted(list);
      List nearest = list;
      sort.Sort(list.ids.data(), list.distances.data(), n);
      EXPECT_EQ(expected.ids, list.ids) << n;
      sort.SortNearest(nearest.ids.data(), nearest.distances.data(), n, n / 4);
      for (std::size_t k = 0; k < static_cast<std::size_t>(n / 4); ++k)
        ASSERT_EQ(expected.ids[k], nearest.ids[k]) << n << " " << seed;
    }
  }
}

TEST(DistanceSort, ServesOneListAfterAnother) {
  DistanceSort sort;
  for (int const n : {300, 5, 200, 60}) {
    List list = Make(kKinds[0], n, 4);
    List const expected = BubbleSorted(list);
    sort.Sort(list.ids.data(), list.distances.data(), n);
    EXPECT_EQ(expected.ids, list.ids);
  }
}

}  // namespace
}  // namespace zyn_test::distance_sort_test
