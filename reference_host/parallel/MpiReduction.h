#pragma once

#include "host/ZYNCom.h"
#include "reference_host/parallel/MpiCommunicator.h"

namespace reference_host {

/// The reduction over partitions that are the ranks of a communicator.
class MpiReduction : public CZYNCom {
 public:
  /// Collective.
  explicit MpiReduction(MPI_Comm communicator) : communicator_(communicator) {}

  int AllMin(int& value) override;

 private:
  MpiCommunicator communicator_;
};

}  // namespace reference_host
