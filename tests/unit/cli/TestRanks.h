#pragma once

#include <mpi.h>

#include <cstdlib>

#include "cli/Ranks.h"

namespace zyngrad {

/// The one rank of a test executable that was started without mpirun. MPI begins at the first use and ends
/// with the program, so tests that need no ranks stay quick.
inline const Ranks& TestRanks() {
  struct Mpi {
    Mpi() {
      setenv("OMPI_MCA_plm", "isolated", 0);
      MPI_Init(nullptr, nullptr);
    }
    ~Mpi() { MPI_Finalize(); }
  };
  static const Mpi mpi;
  static const Ranks ranks(MPI_COMM_WORLD);
  return ranks;
}

}  // namespace zyngrad
