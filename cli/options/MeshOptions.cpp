#include "cli/options/MeshOptions.h"

#include <CLI/CLI.hpp>
#include <fstream>
#include <optional>
#include <sstream>
#include <utility>

#include "cli/base/OneLine.h"
#include "cli/base/UsageError.h"
#include "reference_host/mesh/BoundaryGroups.h"

namespace zyngrad {
namespace {

using reference_host::GroupRule;
using reference_host::GroupRules;

std::string Trimmed(std::string const& text) {
  constexpr char const* kSpaces = " \t\r";
  std::size_t const first = text.find_first_not_of(kSpaces);
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(kSpaces) - first + 1);
}

/// The rule NAME=GROUP; empty for any other text.
/// @param[in] trim  removes what may surround either part
std::optional<GroupRule> RuleFromText(std::string const& text, std::string const& origin,
                                      std::string (*trim)(std::string const&)) {
  std::size_t const equals = text.rfind('=');  // a name may have one itself
  if (equals == std::string::npos) return std::nullopt;
  std::string const name = trim(text.substr(0, equals));
  auto const group = reference_host::GroupFromWord(trim(text.substr(equals + 1)));
  if (name.empty() || !group) return std::nullopt;
  return GroupRule{name, *group, origin};
}

std::string AsItIs(std::string const& text) { return text; }

/// A list of boundaries has some lines; what is much larger is something else.
std::string TextOfFile(std::string const& name) {
  constexpr std::size_t kMost = 16 << 20;
  std::ifstream in(name, std::ios::binary);
  std::string text(kMost + 1, '\0');
  if (in) in.read(text.data(), static_cast<std::streamsize>(text.size()));
  if (!in.is_open() || in.bad() || (in.gcount() == 0 && !in.eof()))
    throw UsageError("--groups " + Quoted(name) + ": cannot be read");
  text.resize(static_cast<std::size_t>(in.gcount()));
  if (text.size() > kMost) throw UsageError("--groups " + Quoted(name) + ": more than 16 MiB");
  return text;
}

}  // namespace

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
  AddGroupOptions(command, options);
}

void AddGroupOptions(CLI::App& command, GroupOptions& options) {
  AddRepeatableOption(
      command, "--group", options.groups,
      "Group of a boundary, or in quotes of all whose names match a pattern with * and ?; may be "
      "repeated. Names win over patterns, later options over earlier ones")
      ->type_name("NAME=inlet|outlet|wall|symmetry");
  command
      .add_option("--groups", options.file,
                  "File with one NAME=GROUP a line, # for comments; options --group win over it")
      ->type_name("FILE");
  command
      .add_option("--default-group", options.fallback,
                  "Group of boundaries that get none by --group, --groups, type or name")
      ->type_name("inlet|outlet|wall|symmetry");
}

void AddLoadingOptions(CLI::App& command, LoadingOptions& options) {
  command
      .add_option(
          "--read", options.reading,
          "How several ranks get the mesh: rank 0 reads the whole and METIS divides it, or each rank reads a "
          "slab and PT-Scotch divides it (default: slabs for large files)")
      ->type_name("whole|slabs");
  command
      .add_option("--partition", options.partitionFile,
                  "File with the rank of each cell, one number from 0 a line: what METIS or "
                  "zyngrad info --save-partition writes")
      ->type_name("FILE");
}

reference_host::MeshLoading LoadingByUser(LoadingOptions const& options) {
  reference_host::MeshLoading loading;
  loading.partitionFile = options.partitionFile;
  if (options.reading == "whole") {
    loading.reading = reference_host::MeshReading::Whole;
  } else if (options.reading == "slabs") {
    loading.reading = reference_host::MeshReading::Slabs;
  } else if (!options.reading.empty()) {
    throw UsageError("--read " + Quoted(options.reading) + ": expected whole or slabs");
  }
  return loading;
}

UserGroups GroupsByUser(GroupOptions const& options) {
  UserGroups byUser;
  byUser.file = options.file;
  byUser.options.areOptions = true;
  for (std::string const& text : options.groups) {
    std::optional<GroupRule> rule = RuleFromText(text, "--group", AsItIs);
    if (!rule)
      throw UsageError("--group " + Quoted(text) + ": expected NAME=inlet, outlet, wall or symmetry");
    byUser.options.rules.push_back(std::move(*rule));
  }
  if (options.fallback.empty()) return byUser;
  byUser.options.fallback = reference_host::GroupFromWord(options.fallback);
  if (!byUser.options.fallback)
    throw UsageError("--default-group " + Quoted(options.fallback) +
                     ": expected inlet, outlet, wall or symmetry");
  return byUser;
}

std::vector<GroupRule> ParseGroupFile(std::string const& text, std::string const& fileName) {
  std::vector<GroupRule> rules;
  std::istringstream lines(text);
  std::size_t number = 0;
  for (std::string line; std::getline(lines, line);) {
    std::string const origin = fileName + ':' + std::to_string(++number);
    line = Trimmed(line);
    if (line.empty() || line.front() == '#') continue;
    std::optional<GroupRule> rule = RuleFromText(line, origin, Trimmed);
    if (!rule)
      throw UsageError("--groups " + origin + ": " + Quoted(line) +
                       ": expected NAME=inlet, outlet, wall or symmetry");
    rules.push_back(std::move(*rule));
  }
  return rules;
}

GroupRules ReadGroupRules(Ranks const& ranks, UserGroups const& groups) {
  GroupRules rules = groups.options;
  if (groups.file.empty()) return rules;
  std::string text;
  ranks.Together([&] {
    if (ranks.IsFirst()) text = TextOfFile(groups.file);
  });
  ranks.Broadcast(text);
  std::vector<GroupRule> const lines = ParseGroupFile(text, groups.file);
  rules.rules.insert(rules.rules.begin(), lines.begin(), lines.end());
  return rules;
}

}  // namespace zyngrad
