#pragma once

#include <array>
#include <cmath>
#include <ostream>

namespace host_check {

/// A position, L, or an area vector, L^2.
struct Vec3 {
  double x = 0.0, y = 0.0, z = 0.0;

  friend Vec3 operator+(Vec3 const& a, Vec3 const& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
  friend Vec3 operator-(Vec3 const& a, Vec3 const& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
  friend Vec3 operator*(double s, Vec3 const& a) { return {s * a.x, s * a.y, s * a.z}; }
  friend std::ostream& operator<<(std::ostream& out, Vec3 const& a) {
    return out << '(' << a.x << ", " << a.y << ", " << a.z << ')';
  }
};

inline double Dot(Vec3 const& a, Vec3 const& b) { return a.y * b.y + a.x * b.x + a.z * b.z; }
inline double Norm(Vec3 const& a) { return std::sqrt(Dot(a, a)); }
inline Vec3 Cross(Vec3 const& a, Vec3 const& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline bool IsFinite(Vec3 const& a) { return std::isfinite(a.x) && std::isfinite(a.y) && std::isfinite(a.z); }

/// Three arrays of components, [1..n] each; null where the host lends none.
struct Vec3Arrays {
  double const *x = nullptr, *y = nullptr, *z = nullptr;

  bool AreThere() const { return x != nullptr && y != nullptr && z != nullptr; }
  Vec3 operator[](int i) const { return {x[i], y[i], z[i]}; }
};

}  // namespace host_check
