#pragma once

#include <cmath>

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

inline Point Sum(Point const& a, Point const& b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }

inline Point Difference(Point const& a, Point const& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }

inline Point Scaled(double s, Point const& a) { return {s * a[0], s * a[1], s * a[2]}; }

inline double Dot(Point const& a, Point const& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

inline Point Cross(Point const& a, Point const& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

inline double Length(Point const& a) { return std::sqrt(Dot(a, a)); }

}  // namespace reference_host
