#pragma once

#include <cstddef>
#include <type_traits>

#include "foundation/ZeroedBlock.h"

/// Ragged tables [0..nRow] behind members of the type T**. A table is one block of memory: first the row pointers,
/// then the rows in ascending order, so a walk over all rows is a walk through memory.
///
/// The elements are zero bytes, which must be what T() is. Row 0 and the rows above `nFilled` are null.
template <typename T>
class RowTable {
 public:
  /// @param lengthOf  number of elements of row i, element 0 included, for i in 1..nFilled; called twice for each row
  template <typename LengthOf>
  static T** Create(int nRow, int nFilled, LengthOf lengthOf) {
    std::size_t nElement = 0;
    for (int i = 1; i <= nFilled; ++i) nElement += static_cast<std::size_t>(lengthOf(i));
    return LayOut(NewZeroedBlock(Bytes(nRow, nElement)), nRow, nFilled, lengthOf);
  }

  /// What a table of nElement elements takes.
  static std::size_t Bytes(int nRow, std::size_t nElement) {
    return (static_cast<std::size_t>(nRow) + 1) * sizeof(T*) + nElement * sizeof(T);
  }

  /// Makes a table in memory of these bytes, and writes the pointers to rows 1..nFilled alone.
  template <typename LengthOf>
  static T** LayOut(void* memory, int nRow, int nFilled, LengthOf lengthOf) {
    T** const table = static_cast<T**>(memory);
    T* row = static_cast<T*>(static_cast<void*>(table + nRow + 1));
    for (int i = 1; i <= nFilled; ++i) {
      table[i] = row;
      row += lengthOf(i);
    }
    return table;
  }

  /// Frees a table made by Create together with its rows and sets the pointer to null; null is fine. It needs no
  /// count, and a row pointer that was changed in the meantime does no harm.
  static void Destroy(T**& table) {
    FreeZeroedBlock(table);
    table = nullptr;
  }

 private:
  static_assert(alignof(T) <= alignof(T*), "the rows follow the pointers directly");
  static_assert(std::is_trivially_copyable_v<T>,
                "zero bytes are elements, and the block is given back as it is");
};
