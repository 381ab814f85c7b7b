#include "tests/support/rbf_ib/PointTables.h"

#include <cmath>
#include <string>

#include "host/Zyn3dGV.h"

namespace zyn_test {
namespace {

constexpr std::size_t At(int i) { return static_cast<std::size_t>(i); }

std::string Of(char const* what, int number) { return std::string(what) + " " + std::to_string(number); }

/// Runs comparisons until the first that fails, and keeps that.
class Comparison {
 public:
  void Int(std::string const& what, int expected, int actual) {
    if (result_ && expected != actual)
      result_ = AssertionFailure() << what << ": expected " << expected << ", found " << actual;
  }
  void Real(std::string const& what, double expected, double actual) {
    if (result_) result_ = SameValue(what, expected, actual);
  }
  void Row(std::string const& what, std::vector<int> const& expected, int const* row) {
    if (result_ && row == nullptr) result_ = AssertionFailure() << what << ": no row";
    Int(what + " length", static_cast<int>(expected.size()), row == nullptr ? -1 : row[0]);
    for (std::size_t k = 0; k < expected.size() && result_; ++k)
      Int(what + Of(" entry", static_cast<int>(k) + 1), expected[k], row[k + 1]);
  }
  void Take(AssertionResult result) {
    if (result_) result_ = result;
  }
  explicit operator bool() const { return static_cast<bool>(result_); }
  AssertionResult Result() const { return result_; }

