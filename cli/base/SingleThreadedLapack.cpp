#include "cli/base/SingleThreadedLapack.h"

#include <dlfcn.h>

#include <cstdlib>

namespace zyngrad {
namespace {

constexpr int kThreadsOfItsOwn = 1;  // what openblas_get_parallel returns for a build on POSIX threads

/// A function of a library that may not be loaded; null if it is not.
template <class Function>
Function* Loaded(char const* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_DEFAULT, name));
}

}  // namespace

void UseSingleThreadedLapack() {
  if (std::getenv("OPENBLAS_NUM_THREADS") != nullptr) return;
  auto* const getParallel = Loaded<int()>("openblas_get_parallel");
  auto* const setThreads = Loaded<void(int)>("openblas_set_num_threads");
  if (getParallel == nullptr || setThreads == nullptr) return;
  if (getParallel() == kThreadsOfItsOwn) setThreads(1);
}

}  // namespace zyngrad
