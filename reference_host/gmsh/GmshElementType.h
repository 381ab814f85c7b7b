#pragma once

#include <string>

#include "reference_host/mesh/CellShapes.h"

namespace reference_host {

/// A type of element that the reader takes or skips.
struct GmshElementType {
  int number;     ///< as in the file
  int dimension;  ///< 0 point, 1 line, 2 surface, 3 volume
  int nNodes;
};

/// The entry of a first-order type; null for any other number.
GmshElementType const* FindGmshElementType(int number);

/// The cell that a volume element is.
CellShape ShapeOf(GmshElementType const& type);

/// The name of a type that FindGmshElementType does not have: "a second-order tetrahedron with 10 nodes".
std::string DescribeGmshElementType(int number);

}  // namespace reference_host
