#pragma once

#include <string>
#include <vector>

namespace reference_host {

/// A cell-centred array of a FlowSolution_t of a CGNS file, by cell in the order of ReadCgns.
/// @param[in] file   CGNS file with one unstructured zone
/// @param[in] field  the array, such as "Pressure", or "SOLUTION/ARRAY" where several solutions have it
/// Throws MeshError if there is no such array, more than one, or if it is not at the cell centres.
std::vector<double> ReadCgnsField(std::string const& file, std::string const& field);

}  // namespace reference_host
