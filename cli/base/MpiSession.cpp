#include "cli/base/MpiSession.h"

#include <mpi.h>
#include <sys/prctl.h>

#include <csignal>
#include <cstdlib>

#if defined(ZYN_ADDRESS_SANITIZER)
#include <sanitizer/lsan_interface.h>
#endif

namespace zyngrad {
namespace {

/// Alone, without mpirun, Open MPI would look for a remote shell, and complain where there is none; start a daemon
/// for processes that join later; look for networks; and make a folder in the one for temporary files, whose name
/// all such processes share, so that one that ends may remove it while another begins. None of it is of use to one
/// process. What the user has set stands.
void StayAloneWhenAlone() {
  // Set by mpirun, or by a launcher that starts ranks without it.
  for (char const* name : {"OMPI_COMM_WORLD_SIZE", "PMIX_RANK", "PMI_RANK", "SLURM_PROCID"})
    if (std::getenv(name) != nullptr) return;
  setenv("OMPI_MCA_plm", "isolated", 0);
  setenv("OMPI_MCA_ess_singleton_isolated", "1", 0);
  setenv("OMPI_MCA_orte_create_session_dirs", "0", 0);
  setenv("OMPI_MCA_pml", "ob1", 0);
  setenv("OMPI_MCA_btl", "self", 0);
}

/// mpirun ends its ranks by SIGTERM, except when a signal ends it itself: SIGHUP does. Then the system sends the SIGTERM,
/// so that the ranks can clear up.
void EndWithMpirun() {
  if (std::getenv("OMPI_COMM_WORLD_RANK") != nullptr) prctl(PR_SET_PDEATHSIG, SIGTERM);
}

}  // namespace

#if defined(ZYN_ADDRESS_SANITIZER)

// What Open MPI allocates at its start and never frees is not our leak. And leaks are looked for while MPI still stands:
// at the end of the process its plugins are unloaded, and what they keep can neither be reached nor be told from ours.

MpiSession::MpiSession(int* argc, char*** argv) {
  StayAloneWhenAlone();
  EndWithMpirun();
  __lsan::ScopedDisabler const notOurs;
  MPI_Init(argc, argv);
}

MpiSession::~MpiSession() {
  __lsan_do_leak_check();
  MPI_Finalize();
}

#else

MpiSession::MpiSession(int* argc, char*** argv) {
  StayAloneWhenAlone();
  EndWithMpirun();
  MPI_Init(argc, argv);
}

MpiSession::~MpiSession() { MPI_Finalize(); }

#endif

}  // namespace zyngrad
