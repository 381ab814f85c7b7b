#include "foundation/CDenseSolver.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "foundation/Status.h"

namespace {

// Most systems of cells and points are smaller, and their solves allocate nothing here.
constexpr lapack_int kOrderOnStack = 128;

/// Zeroed pivots of a system.
class Pivots {
 public:
  explicit Pivots(lapack_int n) {
    if (n > kOrderOnStack) {
      onHeap_.resize(static_cast<std::size_t>(n));
    } else {
      std::fill_n(onStack_, n, 0);
    }
  }

  lapack_int* Data() { return onHeap_.empty() ? onStack_ : onHeap_.data(); }

 private:
  lapack_int onStack_[kOrderOnStack];
  std::vector<lapack_int> onHeap_;
};

// to[j][i] = from[i][j], row-major with nRow x nColumn numbers in `from`.
void Transpose(double const* from, int nRow, int nColumn, double* to) {
  for (int i = 0; i < nRow; ++i)
    for (int j = 0; j < nColumn; ++j) to[static_cast<std::ptrdiff_t>(j) * nRow + i] = *from++;
}

}  // namespace

int CDenseSolver::Solve(lapack_int n, double* A, double* B, double* X, int nrhs) {
  Pivots pivots(n);
  // No caller could act on the status: a bad system shows in the residuals that the operators print.
  static_cast<void>(LAPACKE_dgesv(LAPACK_ROW_MAJOR, n, nrhs, A, n, pivots.Data(), B, nrhs));

  std::ptrdiff_t const nValues = static_cast<std::ptrdiff_t>(n) * nrhs;
  for (std::ptrdiff_t i = 0; i < nValues; ++i) X[i] = B[i];
  return Status::kSuccess;
}

int CDenseSolver::SolveSymmetric(lapack_int n, double* A, double* B, double* columns, int nrhs) {
  if (nrhs == 1) return SolveSymmetricColumns(n, A, B, 1);
  auto const order = static_cast<int>(n);
  Transpose(B, order, nrhs, columns);
  SolveSymmetricColumns(n, A, columns, nrhs);
  Transpose(columns, nrhs, order, B);
  return Status::kSuccess;
}

int CDenseSolver::SolveSymmetricColumns(lapack_int n, double* A, double* columns, int nrhs) {
  Pivots pivots(n);
  static_cast<void>(LAPACKE_dgesv(LAPACK_COL_MAJOR, n, nrhs, A, n, pivots.Data(), columns, n));
  return Status::kSuccess;
}
