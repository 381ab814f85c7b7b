#pragma once

#include <cmath>
#include <cstddef>
#include <vector>

#include "foundation/CDenseSolver.h"
#include "foundation/DQMatrix.h"
#include "foundation/DQVector.h"

/// The systems of faces and of free points. A value or derivative of a field at a place x is a weighted sum of the
/// field's values at nodes X_1..X_n,
///   (D phi)(x) = sum_k w_k phi(X_k)   with D one of d/dx, d/dy, d/dz and the value itself,
/// and the weights make that exact for the kernel centred on each of the nodes,
///   A w = b,   A_kl = kernel(|X_k - X_l|),   b_k = D kernel(|x - X_k|).   @cite wendland1995
///
/// There is no constant term, unlike in the systems of cells: constants are reproduced approximately, better the
/// wider the support. Nobody looks at the status of the solve; a singular system shows in the operators' reports. The
/// arrays grow to the largest system and are used again.
class KernelSystem {
 public:
  /// Begins a new set of nodes.
  void Clear() { nodes_.clear(); }

  void Add(DQVector const& node) { nodes_.push_back(node); }

  int Size() const { return static_cast<int>(nodes_.size()); }  ///< n

  std::vector<DQVector> const& Nodes() const { return nodes_; }

  DQVector const& Node(int k) const { return nodes_[static_cast<std::size_t>(k)]; }  ///< k in 0..n-1

  /// The greatest distance from a point to a node; 0 without nodes. L.
  double Reach(DQVector const& from) const {
    double largest2 = 0.0;
    for (DQVector const& node : nodes_) {
      double const r2 = SquaredLength(OffsetBetween(from, node));
      if (r2 > largest2) largest2 = r2;
    }
    return std::sqrt(largest2);
  }

  /// A. @return n x n, row-major, valid until the next call that makes or solves a system
  template <typename Kernel>
  double const* Matrix(Kernel const& kernel) {
    std::size_t const n = nodes_.size();
    if (matrix_.size() < n * n) matrix_.resize(n * n);
    FillKernelMatrix(kernel, nodes_.data(), Size(), matrix_.data(), Size());
    return matrix_.data();
  }

  /// Weights of the value at a place. @return [0..n-1], valid until the next solution
  template <typename Kernel>
  double const* SolveForValue(Kernel const& kernel, DQVector const& at) {
    double* const b = MakeColumns(1);
    FillValueColumn(kernel, nodes_.data(), Size(), at, b);
    return Solve(kernel, 1);
  }

  /// Weights of d/dx, d/dy, d/dz and the value at a place.
  /// @return [0..n-1][0..3], row-major, valid until the next solution
  template <typename Kernel>
  double const* SolveForGradientAndValue(Kernel const& kernel, DQVector const& at) {
    double* const b = MakeColumns(4);
    FillGradientAndValueColumns(kernel, nodes_.data(), Size(), at, b);
    return Solve(kernel, 4);
  }

 private:
  double* MakeColumns(std::size_t nColumn) {
    std::size_t const size = nodes_.size() * nColumn;
    if (columns_.size() < size) columns_.resize(size);
    return columns_.data();
  }

  template <typename Kernel>
  double const* Solve(Kernel const& kernel, int nColumn) {
    int const n = Size();
    if (n == 0) return columns_.data();
    Matrix(kernel);
    std::size_t const size = nodes_.size() * static_cast<std::size_t>(nColumn);
    if (transposed_.size() < size) transposed_.resize(size);
    CDenseSolver().SolveSymmetric(n, matrix_.data(), columns_.data(), transposed_.data(), nColumn);
    return columns_.data();
  }

  std::vector<DQVector> nodes_;
  std::vector<double> matrix_;   // n x n, row-major
  std::vector<double> columns_;  // n x number of right-hand sides, row-major: first these, then the solution
  std::vector<double> transposed_;  // work memory of the same size
};
