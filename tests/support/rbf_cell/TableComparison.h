#pragma once

#include <string>
#include <vector>

#include "rbf_cell/CZynRBFInternalObject.h"
#include "tests/support/compare/SameBits.h"
#include "tests/support/rbf_cell/PlainCellOperator.h"

namespace zyn_test {

/// A record with x, y, z as given, the same again in x0, y0, z0, and an id.
inline AssertionResult SameRecord(std::string const& what, Triple const& expected, int id,
                                  RBFnode const& actual) {
  double const found[] = {actual.x, actual.y, actual.z, actual.x0, actual.y0, actual.z0};
  char const* const names[] = {" x", " y", " z", " x0", " y0", " z0"};
  for (std::size_t i = 0; i < 6; ++i) {
    AssertionResult const same = SameValue(what + names[i], expected[i % 3], found[i]);
    if (!same) return same;
  }
  if (id != actual.id) return AssertionFailure() << what << " id: expected " << id << ", found " << actual.id;
  return AssertionSuccess();
}

/// The points, kinds and numbers of all cells, and the tree's range.
AssertionResult SameCollation(PlainCellOperator const& plain, CZynRBFInternalObject const& object);

/// Stencils, support lengths and extents of all interior cells, and null rows for the others.
AssertionResult SameStencils(PlainCellOperator const& plain, CZynRBFInternalObject const& object);

/// Weights and multipliers of all interior cells.
AssertionResult SameWeights(PlainCellOperator const& plain, CZynRBFInternalObject const& object);

/// The maxima of the cells and of the faces, and the cell or face at which one last rose.
AssertionResult SameResiduals(PlainCellOperator const& plain, CZynRBFInternalObject const& object);

/// Rows of a table of face weights: elements 1 and 2, and zeros in elements 0 and 3.
AssertionResult SameFaceRows(std::vector<std::vector<Triple>> const& expected, RBFnode* const* table);

}  // namespace zyn_test
