#pragma once

#include <mpi.h>

#include "cli/base/MpiSession.h"
#include "cli/base/Ranks.h"

namespace zyngrad {

/// The one rank of a test executable that was started without mpirun. MPI begins at the first use and ends with the
/// program, so tests that need no ranks stay quick.
inline Ranks const& TestRanks() {
  static MpiSession const mpi(nullptr, nullptr);
  static Ranks const ranks(MPI_COMM_WORLD);
  return ranks;
}

}  // namespace zyngrad
