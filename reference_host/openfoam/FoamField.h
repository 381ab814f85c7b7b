#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "reference_host/openfoam/PolyMeshReader.h"

namespace reference_host {

/// A cell-centred scalar of an OpenFOAM mesh.
struct FoamField {
  std::vector<double> cell;  ///< by cell of the mesh
  std::vector<std::optional<std::vector<double>>>
      patch;  ///< by patch: value of each face; empty: that of its cell

  /// By patch: the file should tell values of its faces, but does not, so that their cells' stand in.
  std::vector<char> lacksValues;
};

/// Reads a volScalarField, text: internalField uniform or nonuniform, and the boundary values of each patch, which are
/// the entry `value`. On patches of type zeroGradient, symmetry, symmetryPlane, slip and empty a face has the value of its
/// cell; so it has where there is no `value`, which `lacksValues` tells. A patch is found by its name or by the last
/// quoted pattern that matches it.
/// @param[in] nCells    of the mesh
/// @param[in] boundary  of the mesh
/// Throws MeshError for other classes, binary files, wrong lengths and macros other than $internalField for a uniform
/// field.
FoamField ReadFoamField(std::string const& file, std::int64_t nCells, PolyMeshBoundary const& boundary);

}  // namespace reference_host
