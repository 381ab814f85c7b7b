#include "reference_host/mesh/DualMesh.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <map>
#include <tuple>
#include <utility>
#include <vector>

#include "reference_host/mesh/CellGeometry.h"
#include "reference_host/mesh/FaceGeometry.h"
#include "reference_host/mesh/Vector3.h"

namespace reference_host {
namespace {

/// An edge of one face.
struct EdgeOfFace {
  int low, high;  ///< nodes
  int face;

  bool IsSameEdge(EdgeOfFace const& other) const { return low == other.low && high == other.high; }
  bool operator<(EdgeOfFace const& other) const {
    return std::tie(low, high, face) < std::tie(other.low, other.high, other.face);
  }
};

/// A boundary face at one of its nodes.
struct Corner {
  int node, patch, face;
  int before, after;  ///< the adjacent nodes, in the order of the face

  bool operator<(Corner const& other) const {
    return std::tie(node, patch, face) < std::tie(other.node, other.patch, other.face);
  }
};

struct DualFace {
  int owner, neighbour, patch;
  std::vector<int> nodes;
};

template <class IsWanted>
class DualMaker {
 public:
  DualMaker(FaceMesh const& mesh, IsWanted const& isWanted) : mesh_(mesh), isWanted_(isWanted) {}

  DualPiece Make() {
    PlaceCentres();
    MakeInnerFaces();
    MakeBoundaryFaces();
    CollectFaces();
    return std::move(piece_);
  }

 private:
  int AddPoint(Point const& point, DualPoint const& source) {
    result_.points.push_back(point);
    piece_.source.push_back(source);
    return static_cast<int>(result_.points.size()) - 1;
  }

  int NodeCount(int f) const { return static_cast<int>(mesh_.faceStart[f + 1] - mesh_.faceStart[f]); }
  int const* Nodes(int f) const { return mesh_.faceNode.data() + mesh_.faceStart[f]; }

  /// The cell centres are the first points; the centres of the boundary faces follow.
  void PlaceCentres() {
    result_.points = ComputeCellGeometry(mesh_, mesh_.nCells).centre;
    for (int c = 0; c < mesh_.nCells; ++c) piece_.source.push_back({DualPoint::Kind::Cell, c, -1});
    centreOfFace_.assign(mesh_.owner.size(), -1);
    for (int f = 0; f < mesh_.nFaces(); ++f) {
      if (mesh_.neighbour[f] >= 0) continue;
      centreOfFace_[f] = AddPoint(ComputeFaceGeometry(mesh_.points, Nodes(f), NodeCount(f)).centre,
                                  {DualPoint::Kind::Face, f, -1});
    }
  }

  void MakeInnerFaces() {
    std::vector<EdgeOfFace> edges;
    edges.reserve(mesh_.faceNode.size());
    for (int f = 0; f < mesh_.nFaces(); ++f) {
      int const n = NodeCount(f);
      for (int k = 0; k < n; ++k) {
        auto const [low, high] = std::minmax({Nodes(f)[k], Nodes(f)[(k + 1) % n]});
        if (isWanted_(low, high)) edges.push_back({low, high, f});
      }
    }
    std::sort(edges.begin(), edges.end());
    for (std::size_t begin = 0, end; begin < edges.size(); begin = end) {
      for (end = begin; end < edges.size() && edges[end].IsSameEdge(edges[begin]); ++end) continue;
      std::vector<int> faces;
      for (std::size_t i = begin; i < end; ++i) faces.push_back(edges[i].face);
      MakeInnerFace(edges[begin].low, edges[begin].high, faces);
    }
  }

  /// The face between the cells of an edge's two nodes. @param faces  around the edge
  void MakeInnerFace(int low, int high, std::vector<int> const& faces) {
    std::vector<int> ends;
    std::copy_if(faces.begin(), faces.end(), std::back_inserter(ends),
                 [this](int f) { return mesh_.neighbour[f] < 0; });
    DualFace dual = {low, high, -1, {}};
    // From one boundary face to the other, or once around the edge.
    int face = ends.empty() ? faces.front() : ends.front();
    int cell = mesh_.owner[face];
    if (!ends.empty()) dual.nodes.push_back(centreOfFace_[face]);
    for (std::size_t step = 0; step < faces.size() && cell >= 0; ++step) {
      if (!dual.nodes.empty() && dual.nodes.front() == cell) break;
      dual.nodes.push_back(cell);
      face = OtherFaceOf(cell, face, faces);
      cell = mesh_.owner[face] == cell ? mesh_.neighbour[face] : mesh_.owner[face];
    }
    if (!ends.empty()) dual.nodes.push_back(centreOfFace_[face]);
    if (ends.size() == 2 && mesh_.facePatch[ends[0]] != mesh_.facePatch[ends[1]])
      dual.nodes.push_back(MiddleOf(low, high));
    TurnTowards(Difference(mesh_.points[high], mesh_.points[low]), dual.nodes);
    faces_.push_back(std::move(dual));
  }

