#include "reference_host/mesh/MeshPart.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <string>
#include <tuple>
#include <utility>

#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/Vector3.h"

namespace reference_host {
namespace {

constexpr int kAbsent = -1;
constexpr int kPresent = -2;  // belongs to the part, but has no number yet

/// What a boundary face has to do with a period.
struct PeriodicSide {
  int partner = -1;  ///< face on the other side
  int period = 0;    ///< of the halo cell beyond the face; 0: no period
  int turn = 0;      ///< node i of the face lies on node (turn - i) mod n of the partner
};

/// The sides of all faces; empty in a mesh without periods.
std::vector<PeriodicSide> FindPeriodicSides(FaceMesh const& mesh) {
  std::vector<PeriodicSide> sides;
  if (mesh.periods.empty()) return sides;
  for (Period const& period : mesh.periods) {
    if (period.turn.size() != period.faces.size()) throw MeshError("the periods of the mesh are not joined");
  }
  sides.resize(mesh.owner.size());
  for (std::size_t k = 0; k < mesh.periods.size(); ++k) {
    int const period = static_cast<int>(k) + 1;
    for (std::size_t i = 0; i < mesh.periods[k].faces.size(); ++i) {
      auto const [first, second] = mesh.periods[k].faces[i];
      int const turn = mesh.periods[k].turn[i];
      sides[first] = {second, -period, turn};  // the second side, moved back
      sides[second] = {first, period, turn};
    }
  }
  return sides;
}

/// Cuts one part out of a mesh. Local numbers have the order of the whole mesh's numbers.
class PartExtractor {
 public:
  PartExtractor(FaceMesh const& mesh, std::vector<PeriodicSide> const& sides,
                std::vector<int> const& partOfCell, int part, int nParts)
      : mesh_(mesh),
        sides_(sides),
        partOfCell_(partOfCell),
        localCell_(mesh.nCells, kAbsent),
        localNode_(mesh.points.size(), kAbsent) {
    result_.part = part;
    result_.nParts = nParts;
    result_.patches = mesh.patches;
    for (Period const& period : mesh.periods) result_.shifts.push_back(period.shift);
  }

  MeshPart Extract() {
    NumberOwnedCells();
    std::vector<int> const faces = CollectFaces();
    NumberHaloCells();
    std::vector<HaloNode> const haloNodes = CollectHaloNodes();
    NumberNodes(faces, haloNodes);
    CopyFaces(faces);
    CopyHaloNodes(haloNodes);
    return std::move(result_);
  }

 private:
  /// A cell or node of the whole mesh and the period beyond which it is meant; 0: at its own place.
  using Shifted = std::pair<int, int>;

  /// A node of a halo cell, which is counted from 0.
  struct HaloNode {
    int halo;
    Shifted node;
    bool operator<(HaloNode const& b) const { return std::tie(halo, node) < std::tie(b.halo, b.node); }
    bool operator==(HaloNode const& b) const { return halo == b.halo && node == b.node; }
  };

  bool IsOwned(int cell) const { return cell >= 0 && partOfCell_[cell] == result_.part; }
  int LocalCell(int cell) const { return cell < 0 ? kAbsent : localCell_[cell]; }
  int PeriodBeyond(int f) const { return sides_.empty() ? 0 : sides_[f].period; }

  void NumberOwnedCells() {
    for (int c = 0; c < mesh_.nCells; ++c) {
      if (!IsOwned(c)) continue;
      localCell_[c] = result_.nOwned++;
      result_.globalCell.push_back(c);
    }
  }

  /// Faces with an owned cell, ascending. Collects the cells on their other sides.
  std::vector<int> CollectFaces() {
    std::vector<int> faces;
    for (int f = 0; f < mesh_.nFaces(); ++f) {
      if (!IsOwned(mesh_.owner[f]) && !IsOwned(mesh_.neighbour[f])) continue;
      faces.push_back(f);
      for (int const cell : {mesh_.owner[f], mesh_.neighbour[f]}) {
        if (cell < 0 || localCell_[cell] != kAbsent) continue;
        localCell_[cell] = kPresent;
        halos_.emplace_back(cell, 0);
      }
      if (PeriodBeyond(f) != 0) halos_.emplace_back(mesh_.owner[sides_[f].partner], PeriodBeyond(f));
    }
    return faces;
  }

  void NumberHaloCells() {
    std::sort(halos_.begin(), halos_.end());
    halos_.erase(std::unique(halos_.begin(), halos_.end()), halos_.end());
    int next = result_.nOwned;
    for (auto const& [cell, period] : halos_) {
      if (period == 0) localCell_[cell] = next;
      ++next;
      result_.globalCell.push_back(cell);
      result_.haloPart.push_back(partOfCell_[cell]);
      result_.haloPeriod.push_back(period);
    }
  }

