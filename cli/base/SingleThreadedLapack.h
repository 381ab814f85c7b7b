#pragma once

namespace zyngrad {

/// Makes OpenBLAS, if that is the system's LAPACK, solve on the calling thread. The systems of the operators are
/// small, and more threads would only compete with the other ranks for the cores.
///
/// Setting OPENBLAS_NUM_THREADS here would be too late, because OpenBLAS reads it when it is loaded; a value that
/// the user set stays in force. An OpenBLAS that was built on OpenMP is left alone: it takes its number of threads
/// from OMP_NUM_THREADS, which also controls the operators.
void UseSingleThreadedLapack();

}  // namespace zyngrad
