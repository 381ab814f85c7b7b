#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace reference_host {

/// A set of numbers 0..n-1 and the place of each in ascending order. It needs one bit for each number of the pages
/// that have a member, and 8 bytes for each page.
class NumberSet {
 public:
  /// @param[in] n  all members are below it
  explicit NumberSet(std::int64_t n);

  void Insert(std::int64_t number) {
    std::unique_ptr<Page>& page = pages_[static_cast<std::size_t>(number >> kPageBits)];
    if (!page) page = std::make_unique<Page>();
    page->bits[WordOf(number)] |= BitOf(number);
  }

  /// Counts the members: call it after the last Insert and before PlaceOf.
  void Count();

  std::size_t size() const { return static_cast<std::size_t>(nMembers_); }

  /// How many members are lower. @pre the number is a member
  std::int64_t PlaceOf(std::int64_t number) const {
    Page const& page = *pages_[static_cast<std::size_t>(number >> kPageBits)];
    std::size_t const word = WordOf(number);
    std::uint64_t const lower = page.bits[word] & (BitOf(number) - 1);
    return page.nBefore + page.nBeforeWord[word] + __builtin_popcountll(lower);
  }

  std::vector<std::int64_t> Ascending() const;

 private:
  static constexpr int kPageBits = 12;
  static constexpr std::size_t kWords = (std::size_t{1} << kPageBits) / 64;

  struct Page {
    std::array<std::uint64_t, kWords> bits = {};
    std::array<std::uint16_t, kWords> nBeforeWord = {};  ///< members of the page in lower words
    std::int64_t nBefore = 0;                            ///< members on lower pages
  };

  static std::size_t WordOf(std::int64_t number) { return static_cast<std::size_t>(number >> 6) % kWords; }
  static std::uint64_t BitOf(std::int64_t number) { return std::uint64_t{1} << (number & 63); }

  std::vector<std::unique_ptr<Page>> pages_;
  std::int64_t nMembers_ = 0;
};

}  // namespace reference_host
