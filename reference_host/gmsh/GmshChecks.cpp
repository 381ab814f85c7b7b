#include "reference_host/gmsh/GmshChecks.h"

#include "reference_host/mesh/MeshError.h"

namespace reference_host {

/// A partitioned mesh may have been saved in several files NAME_1.msh, NAME_2.msh, ... Version 4.1 says how many
/// partitions there are. In version 2.2, all elements of such a file are of one partition; a mesh in one partition
/// looks like the first of them, except for the name.
void CheckGmshIsWhole(std::string const& file, std::int64_t nPartitions,
                      std::set<std::int64_t> const& present) {
  if (present.empty()) return;
  std::int64_t const first = *present.begin();
  std::string const ending = "_1.msh";
  bool const isFirstOfSeveral =
      file.size() > ending.size() && file.compare(file.size() - ending.size(), ending.size(), ending) == 0;
  bool const isPiece = nPartitions > 0 ? static_cast<std::int64_t>(present.size()) < nPartitions
                                       : present.size() == 1 && (first > 1 || isFirstOfSeveral);
  if (!isPiece) return;
  throw MeshError(file + ": only partition " + std::to_string(first) +
                  (nPartitions > 0 ? " of " + std::to_string(nPartitions) : "") +
                  " is in this file; save the mesh in one file, without Gmsh's option -part_split");
}

std::string GmshWithoutVolumes(std::string const& file) {
  return file +
         ": no volume elements; with physical groups Gmsh saves only their elements, so one must be a "
         "physical "
         "volume";
}

std::string GmshNodeNotPositive(std::int64_t tag) {
  return "node number " + std::to_string(tag) + " is not positive";
}

std::string GmshNodeTwice(std::string const& file, std::int64_t tag) {
  return file + ": node " + std::to_string(tag) + " occurs twice";
}

std::string GmshNodeUnknown(std::string const& file, std::int64_t element, std::int64_t tag) {
  return file + ": element " + std::to_string(element) + " has node " + std::to_string(tag) +
         ", which the file does not have";
}

}  // namespace reference_host
