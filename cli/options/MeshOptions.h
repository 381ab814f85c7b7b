#pragma once

#include <map>
#include <string>
#include <vector>

#include "reference_host/mesh/BoundaryGroups.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace zyngrad {

/// The options of every command that reads a mesh.
struct MeshOptions {
  std::string mesh;
  std::vector<std::string> groups;  ///< NAME=inlet|outlet|wall|symmetry each
};

/// Adds MESH and --group.
void AddMeshOptions(CLI::App& command, MeshOptions& options);

/// Adds --group NAME=GROUP.
CLI::Option* AddGroupOption(CLI::App& command, std::vector<std::string>& groups);

/// Adds an option that may be given several times, with exactly one value each time, so that it cannot take the
/// arguments that follow.
CLI::Option* AddRepeatableOption(CLI::App& command, std::string const& name, std::vector<std::string>& values,
                                 std::string const& description);

/// The groups that the user assigned, by name of the patch. Throws UsageError on anything but NAME=GROUP and on a
/// name with two groups.
std::map<std::string, reference_host::BoundaryGroup> GroupsByUser(MeshOptions const& options);

}  // namespace zyngrad
