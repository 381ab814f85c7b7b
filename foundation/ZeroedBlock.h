#pragma once

#include <cstddef>
#include <type_traits>

/// A block of zero bytes for a large table, to be given back to FreeZeroedBlock.
///
/// The zeros are those of the system's fresh pages where possible, so that a page is touched for the first
/// time when its table is filled, and the pages are large ones where the system gives them for the asking: at
/// a gigabyte of tables, page faults would cost as much as the arithmetic that fills them.
/// @return never null: a failure is operator new's, exception included
void* NewZeroedBlock(std::size_t nByte);

/// Null is fine.
void FreeZeroedBlock(void* block);

/// Elements 0..n of zero bytes, which is what T() must be; to be given back to FreeZeroedBlock.
template <typename T>
T* NewZeroedArray(int n) {
  static_assert(std::is_trivially_copyable_v<T>,
                "zero bytes are elements, and they are given back as they are");
  return static_cast<T*>(NewZeroedBlock((static_cast<std::size_t>(n) + 1) * sizeof(T)));
}
