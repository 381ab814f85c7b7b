// The interpolation to faces. The value at the target point F of face i is a weighted sum over its stencil,
//   v_i = sum_k w_k phi_k,
// with rows of weights that are derived once, at set-up, one method after the other below. Each of their systems is
//   A w = b,   A_kl = kernel(|X_k - X_l|),   b_k = D kernel(|x - X_k|),   D one of d/dx, d/dy, d/dz, value:
// see KernelSystem.h. FaceNodes.h says which nodes X and which kernel a system has.

#include <algorithm>
#include <cstddef>

#include "foundation/DQVector.h"
#include "foundation/Status.h"
#include "foundation/WeightRows.h"
#include "rbf_face/CZynFaceRBFInternalObjectImpl.h"
#include "rbf_face/FaceNodes.h"

// Methods 1 and 2: gradient and value at F from the cells of the stencil.
int CZynFaceRBFInternalObject::DeriveFaceCoefficentBysolveDQfullMatrix(int i) {
  int const* const stencil = m_ppFaceCellConn[i];
  if (stencil == nullptr) return Status::kSuccess;
  KernelSystem& system = work_.Get().faceSystem;
  face_nodes::TakeStencil(*this, i, system);
  double const* const w = system.SolveForGradientAndValue(face_nodes::FaceKernel(*this, i), Target(i));
  IBCnode* const gradient = m_ppFaceGradCoef[i];
  WeightSums const sums = StoreWeights(w, stencil[0], gradient, m_ppFaceFiCoef[i]);
  for (int k = 1; k <= stencil[0]; ++k) gradient[k].tag = i;
  AddGradientErrors(sums.value, sums.gradient, i);
  return Status::kSuccess;
}

// Method 3: gradient and value at F from the face's two cells and its vertices. With (g_n, w_n) the solution at node
// n and u_vm the weights of the cells m around vertex v, the row of a cell m is
//   sum of u_vm (g_v, w_v) over the vertices v that m touches, plus (g_n, w_n) if m is node n = 1 or 2,
// added up in this order.
int CZynFaceRBFInternalObject::DeriveFaceCoefficentBysolveDQfullMatrix_20_03(int i) {
  if (m_ppFaceCellConn[i] == nullptr) return Status::kSuccess;
  int const n = m_ppFaceCellConn[i][0];
  double* const w = SumsOf(n);
  LoadWeights(m_ppFaceGradCoef[i], m_ppFaceFiCoef[i], n, w);
  AddFaceByVertices(i, w);
  WeightSums const sums = StoreWeights(w, n, m_ppFaceGradCoef[i], m_ppFaceFiCoef[i]);
  ++NFaceDone;
  AddGradientErrors(sums.value, sums.gradient, i);
  return Status::kSuccess;
}

// The same for a face that has no rows of weights yet. Those of the normal derivative stay zero.
void CZynFaceRBFInternalObject::DeriveNewFaceByVertices(int i) {
  int const n = m_ppFaceCellConn[i][0];
  double* const w = SumsOf(n);
  std::fill_n(w, kWeightColumns * n, 0.0);
  AddFaceByVertices(i, w);
  WeightSums const sums = MakeWeightRows(w, n, 0, m_ppFaceGradCoef, m_ppFaceFiCoef, i);
  GrowingRowTable<double>::ShareZeros(m_ppFaceDnCoef, i, n);
  ++NFaceDone;
  AddGradientErrors(sums.value, sums.gradient, i);
}

// Adds the weights to w, [0..n-1][0..3].
void CZynFaceRBFInternalObject::AddFaceByVertices(int i, double* w) {
  KernelSystem& system = work_.Get().faceSystem;
  face_nodes::TakePairAndVertices(*this, i, system);
  double const* const solution = system.SolveForGradientAndValue(face_nodes::FaceKernel(*this, i), Target(i));

  constexpr int kCells = 2;
  int const* const vertices = m_ppFaceLnods[i];
  int* const* const positions = m_pFaceRows[i].m_ppRow;
  for (int j = 1; j <= vertices[0]; ++j)
    AddShares(solution + kWeightColumns * (kCells + j - 1), VertexWeights(vertices[j]), positions[j], w);
  AddFirst(solution, kCells, w);
}

// Method 4: linear along the normal between the values at P and E. With u, v the weights of P and E, D = |P - E|:
//   normal derivative: -u / D at the cells around P, + v / D at those around E;
//   value:   u |F - E| / D at the cells around P, v |F - P| / D at those around E.
// Where E is the ghost cell itself, the cell's own value stands for v in the derivative, and |F - E| is 0.
int CZynFaceRBFInternalObject::DeriveFaceCoefficentBysolveDQfullMatrix_Virtual_Node(int i) {
  if (m_ppFaceCellConn[i] == nullptr) return Status::kSuccess;
  IBCnode const &p = m_ppVirtualNode[i][kP], &e = m_ppVirtualNode[i][kE];
  DQVector const at = Target(i);
  double const distance = Length(OffsetBetween(e, p));
  double const toE = Length(OffsetBetween(e, at));
  double const toP = Length(OffsetBetween(p, at));
  double const inverse = 1.0 / distance;
  AddFromCells(i, kP, -inverse, toE / distance);
  if (!IsBoundary(Kind())) {
    AddFromCells(i, kE, inverse, toP / distance);
  } else {
    AddToCellBeyond(i, inverse);
  }
  ++NFaceDone;
  AccumulateNormalReport(i);
  return Status::kSuccess;
}

// The share of virtual node k at the cells around it.
void CZynFaceRBFInternalObject::AddFromCells(int i, int k, double normalFactor, double valueFactor) {
  int const* const positions = m_pFaceRows[i].m_ppRow[k];
  double* const w = WeightsOf(positions[0]);
  DeriveFacefiBysolveDQfullMatrix_Virtual03(false, i, k, w);
  double* const normal = m_ppFaceDnCoef[i];
  double* const value = m_ppFaceFiCoef[i];
  for (int j = 1; j <= positions[0]; ++j) {
    normal[positions[j]] += w[j] * normalFactor;
    value[positions[j]] += w[j] * valueFactor;
  }
}

// A second cell that was dropped as a twin of the first has no place in the row.
void CZynFaceRBFInternalObject::AddToCellBeyond(int i, double normalCoefficient) {
  constexpr int kCellBeyond = 2;  // position of the face's second cell
  if (m_ppFaceCellConn[i][0] >= kCellBeyond) m_ppFaceDnCoef[i][kCellBeyond] += normalCoefficient;
}

// Nothing but loads, multiplies and adds, in the order of the stencil.
int CZynFaceRBFInternalObject::Multiply_FaceRBFCoefficent(double* phi, double* faceValue, double* zero1,
                                                          double* zero2, double* zero3) {
  int const nFace = NFace;
  if (nFace == 0) return Status::kDone;
  for (double* const output : {faceValue, zero1, zero2, zero3})
    std::fill(output + 1, output + nFace + 1, 0.0);

  for (int i = 1; i <= nFace; ++i) {
    int const* const stencil = m_ppFaceCellConn[i];
    if (stencil == nullptr) continue;  // a method that builds none
    double const* const w = m_ppFaceFiCoef[i];
    int const n = stencil[0];
    double value = 0.0;
    for (int k = 1; k <= n; ++k) value += phi[stencil[k]] * w[k];
    faceValue[i] = value;
  }

  // A caller that has one array for all outputs finds the zeros in it, which are written after the value.
  for (double const* const zero : {zero1, zero2, zero3})
    if (zero == faceValue) std::fill(faceValue + 1, faceValue + nFace + 1, 0.0);
  return Status::kDone;
}
