#include "foundation/CDenseSolver.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "foundation/Status.h"

namespace {

// Most systems of cells and points are smaller, and their solves allocate nothing here.
constexpr lapack_int kOrderOnStack = 128;

}  // namespace

int CDenseSolver::Solve(lapack_int n, double* A, double* B, double* X, int nrhs) {
  lapack_int pivotsOnStack[kOrderOnStack];
  std::vector<lapack_int> pivotsOnHeap;
  lapack_int* pivots = pivotsOnStack;
  if (n > kOrderOnStack) {
    pivotsOnHeap.resize(static_cast<std::size_t>(n));
    pivots = pivotsOnHeap.data();
  }
  std::fill_n(pivots, n, 0);

  // No caller could act on the status: a bad system shows in the residuals that the operators print.
  static_cast<void>(LAPACKE_dgesv(LAPACK_ROW_MAJOR, n, nrhs, A, n, pivots, B, nrhs));

  std::ptrdiff_t const nValues = static_cast<std::ptrdiff_t>(n) * nrhs;
  for (std::ptrdiff_t i = 0; i < nValues; ++i) X[i] = B[i];
  return Status::kSuccess;
}
