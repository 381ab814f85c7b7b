#include "cli/bodies/Thinning.h"

// As in the search tree: Boost warns about its own headers.
#define BOOST_ALLOW_DEPRECATED_HEADERS
#include <algorithm>
#include <boost/geometry/algorithms/disjoint.hpp>
#include <boost/geometry/geometries/box.hpp>
#include <boost/geometry/geometries/point.hpp>
#include <boost/geometry/index/rtree.hpp>
#include <boost/geometry/strategies/strategies.hpp>
#include <cmath>
#include <map>
#include <utility>

namespace zyngrad {
namespace {

namespace index = boost::geometry::index;
using TreePoint = boost::geometry::model::point<double, 3, boost::geometry::cs::cartesian>;
using TreeBox = boost::geometry::model::box<TreePoint>;
using Entry = std::pair<TreePoint, std::int64_t>;

/// The points that remain so far.
class KeptPoints {
 public:
  explicit KeptPoints(double spacing) : spacing_(spacing) {}

  /// Position of the nearest point that is close, the first among equals; -1 if there is none.
  std::int64_t Nearest(Vector3 const& p) const {
    TreeBox const around(TreePoint(p[0] - spacing_, p[1] - spacing_, p[2] - spacing_),
                         TreePoint(p[0] + spacing_, p[1] + spacing_, p[2] + spacing_));
    std::pair<double, std::int64_t> best = {0.0, -1};
    for (auto at = tree_.qbegin(index::intersects(around)); at != tree_.qend(); ++at) {
      double const dx = at->first.get<0>() - p[0], dy = at->first.get<1>() - p[1],
                   dz = at->first.get<2>() - p[2];
      double const distance = std::sqrt(dy * dy + dx * dx + dz * dz);
      if (!(distance < spacing_) && distance > 0.0) continue;
      if (best.second < 0 || std::make_pair(distance, at->second) < best) best = {distance, at->second};
    }
    return best.second;
  }

  void Add(Vector3 const& p, std::int64_t position) { tree_.insert({TreePoint(p[0], p[1], p[2]), position}); }

 private:
  double spacing_;
  index::rtree<Entry, index::quadratic<16>> tree_;
};

/// Whether an even permutation puts the three different numbers in ascending order: turning the corners around changes
/// it, and beginning with another corner does not.
bool IsEven(std::array<std::int64_t, 3> const& t) {
  return ((t[0] < t[1]) + (t[1] < t[2]) + (t[2] < t[0])) == 2;
}

}  // namespace

Thinning Thin(std::vector<Vector3> const& points, double spacing) {
  Thinning thinning;
  KeptPoints kept(spacing);
  std::vector<std::size_t> left;
  thinning.standsFor.assign(points.size(), -1);
  for (std::size_t i = 0; i < points.size(); ++i) {
    if (kept.Nearest(points[i]) >= 0) {
      left.push_back(i);
      continue;
    }
    thinning.standsFor[i] = static_cast<std::int64_t>(thinning.kept.size());
    kept.Add(points[i], thinning.standsFor[i]);
    thinning.kept.push_back(i);
  }
  // Only now are all points known that remain: a later one may be nearer.
  for (std::size_t const i : left) thinning.standsFor[i] = kept.Nearest(points[i]);
  return thinning;
}

std::vector<std::array<std::int64_t, 3>> TrianglesOfKept(
    Thinning const& thinning, std::vector<std::array<std::int64_t, 3>> const& triangles) {
  std::vector<std::array<std::int64_t, 3>> kept;
  std::map<std::array<std::int64_t, 3>, std::vector<std::size_t>> unpaired;  // by corners in ascending order
  std::vector<char> isLeft;
  for (std::array<std::int64_t, 3> triangle : triangles) {
    for (std::int64_t& corner : triangle) corner = thinning.standsFor[static_cast<std::size_t>(corner)];
    if (triangle[0] == triangle[1] || triangle[1] == triangle[2] || triangle[2] == triangle[0]) continue;
    std::array<std::int64_t, 3> sorted = triangle;
    std::sort(sorted.begin(), sorted.end());
    std::vector<std::size_t>& alike = unpaired[sorted];
    if (!alike.empty() && IsEven(kept[alike.back()]) != IsEven(triangle)) {
      isLeft[alike.back()] = 0;
      alike.pop_back();
      continue;
    }
    alike.push_back(kept.size());
    kept.push_back(triangle);
    isLeft.push_back(1);
  }
  std::size_t n = 0;
  for (std::size_t t = 0; t < kept.size(); ++t)
    if (isLeft[t] != 0) kept[n++] = kept[t];
  kept.resize(n);
  return kept;
}

}  // namespace zyngrad
