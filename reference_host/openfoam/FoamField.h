#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "reference_host/openfoam/PolyMeshReader.h"

namespace reference_host {

/// A cell-centred scalar field of an OpenFOAM mesh.
struct FoamField {
  std::vector<double> cell;  ///< by cell of the mesh
  /// by patch: the value of each face; empty: the faces take the values of their cells
  std::vector<std::optional<std::vector<double>>> patch;

  /// By patch: the file should have values of the faces but does not, so that they take those of their cells.
  std::vector<char> lacksValues;
};

/// Reads a volScalarField in text format: a uniform or nonuniform internalField, and the boundary values of
/// each patch from its entry `value`. On patches of the types zeroGradient, symmetry, symmetryPlane, slip and
/// empty, a face has the value of its cell. The same holds for a patch without `value`, which `lacksValues`
/// marks. A patch is found by its name or by the last quoted pattern that matches it.
/// @param[in] nCells    of the mesh
/// @param[in] boundary  of the mesh @throws MeshError  other classes, binary files, wrong lengths, and macros
///                      other than $internalField for a uniform field
FoamField ReadFoamField(std::string const& file, std::int64_t nCells, PolyMeshBoundary const& boundary);

}  // namespace reference_host
