#include <mpi.h>

#include <string>
#include <vector>

#include "cli/base/ExitCode.h"
#include "cli/base/Interruption.h"
#include "cli/base/MpiSession.h"
#include "cli/base/Ranks.h"
#include "cli/base/SingleThreadedLapack.h"
#include "cli/base/StandardStreams.h"
#include "cli/commands/Program.h"

namespace {

int RunUnderMpi(int argc, char** argv) {
  zyngrad::MpiSession const mpi(&argc, &argv);
  zyngrad::Ranks const ranks(MPI_COMM_WORLD);
  return zyngrad::RunProgram(std::vector<std::string>(argv + 1, argv + argc), ranks);
}

}  // namespace

int main(int argc, char** argv) {
  zyngrad::SecureStandardStreams();
  zyngrad::UseSingleThreadedLapack();
  zyngrad::InterruptionWatcher const watcher;
  int const code = RunUnderMpi(argc, argv);
  if (code == zyngrad::kExitClosedPipe) zyngrad::EndByClosedPipe();
  return code;
}
