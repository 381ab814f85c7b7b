// The differential-quadrature systems of the cells: assembled, solved, stored.

#include <algorithm>
#include <cstddef>
#include <vector>

#include "foundation/CDenseSolver.h"
#include "foundation/DQKernel.h"
#include "foundation/DQMatrix.h"
#include "foundation/DQVector.h"
#include "foundation/Progress.h"
#include "foundation/WithoutTraps.h"
#include "host/Zyn3dGV.h"
#include "rbf_cell/CZynRBFInternalObject.h"

/// The system of one cell with n members; the arrays grow to the largest stencil and are used again.
struct CZynRBFInternalObject::CellWork {
  std::vector<DQVector> points;  // [0..n-1]
  std::vector<double> matrix;    // (n+1) x (n+1), row-major
  std::vector<double> columns;   // (n+1) x 3, row-major: right-hand sides for x, y, z, then the solution

  void MakeRoomFor(int n) {
    auto const members = static_cast<std::size_t>(n);
    auto const order = members + 1;
    if (points.size() >= members && columns.size() >= 3 * order) return;
    points.resize(members);
    matrix.resize(order * order);
    columns.resize(3 * order);
  }
};

namespace {

constexpr int kSuccess = 1;

// The right-hand sides of a cell's system pass through single precision, on purpose; the solve sees doubles
// again. Volatile, since GCC 12 drops such a rounding where it makes vector operations of the three components.
double InSinglePrecision(double value) {
  float const volatile rounded = static_cast<float>(value);
  return rounded;
}

// Right-hand side k: the gradient of the kernel centred on member k, at the point `at`; none for the constant
// term.
template <typename Kernel>
void FillRightHandSides(Kernel const& kernel, DQVector const& at, DQVector const* points, int n,
                        double* columns) {
  for (int k = 0; k < n; ++k, columns += 3) {
    DQVector const gradient = kernel.Gradient(kernel.Scaled(OffsetBetween(points[k], at)));
    columns[0] = InSinglePrecision(gradient.x);
    columns[1] = InSinglePrecision(gradient.y);
    columns[2] = InSinglePrecision(gradient.z);
  }
  std::fill_n(columns, 3, 0.0);
}

// A cell that stands several times in a stencil is represented by the last of them. The others keep their
// place with nothing but the constant term: a row and a column of zeros and no right-hand side.
void EmptyEarlierDoubles(int const* members, int n, double* matrix, double* columns) {
  std::ptrdiff_t const order = static_cast<std::ptrdiff_t>(n) + 1;
  for (int k = 0; k < n; ++k) {
    if (std::find(members + k + 1, members + n, members[k]) == members + n) continue;
    for (int j = 0; j < n; ++j) {
      matrix[k * order + j] = 0.0;
      matrix[j * order + k] = 0.0;
    }
    std::fill_n(columns + std::ptrdiff_t{3} * k, 3, 0.0);
  }
}

// [A 1; 1' 0] [w; m] = [grad kernel; 0], one column for each of d/dx, d/dy, d/dz.
template <typename Kernel>
void Assemble(Kernel const& kernel, DQVector const& at, int const* members, DQVector const* points, int n,
              double* matrix, double* columns) {
  FillKernelMatrix(kernel, points, n, matrix, n + 1);
  AddConstantTerm(matrix, n);
  FillRightHandSides(kernel, at, points, n, columns);
  EmptyEarlierDoubles(members, n, matrix, columns);
}

}  // namespace

int CZynRBFInternalObject::DeriveRBFweighting() {
  WithoutTraps const duringSetUp;
  ClearResiduals();
  CellWork work;
  int const nInnerCells = m_pMesh->NInnerCells;
  for (int cell = 1; cell <= nInnerCells; ++cell) DeriveCellCoefficents(cell, work);
  PrintFlushed("Cell RBF flux Interpolation is done.\n");
  PrintResiduals();
  return kSuccess;
}

int CZynRBFInternalObject::DeriveCellCoefficentBysolveDQfullMatrix(int cell) {
  WithoutTraps const duringSetUp;
  CellWork work;
  DeriveCellCoefficents(cell, work);
  return kSuccess;
}

void CZynRBFInternalObject::DeriveCellCoefficents(int cell, CellWork& work) {
  int const n = m_ppRBFCellConn[cell][0];
  int const* const members = m_ppRBFCellConn[cell] + 1;
  work.MakeRoomFor(n);
  for (int k = 0; k < n; ++k) {
    RBFnode const& node = m_pRBFnode[members[k]];
    work.points[k] = {node.x, node.y, node.z};
  }
  DQVector const at = {m_pRBFnode[cell].x, m_pRBFnode[cell].y, m_pRBFnode[cell].z};
  double* const matrix = work.matrix.data();
  double* const columns = work.columns.data();
  if (iShape_Normalize == 1) {
    RBFnode const& extent = m_pStencilExtent[cell];
    ShapeNormalisedDQKernel const kernel(Span, {extent.x, extent.y, extent.z});
    Assemble(kernel, at, members, work.points.data(), n, matrix, columns);
  } else {
    PlainDQKernel const kernel(Span, m_pSupportLength[cell]);
    Assemble(kernel, at, members, work.points.data(), n, matrix, columns);
  }
  CDenseSolver().Solve(n + 1, matrix, columns, columns, 3);
  StoreCellCoefficents(cell, n, columns);
}

// The residual of a direction is the sum of the weights and the multiplier, in this order. The weights alone
// sum to zero, so it shows the multiplier and the rounding.
void CZynRBFInternalObject::StoreCellCoefficents(int cell, int n, double const* solution) {
  RBFnode* const row = m_ppRBFCellCoef[cell];
  DQVector sum = {0.0, 0.0, 0.0};
  for (int k = 0; k <= n; ++k, solution += 3) {
    sum.x += solution[0];
    sum.y += solution[1];
    sum.z += solution[2];
    row[k + 1].Set(solution[0], solution[1], solution[2], cell);
  }
  RaiseResidual(sum.x, MAXResidual_X, cell);
  RaiseResidual(sum.y, MAXResidual_Y, cell);
  RaiseResidual(sum.z, MAXResidual_Z, cell);
}

// With its sign, on purpose: a negative residual never shows, and neither does a NaN.
void CZynRBFInternalObject::RaiseResidual(double residual, double& maximum, int element) {
  if (residual > maximum) {
    maximum = residual;
    m_iWorstElement = element;
  }
}

void CZynRBFInternalObject::ClearResiduals() { MAXResidual_X = MAXResidual_Y = MAXResidual_Z = 0.0; }

void CZynRBFInternalObject::PrintResiduals() const {
  PrintFormatted("Span = %lf, MAXResidual_X = %le, MAXResidual_Y = %le, MAXResidual_Z = %le\n", Span,
                 MAXResidual_X, MAXResidual_Y, MAXResidual_Z);
}
