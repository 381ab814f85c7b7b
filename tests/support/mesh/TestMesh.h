#pragma once

#include <vector>

#include "foundation/FaceGroups.h"

namespace zyn_test {

struct Vector3 {
  double x = 0.0, y = 0.0, z = 0.0;
};
using Point = Vector3;

/// The face types of the operators' interfaces, as plain numbers.
enum Group : int {
  kInner = static_cast<int>(FaceKind::Inner),
  kWall = static_cast<int>(FaceKind::Wall),
  kInlet = static_cast<int>(FaceKind::Inlet),
  kOutlet = static_cast<int>(FaceKind::Outlet),
  kPartition = static_cast<int>(FaceKind::Partition),
  kSymmetry = static_cast<int>(FaceKind::Symmetry)
};
constexpr Group kGroups[] = {kInner, kWall, kInlet, kOutlet, kPartition, kSymmetry};

constexpr FaceKind KindOf(Group group) { return static_cast<FaceKind>(group); }

struct Face {
  int cv = 0;           ///< interior cell that the area vector points out of
  int other = 0;        ///< cell beyond: interior, ghost or halo cell
  Vector3 area;         ///< out of `cv`
  Point centre;         ///< face centre
  double weight = 0.5;  ///< of `other`; of inner and partition faces
  int type = 0;         ///< 1: only `cv` takes the flux; of inner and partition faces
  std::vector<int> nodes = {};
};

/// A face as a cell lists it.
struct FaceOfCell {
  Group group;
  int number;  ///< from 1 within the group
};

/// A mesh partition as plain values: a test writes it down, the plain forms read it and Host lends it. Cells and
/// nodes are numbered from 1; faces from 1 within their group, so that face f of a group stands at index f - 1.
///
/// A test fills what its operator reads. Interior cells come before the first ghost or halo cell.
struct TestMesh {
  int nInnerCells = 0;
  std::vector<Point> centres{Point{}};  ///< [1..NCell]
  std::vector<double> volumes{0.0};     ///< [1..nInnerCells]
  std::vector<Point> nodes{Point{}};    ///< [1..NNode]

  std::vector<std::vector<int>> neighbours{{}};        ///< [1..nInnerCells] without the cell itself
  std::vector<std::vector<FaceOfCell>> cellFaces{{}};  ///< [1..nInnerCells]
  std::vector<std::vector<int>> cellNodes{{}};         ///< [1..nInnerCells], or [1..NCell]
  std::vector<std::vector<int>> nodeCells{{}};  ///< [1..NNode] cells around a node, as the host lists them

  std::vector<Face> inner, wall, inlet, outlet, partition, symmetry;

  int NCell() const { return static_cast<int>(centres.size()) - 1; }
  int NNode() const { return static_cast<int>(nodes.size()) - 1; }

  std::vector<Face>& Of(Group group);
  std::vector<Face> const& Of(Group group) const;

  Point& Centre(int c) { return centres[static_cast<std::size_t>(c)]; }
  Point const& Centre(int c) const { return centres[static_cast<std::size_t>(c)]; }
  std::vector<int>& Neighbours(int c) { return neighbours[static_cast<std::size_t>(c)]; }
  std::vector<int> const& Neighbours(int c) const { return neighbours[static_cast<std::size_t>(c)]; }
  std::vector<int>& CellNodes(int c) { return cellNodes[static_cast<std::size_t>(c)]; }
  std::vector<int> const& CellNodes(int c) const { return cellNodes[static_cast<std::size_t>(c)]; }
  std::vector<int>& NodeCells(int n) { return nodeCells[static_cast<std::size_t>(n)]; }

  // All of these return the number of what they add.

  int AddNode(Point point);  ///< without cells around it

  int AddInteriorCell(Point centre, double volume = 1.0);

  /// Adds an interior cell with the given nodes, and the cell to the rows of its nodes.
  int AddCell(Point centre, std::vector<int> const& itsNodes = {});

  int AddOuterCell(Point centre);  ///< a ghost or halo cell without nodes

  /// Adds a face and lists it, and the cell beyond it, at its interior cells.
  int AddFace(Group group, Face const& face);

  /// Adds an inner face half-way between two interior cells; its area vector is their distance.
  int JoinInterior(int a, int b);

  /// Adds a ghost or halo cell at `beyond` behind a face at `faceCentre`; both have the nodes.
  /// @return the cell's number
  int AddSide(Group group, int cell, Point faceCentre, Point beyond, std::vector<int> const& itsNodes = {});

  /// Fills nodeCells: the interior cells of a node, ascending, then the outer cells of the faces that touch it, group
  /// by group. Some meshes leave out the interior cells at nodes of the boundary.
  enum class AtBoundaryNodes { AllCells, OuterCellsOnly };
  void ListCellsAroundNodes(AtBoundaryNodes which = AtBoundaryNodes::AllCells);

  /// The mesh with every node and centre at map(point), and the area vectors of its faces measured anew.
  template <typename Map>
  TestMesh Mapped(Map map) const {
    TestMesh mapped = *this;
    for (Point& p : mapped.nodes) p = map(p);
    for (Point& p : mapped.centres) p = map(p);
    for (Group const group : kGroups)
      for (Face& face : mapped.Of(group)) face.centre = map(face.centre);
    mapped.MeasureAreas();
    return mapped;
  }

 private:
  void MeasureAreas();
};

}  // namespace zyn_test
