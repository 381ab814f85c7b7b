#include "reference_host/parallel/LoadPart.h"

#include <utility>

#include "reference_host/MeshReader.h"
#include "reference_host/box/BoxMesh.h"
#include "reference_host/mesh/BoundaryGroups.h"
#include "reference_host/mesh/MeshCheck.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/Periods.h"
#include "reference_host/openfoam/DecomposedCase.h"
#include "reference_host/openfoam/PolyMeshReader.h"
#include "reference_host/parallel/DecomposedCaseReader.h"
#include "reference_host/parallel/MeshDistribution.h"
#include "reference_host/parallel/MpiAgreement.h"
#include "reference_host/slabs/BoxSlab.h"
#include "reference_host/slabs/MpiLists.h"
#include "reference_host/slabs/PartitionFile.h"
#include "reference_host/slabs/PolyMeshSlabReader.h"
#include "reference_host/slabs/SlabCheck.h"
#include "reference_host/slabs/SlabDistribution.h"
#include "reference_host/slabs/SlabPartition.h"
#include "reference_host/slabs/SlabPeriods.h"
#include "reference_host/slabs/SlabReader.h"

namespace reference_host {
namespace {

/// The ways to a part. Everything that can fail is inside RunTogether.
class PartLoader {
 public:
  PartLoader(MpiCommunicator const& communicator, std::string const& meshSpec, GroupRules const& groups,
             MeshLoading const& loading, std::function<void(std::string const&)> const& progress)
      : communicator_(communicator),
        meshSpec_(meshSpec),
        groups_(groups),
        loading_(loading),
        progress_(progress) {}

  LoadedPart Load() {
    result_.source.spec = meshSpec_;
    if (IsBoxSpec(meshSpec_)) {
      LoadBox();
    } else if (IsDecomposed()) {
      ReadDecomposed();
    } else {
      LoadFile();
    }
    return std::move(result_);
  }

 private:
  // Which way.

  void LoadBox() {
    bool const isGiven = !loading_.partitionFile.empty();
    if (loading_.reading == MeshReading::Slabs || (isGiven && loading_.reading == MeshReading::Automatic)) {
      BoxSpec spec;
      RunTogether(communicator_, [&] { spec = ParseBoxSpec(meshSpec_); });
      Report("generating");
      CutSlabs(MakeBoxSlab(communicator_, spec), "each rank generates a slab", CheckGeometry::No);
    } else if (loading_.reading == MeshReading::Whole) {
      CutOnRank0("generating", "rank 0 generates the whole mesh",
                 [this] { return MakeBox(ParseBoxSpec(meshSpec_)); });
    } else {
      MakePartOfBox();
    }
  }

  void LoadFile() {
    SlabOffer const offer = OfferedSlabs();
    bool const isWanted =
        loading_.reading == MeshReading::Slabs ||
        (loading_.reading == MeshReading::Automatic && communicator_.size() > 1 && offer.isLarge);
    if (isWanted && offer.refusal.empty()) {
      Report("reading");
      MeshSlab slab = ReadMeshSlab(communicator_, meshSpec_);
      RememberPolyMesh(slab);
      CutSlabs(std::move(slab), "each rank reads a slab", CheckGeometry::Yes);
      return;
    }
    RunTogether(communicator_, [&] {
      if (loading_.reading == MeshReading::Slabs)
        throw MeshError(meshSpec_ + ": not in slabs: " + offer.refusal);
    });
    CutOnRank0("reading", "rank 0 reads the whole mesh", [this] {
      FaceMesh mesh = ReadMesh(meshSpec_);
      RememberPolyMesh(mesh);
      return mesh;
    });
    if (isWanted) result_.way += " (not in slabs: " + offer.refusal + ')';
  }

