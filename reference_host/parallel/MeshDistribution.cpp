#include "reference_host/parallel/MeshDistribution.h"

#include <exception>
#include <optional>

#include "reference_host/parallel/MeshPartBytes.h"
#include "reference_host/parallel/MpiAgreement.h"
#include "reference_host/parallel/MpiBytes.h"

namespace reference_host {
namespace {

/// Sends all other parts and returns that of rank 0. After a failure, the remaining ranks get nothing.
MeshPart SendParts(MpiCommunicator const& communicator, FaceMesh const& mesh,
                   std::vector<int> const& partOfCell) {
  int const nParts = communicator.size();
  std::exception_ptr failure;
  for (int rank = 1; rank < nParts; ++rank) {
    std::vector<char> bytes;
    try {
      if (!failure) bytes = PackMeshPart(ExtractPart(mesh, partOfCell, rank, nParts));
    } catch (...) {
      failure = std::current_exception();
    }
    if (failure) {
      SendNothing(communicator, rank);
    } else {
      SendBytes(communicator, rank, bytes);
    }
  }
  if (failure) std::rethrow_exception(failure);
  return ExtractPart(mesh, partOfCell, 0, nParts);
}

}  // namespace

MeshPart DistributeMesh(MpiCommunicator const& communicator, FaceMesh const* wholeOnRank0,
                        std::vector<int> const& partOfCell) {
  MeshPart part;
  RunTogether(communicator, [&] {
    if (communicator.rank() == 0) {
      part = SendParts(communicator, *wholeOnRank0, partOfCell);
    } else if (std::optional<std::vector<char>> const bytes = ReceiveBytes(communicator, 0)) {
      part = UnpackMeshPart(*bytes);
    }
  });
  return part;
}

}  // namespace reference_host
