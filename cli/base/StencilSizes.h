#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "cli/base/Ranks.h"

namespace zyngrad {

/// Number of cells in the stencils of all ranks.
struct StencilSizes {
  std::int64_t nStencils = 0;
  std::int64_t nMembers = 0;  ///< in all stencils together
  int least = 0, most = 0;    ///< 0 if there are no stencils

  double Mean() const {
    return nStencils > 0 ? static_cast<double>(nMembers) / static_cast<double>(nStencils) : 0.0;
  }
};

/// Collective. @param[in] members  of each stencil of this rank
StencilSizes SummariseStencils(Ranks const& ranks, std::vector<int> const& members);

/// "stencils of 4 to 27 cells, 18.2 on average".
std::string StencilSizesInWords(StencilSizes const& sizes);

nlohmann::ordered_json StencilSizesAsJson(StencilSizes const& sizes);

}  // namespace zyngrad
