#pragma once

#include <cstdint>

#include "reference_host/box/BoxBlocks.h"
#include "reference_host/box/BoxMapping.h"
#include "reference_host/box/BoxSpec.h"

namespace reference_host {

/// The cubes of a box.
inline GridBlock CubesOf(BoxSpec const& spec) { return {{0, 0, 0}, {spec.nx, spec.ny, spec.nz}}; }

/// The nodes of a box's cubes: their numbers and places.
class BoxNodes {
 public:
  explicit BoxNodes(BoxSpec const& spec);

  GridBlock const& grid() const { return grid_; }
  std::int64_t Number(GridIndex const& node) const { return static_cast<std::int64_t>(grid_.Offset(node)); }

  /// After perturbation and mapping. It depends on the node alone, so that every rank computes the same.
  Point PlaceOf(GridIndex const& node) const;

 private:
  BoxSpec const spec_;
  BoxMapping const mapping_;
  GridBlock const grid_;
};

/// Corner 0..7 of a cube, as ShapeInCube counts them.
inline GridIndex CornerOf(GridIndex const& cube, int corner) {
  return {cube[0] + (corner & 1), cube[1] + (corner >> 1 & 1), cube[2] + (corner >> 2 & 1)};
}

/// The cube beyond a side, as ShapeInCube counts them; perhaps outside the box.
inline GridIndex CubeAcross(GridIndex cube, int side) {
  cube[static_cast<std::size_t>(side) / 2] += side % 2 == 0 ? -1 : 1;
  return cube;
}

}  // namespace reference_host
