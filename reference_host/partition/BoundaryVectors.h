#pragma once

#include <array>
#include <vector>

#include "reference_host/partition/HostPartition.h"

namespace reference_host {

/// Which values a field has at the faces of a patch.
enum class FaceValues : signed char {
  File,        ///< those of the file
  Cell,        ///< those of the cells
  Tangential,  ///< of a vector: those of the cells without the part along the face's normal
  Turned       ///< of a vector: those of the cells, turned from the middle plane of a wedge to its side
};

/// v without its part along the unit vector n: what a plane of symmetry or a slip wall leaves of the cell's vector.
Point WithoutNormalPart(Point const& v, Point const& n);

/// v turned as the coordinate direction nearest to the unit vector n has to be turned to become n. The middle plane of a
/// wedge is a coordinate plane, so that this turns the cell's vector to the wedge's side with the normal n. A field
/// with the symmetry of the axis then keeps its radial and its swirling part, and its gradient gets u_r / r across.
Point TurnedToSide(Point const& v, Point const& n);

/// Gives the ghost cells of patches marked Tangential or Turned their vectors; all others keep theirs.
/// @param[in]     ofPatch  by patch of the partition
/// @param[in,out] vector   [1..NCell] x, y and z each; the ghost cells hold the values of their cells
void CompleteBoundaryVectors(HostPartition& partition, std::vector<FaceValues> const& ofPatch,
                             std::array<std::vector<double>, 3>& vector);

}  // namespace reference_host
