#include "host_check/HaloSources.h"

#include "host_check/CollectiveChecks.h"

namespace host_check {

CellNumbers::CellNumbers(HostView const& view) : mark_(static_cast<std::uint64_t>(PartitionMark(view))) {}

double CellNumbers::operator()(int c) const {
  // The finaliser of SplitMix64: neighbouring cells get unrelated numbers.
  std::uint64_t word = (mark_ << 32) + static_cast<std::uint64_t>(c);
  word = (word ^ (word >> 30)) * 0xBF58476D1CE4E5B9ULL;
  word = (word ^ (word >> 27)) * 0x94D049BB133111EBULL;
  return static_cast<double>(1 + ((word ^ (word >> 31)) & 0x3FFFFFF));
}

// A copy of a number x arrives together with a copy of x^2. The mean of several numbers does not: the mean of the
// squares is then greater than the square of the mean.
std::vector<HaloSource> FindHaloSources(HostView const& view, HaloExchange& exchange) {
  CellNumbers const numberOf(view);
  ProbeField const ones = exchange.Exchanged([](int) { return 1.0; });
  ProbeField const numbers = exchange.Exchanged([&](int c) { return numberOf(c); });
  ProbeField const squares = exchange.Exchanged([&](int c) { return numberOf(c) * numberOf(c); });

  std::vector<HaloSource> sources;
  for (HaloExchange::Halo const& halo : exchange.Halos()) {
    int const cell = halo.cell;
    HaloSource source;
    source.isFilled = ones.IsFilled(cell) && numbers.IsFilled(cell) && squares.IsFilled(cell);
    source.isMean = source.isFilled && squares[cell] != numbers[cell] * numbers[cell];
    if (source.isFilled) source.number = numbers[cell];
    if (source.isMean) source.sumOfWeights = ones[cell];
    sources.push_back(source);
  }
  return sources;
}

}  // namespace host_check
