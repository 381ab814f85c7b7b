#pragma once

#include <string>

#include "rbf_face/CZynFaceRBFInternalObject.h"
#include "tests/support/compare/SameBits.h"
#include "tests/support/rbf_face/PlainFaceOperator.h"

// Comparisons of the library's tables with those of the plain form, bit for bit; the first difference is named.

namespace zyn_test {

/// Points, kinds, marks of boundary nodes, target points, bounds, mean distance and the greatest number of
/// vertices.
AssertionResult SameCollation(PlainFaceOperator const& plain, CZynFaceRBFInternalObject& object);

/// Cells around vertices, vertices of cells, neighbours of cells.
AssertionResult SameConnectivity(PlainFaceOperator const& plain, CZynFaceRBFInternalObject const& object);

/// Stencils alone, which outlive the set-up.
AssertionResult SameStencils(PlainFaceOperator const& plain, CZynFaceRBFInternalObject const& object);

/// What belongs to the stencils and is released: support lengths, vertices, rows of positions, virtual points;
/// and that all marks are clear.
AssertionResult SameStencilWork(PlainFaceOperator const& plain, CZynFaceRBFInternalObject const& object);

/// The rows of coefficients of one face; which of them there are depends on the method.
AssertionResult SameRows(PlainFaceOperator const& plain, CZynFaceRBFInternalObject const& object, int i);

/// The rows of all faces.
AssertionResult SameCoefficients(PlainFaceOperator const& plain, CZynFaceRBFInternalObject const& object);

/// All numbers that the report is made of, before it is printed.
AssertionResult SameReport(PlainFaceOperator const& plain, CZynFaceRBFInternalObject const& object);

AssertionResult SamePoint(std::string const& what, Point const& expected, IBCnode const& actual);

}  // namespace zyn_test
