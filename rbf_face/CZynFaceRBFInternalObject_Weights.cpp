// The systems of faces and vertices of methods 1 to 3, and the rows of coefficients made of their solutions.

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "foundation/DQKernel.h"
#include "foundation/DQVector.h"
#include "host/Zyn3dGV.h"
#include "rbf_face/CZynFaceRBFInternalObjectImpl.h"

namespace {

constexpr int kSuccess = 1;

constexpr int kColumns = 4;  // of a solution with gradient and value: d/dx, d/dy, d/dz, value

// IBCnode::SetDataVector, here where it can be inlined: it runs for every cell around every vertex of a face.
void Add(double dx, double dy, double dz, IBCnode& sum) {
  sum.x += dx;
  sum.y += dy;
  sum.z += dz;
}

}  // namespace

int CZynFaceRBFInternalObject::DeriveFaceCoefficentBysolveDQfullMatrix(int i) {
  int const* const stencil = m_ppFaceCellConn[i];
  if (stencil == nullptr) return kSuccess;
  KernelSystem& system = work_.Get().faceSystem;
  system.Clear();
  for (int k = 1; k <= stencil[0]; ++k) system.Add(PointOf(stencil[k]));
  double const* solution =
      system.SolveForGradientAndValue(InterpolationDQKernel(Span, m_pFaceSupport[i]), Target(i));
  for (int k = 1; k <= stencil[0]; ++k, solution += kColumns) {
    m_ppFaceGradCoef[i][k].SetData(solution[0], solution[1], solution[2], i);
    m_ppFaceFiCoef[i][k] = solution[3];
  }
  AccumulateGradientReport(i);
  return kSuccess;
}

// With (g_n, w_n) the solution at node n of the face's system and u_vm the weights of the cells around vertex
// v, the row at the position of a cell m is
//   sum of u_vm (g_v, w_v) over the vertices v that m touches, plus (g_n, w_n) if m is node n = 1 or 2,
// added up in this order.
int CZynFaceRBFInternalObject::DeriveFaceCoefficentBysolveDQfullMatrix_20_03(int i) {
  int const* const stencil = m_ppFaceCellConn[i];
  if (stencil == nullptr) return kSuccess;
  int const* const vertices = m_ppFaceLnods[i];
  KernelSystem& system = work_.Get().faceSystem;
  system.Clear();
  for (int k = 1; k <= 2; ++k) system.Add(PointOf(stencil[k]));
  for (int j = 1; j <= vertices[0]; ++j) system.Add(VertexPoint(vertices[j]));
  double const* const solution =
      system.SolveForGradientAndValue(InterpolationDQKernel(Span, m_pFaceSupport[i]), Target(i));

  IBCnode* const gradient = m_ppFaceGradCoef[i];
  double* const value = m_ppFaceFiCoef[i];
  for (int j = 1; j <= vertices[0]; ++j) {
    double const* const ofVertex = solution + kColumns * (j + 1);
    double const* const u = VertexWeights(vertices[j]);
    int const* const positions = m_pFaceRows[i].m_ppRow[j];
    for (int m = 1; m <= positions[0]; ++m) {
      int const position = positions[m];
      Add(u[m] * ofVertex[0], u[m] * ofVertex[1], u[m] * ofVertex[2], gradient[position]);
      value[position] += u[m] * ofVertex[3];
    }
  }
  for (int k = 1; k <= 2; ++k) {
    double const* const ofCell = solution + kColumns * (k - 1);
    Add(ofCell[0], ofCell[1], ofCell[2], gradient[k]);
    value[k] += ofCell[3];
  }
  ++NFaceDone;
  AccumulateGradientReport(i);
  return kSuccess;
}

// Solved once per vertex while a walk over all faces keeps them. The largest error comes out as if every face
// solved them again, since it rises on a strict comparison: the second time there is nothing to rise above.
double const* CZynFaceRBFInternalObject::VertexWeights(int v) {
  Work& work = work_.Get();
  int const n = ppRBFiNodeConn[v][0];
  if (work.vertexWeights == nullptr) {
    work.cellWeights.resize(static_cast<std::size_t>(n) + 1);
    DeriveFacefiBysolveDQfullMatrix_03(v, work.cellWeights.data());
    return work.cellWeights.data();
  }
  double*& kept = work.vertexWeights[v];
  if (kept == nullptr)
    DeriveFacefiBysolveDQfullMatrix_03(v, GrowingRowTable<double>::MakeRow(work.vertexWeights, v, n));
  return kept;
}

int CZynFaceRBFInternalObject::DeriveFacefiBysolveDQfullMatrix_03(int v, double* out) {
  int const* const cells = ppRBFiNodeConn[v];
  DQVector const at = VertexPoint(v);
  KernelSystem& system = work_.Get().pointSystem;
  system.Clear();
  for (int k = 1; k <= cells[0]; ++k) system.Add(PointOf(cells[k]));
  double const* const solution = system.SolveForValue(InterpolationDQKernel(Span, Reach(system, at)), at);
  double sum = 0.0;
  for (int k = 1; k <= cells[0]; ++k) {
    out[k] = solution[k - 1];
    sum += out[k];
  }
  double const error = std::fabs(sum - 1.0);
  if (error > MAXerr) {
    MAXerr = error;
    MAXerrNodeID = v;
  }
  return kSuccess;
}

// The two cells' system on its own, its solution dropped.
int CZynFaceRBFInternalObject::DeriveFaceCoefficentBysolveDQfullMatrix_Cell_PE(int i) {
  int const* const stencil = m_ppFaceCellConn[i];
  if (stencil == nullptr || stencil[0] < 2) return kSuccess;
  DQVector const at = Target(i);
  KernelSystem& system = work_.Get().faceSystem;
  system.Clear();
  for (int k = 1; k <= 2; ++k) system.Add(PointOf(stencil[k]));
  double const h =
      std::max(Length(OffsetBetween(system.Node(0), at)), Length(OffsetBetween(system.Node(1), at)));
  system.SolveForGradientAndValue(InterpolationDQKernel(Span, h), at);
  return kSuccess;
}
