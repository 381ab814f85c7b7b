#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "cli/base/TextTable.h"
#include "cli/gradient/GradientErrors.h"

namespace zyngrad {

/// Whether norms are of errors, so that relative ones make sense, or of a quantity itself.
enum class NormsOfWhat { Errors, Quantity };

/// Columns of a table for what NormsRow returns, behind the columns of `first`.
std::vector<TextTable::Column> NormsColumns(std::vector<TextTable::Column> first, NormsOfWhat what);

/// A row for norms over a set of cells, behind the texts of `first`: number of cells, norms, and the place of the maximum.
/// @param[in] placeDigits  from PlaceDigits
std::vector<std::string> NormsRow(std::vector<std::string> first, ErrorNorms const& norms, NormsOfWhat what,
                                  int placeDigits);

/// The same numbers. A number that is not finite becomes null.
nlohmann::ordered_json NormsAsJson(ErrorNorms const& norms, NormsOfWhat what);

}  // namespace zyngrad
