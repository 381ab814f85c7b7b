#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>

/// The ragged tables [0..nPoint] of the immersed-boundary points, each row an allocation of its own.
template <typename T>
class PointTable {
 public:
  /// All rows are null. A negative number of points counts as 0.
  static std::unique_ptr<T* []> Create(int nPoint) {
    return std::unique_ptr<T*[]>(new T*[static_cast<std::size_t>(std::max(nPoint, 0)) + 1]());
  }

  /// Replaces a row by elements 0..n, each T().
  static void Renew(T*& row, int n) {
    delete[] row;
    row = nullptr;  // there may be no memory for the new one
    row = new T[static_cast<std::size_t>(n) + 1]();
  }

  /// Frees rows and table and sets the table to null; null is fine.
  static void Destroy(T**& table, int nPoint) {
    if (table == nullptr) return;
    for (int i = 0; i <= nPoint; ++i) delete[] table[i];
    delete[] table;
    table = nullptr;
  }
};
