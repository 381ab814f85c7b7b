#include "reference_host/parallel/LoadMesh.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <sstream>
#include <system_error>
#include <utility>
#include <vector>

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
#include "reference_host/parallel/MeshSource.h"
#include "reference_host/parallel/MpiAgreement.h"
#include "reference_host/parallel/MpiCommunicator.h"

namespace reference_host {
namespace {

/// Number of faces of each patch, from the patch of each face (-1: inside).
std::vector<std::int64_t> CountFacesOfPatches(std::vector<int> const& facePatch, std::size_t nPatches) {
  std::vector<std::int64_t> nFaces(nPatches, 0);
  for (int const patch : facePatch) {
    if (patch >= 0) ++nFaces[patch];
  }
  return nFaces;
}

/// The stages of one call of LoadMesh. Everything that can fail is inside RunTogether.
class MeshLoader {
 public:
  MeshLoader(MPI_Comm communicator, std::string const& meshSpec, GroupRules const& groups,
             std::function<void(std::string const&)> const& progress)
      : original_(communicator),
        communicator_(communicator),
        meshSpec_(meshSpec),
        groups_(groups),
        progress_(progress) {}

  LoadedMesh Load() {
    source_.spec = meshSpec_;
    BuildTables(MakePart());
    Summarize();
    loaded_.source = std::make_shared<MeshSource const>(std::move(source_));
    return std::move(loaded_);
  }

 private:
  MeshPart MakePart() {
    if (IsBoxSpec(meshSpec_)) return MakePartOfBox();
    return IsDecomposed() ? ReadDecomposed() : DistributeFile();
  }

  /// Rank 0 decides, because a file system may not look the same to all ranks at the same time.
  bool IsDecomposed() const {
    int is = 0;
    OnRank0([&] { is = IsDecomposedCase(meshSpec_) ? 1 : 0; });
    MPI_Bcast(&is, 1, MPI_INT, 0, communicator_.get());
    return is != 0;
  }

  MeshPart ReadDecomposed() {
    OnRank0([&] { Report("reading"); });
    DecomposedPart decomposed =
        ReadDecomposedCase(communicator_, meshSpec_,
                           [this](std::vector<Patch>& patches, std::vector<std::int64_t> const& nFaces) {
                             facesOfPatch_ = nFaces;
                             AssignBoundaryGroups(patches, nFaces, groups_, meshSpec_);
                           });
    loaded_.summary.nNodes = decomposed.nNodes;
    source_.isDecomposed = true;
    source_.boundary = std::move(decomposed.boundary);
    source_.wholeCell = std::move(decomposed.wholeCell);
    return std::move(decomposed.part);
  }

  void Report(std::string const& stage) const {
    if (communicator_.rank() == 0 && progress_) progress_(stage);
  }

  void SumOverRanks(std::vector<std::int64_t>& values) const {
    MPI_Allreduce(MPI_IN_PLACE, values.data(), static_cast<int>(values.size()), MPI_INT64_T, MPI_SUM,
                  communicator_.get());
  }

  MeshPart MakePartOfBox() {
    MeshPart part;
    RunTogether(communicator_, [&] {
      Report("generating");
      BoxSpec const spec = ParseBoxSpec(meshSpec_);
      loaded_.summary.nNodes = BoxNodeCount(spec);
      part = MakeBoxPart(spec, communicator_.rank(), communicator_.size());
      facesOfPatch_ = CountFacesOfPatches(part.facePatch, part.patches.size());
    });
    SumOverRanks(facesOfPatch_);
    RunTogether(communicator_,
                [&] { AssignBoundaryGroups(part.patches, facesOfPatch_, groups_, meshSpec_); });
    return part;
  }

  MeshPart DistributeFile() {
    FaceMesh mesh;  // on rank 0 only
    OnRank0([&] {
      Report("reading");
      mesh = ReadMesh(meshSpec_);
      RememberPolyMesh(mesh);
      CheckMesh(mesh, meshSpec_);
      facesOfPatch_ = CountFacesOfPatches(mesh.facePatch, mesh.patches.size());
      AssignBoundaryGroups(mesh.patches, facesOfPatch_, groups_, meshSpec_);
      JoinPeriods(mesh, meshSpec_);
      mesh.names.reset();  // messages no longer refer to the file
      loaded_.summary.nNodes = static_cast<std::int64_t>(mesh.points.size());
    });
    MPI_Bcast(&loaded_.summary.nNodes, 1, MPI_INT64_T, 0, communicator_.get());

    std::vector<int> partOfCell;
    OnRank0([&] {
      Report("partitioning");
      partOfCell = PartitionMesh(mesh, communicator_.size(), meshSpec_);
    });
    OnRank0([&] { Report("distributing"); });
    MeshPart part = DistributeMesh(communicator_, &mesh, partOfCell);
    facesOfPatch_.resize(part.patches.size());
    MPI_Bcast(facesOfPatch_.data(), static_cast<int>(facesOfPatch_.size()), MPI_INT64_T, 0,
              communicator_.get());
    return part;
  }

  void RememberPolyMesh(FaceMesh const& mesh) {
    std::error_code ignored;
    if (!std::filesystem::is_directory(meshSpec_, ignored)) return;
    source_.polyMesh = FindPolyMesh(meshSpec_);
    source_.boundary = BoundaryOf(mesh);
  }

  void OnRank0(std::function<void()> const& work) const {
    RunTogether(communicator_, [&] {
      if (communicator_.rank() == 0) work();
    });
  }

