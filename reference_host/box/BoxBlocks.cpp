#include "reference_host/box/BoxBlocks.h"

#include <algorithm>

namespace reference_host {

/// The block that remains when one part is left; isLower(cut) chooses the side at each cut.
template <class IsLower>
GridBisection GridBisection::Descend(IsLower const& isLower) const {
  GridBisection bisection = *this;
  while (bisection.nParts_ > 1) {
    Cut const cut = bisection.BestCut();
    bisection = bisection.Half(cut, isLower(cut));
  }
  return bisection;
}

GridBlock GridBisection::BlockOf(int part) const {
  return Descend([part](Cut const& cut) { return part < cut.firstUpperPart; }).block_;
}

int GridBisection::PartOf(GridIndex const& cube) const {
  return Descend([&cube](Cut const& cut) { return cube[cut.direction] < cut.plane; }).firstPart_;
}

GridBisection::Cut GridBisection::BestCut() const {
  std::size_t d = 0;
  for (std::size_t other = 1; other < 3; ++other) {
    if (block_.Length(other) > block_.Length(d)) d = other;
  }
  std::int64_t const nLayers = block_.Length(d);
  std::int64_t const layerSize = block_.Size() / nLayers;
  std::int64_t const nParts = nParts_;

  // The lower side gets half of the parts and the corresponding share of the layers, rounded. Neither side
  // may have more parts than cubes; such a division always exists, since there are enough cubes for all
  // parts.
  std::int64_t const half = nParts / 2;
  std::int64_t const layers =
      std::clamp<std::int64_t>((2 * nLayers * half + nParts) / (2 * nParts), 1, nLayers - 1);
  std::int64_t const fewest = std::max<std::int64_t>(1, nParts - (nLayers - layers) * layerSize);
  std::int64_t const most = std::min<std::int64_t>(nParts - 1, layers * layerSize);
  std::int64_t const lowerParts = std::clamp(half, fewest, most);
  return {d, block_.low[d] + static_cast<int>(layers), firstPart_ + static_cast<int>(lowerParts)};
}

GridBisection GridBisection::Half(Cut const& cut, bool lower) const {
  GridBisection half = *this;
  (lower ? half.block_.high : half.block_.low)[cut.direction] = cut.plane;
  half.firstPart_ = lower ? firstPart_ : cut.firstUpperPart;
  half.nParts_ = lower ? cut.firstUpperPart - firstPart_ : firstPart_ + nParts_ - cut.firstUpperPart;
  return half;
}

}  // namespace reference_host
