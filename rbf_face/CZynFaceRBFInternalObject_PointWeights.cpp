// The weights of the value at the points between a face and the cells: at vertices (method 3) and at the virtual
// nodes P and E (method 4).

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "foundation/DQVector.h"
#include "foundation/Status.h"
#include "foundation/WeightRows.h"
#include "rbf_face/CZynFaceRBFInternalObjectImpl.h"
#include "rbf_face/FaceNodes.h"

int CZynFaceRBFInternalObject::DeriveFacefiBysolveDQfullMatrix_03(int v, double* out) {
  int const* const cells = ppRBFiNodeConn[v];
  DQVector const at = VertexPoint(v);
  KernelSystem& system = work_.Get().pointSystem;
  system.Clear();
  for (int k = 1; k <= cells[0]; ++k) system.Add(PointOf(cells[k]));
  double const* const w = system.SolveForValue(PlainDQKernel(Span, system.Reach(at)), at);
  double sum = 0.0;
  for (int k = 1; k <= cells[0]; ++k) {
    out[k] = w[k - 1];
    sum += out[k];
  }
  double const error = std::fabs(sum - 1.0);
  if (error > MAXerr) {
    MAXerr = error;
    MAXerrNodeID = v;
  }
  return Status::kSuccess;
}

int CZynFaceRBFInternalObject::DeriveFacefiBysolveDQfullMatrix_Virtual03(bool fromVertices, int i, int k,
                                                                         double* out) {
  IBCnode const& node = m_ppVirtualNode[i][k];
  DQVector const at = face_nodes::PointOf(node);
  KernelSystem& system = work_.Get().pointSystem;
  if (fromVertices) {
    TakeVerticesOf(node.tag, system);
  } else {
    face_nodes::TakeSide(*this, i, k, system);
  }
  double const* const w = system.SolveForValue(face_nodes::VirtualNodeKernel(*this, at, system), at);
  std::copy_n(w, system.Size(), out + 1);
  return Status::kSuccess;
}

void CZynFaceRBFInternalObject::TakeVerticesOf(int c, KernelSystem& system) const {
  system.Clear();
  int const* const vertices = m_ppRBFlnods[c];
  if (vertices == nullptr) return;
  for (int j = 1; j <= vertices[0]; ++j) system.Add(VertexPoint(vertices[j]));
}

// While a walk over all faces keeps the weights, a vertex is solved once. The largest error comes out as if every
// face had solved it again: it rises on a strict comparison, and a second solution does not exceed the first.
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

// Room for [0..n-1][0..3], used again for the next face.
double* CZynFaceRBFInternalObject::SumsOf(int n) {
  std::vector<double>& sums = work_.Get().sums;
  std::size_t const size = kWeightColumns * static_cast<std::size_t>(n);
  if (sums.size() < size) sums.resize(size);
  return sums.data();
}

// Room for [1..n], used again for the next virtual node.
double* CZynFaceRBFInternalObject::WeightsOf(int n) {
  std::vector<double>& weights = work_.Get().weights;
  if (weights.size() < static_cast<std::size_t>(n) + 1) weights.resize(static_cast<std::size_t>(n) + 1);
  return weights.data();
}
