#include "reference_host/mesh/BoundaryGroups.h"

#include <algorithm>
#include <array>
#include <set>
#include <string_view>
#include <utility>

#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MessageText.h"

namespace reference_host {
namespace {

constexpr std::array<std::pair<std::string_view, BoundaryGroup>, 4> kGroups = {{
    {"inlet", BoundaryGroup::Inlet},
    {"outlet", BoundaryGroup::Outlet},
    {"symmetry", BoundaryGroup::Symmetry},
    {"wall", BoundaryGroup::Wall},
}};

/// Names of the boundary conditions of CGNS files, in lower case.
constexpr std::array<std::pair<std::string_view, BoundaryGroup>, 6> kCgnsGroups = {{
    {"bcinflow", BoundaryGroup::Inlet},
    {"bctunnelinflow", BoundaryGroup::Inlet},
    {"bcoutflow", BoundaryGroup::Outlet},
    {"bctunneloutflow", BoundaryGroup::Outlet},
    {"bcsymmetryplane", BoundaryGroup::Symmetry},
    {"bcwall", BoundaryGroup::Wall},
}};

std::string LowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return text;
}

bool BeginsWith(std::string const& text, std::string_view beginning) {
  return text.compare(0, beginning.size(), beginning) == 0;
}

std::optional<BoundaryGroup> GroupByBeginning(std::string const& text) {
  std::string const lower = LowerCase(text);
  for (auto const& [word, group] : kGroups) {
    if (BeginsWith(lower, word)) return group;
  }
  for (auto const& [word, group] : kCgnsGroups) {
    if (BeginsWith(lower, word)) return group;
  }
  return std::nullopt;
}

/// Whether a patch type joins parts of the mesh or stands for a missing dimension.
bool IsNoBoundary(std::string const& type) {
  std::string const lower = LowerCase(type);
  return lower == "empty" || lower == "wedge" || BeginsWith(lower, "cyclic") ||
         BeginsWith(lower, "processor");
}

/// Names are shortened late, because the user has to repeat them exactly.
std::string QuotedName(std::string const& name) { return Quoted(name, 100); }

std::string Described(Patch const& patch, std::int64_t nFaces) {
  std::string const type = patch.type.empty() ? "" : " of type " + Quoted(patch.type, 40, "");
  return QuotedName(patch.name) + type + " (" + std::to_string(nFaces) + (nFaces == 1 ? " face)" : " faces)");
}

std::string Prefix(std::string const& meshName) { return meshName.empty() ? "" : meshName + ": "; }

void CheckUserNames(std::vector<Patch> const& patches, std::map<std::string, BoundaryGroup> const& byUser,
                    std::string const& meshName) {
  if (byUser.empty()) return;
  std::set<std::string_view> known;
  for (Patch const& patch : patches) known.insert(patch.name);
  NameList unknown;
  for (auto const& [name, group] : byUser) {
    if (known.count(name) == 0) unknown.Add(QuotedName(name));
  }
  if (unknown.IsEmpty()) return;
  NameList names;
  for (Patch const& patch : patches) names.Add(QuotedName(patch.name));
  throw MeshError(Prefix(meshName) + "the mesh has no boundary called " + unknown.Text() + "; it has " +
                  names.Text());
}

}  // namespace

std::string NameOfGroup(BoundaryGroup group) {
  for (auto const& [word, candidate] : kGroups) {
    if (candidate == group) return std::string(word);
  }
  return "unknown";
}

std::optional<BoundaryGroup> GroupFromWord(std::string const& word) {
  for (auto const& [candidate, group] : kGroups) {
    if (LowerCase(word) == candidate) return group;
  }
  return std::nullopt;
}

std::optional<BoundaryGroup> GroupByName(std::string const& name, std::string const& type) {
  if (IsNoBoundary(type)) return std::nullopt;
  std::optional<BoundaryGroup> const byType = GroupByBeginning(type);
  return byType ? byType : GroupByBeginning(name);
}

void AssignBoundaryGroups(std::vector<Patch>& patches, std::vector<std::int64_t> const& facesOfPatch,
                          std::map<std::string, BoundaryGroup> const& byUser, std::string const& meshName) {
  CheckUserNames(patches, byUser, meshName);
  NameList unmapped;
  for (std::size_t p = 0; p < patches.size(); ++p) {
    Patch& patch = patches[p];
    auto const wanted = byUser.find(patch.name);
    patch.group = wanted != byUser.end() ? wanted->second : GroupByName(patch.name, patch.type);
    if (!patch.group && facesOfPatch[p] > 0) unmapped.Add(Described(patch, facesOfPatch[p]));
  }
  if (unmapped.IsEmpty()) return;
  throw MeshError(Prefix(meshName) + "boundary faces without a group: " + unmapped.Text() +
                  "; map each name to inlet, outlet, symmetry or wall");
}

}  // namespace reference_host
