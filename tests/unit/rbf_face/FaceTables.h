#pragma once

#include <gtest/gtest.h>

#include <string>

#include "rbf_face/CZynFaceRBFInternalObject.h"
#include "tests/unit/rbf_face/PlainFaceOperator.h"

// Comparisons of the library's tables with those of the plain form, bit for bit; the first difference is named.

namespace rbf_face_test {

using ::testing::AssertionResult;

/// Points, kinds, marks of boundary nodes, target points, bounds, mean distance and the greatest number of
/// vertices.
AssertionResult SameCollation(const PlainFaceOperator& plain, CZynFaceRBFInternalObject& object);

/// Cells around vertices, vertices of cells, neighbours of cells.
AssertionResult SameConnectivity(const PlainFaceOperator& plain, const CZynFaceRBFInternalObject& object);

/// Stencils alone, which outlive the set-up.
AssertionResult SameStencils(const PlainFaceOperator& plain, const CZynFaceRBFInternalObject& object);

/// What belongs to the stencils and is released: support lengths, vertices, rows of positions, virtual points;
/// and that all marks are clear.
AssertionResult SameStencilWork(const PlainFaceOperator& plain, const CZynFaceRBFInternalObject& object);

/// The rows of coefficients of one face; which of them there are depends on the method.
AssertionResult SameRows(const PlainFaceOperator& plain, const CZynFaceRBFInternalObject& object, int i);

/// The rows of all faces.
AssertionResult SameCoefficients(const PlainFaceOperator& plain, const CZynFaceRBFInternalObject& object);

/// All numbers that the report is made of, before it is printed.
AssertionResult SameReport(const PlainFaceOperator& plain, const CZynFaceRBFInternalObject& object);

AssertionResult SamePoint(const std::string& what, const Point& expected, const IBCnode& actual);

}  // namespace rbf_face_test
