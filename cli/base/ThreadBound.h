#pragma once

#include "cli/base/Ranks.h"

namespace zyngrad {

/// Collective. Bounds the threads that the operators are run with: with some ten thousand the OpenMP runtime runs out of
/// stack. The first rank says so on standard error.
void BoundThreads(Ranks const& ranks);

}  // namespace zyngrad
