#pragma once

#include "foundation/Cpp_DataStructure.h"

namespace zyngrad {

/// Row k of a ragged table: its length and its entries behind it.
///
/// UBSan would ask here whether the table is of this very class, and the library keeps its type information to
/// itself.
#if defined(__GNUC__)
__attribute__((no_sanitize("vptr")))
#endif
inline int const*
StencilRow(Cpp_DataStructure const& table, int k) {
  return table.m_ppRow[k];
}

}  // namespace zyngrad
