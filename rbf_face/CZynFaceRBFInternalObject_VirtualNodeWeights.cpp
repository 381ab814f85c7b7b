// The systems of virtual nodes, and the rows of coefficients made of their solutions.

#include <algorithm>
#include <cstddef>

#include "foundation/DQVector.h"
#include "host/Zyn3dGV.h"
#include "rbf_face/CZynFaceRBFInternalObjectImpl.h"
#include "rbf_face/FaceC2Kernel.h"

namespace {

constexpr int kSuccess = 1;

constexpr int kCellBeyond = 2;  // position of the face's second cell

}  // namespace

int CZynFaceRBFInternalObject::DeriveFacefiBysolveDQfullMatrix_Virtual03(bool fromVertices, int i, int k,
                                                                         double* out) {
  IBCnode const& node = m_ppVirtualNode[i][k];
  DQVector const at = {node.x, node.y, node.z};
  KernelSystem& system = work_.Get().pointSystem;
  system.Clear();
  if (fromVertices) {
    AddVertices(system, node.tag);
  } else {
    AddCells(system, i, k);
  }
  double const* const solution = system.SolveForValue(FaceC2Kernel(Span, Reach(system, at)), at);
  std::copy_n(solution, system.Size(), out + 1);
  return kSuccess;
}

void CZynFaceRBFInternalObject::AddVertices(KernelSystem& system, int c) const {
  int const* const vertices = m_ppRBFlnods[c];
  if (vertices == nullptr) return;
  for (int j = 1; j <= vertices[0]; ++j) system.Add(VertexPoint(vertices[j]));
}

// A dropped twin has the position 0, where the row has its length, and that is taken for a cell, on purpose.
// A length beyond the cells is no cell.
void CZynFaceRBFInternalObject::AddCells(KernelSystem& system, int i, int k) const {
  int const* const stencil = m_ppFaceCellConn[i];
  int const* const positions = m_pFaceRows[i].m_ppRow[k];
  for (int j = 1; j <= positions[0]; ++j) {
    int const c = stencil[positions[j]];
    system.Add(PointOf(c <= pMesh->NCell ? c : 0));
  }
}

// With u, v the weights of P and E, D = |P - E|, and F the target point:
//   normal derivative: -u / D at the cells of P, + v / D at those of E;
//   value:   u |F - E| / D at the cells of P, v |F - P| / D at those of E.
// Where E is the ghost cell itself, it stands for v in the derivative, and |F - E| is 0.
int CZynFaceRBFInternalObject::DeriveFaceCoefficentBysolveDQfullMatrix_Virtual_Node(int i) {
  if (m_ppFaceCellConn[i] == nullptr) return kSuccess;
  IBCnode const &p = m_ppVirtualNode[i][kP], &e = m_ppVirtualNode[i][kE];
  DQVector const at = Target(i);
  double const distance = Length(OffsetBetween(e, p));
  double const toE = Length(OffsetBetween(e, at));
  double const toP = Length(OffsetBetween(p, at));
  double const inverse = 1.0 / distance;
  double* const normal = m_ppFaceDnCoef[i];
  double* const value = m_ppFaceFiCoef[i];

  auto const add = [&](int k, double normalFactor, double valueFactor) {
    int const* const positions = m_pFaceRows[i].m_ppRow[k];
    double* const w = WeightsOf(positions[0]);
    DeriveFacefiBysolveDQfullMatrix_Virtual03(false, i, k, w);
    for (int j = 1; j <= positions[0]; ++j) {
      normal[positions[j]] += w[j] * normalFactor;
      value[positions[j]] += w[j] * valueFactor;
    }
  };
  add(kP, -inverse, toE / distance);
  if (HasCellBeyond(iFaceType)) {
    add(kE, inverse, toP / distance);
  } else {
    AddToCellBeyond(i, inverse);
  }
  ++NFaceDone;
  AccumulateNormalReport(i);
  return kSuccess;
}

// A second cell that was dropped as a twin of the first has no place in the row.
void CZynFaceRBFInternalObject::AddToCellBeyond(int i, double normalCoefficient) {
  if (m_ppFaceCellConn[i][0] >= kCellBeyond) m_ppFaceDnCoef[i][kCellBeyond] += normalCoefficient;
}

// With w the weights of the vertices around P and u those of the cells around a vertex:
//   normal derivative: (w / D) u at the cells; value: w |F - P| / D at every cell, without u, on purpose.
// The side of E likewise, the derivative with the opposite sign, its rows behind those of P.
int CZynFaceRBFInternalObject::DeriveFaceCoefficentBysolveDQfullMatrix_Virtual_Node_30_03(int i) {
  if (m_ppFaceCellConn[i] == nullptr) return kSuccess;
  IBCnode const &p = m_ppVirtualNode[i][kP], &e = m_ppVirtualNode[i][kE];
  double const distance = Length(OffsetBetween(e, p));
  double const inverse = 1.0 / distance;
  double const ratio = Length(OffsetBetween(p, Target(i))) / distance;
  int const nRowOfP = AddFromVertices(i, kP, 0, inverse, ratio);
  if (iFaceType == kInnerFaces) {
    AddFromVertices(i, kE, nRowOfP, -inverse, ratio);
  } else {
    AddToCellBeyond(i, -inverse);
  }
  ++NFaceDone;
  AccumulateNormalReport(i);
  return kSuccess;
}

// The share of virtual node k, whose vertices have the rows from firstRow + 1 on. @return number of its
// vertices
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

double* CZynFaceRBFInternalObject::WeightsOf(int n) {
  std::vector<double>& weights = work_.Get().weights;
  if (weights.size() < static_cast<std::size_t>(n) + 1) weights.resize(static_cast<std::size_t>(n) + 1);
  return weights.data();
}
