#include "reference_host/arrays/ArrayTopology.h"

#include <algorithm>

#include "reference_host/mesh/FaceGeometry.h"

namespace reference_host {
namespace {

std::vector<Point> PointsOf(ArrayMesh const& arrays) {
  std::vector<Point> points(arrays.nNodes);
  for (int n = 0; n < arrays.nNodes; ++n) points[n] = {arrays.node.x[n], arrays.node.y[n], arrays.node.z[n]};
  return points;
}

/// The nodes of a group's faces in order, each row beginning with the three that span the plane best.
RaggedTable FaceNodes(ArrayFaces const& faces, std::vector<Point> const& points) {
  std::vector<int> length(faces.count + 1, 0);
  for (int f = 0; f < faces.count; ++f) length[f + 1] = faces.nodeStart[f + 1] - faces.nodeStart[f];
  RaggedTable table(length);
  for (int f = 0; f < faces.count; ++f) {
    int const* nodes = faces.node + faces.nodeStart[f];
    int const n = length[f + 1];
    Point const area = {faces.area.x[f], faces.area.y[f], faces.area.z[f]};
    int const best = n < 3 ? 0 : BestSpanningTriple(points, nodes, n, area);
    int* row = table[f + 1];
    for (int k = 0; k < n; ++k) row[k + 1] = nodes[(best + k) % n] + 1;
  }
  return table;
}

/// Calls visit(group, f, cell, cellBeyond) for the faces of interior cells, group by group, once for each of a face's
/// interior cells.
template <class Visit>
void ForEachFaceOfCells(std::array<FaceGroup, kFaceKinds> const& groups, Visit const& visit) {
  for (FaceGroup const& group : groups) {
    for (int f = 1; f <= group.count; ++f) {
      visit(group, f, group.cv[f], group.other[f]);
      if (group.kind == FaceKind::Inner) visit(group, f, group.other[f], group.cv[f]);
    }
  }
}

void FillCellFaces(ArrayMesh const& arrays, std::array<FaceGroup, kFaceKinds> const& groups,
                   ArrayTopology& topology) {
  std::vector<int> length(arrays.nCells + 1, 0);
  ForEachFaceOfCells(groups, [&](FaceGroup const&, int, int cell, int) { ++length[cell]; });
  topology.cellCell = RaggedTable(length);
  topology.cellFace = RaggedTable(length);
  topology.cellFaceType = RaggedTable(length);
  std::vector<int> filled(arrays.nCells + 1, 0);
  ForEachFaceOfCells(groups, [&](FaceGroup const& group, int f, int cell, int beyond) {
    int const k = ++filled[cell];
    topology.cellCell[cell][k] = beyond;
    topology.cellFace[cell][k] = f;
    topology.cellFaceType[cell][k] = MembersOf(group.kind).code;
  });
}

/// The nodes of every cell: of an interior cell those of its faces, of a ghost cell those of its face, of a halo cell
/// those that the arrays state, or else those of its partition faces.
void FillCellNodes(ArrayMesh const& arrays, std::array<FaceGroup, kFaceKinds> const& groups, int nCells,
                   ArrayTopology& topology) {
  int const firstHalo = arrays.nCells + arrays.inlet.count + arrays.outlet.count + arrays.symmetry.count +
                        arrays.wall.count - arrays.nEmptyFaces + 1;
  std::vector<int> cellStart(nCells + 2, 0);
  auto const forEachNode = [&](auto const& visit) {
    for (FaceGroup const& group : groups) {
      RaggedTable const& nodes = topology.faceNodes[IndexOf(group.kind)];
      bool const haloNodesAreGiven = group.kind == FaceKind::Partition && arrays.haloNodeStart != nullptr;
      for (int f = 1; f <= group.count; ++f) {
        for (int k = 1; k <= nodes[f][0]; ++k) {
          visit(group.cv[f], nodes[f][k]);
          if (!haloNodesAreGiven) visit(group.other[f], nodes[f][k]);
        }
      }
    }
    if (arrays.haloNodeStart == nullptr) return;
    for (int h = 0; h < arrays.nHaloCells; ++h)
      for (int k = arrays.haloNodeStart[h]; k < arrays.haloNodeStart[h + 1]; ++k)
        visit(firstHalo + h, arrays.haloNode[k] + 1);
  };

  // All nodes of all faces of a cell, then each once.
  forEachNode([&](int cell, int) { ++cellStart[cell + 1]; });
  for (int c = 1; c <= nCells; ++c) cellStart[c + 1] += cellStart[c];
  std::vector<int> nodes(cellStart[nCells + 1]);
  std::vector<int> next(cellStart.begin(), cellStart.end() - 1);
  forEachNode([&](int cell, int node) { nodes[next[cell]++] = node; });

  topology.cellNodeNumber.assign(nCells + 1, 0);
  for (int c = 1; c <= nCells; ++c) {
    auto const first = nodes.begin() + cellStart[c], last = nodes.begin() + cellStart[c + 1];
    std::sort(first, last);
    topology.cellNodeNumber[c] = static_cast<int>(std::unique(first, last) - first);
  }
  topology.cellNodes = RaggedTable(topology.cellNodeNumber);
  for (int c = 1; c <= nCells; ++c)
    std::copy_n(nodes.begin() + cellStart[c], topology.cellNodeNumber[c], topology.cellNodes[c] + 1);
}

/// Inverts the table of cells. Cells are visited in ascending order, so rows ascend.
void FillNodeCells(int nNodes, int nCells, ArrayTopology& topology) {
  std::vector<int> length(nNodes + 1, 0);
  auto const forEachNode = [&](auto const& visit) {
    for (int c = 1; c <= nCells; ++c)
      for (int k = 1; k <= topology.cellNodeNumber[c]; ++k) visit(c, topology.cellNodes[c][k]);
  };
  forEachNode([&](int, int node) { ++length[node]; });
  topology.nodeCell = RaggedTable(length);
  std::vector<int> filled(nNodes + 1, 0);
  forEachNode([&](int cell, int node) { topology.nodeCell[node][++filled[node]] = cell; });
}

}  // namespace

ArrayTopology MakeTopology(ArrayMesh const& arrays, std::array<FaceGroup, kFaceKinds> const& groups,
                           int nCells) {
  ArrayTopology topology;
  std::vector<Point> const points = PointsOf(arrays);
  for (FaceGroup const& group : groups)
    topology.faceNodes[IndexOf(group.kind)] = FaceNodes(FacesOf(group.kind, arrays), points);
  FillCellFaces(arrays, groups, topology);
  FillCellNodes(arrays, groups, nCells, topology);
  FillNodeCells(arrays.nNodes, nCells, topology);
  return topology;
}

}  // namespace reference_host
