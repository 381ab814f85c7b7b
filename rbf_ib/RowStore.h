#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <type_traits>
#include <vector>

#include "foundation/ZeroedBlock.h"

/// Rows of T() that come one by one and go all together, one behind the other in a few large blocks: a walk over
/// the rows in the order in which they were made is a walk through memory.
template <typename T>
class RowStore {
 public:
  RowStore() = default;
  RowStore(RowStore const&) = delete;
  RowStore& operator=(RowStore const&) = delete;

  ~RowStore() {
    for (Block const& block : blocks_) {
      std::destroy_n(block.elements, block.used);
      FreeZeroedBlock(block.elements);
    }
  }

  /// A row of n elements, valid as long as the store.
  T* NewRow(std::size_t n) {
    if (blocks_.empty() || blocks_.back().size - blocks_.back().used < n) AddBlock(n);
    Block& block = blocks_.back();
    T* const row = block.elements + block.used;
    // Zero bytes are elements of the plain types already.
    if constexpr (!std::is_trivially_copyable_v<T>) std::uninitialized_value_construct_n(row, n);
    block.used += n;
    return row;
  }

 private:
  struct Block {
    T* elements;
    std::size_t size, used;
  };

  // Every block is twice as large as the one before, up to a size at which large pages pay and a rest that is
  // never used costs address space only.
  static constexpr std::size_t kFirstBytes = std::size_t{1} << 14;
  static constexpr std::size_t kLargestBytes = std::size_t{1} << 25;

  void AddBlock(std::size_t atLeast) {
    nextBytes_ = blocks_.empty() ? kFirstBytes : std::min(2 * nextBytes_, kLargestBytes);
    std::size_t const size = std::max(nextBytes_ / sizeof(T), atLeast);
    blocks_.reserve(blocks_.size() + 1);
    blocks_.push_back({static_cast<T*>(NewZeroedBlock(size * sizeof(T))), size, 0});
  }

  static_assert(alignof(T) <= alignof(std::max_align_t), "what blocks are aligned to");

  std::vector<Block> blocks_;
  std::size_t nextBytes_ = 0;
};
