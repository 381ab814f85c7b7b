#include "tests/support/rbf_cell/TableComparison.h"

namespace zyn_test {
namespace {

std::string Of(char const* what, int number) { return std::string(what) + " " + std::to_string(number); }

AssertionResult SameInt(std::string const& what, int expected, int actual) {
  if (expected == actual) return AssertionSuccess();
  return AssertionFailure() << what << ": expected " << expected << ", found " << actual;
}

Triple AsTriple(Point p) { return {p.x, p.y, p.z}; }

AssertionResult SameStencil(PlainCellOperator const& plain, CZynRBFInternalObject const& object, int cell) {
  std::vector<int> const& expected = plain.stencils[static_cast<std::size_t>(cell)];
  int const* const row = object.m_ppRBFCellConn[cell];
  int const n = static_cast<int>(expected.size());
  if (AssertionResult same = SameInt(Of("size of stencil", cell), n, row[0]); !same) return same;
  for (int m = 1; m <= n; ++m) {
    int const member = expected[static_cast<std::size_t>(m - 1)];
    if (AssertionResult same = SameInt(Of("stencil", cell) + Of(" member", m), member, row[m]); !same)
      return same;
  }
  if (AssertionResult same = SameInt(Of("element beyond stencil", cell), 0, row[n + 1]); !same) return same;
  double const h = plain.supportLengths[static_cast<std::size_t>(cell)];
  if (AssertionResult same = SameValue(Of("support length", cell), h, object.m_pSupportLength[cell]); !same)
    return same;
  return SameRecord(Of("extent", cell), AsTriple(plain.extents[static_cast<std::size_t>(cell)]), cell,
                    object.m_pStencilExtent[cell]);
}

AssertionResult SameCellWeights(PlainCellOperator const& plain, CZynRBFInternalObject const& object,
                                int cell) {
  std::vector<Triple> const& expected = plain.weights[static_cast<std::size_t>(cell)];
  RBFnode const* const row = object.m_ppRBFCellCoef[cell];
  if (AssertionResult same = SameRecord(Of("weight 0 of cell", cell), Triple{}, 0, row[0]); !same)
    return same;
  for (std::size_t k = 0; k < expected.size(); ++k) {
    std::string const what = Of("cell", cell) + Of(" weight", static_cast<int>(k) + 1);
    if (AssertionResult same = SameRecord(what, expected[k], cell, row[k + 1]); !same) return same;
  }
  return AssertionSuccess();
}

AssertionResult SamePoint(char const* what, Point expected, double const* actual) {
  Triple const triple = AsTriple(expected);
  for (std::size_t a = 0; a < 3; ++a) {
    if (AssertionResult same = SameValue(Of(what, static_cast<int>(a)), triple[a], actual[a]); !same)
      return same;
  }
  return AssertionSuccess();
}

}  // namespace

AssertionResult SameCollation(PlainCellOperator const& plain, CZynRBFInternalObject const& object) {
  for (int c = 1; c <= plain.mesh.NCell(); ++c) {
    CollatedPoint const& expected = plain.points[static_cast<std::size_t>(c)];
    AssertionResult const point =
        SameRecord(Of("point", c), AsTriple(expected.point), expected.id, object.m_pRBFnode[c]);
    if (!point) return point;
    if (AssertionResult same = SameInt(Of("kind", c), expected.kind, object.m_piNodeKind[c]); !same)
      return same;
    if (AssertionResult same = SameInt(Of("index", c), expected.index, object.m_piNodeKindIndex[c]); !same)
      return same;
  }
  if (AssertionResult same = SamePoint("upper bound", plain.boundMax, object.m_dBoundMax); !same) return same;
  return SamePoint("lower bound", plain.boundMin, object.m_dBoundMin);
}

AssertionResult SameStencils(PlainCellOperator const& plain, CZynRBFInternalObject const& object) {
  for (int c = 1; c <= plain.mesh.nInnerCells; ++c) {
    if (AssertionResult same = SameStencil(plain, object, c); !same) return same;
  }
  for (int c = plain.mesh.nInnerCells + 1; c <= plain.mesh.NCell(); ++c) {
    if (object.m_ppRBFCellConn[c] != nullptr || object.m_ppRBFCellCoef[c] != nullptr)
      return AssertionFailure() << "cell " << c << " is not interior and has a row";
  }
  return AssertionSuccess();
}

AssertionResult SameWeights(PlainCellOperator const& plain, CZynRBFInternalObject const& object) {
  for (int c = 1; c <= plain.mesh.nInnerCells; ++c) {
    if (AssertionResult same = SameCellWeights(plain, object, c); !same) return same;
  }
  return AssertionSuccess();
}

AssertionResult SameResiduals(PlainCellOperator const& plain, CZynRBFInternalObject const& object) {
  Residuals const& r = plain.residuals;
  if (AssertionResult same = SameValue("MAXResidual_X", r.x, object.MAXResidual_X); !same) return same;
  if (AssertionResult same = SameValue("MAXResidual_Y", r.y, object.MAXResidual_Y); !same) return same;
  if (AssertionResult same = SameValue("MAXResidual_Z", r.z, object.MAXResidual_Z); !same) return same;
  return SameInt("m_iWorstElement", r.worst, object.m_iWorstElement);
}

AssertionResult SameFaceRows(std::vector<std::vector<Triple>> const& expected, RBFnode* const* table) {
  for (int f = 1; f <= static_cast<int>(expected.size()); ++f) {
    std::vector<Triple> const& rows = expected[static_cast<std::size_t>(f - 1)];
    if (AssertionResult same = SameRecord(Of("element 0 of face", f), Triple{}, 0, table[f][0]); !same)
      return same;
    for (int k = 1; k <= 2; ++k) {
      std::string const what = Of("face", f) + Of(" weight", k);
      AssertionResult const same = SameRecord(what, rows[static_cast<std::size_t>(k - 1)], f, table[f][k]);
      if (!same) return same;
    }
    if (AssertionResult same = SameRecord(Of("element 3 of face", f), Triple{}, 0, table[f][3]); !same)
      return same;
  }
  return AssertionSuccess();
}

}  // namespace zyn_test
