#pragma once

#include <lapacke.h>

/// The library's one door to LAPACK: a general dense system by LU factorisation with row exchanges.
class CDenseSolver {
 public:
  /// Solves A S = B and leaves S in both B and X. No equilibration, no refinement, no condition estimate.
  ///
  /// A singular matrix is not reported: B and X then hold what the factorisation left, and so they do when A
  /// or B holds a NaN, in which case B stays as it was.
  /// @param[in,out] A  n x n, row-major without padding; overwritten with its factors
  /// @param[in,out] B  n x nrhs, row-major; overwritten with the solution
  /// @param[out]    X  n * nrhs values; may be B
  /// @return 1, whatever happened
  int Solve(lapack_int n, double* A, double* B, double* X, int nrhs);
};
