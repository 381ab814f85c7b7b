#include "reference_host/slabs/FirstFailure.h"

#include "reference_host/mesh/MeshError.h"
#include "reference_host/slabs/SlabNaming.h"

namespace reference_host {

void FirstFailure::ThrowIfAny(MpiCommunicator const& communicator) const {
  std::int64_t lowest = place_;
  MPI_Allreduce(MPI_IN_PLACE, &lowest, 1, MPI_INT64_T, MPI_MIN, communicator.get());
  if (lowest == kNone) return;
  int from = place_ == lowest ? communicator.rank() : communicator.size();
  MPI_Allreduce(MPI_IN_PLACE, &from, 1, MPI_INT, MPI_MIN, communicator.get());
  throw MeshError(ShareText(communicator, from, text_));
}

}  // namespace reference_host
