#include "reference_host/slabs/NumberSet.h"

namespace reference_host {

NumberSet::NumberSet(std::int64_t n) : pages_(static_cast<std::size_t>((n >> kPageBits) + 1)) {}

void NumberSet::Count() {
  nMembers_ = 0;
  for (std::unique_ptr<Page> const& page : pages_) {
    if (!page) continue;
    page->nBefore = nMembers_;
    int nInPage = 0;
    for (std::size_t word = 0; word < kWords; ++word) {
      page->nBeforeWord[word] = static_cast<std::uint16_t>(nInPage);
      nInPage += __builtin_popcountll(page->bits[word]);
    }
    nMembers_ += nInPage;
  }
}

std::vector<std::int64_t> NumberSet::Ascending() const {
  std::vector<std::int64_t> members;
  members.reserve(size());
  for (std::size_t p = 0; p < pages_.size(); ++p) {
    if (!pages_[p]) continue;
    for (std::size_t word = 0; word < kWords; ++word) {
      auto const first = static_cast<std::int64_t>(p * kWords + word) * 64;
      for (std::uint64_t rest = pages_[p]->bits[word]; rest != 0; rest &= rest - 1) {
        members.push_back(first + __builtin_ctzll(rest));
      }
    }
  }
  return members;
}

}  // namespace reference_host
