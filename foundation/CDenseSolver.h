#pragma once

#include <lapacke.h>

/// Solves dense systems by LU factorisation with row exchanges. Nothing else in the library calls LAPACK.
class CDenseSolver {
 public:
  /// Solves A S = B and leaves S in both B and X. No equilibration, no refinement, no condition estimate.
  ///
  /// A singular matrix is not reported: B and X then hold whatever the factorisation left in B. If A or B holds a NaN,
  /// B may stay as it was.
  /// @param[in,out] A  n x n, row-major without padding; overwritten with its factors
  /// @param[in,out] B  n x nrhs, row-major; overwritten with the solution
  /// @param[out]    X  n * nrhs values; may be B
  /// @return 1, whatever happened
  int Solve(lapack_int n, double* A, double* B, double* X, int nrhs);
};
