#pragma once

#include <mpi.h>

#include <cstdint>
#include <string>
#include <vector>

#include "reference_host/openfoam/BoundaryFile.h"
#include "reference_host/openfoam/FoamFieldWriter.h"
#include "reference_host/parallel/LoadMesh.h"
#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/slabs/BlockRanges.h"

namespace reference_host {

/// Makes fields of a mesh that LoadMesh has read from an OpenFOAM case into the form of the case's files: in the order of
/// the file's cells, with an entry for every patch. The first rank makes the files of a whole case, each rank those of
/// its own processor folder.
class CaseFieldMaker {
 public:
  /// Collective. Borrows the mesh.
  /// @throws MeshError  with the same text on every rank, if the mesh is not that of a case, or of one with several
  ///                    collated folders
  CaseFieldMaker(MPI_Comm communicator, LoadedMesh& mesh);

  /// Whether this rank writes a file, or a piece of a collated one.
  bool Writes() const { return isDecomposed_ || communicator_.rank() == 0; }

  bool IsDecomposed() const { return isDecomposed_; }

  /// Whether the case keeps the files of all processors as pieces of one file. The pieces are then put together on the
  /// first rank.
  bool IsCollated() const { return isCollated_; }

  /// Of a whole case: the cells of the file, in even blocks.
  BlockRanges const& cells() const { return cells_; }

  /// The case that this rank writes into, or its processor folder as it is on disk; empty if it writes nothing.
  std::string const& folder() const { return folder_; }

  /// Collective. Sets `cell` and `patches` of a field; on patches of type calculated, faces have the values of their
  /// cells, on those between processors the values of the cells beyond. The cells of a whole case are divided: each rank
  /// gets the block `cells()` of them, and only the first rank gets patches.
  /// @param[in] values  [nComponents * (c - 1) + k] of the interior cells c = 1..NInnerCells of this rank
  /// @param[in,out] field  with nComponents set
  /// @throws MeshError or std::bad_alloc  the former with the same text on every rank
  void Make(std::vector<double> const& values, FoamOutput& field) const;

 private:
  /// A patch of the case and the cells at its faces, if the field has values there.
  struct CasePatch {
    BoundaryFilePatch entry;
    std::vector<std::int64_t> owner;
  };

  void FindProcessorFolder();
  void ReadPatches();
  void TakeOwners(std::vector<BoundaryFilePatch> const& entries);
  std::string NameBeyond(BoundaryFilePatch const& patch) const;
  std::vector<double> InFileOrder(std::vector<double> const& values, int nComponents) const;
  void ScatterOverRanks(std::vector<std::int64_t> const& cells, std::vector<double> const& values,
                        int nComponents, std::vector<double>& inFile) const;
  std::vector<double> FetchAtOwners(std::vector<double> const& inFile, int nComponents) const;
  void ExchangeCuts(FoamOutput& field) const;

  MpiCommunicator communicator_;
  LoadedMesh& mesh_;
  bool isDecomposed_ = false, isCollated_ = false;
  std::string folder_, polyMesh_;
  std::vector<CasePatch> patches_;        ///< in the order of the file
  std::vector<std::int64_t> cellInFile_;  ///< [1..NInnerCells]
  BlockRanges cells_;
};

}  // namespace reference_host
