#pragma once

#include <lapacke.h>

/// A general dense system, solved by LU factorisation with row exchanges. All calls of LAPACK in the library are
/// behind it.
class CDenseSolver {
 public:
  /// Solves A S = B and leaves S in both B and X, without equilibration, refinement or an estimate of the condition
  /// number.
  ///
  /// A singular matrix is not reported: B and X then hold what the factorisation leaves. If A or B holds a NaN, B
  /// stays as it is, and X is a copy of it.
  /// @param         n     order, at least 1
  /// @param[in,out] A     n x n, row-major without padding; overwritten with its factors
  /// @param[in,out] B     n x nrhs, row-major; overwritten with the solution
  /// @param[out]    X     n x nrhs, row-major; may be B
  /// @param         nrhs  number of right-hand sides
  /// @return 1, whatever happened
  int Solve(lapack_int n, double* A, double* B, double* X, int nrhs);
};
