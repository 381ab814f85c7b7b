#pragma once

#include <gtest/gtest.h>

#include "rbf_ib/CZynIBRBFInternalObject.h"
#include "tests/support/compare/SameBits.h"
#include "tests/support/rbf_ib/PlainPointOperator.h"

namespace zyn_test {

/// Each compares bit by bit and names the first difference.

/// Positions, kinds, bounds, mean distance and boundary nodes.
AssertionResult SameCollation(PlainPointOperator const& plain, CZynIBRBFInternalObject const& object);

/// The usable cells around every mesh node.
AssertionResult SameNodeCells(PlainPointOperator const& plain, CZynIBRBFInternalObject const& object);

/// Identities in the tree, both ways.
AssertionResult SameIdentities(PlainPointOperator const& plain, CZynIBRBFInternalObject const& object);

/// Stencils and support lengths; for method 3 seeds, nodes and their table too.
AssertionResult SameStencils(PlainPointOperator const& plain, CZynIBRBFInternalObject const& object);

/// Coefficients of all points with their tags, and zeros in element 0.
AssertionResult SameCoefficients(PlainPointOperator const& plain, CZynIBRBFInternalObject const& object);

/// The statistics as the report leaves them.
AssertionResult SameStatistics(PlainPointOperator const& plain, CZynIBRBFInternalObject const& object);

/// All of the above.
AssertionResult SameTables(PlainPointOperator const& plain, CZynIBRBFInternalObject const& object);

/// Two objects on meshes of the same shape with the same content in all tables and members, whatever their
/// addresses.
AssertionResult SameContent(CZynIBRBFInternalObject const& a, CZynIBRBFInternalObject const& b);

}  // namespace zyn_test
