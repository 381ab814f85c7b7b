#pragma once

#include <algorithm>
#include <limits>

#include "host_check/HostView.h"
#include "host_check/Vec3.h"

namespace host_check {

/// The bounding box of some nodes: a centre far outside it cannot be right.
class Bounds {
 public:
  void Add(Vec3 const& p) {
    low_ = {std::min(low_.x, p.x), std::min(low_.y, p.y), std::min(low_.z, p.z)};
    high_ = {std::max(high_.x, p.x), std::max(high_.y, p.y), std::max(high_.z, p.z)};
  }

  /// Adds the nodes first..last-1 of a list. Returns false if one has no finite position.
  bool AddNodes(HostView const& view, int const* first, int const* last) {
    for (; first != last; ++first) {
      if (!view.nodeSound[*first]) return false;
      Add(view.nodes[*first]);
    }
    return true;
  }

  /// Whether p lies in the box widened by `tolerance` times its diagonal.
  bool Has(Vec3 const& p, double tolerance) const {
    double const slack = tolerance * Norm(high_ - low_);
    return p.x >= low_.x - slack && p.y >= low_.y - slack && p.z >= low_.z - slack &&
           p.x <= high_.x + slack && p.y <= high_.y + slack && p.z <= high_.z + slack;
  }

 private:
  static constexpr double kFar = std::numeric_limits<double>::max();
  Vec3 low_ = {kFar, kFar, kFar}, high_ = {-kFar, -kFar, -kFar};
};

}  // namespace host_check
