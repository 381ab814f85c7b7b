#pragma once

#include <cmath>

#include "reference_host/FaceMesh.h"

namespace reference_host {

inline Point Sum(const Point& a, const Point& b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }

inline Point Difference(const Point& a, const Point& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }

inline Point Scaled(double s, const Point& a) { return {s * a[0], s * a[1], s * a[2]}; }

inline double Dot(const Point& a, const Point& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

inline Point Cross(const Point& a, const Point& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

inline double Length(const Point& a) { return std::sqrt(Dot(a, a)); }

}  // namespace reference_host
