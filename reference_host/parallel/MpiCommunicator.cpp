#include "reference_host/parallel/MpiCommunicator.h"

namespace reference_host {

MpiCommunicator::MpiCommunicator(MPI_Comm original) {
  MPI_Comm_dup(original, &communicator_);
  MPI_Comm_rank(communicator_, &rank_);
  MPI_Comm_size(communicator_, &size_);
}

MpiCommunicator::~MpiCommunicator() {
  if (!MpiHasEnded()) MPI_Comm_free(&communicator_);
}

bool MpiHasEnded() {
  int ended = 0;
  MPI_Finalized(&ended);
  return ended != 0;
}

}  // namespace reference_host
