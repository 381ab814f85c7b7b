#include "reference_host/cgns/CgnsReader.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <utility>
#include <vector>

#include "reference_host/cgns/CgnsConditions.h"
#include "reference_host/cgns/CgnsFile.h"
#include "reference_host/cgns/CgnsTopology.h"
#include "reference_host/mesh/MeshNames.h"
#include "reference_host/mesh/MessageText.h"

namespace reference_host {
namespace {

/// Assigns every boundary face to a patch: by a condition, by the section of its surface element, or
/// "unnamed".
class PatchAssigner {
 public:
  PatchAssigner(CgnsFile const& file, std::vector<CgnsSection> const& sections, CgnsTopology& topology)
      : file_(file), sections_(sections), topology_(topology), mesh_(topology.mesh) {
    for (int f = 0; f < mesh_.nFaces(); ++f) {
      if (mesh_.neighbour[f] < 0) boundaryFaces_.push_back(f);
    }
  }

  void Assign() {
    std::vector<CgnsCondition> const conditions = ReadCgnsConditions(file_, sections_.back().last);
    std::vector<int> patchOfCondition;
    patchOfCondition.reserve(conditions.size());
    for (CgnsCondition const& condition : conditions) patchOfCondition.push_back(PatchOf(condition));
    for (std::size_t c = 0; c < conditions.size(); ++c) {
      if (conditions[c].byNodes) {
        AssignByNodes(conditions[c], patchOfCondition[c]);
      } else {
        AssignByElements(conditions[c], patchOfCondition[c]);
      }
    }
    AssignBySection();
    for (int const f : boundaryFaces_) {
      if (mesh_.facePatch[f] < 0) mesh_.facePatch[f] = PatchCalled("unnamed");
    }
  }

 private:
  int PatchCalled(std::string const& name) {
    auto const [known, isNew] = patchOfName_.emplace(name, static_cast<int>(mesh_.patches.size()));
    if (isNew) mesh_.patches.push_back({name, "", {}});
    return known->second;
  }

  int PatchOf(CgnsCondition const& condition) {
    std::size_t const nBefore = mesh_.patches.size();
    int const p = PatchCalled(condition.patchName);
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
      file_.Fail(NameOfFace(mesh_, face) + " belongs to boundary conditions of " +
                 Quoted(mesh_.patches[held].name) + " and of " + Quoted(mesh_.patches[patch].name));
    }
    held = patch;
  }

  /// The surfaces in a range of elements come from the list of surfaces. The range itself is not walked,
  /// since its ends may be any numbers.
  void AssignByElements(CgnsCondition const& condition, int patch) {
    if (condition.isRange) {
      auto surface = FirstSurfaceFrom(condition.first);
      for (std::int64_t element = condition.first; element <= condition.last; ++element, ++surface) {
        AssignElement(condition, element, surface, patch);
        CountMember(condition);
      }
    } else {
      for (std::int64_t const element : ReadCgnsMembers(file_, condition))
        AssignElement(condition, element, FirstSurfaceFrom(element), patch);
    }
  }

  using SurfaceIterator = std::vector<CgnsSurface>::const_iterator;

  SurfaceIterator FirstSurfaceFrom(std::int64_t element) const {
    return std::lower_bound(
        topology_.surfaces.begin(), topology_.surfaces.end(), element,
        [](CgnsSurface const& surface, std::int64_t wanted) { return surface.element < wanted; });
  }

  void AssignElement(CgnsCondition const& condition, std::int64_t element, SurfaceIterator surface,
                     int patch) {
    if (surface == topology_.surfaces.cend() || surface->element != element) {
      file_.Fail("boundary condition " + Quoted(condition.name) + " has element " + std::to_string(element) +
                 ", which is not a surface element");
    }
    if (surface->face >= 0) Give(surface->face, patch);
  }

  /// A range takes only a few bytes, so a file could have many that all span the whole mesh.
  void CountMember(CgnsCondition const& condition) {
    auto const nItems = static_cast<std::int64_t>(topology_.surfaces.size()) + file_.nNodes();
    if (++nMembersOfRanges_ <= 16 * nItems) return;
    file_.Fail("boundary condition " + Quoted(condition.name) +
               " and those before it have ranges that overlap too often");
  }

