#pragma once

#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "reference_host/mesh/GroupRules.h"
#include "reference_host/parallel/MeshLoading.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace zyngrad {

/// How the user assigns boundaries to groups, as on the command line.
struct GroupOptions {
  std::vector<std::string> groups;  ///< NAME=inlet|outlet|wall|symmetry each
  std::string file;                 ///< one NAME=GROUP a line
  std::string fallback;             ///< a group; empty: none
};

/// How the user wants the mesh to be read and divided, as on the command line.
struct LoadingOptions {
  std::string reading;        ///< whole or slabs; empty: the program chooses
  std::string partitionFile;  ///< the part of each cell; empty: none
};

/// The options of every command that reads a mesh.
struct MeshOptions : GroupOptions, LoadingOptions {
  std::string mesh;
};

/// Adds MESH and the options of groups.
void AddMeshOptions(CLI::App& command, MeshOptions& options);

/// Adds --group NAME=GROUP, --groups FILE and --default-group.
void AddGroupOptions(CLI::App& command, GroupOptions& options);

/// Adds --read and --partition.
void AddLoadingOptions(CLI::App& command, LoadingOptions& options);

/// Throws UsageError if they contradict each other or mean nothing.
reference_host::MeshLoading LoadingByUser(LoadingOptions const& options);

/// Adds an option that may be given several times, with exactly one value each time, so that it cannot take the
/// arguments that follow.
CLI::Option* AddRepeatableOption(CLI::App& command, std::string const& name, std::vector<std::string>& values,
                                 std::string const& description);

/// The groups that the user assigned. ReadGroupRules adds the lines of the file.
struct UserGroups {
  reference_host::GroupRules options;  ///< --group and --default-group
  std::string file;
};

/// Throws UsageError on anything but NAME=GROUP and on a wrong group.
UserGroups GroupsByUser(GroupOptions const& options);

/// Collective. The rules for LoadMesh: the lines of the file, read by the first rank, then the options, which win over
/// lines of the same kind. Throws UsageError, which names file and line.
reference_host::GroupRules ReadGroupRules(Ranks const& ranks, UserGroups const& groups);

/// The rules in the text of such a file: one NAME=GROUP a line, around which spaces do not count; empty lines and those
/// that begin with # are comments. Throws UsageError, which names file and line.
std::vector<reference_host::GroupRule> ParseGroupFile(std::string const& text, std::string const& fileName);

}  // namespace zyngrad
