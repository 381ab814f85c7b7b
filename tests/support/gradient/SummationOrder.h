#pragma once

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "tests/support/mesh/RandomMesh.h"

namespace zyn_test {

/// Sums that SummationOrder needs to tell the orders of seven terms apart, with room to spare.
constexpr int kSumsForAnOrder = 200;

/// A term whose sums round differently in different orders: of either sign and one of several scales.
inline double RoughTerm(Random& random) {
  return Uniform(random, -1.0, 1.0) * std::ldexp(1.0, UniformInt(random, 0, 5));
}

/// Sums of the same terms in a stated order and in every other one, to prove by rounding which order was
/// taken.
///
/// The sum starts from 0.0, so exchanging the first two terms never shows; every other permutation must show
/// in at least one of several sums (with terms of different size).
class SummationOrder {
 public:
  /// @param terms  one vector of terms per sum, in the stated order
  explicit SummationOrder(std::vector<std::vector<double>> terms) : terms_(std::move(terms)) {}

  /// The sum number `n` in the stated order.
  double Sum(std::size_t n) const {
    std::vector<std::size_t> order(terms_[n].size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    return SumIn(order, n);
  }

  /// The sums in the stated order.
  std::vector<double> Sums() const {
    std::vector<double> sums;
    for (std::size_t n = 0; n < terms_.size(); ++n) sums.push_back(Sum(n));
    return sums;
  }

  /// Whether every permutation, except for an exchange of the first two terms, changes at least one of the
  /// sums.
  bool TellsAllOtherOrdersApart() const {
    std::vector<std::size_t> stated(terms_.front().size());
    std::iota(stated.begin(), stated.end(), std::size_t{0});
    std::vector<std::size_t> order = stated;
    while (std::next_permutation(order.begin(), order.end())) {
      bool const onlyFirstTwo = std::equal(order.begin() + 2, order.end(), stated.begin() + 2);
      if (!onlyFirstTwo && !ChangesASum(order)) return false;
    }
    return true;
  }

 private:
  double SumIn(std::vector<std::size_t> const& order, std::size_t n) const {
    double sum = 0.0;
    for (std::size_t const i : order) sum += terms_[n][i];
    return sum;
  }

  bool ChangesASum(std::vector<std::size_t> const& order) const {
    for (std::size_t n = 0; n < terms_.size(); ++n)
      if (SumIn(order, n) != Sum(n)) return true;
    return false;
  }

  std::vector<std::vector<double>> terms_;
};

}  // namespace zyn_test
