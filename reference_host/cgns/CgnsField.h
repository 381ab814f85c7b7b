#pragma once

#include <string>
#include <vector>

namespace reference_host {

/// A cell-centred field of a CGNS file, in the cell order of ReadCgns.
struct CgnsField {
  int nComponents = 1;
  std::vector<double> cell;  ///< [nComponents * cell + component]
};

/// A cell-centred array of a FlowSolution_t, or a vector of three of them.
/// @param[in] file   CGNS file with one unstructured zone
/// @param[in] field  the array, such as "Pressure"; or "Velocity" for the arrays VelocityX, VelocityY, VelocityZ of one
///                   solution, if no array has the name itself. "SOLUTION/..." if several solutions have it
/// @throws MeshError  no such array, several, or not at the cell centres
CgnsField ReadCgnsField(std::string const& file, std::string const& field);

}  // namespace reference_host
