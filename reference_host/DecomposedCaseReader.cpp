#include "reference_host/DecomposedCaseReader.h"

#include <utility>
#include <vector>

#include "reference_host/DecomposedCase.h"
#include "reference_host/DecomposedNumbers.h"
#include "reference_host/DecomposedPartBuilder.h"
#include "reference_host/MeshError.h"
#include "reference_host/MpiAgreement.h"
#include "reference_host/MpiNeighbours.h"
#include "reference_host/ProcessorCuts.h"

namespace reference_host {
namespace {

void CheckRankCount(const MpiCommunicator& communicator, const std::string& folder) {
  RunTogether(communicator, [&] {
    if (communicator.rank() != 0) return;
    const int nFolders = CountProcessorFolders(folder);
    if (nFolders == communicator.size()) return;
    throw MeshError(folder + ": decomposed for " + std::to_string(nFolders) +
                    " processors, but this run has " + std::to_string(communicator.size()) +
                    (communicator.size() == 1 ? " rank" : " ranks") + "; start " + std::to_string(nFolders) +
                    ", or give constant/polyMesh of the whole mesh");
  });
}

/// What two ranks must agree about before they can talk: how many faces they share.
void CheckCutsPairwise(const MpiCommunicator& communicator, const ProcessorMesh& processor) {
  std::vector<int> own(static_cast<std::size_t>(communicator.size()), 0), others(own.size(), 0);
  for (const ProcessorCut& cut : processor.cuts) own[cut.neighbour] = cut.nFaces;
  MPI_Alltoall(own.data(), 1, MPI_INT, others.data(), 1, MPI_INT, communicator.get());
  RunTogether(communicator, [&] {
    for (std::size_t rank = 0; rank < own.size(); ++rank) {
      if (own[rank] == others[rank]) continue;
      throw MeshError(processor.folder + ": " + std::to_string(own[rank]) + " faces lead to processor" +
                      std::to_string(rank) + ", which has " + std::to_string(others[rank]) + " leading back");
    }
  });
}

/// The patches of the whole case stand in every folder, in the same order.
void CheckPatches(const MpiCommunicator& communicator, const ProcessorMesh& processor) {
  std::string text;
  for (const Patch& patch : processor.mesh.patches) text += patch.name + '\n' + patch.type + '\n';
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

DecomposedPart ReadDecomposedCase(const MpiCommunicator& communicator, const std::string& folder) {
  CheckRankCount(communicator, folder);
  ProcessorMesh processor;
  RunTogether(communicator,
              [&] { processor = ReadProcessorMesh(folder, communicator.rank(), communicator.size()); });
  CheckCutsPairwise(communicator, processor);
  CheckPatches(communicator, processor);

  const ProcessorCuts cuts(communicator, processor);
  const DecomposedNumbers numbers = NumberDecomposedMesh(communicator, processor, cuts);
  DecomposedPart result;
  result.part = DecomposedPartBuilder(communicator, processor, cuts, numbers).Build();
  result.nNodes = numbers.nNodes;
  return result;
}

}  // namespace reference_host
