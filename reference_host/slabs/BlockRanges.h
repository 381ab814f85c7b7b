#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace reference_host {

/// Numbers 0..n-1 of a whole mesh, divided into one contiguous block for each rank. Blocks may be empty.
class BlockRanges {
 public:
  BlockRanges() = default;

  /// @param[in] starts  [0..nBlocks] the first number of each block, then the number of items
  explicit BlockRanges(std::vector<std::int64_t> starts) : starts_(std::move(starts)) {}

  /// Blocks whose sizes differ by at most one.
  static BlockRanges Even(std::int64_t nItems, int nBlocks);

  int nBlocks() const { return static_cast<int>(starts_.size()) - 1; }
  std::int64_t nItems() const { return starts_.back(); }
  std::int64_t First(int block) const { return starts_[static_cast<std::size_t>(block)]; }
  std::int64_t End(int block) const { return starts_[static_cast<std::size_t>(block) + 1]; }
  std::int64_t Size(int block) const { return End(block) - First(block); }

  /// The block that has the item. @pre 0 <= item < nItems()
  int BlockOf(std::int64_t item) const;

 private:
  std::vector<std::int64_t> starts_ = {0};
};

}  // namespace reference_host
