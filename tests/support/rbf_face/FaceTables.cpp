#include "tests/support/rbf_face/FaceTables.h"

#include "tests/support/compare/SameBits.h"
#include "tests/support/rbf_face/FaceBed.h"

namespace zyn_test {
namespace {

using ::testing::PrintToString;

std::string Of(std::string const& what, int number) { return what + " " + std::to_string(number); }

std::size_t At(int i) { return static_cast<std::size_t>(i); }

AssertionResult Same(std::string const& what, int expected, int actual) {
  if (expected == actual) return AssertionSuccess();
  return AssertionFailure() << what << ": expected " << expected << ", found " << actual;
}

AssertionResult Same(std::string const& what, double expected, double actual) {
  return SameValue(what, expected, actual);
}

AssertionResult Same(std::string const& what, std::vector<int> const& expected, int const* row) {
  if (row == nullptr) return AssertionFailure() << what << ": there is no row";
  if (row[0] != static_cast<int>(expected.size()))
    return AssertionFailure() << what << ": expected length " << expected.size() << ", found " << row[0];
  std::vector<int> const actual = RowOf(row);
  if (actual == expected) return AssertionSuccess();
  return AssertionFailure() << what << ": expected " << PrintToString(expected) << ", found "
                            << PrintToString(actual);
}

/// The first failure of several comparisons.
class FirstFailure {
 public:
  FirstFailure& operator<<(AssertionResult const& result) {
    if (result_) result_ = result;
    return *this;
  }
  template <typename Expected, typename Actual>
  void Compare(std::string const& what, Expected const& expected, Actual const& actual) {
    if (result_) result_ = Same(what, expected, actual);
  }
  bool Failed() const { return !result_; }
  AssertionResult Result() const { return result_; }

