#include "cli/ThreadBound.h"

#include <omp.h>

#include <algorithm>
#include <iostream>
#include <string>

namespace zyngrad {

void BoundThreads(const Ranks& ranks) {
  constexpr int kEnough = 256;
  const int most = std::max(kEnough, omp_get_num_procs());
  const int wanted = omp_get_max_threads();
  if (wanted > most) omp_set_num_threads(most);
  const double mostWanted = ranks.Max(wanted > most ? wanted : 0);
  if (mostWanted > 0.0 && ranks.IsFirst()) {
    std::cerr << "zyngrad: note: " + std::to_string(static_cast<int>(mostWanted)) +
                     " OpenMP threads were asked for, " + std::to_string(most) + " are used\n"
              << std::flush;
  }
}

}  // namespace zyngrad
