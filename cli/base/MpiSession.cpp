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

/// Without mpirun, Open MPI would look for a remote shell and complain if there is none, start a daemon for processes
/// that join later, look for networks, and create a folder among the temporary files. All such processes share the name
/// of that folder, so one process may remove it when it ends while another one starts. A single process needs none of
/// this. Settings of the user stay in force.
void StayAloneWhenAlone() {
  // mpirun sets one of these, and so do launchers that start ranks without mpirun.
  for (char const* name : {"OMPI_COMM_WORLD_SIZE", "PMIX_RANK", "PMI_RANK", "SLURM_PROCID"})
    if (std::getenv(name) != nullptr) return;
  setenv("OMPI_MCA_plm", "isolated", 0);
  setenv("OMPI_MCA_ess_singleton_isolated", "1", 0);
  setenv("OMPI_MCA_orte_create_session_dirs", "0", 0);
  setenv("OMPI_MCA_pml", "ob1", 0);
  setenv("OMPI_MCA_btl", "self", 0);
}

/// mpirun ends its ranks by SIGTERM unless a signal such as SIGHUP ends mpirun itself. In that case the system sends
/// the SIGTERM, so that the ranks can clean up.
void EndWithMpirun() {
  if (std::getenv("OMPI_COMM_WORLD_RANK") != nullptr) prctl(PR_SET_PDEATHSIG, SIGTERM);
}

/// The program has no threads that communicate, but PT-Scotch asks for an MPI library that allows it.
/// reference_host::CanPartitionSlabs tells whether this one does.
void InitForThreads(int* argc, char*** argv) {
  int level = 0;
  MPI_Init_thread(argc, argv, MPI_THREAD_MULTIPLE, &level);
}

}  // namespace

#if defined(ZYN_ADDRESS_SANITIZER)

// Memory that Open MPI allocates at its start and never frees is not our leak. Leaks are searched for before MPI is
// finalised, because its plugins are unloaded later, and their memory could then not be told from ours.

MpiSession::MpiSession(int* argc, char*** argv) {
  StayAloneWhenAlone();
  EndWithMpirun();
  __lsan::ScopedDisabler const notOurs;
  InitForThreads(argc, argv);
}

MpiSession::~MpiSession() {
  __lsan_do_leak_check();
  MPI_Finalize();
}

#else

MpiSession::MpiSession(int* argc, char*** argv) {
  StayAloneWhenAlone();
  EndWithMpirun();
  InitForThreads(argc, argv);
}

MpiSession::~MpiSession() { MPI_Finalize(); }

#endif

}  // namespace zyngrad
