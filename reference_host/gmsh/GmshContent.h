#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// Elements of a Gmsh file one after another; the type determines the number of node tags of each.
struct GmshElements {
  std::vector<int> type;
  std::vector<std::int64_t> tag;
  std::vector<std::int64_t> nodeTag;
};

/// The content of a Gmsh file of either version, before a mesh is made of it. Tags are the numbers in the
/// file, which may begin anywhere and have gaps.
struct GmshContent {
  std::map<std::int64_t, std::string> surfaceName;  ///< names of the physical surfaces by physical tag

  std::vector<std::int64_t> nodeTag;
  std::vector<Point> point;

  GmshElements volumes;
  GmshElements surfaces;
  std::vector<std::int64_t> physicalOfSurface;  ///< physical tag of each surface element; 0: none
};

}  // namespace reference_host
