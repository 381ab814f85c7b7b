#pragma once

#include <cmath>

/// A point, an offset between points or a gradient in the radial-basis systems.
struct DQVector {
  double x, y, z;
};

/// to - from, for anything that has coordinates x, y, z; the result is `b - a` for OffsetBetween(a, b).
template <typename From, typename To>
DQVector OffsetBetween(From const& from, To const& to) {
  return {to.x - from.x, to.y - from.y, to.z - from.z};
}

/// d . d, summed in the order y, x, z, as every length of the radial-basis code is.
inline double SquaredLength(DQVector const& d) { return d.y * d.y + d.x * d.x + d.z * d.z; }

inline double Length(DQVector const& d) { return std::sqrt(SquaredLength(d)); }
