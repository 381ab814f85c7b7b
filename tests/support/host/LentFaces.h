#pragma once

#include <vector>

#include "tests/support/host/GuardedArray.h"
#include "tests/support/host/RaggedTable.h"
#include "tests/support/mesh/TestMesh.h"

namespace zyn_test {

/// The arrays of one group of faces as a host lends them. An empty group lends null pointers, or arrays of
/// nothing but guards, since a host may do either.
struct LentFaces {
  LentFaces() = default;
  explicit LentFaces(std::vector<Face> const& faces);

  /// The address to lend, null for an empty group unless `lendEmptyArrays`.
  template <typename T>
  T* Lend(GuardedArray<T>& array) const {
    return count == 0 && !lendEmptyArrays ? nullptr : array.Data();
  }

  bool IdenticalTo(LentFaces const& o) const;

  int count = 0;
  bool lendEmptyArrays = false;
  GuardedArray<int> cv, other, type;
  GuardedArray<double> sx, sy, sz, xc, yc, zc, weight;
  RaggedTable nodes;
};

}  // namespace zyn_test
