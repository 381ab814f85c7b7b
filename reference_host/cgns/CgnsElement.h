#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>

#include "reference_host/cgns/CgnsFile.h"
#include "reference_host/mesh/CellShapes.h"

namespace reference_host {

/// What elements of a type are to a mesh.
enum class CgnsRole {
  Cell,
  Surface,
  PassedOver,  ///< nodes and edges: no part of a mesh, but some programs write them
  Mixed,       ///< each element says its type
  Other        ///< cannot be read as a standard element
};

CgnsRole RoleOfCgnsType(int type);

/// Number of nodes of an element; 0 if elements of the type differ.
int NodeCountOfCgnsType(int type);

/// Whether the elements are polygons (NGON_n).
bool IsCgnsPolygons(CgnsSection const& section);

/// Whether the elements are polyhedra (NFACE_n).
bool IsCgnsPolyhedra(CgnsSection const& section);

/// Whether the elements may stand beside polygons and are passed over.
bool IsCgnsEdge(CgnsSection const& section);

/// A linear cell or surface element.
struct CgnsStandardElement {
  std::int64_t element = 0;  ///< number in the zone
  bool isCell = false;       ///< else a surface
  CellShape shape = CellShape::Tetrahedron;
  int nNodes = 0;
  std::array<std::int64_t, 8> nodes = {};  ///< counted from 0, in the order of FaceMeshBuilder
};

/// Calls visit(element) for those elements of a section that are cells or surfaces.
/// @param[in] elements  of the section
/// @param[in] first     number of the first of them
/// @throws MeshError  the first that has another type, another number of nodes or a node that does not exist
void ForEachStandardElement(CgnsFile const& file, CgnsSection const& section, CgnsElements const& elements,
                            std::int64_t first, std::function<void(CgnsStandardElement const&)> const& visit);

}  // namespace reference_host
