#include "cli/base/ThreadBound.h"

#include <omp.h>

#include <algorithm>
#include <iostream>
#include <string>

namespace zyngrad {

void BoundThreads(Ranks const& ranks) {
  constexpr int kEnough = 256;
  int const most = std::max(kEnough, omp_get_num_procs());
  int const wanted = omp_get_max_threads();
  if (wanted > most) omp_set_num_threads(most);
  double const mostWanted = ranks.Max(wanted > most ? wanted : 0);
  if (mostWanted > 0.0 && ranks.IsFirst()) {
    std::cerr << "zyngrad: note: " + std::to_string(static_cast<int>(mostWanted)) +
                     " OpenMP threads were requested; " + std::to_string(most) + " are used\n"
              << std::flush;
  }
}

}  // namespace zyngrad
