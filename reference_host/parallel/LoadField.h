#pragma once

#include <mpi.h>

#include <string>
#include <vector>

#include "reference_host/parallel/LoadMesh.h"

namespace reference_host {

/// A cell field of one partition, from a file.
struct LoadedField {
  /// [1..NCell] halo cells included; for ghost cells, the values at the boundary faces
  std::vector<double> value;

  /// Patches whose faces have no values in the file, so that they take those of their cells; the same on every rank.
  std::vector<std::string> patchesWithoutValues;
};

/// Collective. Reads a cell field of a mesh that LoadMesh has loaded.
///
/// `fieldSpec` is a volScalarField of OpenFOAM: a path as it is, or one in the case of the mesh ("0/T"). For a decomposed
/// case, each rank looks up the last two parts, TIME/NAME, in its own processor folder. Otherwise `fieldSpec` is
/// FILE.cgns:ARRAY or FILE.cgns:SOLUTION/ARRAY: a cell-centred array in the cell order of the mesh file, without
/// boundary values. Rank 0 reads the files of a whole mesh and sends each rank its values.
/// @param[in] communicator  the one that the mesh was loaded on
/// @throws MeshError  with the same text on every rank
LoadedField LoadField(MPI_Comm communicator, LoadedMesh& mesh, std::string const& fieldSpec);

}  // namespace reference_host
