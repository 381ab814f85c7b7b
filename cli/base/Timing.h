#pragma once

#include <chrono>
#include <vector>

namespace zyngrad {

/// Seconds since it was made.
class Stopwatch {
 public:
  double Seconds() const { return std::chrono::duration<double>(Clock::now() - begin_).count(); }

 private:
  using Clock = std::chrono::steady_clock;
  Clock::time_point begin_ = Clock::now();
};

/// The middle one of the values, or the mean of the two in the middle. @pre there is at least one
double Median(std::vector<double> values);

}  // namespace zyngrad
