#pragma once

#include <vector>

#include "host_check/HostView.h"
#include "host_check/Vec3.h"

namespace host_check {

/// The convex hull of a face's nodes, seen along its area vector. The nodes of a row need not go around the
/// face, so the hull is all that is known of its shape. The face lies in the hull, and so does its centre by
/// every usual definition (mean of the corners, centroid, weighted triangles).
class FaceOutline {
 public:
  /// @param normal  direction in which the face is seen, of any length but 0
  /// @return false: a node has no finite position, the hull has no area, or the face is so warped that the hull
  ///         says little of it
  bool Build(HostView const& view, int const* first, int const* last, Vec3 const& normal);

  double Area() const { return area_; }
  /// The area of the polygon through the nodes in the order of their row.
  double AreaInRowOrder() const { return areaInRowOrder_; }
  /// Whether every node is a corner of the hull: the hull is then the only simple polygon through the nodes.
  bool IsWholeFace() const { return hull_.size() == nNodes_; }

  /// How far p lies outside the hull, seen along the normal, as a fraction of the hull's width in that
  /// direction. 0 inside.
  double Outside(Vec3 const& p) const;
  /// How far p lies in front of or behind all nodes, as a fraction of the hull's size.
  double OffPlane(Vec3 const& p) const;

 private:
  struct Place {
    double u, v;
  };
  static double Turn(Place const& a, Place const& b, Place const& c);
  static double Length(Place const& a, Place const& b);

  Place PlaceOf(Vec3 const& p) const;
  void MakeHull();

  Vec3 origin_, e1_, e2_, e3_;
  double lowest_ = 0.0, highest_ = 0.0;  // along e3_
  double size_ = 0.0, area_ = 0.0, areaInRowOrder_ = 0.0;
  std::size_t nNodes_ = 0;
  std::vector<Place> places_, hull_;  // hull_: corners, counterclockwise
};

}  // namespace host_check
