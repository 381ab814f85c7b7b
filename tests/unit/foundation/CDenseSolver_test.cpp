#include "foundation/CDenseSolver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <numeric>
#include <random>
#include <type_traits>
#include <vector>

#include <lapacke.h>

// The one door to LAPACK: row-major, solution in both B and X, no status.

namespace zyn_test::c_dense_solver_test {
namespace {

using Doubles = std::vector<double>;

Doubles RandomDoubles(std::mt19937_64& random, lapack_int n) {
  std::uniform_real_distribution<double> value(-1.0, 1.0);
  Doubles result(static_cast<std::size_t>(n));
  for (double& x : result) x = value(random);
  return result;
}

bool SameBits(Doubles const& a, Doubles const& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0;
}

TEST(DenseSolver, HasNoData) {
  EXPECT_TRUE(std::is_empty<CDenseSolver>::value);
  EXPECT_TRUE(std::is_trivially_default_constructible<CDenseSolver>::value);
}

TEST(DenseSolver, WorksOnAnObjectMadeByNew) {
  std::unique_ptr<CDenseSolver> const solver(new CDenseSolver);
  double a = 4.0, b = 2.0, x = 0.0;
  EXPECT_EQ(1, solver->Solve(1, &a, &b, &x, 1));
  EXPECT_EQ(0.5, x);
}

// [ 0 2 ] [x]   [4]        rows as written: the transposed system has the solution (1, 2) instead
// [ 4 1 ] [y] = [6]
TEST(DenseSolver, ReadsTheMatrixByRows) {
  Doubles a = {0.0, 2.0, 4.0, 1.0}, b = {4.0, 6.0}, x = {-7.0, -7.0};
  EXPECT_EQ(1, CDenseSolver().Solve(2, a.data(), b.data(), x.data(), 1));
  EXPECT_EQ(Doubles({1.0, 2.0}), x);
  EXPECT_EQ(x, b);
}

TEST(DenseSolver, ReadsTheRightHandSidesByRows) {
  // [ 2 0 ]       [ 2 4 6 ]        [ 1 2 3 ]
  // [ 0 4 ] S  =  [ 4 8 16 ],  S = [ 1 2 4 ]
  Doubles a = {2.0, 0.0, 0.0, 4.0}, b = {2.0, 4.0, 6.0, 4.0, 8.0, 16.0}, x(6, -7.0);
  EXPECT_EQ(1, CDenseSolver().Solve(2, a.data(), b.data(), x.data(), 3));
  EXPECT_EQ(Doubles({1.0, 2.0, 3.0, 1.0, 2.0, 4.0}), x);
  EXPECT_EQ(x, b);
}

TEST(DenseSolver, LeavesTheFactorsInTheMatrix) {
  // Pivoting takes row 2 first: L = [1 0; 0.5 1], U = [4 3; 0 -0.5].
  Doubles a = {2.0, 1.0, 4.0, 3.0}, b = {1.0, 1.0}, x(2);
  CDenseSolver().Solve(2, a.data(), b.data(), x.data(), 1);
  EXPECT_EQ(Doubles({4.0, 3.0, 0.5, -0.5}), a);
}

TEST(DenseSolver, XMayBeTheSameArrayAsB) {
  Doubles a = {2.0, 1.0, 4.0, 3.0}, b = {4.0, 10.0};
  Doubles a2 = a, b2 = b, x(2);
  CDenseSolver().Solve(2, a2.data(), b2.data(), x.data(), 1);
  EXPECT_EQ(1, CDenseSolver().Solve(2, a.data(), b.data(), b.data(), 1));
  EXPECT_TRUE(SameBits(b2, b)) << "the final copy onto itself changes nothing";
  EXPECT_TRUE(SameBits(x, b));
}

TEST(DenseSolver, SingularMatrixReturns1AndCopiesWhatIsLeft) {
  Doubles a = {1.0, 2.0, 2.0, 4.0}, b = {1.0, 5.0}, x = {-7.0, -7.0};
  EXPECT_EQ(1, CDenseSolver().Solve(2, a.data(), b.data(), x.data(), 1));
  EXPECT_TRUE(SameBits(b, x));
}

TEST(DenseSolver, NotANumberReturns1) {
  Doubles a = {std::nan(""), 2.0, 2.0, 4.0}, b = {1.0, 5.0}, x = {-7.0, -7.0};
  EXPECT_EQ(1, CDenseSolver().Solve(2, a.data(), b.data(), x.data(), 1));
  EXPECT_EQ(0, std::memcmp(b.data(), x.data(), 2 * sizeof(double)));
}

TEST(DenseSolver, CopiesNothingWithoutRightHandSides) {
  Doubles a = {2.0, 1.0, 4.0, 3.0}, b = {4.0, 10.0}, x = {-7.0, -7.0};
  EXPECT_EQ(1, CDenseSolver().Solve(2, a.data(), b.data(), x.data(), 0));
  EXPECT_EQ(Doubles({-7.0, -7.0}), x);
  EXPECT_EQ(Doubles({4.0, 10.0}), b);
}

TEST(DenseSolver, WritesNothingBeyondTheSolution) {
  Doubles a = {2.0, 0.0, 0.0, 4.0, -7.0}, b = {2.0, 4.0, -8.0}, x = {0.0, 0.0, -9.0};
  CDenseSolver().Solve(2, a.data(), b.data(), x.data(), 1);
  EXPECT_EQ(-7.0, a[4]);
  EXPECT_EQ(-8.0, b[2]);
  EXPECT_EQ(-9.0, x[2]);
}

TEST(DenseSolver, GivesTheBitsOfTheBareRoutine) {
  std::mt19937_64 random(3);
  std::vector<lapack_int> orders(24);
  std::iota(orders.begin(), orders.end(), 1);
  // Around the order from which on the pivots need memory of their own.
  orders.insert(orders.end(), {127, 128, 129, 150, 200});
  for (lapack_int const n : orders) {
    for (lapack_int const nrhs : {1, 3, 4}) {
      Doubles a = RandomDoubles(random, n * n), b = RandomDoubles(random, n * nrhs), x(b.size());
      Doubles bareA = a, bareB = b;
      std::vector<lapack_int> pivots(static_cast<std::size_t>(n));
      LAPACKE_dgesv(LAPACK_ROW_MAJOR, n, nrhs, bareA.data(), n, pivots.data(), bareB.data(), nrhs);
      EXPECT_EQ(1, CDenseSolver().Solve(n, a.data(), b.data(), x.data(), nrhs));
      EXPECT_TRUE(SameBits(bareA, a) && SameBits(bareB, b) && SameBits(bareB, x)) << n << " " << nrhs;
    }
  }
}

// A symmetric matrix, zeros on its diagonal so that rows change places, and `nrhs` columns.
struct SymmetricSystem {
  SymmetricSystem(std::mt19937_64& random, lapack_int n, int nrhs)
      : a(RandomDoubles(random, n * n)), b(RandomDoubles(random, n * nrhs)) {
    for (lapack_int i = 0; i < n; ++i) {
      a[static_cast<std::size_t>(i * n + i)] = 0.0;
      for (lapack_int j = 0; j < i; ++j)
        a[static_cast<std::size_t>(i * n + j)] = a[static_cast<std::size_t>(j * n + i)];
    }
  }

