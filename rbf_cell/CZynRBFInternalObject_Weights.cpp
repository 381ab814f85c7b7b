// The radial-basis gradient of the interior cells. With the members X_1..X_n of the stencil of cell i, X_1 = X_i,
//   (d phi/dx)_i = sum_k w_k phi_k,   y and z alike,
// with weights that are derived once, at set-up, from [A 1; 1' 0] [w; m] = [b; 0]: see CellSystem.h.

#include <algorithm>

#include "foundation/FaceGroups.h"
#include "foundation/Progress.h"
#include "foundation/Status.h"
#include "foundation/WithoutTraps.h"
#include "host/Zyn3dGV.h"
#include "rbf_cell/CZynRBFInternalObject.h"
#include "rbf_cell/CellSystem.h"

int CZynRBFInternalObject::DeriveRBFweighting() {
  WithoutTraps const duringSetUp;
  ClearResiduals();
  CellSystem system;
  int const nInnerCells = m_pMesh->NInnerCells;
  for (int cell = 1; cell <= nInnerCells; ++cell) DeriveCellCoefficents(cell, system);
  PrintFlushed("Cell RBF flux Interpolation is done.\n");
  PrintResiduals();
  return Status::kSuccess;
}

int CZynRBFInternalObject::DeriveCellCoefficentBysolveDQfullMatrix(int cell) {
  WithoutTraps const duringSetUp;
  CellSystem system;
  DeriveCellCoefficents(cell, system);
  return Status::kSuccess;
}

// Assembles, solves and keeps the weights 1..n, with the multiplier behind them. The residual of a direction is the
// sum of the weights and the multiplier, in this order; the weights alone sum to zero up to rounding.
void CZynRBFInternalObject::DeriveCellCoefficents(int cell, CellSystem& system) {
  system.Assemble(*this, cell);
  double const* const wx = system.Solve();
  int const order = system.Order();
  double const *const wy = wx + order, *const wz = wy + order;
  RBFnode* const row = m_ppRBFCellCoef[cell];
  double sumX = 0.0, sumY = 0.0, sumZ = 0.0;
  for (int k = 0; k < order; ++k) {
    row[k + 1].Set(wx[k], wy[k], wz[k], cell);
    sumX += wx[k];
    sumY += wy[k];
    sumZ += wz[k];
  }
  RaiseResidual(sumX, MAXResidual_X, cell);
  RaiseResidual(sumY, MAXResidual_Y, cell);
  RaiseResidual(sumZ, MAXResidual_Z, cell);
}

// Nothing but loads, multiplies and adds, in the order of the stencil.
int CZynRBFInternalObject::MultiplyRBFCoefficent(double* phi, double* gx, double* gy, double* gz) {
  CZYN3DFiniteVolumeMesh const& mesh = *m_pMesh;
  int const nInnerCells = mesh.NInnerCells;
  for (int i = 1; i <= nInnerCells; ++i) {
    int const* const stencil = m_ppRBFCellConn[i];
    RBFnode const* const w = m_ppRBFCellCoef[i];
    double sumX = 0.0, sumY = 0.0, sumZ = 0.0;
    for (int k = 1; k <= stencil[0]; ++k) {
      double const value = phi[stencil[k]];
      sumX += value * w[k].x;
      sumY += value * w[k].y;
      sumZ += value * w[k].z;
    }
    gx[i] = sumX;
    gy[i] = sumY;
    gz[i] = sumZ;
  }
  FillGhostGradients(gx, gy, gz);
  return Status::kSuccess;
}

// Wall and inlet ghost cells take the gradient of their interior cell. There is no exchange: all other cells beyond
// the interior come back as zero. Walls go first, so a ghost cell that a wall and an inlet share keeps what the inlet
// gives.
void CZynRBFInternalObject::FillGhostGradients(double* gx, double* gy, double* gz) const {
  CZYN3DFiniteVolumeMesh const& mesh = *m_pMesh;
  int const nGhost = mesh.NCell - mesh.NInnerCells;
  for (double* const g : {gx, gy, gz})
    if (nGhost > 0) std::fill_n(g + mesh.NInnerCells + 1, nGhost, 0.0);
  for (FaceKind const kind : {FaceKind::Wall, FaceKind::Inlet}) {
    FaceGroup const faces = FacesOf(kind, mesh);
    for (int f = 1; f <= faces.count; ++f)
      for (double* const g : {gx, gy, gz}) g[faces.other[f]] = g[faces.cv[f]];
  }
}
