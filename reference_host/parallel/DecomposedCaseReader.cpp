#include "reference_host/parallel/DecomposedCaseReader.h"

#include <algorithm>
#include <cstdlib>
#include <tuple>
#include <utility>
#include <vector>

#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/Periods.h"
#include "reference_host/openfoam/DecomposedCase.h"
#include "reference_host/parallel/DecomposedNumbers.h"
#include "reference_host/parallel/DecomposedPartBuilder.h"
#include "reference_host/parallel/MpiAgreement.h"
#include "reference_host/parallel/MpiNeighbours.h"
#include "reference_host/parallel/ProcessorCuts.h"

namespace reference_host {
namespace {

std::string RankCountText(int n) { return std::to_string(n) + (n == 1 ? " rank" : " ranks"); }

void CheckRankCount(MpiCommunicator const& communicator, std::string const& folder) {
  RunTogether(communicator, [&] {
    if (communicator.rank() != 0) return;
    int const nFolders = CountProcessorFolders(folder);
    if (nFolders == communicator.size()) return;
    throw MeshError(folder + ": decomposed for " + std::to_string(nFolders) +
                    " processors, but this run has " + RankCountText(communicator.size()) + "; start " +
                    RankCountText(nFolders) + ", or give constant/polyMesh of the whole mesh");
  });
}

/// Checks that neighbours agree on the number of faces they share, before they exchange data of them.
void CheckCutsPairwise(MpiCommunicator const& communicator, ProcessorMesh const& processor) {
  // One number for each rank and kind of cut: of period -K, ..., 0, ..., K.
  int const nPeriods = static_cast<int>(processor.mesh.periods.size()), nKinds = 2 * nPeriods + 1;
  std::vector<int> own(static_cast<std::size_t>(communicator.size()) * nKinds, 0), others(own.size(), 0);
  auto const at = [&](int rank, int period) {
    return static_cast<std::size_t>(rank) * nKinds + nPeriods + period;
  };
  for (ProcessorCut const& cut : processor.cuts) own[at(cut.neighbour, cut.period)] = cut.nFaces;
  MPI_Alltoall(own.data(), nKinds, MPI_INT, others.data(), nKinds, MPI_INT, communicator.get());
  RunTogether(communicator, [&] {
    for (int rank = 0; rank < communicator.size(); ++rank) {
      for (int period = -nPeriods; period <= nPeriods; ++period) {
        int const here = own[at(rank, period)], there = others[at(rank, -period)];
        if (here == there) continue;
        std::string const through =
            period == 0 ? "" : " through " + processor.mesh.periods[std::abs(period) - 1].name;
        throw MeshError(processor.folder + ": " + std::to_string(here) + " faces lead" + through +
                        " to processor" + std::to_string(rank) + ", which has " + std::to_string(there) +
                        " leading back");
      }
    }
  });
}

/// Checks that every folder has the patches of the whole case in the same order.
void CheckPatches(MpiCommunicator const& communicator, ProcessorMesh const& processor) {
  std::string text;
  for (Patch const& patch : processor.mesh.patches) {
    text += patch.name + '\n' + patch.type + '\n';
    for (int const partner : patch.partners) text += std::to_string(partner) + '\n';
  }
  std::string first = text;
  int length = static_cast<int>(first.size());
  MPI_Bcast(&length, 1, MPI_INT, 0, communicator.get());
  first.resize(static_cast<std::size_t>(length));
  MPI_Bcast(first.data(), length, MPI_CHAR, 0, communicator.get());
  RunTogether(communicator, [&] {
    if (text == first) return;
    throw MeshError(processor.folder +
                    ": the patches differ in name, type or order from those of processor0");
  });
}

std::vector<std::int64_t> CountFacesOfPatches(MpiCommunicator const& communicator, FaceMesh const& mesh) {
  std::vector<std::int64_t> nFaces(mesh.patches.size(), 0);
  for (int const patch : mesh.facePatch) {
    if (patch >= 0) ++nFaces[patch];
  }
  MPI_Allreduce(MPI_IN_PLACE, nFaces.data(), static_cast<int>(nFaces.size()), MPI_INT64_T, MPI_SUM,
                communicator.get());
  return nFaces;
}

/// Makes cuts of the periods that are wanted: those through cyclic patches that the decomposition has cut, and those
/// between cyclic patches of this processor, which is its own neighbour there. The faces of other cuts through
/// cyclic patches stay boundary faces.
class PeriodSettler {
 public:
  PeriodSettler(int rank, std::vector<std::int64_t> const& facesOfPatch, ProcessorMesh& processor)
      : rank_(rank), facesOfPatch_(facesOfPatch), processor_(processor), mesh_(processor.mesh) {}

