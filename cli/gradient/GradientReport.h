#pragma once

#include <iosfwd>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "cli/base/TextTable.h"
#include "cli/gradient/GradientRun.h"
#include "cli/gradient/GradientTime.h"

namespace zyngrad {

/// Prints the tables of errors (without exact gradients, of sizes) and of times, and a line for each method that
/// could not run. For the first rank only.
/// @param[in] exactL2      of each field; empty for fields without exact gradient
/// @param[in] placeDigits  from PlaceDigits
void PrintGradientResults(std::ostream& out, std::vector<MethodResult> const& results,
                          std::vector<double> const& exactL2, int placeDigits = kPlaceDigits);

/// The same for the times of a case: the tables of sizes of each time, the times of calls and the remarks once.
void PrintGradientResults(std::ostream& out, std::vector<GradientTime> const& times,
                          int placeDigits = kPlaceDigits);

/// The same numbers. A number that is not finite becomes null.
nlohmann::ordered_json GradientResultsAsJson(std::vector<MethodResult> const& results);

/// Adds the methods of a run without times, or the entries of each time; and the values at the boundary of fields from
/// files.
void AddGradientResults(nlohmann::ordered_json& json, std::vector<GradientTime> const& times);

}  // namespace zyngrad
