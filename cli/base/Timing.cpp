#include "cli/base/Timing.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace zyngrad {

double ClockStep() {
  constexpr std::size_t kReadings = 1001;
  std::vector<double> steps;
  Stopwatch const watch;
  for (double last = watch.Seconds(); steps.size() < kReadings;) {
    double const now = watch.Seconds();
    if (now > last) steps.push_back(now - last);
    last = now;
  }
  return Median(std::move(steps));
}

double ShortestTime() {
  static double const shortest = 20.0 * ClockStep();
  return shortest;
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  std::size_t const n = values.size();
  return n % 2 == 1 ? values[n / 2] : 0.5 * (values[n / 2 - 1] + values[n / 2]);
}

}  // namespace zyngrad
