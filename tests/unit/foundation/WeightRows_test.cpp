#include "foundation/WeightRows.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

// Rows of weights made at once against rows that begin with zeros and are added to, member by member.

namespace zyn_test::weight_rows_test {
namespace {

std::vector<double> RandomDoubles(std::mt19937_64& random, int n) {
  std::uniform_real_distribution<double> value(-1.0, 1.0);
  std::vector<double> result;
  for (int k = 0; k < n; ++k) result.push_back(value(random));
  return result;
}

/// Tables of two rows, freed at the end.
struct Tables {
  ~Tables() {
    GrowingRowTable<IBCnode>::Destroy(gradients);
    GrowingRowTable<double>::Destroy(values);
  }
  IBCnode** gradients = GrowingRowTable<IBCnode>::Create(2);
  double** values = GrowingRowTable<double>::Create(2);
};

TEST(WeightRows, AreMadeWithTheirWeights) {
  std::mt19937_64 random(1);
  for (int const n : {0, 1, 2, 20, 55}) {
    Tables made, stored;
    std::vector<double> const w = RandomDoubles(random, kWeightColumns * n);
    WeightSums const sums = MakeWeightRows(w.data(), n, 17, made.gradients, made.values, 2);
    IBCnode* const gradient = GrowingRowTable<IBCnode>::MakeRow(stored.gradients, 2, n);
    double* const value = GrowingRowTable<double>::MakeRow(stored.values, 2, n);
    WeightSums const otherSums = StoreWeights(w.data(), n, gradient, value);

    EXPECT_EQ(0.0, made.values[2][0]);
    EXPECT_EQ(0.0, made.gradients[2][0].x);
    EXPECT_EQ(0, made.gradients[2][0].tag);
    WeightSums plain;
    for (int k = 1; k <= n; ++k) {
      IBCnode const &a = made.gradients[2][k], &b = stored.gradients[2][k];
      EXPECT_EQ(17, a.tag);
      EXPECT_EQ(0, b.tag);
      double const* const own = w.data() + kWeightColumns * (k - 1);
      EXPECT_EQ(own[0], a.x);
      EXPECT_EQ(own[1], a.y);
      EXPECT_EQ(own[2], a.z);
      EXPECT_EQ(own[3], made.values[2][k]);
      EXPECT_TRUE(a.x == b.x && a.y == b.y && a.z == b.z && own[3] == stored.values[2][k]);
      plain.Add(own);
    }
    for (WeightSums const& s : {sums, otherSums}) {
      EXPECT_EQ(plain.value, s.value);
      EXPECT_EQ(plain.gradient.x, s.gradient.x);
      EXPECT_EQ(plain.gradient.y, s.gradient.y);
      EXPECT_EQ(plain.gradient.z, s.gradient.z);
    }
    std::vector<double> loaded(w.size());
    LoadWeights(made.gradients[2], made.values[2], n, loaded.data());
    EXPECT_EQ(w, loaded);
  }
}

// The plain form works on the rows themselves.
TEST(WeightRows, SharesAreAddedInTheOrderOfThePositions) {
  std::mt19937_64 random(4);
  constexpr int kMembers = 9;
  std::vector<double> w(kWeightColumns * kMembers, 0.0);
  Tables tables;
  IBCnode* const gradient = GrowingRowTable<IBCnode>::MakeRow(tables.gradients, 1, kMembers);
  double* const value = GrowingRowTable<double>::MakeRow(tables.values, 1, kMembers);
  for (int whole = 0; whole < 6; ++whole) {
    std::vector<int> const positions = {5, 1 + whole % 4, 9, 2, 9, 7};  // one of them twice
    std::vector<double> const u = RandomDoubles(random, 6), ofWhole = RandomDoubles(random, kWeightColumns);
    AddShares(ofWhole.data(), u.data(), positions.data(), w.data());
    for (std::size_t m = 1; m <= 5; ++m) {
      gradient[positions[m]].SetDataVector(u[m] * ofWhole[0], u[m] * ofWhole[1], u[m] * ofWhole[2]);
      value[positions[m]] += u[m] * ofWhole[3];
    }
  }
  std::vector<double> const own = RandomDoubles(random, 2 * kWeightColumns);
  AddFirst(own.data(), 2, w.data());
  for (int k = 1; k <= 2; ++k) {
    double const* const o = own.data() + kWeightColumns * (k - 1);
    gradient[k].SetDataVector(o[0], o[1], o[2]);
    value[k] += o[3];
  }
  std::vector<double> plain(w.size());
  LoadWeights(gradient, value, kMembers, plain.data());
  EXPECT_EQ(plain, w);
}

}  // namespace
}  // namespace zyn_test::weight_rows_test
