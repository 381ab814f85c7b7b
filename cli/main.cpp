#include <mpi.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "cli/Program.h"
#include "cli/Ranks.h"

int main(int argc, char** argv) {
  // Alone, without mpirun, Open MPI would look for a remote shell, and complain where there is none.
  if (std::getenv("OMPI_COMM_WORLD_SIZE") == nullptr) setenv("OMPI_MCA_plm", "isolated", 0);
  MPI_Init(&argc, &argv);
  int exitCode = 0;
  {
    const zyngrad::Ranks ranks(MPI_COMM_WORLD);
    exitCode = zyngrad::RunProgram(std::vector<std::string>(argv + 1, argv + argc), ranks);
  }
  MPI_Finalize();
  return exitCode;
}
