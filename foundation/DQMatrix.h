#pragma once

#include <cstddef>

#include "foundation/DQVector.h"

/// @file
/// The matrices of the radial-basis systems.

/// A[k][j] = kernel(|X_k - X_j|) for k, j in 0..n-1, for any form of the kernel.
///
/// One half of the entries is computed, two at a time, and copied to the other half: an offset and its opposite have
/// the same length, bit for bit. All offsets on the diagonal are zero and have one value in common; only a coordinate
/// that is infinite or not a number has another offset from itself.
/// @param[in]  points  [0..n-1]
/// @param[out] A       row-major with `stride` values a row, stride >= n; columns n.. are left as they are
template <typename Kernel>
void FillKernelMatrix(Kernel const& kernel, DQVector const* points, int n, double* A, int stride) {
  auto const valueAt = [&kernel](auto const& offset) { return kernel.Value(Length(kernel.Scaled(offset))); };
  double const valueAtZero = valueAt(DQVector{0.0, 0.0, 0.0});
  for (int k = 0; k < n; ++k) {
    DQVector const& at = points[k];
    double* const row = A + static_cast<std::ptrdiff_t>(k) * stride;
    double* column = A + k;
    int j = 0;
    for (; j + 1 < k; j += 2, column += 2 * static_cast<std::ptrdiff_t>(stride)) {
      DQVector const &p = points[j], &q = points[j + 1];
      TwoDoubles const values = valueAt(TwoDQVectors{at.x - TwoDoubles{p.x, q.x}, at.y - TwoDoubles{p.y, q.y},
                                                     at.z - TwoDoubles{p.z, q.z}});
      row[j] = values[0];
      row[j + 1] = values[1];
      column[0] = values[0];
      column[stride] = values[1];
    }
    if (j < k) {
      double const value = valueAt(OffsetBetween(points[j], at));
      row[j] = value;
      *column = value;
    }
    DQVector const own = OffsetBetween(at, at);
    bool const isZero = own.x == 0.0 && own.y == 0.0 && own.z == 0.0;
    row[k] = isZero ? valueAtZero : valueAt(own);
  }
}

/// Borders the n x n block in the corner of A, row-major of order n+1, for one constant term: a last column and a
/// last row of 1.0, with 0.0 where they meet.
inline void AddConstantTerm(double* A, int n) {
  std::ptrdiff_t const order = static_cast<std::ptrdiff_t>(n) + 1;
  double* const last = A + n * order;
  for (int k = 0; k < n; ++k) {
    A[k * order + n] = 1.0;
    last[k] = 1.0;
  }
  last[n] = 0.0;
}

/// [A 1; 1' 0] of order n+1, row-major, with A as FillKernelMatrix makes it.
template <typename Kernel>
void FillMatrixWithConstantTerm(Kernel const& kernel, DQVector const* points, int n, double* matrix) {
  FillKernelMatrix(kernel, points, n, matrix, n + 1);
  AddConstantTerm(matrix, n);
}
