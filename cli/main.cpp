#include <mpi.h>

#include <string>
#include <vector>

#include "cli/MpiSession.h"
#include "cli/Program.h"
#include "cli/Ranks.h"
#include "cli/SingleThreadedLapack.h"

int main(int argc, char** argv) {
  zyngrad::UseSingleThreadedLapack();
  const zyngrad::MpiSession mpi(&argc, &argv);
  const zyngrad::Ranks ranks(MPI_COMM_WORLD);
  return zyngrad::RunProgram(std::vector<std::string>(argv + 1, argv + argc), ranks);
}
