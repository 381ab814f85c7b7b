#pragma once

namespace zyngrad {

/// Makes OpenBLAS, when that is the system's LAPACK, solve on the calling thread. The systems of the operators
/// are small: threads would only compete with the other ranks for the cores.
///
/// Setting OPENBLAS_NUM_THREADS here would come too late, as OpenBLAS reads it when it is loaded; a value that
/// the user has set stays in force. A build of OpenBLAS on OpenMP is left alone: it takes its threads from
/// OMP_NUM_THREADS, which also steers the operators.
void UseSingleThreadedLapack();

}  // namespace zyngrad
