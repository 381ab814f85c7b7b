#pragma once

#include <iosfwd>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cli/base/TextTable.h"
#include "cli/gradient/GradientRun.h"

namespace zyngrad {

/// The tables of errors (without exact gradients: of sizes) and of times, with a line for each method that could
/// not run. Only the first rank's job.
/// @param[in] exactL2      of each field; empty for fields without exact gradient
/// @param[in] placeDigits  from PlaceDigits
void PrintGradientResults(std::ostream& out, std::vector<MethodResult> const& results,
                          std::vector<double> const& exactL2, int placeDigits = kPlaceDigits);

/// The same numbers; what is not finite becomes null.
nlohmann::ordered_json GradientResultsAsJson(std::vector<MethodResult> const& results);

}  // namespace zyngrad