  Doubles a, b;
};

void ExpectEqualSolutions(SymmetricSystem const& system, lapack_int n, int nrhs) {
  Doubles a = system.a, b = system.b, plainA = system.a, plainB = system.b, work(system.b.size());
  EXPECT_EQ(1, CDenseSolver().SolveSymmetric(n, a.data(), b.data(), nrhs == 1 ? nullptr : work.data(), nrhs));
  EXPECT_EQ(1, CDenseSolver().Solve(n, plainA.data(), plainB.data(), plainB.data(), nrhs));
  EXPECT_TRUE(SameBits(b, plainB)) << "order " << n << ", " << nrhs << " right-hand sides";
}

TEST(DenseSolver, SolvesSymmetricSystemsToTheBitsOfAnyOther) {
  std::mt19937_64 random(5);
  for (int const nrhs : {1, 3, 4})
    for (lapack_int const n : {1, 2, 3, 5, 8, 13, 20, 64, 65, 130}) {
      if (n > 1) ExpectEqualSolutions(SymmetricSystem(random, n, nrhs), n, nrhs);
      SymmetricSystem singular(random, n, nrhs);
      std::fill(singular.a.begin(), singular.a.end(), 2.0);
      ExpectEqualSolutions(singular, n, nrhs);
      SymmetricSystem withNaN(random, n, nrhs);
      withNaN.a[0] = std::nan("");
      ExpectEqualSolutions(withNaN, n, nrhs);
      SymmetricSystem withNaNColumn(random, n, nrhs);
      withNaNColumn.b.back() = std::nan("");
      ExpectEqualSolutions(withNaNColumn, n, nrhs);
      SymmetricSystem infinite(random, n, nrhs);
      infinite.a[0] = HUGE_VAL;
      ExpectEqualSolutions(infinite, n, nrhs);
    }
}

}  // namespace
}  // namespace zyn_test::c_dense_solver_test
