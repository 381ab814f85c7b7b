#pragma once

#include <array>
#include <vector>

#include "tests/support/mesh/CellMesh.h"

namespace rbf_face_test {

using rbf_cell_test::Point;

/// The groups of faces as the operator numbers them.
enum Group { kInner = 1, kWall, kInlet, kOutlet, kPartition, kSymmetry };
constexpr Group kGroups[] = {kInner, kWall, kInlet, kOutlet, kPartition, kSymmetry};

struct Face {
  int cv = 0;     ///< the cell that the area vector points out of
  int other = 0;  ///< the cell beyond: interior, boundary-side or halo
  std::vector<int> nodes;
  Point centre, area;
};

/// A face as a cell lists it.
struct FaceOfCell {
  Group group;
  int number;  ///< from 1 within the group
};

/// What the face operator reads of a mesh partition, as plain values that a test writes down and FaceHost
/// lends. Cells, nodes and the faces of a group are numbered from 1; face f of a group stands at index f - 1.
struct MeshPlan {
  std::vector<Point> nodes{Point{}};                   ///< [1..NNode]
  std::vector<Point> centres{Point{}};                 ///< [1..NCell]
  std::vector<std::vector<int>> cellNodes{{}};         ///< [1..nInnerCells]
  std::vector<std::vector<FaceOfCell>> cellFaces{{}};  ///< [1..nInnerCells]
  std::vector<std::vector<int>> nodeCells{{}};         ///< [1..NNode] as the mesh lists them
  std::array<std::vector<Face>, 7> faces;              ///< by group

  int nInnerCells = 0;
  int NCell() const { return static_cast<int>(centres.size()) - 1; }
  int NNode() const { return static_cast<int>(nodes.size()) - 1; }
  std::vector<Face>& Of(Group group) { return faces[static_cast<std::size_t>(group)]; }
  std::vector<Face> const& Of(Group group) const { return faces[static_cast<std::size_t>(group)]; }

  /// All of these return the new number. Interior cells come before the first other cell.
  int AddNode(Point point);
  int AddCell(Point centre, std::vector<int> const& cellNodes);
  int AddOuterCell(Point centre);

  /// Adds a face and lists it at its interior cells.
  int AddFace(Group group, Face const& face);

  /// Adds a face of a boundary group or of the partition with a new cell beyond it. @return that cell
  int AddSide(Group group, int cv, std::vector<int> const& nodes, Point centre, Point area, Point beyond);

  /// Fills nodeCells: the interior cells of a node, ascending, then the outer cells of the faces that touch it,
  /// group by group. Some meshes leave out the interior cells at nodes of the boundary.
  enum class AtBoundaryNodes { AllCells, OuterCellsOnly };
  void ListCellsAroundNodes(AtBoundaryNodes which = AtBoundaryNodes::AllCells);

  /// The plan with every node and centre at map(point), and the area vectors of its faces measured anew.
  template <typename Map>
  MeshPlan Mapped(Map map) const {
    MeshPlan plan = *this;
    for (Point& p : plan.nodes) p = map(p);
    for (Point& p : plan.centres) p = map(p);
    for (auto& group : plan.faces)
      for (Face& face : group) face.centre = map(face.centre);
    plan.MeasureAreas();
    return plan;
  }

 private:
  void MeasureAreas();
};

/// Groups of the sides -x, +x, -y, +y, -z, +z of a box.
using Sides = std::array<Group, 6>;
constexpr Sides kAllGroups = {kInlet, kOutlet, kWall, kPartition, kSymmetry, kWall};

/// A box of cells between the given planes, x running fastest. Inner faces stand along x first, then y, then z.
/// The cell beyond a boundary face has its centre mirrored at the face's, so that nobody takes the one for the
/// other.
MeshPlan BoxPlan(std::vector<double> const& x, std::vector<double> const& y, std::vector<double> const& z,
                 Sides const& sides = kAllGroups);

/// Two unit cubes side by side along x around the origin, with one inner face in the plane x = 0.
///
///     +---------+---------+     y up, z towards the reader; inlet at x = -1, outlet at x = 1,
///     |   (1)   |   (2)   |     wall below, partition above, symmetry behind, wall in front
///     +---------+---------+
MeshPlan TwoCubes();

/// 3 x 3 x 3 unit cubes around cell 14, which is in nobody's reach of the boundary; faces of all groups.
MeshPlan CubesOfAllGroups();

/// The same with planes and cells out of line and at unequal distances, the faces still plane.
MeshPlan SkewedCubesOfAllGroups();

}  // namespace rbf_face_test
