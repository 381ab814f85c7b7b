#pragma once

#include <cstddef>
#include <vector>

namespace zyngrad {

/// The faces of one cell. The nodes of face f are node[start[f] .. start[f+1]-1]. By the right-hand rule they turn
/// around a normal that points out of the cell.
struct CellFaces {
  std::vector<int> node;
  std::vector<std::size_t> start = {0};

  int nFaces() const { return static_cast<int>(start.size()) - 1; }
  int FaceSize(int f) const;
  int const* Face(int f) const { return node.data() + start[static_cast<std::size_t>(f)]; }

  void Clear();
  /// Adds a face with the nodes of `row`, in their order or reversed.
  void Add(int const* row, int nNodes, bool reversed);
};

/// Cell types of the VTK file formats.
enum class VtkType : unsigned char {
  Tetrahedron = 10,
  Hexahedron = 12,
  Wedge = 13,
  Pyramid = 14,
  Polyhedron = 42
};

/// A cell as VTK expects it: type and nodes in VTK's order; for a polyhedron, each node once in ascending order.
struct VtkCell {
  VtkType type = VtkType::Polyhedron;
  std::vector<int> nodes;
};

/// Recognises tetrahedra, pyramids, wedges and hexahedra by their faces; everything else is a
/// polyhedron.
/// @param[out] cell  overwritten; its memory is reused
void MakeVtkCell(CellFaces const& faces, VtkCell& cell);

}  // namespace zyngrad
