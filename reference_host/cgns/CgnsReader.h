#pragma once

#include <string>

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// Reads the one unstructured zone of a CGNS file: linear cells (TETRA_4, PYRA_5, PENTA_6, HEXA_8, alone or
/// in MIXED sections) or polyhedra (NGON_n with NFACE_n or with parent elements). Cells keep the order of
/// their element numbers, which is that of cell-centred solutions.
///
/// A boundary face belongs to the patch of its boundary condition. The patch is named after the condition's
/// family if it has one, else after the condition; its type is the BCType_t of the condition, or of the
/// family if the condition leaves it to that. Conditions list element numbers (FaceCenter, or ElementRange
/// and ElementList in older files) or nodes (Vertex): a face belongs to a set of nodes if the set has all of
/// its nodes. A face without a condition belongs to the patch named after the section of its surface element,
/// and without that to a patch "unnamed".
///
/// Throws MeshError for files that cannot be read, for no three-dimensional base or several, for several
/// zones, structured zones and elements of higher order. Pass the result to CheckMesh before you use it.
FaceMesh ReadCgns(std::string const& file);

}  // namespace reference_host
