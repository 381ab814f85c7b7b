#include "reference_host/mesh/MeshPart.h"

#include <algorithm>
#include <string>
#include <utility>

#include "reference_host/mesh/MeshError.h"

namespace reference_host {
namespace {

constexpr int kAbsent = -1;
constexpr int kPresent = -2;  // belongs to the part, but has no number yet

/// Cuts one part out of a mesh. Local numbers have the order of the whole mesh's numbers.
class PartExtractor {
 public:
  PartExtractor(FaceMesh const& mesh, std::vector<int> const& partOfCell, int part, int nParts)
      : mesh_(mesh),
        partOfCell_(partOfCell),
        localCell_(mesh.nCells, kAbsent),
        localNode_(mesh.points.size(), kAbsent) {
    result_.part = part;
    result_.nParts = nParts;
    result_.patches = mesh.patches;
  }

  MeshPart Extract() {
    NumberOwnedCells();
    std::vector<int> const faces = CollectFaces();
    NumberHaloCells();
    std::vector<std::pair<int, int>> const haloNodes = CollectHaloNodes();
    NumberNodes(faces, haloNodes);
    CopyFaces(faces);
    CopyHaloNodes(haloNodes);
    return std::move(result_);
  }

 private:
  bool IsOwned(int cell) const { return cell >= 0 && partOfCell_[cell] == result_.part; }
  int LocalCell(int cell) const { return cell < 0 ? kAbsent : localCell_[cell]; }

  void NumberOwnedCells() {
    for (int c = 0; c < mesh_.nCells; ++c) {
      if (!IsOwned(c)) continue;
      localCell_[c] = result_.nOwned++;
      result_.globalCell.push_back(c);
    }
  }

  /// Faces with an owned cell, ascending. Marks the cells on their other sides.
  std::vector<int> CollectFaces() {
    std::vector<int> faces;
    for (int f = 0; f < mesh_.nFaces(); ++f) {
      if (!IsOwned(mesh_.owner[f]) && !IsOwned(mesh_.neighbour[f])) continue;
      faces.push_back(f);
      for (int const cell : {mesh_.owner[f], mesh_.neighbour[f]}) {
        if (cell >= 0 && localCell_[cell] == kAbsent) localCell_[cell] = kPresent;
      }
    }
    return faces;
  }

  void NumberHaloCells() {
    int next = result_.nOwned;
    for (int c = 0; c < mesh_.nCells; ++c) {
      if (localCell_[c] != kPresent) continue;
      localCell_[c] = next++;
      result_.globalCell.push_back(c);
      result_.haloPart.push_back(partOfCell_[c]);
    }
  }

  /// Pairs (halo cell counted from 0, node of the whole mesh), each once, ascending. They come from all faces
  /// of the halo cells, including those outside the part.
  std::vector<std::pair<int, int>> CollectHaloNodes() const {
    std::vector<std::pair<int, int>> nodes;
    if (result_.nHalo() == 0) return nodes;
    for (int f = 0; f < mesh_.nFaces(); ++f) {
      for (int const cell : {LocalCell(mesh_.owner[f]), LocalCell(mesh_.neighbour[f])}) {
        if (cell < result_.nOwned) continue;
        for (std::size_t i = mesh_.faceStart[f]; i < mesh_.faceStart[f + 1]; ++i) {
          nodes.emplace_back(cell - result_.nOwned, mesh_.faceNode[i]);
        }
      }
    }
    std::sort(nodes.begin(), nodes.end());
    nodes.erase(std::unique(nodes.begin(), nodes.end()), nodes.end());
    return nodes;
  }

  void NumberNodes(std::vector<int> const& faces, std::vector<std::pair<int, int>> const& haloNodes) {
    for (int const f : faces) {
      for (std::size_t i = mesh_.faceStart[f]; i < mesh_.faceStart[f + 1]; ++i) {
        localNode_[mesh_.faceNode[i]] = kPresent;
      }
    }
    for (auto const& haloNode : haloNodes) localNode_[haloNode.second] = kPresent;

    auto const nNodes = std::count(localNode_.begin(), localNode_.end(), kPresent);
    result_.globalNode.reserve(nNodes);
    result_.points.reserve(nNodes);
    int next = 0;
    for (std::size_t node = 0; node < localNode_.size(); ++node) {
      if (localNode_[node] != kPresent) continue;
      localNode_[node] = next++;
      result_.globalNode.push_back(static_cast<std::int64_t>(node));
      result_.points.push_back(mesh_.points[node]);
    }
  }

  void CopyFaces(std::vector<int> const& faces) {
    ReserveFaces(faces);
    for (int const f : faces) {
      for (std::size_t i = mesh_.faceStart[f]; i < mesh_.faceStart[f + 1]; ++i) {
        result_.faceNode.push_back(localNode_[mesh_.faceNode[i]]);
      }
      result_.faceStart.push_back(result_.faceNode.size());
      result_.owner.push_back(LocalCell(mesh_.owner[f]));
      result_.neighbour.push_back(LocalCell(mesh_.neighbour[f]));
      result_.facePatch.push_back(mesh_.facePatch[f]);
    }
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

  void CopyHaloNodes(std::vector<std::pair<int, int>> const& haloNodes) {
    result_.haloNodeStart.assign(result_.haloPart.size() + 1, 0);
    for (auto const& [haloCell, node] : haloNodes) {
      ++result_.haloNodeStart[haloCell + 1];
      result_.haloNode.push_back(localNode_[node]);
    }
    for (std::size_t h = 1; h < result_.haloNodeStart.size(); ++h) {
      result_.haloNodeStart[h] += result_.haloNodeStart[h - 1];
    }
  }

  FaceMesh const& mesh_;
  std::vector<int> const& partOfCell_;
  std::vector<int> localCell_;  // by cell of the whole mesh
  std::vector<int> localNode_;  // by node of the whole mesh
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

std::vector<MeshPart> SplitMesh(FaceMesh const& mesh, std::vector<int> const& partOfCell, int nParts) {
  CheckPartNumbers(mesh, partOfCell, nParts);
  std::vector<MeshPart> parts;
  parts.reserve(nParts);
  for (int part = 0; part < nParts; ++part) {
    parts.push_back(PartExtractor(mesh, partOfCell, part, nParts).Extract());
  }
  return parts;
}

MeshPart ExtractPart(FaceMesh const& mesh, std::vector<int> const& partOfCell, int part, int nParts) {
  CheckPartNumbers(mesh, partOfCell, nParts);
  return PartExtractor(mesh, partOfCell, part, nParts).Extract();
}

}  // namespace reference_host
