#include "reference_host/box/BoxBlocks.h"

#include <algorithm>

namespace reference_host {

GridBlock Grown(GridBlock const& block, GridBlock const& limits) {
  GridBlock grown = block;
  for (std::size_t d = 0; d < 3; ++d) {
    grown.low[d] = std::max(block.low[d] - 1, limits.low[d]);
    grown.high[d] = std::min(block.high[d] + 1, limits.high[d]);
  }
  return grown;
}

std::vector<GridBlock> ContiguousBlocks(GridBlock const& grid, std::int64_t first, std::int64_t end,
                                        std::int64_t most) {
  std::vector<GridBlock> blocks;
  std::int64_t const row = grid.Length(0), layer = row * grid.Length(1);
  while (first < end) {
    GridIndex const at = grid.Place(first);
    std::int64_t const room = std::min(end - first, most);
    GridBlock block = {at, {at[0] + 1, at[1] + 1, at[2] + 1}};
    bool const beginsRow = at[0] == grid.low[0];
    if (beginsRow && at[1] == grid.low[1] && room >= layer) {
      block.high = {grid.high[0], grid.high[1], at[2] + static_cast<int>(room / layer)};
    } else if (beginsRow && room >= row) {
      block.high[0] = grid.high[0];
      block.high[1] = static_cast<int>(std::min<std::int64_t>(grid.high[1], at[1] + room / row));
    } else {
      block.high[0] = static_cast<int>(std::min<std::int64_t>(grid.high[0], at[0] + room));
    }
    blocks.push_back(block);
    first += block.Size();
  }
  return blocks;
}

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
