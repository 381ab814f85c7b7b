#pragma once

#include <string>
#include <vector>

namespace reference_host {

/// A cell-centred array of a FlowSolution_t of a CGNS file, in the cell order of ReadCgns.
/// @param[in] file   CGNS file with one unstructured zone
/// @param[in] field  the array, such as "Pressure", or "SOLUTION/ARRAY" if several solutions have it @throws
///                   MeshError  no such array, several, or not at the cell centres
std::vector<double> ReadCgnsField(std::string const& file, std::string const& field);

}  // namespace reference_host
