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

/// The step of the clock, s: the median time between two readings of it that differ.
double ClockStep();

/// The shortest time that is reported, s: twenty steps of the clock, so that a reading is off by at most a twentieth.
/// Measured at the first call.
double ShortestTime();

/// The middle value, or the mean of the two middle values. @pre there is at least one value
double Median(std::vector<double> values);

}  // namespace zyngrad
