#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

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
