#pragma once

#include <cstddef>
#include <vector>

#include "foundation/CDenseSolver.h"
#include "foundation/DQMatrix.h"
#include "foundation/DQVector.h"

/// The systems of faces and free points: a field's value or derivatives at a place from its values at the nodes
/// X_1..X_n,
///   sum_l kernel(|X_k - X_l|) w_l = D kernel(|x - X_k|) at x = `at`, for every k.
///
/// There is no constant term, so constants are reproduced only as far as the support is wide. The status of the
/// solve is not looked at. The arrays grow to the largest system and are used again. @cite wendland1995
class KernelSystem {
 public:
  /// Begins a new set of nodes.
  void Clear() { nodes_.clear(); }

  void Add(DQVector const& node) { nodes_.push_back(node); }

  int Size() const { return static_cast<int>(nodes_.size()); }

  DQVector const& Node(int k) const { return nodes_[static_cast<std::size_t>(k)]; }  ///< k in 0..n-1

  /// Weights of the value. @return [0..n-1], valid until the next solution
  template <typename Kernel>
  double const* SolveForValue(Kernel const& kernel, DQVector const& at) {
    double* const columns = MakeRoom(1);
    for (std::size_t k = 0; k < nodes_.size(); ++k)
      columns[k] = kernel.Value(Length(kernel.Scaled(OffsetBetween(nodes_[k], at))));
    return Solve(kernel, 1);
  }

  /// Weights of d/dx, d/dy, d/dz and the value. @return [0..n-1][0..3], row-major, valid until the next solution
  template <typename Kernel>
  double const* SolveForGradientAndValue(Kernel const& kernel, DQVector const& at) {
    double* row = MakeRoom(4);
    for (DQVector const& node : nodes_) {
      DQVector const offset = kernel.Scaled(OffsetBetween(node, at));
      DQVector const gradient = kernel.Gradient(offset);
      row[0] = gradient.x;
      row[1] = gradient.y;
      row[2] = gradient.z;
      row[3] = kernel.Value(Length(offset));
      row += 4;
    }
    return Solve(kernel, 4);
  }

 private:
  double* MakeRoom(std::size_t nColumn) {
    std::size_t const n = nodes_.size();
    if (matrix_.size() < n * n) matrix_.resize(n * n);
    if (columns_.size() < n * nColumn) columns_.resize(n * nColumn);
    return columns_.data();
  }

  template <typename Kernel>
  double const* Solve(Kernel const& kernel, int nColumn) {
    int const n = Size();
    if (n == 0) return columns_.data();
    FillKernelMatrix(kernel, nodes_.data(), n, matrix_.data(), n);
    CDenseSolver().Solve(n, matrix_.data(), columns_.data(), columns_.data(), nColumn);
    return columns_.data();
  }

  std::vector<DQVector> nodes_;
  std::vector<double> matrix_;   // n x n, row-major
  std::vector<double> columns_;  // n x number of right-hand sides, row-major: these, then the solution
};
