#include "cli/base/StencilSizes.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "cli/base/TextTable.h"

namespace zyngrad {

StencilSizes SummariseStencils(Ranks const& ranks, std::vector<int> const& members) {
  std::int64_t own[2] = {static_cast<std::int64_t>(members.size()), 0};
  // The maximum of the negative sizes is the minus of the smallest size.
  int ownLimits[2] = {-2147483647, 0};
  for (int const n : members) {
    own[1] += n;
    ownLimits[0] = std::max(ownLimits[0], -n);
    ownLimits[1] = std::max(ownLimits[1], n);
  }
  std::int64_t all[2] = {0, 0};
  int limits[2] = {0, 0};
  MPI_Allreduce(own, all, 2, MPI_INT64_T, MPI_SUM, ranks.communicator());
  MPI_Allreduce(ownLimits, limits, 2, MPI_INT, MPI_MAX, ranks.communicator());
  return {all[0], all[1], all[0] > 0 ? -limits[0] : 0, limits[1]};
}

std::string StencilSizesInWords(StencilSizes const& sizes) {
  return "stencils of " + std::to_string(sizes.least) + " to " + std::to_string(sizes.most) + " cells, " +
         Fixed(sizes.Mean(), 1) + " on average";
}

nlohmann::ordered_json StencilSizesAsJson(StencilSizes const& sizes) {
  return {{"least", sizes.least}, {"most", sizes.most}, {"mean", sizes.Mean()}};
}

}  // namespace zyngrad
