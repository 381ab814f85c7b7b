#include "reference_host/BoundaryGroups.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "reference_host/MeshError.h"

namespace reference_host {
namespace {

constexpr std::array<std::pair<std::string_view, BoundaryGroup>, 4> kGroups = {{
    {"inlet", BoundaryGroup::Inlet},
    {"outlet", BoundaryGroup::Outlet},
    {"symmetry", BoundaryGroup::Symmetry},
    {"wall", BoundaryGroup::Wall},
}};

/// How the conditions of CGNS files are called, in lower case.
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

bool BeginsWith(const std::string& text, std::string_view beginning) {
  return text.compare(0, beginning.size(), beginning) == 0;
}

std::optional<BoundaryGroup> GroupByBeginning(const std::string& text) {
  const std::string lower = LowerCase(text);
  for (const auto& [word, group] : kGroups) {
    if (BeginsWith(lower, word)) return group;
  }
  for (const auto& [word, group] : kCgnsGroups) {
    if (BeginsWith(lower, word)) return group;
  }
  return std::nullopt;
}

/// Patch types that join parts of the mesh or stand for a missing dimension.
bool IsNoBoundary(const std::string& type) {
  const std::string lower = LowerCase(type);
  return lower == "empty" || lower == "wedge" || BeginsWith(lower, "cyclic") ||
         BeginsWith(lower, "processor");
}

std::string Joined(const std::vector<std::string>& parts) {
  std::string list;
  for (const std::string& part : parts) list += (list.empty() ? "" : ", ") + part;
  return list;
}

std::string Described(const Patch& patch, std::int64_t nFaces) {
  const std::string type = patch.type.empty() ? "" : " of type " + patch.type;
  return "'" + patch.name + "'" + type + " (" + std::to_string(nFaces) + (nFaces == 1 ? " face)" : " faces)");
}

void CheckUserNames(const std::vector<Patch>& patches, const std::map<std::string, BoundaryGroup>& byUser) {
  std::vector<std::string> unknown;
  for (const auto& [name, group] : byUser) {
    const bool known = std::any_of(patches.begin(), patches.end(),
                                   [&wanted = name](const Patch& patch) { return patch.name == wanted; });
    if (!known) unknown.push_back("'" + name + "'");
  }
  if (unknown.empty()) return;
  std::vector<std::string> names;
  names.reserve(patches.size());
  for (const Patch& patch : patches) names.push_back("'" + patch.name + "'");
  throw MeshError("the mesh has no boundary called " + Joined(unknown) + "; it has " +
                  (names.empty() ? "none" : Joined(names)));
}

}  // namespace

std::string NameOfGroup(BoundaryGroup group) {
  for (const auto& [word, candidate] : kGroups) {
    if (candidate == group) return std::string(word);
  }
  return "unknown";
}

std::optional<BoundaryGroup> GroupFromWord(const std::string& word) {
  for (const auto& [candidate, group] : kGroups) {
    if (LowerCase(word) == candidate) return group;
  }
  return std::nullopt;
}

std::optional<BoundaryGroup> GroupByName(const std::string& name, const std::string& type) {
  if (IsNoBoundary(type)) return std::nullopt;
  const std::optional<BoundaryGroup> byType = GroupByBeginning(type);
  return byType ? byType : GroupByBeginning(name);
}

void AssignBoundaryGroups(std::vector<Patch>& patches, const std::vector<std::int64_t>& facesOfPatch,
                          const std::map<std::string, BoundaryGroup>& byUser) {
  CheckUserNames(patches, byUser);
  std::vector<std::string> unmapped;
  for (std::size_t p = 0; p < patches.size(); ++p) {
    Patch& patch = patches[p];
    const auto wanted = byUser.find(patch.name);
    patch.group = wanted != byUser.end() ? wanted->second : GroupByName(patch.name, patch.type);
    if (!patch.group && facesOfPatch[p] > 0) unmapped.push_back(Described(patch, facesOfPatch[p]));
  }
  if (unmapped.empty()) return;
  throw MeshError("boundary faces without a group: " + Joined(unmapped) +
                  "; map each name to inlet, outlet, symmetry or wall");
}

}  // namespace reference_host
