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

  /// Solve with X = B, bit for bit, for a matrix whose entries (i, j) and (j, i) have the same bits. Rows of such a matrix
  /// are its columns, so LAPACK gets it as it lies: a row-major matrix would be transposed into memory allocated for it,
  /// and back, in each call.
  /// @param[out] columns  work memory for n * nrhs numbers; not used, and may be null, if nrhs is 1
  /// @return 1, whatever happened
  int SolveSymmetric(lapack_int n, double* A, double* B, double* columns, int nrhs);

  /// The same with right-hand sides and solution column by column, nrhs x n row-major, where they stay.
  int SolveSymmetricColumns(lapack_int n, double* A, double* columns, int nrhs);
};
