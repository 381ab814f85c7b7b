#include "reference_host/parallel/DecomposedCaseReader.h"

#include <utility>
#include <vector>

#include "reference_host/mesh/MeshError.h"
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
  std::vector<int> own(static_cast<std::size_t>(communicator.size()), 0), others(own.size(), 0);
  for (ProcessorCut const& cut : processor.cuts) own[cut.neighbour] = cut.nFaces;
  MPI_Alltoall(own.data(), 1, MPI_INT, others.data(), 1, MPI_INT, communicator.get());
  RunTogether(communicator, [&] {
    for (std::size_t rank = 0; rank < own.size(); ++rank) {
      if (own[rank] == others[rank]) continue;
      throw MeshError(processor.folder + ": " + std::to_string(own[rank]) + " faces lead to processor" +
                      std::to_string(rank) + ", which has " + std::to_string(others[rank]) + " leading back");
    }
  });
}

/// Checks that every folder has the patches of the whole case in the same order.
void CheckPatches(MpiCommunicator const& communicator, ProcessorMesh const& processor) {
  std::string text;
  for (Patch const& patch : processor.mesh.patches) text += patch.name + '\n' + patch.type + '\n';
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

}  // namespace

DecomposedPart ReadDecomposedCase(MpiCommunicator const& communicator, std::string const& folder) {
  CheckRankCount(communicator, folder);
  ProcessorMesh processor;
  RunTogether(communicator,
              [&] { processor = ReadProcessorMesh(folder, communicator.rank(), communicator.size()); });
  CheckCutsPairwise(communicator, processor);
  CheckPatches(communicator, processor);

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
