// The interpolation to points. Value and derivatives of a field phi at the point p_i are weighted sums over its
// stencil,
//   (D phi)(p_i) = sum_k w_k phi_k,   D one of d/dx, d/dy, d/dz, value,
// with coefficients w that are derived once, at set-up, one method after the other below. Each of their systems is
//   A w = b,   A_kl = kernel(|X_k - X_l|),   b_k = D kernel(|x - X_k|) at x = p_i:
// see KernelSystem.h. PointNodes.h says which nodes X and which kernel a system has.

#include <algorithm>
#include <cstddef>
#include <vector>

#include "foundation/DQKernel.h"
#include "foundation/DQVector.h"
#include "foundation/GrowingRowTable.h"
#include "foundation/KernelSystem.h"
#include "foundation/Status.h"
#include "foundation/WeightRows.h"
#include "host/Zyn3dGV.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"
#include "rbf_ib/PointNodes.h"
#include "rbf_ib/SearchMethod.h"

/// What the points share while they are derived: the arrays of the systems, and the weights of the mesh nodes. These
/// depend on the node alone, so a node is solved once, however many points have it.
struct CZynIBRBFInternalObject::DerivationWork {
  KernelSystem pointSystem, nodeSystem;
  std::vector<double> sums;      // [0..n-1][0..3] of a point, weights of gradient and value
  double** weightsOf = nullptr;  // [1..NNode], rows of the nodes solved so far; null before the first

  DerivationWork() = default;
  DerivationWork(DerivationWork const&) = delete;
  DerivationWork& operator=(DerivationWork const&) = delete;
  ~DerivationWork() { GrowingRowTable<double>::Destroy(weightsOf); }
};

// Methods 1 and 2: gradient and value at the point from the cells of the stencil.
void CZynIBRBFInternalObject::DerivePoint(int i, double x, double y, double z, DerivationWork& work) {
  KernelSystem& system = work.pointSystem;
  point_nodes::TakeStencil(*this, i, system);
  double const* const w = system.SolveForGradientAndValue(point_nodes::KernelOf(*this, i), {x, y, z});
  int const n = system.Size();
  IBCnode* const gradient = m_ppIBCoef[i];
  WeightSums const sums = StoreWeights(w, n, gradient, m_ppIBValueCoef[i]);
  for (int k = 1; k <= n; ++k) gradient[k].tag = i;
  GatherErrors(i, sums);
}

// The same for a point that has no rows of coefficients yet.
void CZynIBRBFInternalObject::DeriveNewPoint(int i, double x, double y, double z, DerivationWork& work) {
  KernelSystem& system = work.pointSystem;
  point_nodes::TakeStencil(*this, i, system);
  double const* const w = system.SolveForGradientAndValue(point_nodes::KernelOf(*this, i), {x, y, z});
  GatherErrors(i, MakeWeightRows(w, system.Size(), i, m_ppIBCoef, m_ppIBValueCoef, i));
}

// Method 3: gradient and value at the point from its seeds and the mesh nodes around them. With W_n the solution at
// node n and u_jm the weight of cell m for the value at mesh node j, the coefficient of a cell m is
//   sum of u_jm W_j over the mesh nodes j that m touches, plus W_m if m is a seed,
// added up in this order.
void CZynIBRBFInternalObject::DerivePointByNodes(int i, double x, double y, double z, DerivationWork& work) {
  int const n = m_ppIBConn[i][0];
  work.sums.resize(kWeightColumns * static_cast<std::size_t>(n));
  LoadWeights(m_ppIBCoef[i], m_ppIBValueCoef[i], n, work.sums.data());
  AddByNodes(i, x, y, z, work);
  GatherErrors(i, StoreWeights(work.sums.data(), n, m_ppIBCoef[i], m_ppIBValueCoef[i]));
}

// The same for a point that has no rows of coefficients yet.
void CZynIBRBFInternalObject::DeriveNewPointByNodes(int i, double x, double y, double z,
                                                    DerivationWork& work) {
  int const n = m_ppIBConn[i][0];
  work.sums.assign(kWeightColumns * static_cast<std::size_t>(n), 0.0);
  AddByNodes(i, x, y, z, work);
  GatherErrors(i, MakeWeightRows(work.sums.data(), n, 0, m_ppIBCoef, m_ppIBValueCoef, i));
}

