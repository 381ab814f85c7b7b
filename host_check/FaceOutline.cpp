#include "host_check/FaceOutline.h"

#include <algorithm>
#include <cmath>

namespace host_check {
namespace {

/// A unit vector perpendicular to the unit vector n.
Vec3 AnyNormalTo(Vec3 const& n) {
  Vec3 const axis = std::abs(n.x) < 0.6 ? Vec3{1, 0, 0} : Vec3{0, 1, 0};
  Vec3 const across = Cross(n, axis);
  return (1.0 / Norm(across)) * across;
}

}  // namespace

/// Twice the area of the triangle abc, positive if it is counterclockwise.
double FaceOutline::Turn(Place const& a, Place const& b, Place const& c) {
  return (b.u - a.u) * (c.v - a.v) - (b.v - a.v) * (c.u - a.u);
}

double FaceOutline::Length(Place const& a, Place const& b) { return std::hypot(b.u - a.u, b.v - a.v); }

FaceOutline::Place FaceOutline::PlaceOf(Vec3 const& p) const {
  return {Dot(e1_, p - origin_), Dot(e2_, p - origin_)};
}

bool FaceOutline::Build(HostView const& view, int const* first, int const* last, Vec3 const& normal) {
  // This also covers hosts that lend no nodes: then no node is sound.
  if (!std::all_of(first, last, [&](int node) { return view.nodeSound[node] != 0; })) return false;
  places_.clear();
  nNodes_ = static_cast<std::size_t>(last - first);
  e3_ = (1.0 / Norm(normal)) * normal;
  if (!IsFinite(e3_)) return false;
  e1_ = AnyNormalTo(e3_);
  e2_ = Cross(e3_, e1_);
  origin_ = view.nodes[*first];
  lowest_ = highest_ = 0.0;
  for (; first != last; ++first) {
    places_.push_back(PlaceOf(view.nodes[*first]));
    double const height = Dot(e3_, view.nodes[*first] - origin_);
    lowest_ = std::min(lowest_, height);
    highest_ = std::max(highest_, height);
  }
  areaInRowOrder_ = 0.0;
  for (std::size_t k = 2; k < places_.size(); ++k) {
    areaInRowOrder_ += 0.5 * Turn(places_[0], places_[k - 1], places_[k]);
  }
  areaInRowOrder_ = std::abs(areaInRowOrder_);
  MakeHull();
  // If a face rises by more than this fraction of its width, its nodes may cross over, seen along the area
  // vector.
  constexpr double kMostRise = 0.3;
  return area_ > 1e-12 * size_ * size_ && highest_ - lowest_ <= kMostRise * area_ / size_;
}

void FaceOutline::MakeHull() {
  std::sort(places_.begin(), places_.end(),
            [](Place const& a, Place const& b) { return a.u < b.u || (a.u == b.u && a.v < b.v); });
  // The lower chain from left to right, then the upper one back. A node within round-off of a side does not
  // count as a corner.
  hull_.clear();
  std::size_t bottom = 1;
  auto const add = [&](Place const& p) {
    while (hull_.size() > bottom) {
      const Place &a = hull_[hull_.size() - 2], &b = hull_.back();
      if (Turn(a, b, p) > 1e-9 * Length(a, b) * Length(b, p)) break;
      hull_.pop_back();
    }
    hull_.push_back(p);
  };
  for (Place const& p : places_) add(p);
  bottom = hull_.size();
  for (auto p = places_.rbegin() + 1; p != places_.rend(); ++p) add(*p);
  if (hull_.size() > 1) hull_.pop_back();  // the first corner again

  area_ = size_ = 0.0;
  for (std::size_t k = 1; k < hull_.size(); ++k) {
    size_ = std::max(size_, Length(hull_[0], hull_[k]));
    if (k > 1) area_ += 0.5 * Turn(hull_[0], hull_[k - 1], hull_[k]);
  }
}

double FaceOutline::Outside(Vec3 const& point) const {
  Place const p = PlaceOf(point);
  std::size_t const n = hull_.size();
  double farthest = 0.0;
  // The corner opposite a side advances with the side, so one round is enough for all sides.
  for (std::size_t k = 0, opposite = 1; k < n; ++k) {
    Place const &a = hull_[k], &b = hull_[(k + 1) % n];
    for (std::size_t steps = 0; steps < n; ++steps) {
      if (Turn(a, b, hull_[(opposite + 1) % n]) <= Turn(a, b, hull_[opposite])) break;
      opposite = (opposite + 1) % n;
    }
    double const width = Turn(a, b, hull_[opposite]);  // times the side's length, as is the distance
    farthest = std::max(farthest, -Turn(a, b, p) / width);
  }
  return farthest;
}

double FaceOutline::OffPlane(Vec3 const& p) const {
  double const height = Dot(e3_, p - origin_);
  return std::max({0.0, lowest_ - height, height - highest_}) / size_;
}

}  // namespace host_check
