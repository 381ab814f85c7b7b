#pragma once

#include <cstdint>
#include <vector>

#include "host_check/HaloExchange.h"

namespace host_check {

/// Whole numbers for cells that are very likely distinct on all partitions, 1..2^26, so that their squares are exact.
class CellNumbers {
 public:
  explicit CellNumbers(HostView const& view);
  double operator()(int c) const;

 private:
  std::uint64_t mark_;
};

/// What an exchange puts into a halo cell.
struct HaloSource {
  bool isFilled = false;
  bool isMean = false;        ///< a weighted mean of several values and not a copy of one
  double sumOfWeights = 1.0;  ///< what becomes of the value 1
  double number = 0.0;        ///< what becomes of the CellNumbers
};

/// Collective. One element for each of exchange.Halos().
std::vector<HaloSource> FindHaloSources(HostView const& view, HaloExchange& exchange);

}  // namespace host_check
