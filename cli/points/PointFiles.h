#pragma once

#include <string>
#include <vector>

#include "cli/points/PointReport.h"

namespace zyngrad {

/// Names of the columns that WritePointCsv adds to those of the input.
std::vector<std::string> const& PointResultColumns();

/// Writes one row per point, in the order of the points: the columns of the input and the results. Throws
/// UsageError if the file cannot be written completely.
void WritePointCsv(std::string const& file, PointResults const& results);

/// Writes the same numbers as vertices with values. Throws as WritePointCsv.
void WritePointVtp(std::string const& file, PointResults const& results);

}  // namespace zyngrad
