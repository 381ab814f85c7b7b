#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace reference_host {

using GridIndex = std::array<int, 3>;  ///< a cube or node of a box's grid: its position in x, y, z

/// Places low[d] <= i[d] < high[d] of a grid.
struct GridBlock {
  GridIndex low, high;

  int Length(std::size_t d) const { return high[d] - low[d]; }
  std::int64_t Size() const { return std::int64_t{Length(0)} * Length(1) * Length(2); }
  bool Contains(GridIndex const& i) const {
    return i[0] >= low[0] && i[0] < high[0] && i[1] >= low[1] && i[1] < high[1] && i[2] >= low[2] &&
           i[2] < high[2];
  }

  /// Position among the places of the block, x running fastest.
  std::size_t Offset(GridIndex const& i) const {
    auto const offset = [&](std::size_t d) { return static_cast<std::size_t>(i[d] - low[d]); };
    auto const length = [&](std::size_t d) { return static_cast<std::size_t>(Length(d)); };
    return offset(0) + length(0) * (offset(1) + length(1) * offset(2));
  }

  /// The place with this offset. @pre 0 <= offset < Size()
  GridIndex Place(std::int64_t offset) const {
    std::int64_t const rows = offset / Length(0);
    return {low[0] + static_cast<int>(offset % Length(0)), low[1] + static_cast<int>(rows % Length(1)),
            low[2] + static_cast<int>(rows / Length(1))};
  }

  /// How many places of the block come before i, which may be outside, with x running fastest.
  std::int64_t CountBefore(GridIndex const& i) const {
    if (Length(0) <= 0 || Length(1) <= 0 || Length(2) <= 0) return 0;
    auto const before = [&](std::size_t d) {
      return std::int64_t{std::clamp(i[d], low[d], high[d]) - low[d]};
    };
    auto const has = [&](std::size_t d) { return i[d] >= low[d] && i[d] < high[d]; };
    std::int64_t count = before(2) * Length(1);
    if (has(2)) count += before(1);
    count *= Length(0);
    if (has(2) && has(1)) count += before(0);
    return count;
  }

  /// The nodes of the block's cubes.
  GridBlock Nodes() const { return {low, {high[0] + 1, high[1] + 1, high[2] + 1}}; }

  /// Calls action(i) for every place, x running fastest.
  template <class Action>
  void ForEach(Action const& action) const {
    for (int k = low[2]; k < high[2]; ++k) {
      for (int j = low[1]; j < high[1]; ++j) {
        for (int i = low[0]; i < high[0]; ++i) action(GridIndex{i, j, k});
      }
    }
  }
};

/// The block and a layer around it, within limits.
GridBlock Grown(GridBlock const& block, GridBlock const& limits);

/// The places with the offsets first..end-1 as blocks of at most `most` places, each of which has a contiguous range of
/// offsets, in their order.
std::vector<GridBlock> ContiguousBlocks(GridBlock const& grid, std::int64_t first, std::int64_t end,
                                        std::int64_t most);

/// Calls action(i) for the places of a block with the offsets first <= offset < end, in their order.
template <class Action>
void ForEachPlace(GridBlock const& block, std::int64_t first, std::int64_t end, Action const& action) {
  if (first == end) return;
  GridIndex i = block.Place(first);
  for (std::int64_t offset = first; offset < end; ++offset) {
    action(i);
    for (std::size_t d = 0; d < 3 && ++i[d] == block.high[d]; ++d) i[d] = block.low[d];
  }
}

/// Cuts a grid in two along its longest side, then each half, and so on. Unlike a grid of blocks, this gives
/// any number of parts up to the number of cubes, as blocks of nearly cubic shape and nearly equal size.
class GridBisection {
 public:
  /// @pre 1 <= nParts <= grid.Size()
  GridBisection(GridBlock const& grid, int nParts) : block_(grid), nParts_(nParts) {}

  GridBlock BlockOf(int part) const;
  int PartOf(GridIndex const& cube) const;

 private:
  struct Cut {
    std::size_t direction;
    int plane;           // first layer on the upper side
    int firstUpperPart;  // parts from here on are on the upper side
  };

  template <class IsLower>
  GridBisection Descend(IsLower const& isLower) const;
  Cut BestCut() const;
  GridBisection Half(Cut const& cut, bool lower) const;

  GridBlock block_;
  int firstPart_ = 0;
  int nParts_;
};

}  // namespace reference_host
