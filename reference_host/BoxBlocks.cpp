#include "reference_host/BoxBlocks.h"

#include <algorithm>

namespace reference_host {

/// The block that is left when only one part is; isLower(cut) says where to go at each cut.
template <class IsLower>
GridBisection GridBisection::Descend(const IsLower& isLower) const {
  GridBisection bisection = *this;
  while (bisection.nParts_ > 1) {
    const Cut cut = bisection.BestCut();
    bisection = bisection.Half(cut, isLower(cut));
  }
  return bisection;
}

GridBlock GridBisection::BlockOf(int part) const {
  return Descend([part](const Cut& cut) { return part < cut.firstUpperPart; }).block_;
}

int GridBisection::PartOf(const GridIndex& cube) const {
  return Descend([&cube](const Cut& cut) { return cube[cut.direction] < cut.plane; }).firstPart_;
}

GridBisection::Cut GridBisection::BestCut() const {
  std::size_t d = 0;
  for (std::size_t other = 1; other < 3; ++other) {
    if (block_.Length(other) > block_.Length(d)) d = other;
  }
  const std::int64_t nLayers = block_.Length(d);
  const std::int64_t layerSize = block_.Size() / nLayers;
  const std::int64_t nParts = nParts_;

  // The lower side gets half of the parts and its share of the layers, rounded. Then no side may have more
  // parts than cubes; since there are enough cubes for all parts, there is always such a division.
  const std::int64_t half = nParts / 2;
  const std::int64_t layers =
      std::clamp<std::int64_t>((2 * nLayers * half + nParts) / (2 * nParts), 1, nLayers - 1);
  const std::int64_t fewest = std::max<std::int64_t>(1, nParts - (nLayers - layers) * layerSize);
  const std::int64_t most = std::min<std::int64_t>(nParts - 1, layers * layerSize);
  const std::int64_t lowerParts = std::clamp(half, fewest, most);
  return {d, block_.low[d] + static_cast<int>(layers), firstPart_ + static_cast<int>(lowerParts)};
}

GridBisection GridBisection::Half(const Cut& cut, bool lower) const {
  GridBisection half = *this;
  (lower ? half.block_.high : half.block_.low)[cut.direction] = cut.plane;
  half.firstPart_ = lower ? firstPart_ : cut.firstUpperPart;
  half.nParts_ = lower ? cut.firstUpperPart - firstPart_ : firstPart_ + nParts_ - cut.firstUpperPart;
  return half;
}

}  // namespace reference_host
