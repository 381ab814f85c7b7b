#include "reference_host/parallel/LoadMesh.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <utility>
#include <vector>

#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/Periods.h"
#include "reference_host/parallel/LoadPart.h"
#include "reference_host/parallel/MeshSource.h"
#include "reference_host/parallel/MpiAgreement.h"
#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/slabs/MpiLists.h"
#include "reference_host/slabs/PartitionFile.h"

namespace reference_host {
namespace {

/// The stages of one call of LoadMesh. Everything that can fail is inside RunTogether.
class MeshLoader {
 public:
  MeshLoader(MPI_Comm communicator, std::string const& meshSpec, GroupRules const& groups,
             MeshLoading const& loading, std::function<void(std::string const&)> const& progress)
      : original_(communicator),
        communicator_(communicator),
        meshSpec_(meshSpec),
        groups_(groups),
        loading_(loading),
        progress_(progress) {}

  LoadedMesh Load() {
    LoadedPart part = LoadPart(communicator_, meshSpec_, groups_, loading_, progress_);
    facesOfPatch_ = std::move(part.facesOfPatch);
    loaded_.summary.nNodes = part.nNodes;
    loaded_.summary.way = std::move(part.way);
    loaded_.source = std::make_shared<MeshSource const>(std::move(part.source));
    BuildTables(std::move(part.part));
    Summarize();
    return std::move(loaded_);
  }

 private:
  void Report(std::string const& stage) const {
    if (communicator_.rank() == 0 && progress_) progress_(stage);
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
    std::vector<std::int64_t> counts = CountFacesByPatch(
        {partition.patchOfGhost().begin() + 1, partition.patchOfGhost().end()}, summary.patches.size());
    counts.insert(counts.end(),
                  {mesh.NInnerCells, mesh.NInnerFaces,
                   partition.partitionFaces()->NParInterFace() - nPeriodicSides, nPeriodicSides});
    MPI_Allreduce(MPI_IN_PLACE, counts.data(), static_cast<int>(counts.size()), MPI_INT64_T, MPI_SUM,
                  communicator_.get());

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
  MeshLoading const& loading_;
  std::function<void(std::string const&)> const& progress_;
  std::vector<std::int64_t> facesOfPatch_;  // of the whole mesh, before periods are joined
  LoadedMesh loaded_;
};

}  // namespace

LoadedMesh LoadMesh(MPI_Comm communicator, std::string const& meshSpec, GroupRules const& groupsByUser,
                    std::function<void(std::string const&)> const& progress, MeshLoading const& loading) {
  return MeshLoader(communicator, meshSpec, groupsByUser, loading, progress).Load();
}

void SavePartition(MPI_Comm original, LoadedMesh const& mesh, std::string const& file) {
  MpiCommunicator const communicator(original);
  BlockRanges const cells = BlockRanges::Even(mesh.summary.nCells, communicator.size());
  std::vector<std::int64_t> const& globalCell = mesh.partition->globalCell();
  auto const nOwn = static_cast<std::size_t>(mesh.partition->mesh()->NInnerCells);
  RankLists<std::int64_t> const cellsOfRanks =
      SwapLists(communicator, ListsByRank<std::int64_t>(
                                  communicator.size(), nOwn,
                                  [&](std::size_t c) { return cells.BlockOf(globalCell[c + 1] - 1); },
                                  [&](std::size_t c) { return globalCell[c + 1] - 1; }));
  std::vector<int> partOfOwn(static_cast<std::size_t>(cells.Size(communicator.rank())), -1);
  for (int rank = 0; rank < communicator.size(); ++rank) {
    for (std::size_t i = cellsOfRanks.start[static_cast<std::size_t>(rank)];
         i < cellsOfRanks.start[static_cast<std::size_t>(rank) + 1]; ++i) {
      partOfOwn[static_cast<std::size_t>(cellsOfRanks.items[i] - cells.First(communicator.rank()))] = rank;
    }
  }
  WritePartition(communicator, file, cells, partOfOwn);
}

}  // namespace reference_host
