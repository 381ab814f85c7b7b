#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "foundation/CDenseSolver.h"
#include "foundation/DQKernel.h"
#include "foundation/DQMatrix.h"
#include "foundation/DQVector.h"
#include "rbf_cell/CZynRBFInternalObject.h"

/// The differential-quadrature system of one cell. The gradient of a field phi at the cell's point X_c is a weighted
/// sum over the members X_1..X_n of its stencil,
///   (d phi/dx)_c = sum_k w_k phi_k,   y and z alike,
/// and the weights make that exact for constants and for the kernel centred on each of the members,
///   sum_k A_jk w_k + m = b_j,   A_jk = kernel(|X_j - X_k|),   b_j = d/dx kernel(|x - X_j|) at x = X_c,
///   sum_k w_k          = 0,
/// that is [A 1; 1' 0] [w; m] = [b; 0], with one column for each of d/dx, d/dy, d/dz.
/// @cite shu2003 @cite wendland1995
///
/// The arrays grow to the largest stencil and are used again.
class CellSystem {
 public:
  /// Makes the system of an interior cell, with the form of the kernel that the operator's settings name.
  /// @pre the operator has collected its stencils
  void Assemble(CZynRBFInternalObject const& op, int cell) {
    int const* const stencil = op.m_ppRBFCellConn[cell];
    members_ = stencil + 1;
    n_ = stencil[0];
    MakeRoom();
    for (int k = 0; k < n_; ++k) points_[static_cast<std::size_t>(k)] = Triple(op.m_pRBFnode[members_[k]]);
    DQVector const at = Triple(op.m_pRBFnode[cell]);
    if (op.iShape_Normalize == 1) {
      Assemble(ShapeNormalisedDQKernel(op.Span, Triple(op.m_pStencilExtent[cell])), at);
    } else {
      Assemble(PlainDQKernel(op.Span, op.m_pSupportLength[cell]), at);
    }
  }

  /// Solves the system, which is gone afterwards. Nobody looks at the status: a singular system shows in the
  /// residuals.
  /// @return [0..2][0..n], row-major: the weights of the members for d/dx, d/dy, d/dz, and at n the multiplier m of each;
  /// valid until the next Assemble
  double const* Solve() {
    std::size_t const order = static_cast<std::size_t>(n_) + 1;
    double const* b = columns_.data();
    double* const x = solution_.data();
    for (std::size_t k = 0; k < order; ++k, b += 3)
      for (std::size_t direction = 0; direction < 3; ++direction) x[direction * order + k] = b[direction];
    CDenseSolver().SolveSymmetricColumns(Order(), matrix_.data(), x, 3);
    return x;
  }

  int Order() const { return n_ + 1; }                     ///< of the system, n members and the constant
  double const* Matrix() const { return matrix_.data(); }  ///< [A 1; 1' 0], row-major, of order Order()
  double const* RightHandSides() const { return columns_.data(); }  ///< [b; 0], [0..n][0..2], row-major

 private:
  static DQVector Triple(RBFnode const& node) { return {node.x, node.y, node.z}; }

  void MakeRoom() {
    auto const members = static_cast<std::size_t>(n_);
    auto const order = members + 1;
    if (points_.size() >= members && columns_.size() >= 3 * order) return;
    points_.resize(members);
    matrix_.resize(order * order);
    columns_.resize(3 * order);
    solution_.resize(3 * order);
  }

  template <typename Kernel>
  void Assemble(Kernel const& kernel, DQVector const& at) {
    FillMatrixWithConstantTerm(kernel, points_.data(), n_, matrix_.data());
    FillRightHandSides(kernel, at);
    EmptyEarlierDoubles();
  }

  template <typename Kernel>
  void FillRightHandSides(Kernel const& kernel, DQVector const& at) {
    double* const b = columns_.data();
    FillGradientColumns(kernel, points_.data(), n_, at, b);
    int const nEntry = 3 * n_;
    for (int i = 0; i < nEntry; ++i) b[i] = InSinglePrecision(b[i]);
    std::fill_n(b + nEntry, 3, 0.0);
  }

  // Right-hand sides are rounded to single precision: the weights, and with them all gradients, are defined by the
  // rounded values. The rounding is volatile since GCC 12 drops it where it makes vector operations of the three
  // components.
  static double InSinglePrecision(double value) {
    float const volatile rounded = static_cast<float>(value);
    return static_cast<double>(rounded);
  }

  // A cell that stands several times in a stencil is represented by its last place. The earlier places keep the
  // constant term alone: a row and a column of zeros and no right-hand side.
  void EmptyEarlierDoubles() {
    std::ptrdiff_t const order = Order();
    for (int k = 0; k < n_; ++k) {
      if (std::find(members_ + k + 1, members_ + n_, members_[k]) == members_ + n_) continue;
      for (int j = 0; j < n_; ++j) {
        matrix_[static_cast<std::size_t>(k * order + j)] = 0.0;
        matrix_[static_cast<std::size_t>(j * order + k)] = 0.0;
      }
      std::fill_n(columns_.data() + std::ptrdiff_t{3} * k, 3, 0.0);
    }
  }

  int const* members_ = nullptr;  // [0..n-1] cell numbers, in the operator's table
  int n_ = 0;
  std::vector<DQVector> points_;  // [0..n-1]
  std::vector<double> matrix_;    // (n+1) x (n+1), row-major
  std::vector<double> columns_;   // (n+1) x 3, row-major: right-hand sides
  std::vector<double> solution_;  // 3 x (n+1), row-major: these again, then the solution
};
