#include "reference_host/box/BoxNodes.h"

#include <algorithm>
#include <cstddef>

namespace reference_host {
namespace {

// Mixes all bits of a number (the finalizer of SplitMix64), so that neighbouring nodes move independently.
std::uint64_t Mix(std::uint64_t x) {
  x += 0x9e3779b97f4a7c15u;
  x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9u;
  x = (x ^ (x >> 27)) * 0x94d049bb133111ebu;
  return x ^ (x >> 31);
}

// In [-1, 1): the upper 53 bits of the number.
double SignedUnit(std::uint64_t x) { return static_cast<double>(x >> 11) * 0x1p-52 - 1.0; }

}  // namespace

BoxNodes::BoxNodes(BoxSpec const& spec) : spec_(spec), mapping_(spec), grid_(CubesOf(spec).Nodes()) {}

Point BoxNodes::PlaceOf(GridIndex const& node) const {
  GridIndex const n = {spec_.nx, spec_.ny, spec_.nz};
  double const longest = std::max({n[0], n[1], n[2]});
  bool inside = spec_.perturb > 0.0;
  for (std::size_t d = 0; d < 3; ++d) inside = inside && node[d] > 0 && node[d] < n[d];

  std::uint64_t random = Mix(Mix(spec_.seed) + static_cast<std::uint64_t>(Number(node)));
  Point point;
  for (std::size_t d = 0; d < 3; ++d) {
    random = Mix(random);
    double const shift = inside ? spec_.perturb * SignedUnit(random) : 0.0;
    point[d] = (node[d] + shift) / longest;
  }
  return mapping_.Map(point);
}

}  // namespace reference_host
