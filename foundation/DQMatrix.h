#pragma once

#include <algorithm>
#include <cstddef>

#include "foundation/DQVector.h"
#include "foundation/Power.h"
#include "foundation/TwoDoubles.h"

/// @file
/// The matrices and right-hand sides of the radial-basis systems, for any form of the kernel. Entries are computed in
/// blocks, since powers are fastest for many numbers at once.

/// Kernel values that stand in a symmetric matrix twice, two at a time: at lower[0] and lower[1], side by side in a row,
/// and below each other in a column, at upper[0] and upper[stride].
template <typename Kernel>
class MatrixEntryBlock {
 public:
  MatrixEntryBlock(Kernel const& kernel, std::ptrdiff_t stride) : kernel_(kernel), stride_(stride) {}

  /// @param offsets  between the points of the first and of the second entry
  void Add(TwoDQVectors const& offsets, double* lower, double* upper) {
    if (nPair_ == kRoom) Store();
    TwoDoubles const r = Length(kernel_.Scaled(offsets));
    StoreTwo(r, lengths_ + 2 * nPair_);
    StoreTwo(kernel_.ValueBase(r), powers_ + 2 * nPair_);
    places_[nPair_] = {lower, upper};
    ++nPair_;
  }

  /// Computes what has been added and stores it in the matrix.
  void Store() {
    RaiseToPower<Kernel::kValueExponent>(powers_, 2 * nPair_);
    for (int i = 0; i < nPair_; ++i) {
      TwoDoubles const values = kernel_.Value(LoadTwo(lengths_ + 2 * i), LoadTwo(powers_ + 2 * i));
      StoreTwo(values, places_[i].lower);
      places_[i].upper[0] = values[0];
      places_[i].upper[stride_] = values[1];
    }
    nPair_ = 0;
  }

 private:
  static constexpr int kRoom = 64;
  struct Places {
    double *lower, *upper;
  };

  Kernel const& kernel_;
  std::ptrdiff_t const stride_;
  int nPair_ = 0;
  double lengths_[2 * kRoom], powers_[2 * kRoom];
  Places places_[kRoom];
};

/// A[k][j] = kernel(|X_k - X_j|) for k, j in 0..n-1.
///
/// One half of the entries is computed, two at a time, and copied to the other half: an offset and its opposite have
/// the same length, bit for bit. All offsets on the diagonal are zero and have one value in common; only a coordinate
/// that is infinite or not a number has another offset from itself.
/// @param[in]  points  [0..n-1]
/// @param[out] A       row-major with `stride` values a row, stride >= n; columns n.. are left as they are
template <typename Kernel>
void FillKernelMatrix(Kernel const& kernel, DQVector const* points, int n, double* A, int stride) {
  MatrixEntryBlock<Kernel> block(kernel, stride);
  for (int k = 1; k < n; ++k) {
    DQVector const& at = points[k];
    double* const row = A + static_cast<std::ptrdiff_t>(k) * stride;
    for (int j = 0; j < k; j += 2) {
      // Of an odd number of entries the last one is computed twice; its double lands on the diagonal, which comes later.
      DQVector const &p = points[j], &q = points[std::min(j + 1, k - 1)];
      block.Add(
          TwoDQVectors{at.x - TwoDoubles{p.x, q.x}, at.y - TwoDoubles{p.y, q.y}, at.z - TwoDoubles{p.z, q.z}},
          row + j, A + static_cast<std::ptrdiff_t>(j) * stride + k);
    }
  }
  block.Store();

  auto const valueAt = [&kernel](DQVector const& offset) {
    return kernel.Value(Length(kernel.Scaled(offset)));
  };
  double const valueAtZero = valueAt(DQVector{0.0, 0.0, 0.0});
  for (int k = 0; k < n; ++k) {
    DQVector const own = OffsetBetween(points[k], points[k]);
    bool const isZero = own.x == 0.0 && own.y == 0.0 && own.z == 0.0;
    A[static_cast<std::ptrdiff_t>(k) * (stride + 1)] = isZero ? valueAtZero : valueAt(own);
  }
}

/// Right-hand sides of the kernels centred on some points, at one place.
template <typename Kernel>
class ColumnBlock {
 public:
  static constexpr int kRoom = 64;

  /// @param n  number of points, up to kRoom
  ColumnBlock(Kernel const& kernel, DQVector const* points, int n, DQVector const& at)
      : kernel_(kernel), n_(n) {
    for (int k = 0; k < n; ++k) {
      offsets_[k] = kernel.Scaled(OffsetBetween(points[k], at));
      lengths_[k] = Length(offsets_[k]);
    }
  }

  /// The kernel's value. @param[out] b  one number in every `nColumn`
  void PutValues(double* b, int nColumn) {
    double powers[kRoom];
    for (int k = 0; k < n_; ++k) powers[k] = kernel_.ValueBase(lengths_[k]);
    RaiseToPower<Kernel::kValueExponent>(powers, n_);
    for (int k = 0; k < n_; ++k, b += nColumn) *b = kernel_.Value(lengths_[k], powers[k]);
  }

  /// The kernel's slope along x, y, z. @param[out] b  three numbers in every `nColumn`
  void PutGradients(double* b, int nColumn) {
    double powers[kRoom];
    for (int k = 0; k < n_; ++k) powers[k] = kernel_.GradientBase(lengths_[k]);
    RaiseToPower<Kernel::kGradientExponent>(powers, n_);
    for (int k = 0; k < n_; ++k, b += nColumn) {
      DQVector const gradient = kernel_.Gradient(offsets_[k], lengths_[k], powers[k]);
      b[0] = gradient.x;
      b[1] = gradient.y;
      b[2] = gradient.z;
    }
  }

 private:
  Kernel const& kernel_;
  int const n_;
  DQVector offsets_[kRoom];
  double lengths_[kRoom];
};

/// Calls put(block, b) for one block of points after the other, b the place of its right-hand sides.
template <typename Kernel, typename Put>
void FillColumns(Kernel const& kernel, DQVector const* points, int n, DQVector const& at, double* b,
                 int nColumn, Put const& put) {
  for (int first = 0; first < n; first += ColumnBlock<Kernel>::kRoom) {
    int const nPoint = std::min(n - first, ColumnBlock<Kernel>::kRoom);
    ColumnBlock<Kernel> block(kernel, points + first, nPoint, at);
    put(block, b + static_cast<std::ptrdiff_t>(first) * nColumn);
  }
}

/// b[k] = kernel(|at - X_k|).
template <typename Kernel>
void FillValueColumn(Kernel const& kernel, DQVector const* points, int n, DQVector const& at, double* b) {
  FillColumns(kernel, points, n, at, b, 1, [](auto& block, double* to) { block.PutValues(to, 1); });
}

/// b[k][0..2] = the slope of kernel(|x - X_k|) along x, y, z at x = at, row-major with three columns.
template <typename Kernel>
void FillGradientColumns(Kernel const& kernel, DQVector const* points, int n, DQVector const& at, double* b) {
  FillColumns(kernel, points, n, at, b, 3, [](auto& block, double* to) { block.PutGradients(to, 3); });
}

/// b[k][0..3] = these slopes, then the value, row-major with four columns.
template <typename Kernel>
void FillGradientAndValueColumns(Kernel const& kernel, DQVector const* points, int n, DQVector const& at,
                                 double* b) {
  FillColumns(kernel, points, n, at, b, 4, [](auto& block, double* to) {
    block.PutGradients(to, 4);
    block.PutValues(to + 3, 4);
  });
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
