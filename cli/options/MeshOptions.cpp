#include "cli/options/MeshOptions.h"

#include <charconv>
#include <system_error>

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
      .add_option("MESH", options.mesh,
                  "A Gmsh (.msh) or CGNS (.cgns) file, a polyMesh folder or its case (decomposed for as many "
                  "processors as there are ranks, or whole), or a box:\n"
                  "box:NX,NY,NZ[:hex|tet|prism|dual][:perturb=A,seed=S,stretch=F,skew=W]")
      ->required();
  AddRepeatableOption(command, "--group", options.groups,
                      "Kind of a boundary whose name does not tell it; repeat as needed")
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
      throw UsageError("--group: " + Quoted(name) + " is given two groups");
  }
  return groups;
}

int WholeNumber(std::string const& option, std::string const& text, int lowest) {
  int value = 0;
  char const* end = text.data() + text.size();
  auto const result = std::from_chars(text.data(), end, value);
  if (result.ec != std::errc() || result.ptr != end || value < lowest) {
    throw UsageError(option + ' ' + Quoted(text) + ": expected a whole number, " + std::to_string(lowest) +
                     " or more");
  }
  return value;
}

}  // namespace zyngrad
