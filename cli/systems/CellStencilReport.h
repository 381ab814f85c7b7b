#pragma once

#include <iosfwd>
#include <nlohmann/json_fwd.hpp>

#include "cli/systems/CellStencil.h"

namespace zyngrad {

/// The lengths, the table of members with their weights, the sums and the condition number.
void PrintCellStencil(std::ostream& out, CellStencil const& stencil);

/// The same numbers.
nlohmann::ordered_json CellStencilAsJson(CellStencil const& stencil);

}  // namespace zyngrad
