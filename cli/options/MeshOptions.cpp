#include "cli/options/MeshOptions.h"

#include <CLI/CLI.hpp>

#include "cli/base/OneLine.h"
#include "cli/base/UsageError.h"

namespace zyngrad {

CLI::Option* AddRepeatableOption(CLI::App& command, std::string const& name, std::vector<std::string>& values,
                                 std::string const& description) {
  return command.add_option(name, values, description)
      ->expected(1)
      ->allow_extra_args(false)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void AddMeshOptions(CLI::App& command, MeshOptions& options) {
  command
      .add_option(
          "MESH", options.mesh,
          "A Gmsh (.msh) or CGNS (.cgns) file, a polyMesh folder or its case (whole, or decomposed for as "
          "many processors as there are ranks), or a box:\n"
          "box:NX,NY,NZ[:hex|tet|prism|dual][:perturb=A,seed=S,stretch=F,skew=W]")
      ->required();
  AddGroupOption(command, options.groups);
}

CLI::Option* AddGroupOption(CLI::App& command, std::vector<std::string>& groups) {
  return AddRepeatableOption(command, "--group", groups,
                             "Group of a boundary whose name does not tell it; may be repeated")
      ->type_name("NAME=inlet|outlet|wall|symmetry");
}

std::map<std::string, reference_host::BoundaryGroup> GroupsByUser(MeshOptions const& options) {
  std::map<std::string, reference_host::BoundaryGroup> groups;
  for (std::string const& text : options.groups) {
    std::size_t const equals = text.rfind('=');  // a name may have one itself
    auto const group =
        equals == std::string::npos ? std::nullopt : reference_host::GroupFromWord(text.substr(equals + 1));
    if (!group || equals == 0) {
      throw UsageError("--group " + Quoted(text) + ": expected NAME=inlet, outlet, wall or symmetry");
    }
    std::string const name = text.substr(0, equals);
    auto const [known, isNew] = groups.emplace(name, *group);
    if (!isNew && known->second != *group)
      throw UsageError("--group: " + Quoted(name) + " is assigned to two groups");
  }
  return groups;
}

}  // namespace zyngrad
