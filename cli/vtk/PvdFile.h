#pragma once

#include <string>
#include <vector>

namespace zyngrad {

/// Writes the index of a series: one grid for each time. Throws UsageError if that fails.
/// @param[in] times  numbers as texts
/// @param[in] grids  [time] relative to the folder of the index
void WritePvd(std::string const& file, std::vector<std::string> const& times,
              std::vector<std::string> const& grids);

}  // namespace zyngrad
