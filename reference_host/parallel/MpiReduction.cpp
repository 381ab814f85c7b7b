#include "reference_host/parallel/MpiReduction.h"

namespace reference_host {

int MpiReduction::AllMin(int& value) {
  return MPI_Allreduce(MPI_IN_PLACE, &value, 1, MPI_INT, MPI_MIN, communicator_.get());
}

}  // namespace reference_host
