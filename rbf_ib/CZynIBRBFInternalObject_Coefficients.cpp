// The systems of the points and of the mesh nodes around them: assembled, solved, stored.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "foundation/DQKernel.h"
#include "foundation/DQVector.h"
#include "foundation/GrowingRowTable.h"
#include "foundation/KernelSystem.h"
#include "host/Zyn3dGV.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"
#include "rbf_ib/SearchMethod.h"

/// What the points share while they are derived: the arrays of the systems, and the weights of the mesh nodes,
/// which depend on the node alone and are solved for once however many points have it.
struct CZynIBRBFInternalObject::DerivationWork {
  KernelSystem pointSystem, nodeSystem;
  double** weightsOf = nullptr;  // [1..NNode], rows of the nodes that were asked for; null until the first is

  DerivationWork() = default;
  DerivationWork(DerivationWork const&) = delete;
  DerivationWork& operator=(DerivationWork const&) = delete;
  ~DerivationWork() { GrowingRowTable<double>::Destroy(weightsOf); }
};

namespace {

DQVector At(IBCnode const& position) { return {position.x, position.y, position.z}; }

// A sum of weights and how far it is from what the constant 1.0 should give.
void RaiseError(double error, double computed, int point, double& sumOfSquares, double& largest,
                int& pointOfLargest, double& computedThere) {
  sumOfSquares += error * error;
  if (!(error > largest)) return;
  largest = error;
  pointOfLargest = point;
  computedThere = computed;
}

}  // namespace

void CZynIBRBFInternalObject::DeriveAllPoints(double const* x, double const* y, double const* z) {
  DerivationWork work;
  for (int i = 1; i <= m_iNIBNode; ++i) {
    if (iSearch_method == kWholeCube || iSearch_method == kNearest) DerivePoint(i, x[i], y[i], z[i], work);
    if (iSearch_method == kByTopology) DerivePointByNodes(i, x[i], y[i], z[i], work);
  }
}

int CZynIBRBFInternalObject::DeriveIBCoefficentBysolveDQfullMatrix(int i, double* x, double* y, double* z) {
  DerivationWork work;
  DerivePoint(i, x[i], y[i], z[i], work);
  return 1;
}

int CZynIBRBFInternalObject::DeriveIBCoefficentBysolveDQfullMatrix_30_03(int i, double* x, double* y,
                                                                         double* z) {
  DerivationWork work;
  DerivePointByNodes(i, x[i], y[i], z[i], work);
  return 1;
}

int CZynIBRBFInternalObject::DeriveIBfiBysolveDQfullMatrix_03(int node, double* pWeight) {
  DerivationWork work;
  DeriveNode(node, pWeight, work);
  return 1;
}

void CZynIBRBFInternalObject::DerivePoint(int i, double x, double y, double z, DerivationWork& work) {
  int const* const stencil = m_ppIBConn[i];
  KernelSystem& system = work.pointSystem;
  system.Clear();
  for (int k = 1; k <= stencil[0]; ++k) system.Add(At(m_pIBCnode[stencil[k]]));

  double const* w =
      system.SolveForGradientAndValue(InterpolationDQKernel(Span, m_pIBSupportLength[i]), {x, y, z});
  for (int k = 1; k <= stencil[0]; ++k, w += 4) {
    m_ppIBCoef[i][k].SetData(w[0], w[1], w[2], i);
    m_ppIBValueCoef[i][k] = w[3];
  }
  GatherErrors(i);
}

