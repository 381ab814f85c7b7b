#pragma once

#include <string>
#include <vector>

namespace zyngrad {

/// A series of boxes that shows what methods can and cannot do. Each box has twice as many cells in every direction
/// as the one before.
struct NamedSeries {
  char const* name;
  char const* description;  ///< half a line for the help text
  char const* firstMesh;
  int nLevels;  ///< default of --levels
};

std::vector<NamedSeries> const& NamedStudySeries();

/// The meshes of a series, coarse to fine.
/// @param[in] series   the name of a series, or the text of the first box
/// @param[in] nLevels  0 means as many as the named series has, or 4
/// Throws UsageError or MeshError if there is no such series or a box cannot be made.
std::vector<std::string> MeshesOfSeries(std::string const& series, int nLevels);

}  // namespace zyngrad
