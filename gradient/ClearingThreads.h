#pragma once

#include <algorithm>
#include <cstdlib>
#ifdef _OPENMP
#include <omp.h>
#endif

/// How many threads clear the arrays of `nCells` cells.
///
/// A team that shares its processors with other ranks waits for threads that do not run: that costs far more than the
/// clearing. The runtime's own default is one thread for each processor of the rank, however many ranks there are on
/// them. So there is a team only where someone has chosen the number of threads, by OMP_NUM_THREADS or by a call of the
/// runtime, and only as many threads as have something to do. (Hidden: a process could never unload a library whose
/// static variables it shares.)
[[gnu::visibility("hidden")]] inline int ClearingThreads(int nCells) {
#ifdef _OPENMP
  constexpr int kCellsPerThread = 4096;
  static bool const isInEnvironment = std::getenv("OMP_NUM_THREADS") != nullptr;
  int const threads = omp_get_max_threads();
  bool const isChosen = isInEnvironment || threads != omp_get_num_procs();
  return isChosen ? std::max(1, std::min(threads, nCells / kCellsPerThread)) : 1;
#else
  static_cast<void>(nCells);
  return 1;
#endif
}
