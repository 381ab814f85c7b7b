#pragma once

#include <iosfwd>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cli/GradientRun.h"
#include "cli/TextTable.h"

namespace zyngrad {

/// The tables of errors (without exact gradients: of sizes) and of times, with a line for each method that could
/// not run. Only the first rank's job.
/// @param[in] exactL2      of each field; empty for fields without exact gradient
/// @param[in] placeDigits  from PlaceDigits
void PrintGradientResults(std::ostream& out, const std::vector<MethodResult>& results,
                          const std::vector<double>& exactL2, int placeDigits = kPlaceDigits);

/// The same numbers; what is not finite becomes null.
nlohmann::ordered_json GradientResultsAsJson(const std::vector<MethodResult>& results);

}  // namespace zyngrad
