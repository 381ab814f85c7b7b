#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// Elements of a Gmsh file one after another; the type determines the number of node tags of each.
struct GmshElements {
  std::vector<int> type;
  std::vector<std::int64_t> tag;
  std::vector<std::int64_t> nodeTag;
};

/// The nodes of a surface and those of another, its master, on which they lie after a transformation.
struct GmshPeriodicSurface {
  std::int64_t surface = 0, master = 0;  ///< numbers of the geometric surfaces
  /// 4 x 4, row by row: from the master to the surface; empty: the file does not give it
  std::vector<double> transformation;
  std::vector<std::pair<std::int64_t, std::int64_t>> nodeTags;  ///< of the surface and of its master
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

  std::vector<GmshPeriodicSurface> periodicSurfaces;

  std::int64_t nPartitions = 0;                  ///< as the file says; 0: it does not
  std::set<std::int64_t> partitionsWithVolumes;  ///< those of volume elements or volumes in the file
};

}  // namespace reference_host
