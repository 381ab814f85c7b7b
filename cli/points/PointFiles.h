#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/points/PointReport.h"

namespace zyngrad {

/// Names of all columns that WritePointCsv may add to those of the input.
/// @param[in] fields    names of the fields from files; empty if the field is a formula
/// @param[in] hasTimes  whether the times of the fields were chosen
std::vector<std::string> PointResultColumns(std::vector<std::string> const& fields, bool hasTimes);

/// Writes one row per point, in the order of the points: the columns of the input and the results. With several times,
/// or a single one that was chosen, the first column is the time, and the rows of a point follow each other. Throws
/// UsageError if the file cannot be written completely.
void WritePointCsv(std::string const& file, PointResults const& results);

/// Writes the same numbers at one time as vertices with values, or as triangles if the points are those of a surface,
/// which then have values, too. Throws as WritePointCsv.
/// @param[in] time  index into the results' times; 0 for a formula
void WritePointVtp(std::string const& file, PointResults const& results, std::size_t time = 0);

}  // namespace zyngrad