 private:
  AssertionResult result_ = AssertionSuccess();
};

std::vector<int> RowOf(int const* row) {
  return row == nullptr ? std::vector<int>() : std::vector<int>(row + 1, row + 1 + row[0]);
}

void CompareStatistics(Comparison& compare, char const* what, Statistics const& expected, int nDerived,
                       double rms, double largest, int point, double there) {
  std::string const name = what;
  compare.Real(name + " rms", std::sqrt(expected.sumOfSquares / nDerived), rms);
  compare.Real(name + " largest", expected.largest, largest);
  compare.Int(name + " point", expected.point, point);
  compare.Real(name + " there", expected.there, there);
}

// Existing rows have the same content, missing ones are missing in both.
template <typename CompareRow>
void CompareRows(Comparison& compare, char const* what, void const* a, void const* b, CompareRow compareRow) {
  compare.Int(std::string(what) + " exists", a != nullptr, b != nullptr);
  if (a != nullptr && b != nullptr && compare) compareRow();
}

void CompareScalars(Comparison& compare, CZynIBRBFInternalObject const& a, CZynIBRBFInternalObject const& b) {
  compare.Int("method", a.iSearch_method, b.iSearch_method);
  compare.Real("distance", a.Search_distance, b.Search_distance);
  compare.Int("number", a.Search_number, b.Search_number);
  compare.Real("span", a.Span, b.Span);
  compare.Real("mean distance", a.MeanDistance, b.MeanDistance);
  double const boundsA[] = {a.Xmax, a.Ymax, a.Zmax, a.Xmin, a.Ymin, a.Zmin};
  double const boundsB[] = {b.Xmax, b.Ymax, b.Zmax, b.Xmin, b.Ymin, b.Zmin};
  for (int k = 0; k < 6; ++k) compare.Real(Of("bound", k), boundsA[k], boundsB[k]);
  compare.Int("points", a.m_iNIBNode, b.m_iNIBNode);
  compare.Int("derived", a.m_iNDerived, b.m_iNDerived);
}

void CompareStatistics(Comparison& compare, CZynIBRBFInternalObject const& a,
                       CZynIBRBFInternalObject const& b) {
  auto const values = [](CZynIBRBFInternalObject const& o) {
    return std::vector<double>{o.m_dFiSumSq,      o.m_dFiMaxError,   o.m_dFiMaxAnalysis, o.m_dFiMaxRBF,
                               o.m_dDfdxSumSq,    o.m_dDfdxMaxError, o.m_dDfdxMaxRBF,    o.m_dDfdySumSq,
                               o.m_dDfdyMaxError, o.m_dDfdyMaxRBF,   o.m_dDfdzSumSq,     o.m_dDfdzMaxError,
                               o.m_dDfdzMaxRBF};
  };
  std::vector<double> const first = values(a), second = values(b);
  for (std::size_t k = 0; k < first.size(); ++k)
    compare.Real(Of("statistic", static_cast<int>(k)), first[k], second[k]);
  compare.Int("value's point", a.m_iFiMaxPoint, b.m_iFiMaxPoint);
  compare.Int("x's point", a.m_iDfdxMaxPoint, b.m_iDfdxMaxPoint);
  compare.Int("y's point", a.m_iDfdyMaxPoint, b.m_iDfdyMaxPoint);
  compare.Int("z's point", a.m_iDfdzMaxPoint, b.m_iDfdzMaxPoint);
}

void CompareCells(Comparison& compare, CZynIBRBFInternalObject const& a, CZynIBRBFInternalObject const& b) {
  for (int c = 1; c <= a.m_pMesh->NCell && compare; ++c) {
    IBCnode const &p = a.m_pIBCnode[c], &q = b.m_pIBCnode[c];
    compare.Real(Of("x of cell", c), p.x, q.x);
    compare.Real(Of("y of cell", c), p.y, q.y);
    compare.Real(Of("z of cell", c), p.z, q.z);
    compare.Int(Of("tag of cell", c), p.tag, q.tag);
    compare.Int(Of("kind of cell", c), a.m_piNodeKind[c], b.m_piNodeKind[c]);
    compare.Int(Of("identity of cell", c), a.m_piCellToBlock[c], b.m_piCellToBlock[c]);
    int const block = a.m_piCellToBlock[c];
    if (block > 0)
      compare.Int(Of("cell of identity", block), a.m_piBlockToCell[block], b.m_piBlockToCell[block]);
  }
  for (int n = 1; n <= a.m_pMesh->NNode && compare; ++n)
    compare.Row(Of("cells of node", n), RowOf(a.ppRBFiNodeConn[n]), b.ppRBFiNodeConn[n]);
}

void CompareCoefficients(Comparison& compare, int i, int n, IBCnode const* a, IBCnode const* b,
                         double const* valueA, double const* valueB) {
  for (int k = 0; k <= n; ++k) {
    std::string const what = Of("point", i) + Of(" coefficient", k);
    compare.Real(what + " x", a[k].x, b[k].x);
    compare.Real(what + " y", a[k].y, b[k].y);
    compare.Real(what + " z", a[k].z, b[k].z);
    compare.Int(what + " tag", a[k].tag, b[k].tag);
    compare.Real(what + " value", valueA[k], valueB[k]);
  }
}

void CompareNodeTables(Comparison& compare, int i, Cpp_DataStructure& a, Cpp_DataStructure& b) {
  compare.Int(Of("node table", i), a.m_iNRow, b.m_iNRow);
  compare.Int(Of("node table exists", i), a.m_ppRow != nullptr, b.m_ppRow != nullptr);
  if (a.m_ppRow == nullptr || !compare) return;
  for (int j = 1; j <= a.m_iNRow && compare; ++j)
    compare.Row(Of("node table", i) + Of(" row", j), RowOf(a.m_ppRow[j]), b.m_ppRow[j]);
}

void ComparePoints(Comparison& compare, CZynIBRBFInternalObject const& a, CZynIBRBFInternalObject const& b) {
  for (int i = 1; i <= a.m_iNIBNode && compare; ++i) {
    CompareRows(compare, "stencil", a.m_ppIBConn[i], b.m_ppIBConn[i], [&] {
      compare.Row(Of("stencil", i), RowOf(a.m_ppIBConn[i]), b.m_ppIBConn[i]);
      if (compare)
        CompareCoefficients(compare, i, a.m_ppIBConn[i][0], a.m_ppIBCoef[i], b.m_ppIBCoef[i],
                            a.m_ppIBValueCoef[i], b.m_ppIBValueCoef[i]);
    });
    CompareRows(compare, "nodes", a.m_ppIBNodeConn[i], b.m_ppIBNodeConn[i],
                [&] { compare.Row(Of("nodes", i), RowOf(a.m_ppIBNodeConn[i]), b.m_ppIBNodeConn[i]); });
    compare.Real(Of("support", i), a.m_pIBSupportLength[i], b.m_pIBSupportLength[i]);
    compare.Int(Of("two seeds", i), a.m_pIBTwoSeeds[i], b.m_pIBTwoSeeds[i]);
    CompareNodeTables(compare, i, a.m_pIBNodeCellTable[i], b.m_pIBNodeCellTable[i]);
  }
}

}  // namespace

AssertionResult SameCollation(PlainPointOperator const& plain, CZynIBRBFInternalObject const& object) {
  Comparison compare;
  Point const &high = plain.boundMax, &low = plain.boundMin;
  double const expected[] = {high.x, high.y, high.z, low.x, low.y, low.z};
  double const found[] = {object.Xmax, object.Ymax, object.Zmax, object.Xmin, object.Ymin, object.Zmin};
  for (int k = 0; k < 6; ++k) compare.Real(Of("bound", k), expected[k], found[k]);
  compare.Real("mean distance", plain.meanDistance, object.MeanDistance);
  for (int c = 1; c <= plain.mesh.NCell && compare; ++c) {
    Point const& p = plain.positions[At(c)];
    compare.Real(Of("x of cell", c), p.x, object.m_pIBCnode[c].x);
    compare.Real(Of("y of cell", c), p.y, object.m_pIBCnode[c].y);
    compare.Real(Of("z of cell", c), p.z, object.m_pIBCnode[c].z);
    compare.Int(Of("tag of cell", c), plain.tags[At(c)], object.m_pIBCnode[c].tag);
    compare.Int(Of("kind of cell", c), plain.kinds[At(c)], object.m_piNodeKind[c]);
  }
  for (int n = 1; n <= plain.mesh.NNode && compare; ++n)
    compare.Int(Of("boundary node", n), plain.boundaryNode[At(n)], object.m_bBoundaryNode[n]);
  return compare.Result();
}

AssertionResult SameNodeCells(PlainPointOperator const& plain, CZynIBRBFInternalObject const& object) {
  Comparison compare;
  for (int n = 1; n <= plain.mesh.NNode && compare; ++n)
    compare.Row(Of("cells of node", n), plain.nodeCells[At(n)], object.ppRBFiNodeConn[n]);
  return compare.Result();
}

AssertionResult SameIdentities(PlainPointOperator const& plain, CZynIBRBFInternalObject const& object) {
  Comparison compare;
  for (int c = 1; c <= plain.mesh.NCell; ++c)
    compare.Int(Of("identity of cell", c), plain.cellToBlock[At(c)], object.m_piCellToBlock[c]);
  for (int b = 0; b < static_cast<int>(plain.blockToCell.size()); ++b)
    compare.Int(Of("cell of identity", b), plain.blockToCell[At(b)], object.m_piBlockToCell[b]);
  return compare.Result();
}

AssertionResult SameStencils(PlainPointOperator const& plain, CZynIBRBFInternalObject const& object) {
  Comparison compare;
  for (int i = 1; i < static_cast<int>(plain.stencils.size()) && compare; ++i) {
    compare.Row(Of("stencil", i), plain.stencils[At(i)], object.m_ppIBConn[i]);
    compare.Real(Of("support", i), plain.supports[At(i)], object.m_pIBSupportLength[i]);
    if (plain.settings.method != 3 || !compare) continue;
    compare.Int(Of("two seeds", i), plain.twoSeeds[At(i)], object.m_pIBTwoSeeds[i]);
    compare.Row(Of("nodes", i), plain.pointNodes[At(i)], object.m_ppIBNodeConn[i]);
    Cpp_DataStructure& table = object.m_pIBNodeCellTable[i];
    auto const& rows = plain.nodeTable[At(i)];
    compare.Int(Of("node table", i), static_cast<int>(rows.size()), table.m_iNRow);
    for (int j = 1; j <= static_cast<int>(rows.size()) && compare; ++j)
      compare.Row(Of("node table", i) + Of(" row", j), rows[At(j - 1)], table.m_ppRow[j]);
  }
  return compare.Result();
}

AssertionResult SameCoefficients(PlainPointOperator const& plain, CZynIBRBFInternalObject const& object) {
  Comparison compare;
  for (int i = 1; i < static_cast<int>(plain.weights.size()) && compare; ++i) {
    std::vector<Weights> const& expected = plain.weights[At(i)];
    int const tag = plain.settings.method == 3 ? 0 : i;
    for (int k = 0; k <= static_cast<int>(expected.size()) && compare; ++k) {
      std::string const what = Of("point", i) + Of(" coefficient", k);
      Weights const w = k == 0 ? Weights() : expected[At(k - 1)];
      IBCnode const& found = object.m_ppIBCoef[i][k];
      compare.Real(what + " x", w.x, found.x);
      compare.Real(what + " y", w.y, found.y);
      compare.Real(what + " z", w.z, found.z);
      compare.Int(what + " tag", k == 0 ? 0 : tag, found.tag);
      compare.Real(what + " value", w.value, object.m_ppIBValueCoef[i][k]);
    }
  }
  return compare.Result();
}

AssertionResult SameStatistics(PlainPointOperator const& plain, CZynIBRBFInternalObject const& o) {
  Comparison compare;
  int const n = plain.nDerived;
  compare.Int("derived", n, o.m_iNDerived);
  CompareStatistics(compare, "value", plain.value, n, o.m_dFiSumSq, o.m_dFiMaxError, o.m_iFiMaxPoint,
                    o.m_dFiMaxRBF);
  compare.Real("value analysis", plain.value.point > 0 ? 1.0 : 0.0, o.m_dFiMaxAnalysis);
  CompareStatistics(compare, "d/dx", plain.dx, n, o.m_dDfdxSumSq, o.m_dDfdxMaxError, o.m_iDfdxMaxPoint,
                    o.m_dDfdxMaxRBF);
  CompareStatistics(compare, "d/dy", plain.dy, n, o.m_dDfdySumSq, o.m_dDfdyMaxError, o.m_iDfdyMaxPoint,
                    o.m_dDfdyMaxRBF);
  CompareStatistics(compare, "d/dz", plain.dz, n, o.m_dDfdzSumSq, o.m_dDfdzMaxError, o.m_iDfdzMaxPoint,
                    o.m_dDfdzMaxRBF);
  return compare.Result();
}

AssertionResult SameTables(PlainPointOperator const& plain, CZynIBRBFInternalObject const& object) {
  for (auto const compare :
       {SameCollation, SameNodeCells, SameIdentities, SameStencils, SameCoefficients, SameStatistics}) {
    if (AssertionResult same = compare(plain, object); !same) return same;
  }
  return AssertionSuccess();
}

AssertionResult SameContent(CZynIBRBFInternalObject const& a, CZynIBRBFInternalObject const& b) {
  Comparison compare;
  CompareScalars(compare, a, b);
  CompareStatistics(compare, a, b);
  if (compare) CompareCells(compare, a, b);
  if (compare) ComparePoints(compare, a, b);
  return compare.Result();
}

}  // namespace zyn_test
