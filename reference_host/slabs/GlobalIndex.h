#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace reference_host {

/// Counts numbers of a whole mesh from 0 in the order in which they are added, each once. A table of 8 to 16 bytes for
/// each number finds them again.
class GlobalIndex {
 public:
  /// The index of the number, which is added if it is new. @pre 0 <= number
  std::size_t Add(std::int64_t number) {
    if (2 * (numbers_.size() + 1) > slots_.size()) Grow();
    for (std::size_t at = Hash(number);; ++at) {
      std::uint32_t& slot = slots_[at & (slots_.size() - 1)];
      if (slot == kFree) {
        slot = static_cast<std::uint32_t>(numbers_.size());
        numbers_.push_back(number);
        return numbers_.size() - 1;
      }
      if (numbers_[slot] == number) return slot;
    }
  }

  /// [index] the number
  std::vector<std::int64_t> const& numbers() const { return numbers_; }

  /// The numbers; the index is then empty.
  std::vector<std::int64_t> Release() {
    slots_ = {};
    return std::move(numbers_);
  }

 private:
  static constexpr std::uint32_t kFree = 0xffffffffU;
  static constexpr std::size_t kFirstSlots = 1024;

  static std::size_t Hash(std::int64_t number) {
    return static_cast<std::size_t>((static_cast<std::uint64_t>(number) * 0x9e3779b97f4a7c15ULL) >> 24);
  }

  void Grow() {
    slots_.assign(slots_.empty() ? kFirstSlots : 2 * slots_.size(), kFree);
    for (std::size_t i = 0; i < numbers_.size(); ++i) {
      std::size_t at = Hash(numbers_[i]);
      while (slots_[at & (slots_.size() - 1)] != kFree) ++at;
      slots_[at & (slots_.size() - 1)] = static_cast<std::uint32_t>(i);
    }
  }

  std::vector<std::uint32_t> slots_;  // a power of two of them, at most half of them taken
  std::vector<std::int64_t> numbers_;
};

}  // namespace reference_host
