#pragma once

#include <CLI/CLI.hpp>
#include <map>
#include <string>
#include <vector>

#include "reference_host/mesh/BoundaryGroups.h"

namespace zyngrad {

/// What every command that reads a mesh is told on the command line.
struct MeshOptions {
  std::string mesh;
  std::vector<std::string> groups;  ///< NAME=inlet|outlet|wall|symmetry each
};

/// Adds MESH and --group.
void AddMeshOptions(CLI::App& command, MeshOptions& options);

/// An option that may be given several times, with exactly one value each time, so that it swallows no other
/// argument.
CLI::Option* AddRepeatableOption(CLI::App& command, std::string const& name, std::vector<std::string>& values,
                                 std::string const& description);

/// The groups by name of the patch. Throws UsageError on anything but NAME=GROUP and on a name with two
/// groups.
std::map<std::string, reference_host::BoundaryGroup> GroupsByUser(MeshOptions const& options);

/// A whole number from `lowest` to the largest int; throws UsageError that names the option.
int WholeNumber(std::string const& option, std::string const& text, int lowest);

}  // namespace zyngrad
