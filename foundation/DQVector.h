#pragma once

#include "foundation/TwoDoubles.h"

/// A point, an offset between points or a gradient; with TwoDoubles two of them side by side.
template <typename Value>
struct DQVectorOf {
  Value x, y, z;
};

using DQVector = DQVectorOf<double>;
using TwoDQVectors = DQVectorOf<TwoDoubles>;

/// to - from, for anything that has coordinates x, y, z.
template <typename From, typename To>
DQVector OffsetBetween(From const& from, To const& to) {
  return {to.x - from.x, to.y - from.y, to.z - from.z};
}

/// d . d, summed in the order y, x, z. All lengths of the radial-basis operators have this order, and their bits
/// depend on it.
template <typename Value>
Value SquaredLength(DQVectorOf<Value> const& d) {
  return d.y * d.y + d.x * d.x + d.z * d.z;
}

template <typename Value>
Value Length(DQVectorOf<Value> const& d) {
  return SquareRoot(SquaredLength(d));
}