// Adds the coefficients to work.sums, [0..n-1][0..3].
void CZynIBRBFInternalObject::AddByNodes(int i, double x, double y, double z, DerivationWork& work) {
  KernelSystem& system = work.pointSystem;
  point_nodes::TakeSeedsAndNodes(*this, *m_pMesh, i, system);
  double const* const solution = system.SolveForGradientAndValue(point_nodes::KernelOf(*this, i), {x, y, z});

  int const nSeed = point_nodes::CountSeeds(*this, i);
  int const* const nodes = m_ppIBNodeConn[i];
  int* const* const positions = m_pIBNodeCellTable[i].m_ppRow;
  double* const w = work.sums.data();
  for (int j = 1; j <= nodes[0]; ++j)
    AddShares(solution + kWeightColumns * (nSeed + j - 1), WeightsOfNode(nodes[j], work), positions[j], w);
  AddFirst(solution, nSeed, w);
}

// The weights of the usable cells around a mesh node for the value at the node.
void CZynIBRBFInternalObject::DeriveNode(int node, double* weights, DerivationWork& work) {
  int const* const around = ppRBFiNodeConn[node];
  DQVector const at = {m_pMesh->xn[node], m_pMesh->yn[node], m_pMesh->zn[node]};
  KernelSystem& system = work.nodeSystem;
  system.Clear();
  for (int k = 1; k <= around[0]; ++k) {
    IBCnode const& position = m_pIBCnode[around[k]];
    system.Add({position.x, position.y, position.z});
  }
  double const* const w = system.SolveForValue(PlainDQKernel(Span, system.Reach(at)), at);
  std::copy_n(w, around[0], weights + 1);
}

double const* CZynIBRBFInternalObject::WeightsOfNode(int node, DerivationWork& work) {
  if (work.weightsOf == nullptr) work.weightsOf = GrowingRowTable<double>::Create(m_pMesh->NNode);
  double*& known = work.weightsOf[node];
  if (known == nullptr)
    DeriveNode(node, GrowingRowTable<double>::MakeRow(work.weightsOf, node, ppRBFiNodeConn[node][0]), work);
  return known;
}

// Nothing but loads, multiplies and adds, in the order of the stencil.
int CZynIBRBFInternalObject::Multiply_IBRBFCoefficent(double* pField, double* pValue, double* pDfdx,
                                                      double* pDfdy, double* pDfdz) {
  int const nPoint = m_iNIBNode;
  for (double* out : {pValue, pDfdx, pDfdy, pDfdz})
    if (nPoint > 0) std::fill_n(out + 1, nPoint, 0.0);

  for (int i = 1; i <= nPoint; ++i) {
    int const* const stencil = m_ppIBConn[i];
    if (stencil == nullptr) continue;  // a method that builds none
    IBCnode const* const coef = m_ppIBCoef[i];
    double const* const valueCoef = m_ppIBValueCoef[i];
    int const n = stencil[0];
    double sum = 0.0, sumX = 0.0, sumY = 0.0, sumZ = 0.0;
    for (int k = 1; k <= n; ++k) {
      double const phi = pField[stencil[k]];
      sumX += phi * coef[k].x;
      sumY += phi * coef[k].y;
      sumZ += phi * coef[k].z;
      sum += phi * valueCoef[k];
    }
    pDfdx[i] = sumX;
    pDfdy[i] = sumY;
    pDfdz[i] = sumZ;
    pValue[i] = sum;
  }
  return Status::kDone;
}

// What the set-up derives, and the single operations.

void CZynIBRBFInternalObject::DeriveAllPoints(double const* x, double const* y, double const* z) {
  DerivationWork work;
  for (int i = 1; i <= m_iNIBNode; ++i) {
    if (iSearch_method == kWholeCube || iSearch_method == kNearest) DeriveNewPoint(i, x[i], y[i], z[i], work);
    if (iSearch_method == kByTopology) DeriveNewPointByNodes(i, x[i], y[i], z[i], work);
  }
}

int CZynIBRBFInternalObject::DeriveIBCoefficentBysolveDQfullMatrix(int i, double* x, double* y, double* z) {
  DerivationWork work;
  DerivePoint(i, x[i], y[i], z[i], work);
  return Status::kSuccess;
}

int CZynIBRBFInternalObject::DeriveIBCoefficentBysolveDQfullMatrix_30_03(int i, double* x, double* y,
                                                                         double* z) {
  DerivationWork work;
  DerivePointByNodes(i, x[i], y[i], z[i], work);
  return Status::kSuccess;
}

int CZynIBRBFInternalObject::DeriveIBfiBysolveDQfullMatrix_03(int node, double* pWeight) {
  DerivationWork work;
  DeriveNode(node, pWeight, work);
  return Status::kSuccess;
}
