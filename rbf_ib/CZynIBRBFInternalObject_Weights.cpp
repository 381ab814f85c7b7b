// The interpolation to points. Value and derivatives of a field phi at the point p_i are weighted sums over its
// stencil,
//   (D phi)(p_i) = sum_k w_k phi_k,   D one of d/dx, d/dy, d/dz, value,
// with coefficients w that are derived once, at set-up, one method after the other below. Each of their systems is
//   A w = b,   A_kl = kernel(|X_k - X_l|),   b_k = D kernel(|x - X_k|) at x = p_i:
// see KernelSystem.h. PointNodes.h says which nodes X and which kernel a system has.

#include <algorithm>
#include <cstddef>

#include "foundation/DQKernel.h"
#include "foundation/DQVector.h"
#include "foundation/GrowingRowTable.h"
#include "foundation/KernelSystem.h"
#include "foundation/Status.h"
#include "host/Zyn3dGV.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"
#include "rbf_ib/PointNodes.h"
#include "rbf_ib/SearchMethod.h"

/// What the points share while they are derived: the arrays of the systems, and the weights of the mesh nodes. These
/// depend on the node alone, so a node is solved once, however many points have it.
struct CZynIBRBFInternalObject::DerivationWork {
  KernelSystem pointSystem, nodeSystem;
  double** weightsOf = nullptr;  // [1..NNode], rows of the nodes solved so far; null before the first

  DerivationWork() = default;
  DerivationWork(DerivationWork const&) = delete;
  DerivationWork& operator=(DerivationWork const&) = delete;
  ~DerivationWork() { GrowingRowTable<double>::Destroy(weightsOf); }
};

namespace {

constexpr std::ptrdiff_t kColumns = 4;  // of a solution with gradient and value: d/dx, d/dy, d/dz, value

}  // namespace

// Methods 1 and 2: gradient and value at the point from the cells of the stencil.
void CZynIBRBFInternalObject::DerivePoint(int i, double x, double y, double z, DerivationWork& work) {
  KernelSystem& system = work.pointSystem;
  point_nodes::TakeStencil(*this, i, system);
  double const* w = system.SolveForGradientAndValue(point_nodes::KernelOf(*this, i), {x, y, z});
  for (int k = 1; k <= system.Size(); ++k, w += kColumns) {
    m_ppIBCoef[i][k].SetData(w[0], w[1], w[2], i);
    m_ppIBValueCoef[i][k] = w[3];
  }
  GatherErrors(i);
}

// Method 3: gradient and value at the point from its seeds and the mesh nodes around them. With W_n the solution at
// node n and u_jm the weight of cell m for the value at mesh node j, the coefficient of a cell m is
//   sum of u_jm W_j over the mesh nodes j that m touches, plus W_m if m is a seed,
// added up in this order.
void CZynIBRBFInternalObject::DerivePointByNodes(int i, double x, double y, double z, DerivationWork& work) {
  KernelSystem& system = work.pointSystem;
  point_nodes::TakeSeedsAndNodes(*this, *m_pMesh, i, system);
  double const* const w = system.SolveForGradientAndValue(point_nodes::KernelOf(*this, i), {x, y, z});

  int const nSeed = point_nodes::CountSeeds(*this, i);
  int const* const nodes = m_ppIBNodeConn[i];
  IBCnode* const coef = m_ppIBCoef[i];
  double* const valueCoef = m_ppIBValueCoef[i];
  for (int j = 1; j <= nodes[0]; ++j) {
    double const* const ofNode = w + kColumns * (nSeed + j - 1);
    double const* const u = WeightsOfNode(nodes[j], work);
    int const nCell = ppRBFiNodeConn[nodes[j]][0];
    int const* const position = m_pIBNodeCellTable[i].m_ppRow[j];
    for (int m = 1; m <= nCell; ++m) {
      IBCnode& c = coef[position[m]];
      c.x += u[m] * ofNode[0];
      c.y += u[m] * ofNode[1];
      c.z += u[m] * ofNode[2];
      valueCoef[position[m]] += u[m] * ofNode[3];
    }
  }
  for (int s = 1; s <= nSeed; ++s) {
    double const* const ofSeed = w + kColumns * (s - 1);
    coef[s].SetDataVector(ofSeed[0], ofSeed[1], ofSeed[2]);
    valueCoef[s] += ofSeed[3];
  }
  GatherErrors(i);
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
    if (iSearch_method == kWholeCube || iSearch_method == kNearest) DerivePoint(i, x[i], y[i], z[i], work);
    if (iSearch_method == kByTopology) DerivePointByNodes(i, x[i], y[i], z[i], work);
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
