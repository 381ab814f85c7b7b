#pragma once

#include <mpi.h>

#include <string>
#include <vector>

#include "reference_host/parallel/LoadMesh.h"

namespace reference_host {

/// A cell field of one partition, from a file.
struct LoadedField {
  std::vector<double> value;  ///< [1..NCell] halo cells included; for ghost cells, at the boundary faces

  /// Patches where the file has no values for the faces, so that those of their cells stand in; the same on every rank.
  std::vector<std::string> patchesWithoutValues;
};

/// Collective. Reads a cell field for a mesh that LoadMesh has made of `meshSpec`.
///
/// `fieldSpec` is a volScalarField of OpenFOAM, a path as it is or in the case ("0/T"); for a decomposed case its last two
/// parts, TIME/NAME, are looked up in each processor folder by the rank of its number. Or it is FILE.cgns:ARRAY or
/// FILE.cgns:SOLUTION/ARRAY for a cell-centred array, cell by cell in the order of the mesh file, without boundary
/// values. Files of a whole mesh are read by rank 0, which sends each rank its own values.
/// @param[in] communicator, mesh  as for LoadMesh
/// Throws MeshError, with the same text on every rank.
LoadedField LoadField(MPI_Comm communicator, std::string const& meshSpec, LoadedMesh& mesh,
                      std::string const& fieldSpec);

}  // namespace reference_host