  int OtherFaceOf(int cell, int face, std::vector<int> const& faces) const {
    return *std::find_if(faces.begin(), faces.end(), [&](int f) {
      return f != face && (mesh_.owner[f] == cell || mesh_.neighbour[f] == cell);
    });
  }

  void TurnTowards(Point const& direction, std::vector<int>& nodes) const {
    FaceGeometry const face =
        ComputeFaceGeometry(result_.points, nodes.data(), static_cast<int>(nodes.size()));
    if (Dot(face.area, direction) < 0.0) std::reverse(nodes.begin(), nodes.end());
  }

  /// The midpoint of an edge between two patches, created once.
  int MiddleOf(int a, int b) {
    auto const [known, isNew] = middles_.try_emplace(std::pair<int, int>(std::minmax(a, b)), -1);
    if (isNew) {
      known->second = AddPoint(Scaled(0.5, Sum(mesh_.points[a], mesh_.points[b])),
                               {DualPoint::Kind::Edge, known->first.first, known->first.second});
    }
    return known->second;
  }

  void MakeBoundaryFaces() {
    std::vector<Corner> corners;
    for (int f = 0; f < mesh_.nFaces(); ++f) {
      if (mesh_.neighbour[f] >= 0) continue;
      int const n = NodeCount(f);
      for (int k = 0; k < n; ++k) {
        if (!isWanted_(Nodes(f)[k], -1)) continue;
        corners.push_back(
            {Nodes(f)[k], mesh_.facePatch[f], f, Nodes(f)[(k + n - 1) % n], Nodes(f)[(k + 1) % n]});
      }
    }
    std::sort(corners.begin(), corners.end());
    pointOfNode_.assign(mesh_.points.size(), -1);
    for (auto begin = corners.begin(); begin != corners.end();) {
      auto const end = std::find_if(begin, corners.end(), [&](Corner const& corner) {
        return corner.node != begin->node || corner.patch != begin->patch;
      });
      MakeBoundaryFacesOf({begin, end});
      begin = end;
    }
  }

  /// @param corners  all at one node, in one patch
  void MakeBoundaryFacesOf(std::vector<Corner> corners) {
    while (!corners.empty()) {
      auto const isFirst = [&corners](Corner const& corner) {
        return std::none_of(corners.begin(), corners.end(),
                            [&corner](Corner const& other) { return other.before == corner.after; });
      };
      auto next = std::find_if(corners.begin(), corners.end(), isFirst);
      bool const isOpen = next != corners.end();
      if (!isOpen) next = corners.begin();
      DualFace dual = {next->node, -1, next->patch, {}};
      if (isOpen) dual.nodes.push_back(MiddleOf(next->node, next->after));
      // To turn around the outward normal, as the faces do, go by way of the node before.
      int before = next->before;
      while (next != corners.end()) {
        before = next->before;
        dual.nodes.push_back(centreOfFace_[next->face]);
        corners.erase(next);
        next = std::find_if(corners.begin(), corners.end(),
                            [before](Corner const& corner) { return corner.after == before; });
      }
      if (isOpen) {
        dual.nodes.push_back(MiddleOf(dual.owner, before));
        dual.nodes.push_back(PointOfNode(dual.owner));
      }
      faces_.push_back(std::move(dual));
    }
  }

  int PointOfNode(int node) {
    if (pointOfNode_[node] < 0)
      pointOfNode_[node] = AddPoint(mesh_.points[node], {DualPoint::Kind::Node, node, -1});
    return pointOfNode_[node];
  }

  void CollectFaces() {
    std::stable_sort(faces_.begin(), faces_.end(), [](DualFace const& a, DualFace const& b) {
      auto const order = [](DualFace const& f) {
        return std::tuple(f.owner, f.neighbour < 0, f.neighbour, f.patch);
      };
      return order(a) < order(b);
    });
    for (DualFace const& face : faces_) {
      result_.faceNode.insert(result_.faceNode.end(), face.nodes.begin(), face.nodes.end());
      result_.faceStart.push_back(result_.faceNode.size());
      result_.owner.push_back(face.owner);
      result_.neighbour.push_back(face.neighbour);
      result_.facePatch.push_back(face.patch);
    }
    result_.patches = mesh_.patches;
    result_.nCells = static_cast<int>(mesh_.points.size());
  }

  FaceMesh const& mesh_;
  IsWanted const& isWanted_;
  DualPiece piece_;
  FaceMesh& result_ = piece_.mesh;
  std::vector<DualFace> faces_;
  std::vector<int> centreOfFace_;               // by face: the point at its centre; -1: inside
  std::vector<int> pointOfNode_;                // by node: its point; -1: none yet
  std::map<std::pair<int, int>, int> middles_;  // the points of edges
};

}  // namespace

FaceMesh MakeDual(FaceMesh const& mesh) {
  auto const all = [](int, int) { return true; };
  return DualMaker(mesh, all).Make().mesh;
}

DualPiece MakeDualPiece(FaceMesh const& mesh, std::function<bool(int, int)> const& isWanted) {
  return DualMaker(mesh, isWanted).Make();
}

}  // namespace reference_host
