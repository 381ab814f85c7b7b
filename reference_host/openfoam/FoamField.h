#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "reference_host/openfoam/FoamFile.h"
#include "reference_host/openfoam/FoamList.h"
#include "reference_host/openfoam/FoamSyntax.h"
#include "reference_host/openfoam/PolyMeshReader.h"

namespace reference_host {

/// A cell-centred field of an OpenFOAM mesh, of scalars or vectors.
struct FoamField {
  int nComponents = 1;       ///< 1: volScalarField, 3: volVectorField
  std::vector<double> cell;  ///< [nComponents * cell + component], cells of the mesh
  /// by patch: [nComponents * face + component]; empty: the faces take the values of their cells
  std::vector<std::optional<std::vector<double>>> patch;

  /// By patch: the file should have values of the faces but does not, so that they take those of their cells.
  std::vector<char> lacksValues;

  /// By patch: the type of its entry in boundaryField, such as "fixedValue"; empty if it has no entry. It can differ
  /// from the type of the patch in the mesh.
  std::vector<std::string> patchType;

  /// Exponents of mass, length, time, temperature, amount, current and light intensity; empty: not in the file.
  std::optional<std::array<double, 7>> dimensions;

  std::string file;  ///< on disk, with .gz if it is compressed
  FoamFormat format;
};

/// Reads a volScalarField or volVectorField: a uniform or nonuniform internalField, and the boundary values of each
/// patch from its entry `value`. On patches of the types zeroGradient, symmetry, symmetryPlane, slip, wedge and empty, a
/// face has the value of its cell; a vector is zero on noSlip. A patch without `value` has the values of its cells, too,
/// and `lacksValues` marks it. A patch is found by its name or by the last quoted pattern that matches it.
///
/// Macros stand for values, parts of them, and patches: see FoamEntries.
/// @param[in] nCells    of the mesh
/// @param[in] boundary  of the mesh
/// @throws MeshError  other classes, wrong lengths, directives such as include, and macros for what is not there
FoamField ReadFoamField(std::string const& file, std::int64_t nCells, PolyMeshBoundary const& boundary);

/// A field whose values of cells may be in the file yet.
struct FoamFieldOutline {
  FoamField field;  ///< without values of cells
  FoamReals cells;  ///< neither left nor a list: all cells have `same`
};

/// The same as ReadFoamField, but leaves a list of the cells' values in the file, see LeaveFoamReals.
/// @param[in] file  just opened
FoamFieldOutline ReadFoamFieldOutline(FoamFile& file, std::int64_t nCells, PolyMeshBoundary const& boundary);

}  // namespace reference_host
