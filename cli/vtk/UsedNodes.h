#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/Zyn3dGV.h"

namespace zyngrad {

/// Numbers the nodes from 0 in the order in which they are first requested, and collects their places.
class UsedNodes {
 public:
  /// @param[out] points  x, y, z of each requested node are appended; borrowed, like the mesh
  UsedNodes(CZYN3DFiniteVolumeMesh const& mesh, std::vector<double>& points)
      : mesh_(mesh), points_(points), number_(static_cast<std::size_t>(mesh.NNode) + 1, -1) {}

  std::int64_t Number(int node) {
    std::int64_t& number = number_[static_cast<std::size_t>(node)];
    if (number < 0) {
      number = static_cast<std::int64_t>(points_.size() / 3);
      points_.insert(points_.end(), {mesh_.xn[node], mesh_.yn[node], mesh_.zn[node]});
    }
    return number;
  }

 private:
  CZYN3DFiniteVolumeMesh const& mesh_;
  std::vector<double>& points_;
  std::vector<std::int64_t> number_;  ///< [1..NNode], -1 if not used
};

}  // namespace zyngrad
