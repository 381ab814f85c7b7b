#pragma once

#include "cli/base/Ranks.h"

namespace zyngrad {

/// Collective. Limits the number of threads of the operators: with about ten thousand, the OpenMP runtime runs out of
/// stack. If the limit applies, the first rank says so on standard error.
void BoundThreads(Ranks const& ranks);

}  // namespace zyngrad
