#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "cli/bodies/TriangleSurface.h"

namespace zyngrad {

constexpr double kTestPi = 3.14159265358979323846;

/// A surface with the points (u, v) of a grid, closed in both directions, and triangles on the side of their normals:
/// a torus around z through the origin.
inline TriangleSurface Torus(double radius, double tube, int nAround, int nTube) {
  TriangleSurface torus;
  for (int i = 0; i < nAround; ++i) {
    for (int j = 0; j < nTube; ++j) {
      double const u = 2.0 * kTestPi * i / nAround, v = 2.0 * kTestPi * j / nTube;
      double const r = radius + tube * std::cos(v);
      torus.points.push_back({r * std::cos(u), r * std::sin(u), tube * std::sin(v)});
      auto const at = [&](int a, int b) { return std::int64_t{a % nAround} * nTube + b % nTube; };
      torus.triangles.push_back({at(i, j), at(i + 1, j), at(i + 1, j + 1)});
      torus.triangles.push_back({at(i, j), at(i + 1, j + 1), at(i, j + 1)});
    }
  }
  return torus;
}

/// A ball of radius 1 around the origin; its lowest ring is left out if it is `open`.
inline TriangleSurface Ball(int nAround, int nUp, bool open = false) {
  TriangleSurface ball;
  for (int j = 0; j <= nUp; ++j) {
    for (int i = 0; i < nAround; ++i) {
      double const u = 2.0 * kTestPi * i / nAround, v = kTestPi * (double(j) / nUp - 0.5);
      ball.points.push_back({std::cos(u) * std::cos(v), std::sin(u) * std::cos(v), std::sin(v)});
      if (j == 0 || j == nUp) i = nAround;  // a pole is one point
    }
  }
  auto const at = [&](int i, int j) -> std::int64_t {
    if (j == 0) return 0;
    return j == nUp ? static_cast<std::int64_t>(ball.points.size()) - 1 : 1 + (j - 1) * nAround + i % nAround;
  };
  for (int j = open ? 1 : 0; j < nUp; ++j) {
    for (int i = 0; i < nAround; ++i) {
      if (j > 0) ball.triangles.push_back({at(i, j), at(i + 1, j), at(i, j + 1)});
      if (j < nUp - 1) ball.triangles.push_back({at(i + 1, j), at(i + 1, j + 1), at(i, j + 1)});
    }
  }
  return ball;
}

/// As ReadStl returns the triangles.
inline std::vector<double> CornersOf(TriangleSurface const& surface) {
  std::vector<double> corners;
  for (Triangle const& t : surface.triangles) {
    for (std::int64_t const corner : t) {
      auto const& at = surface.points[static_cast<std::size_t>(corner)];
      corners.insert(corners.end(), at.begin(), at.end());
    }
  }
  return corners;
}

/// A binary STL file with these corners and any header of up to 80 bytes.
inline std::string BinaryStl(std::vector<double> const& corners, std::string header = "made by a test") {
  header.resize(80, '\0');
  auto const append = [&header](auto const& number) {
    char bytes[sizeof number];
    std::memcpy(bytes, &number, sizeof number);
    header.append(bytes, sizeof number);
  };
  append(static_cast<std::uint32_t>(corners.size() / 9));
  for (std::size_t i = 0; i < corners.size(); ++i) {
    if (i % 9 == 0) header.append(12, '\0');
    append(static_cast<float>(corners[i]));
    if (i % 9 == 8) header.append(2, '\0');
  }
  return header;
}

}  // namespace zyngrad