  /// The first halo cell that is this cell; halos_.size() or that of another cell if there is none.
  std::size_t FirstHaloOf(int cell) const {
    Shifted const lowest = {cell, std::numeric_limits<int>::min()};
    return static_cast<std::size_t>(std::lower_bound(halos_.begin(), halos_.end(), lowest) - halos_.begin());
  }

  /// Marks the cells that are halo cells.
  std::vector<char> FindHaloCells() const {
    std::vector<char> isHalo(mesh_.nCells, 0);
    for (auto const& halo : halos_) isHalo[halo.first] = 1;
    return isHalo;
  }

  /// The nodes of the halo cells, each once, ascending. They come from all faces of the halo cells, including
  /// those outside the part. A halo cell beyond a period shares the nodes of its faces in the period with the
  /// cells on this side; its other nodes are shifted.
  std::vector<HaloNode> CollectHaloNodes() const {
    std::vector<HaloNode> nodes, shared, here;
    if (halos_.empty()) return nodes;
    std::vector<char> const isHalo = FindHaloCells();
    for (int f = 0; f < mesh_.nFaces(); ++f) {
      for (int const cell : {mesh_.owner[f], mesh_.neighbour[f]}) {
        if (cell < 0 || isHalo[cell] == 0) continue;
        for (std::size_t h = FirstHaloOf(cell); h < halos_.size() && halos_[h].first == cell; ++h) {
          int const period = halos_[h].second;
          bool const isShared = period != 0 && PeriodBeyond(f) == -period;
          for (std::size_t i = mesh_.faceStart[f]; i < mesh_.faceStart[f + 1]; ++i) {
            nodes.push_back({static_cast<int>(h), {mesh_.faceNode[i], period}});
            if (!isShared) continue;
            shared.push_back(nodes.back());
            here.push_back({static_cast<int>(h), {NodeOpposite(f, i), 0}});
          }
        }
      }
    }
    SortOnce(nodes);
    if (shared.empty()) return nodes;
    SortOnce(shared);
    nodes.erase(std::remove_if(nodes.begin(), nodes.end(),
                               [&shared](HaloNode const& node) {
                                 return std::binary_search(shared.begin(), shared.end(), node);
                               }),
                nodes.end());
    nodes.insert(nodes.end(), here.begin(), here.end());
    SortOnce(nodes);
    return nodes;
  }

  static void SortOnce(std::vector<HaloNode>& nodes) {
    std::sort(nodes.begin(), nodes.end());
    nodes.erase(std::unique(nodes.begin(), nodes.end()), nodes.end());
  }

  /// The node of the partner of face f on which the face's node at place i of the node table lies.
  int NodeOpposite(int f, std::size_t i) const {
    PeriodicSide const& side = sides_[f];
    int const n = static_cast<int>(mesh_.faceStart[f + 1] - mesh_.faceStart[f]);
    int const local = static_cast<int>(i - mesh_.faceStart[f]);
    return mesh_.faceNode[mesh_.faceStart[side.partner] + (side.turn + n - local) % n];
  }

  void NumberNodes(std::vector<int> const& faces, std::vector<HaloNode> const& haloNodes) {
    for (int const f : faces) {
      for (std::size_t i = mesh_.faceStart[f]; i < mesh_.faceStart[f + 1]; ++i) {
        localNode_[mesh_.faceNode[i]] = kPresent;
      }
    }
    for (HaloNode const& halo : haloNodes) {
      if (halo.node.second == 0) {
        localNode_[halo.node.first] = kPresent;
      } else {
        shiftedNodes_.push_back(halo.node);
      }
    }
    std::sort(shiftedNodes_.begin(), shiftedNodes_.end());
    shiftedNodes_.erase(std::unique(shiftedNodes_.begin(), shiftedNodes_.end()), shiftedNodes_.end());

    auto const nNodes = static_cast<std::size_t>(std::count(localNode_.begin(), localNode_.end(), kPresent)) +
                        shiftedNodes_.size();
    result_.globalNode.reserve(nNodes);
    result_.points.reserve(nNodes);
    for (std::size_t node = 0; node < localNode_.size(); ++node) {
      bool const isPresent = localNode_[node] == kPresent;
      AddShiftedNodes({static_cast<int>(node), 0});
      if (!isPresent) continue;
      localNode_[node] = static_cast<int>(result_.points.size());
      AddNode(static_cast<int>(node), mesh_.points[node]);
    }
    AddShiftedNodes({static_cast<int>(localNode_.size()), 0});
  }

  /// Adds those that come before `end` in the order of nodes and periods.
  void AddShiftedNodes(Shifted const& end) {
    while (localShifted_.size() < shiftedNodes_.size() && shiftedNodes_[localShifted_.size()] < end) {
      auto const [node, period] = shiftedNodes_[localShifted_.size()];
      localShifted_.push_back(static_cast<int>(result_.points.size()));
      AddNode(node, Sum(mesh_.points[node], ShiftOf(result_.shifts, period)));
    }
  }

