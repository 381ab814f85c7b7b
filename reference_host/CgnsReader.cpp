#include "reference_host/CgnsReader.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <utility>
#include <vector>

#include "reference_host/CgnsConditions.h"
#include "reference_host/CgnsFile.h"
#include "reference_host/CgnsTopology.h"
#include "reference_host/MeshFile.h"

namespace reference_host {
namespace {

/// Gives every boundary face its patch: by a condition, by the section of its surface element, or "unnamed".
class PatchAssigner {
 public:
  PatchAssigner(const CgnsFile& file, const std::vector<CgnsSection>& sections, CgnsTopology& topology)
      : file_(file), sections_(sections), topology_(topology), mesh_(topology.mesh) {
    for (int f = 0; f < mesh_.nFaces(); ++f) {
      if (mesh_.neighbour[f] < 0) boundaryFaces_.push_back(f);
    }
  }

  void Assign() {
    const std::vector<CgnsCondition> conditions = ReadCgnsConditions(file_);
    std::vector<int> patchOfCondition;
    patchOfCondition.reserve(conditions.size());
    for (const CgnsCondition& condition : conditions) patchOfCondition.push_back(PatchOf(condition));
    for (std::size_t c = 0; c < conditions.size(); ++c) {
      if (conditions[c].byNodes) {
        AssignByNodes(conditions[c], patchOfCondition[c]);
      } else {
        AssignByElements(conditions[c], patchOfCondition[c]);
      }
    }
    AssignBySection();
    for (const int f : boundaryFaces_) {
      if (mesh_.facePatch[f] < 0) mesh_.facePatch[f] = PatchCalled("unnamed");
    }
  }

 private:
  int PatchCalled(const std::string& name) {
    const auto [known, isNew] = patchOfName_.emplace(name, static_cast<int>(mesh_.patches.size()));
    if (isNew) mesh_.patches.push_back({name, "", {}});
    return known->second;
  }

  int PatchOf(const CgnsCondition& condition) {
    const std::size_t nBefore = mesh_.patches.size();
    const int p = PatchCalled(condition.patchName);
    Patch& patch = mesh_.patches[p];
    if (mesh_.patches.size() > nBefore) patch.type = condition.patchType;
    if (patch.type != condition.patchType) {
      file_.Fail("boundary condition " + Quoted(condition.name) + " of type " + condition.patchType +
                 " belongs to " + Quoted(patch.name) + ", and so does one of type " + patch.type);
    }
    return p;
  }

  void Give(int face, int patch) {
    int& held = mesh_.facePatch[face];
    if (held >= 0 && held != patch) {
      file_.Fail("a face of cell " + std::to_string(mesh_.owner[face] + 1) +
                 " belongs to boundary conditions of " + Quoted(mesh_.patches[held].name) + " and of " +
                 Quoted(mesh_.patches[patch].name));
    }
    held = patch;
  }

  void AssignByElements(const CgnsCondition& condition, int patch) {
    for (const std::int64_t element : condition.members) {
      const auto found = std::lower_bound(
          topology_.surfaces.begin(), topology_.surfaces.end(), element,
          [](const CgnsSurface& surface, std::int64_t wanted) { return surface.element < wanted; });
      if (found == topology_.surfaces.end() || found->element != element) {
        file_.Fail("boundary condition " + Quoted(condition.name) + " has element " +
                   std::to_string(element) + ", which is no surface element");
      }
      if (found->face >= 0) Give(found->face, patch);
    }
  }

  void AssignByNodes(const CgnsCondition& condition, int patch) {
    std::vector<char> isMember(mesh_.points.size(), 0);
    for (const std::int64_t node : condition.members) {
      if (node < 1 || node > file_.nNodes()) {
        file_.Fail("boundary condition " + Quoted(condition.name) + " has node " + std::to_string(node) +
                   ", but there are " + std::to_string(file_.nNodes()));
      }
      if (topology_.pointOfNode[node - 1] >= 0) isMember[topology_.pointOfNode[node - 1]] = 1;
    }
    for (const int f : boundaryFaces_) {
      const bool isInside =
          std::all_of(mesh_.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh_.faceStart[f]),
                      mesh_.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh_.faceStart[f + 1]),
                      [&isMember](int node) { return isMember[node] != 0; });
      if (isInside) Give(f, patch);
    }
  }

  void AssignBySection() {
    for (const CgnsSurface& surface : topology_.surfaces) {
      if (surface.face < 0 || mesh_.facePatch[surface.face] >= 0) continue;
      mesh_.facePatch[surface.face] = PatchCalled(sections_[surface.section].name);
    }
  }

  const CgnsFile& file_;
  const std::vector<CgnsSection>& sections_;
  CgnsTopology& topology_;
  FaceMesh& mesh_;
  std::vector<int> boundaryFaces_;
  std::map<std::string, int> patchOfName_;
};

}  // namespace

FaceMesh ReadCgns(const std::string& file) {
  const CgnsFile cgns(file);
  const std::vector<CgnsSection> sections = cgns.Sections();
  if (sections.empty()) cgns.Fail("the zone has no section of elements");
  CgnsTopology topology =
      HasCgnsPolygons(sections) ? JoinCgnsPolyhedra(cgns, sections) : JoinCgnsCells(cgns, sections);
  PatchAssigner(cgns, sections, topology).Assign();
  return std::move(topology.mesh);
}

}  // namespace reference_host
