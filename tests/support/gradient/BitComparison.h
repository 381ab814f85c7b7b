#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "tests/support/gradient/PlainForm.h"
#include "tests/support/host/TestHost.h"

namespace gradient_test {

/// Equal bits, so that 0.0 and -0.0 differ; any NaN equals any NaN, since nothing promises which one comes
/// out.
inline bool SameBits(double a, double b) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
  return std::memcmp(&a, &b, sizeof a) == 0;
}

/// SameBits for the elements 1..n of two arrays given by their element 0; names the first that differs.
inline ::testing::AssertionResult SameBits(int n, double const* expected, double const* actual) {
  for (int c = 1; c <= n; ++c) {
    if (SameBits(expected[c], actual[c])) continue;
    return ::testing::AssertionFailure() << "element " << c << " of " << n << ": expected " << std::hexfloat
                                         << expected[c] << ", found " << actual[c];
  }
  return ::testing::AssertionSuccess();
}

inline ::testing::AssertionResult SameBits(std::vector<double> const& expected,
                                           GuardedArray<double> const& actual) {
  if (static_cast<int>(expected.size()) != actual.Size() + 1)
    return ::testing::AssertionFailure()
           << "lengths differ: " << expected.size() - 1 << ", " << actual.Size();
  return SameBits(actual.Size(), expected.data(), actual.Data());
}

/// SameBits for the three components, and whether the guards of the actual arrays are intact.
inline ::testing::AssertionResult SameBits(Gradient const& expected, GuardedGradient const& actual) {
  if (!actual.GuardsIntact()) return ::testing::AssertionFailure() << "written outside 1..NCell";
  ::testing::AssertionResult const x = SameBits(expected.x, actual.x);
  if (!x) return ::testing::AssertionFailure() << "x: " << x.message();
  ::testing::AssertionResult const y = SameBits(expected.y, actual.y);
  if (!y) return ::testing::AssertionFailure() << "y: " << y.message();
  ::testing::AssertionResult const z = SameBits(expected.z, actual.z);
  if (!z) return ::testing::AssertionFailure() << "z: " << z.message();
  return ::testing::AssertionSuccess();
}

/// SameBits of two results.
inline ::testing::AssertionResult SameBits(GuardedGradient const& expected, GuardedGradient const& actual) {
  int const n = expected.x.Size();
  if (!actual.GuardsIntact()) return ::testing::AssertionFailure() << "written outside 1..NCell";
  ::testing::AssertionResult const x = SameBits(n, expected.x.Data(), actual.x.Data());
  if (!x) return x;
  ::testing::AssertionResult const y = SameBits(n, expected.y.Data(), actual.y.Data());
  if (!y) return y;
  return SameBits(n, expected.z.Data(), actual.z.Data());
}

/// Whether the ghost cells of the boundary groups are exactly +0.0.
inline ::testing::AssertionResult GhostsAreZero(MeshDescription const& mesh, GuardedGradient const& g) {
  for (std::vector<Face> const* faces : {&mesh.inlet, &mesh.outlet, &mesh.symmetry, &mesh.wall}) {
    for (Face const& face : *faces) {
      for (GuardedArray<double> const* component : {&g.x, &g.y, &g.z}) {
        double const value = (*component)[face.other];
        if (!SameBits(0.0, value))
          return ::testing::AssertionFailure() << "ghost " << face.other << ": " << value;
      }
    }
  }
  return ::testing::AssertionSuccess();
}

}  // namespace gradient_test