  /// Rank 0 decides, because a file system may not look the same to all ranks at the same time.
  SlabOffer OfferedSlabs() const {
    SlabOffer offer;
    OnRank0([&] { offer = OfferSlabs(meshSpec_); });
    int is = offer.isLarge ? 1 : 0;
    MPI_Bcast(&is, 1, MPI_INT, 0, communicator_.get());
    offer.isLarge = is != 0;
    offer.refusal = FromRank0(offer.refusal);
    if (offer.refusal.empty() && loading_.partitionFile.empty() && communicator_.size() > 1 &&
        !CanPartitionSlabs())
      offer.refusal = "PT-Scotch needs MPI_THREAD_MULTIPLE, which this MPI does not give";
    return offer;
  }

  std::string FromRank0(std::string text) const {
    int length = static_cast<int>(text.size());
    MPI_Bcast(&length, 1, MPI_INT, 0, communicator_.get());
    text.resize(static_cast<std::size_t>(length));
    MPI_Bcast(text.data(), length, MPI_CHAR, 0, communicator_.get());
    return text;
  }

  bool IsDecomposed() const {
    int is = 0;
    OnRank0([&] { is = IsDecomposedCase(meshSpec_) ? 1 : 0; });
    MPI_Bcast(&is, 1, MPI_INT, 0, communicator_.get());
    return is != 0;
  }

  // In slabs.

  /// @param[in] check  boxes are closed, and their volumes are checked later
  void CutSlabs(MeshSlab&& slab, std::string const& way, CheckGeometry check) {
    CheckSlabTables(communicator_, slab, meshSpec_);
    result_.facesOfPatch = CountFacesByPatch(slab.facePatch, slab.patches.size());
    AssignGroups(slab.patches);
    JoinSlabPeriods(communicator_, slab, meshSpec_);
    result_.nNodes = slab.nodes.nItems();

    Report("partitioning");
    bool const isGiven = !loading_.partitionFile.empty();
    bool const isSmall = slab.cells.nItems() <= kCellsOfSmallMesh;
    std::vector<int> const partOfOwnCell =
        isGiven ? ReadPartition(communicator_, loading_.partitionFile, slab.cells, communicator_.size())
                : PartitionSlab(communicator_, slab, meshSpec_);
    std::string const divider = isGiven ? loading_.partitionFile : isSmall ? "METIS" : "PT-Scotch";
    result_.way = way + ", " + divider + " divides the mesh";

    Report("distributing");
    result_.part = DistributeSlab(communicator_, std::move(slab), partOfOwnCell, meshSpec_, check);
  }

  /// Counts the faces of each patch over all ranks and assigns the groups.
  void AssignGroups(std::vector<Patch>& patches) {
    MPI_Allreduce(MPI_IN_PLACE, result_.facesOfPatch.data(), static_cast<int>(result_.facesOfPatch.size()),
                  MPI_INT64_T, MPI_SUM, communicator_.get());
    RunTogether(communicator_,
                [&] { AssignBoundaryGroups(patches, result_.facesOfPatch, groups_, meshSpec_); });
  }

  void RememberPolyMesh(MeshSlab const& slab) {
    int isPolyMesh = 0;
    OnRank0([&] {
      isPolyMesh = FormatOf(meshSpec_) == MeshFormat::PolyMesh ? 1 : 0;
      if (isPolyMesh != 0) result_.source.polyMesh = FindPolyMesh(meshSpec_);
    });
    MPI_Bcast(&isPolyMesh, 1, MPI_INT, 0, communicator_.get());
    if (isPolyMesh != 0) result_.source.boundary = GatherBoundary(communicator_, slab);
  }

  // On rank 0.

