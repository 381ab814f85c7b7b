// Two other ways to derive the rows of a face. Nothing in the library calls them.

#include <algorithm>

#include "foundation/DQVector.h"
#include "foundation/Status.h"
#include "rbf_face/CZynFaceRBFInternalObjectImpl.h"
#include "rbf_face/FaceNodes.h"

// With w the weights of the vertices around P and u those of the cells around a vertex:
//   normal derivative: (w / D) u at the cells;   value: w |F - P| / D at every cell, not multiplied by u.
// The side of E likewise, with the opposite sign of the derivative; its rows stand behind those of P.
int CZynFaceRBFInternalObject::DeriveFaceCoefficentBysolveDQfullMatrix_Virtual_Node_30_03(int i) {
  if (m_ppFaceCellConn[i] == nullptr) return Status::kSuccess;
  IBCnode const &p = m_ppVirtualNode[i][kP], &e = m_ppVirtualNode[i][kE];
  double const distance = Length(OffsetBetween(e, p));
  double const inverse = 1.0 / distance;
  double const ratio = Length(OffsetBetween(p, Target(i))) / distance;
  int const nRowOfP = AddFromVertices(i, kP, 0, inverse, ratio);
  if (Kind() == FaceKind::Inner) {
    AddFromVertices(i, kE, nRowOfP, -inverse, ratio);
  } else {
    AddToCellBeyond(i, -inverse);
  }
  ++NFaceDone;
  AccumulateNormalReport(i);
  return Status::kSuccess;
}

// The share of virtual node k, whose vertices have the rows from firstRow + 1 on. @return number of its vertices
int CZynFaceRBFInternalObject::AddFromVertices(int i, int k, int firstRow, double normalFactor,
                                               double valueFactor) {
  int const* const vertices = m_ppRBFlnods[m_ppVirtualNode[i][k].tag];
  if (vertices == nullptr) return 0;
  double* const w = WeightsOf(vertices[0]);
  DeriveFacefiBysolveDQfullMatrix_Virtual03(true, i, k, w);
  int const nVertex = std::min(vertices[0], m_pFaceRows[i].m_iNRow - firstRow);
  for (int j = 1; j <= nVertex; ++j) {
    double const* const u = VertexWeights(vertices[j]);
    int const* const positions = m_pFaceRows[i].m_ppRow[firstRow + j];
    for (int m = 1; m <= positions[0]; ++m) {
      m_ppFaceDnCoef[i][positions[m]] += w[j] * normalFactor * u[m];
      m_ppFaceFiCoef[i][positions[m]] += w[j] * valueFactor;
    }
  }
  return vertices[0];
}

// The system of the two cells by themselves. Its solution is not stored.
int CZynFaceRBFInternalObject::DeriveFaceCoefficentBysolveDQfullMatrix_Cell_PE(int i) {
  int const* const stencil = m_ppFaceCellConn[i];
  if (stencil == nullptr || stencil[0] < 2) return Status::kSuccess;
  DQVector const at = Target(i);
  KernelSystem& system = work_.Get().faceSystem;
  system.Clear();
  for (int k = 1; k <= 2; ++k) system.Add(PointOf(stencil[k]));
  double const h =
      std::max(Length(OffsetBetween(system.Node(0), at)), Length(OffsetBetween(system.Node(1), at)));
  system.SolveForGradientAndValue(PlainDQKernel(Span, h), at);
  return Status::kSuccess;
}
