#pragma once

#include <cstdint>
#include <set>
#include <string>

namespace reference_host {

/// Throws MeshError if a file has only some of the partitions of a mesh.
/// @param[in] nPartitions,partitionsWithVolumes  as in GmshContent
void CheckGmshIsWhole(std::string const& file, std::int64_t nPartitions,
                      std::set<std::int64_t> const& partitionsWithVolumes);

// What is wrong with a file, as messages for MeshError.
std::string GmshWithoutVolumes(std::string const& file);
std::string GmshNodeNotPositive(std::int64_t tag);  ///< without the file
std::string GmshNodeTwice(std::string const& file, std::int64_t tag);
std::string GmshNodeUnknown(std::string const& file, std::int64_t element, std::int64_t tag);

}  // namespace reference_host
