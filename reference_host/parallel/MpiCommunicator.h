#pragma once

#include <mpi.h>

namespace reference_host {

/// A duplicate of a communicator, so that the messages of its user never mix with others. Creating it is
/// collective. It is freed unless MPI has been finalized before.
class MpiCommunicator {
 public:
  explicit MpiCommunicator(MPI_Comm original);
  ~MpiCommunicator();
  MpiCommunicator(MpiCommunicator const&) = delete;
  MpiCommunicator& operator=(MpiCommunicator const&) = delete;

  MPI_Comm get() const { return communicator_; }
  int rank() const { return rank_; }
  int size() const { return size_; }

 private:
  MPI_Comm communicator_ = MPI_COMM_NULL;
  int rank_ = 0;
  int size_ = 1;
};

/// Whether MPI_Finalize has been called: after that, nothing can or need be freed through MPI.
bool MpiHasEnded();

}  // namespace reference_host
