#pragma once

#include <string>
#include <vector>

namespace zyngrad {

/// A series of boxes that shows what methods can and cannot do; each has twice the cells in every direction of
/// the one before.
struct NamedSeries {
  char const* name;
  char const* description;  ///< half a line for the help text
  char const* firstMesh;
  int nLevels;  ///< unless --levels says otherwise
};

std::vector<NamedSeries> const& NamedStudySeries();

/// The meshes of a series, coarse to fine.
/// @param[in] series   one of the names, or the text of the first box
/// @param[in] nLevels  0: as many as the named series has, or 4
/// Throws UsageError or MeshError when there is no such series or a box that cannot be made.
std::vector<std::string> MeshesOfSeries(std::string const& series, int nLevels);

}  // namespace zyngrad
