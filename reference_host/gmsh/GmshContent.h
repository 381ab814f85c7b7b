#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// Elements of a Gmsh file one after the other; the type tells how many node tags each has.
struct GmshElements {
  std::vector<int> type;
  std::vector<std::int64_t> tag;
  std::vector<std::int64_t> nodeTag;
};

/// What is read from a Gmsh file of either version before it is made a mesh. Tags are the numbers in the
/// file, which may begin anywhere and have gaps.
struct GmshContent {
  std::map<std::int64_t, std::string> surfaceName;  ///< names of the physical surfaces by physical tag

  std::vector<std::int64_t> nodeTag;
  std::vector<Point> point;

  GmshElements volumes;
  GmshElements surfaces;
  std::vector<std::int64_t> physicalOfSurface;  ///< physical tag of each surface element, 0 if it has none
};

}  // namespace reference_host
