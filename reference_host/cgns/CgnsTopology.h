#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "reference_host/cgns/CgnsFile.h"
#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// A surface element of a CGNS zone and the boundary face that it lies on.
struct CgnsSurface {
  std::int64_t element = 0;
  int section = 0;  ///< position among the sections
  int face = -1;    ///< -1: not at the boundary, or an earlier element lies there, too
};

/// Cells and faces of a zone, and the way from the numbers in the file to its boundary.
struct CgnsTopology {
  FaceMesh mesh;                      ///< without patches; facePatch is -1 everywhere
  std::vector<int> pointOfNode;       ///< [node - 1] -1: no cell uses the node
  std::vector<CgnsSurface> surfaces;  ///< ascending by element
};

/// "element 12 of section 'Cells'".
std::string NameOfElement(std::vector<CgnsSection> const& sections, std::int64_t element);

/// The topology of linear standard cells. Throws MeshError for elements of higher order.
CgnsTopology JoinCgnsCells(CgnsFile const& file, std::vector<CgnsSection> const& sections);

/// The topology of polygons and the polyhedra that they bound.
CgnsTopology JoinCgnsPolyhedra(CgnsFile const& file, std::vector<CgnsSection> const& sections);

/// Whether the cells are polyhedra, that is, whether there is a section of polygons.
bool HasCgnsPolygons(std::vector<CgnsSection> const& sections);

}  // namespace reference_host
