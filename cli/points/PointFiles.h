#pragma once

#include <string>
#include <vector>

#include "cli/points/PointReport.h"

namespace zyngrad {

/// Names of the columns that WritePointCsv adds to those that the points came with.
std::vector<std::string> const& PointResultColumns();

/// Writes a row a point, in the points' order: what they came with, and the results. Throws UsageError when
/// the file cannot be written whole.
void WritePointCsv(std::string const& file, PointResults const& results);

/// Writes the same numbers as vertices with values. Throws as WritePointCsv.
void WritePointVtp(std::string const& file, PointResults const& results);

}  // namespace zyngrad
