#pragma once

#include "foundation/ZeroedBlock.h"

/// @file
/// Frees what a member of an operator owns and leaves the member null. A null member is fine.

template <typename T>
void DeleteObject(T*& object) {
  delete object;
  object = nullptr;
}

/// An array made by new[].
template <typename T>
void DeleteArray(T*& array) {
  delete[] array;
  array = nullptr;
}

/// An array made by NewZeroedArray.
template <typename T>
void FreeZeroedArray(T*& array) {
  FreeZeroedBlock(array);
  array = nullptr;
}
