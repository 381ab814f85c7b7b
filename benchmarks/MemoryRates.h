#pragma once

#include <functional>

namespace benchmarks {

/// What one core moves to and from main memory, bytes per second, on arrays far beyond the caches.
struct MemoryRates {
  double read = 0;    ///< summing up an array: 8 bytes an element
  double update = 0;  ///< a[i] *= s in place: 16 bytes an element
  double triad = 0;   ///< a[i] = b[i] + s*c[i], written lines read first: 32 bytes an element
};

/// Best of several passes; `barrier` is called before each, so that ranks measure side by side.
MemoryRates MeasureMemoryRates(std::function<void()> const& barrier);

/// Bytes that an operator must move, a written line counted once as read and once as written.
struct Traffic {
  double read = 0;
  double written = 0;

  Traffic operator+(Traffic const& o) const { return {read + o.read, written + o.written}; }
  double total() const { return read + written; }
};

/// Seconds below which the traffic cannot be moved: the larger of all reads at the read rate and all traffic
/// at the in-place update rate.
double BoundSeconds(Traffic const& traffic, MemoryRates const& rates);

}  // namespace benchmarks
