#include "reference_host/mesh/FaceMeshBuilder.h"

#include <algorithm>
#include <limits>

#include "reference_host/mesh/MeshError.h"

namespace reference_host {
namespace {

constexpr int kUncovered = std::numeric_limits<int>::min();
constexpr std::size_t kMostItems = std::numeric_limits<int>::max();

}  // namespace

FaceMeshBuilder::FaceMeshBuilder(std::string meshName, std::vector<Point> points, std::vector<Patch> patches)
    : meshName_(std::move(meshName)), points_(std::move(points)), patches_(std::move(patches)) {
  if (points_.size() > kMostItems) Fail("more nodes than an int can count");
}

void FaceMeshBuilder::Fail(std::string const& what) const { throw MeshError(meshName_ + ": " + what); }

std::string FaceMeshBuilder::NameOfCell(int cell) const {
  return nameOfCell_ ? nameOfCell_(cell) : "cell " + std::to_string(cell + 1);
}

void FaceMeshBuilder::AddCell(CellShape shape, int const* nodes) {
  int const nNodes = NodeCount(shape);
  if (shape_.size() == kMostItems) Fail("more cells than an int can count");
  shape_.push_back(shape);
  if (FirstRepeated(nodes, nNodes) < nNodes) {
    Fail(NameOfCell(static_cast<int>(shape_.size()) - 1) + " has a node twice");
  }
  node_.insert(node_.end(), nodes, nodes + nNodes);
  nodeStart_.push_back(node_.size());
  sideStart_.push_back(sideStart_.back() + FaceCount(shape));
  OrientCell(points_, shape, node_.data() + node_.size() - nNodes);
}

void FaceMeshBuilder::AddSurface(int const* nodes, int n, int patch) {
  if (surface_.size() == kMostItems) Fail("more surface elements than an int can count");
  surface_.push_back({nodes[0], nodes[1], nodes[2], n == 4 ? nodes[3] : -1});
  patchOfSurface_.push_back(patch);
}

FaceMeshBuilder::FaceNodes FaceMeshBuilder::NodesOfSide(Side const& side) const {
  if (!IsCell(side)) return surface_[side.item - shape_.size()];
  return FaceOfCell(shape_[side.item], static_cast<int>(side.local), node_.data() + nodeStart_[side.item]);
}

FaceMesh FaceMeshBuilder::Build() {
  MatchSides();
  FaceMesh mesh = CollectFaces();
  DropUnusedPoints(mesh);
  return mesh;
}

/// All sides in the order of their lowest node: equal faces end up among a few dozen others, in linear time.
/// Those of node n are at startOfNode[n]..startOfNode[n+1]-1, cells before surfaces, each ascending.
std::vector<FaceMeshBuilder::Side> FaceMeshBuilder::SidesByLowestNode(
    std::vector<std::size_t>& startOfNode) const {
  auto const forEachSide = [this](auto const& visit) {
    for (std::size_t item = 0; item < shape_.size() + surface_.size(); ++item) {
      int const nSides = item < shape_.size() ? FaceCount(shape_[item]) : 1;
      for (int local = 0; local < nSides; ++local) {
        Side const side = {static_cast<std::uint32_t>(item), static_cast<std::uint32_t>(local)};
        visit(side, Sorted(NodesOfSide(side))[0]);
      }
    }
  };

  // Counting sort. The counts are shifted by one more place than usual, because placing a side advances the
  // start of its node to the start of the next node.
  startOfNode.assign(points_.size() + 2, 0);
  forEachSide([&](Side const&, int lowest) { ++startOfNode[lowest + 2]; });
  for (std::size_t n = 2; n < startOfNode.size(); ++n) startOfNode[n] += startOfNode[n - 1];
  std::vector<Side> sides(startOfNode.back());
  forEachSide([&](Side const& side, int lowest) { sides[startOfNode[lowest + 1]++] = side; });
  return sides;
}

void FaceMeshBuilder::MatchSides() {
  std::vector<std::size_t> startOfNode;
  std::vector<Side> const sides = SidesByLowestNode(startOfNode);
  otherSide_.assign(sideStart_.back(), kUncovered);

  auto const before = [](SortedSide const& a, SortedSide const& b) {
    if (a.otherNodes != b.otherNodes) return a.otherNodes < b.otherNodes;
    return a.side.item < b.side.item;
  };
  std::vector<SortedSide> ofNode;
  for (std::size_t n = 0; n < points_.size(); ++n) {
    ofNode.clear();
    for (std::size_t i = startOfNode[n]; i < startOfNode[n + 1]; ++i) {
      FaceNodes const nodes = Sorted(NodesOfSide(sides[i]));
      ofNode.push_back({{nodes[1], nodes[2], nodes[3]}, sides[i]});
    }
    std::sort(ofNode.begin(), ofNode.end(), before);
    SortedSide const* const end = ofNode.data() + ofNode.size();
    for (SortedSide const* first = ofNode.data(); first != end;) {
      SortedSide const* last = first + 1;
      while (last != end && last->otherNodes == first->otherNodes) ++last;
      MatchEqualSides(first, last);
      first = last;
    }
  }
}

void FaceMeshBuilder::MatchEqualSides(SortedSide const* first, SortedSide const* last) {
  auto const nCells = std::count_if(first, last, [this](SortedSide const& s) { return IsCell(s.side); });
  if (nCells > 2) {
    Fail(NameOfCell(static_cast<int>(first[2].side.item)) + " shares a face with " +
         NameOfCell(static_cast<int>(first[0].side.item)) + " and " +
         NameOfCell(static_cast<int>(first[1].side.item)) + ": a face has two sides");
  }
  if (nCells == 2) JoinCells(first[0].side, first[1].side);
  if (nCells == 1 && last - first > 1) {
    int const patch = patchOfSurface_[first[1].side.item - shape_.size()];
    otherSide_[sideStart_[first[0].side.item] + first[0].side.local] = -1 - patch;
  }
}

void FaceMeshBuilder::JoinCells(Side const& a, Side const& b) {
  // Outward normals of two cells that meet in a face are opposite.
  if (!IsReverse(NodesOfSide(a), NodesOfSide(b))) {
    Fail(NameOfCell(static_cast<int>(b.item)) + " lies on the same side of a common face as " +
         NameOfCell(static_cast<int>(a.item)) + " (the cell occurs twice, or cells overlap)");
  }
  otherSide_[sideStart_[a.item] + a.local] = static_cast<int>(b.item);
  otherSide_[sideStart_[b.item] + b.local] = static_cast<int>(a.item);
}

int FaceMeshBuilder::UnnamedPatch() {
  std::string const name = "unnamed";
  for (std::size_t p = 0; p < patches_.size(); ++p) {
    if (patches_[p].name == name) return static_cast<int>(p);
  }
  patches_.push_back({name, "", {}});
  return static_cast<int>(patches_.size()) - 1;
}

FaceMesh FaceMeshBuilder::CollectFaces() {
  FaceMesh mesh;
  mesh.nCells = static_cast<int>(shape_.size());
  int unnamed = -1;  // looked up at the first uncovered face
  for (int cell = 0; cell < mesh.nCells; ++cell) {
    for (int local = 0; local < FaceCount(shape_[cell]); ++local) {
      int const other = otherSide_[sideStart_[cell] + local];
      if (other >= 0 && other < cell) continue;  // the other cell has added this face
      if (mesh.owner.size() == kMostItems) Fail("more faces than an int can count");
      FaceNodes const nodes =
          NodesOfSide({static_cast<std::uint32_t>(cell), static_cast<std::uint32_t>(local)});
      mesh.faceNode.insert(mesh.faceNode.end(), nodes.begin(), nodes.begin() + NodeCountOfFace(nodes));
      mesh.faceStart.push_back(mesh.faceNode.size());
      mesh.owner.push_back(cell);
      mesh.neighbour.push_back(other >= 0 ? other : -1);
      if (other == kUncovered && unnamed < 0) unnamed = UnnamedPatch();
      mesh.facePatch.push_back(other >= 0 ? -1 : (other == kUncovered ? unnamed : -1 - other));
    }
  }
  mesh.patches = std::move(patches_);
  return mesh;
}

void FaceMeshBuilder::DropUnusedPoints(FaceMesh& mesh) {
  std::vector<int> newNumber(points_.size(), -1);
  for (int const node : mesh.faceNode) newNumber[node] = 0;
  for (std::size_t n = 0; n < points_.size(); ++n) {
    if (newNumber[n] < 0) continue;
    newNumber[n] = static_cast<int>(mesh.points.size());
    mesh.points.push_back(points_[n]);
    keptPoint_.push_back(static_cast<int>(n));
  }
  for (int& node : mesh.faceNode) node = newNumber[node];
}

}  // namespace reference_host
