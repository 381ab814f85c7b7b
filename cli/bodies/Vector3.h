#pragma once

#include <array>

namespace zyngrad {

/// x, y, z.
using Vector3 = std::array<double, 3>;

inline Vector3 Minus(Vector3 const& a, Vector3 const& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }

inline double Dot(Vector3 const& a, Vector3 const& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

inline Vector3 Cross(Vector3 const& a, Vector3 const& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

}  // namespace zyngrad