  template <class Make>
  void CutOnRank0(char const* stage, std::string const& way, Make const& make) {
    FaceMesh mesh;
    OnRank0([&] {
      Report(stage);
      mesh = make();
      CheckMesh(mesh, meshSpec_);
      result_.facesOfPatch = CountFacesByPatch(mesh.facePatch, mesh.patches.size());
      AssignBoundaryGroups(mesh.patches, result_.facesOfPatch, groups_, meshSpec_);
      JoinPeriods(mesh, meshSpec_);
      mesh.names.reset();  // messages no longer refer to the file
      result_.nNodes = static_cast<std::int64_t>(mesh.points.size());
    });
    MPI_Bcast(&result_.nNodes, 1, MPI_INT64_T, 0, communicator_.get());

    bool const isGiven = !loading_.partitionFile.empty();
    std::vector<int> partOfCell;
    OnRank0([&] {
      Report("partitioning");
      partOfCell = isGiven ? ReadPartition(loading_.partitionFile, mesh.nCells, communicator_.size())
                           : PartitionMesh(mesh, communicator_.size(), meshSpec_);
    });
    result_.way = way + ", " + (isGiven ? loading_.partitionFile : "METIS") + " divides it";
    OnRank0([&] { Report("distributing"); });
    result_.part = DistributeMesh(communicator_, &mesh, partOfCell);
    result_.facesOfPatch.resize(result_.part.patches.size());
    MPI_Bcast(result_.facesOfPatch.data(), static_cast<int>(result_.facesOfPatch.size()), MPI_INT64_T, 0,
              communicator_.get());
  }

  void RememberPolyMesh(FaceMesh const& mesh) {
    if (FormatOf(meshSpec_) != MeshFormat::PolyMesh) return;
    result_.source.polyMesh = FindPolyMesh(meshSpec_);
    result_.source.boundary = BoundaryOf(mesh);
  }

  // Each rank alone.

  void MakePartOfBox() {
    RunTogether(communicator_, [&] {
      Report("generating");
      BoxSpec const spec = ParseBoxSpec(meshSpec_);
      result_.nNodes = BoxNodeCount(spec);
      result_.part = MakeBoxPart(spec, communicator_.rank(), communicator_.size());
      result_.facesOfPatch = CountFacesByPatch(result_.part.facePatch, result_.part.patches.size());
    });
    AssignGroups(result_.part.patches);
    result_.way = "each rank generates its part";
  }

  void ReadDecomposed() {
    RunTogether(communicator_, [&] {
      if (!loading_.partitionFile.empty() || loading_.reading != MeshReading::Automatic)
        throw MeshError(meshSpec_ +
                        ": decomposed, so each rank reads the processor folder of its number; give "
                        "constant/polyMesh of the whole mesh to read or divide it otherwise");
    });
    OnRank0([&] { Report("reading"); });
    DecomposedPart decomposed =
        ReadDecomposedCase(communicator_, meshSpec_,
                           [this](std::vector<Patch>& patches, std::vector<std::int64_t> const& nFaces) {
                             result_.facesOfPatch = nFaces;
                             AssignBoundaryGroups(patches, nFaces, groups_, meshSpec_);
                           });
    result_.part = std::move(decomposed.part);
    result_.nNodes = decomposed.nNodes;
    result_.source.isDecomposed = true;
    result_.source.boundary = std::move(decomposed.boundary);
    result_.source.wholeCell = std::move(decomposed.wholeCell);
    result_.way = "each rank reads its processor folder";
  }

  // Support.

  void Report(std::string const& stage) const {
    if (communicator_.rank() == 0 && progress_) progress_(stage);
  }

  void OnRank0(std::function<void()> const& work) const {
    RunTogether(communicator_, [&] {
      if (communicator_.rank() == 0) work();
    });
  }

  MpiCommunicator const& communicator_;
  std::string const& meshSpec_;
  GroupRules const& groups_;
  MeshLoading const& loading_;
  std::function<void(std::string const&)> const& progress_;
  LoadedPart result_;
};

}  // namespace

std::vector<std::int64_t> CountFacesByPatch(std::vector<int> const& facePatch, std::size_t nPatches) {
  std::vector<std::int64_t> nFaces(nPatches, 0);
  for (int const patch : facePatch) {
    if (patch >= 0) ++nFaces[static_cast<std::size_t>(patch)];
  }
  return nFaces;
}

LoadedPart LoadPart(MpiCommunicator const& communicator, std::string const& meshSpec,
                    GroupRules const& groups, MeshLoading const& loading,
                    std::function<void(std::string const&)> const& progress) {
  return PartLoader(communicator, meshSpec, groups, loading, progress).Load();
}

}  // namespace reference_host
