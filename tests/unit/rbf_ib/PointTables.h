#pragma once

#include <gtest/gtest.h>

#include "rbf_ib/CZynIBRBFInternalObject.h"
#include "tests/unit/rbf_cell/TableComparison.h"
#include "tests/unit/rbf_ib/PlainPointOperator.h"

namespace rbf_ib_test {

using rbf_cell_test::SameValue;
using ::testing::AssertionResult;

/// Each compares bit by bit and names the first difference.

/// Positions, kinds, bounds, mean distance and boundary nodes.
AssertionResult SameCollation(const PlainPointOperator& plain, const CZynIBRBFInternalObject& object);

/// The usable cells around every mesh node.
AssertionResult SameNodeCells(const PlainPointOperator& plain, const CZynIBRBFInternalObject& object);

/// Identities in the tree, both ways.
AssertionResult SameIdentities(const PlainPointOperator& plain, const CZynIBRBFInternalObject& object);

/// Stencils and support lengths; for method 3 seeds, nodes and their table too.
AssertionResult SameStencils(const PlainPointOperator& plain, const CZynIBRBFInternalObject& object);

/// Coefficients of all points with their tags, and zeros in element 0.
AssertionResult SameCoefficients(const PlainPointOperator& plain, const CZynIBRBFInternalObject& object);

/// The statistics as the report leaves them.
AssertionResult SameStatistics(const PlainPointOperator& plain, const CZynIBRBFInternalObject& object);

/// All of the above.
AssertionResult SameTables(const PlainPointOperator& plain, const CZynIBRBFInternalObject& object);

/// Two objects on meshes of the same shape with the same content in all tables and members, whatever their
/// addresses.
AssertionResult SameContent(const CZynIBRBFInternalObject& a, const CZynIBRBFInternalObject& b);

}  // namespace rbf_ib_test
