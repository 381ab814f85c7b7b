#pragma once

#include <mpi.h>

#include <array>
#include <string>
#include <vector>

#include "reference_host/parallel/LoadMesh.h"
#include "reference_host/partition/BoundaryVectors.h"

namespace reference_host {

/// Which values a field took at the faces of a patch.
struct PatchValues {
  std::string patch;
  FaceValues values = FaceValues::File;
  bool isMissing = false;  ///< the file should have them but does not
};

/// A cell field of one partition, from a file: a scalar, or a vector of three components.
struct LoadedField {
  int nComponents = 1;

  /// By component: [1..NCell] halo cells included; for ghost cells, the values at the boundary faces. Unused ones are
  /// empty.
  std::array<std::vector<double>, 3> value;

  std::vector<PatchValues> patches;  ///< those that have faces; the same on every rank
};

/// Collective. Reads a cell field of a mesh that LoadMesh has loaded.
///
/// `fieldSpec` is a volScalarField or volVectorField of OpenFOAM: a path as it is, or one in the case of the mesh
/// ("0/T"). For a decomposed case, each rank looks up the last two parts, TIME/NAME, in its own processor folder.
/// Otherwise `fieldSpec` is FILE.cgns:ARRAY or FILE.cgns:SOLUTION/ARRAY: a cell-centred array in the cell order of the
/// mesh file, without boundary values; "Velocity" stands for the vector of VelocityX, VelocityY, VelocityZ. Of
/// the files of a whole mesh, each rank reads or gets a share, from which all ranks fetch the values of their cells; rank
/// 0 holds those of the boundary faces.
/// @param[in] communicator  the one that the mesh was loaded on
/// @throws MeshError  with the same text on every rank
LoadedField LoadField(MPI_Comm communicator, LoadedMesh& mesh, std::string const& fieldSpec);

}  // namespace reference_host