 private:
  AssertionResult result_ = AssertionSuccess();
};

/// Elements 0..n of a row of values.
void CompareValues(FirstFailure& first, std::string const& what, std::vector<double> const& expected,
                   double const* row) {
  if (row == nullptr) {
    first << (AssertionFailure() << what << ": there is no row");
    return;
  }
  for (std::size_t k = 0; k < expected.size() && !first.Failed(); ++k)
    first.Compare(Of(what + " element", static_cast<int>(k)), expected[k], row[k]);
}

void CompareErrors(FirstFailure& first, std::string const& what, PlainErrors const& expected, double squares,
                   double largest, int face, double sum) {
  first.Compare(what + "RMS", expected.squares, squares);
  first.Compare(what + "MAX", expected.largest, largest);
  first.Compare(what + "MAXFaceID", expected.face, face);
  first.Compare(what + "MAXRBF", expected.sum, sum);
}

void CompareBounds(FirstFailure& first, PlainFaceOperator const& plain, CZynFaceRBFInternalObject const& o) {
  first.Compare("Xmax", plain.high.x, o.Xmax);
  first.Compare("Ymax", plain.high.y, o.Ymax);
  first.Compare("Zmax", plain.high.z, o.Zmax);
  first.Compare("Xmin", plain.low.x, o.Xmin);
  first.Compare("Ymin", plain.low.y, o.Ymin);
  first.Compare("Zmin", plain.low.z, o.Zmin);
  first.Compare("MeanDistance", plain.meanDistance, o.MeanDistance);
  first.Compare("MaxLnods", plain.maxNodes, o.MaxLnods);
}

}  // namespace

AssertionResult SamePoint(std::string const& what, Point const& expected, IBCnode const& actual) {
  FirstFailure first;
  first.Compare(what + " x", expected.x, actual.x);
  first.Compare(what + " y", expected.y, actual.y);
  first.Compare(what + " z", expected.z, actual.z);
  return first.Result();
}

AssertionResult SameCollation(PlainFaceOperator const& plain, CZynFaceRBFInternalObject& object) {
  FirstFailure first;
  for (int c = 1; c <= plain.mesh.NCell; ++c) {
    first << SamePoint(Of("point", c), plain.points[At(c)], object.m_pNodeTable[c]);
    if (plain.kinds[At(c)] != 0) first.Compare(Of("tag", c), c, object.m_pNodeTable[c].tag);
    first.Compare(Of("kind", c), plain.kinds[At(c)], object.m_pCellType[c]);
  }
  first.Compare("size of m_BoundaryNode", plain.mesh.NNode, object.m_BoundaryNode.GetSize());
  for (int v = 1; v <= plain.mesh.NNode; ++v)
    first.Compare(Of("boundary node", v), plain.isBoundaryNode[At(v)] ? 1 : 0,
                  object.m_BoundaryNode[v] ? 1 : 0);
  first.Compare("NFace", plain.nFace, object.NFace);
  for (int i = 1; i <= plain.nFace; ++i) {
    first.Compare(Of("target x", i), plain.targets[At(i)].x, object.m_FaceX[i]);
    first.Compare(Of("target y", i), plain.targets[At(i)].y, object.m_FaceY[i]);
    first.Compare(Of("target z", i), plain.targets[At(i)].z, object.m_FaceZ[i]);
  }
  CompareBounds(first, plain, object);
  return first.Result();
}

AssertionResult SameConnectivity(PlainFaceOperator const& plain, CZynFaceRBFInternalObject const& object) {
  FirstFailure first;
  for (int v = 1; v <= plain.mesh.NNode; ++v)
    first.Compare(Of("cells around vertex", v), plain.nodeCells[At(v)], object.ppRBFiNodeConn[v]);
  for (int c = 1; c <= plain.mesh.NCell; ++c) {
    first.Compare(Of("vertices of cell", c), plain.cellNodes[At(c)], object.m_ppRBFlnods[c]);
    first.Compare(Of("neighbours of cell", c), plain.neighbours[At(c)], object.m_ppRBFCell33Conn[c]);
  }
  return first.Result();
}

AssertionResult SameStencils(PlainFaceOperator const& plain, CZynFaceRBFInternalObject const& object) {
  FirstFailure first;
  for (int i = 1; i <= plain.nFace; ++i)
    first.Compare(Of("stencil", i), plain.stencils[At(i)], object.m_ppFaceCellConn[i]);
  return first.Result();
}

AssertionResult SameStencilWork(PlainFaceOperator const& plain, CZynFaceRBFInternalObject const& object) {
  FirstFailure first;
  int const method = plain.settings.method;
  for (int i = 1; i <= plain.nFace; ++i) {
    if (method != 4) first.Compare(Of("support", i), plain.supports[At(i)], object.m_pFaceSupport[i]);
    if (method == 3) first.Compare(Of("vertices", i), plain.faceNodes[At(i)], object.m_ppFaceLnods[i]);
    if (method >= 3 && RowsOf(object.m_pFaceRows[i]) != plain.rows[At(i)])
      first << (AssertionFailure() << "positions of face " << i << ": expected "
                                   << PrintToString(plain.rows[At(i)]) << ", found "
                                   << PrintToString(RowsOf(object.m_pFaceRows[i])));
    for (int k = 1; k <= 2; ++k) {
      PlainVirtualPoint const& expected = plain.virtualPoints[At(i)][At(k)];
      IBCnode const& actual = object.m_ppVirtualNode[i][k];
      std::string const what = Of(Of("virtual point", k) + " of face", i);
      first << SamePoint(what, expected.point, actual);
      first.Compare(what + " tag", expected.cell, actual.tag);
    }
  }
  for (int c = 0; c <= plain.mesh.NCell; ++c) {
    first.Compare(Of("mark", c), 0, object.m_pMarkAll[c]);
    first.Compare(Of("mark of P", c), 0, object.m_pMarkP[c]);
    first.Compare(Of("mark of E", c), 0, object.m_pMarkE[c]);
  }
  return first.Result();
}

AssertionResult SameRows(PlainFaceOperator const& plain, CZynFaceRBFInternalObject const& object, int i) {
  FirstFailure first;
  int const method = plain.settings.method;
  CompareValues(first, Of("value row", i), plain.fi[At(i)], object.m_ppFaceFiCoef[i]);
  if (method >= 3)
    CompareValues(first, Of("normal row", i), plain.dn[At(i)], object.m_ppFaceDnCoef[i]);
  else if (object.m_ppFaceDnCoef[i] != nullptr)
    first << (AssertionFailure() << "normal row " << i << " should not exist");
  if (method == 4) return first.Result();
  for (std::size_t k = 0; k < plain.gradient[At(i)].size() && !first.Failed(); ++k) {
    std::string const what = Of(Of("slope row", i) + " element", static_cast<int>(k));
    first << SamePoint(what, plain.gradient[At(i)][k], object.m_ppFaceGradCoef[i][k]);
    int const tag = method != 3 && k != 0 ? i : 0;
    first.Compare(what + " tag", tag, object.m_ppFaceGradCoef[i][k].tag);
  }
  return first.Result();
}

AssertionResult SameCoefficients(PlainFaceOperator const& plain, CZynFaceRBFInternalObject const& object) {
  for (int i = 1; i <= plain.nFace; ++i)
    if (AssertionResult same = SameRows(plain, object, i); !same) return same;
  return AssertionSuccess();
}

AssertionResult SameReport(PlainFaceOperator const& plain, CZynFaceRBFInternalObject const& o) {
  FirstFailure first;
  CompareErrors(first, "fi", plain.value, o.fiRMS, o.fiMAX, o.fiMAXFaceID, o.fiMAXRBF);
  CompareErrors(first, "dfidx", plain.ddx, o.dfidxRMS, o.dfidxMAX, o.dfidxMAXFaceID, o.dfidxMAXRBF);
  CompareErrors(first, "dfidy", plain.ddy, o.dfidyRMS, o.dfidyMAX, o.dfidyMAXFaceID, o.dfidyMAXRBF);
  CompareErrors(first, "dfidz", plain.ddz, o.dfidzRMS, o.dfidzMAX, o.dfidzMAXFaceID, o.dfidzMAXRBF);
  CompareErrors(first, "dfidn", plain.ddn, o.dfidnRMS, o.dfidnMAX, o.dfidnMAXFaceID, o.dfidnMAXRBF);
  first.Compare("fiMAXAnalysis", plain.value.face == 0 ? 0.0 : 1.0, o.fiMAXAnalysis);
  first.Compare("NFaceDone", plain.facesDone, o.NFaceDone);
  first.Compare("MAXerr", plain.maxVertexError, o.MAXerr);
  first.Compare("MAXerrNodeID", plain.maxVertexErrorNode, o.MAXerrNodeID);
  return first.Result();
}

}  // namespace zyn_test
