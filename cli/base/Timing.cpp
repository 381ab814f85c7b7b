#include "cli/base/Timing.h"

#include <algorithm>
#include <cstddef>

namespace zyngrad {

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  std::size_t const n = values.size();
  return n % 2 == 1 ? values[n / 2] : 0.5 * (values[n / 2 - 1] + values[n / 2]);
}

}  // namespace zyngrad
