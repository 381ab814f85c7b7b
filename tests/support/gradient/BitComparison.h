#pragma once

#include <vector>

#include "tests/support/compare/SameBits.h"
#include "tests/support/gradient/PlainForm.h"
#include "tests/support/host/GuardedArray.h"

namespace zyn_test {

inline AssertionResult SameBits(std::vector<double> const& expected, GuardedArray<double> const& actual) {
  if (static_cast<int>(expected.size()) != actual.Size() + 1)
    return AssertionFailure() << "lengths differ: " << expected.size() - 1 << ", " << actual.Size();
  return SameBits(actual.Size(), expected.data(), actual.Data());
}

/// SameBits for the three components, and whether the guards of the actual arrays are intact.
inline AssertionResult SameBits(Gradient const& expected, GuardedGradient const& actual) {
  if (!actual.GuardsIntact()) return AssertionFailure() << "written outside 1..NCell";
  AssertionResult const x = SameBits(expected.x, actual.x);
  if (!x) return AssertionFailure() << "x: " << x.message();
  AssertionResult const y = SameBits(expected.y, actual.y);
  if (!y) return AssertionFailure() << "y: " << y.message();
  AssertionResult const z = SameBits(expected.z, actual.z);
  if (!z) return AssertionFailure() << "z: " << z.message();
  return AssertionSuccess();
}

/// SameBits of two results.
inline AssertionResult SameBits(GuardedGradient const& expected, GuardedGradient const& actual) {
  int const n = expected.x.Size();
  if (!actual.GuardsIntact()) return AssertionFailure() << "written outside 1..NCell";
  AssertionResult const x = SameBits(n, expected.x.Data(), actual.x.Data());
  if (!x) return x;
  AssertionResult const y = SameBits(n, expected.y.Data(), actual.y.Data());
  if (!y) return y;
  return SameBits(n, expected.z.Data(), actual.z.Data());
}

/// Whether the ghost cells of the boundary groups are exactly +0.0.
inline AssertionResult GhostsAreZero(TestMesh const& mesh, GuardedGradient const& g) {
  for (std::vector<Face> const* faces : {&mesh.inlet, &mesh.outlet, &mesh.symmetry, &mesh.wall}) {
    for (Face const& face : *faces) {
      for (GuardedArray<double> const* component : {&g.x, &g.y, &g.z}) {
        double const value = (*component)[face.other];
        if (!SameBits(0.0, value)) return AssertionFailure() << "ghost " << face.other << ": " << value;
      }
    }
  }
  return AssertionSuccess();
}

}  // namespace zyn_test