  void BuildTables(MeshPart&& part) {
    RunTogether(communicator_, [&] {
      Report("tables");
      MeshPart const own = std::move(part);  // freed here: the partition has its own tables
      loaded_.partition = std::make_unique<HostPartition>(own);
      CheckVolumes();
    });
    // Each begins with a collective duplication, before anything that can fail.
    RunTogether(communicator_,
                [&] { loaded_.exchange = std::make_unique<MpiExchange>(original_, *loaded_.partition); });
    RunTogether(communicator_, [&] { loaded_.reduction = std::make_unique<MpiReduction>(original_); });
    loaded_.partition->CompleteHalo(*loaded_.exchange);
  }

  // Files have passed CheckMesh. The cells of a box fit together by construction, but moved nodes can invert
  // them.
  void CheckVolumes() const {
    CZYN3DFiniteVolumeMesh const& mesh = *loaded_.partition->mesh();
    std::vector<std::int64_t> const& globalCell = loaded_.partition->globalCell();
    int first = 0;
    for (int c = 1; c <= mesh.NInnerCells; ++c) {
      if (!(mesh.Volume[c] > 0.0) && (first == 0 || globalCell[c] < globalCell[first])) first = c;
    }
    if (first == 0) return;
    std::ostringstream text;
    text << meshSpec_ << ": cell " << globalCell[first] << " has the volume " << mesh.Volume[first]
         << ", the nodes are moved too far";
    throw MeshError(text.str());
  }

  void Summarize() {
    RunTogether(communicator_, [&] { NamePatches(); });
    AddCounts();
    FindExtremes();
    AddQualities();
  }

  void NamePatches() {
    std::vector<Patch> const& patches = loaded_.partition->patches();
    for (std::size_t p = 0; p < patches.size(); ++p) {
      Patch const& patch = patches[p];
      std::int64_t const nPeriodic = IsPeriodic(patch, patches) ? facesOfPatch_[p] : 0;
      loaded_.summary.patches.push_back({patch.name, patch.type, patch.group, patch.reason, 0, nPeriodic});
    }
  }

  void AddCounts() {
    HostPartition& partition = *loaded_.partition;
    MeshSummary& summary = loaded_.summary;
    CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
    int const nPeriodicSides = CountPeriodicSides();
    std::vector<std::int64_t> counts = CountFacesOfPatches(
        {partition.patchOfGhost().begin() + 1, partition.patchOfGhost().end()}, summary.patches.size());
    counts.insert(counts.end(),
                  {mesh.NInnerCells, mesh.NInnerFaces,
                   partition.partitionFaces()->NParInterFace() - nPeriodicSides, nPeriodicSides});
    SumOverRanks(counts);

    for (std::size_t p = 0; p < summary.patches.size(); ++p) {
      summary.patches[p].nFaces = counts[p];
      if (auto const& group = summary.patches[p].group)
        summary.facesOfGroup[static_cast<std::size_t>(*group)] += counts[p];
    }
    std::size_t const next = summary.patches.size();
    summary.nCells = counts[next];
    summary.nInnerFaces = counts[next + 1];
    summary.nCutFaces = counts[next + 2] / 2;  // both sides have counted them
    summary.nPeriodicFaces = counts[next + 3] / 2;
  }

  int CountPeriodicSides() const {
    HostPartition& partition = *loaded_.partition;
    CPartitionFace_DLL& faces = *partition.partitionFaces();
    int const firstHalo = partition.mesh()->NCell - partition.nHaloCells() + 1;
    int nSides = 0;
    for (int f = 1; f <= faces.NParInterFace(); ++f) {
      if (partition.haloPeriod()[static_cast<std::size_t>(faces.ijPar()[f] - firstHalo)] != 0) ++nSides;
    }
    return nSides;
  }

  void FindExtremes() {
    HostPartition& partition = *loaded_.partition;
    MeshSummary& summary = loaded_.summary;
    int const nCells = partition.mesh()->NInnerCells;
    std::array<int, 4> most = {-nCells, nCells, partition.partitionFaces()->NParInterFace(),
                               CountNeighbours()};
    MPI_Allreduce(MPI_IN_PLACE, most.data(), static_cast<int>(most.size()), MPI_INT, MPI_MAX,
                  communicator_.get());
    summary.nParts = communicator_.size();
    summary.minCells = -most[0];
    summary.maxCells = most[1];
    summary.maxCutFaces = most[2];
    summary.maxNeighbours = most[3];
  }

  int CountNeighbours() const {
    std::vector<ExchangeList> const& lists = loaded_.partition->exchangeLists();
    return static_cast<int>(std::count_if(lists.begin(), lists.end(), [this](ExchangeList const& list) {
      return list.part != communicator_.rank();
    }));
  }

  // Sums in the order of the ranks, so that every run gives the same bits.
  void AddQualities() {
    QualitySums const own = MeasureQuality(*loaded_.partition);
    std::vector<QualitySums> all(static_cast<std::size_t>(communicator_.size()));
    MPI_Allgather(&own, sizeof(own), MPI_BYTE, all.data(), sizeof(own), MPI_BYTE, communicator_.get());
    for (QualitySums const& sums : all) AddQuality(loaded_.summary.quality, sums);
  }

  MPI_Comm original_;
  MpiCommunicator communicator_;
  std::string const& meshSpec_;
  GroupRules const& groups_;
  std::function<void(std::string const&)> const& progress_;
  MeshSource source_;
  std::vector<std::int64_t> facesOfPatch_;  // of the whole mesh, before periods are joined
  LoadedMesh loaded_;
};

}  // namespace

LoadedMesh LoadMesh(MPI_Comm communicator, std::string const& meshSpec, GroupRules const& groupsByUser,
                    std::function<void(std::string const&)> const& progress) {
  return MeshLoader(communicator, meshSpec, groupsByUser, progress).Load();
}

}  // namespace reference_host
