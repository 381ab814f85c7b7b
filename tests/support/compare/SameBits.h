#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <iomanip>
#include <string>

namespace zyn_test {

using ::testing::AssertionFailure;
using ::testing::AssertionResult;
using ::testing::AssertionSuccess;

/// Equal bits, so that 0.0 and -0.0 differ; any NaN equals any NaN, since nothing promises which one comes
/// out.
inline bool SameBits(double a, double b) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
  return std::memcmp(&a, &b, sizeof a) == 0;
}

/// SameBits for the elements 1..n of two arrays given by their element 0; names the first that differs.
inline AssertionResult SameBits(int n, double const* expected, double const* actual) {
  for (int c = 1; c <= n; ++c) {
    if (SameBits(expected[c], actual[c])) continue;
    return AssertionFailure() << "element " << c << " of " << n << ": expected " << std::hexfloat
                              << expected[c] << ", found " << actual[c];
  }
  return AssertionSuccess();
}

/// SameBits of a value that has a name.
inline AssertionResult SameValue(std::string const& what, double expected, double actual) {
  if (SameBits(expected, actual)) return AssertionSuccess();
  return AssertionFailure() << what << ": expected " << std::setprecision(17) << expected << ", found "
                            << actual << std::hexfloat << " (" << expected << ", " << actual << ")";
}

}  // namespace zyn_test