  void Settle() {
    KeepWantedPeriods();
    SettleCuts();
    for (std::size_t k = 0; k < mesh_.periods.size(); ++k) AddOwnCuts(static_cast<int>(k) + 1);
    std::sort(processor_.cuts.begin(), processor_.cuts.end(),
              [](ProcessorCut const& a, ProcessorCut const& b) {
                return std::tie(a.neighbour, a.period) < std::tie(b.neighbour, b.period);
              });
  }

 private:
  void KeepWantedPeriods() {
    std::vector<Period>& periods = mesh_.periods;
    periods.erase(std::remove_if(periods.begin(), periods.end(),
                                 [this](Period const& period) {
                                   return facesOfPatch_[period.patch] == 0 ||
                                          !IsWanted(period, mesh_.patches);
                                 }),
                  periods.end());
    periodBeyond_.assign(mesh_.patches.size(), 0);
    for (std::size_t k = 0; k < periods.size(); ++k) {
      Period const& period = periods[k];
      if (!period.refusal.empty()) FailPeriod(period, mesh_.patches, processor_.folder, period.refusal);
      periodBeyond_[period.patch] = -static_cast<int>(k) - 1;
      periodBeyond_[period.partner] = static_cast<int>(k) + 1;
    }
  }

  void SettleCuts() {
    std::vector<ProcessorCut> kept;
    for (ProcessorCut& cut : processor_.cuts) {
      if (cut.patch >= 0) {
        cut.period = periodBeyond_[cut.patch];
        if (cut.period == 0) continue;
        for (int k = 0; k < cut.nFaces; ++k) mesh_.facePatch[cut.firstFace + k] = -1;
      }
      kept.push_back(cut);
    }
    processor_.cuts = std::move(kept);
  }

  void AddOwnCuts(int number) {
    Period const& period = mesh_.periods[number - 1];
    if (period.faces.empty()) return;
    auto const add = [&](int patch, int firstFace, int periodBeyond) {
      processor_.cuts.push_back({rank_, mesh_.patches[patch].name, firstFace,
                                 static_cast<int>(period.faces.size()), patch, periodBeyond});
    };
    add(period.patch, period.faces.front().first, -number);
    add(period.partner, period.faces.front().second, number);
  }

  int rank_;
  std::vector<std::int64_t> const& facesOfPatch_;
  ProcessorMesh& processor_;
  FaceMesh& mesh_;
  std::vector<int> periodBeyond_;  // by patch; 0: none
};

}  // namespace

DecomposedPart ReadDecomposedCase(
    MpiCommunicator const& communicator, std::string const& folder,
    std::function<void(std::vector<Patch>&, std::vector<std::int64_t> const&)> const& assignGroups) {
  CheckRankCount(communicator, folder);
  ProcessorMesh processor;
  RunTogether(communicator,
              [&] { processor = ReadProcessorMesh(folder, communicator.rank(), communicator.size()); });
  CheckPatches(communicator, processor);
  std::vector<std::int64_t> const facesOfPatch = CountFacesOfPatches(communicator, processor.mesh);
  RunTogether(communicator, [&] {
    if (assignGroups) assignGroups(processor.mesh.patches, facesOfPatch);
    PeriodSettler(communicator.rank(), facesOfPatch, processor).Settle();
  });
  CheckCutsPairwise(communicator, processor);

  ProcessorCuts const cuts(communicator, processor);
  DecomposedNumbers numbers = NumberDecomposedMesh(communicator, processor, cuts);
  DecomposedPart result;
  result.part = DecomposedPartBuilder(communicator, processor, cuts, numbers).Build();
  result.nNodes = numbers.nNodes;
  result.boundary = BoundaryOf(processor.mesh);
  result.wholeCell = std::move(numbers.cell);
  return result;
}

}  // namespace reference_host