  void AssignByNodes(CgnsCondition const& condition, int patch) {
    if (faceStartOfNode_.empty()) IndexFacesByNode();
    newMembers_.clear();
    ++round_;
    if (condition.isRange) {
      for (std::int64_t node = condition.first; node <= condition.last; ++node) {
        AddMember(condition, node);
        CountMember(condition);
      }
    } else {
      for (std::int64_t const node : ReadCgnsMembers(file_, condition)) AddMember(condition, node);
    }
    for (int const point : newMembers_) {
      for (std::size_t i = faceStartOfNode_[point]; i < faceStartOfNode_[point + 1]; ++i) {
        if (HasAllMembers(faceOfNode_[i])) Give(faceOfNode_[i], patch);
      }
    }
  }

  void AddMember(CgnsCondition const& condition, std::int64_t node) {
    if (node < 1 || node > file_.nNodes()) {
      file_.Fail("boundary condition " + Quoted(condition.name) + " has node " + std::to_string(node) +
                 ", but there are " + std::to_string(file_.nNodes()));
    }
    int const point = topology_.pointOfNode[node - 1];
    if (point < 0 || memberSince_[point] == round_) return;
    memberSince_[point] = round_;
    newMembers_.push_back(point);
  }

  bool HasAllMembers(int face) const {
    return std::all_of(mesh_.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh_.faceStart[face]),
                       mesh_.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh_.faceStart[face + 1]),
                       [this](int node) { return memberSince_[node] == round_; });
  }

  /// Lists every boundary face under the one of its nodes that has the fewest boundary faces. A set of nodes
  /// then visits few faces besides its own, even if many meet in one node.
  void IndexFacesByNode() {
    std::size_t const nPoints = mesh_.points.size();
    std::vector<int> nFacesOfNode(nPoints, 0);
    auto const nodesOf = [this](int f, auto const& visit) {
      for (std::size_t i = mesh_.faceStart[f]; i < mesh_.faceStart[f + 1]; ++i) visit(mesh_.faceNode[i]);
    };
    for (int const f : boundaryFaces_) nodesOf(f, [&](int node) { ++nFacesOfNode[node]; });
    auto const placeOf = [&](int f) {
      int best = mesh_.faceNode[mesh_.faceStart[f]];
      nodesOf(f, [&](int node) { best = nFacesOfNode[node] < nFacesOfNode[best] ? node : best; });
      return best;
    };
    faceStartOfNode_.assign(nPoints + 1, 0);
    auto const hasNodes = [this](int f) { return mesh_.faceStart[f + 1] > mesh_.faceStart[f]; };
    for (int const f : boundaryFaces_) {
      if (hasNodes(f)) ++faceStartOfNode_[placeOf(f) + 1];
    }
    for (std::size_t n = 0; n < nPoints; ++n) faceStartOfNode_[n + 1] += faceStartOfNode_[n];
    faceOfNode_.resize(faceStartOfNode_.back());
    std::vector<std::size_t> next(faceStartOfNode_.begin(), faceStartOfNode_.end() - 1);
    for (int const f : boundaryFaces_) {
      if (hasNodes(f)) faceOfNode_[next[placeOf(f)]++] = f;
    }
    memberSince_.assign(nPoints, 0);
  }

  void AssignBySection() {
    for (CgnsSurface const& surface : topology_.surfaces) {
      if (surface.face < 0 || mesh_.facePatch[surface.face] >= 0) continue;
      mesh_.facePatch[surface.face] = PatchCalled(sections_[surface.section].name);
    }
  }

  CgnsFile const& file_;
  std::vector<CgnsSection> const& sections_;
  CgnsTopology& topology_;
  FaceMesh& mesh_;
  std::vector<int> boundaryFaces_;
  std::map<std::string, int> patchOfName_;
  std::int64_t nMembersOfRanges_ = 0;

  // For conditions given by nodes.
  std::vector<std::size_t> faceStartOfNode_;  // [point] into faceOfNode_
  std::vector<int> faceOfNode_;
  std::vector<int> memberSince_;  // [point] the round of the last condition that has it
  std::vector<int> newMembers_;   // points of the condition
  int round_ = 0;
};

}  // namespace

FaceMesh ReadCgns(std::string const& file) {
  CgnsFile const cgns(file);
  cgns.RequireIntCounts();
  std::vector<CgnsSection> const sections = cgns.Sections();
  if (sections.empty()) cgns.Fail("the zone has no section of elements");
  CgnsTopology topology =
      HasCgnsPolygons(sections) ? JoinCgnsPolyhedra(cgns, sections) : JoinCgnsCells(cgns, sections);
  PatchAssigner(cgns, sections, topology).Assign();
  return std::move(topology.mesh);
}

}  // namespace reference_host