// Coefficient of a cell = its weight W_s if it is a seed + sum over the nodes j that have it of W_j times the
// weight of the cell for the value at node j. The nodes are added first, in order, the seeds last.
void CZynIBRBFInternalObject::DerivePointByNodes(int i, double x, double y, double z, DerivationWork& work) {
  int const* const stencil = m_ppIBConn[i];
  int const* const nodes = m_ppIBNodeConn[i];
  // Without a usable cell there is no seed either.
  int const nSeed = std::min(m_pIBTwoSeeds[i] == 1 ? 2 : 1, stencil[0]);
  KernelSystem& system = work.pointSystem;
  system.Clear();
  for (int s = 1; s <= nSeed; ++s) system.Add(At(m_pIBCnode[stencil[s]]));
  for (int j = 1; j <= nodes[0]; ++j)
    system.Add({m_pMesh->xn[nodes[j]], m_pMesh->yn[nodes[j]], m_pMesh->zn[nodes[j]]});

  double const* const w =
      system.SolveForGradientAndValue(InterpolationDQKernel(Span, m_pIBSupportLength[i]), {x, y, z});
  IBCnode* const coef = m_ppIBCoef[i];
  double* const valueCoef = m_ppIBValueCoef[i];
  double const* wNode = w + 4 * static_cast<std::ptrdiff_t>(nSeed);
  for (int j = 1; j <= nodes[0]; ++j, wNode += 4) {
    int const nCell = ppRBFiNodeConn[nodes[j]][0];
    int const* const position = m_pIBNodeCellTable[i].m_ppRow[j];
    double const* const share = WeightsOfNode(nodes[j], work);
    for (int k = 1; k <= nCell; ++k) {
      IBCnode& c = coef[position[k]];
      c.x += share[k] * wNode[0];
      c.y += share[k] * wNode[1];
      c.z += share[k] * wNode[2];
      valueCoef[position[k]] += share[k] * wNode[3];
    }
  }
  double const* wSeed = w;
  for (int s = 1; s <= nSeed; ++s, wSeed += 4) {
    coef[s].SetDataVector(wSeed[0], wSeed[1], wSeed[2]);
    valueCoef[s] += wSeed[3];
  }
  GatherErrors(i);
}

double const* CZynIBRBFInternalObject::WeightsOfNode(int node, DerivationWork& work) {
  if (work.weightsOf == nullptr) work.weightsOf = GrowingRowTable<double>::Create(m_pMesh->NNode);
  double*& known = work.weightsOf[node];
  if (known == nullptr)
    DeriveNode(node, GrowingRowTable<double>::MakeRow(work.weightsOf, node, ppRBFiNodeConn[node][0]), work);
  return known;
}

void CZynIBRBFInternalObject::DeriveNode(int node, double* weights, DerivationWork& work) {
  int const* const around = ppRBFiNodeConn[node];
  DQVector const at = {m_pMesh->xn[node], m_pMesh->yn[node], m_pMesh->zn[node]};
  KernelSystem& system = work.nodeSystem;
  system.Clear();
  double largest2 = 0.0;
  for (int k = 1; k <= around[0]; ++k) {
    DQVector const position = At(m_pIBCnode[around[k]]);
    system.Add(position);
    double const r2 = SquaredLength(OffsetBetween(position, at));
    if (r2 > largest2) largest2 = r2;
  }
  double const* const w = system.SolveForValue(InterpolationDQKernel(Span, std::sqrt(largest2)), at);
  std::copy_n(w, around[0], weights + 1);
}

void CZynIBRBFInternalObject::GatherErrors(int i) {
  int const n = m_ppIBConn[i][0];
  double sum = 0.0, sumX = 0.0, sumY = 0.0, sumZ = 0.0;
  for (int k = 1; k <= n; ++k) {
    sum += m_ppIBValueCoef[i][k];
    sumX += m_ppIBCoef[i][k].x;
    sumY += m_ppIBCoef[i][k].y;
    sumZ += m_ppIBCoef[i][k].z;
  }
  ++m_iNDerived;
  double const error = std::fabs(1.0 - sum);
  if (error > m_dFiMaxError) m_dFiMaxAnalysis = 1.0;
  RaiseError(error, sum, i, m_dFiSumSq, m_dFiMaxError, m_iFiMaxPoint, m_dFiMaxRBF);
  RaiseError(std::fabs(sumX), sumX, i, m_dDfdxSumSq, m_dDfdxMaxError, m_iDfdxMaxPoint, m_dDfdxMaxRBF);
  RaiseError(std::fabs(sumY), sumY, i, m_dDfdySumSq, m_dDfdyMaxError, m_iDfdyMaxPoint, m_dDfdyMaxRBF);
  RaiseError(std::fabs(sumZ), sumZ, i, m_dDfdzSumSq, m_dDfdzMaxError, m_iDfdzMaxPoint, m_dDfdzMaxRBF);
}
