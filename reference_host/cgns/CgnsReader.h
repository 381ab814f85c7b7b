#pragma once

#include <string>

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// Reads the one unstructured zone of a CGNS file: linear cells (TETRA_4, PYRA_5, PENTA_6, HEXA_8, alone or in MIXED
/// sections) or polyhedra (NGON_n with NFACE_n or with parent elements). Cells keep the order of their element
/// numbers, which is the order of cell-centred solutions.
///
/// A boundary face goes to the patch of its boundary condition: the family's name if the condition has one, else its own
/// name; the patch type is the BCType_t, of the family if the condition leaves it to that. Conditions are given by
/// element numbers (FaceCenter, or ElementRange and ElementList of older files) or by nodes (Vertex): a face belongs to
/// a set of nodes that has all of its nodes. Without a condition the section of its surface element names the patch, and
/// without that it goes to a patch "unnamed".
///
/// Throws MeshError for files that cannot be read, no base or several of three dimensions, several zones, structured
/// zones and elements of higher order. The mesh returned still has to pass CheckMesh.
FaceMesh ReadCgns(std::string const& file);

}  // namespace reference_host
