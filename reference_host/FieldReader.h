#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "reference_host/openfoam/FoamField.h"
#include "reference_host/openfoam/PolyMeshReader.h"
#include "reference_host/partition/BoundaryVectors.h"

namespace reference_host {

/// The file and the array in FILE.cgns:ARRAY; empty for anything else. Throws MeshError for FILE.cgns alone.
std::optional<std::pair<std::string, std::string>> CgnsFieldParts(std::string const& fieldSpec);

/// Whether `fieldSpec` names an array of a CGNS file.
bool IsCgnsField(std::string const& fieldSpec);

/// What a CGNS file says of a field beside the values of cells: nothing of the boundary.
/// @param[in] nFaces  faces of each patch
FoamField CgnsFieldWithoutCells(int nComponents, std::vector<std::int64_t> const& nFaces);

/// Throws MeshError unless a CGNS array has a value for each cell.
void CheckCgnsValueCount(std::string const& fieldSpec, std::int64_t nValues, std::int64_t nCells);

/// The file of an OpenFOAM field: a path as it is, or else one in the case that the mesh belongs to.
/// @param[in] polyMesh  the polyMesh folder of the mesh; empty for other meshes
/// @throws MeshError  if there is none
std::string FindFoamField(std::string const& polyMesh, std::string const& fieldSpec);

/// The field of a whole mesh, on one process.
/// @param[in] fieldSpec  a volScalarField or volVectorField of OpenFOAM, as a path or as a path in the case of the mesh
///                       ("0/T"); or FILE.cgns:ARRAY or FILE.cgns:SOLUTION/ARRAY, a cell-centred array; or
///                       FILE.cgns:NAME, a vector whose components are the arrays NAMEX, NAMEY, NAMEZ
/// @param[in] polyMesh   the polyMesh folder of the mesh; empty for other meshes
/// @param[in] nFaces     faces of each patch
/// @throws MeshError
FoamField ReadField(std::string const& fieldSpec, std::string const& polyMesh, std::int64_t nCells,
                    PolyMeshBoundary const& boundary, std::vector<std::int64_t> const& nFaces);

/// Which values the field has at the faces of each patch. Vectors lose their normal part on the types symmetry,
/// symmetryPlane and slip, and are turned on wedges. A patch of which the file says nothing is judged by its own type
/// and group.
std::vector<FaceValues> FaceValuesOf(FoamField const& field, std::vector<Patch> const& patches);

/// The name of a field, without its folder, file or solution: "U" of "0.5/U.gz", "Velocity" of "wing.cgns:Flow/Velocity".
std::string FieldName(std::string const& fieldSpec);

}  // namespace reference_host