  void AddNode(int node, Point const& place) {
    result_.globalNode.push_back(node);
    result_.points.push_back(place);
  }

  int LocalNode(Shifted const& node) const {
    if (node.second == 0) return localNode_[node.first];
    auto const found = std::lower_bound(shiftedNodes_.begin(), shiftedNodes_.end(), node);
    return localShifted_[found - shiftedNodes_.begin()];
  }

  void CopyFaces(std::vector<int> const& faces) {
    ReserveFaces(faces);
    for (int const f : faces) {
      for (std::size_t i = mesh_.faceStart[f]; i < mesh_.faceStart[f + 1]; ++i) {
        result_.faceNode.push_back(localNode_[mesh_.faceNode[i]]);
      }
      result_.faceStart.push_back(result_.faceNode.size());
      result_.owner.push_back(LocalCell(mesh_.owner[f]));
      bool const isPeriodic = PeriodBeyond(f) != 0;
      result_.neighbour.push_back(isPeriodic ? LocalHaloBeyond(f) : LocalCell(mesh_.neighbour[f]));
      result_.facePatch.push_back(isPeriodic ? -1 : mesh_.facePatch[f]);
    }
  }

  int LocalHaloBeyond(int f) const {
    Shifted const halo = {mesh_.owner[sides_[f].partner], PeriodBeyond(f)};
    auto const found = std::lower_bound(halos_.begin(), halos_.end(), halo);
    return result_.nOwned + static_cast<int>(found - halos_.begin());
  }

  void ReserveFaces(std::vector<int> const& faces) {
    std::size_t nFaceNodes = 0;
    for (int const f : faces) nFaceNodes += mesh_.faceStart[f + 1] - mesh_.faceStart[f];
    result_.faceNode.reserve(nFaceNodes);
    result_.faceStart.reserve(faces.size() + 1);
    result_.owner.reserve(faces.size());
    result_.neighbour.reserve(faces.size());
    result_.facePatch.reserve(faces.size());
  }

  void CopyHaloNodes(std::vector<HaloNode> const& haloNodes) {
    result_.haloNodeStart.assign(result_.haloPart.size() + 1, 0);
    for (HaloNode const& halo : haloNodes) {
      ++result_.haloNodeStart[halo.halo + 1];
      result_.haloNode.push_back(LocalNode(halo.node));
    }
    for (std::size_t h = 1; h < result_.haloNodeStart.size(); ++h) {
      result_.haloNodeStart[h] += result_.haloNodeStart[h - 1];
    }
  }

  FaceMesh const& mesh_;
  std::vector<PeriodicSide> const& sides_;
  std::vector<int> const& partOfCell_;
  std::vector<int> localCell_;         // by cell of the whole mesh; of halo cells, those without a period
  std::vector<int> localNode_;         // by node of the whole mesh
  std::vector<Shifted> halos_;         // ascending
  std::vector<Shifted> shiftedNodes_;  // ascending, without those of period 0
  std::vector<int> localShifted_;      // by position in shiftedNodes_
  MeshPart result_;
};

void CheckPartNumbers(FaceMesh const& mesh, std::vector<int> const& partOfCell, int nParts) {
  if (partOfCell.size() != static_cast<std::size_t>(mesh.nCells)) {
    throw MeshError("partition has " + std::to_string(partOfCell.size()) + " part numbers for " +
                    std::to_string(mesh.nCells) + " cells");
  }
  for (int c = 0; c < mesh.nCells; ++c) {
    if (partOfCell[c] < 0 || partOfCell[c] >= nParts) {
      throw MeshError("partition puts cell " + std::to_string(c + 1) + " into part " +
                      std::to_string(partOfCell[c]) + " of " + std::to_string(nParts) + " (counted from 0)");
    }
  }
}

}  // namespace

Point ShiftOf(std::vector<Point> const& shifts, int period) {
  return Scaled(period < 0 ? -1.0 : 1.0, shifts[std::abs(period) - 1]);
}

std::vector<MeshPart> SplitMesh(FaceMesh const& mesh, std::vector<int> const& partOfCell, int nParts) {
  CheckPartNumbers(mesh, partOfCell, nParts);
  std::vector<PeriodicSide> const sides = FindPeriodicSides(mesh);
  std::vector<MeshPart> parts;
  parts.reserve(nParts);
  for (int part = 0; part < nParts; ++part) {
    parts.push_back(PartExtractor(mesh, sides, partOfCell, part, nParts).Extract());
  }
  return parts;
}

MeshPart ExtractPart(FaceMesh const& mesh, std::vector<int> const& partOfCell, int part, int nParts) {
  CheckPartNumbers(mesh, partOfCell, nParts);
  return PartExtractor(mesh, FindPeriodicSides(mesh), partOfCell, part, nParts).Extract();
}

}  // namespace reference_host
