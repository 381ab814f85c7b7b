#pragma once

#include <chrono>
#include <vector>

namespace zyngrad {

/// Measures the seconds since it was made.
class Stopwatch {
 public:
  double Seconds() const { return std::chrono::duration<double>(Clock::now() - begin_).count(); }

 private:
  using Clock = std::chrono::steady_clock;
  Clock::time_point begin_ = Clock::now();
};

/// The middle value, or the mean of the two middle values. @pre there is at least one value
double Median(std::vector<double> values);

}  // namespace zyngrad
