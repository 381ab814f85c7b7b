#include "reference_host/slabs/BlockRanges.h"

#include <algorithm>

namespace reference_host {

BlockRanges BlockRanges::Even(std::int64_t nItems, int nBlocks) {
  std::int64_t const size = nItems / nBlocks, nLarger = nItems % nBlocks;
  std::vector<std::int64_t> starts;
  for (std::int64_t block = 0; block <= nBlocks; ++block) {
    starts.push_back(block * size + std::min(block, nLarger));
  }
  return BlockRanges(std::move(starts));
}

int BlockRanges::BlockOf(std::int64_t item) const {
  return static_cast<int>(std::upper_bound(starts_.begin(), starts_.end(), item) - starts_.begin()) - 1;
}

}  // namespace reference_host
