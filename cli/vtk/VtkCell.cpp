#include "cli/vtk/VtkCell.h"

#include <algorithm>

namespace zyngrad {
namespace {

bool Contains(int const* row, int nNodes, int node) {
  return std::find(row, row + nNodes, node) != row + nNodes;
}

void DistinctNodes(CellFaces const& faces, std::vector<int>& nodes) {
  nodes = faces.node;
  std::sort(nodes.begin(), nodes.end());
  nodes.erase(std::unique(nodes.begin(), nodes.end()), nodes.end());
}

/// The node that an edge outside the base face connects to `node`; -1 unless there is exactly one.
int NodeAbove(CellFaces const& faces, int base, int node) {
  int above = -1;
  for (int f = 0; f < faces.nFaces(); ++f) {
    int const size = faces.FaceSize(f);
    int const* row = faces.Face(f);
    int const at = static_cast<int>(std::find(row, row + size, node) - row);
    if (f == base || at == size) continue;
    for (int const neighbour : {row[(at + 1) % size], row[(at + size - 1) % size]}) {
      if (Contains(faces.Face(base), faces.FaceSize(base), neighbour)) continue;
      if (above != -1 && above != neighbour) return -1;
      above = neighbour;
    }
  }
  return above;
}

int FirstFaceOfSize(CellFaces const& faces, int size) {
  for (int f = 0; f < faces.nFaces(); ++f) {
    if (faces.FaceSize(f) == size) return f;
  }
  return -1;
}

int CountFacesOfSize(CellFaces const& faces, int size) {
  int count = 0;
  for (int f = 0; f < faces.nFaces(); ++f) count += faces.FaceSize(f) == size ? 1 : 0;
  return count;
}

/// The nodes of the base, followed by one apex or by one node above each.
/// @return whether the cell has that form
bool StandOnBase(CellFaces const& faces, int base, bool inwards, bool toApex, std::vector<int>& nodes) {
  int const size = faces.FaceSize(base);
  nodes.assign(faces.Face(base), faces.Face(base) + size);
  if (inwards) std::reverse(nodes.begin(), nodes.end());
  for (int k = 0; k < size; ++k) {
    int const above = NodeAbove(faces, base, nodes[static_cast<std::size_t>(k)]);
    if (above == -1) return false;
    if (toApex && k > 0) {
      if (above != nodes.back()) return false;
    } else if (Contains(nodes.data(), static_cast<int>(nodes.size()), above)) {
      return false;
    } else {
      nodes.push_back(above);
    }
  }
  return true;
}

struct Form {
  VtkType type;
  int nTriangles, nQuads, nNodes;
  int baseSize;
  bool baseInwards;  ///< whether the base in VTK's order turns around a normal that points into the cell; a
                     ///< wedge's normal points out of it
  bool toApex;
};

constexpr Form kForms[] = {
    {VtkType::Tetrahedron, 4, 0, 4, 3, true, true},
    {VtkType::Pyramid, 4, 1, 5, 4, true, true},
    {VtkType::Wedge, 2, 3, 6, 3, false, false},
    {VtkType::Hexahedron, 0, 6, 8, 4, true, false},
};

}  // namespace

int CellFaces::FaceSize(int f) const {
  auto const k = static_cast<std::size_t>(f);
  return static_cast<int>(start[k + 1] - start[k]);
}

void CellFaces::Clear() {
  node.clear();
  start.resize(1);
}

void CellFaces::Add(int const* row, int nNodes, bool reversed) {
  node.insert(node.end(), row, row + nNodes);
  if (reversed) std::reverse(node.end() - nNodes, node.end());
  start.push_back(node.size());
}

void MakeVtkCell(CellFaces const& faces, VtkCell& cell) {
  int const nTriangles = CountFacesOfSize(faces, 3);
  int const nQuads = CountFacesOfSize(faces, 4);
  DistinctNodes(faces, cell.nodes);
  if (nTriangles + nQuads == faces.nFaces()) {
    for (Form const& form : kForms) {
      if (nTriangles != form.nTriangles || nQuads != form.nQuads) continue;
      if (cell.nodes.size() != static_cast<std::size_t>(form.nNodes)) continue;
      int const base = FirstFaceOfSize(faces, form.baseSize);
      cell.type = form.type;
      if (StandOnBase(faces, base, form.baseInwards, form.toApex, cell.nodes)) return;
      DistinctNodes(faces, cell.nodes);
    }
  }
  cell.type = VtkType::Polyhedron;
}

}  // namespace zyngrad
