#include "reference_host/gmsh/GmshPeriods.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <string>
#include <utility>

#include "reference_host/mesh/MessageText.h"

namespace reference_host {
namespace {

constexpr int kNone = -1;

/// Finds boundary faces by their nodes.
class BoundaryFaces {
 public:
  explicit BoundaryFaces(FaceMesh const& mesh) : mesh_(mesh), start_(mesh.points.size() + 1, 0) {
    for (int f = 0; f < mesh.nFaces(); ++f) {
      if (mesh.neighbour[f] < 0) ++start_[NodesOf(f).front() + 1];
    }
    for (std::size_t n = 1; n < start_.size(); ++n) start_[n] += start_[n - 1];
    std::vector<std::size_t> next(start_.begin(), start_.end() - 1);
    face_.resize(start_.back());
    for (int f = 0; f < mesh.nFaces(); ++f) {
      if (mesh.neighbour[f] < 0) face_[next[NodesOf(f).front()]++] = f;
    }
  }

  /// The nodes of a face, ascending.
  std::vector<int> NodesOf(int f) const {
    std::vector<int> nodes(mesh_.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh_.faceStart[f]),
                           mesh_.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh_.faceStart[f + 1]));
    std::sort(nodes.begin(), nodes.end());
    return nodes;
  }

  /// Calls visit(f) for the faces of which `node` is the lowest.
  template <class Visit>
  void ForEachOfLowest(int node, Visit const& visit) const {
    for (std::size_t i = start_[node]; i < start_[node + 1]; ++i) visit(face_[i]);
  }

  /// The face of exactly these nodes, ascending; kNone without one.
  int Find(std::vector<int> const& nodes) const {
    int found = kNone;
    ForEachOfLowest(nodes.front(), [&](int f) {
      if (found == kNone && NodesOf(f) == nodes) found = f;
    });
    return found;
  }

 private:
  FaceMesh const& mesh_;
  std::vector<std::size_t> start_;  // by node: of the faces of which it is the lowest
  std::vector<int> face_;
};

/// Pairs the faces surface by surface. The master is the first side of a period.
class PeriodFinder {
 public:
  PeriodFinder(std::function<int(std::int64_t)> const& nodeOfTag, FaceMesh& mesh)
      : nodeOfTag_(nodeOfTag),
        mesh_(mesh),
        faces_(mesh),
        masterOfNode_(mesh.points.size(), kNone),
        isPaired_(mesh.owner.size(), 0) {}

  void Add(GmshPeriodicSurface const& link) {
    std::vector<int> nodes;
    for (auto const& [tag, masterTag] : link.nodeTags) {
      int const node = nodeOfTag_(tag), master = nodeOfTag_(masterTag);
      if (node < 0 || master < 0) continue;
      masterOfNode_[node] = master;
      nodes.push_back(node);
    }
    std::sort(nodes.begin(), nodes.end());
    nodes.erase(std::unique(nodes.begin(), nodes.end()), nodes.end());
    std::map<std::pair<int, int>, std::size_t> periodOfPatches;
    for (int const node : nodes) {
      faces_.ForEachOfLowest(node, [&](int f) { AddFace(f, link, periodOfPatches); });
    }
    for (int const node : nodes) masterOfNode_[node] = kNone;
  }

  void FindPartners() {
    std::vector<int> nUnpaired(mesh_.patches.size(), 0);
    for (int f = 0; f < mesh_.nFaces(); ++f) {
      if (mesh_.facePatch[f] >= 0 && isPaired_[f] == 0) ++nUnpaired[mesh_.facePatch[f]];
    }
    for (Period const& period : mesh_.periods) {
      for (auto const& [patch, partner] :
           {std::pair(period.patch, period.partner), std::pair(period.partner, period.patch)}) {
        if (nUnpaired[patch] == 0) mesh_.patches[patch].partners.push_back(partner);
      }
    }
    for (Patch& patch : mesh_.patches) {
      std::sort(patch.partners.begin(), patch.partners.end());
      patch.partners.erase(std::unique(patch.partners.begin(), patch.partners.end()), patch.partners.end());
    }
  }

 private:
  void AddFace(int f, GmshPeriodicSurface const& link,
               std::map<std::pair<int, int>, std::size_t>& periodOfPatches) {
    std::vector<int> nodes = faces_.NodesOf(f);
    for (int& node : nodes) {
      node = masterOfNode_[node];
      if (node == kNone) return;
    }
    std::sort(nodes.begin(), nodes.end());
    int const master = faces_.Find(nodes);
    if (master == kNone || master == f || isPaired_[f] != 0 || isPaired_[master] != 0) return;
    isPaired_[f] = isPaired_[master] = 1;
    auto const [known, isNew] =
        periodOfPatches.try_emplace({mesh_.facePatch[master], mesh_.facePatch[f]}, mesh_.periods.size());
    if (isNew) mesh_.periods.push_back(MakePeriod(mesh_.facePatch[master], mesh_.facePatch[f], link));
    mesh_.periods[known->second].faces.emplace_back(master, f);
  }

  Period MakePeriod(int patch, int partner, GmshPeriodicSurface const& link) const {
    Period period;
    period.patch = patch;
    period.partner = partner;
    period.name =
        "periodic surface " + std::to_string(link.surface) + " in " + Quoted(mesh_.patches[partner].name);
    std::vector<double> const& t = link.transformation;
    if (t.size() < 12) return period;
    constexpr double kTurned = 1e-6;  // the file has numbers of about 16 digits
    for (std::size_t row = 0; row < 3; ++row) {
      for (std::size_t column = 0; column < 3; ++column) {
        double const expected = row == column ? 1.0 : 0.0;
        if (!(std::fabs(t[4 * row + column] - expected) <= kTurned)) period.refusal = "is rotational";
      }
    }
    period.vector = Point{t[3], t[7], t[11]};
    return period;
  }

  std::function<int(std::int64_t)> const& nodeOfTag_;
  FaceMesh& mesh_;
  BoundaryFaces faces_;
  std::vector<int> masterOfNode_;  // by node, for the current surface
  std::vector<char> isPaired_;     // by face
};

}  // namespace

void AddGmshPeriods(std::vector<GmshPeriodicSurface> const& surfaces,
                    std::function<int(std::int64_t)> const& nodeOfTag, FaceMesh& mesh) {
  if (surfaces.empty()) return;
  PeriodFinder finder(nodeOfTag, mesh);
  for (GmshPeriodicSurface const& surface : surfaces) finder.Add(surface);
  finder.FindPartners();
}

}  // namespace reference_host
