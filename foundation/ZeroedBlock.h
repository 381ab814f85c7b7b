#pragma once

#include <cstddef>
#include <type_traits>

/// A block of zero bytes for a large table. Free it with FreeZeroedBlock.
///
/// Where possible the zeros are those of the system's fresh pages, so a page is touched for the first time when its
/// table is filled. The pages are large ones where the system grants them. With a gigabyte of tables, page faults
/// would otherwise cost as much as the arithmetic that fills the tables.
/// @return never null: failure is that of operator new, exception included
void* NewZeroedBlock(std::size_t nByte);

/// The same without the zeros: for what is written before it is read, piece by piece. A block that the program has used
/// before would have to be cleared as a whole, long before its pieces are filled.
void* NewRawBlock(std::size_t nByte);

/// Of either kind. Null is fine.
void FreeZeroedBlock(void* block);

/// Elements 0..n of zero bytes, which must be what T() is. Free them with FreeZeroedArray of Release.h or
/// FreeZeroedBlock.
template <typename T>
T* NewZeroedArray(int n) {
  static_assert(std::is_trivially_copyable_v<T>,
                "zero bytes are elements, and they are given back as they are");
  return static_cast<T*>(NewZeroedBlock((static_cast<std::size_t>(n) + 1) * sizeof(T)));
}
