#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// Standard cells. Their nodes: a tetrahedron has a triangle and then its tip, a pyramid a quadrangle and
/// then its tip, a hexahedron and a prism one end and then the other, corresponding nodes in the same order.
/// The first face turns around the direction that leads into the cell.
enum class CellShape : std::uint8_t { Tetrahedron, Hexahedron, Prism, Pyramid };

/// Number of nodes of a standard cell.
int NodeCount(CellShape shape);

/// Makes a face-addressed mesh from standard cells: finds the faces that two cells share, and the patch of
/// each other face from surface elements.
///
/// Faces come in the order of their first cell and its faces; that cell is the owner, so owner < neighbour.
class FaceMeshBuilder {
 public:
  /// How failures call a cell, from its number counted from 0.
  using CellNamer = std::function<std::string(int)>;

  /// @param[in] meshName  what failures begin with, such as the file
  /// @param[in] points    coordinates by node number, all of them used or not
  /// @param[in] patches   what AddSurface refers to
  FaceMeshBuilder(std::string meshName, std::vector<Point> points, std::vector<Patch> patches);

  /// Without this cells are called "cell 1", "cell 2", ...
  void SetCellNamer(CellNamer namer) { nameOfCell_ = std::move(namer); }

  /// Adds the next cell. One given inside out (its volume is negative) is turned round: mesh files have both.
  /// A node that occurs twice in it is a MeshError.
  /// @param[in] nodes  [0..NodeCount(shape)-1] node numbers
  void AddCell(CellShape shape, int const* nodes);

  /// Says that a boundary face with these nodes, in any direction, belongs to `patch`; the first of several
  /// counts. It does not matter if there is no such face or if it lies between two cells.
  /// @param[in] nodes  [0..n-1] node numbers, n = 3 or 4
  void AddSurface(int const* nodes, int n, int patch);

  /// The mesh; the builder is spent. Boundary faces without a surface go to a patch called "unnamed", which
  /// is added if it is not there. Points that no cell uses are left out. A face of more than two cells, and
  /// two cells on the same side of a face, are a MeshError.
  FaceMesh Build();

  /// After Build: the number, as given, of each point of the mesh.
  std::vector<int> const& KeptPoints() const { return keptPoint_; }

 private:
  /// One face of a cell, or a surface element, on its way to its equals.
  struct Side {
    std::uint32_t item;   ///< cell, or number of cells + surface
    std::uint32_t local;  ///< which face of the cell
  };
  /// A side with the nodes that are not the lowest, ascending; -1 in place of a triangle's fourth node.
  struct SortedSide {
    std::array<int, 3> otherNodes;
    Side side;
  };
  /// Nodes of a face in order; node[3] = -1 for a triangle.
  using FaceNodes = std::array<int, 4>;

  [[noreturn]] void Fail(std::string const& what) const;
  std::string NameOfCell(int cell) const;
  bool IsCell(Side const& side) const { return side.item < shape_.size(); }

  void OrientLastCell();
  double VolumeOfLastCell() const;
  FaceNodes NodesOfSide(Side const& side) const;

  std::vector<Side> SidesByLowestNode(std::vector<std::size_t>& startOfNode) const;
  void MatchSides();
  void MatchEqualSides(SortedSide const* first, SortedSide const* last);
  void JoinCells(Side const& a, Side const& b);

  int UnnamedPatch();
  FaceMesh CollectFaces();
  void DropUnusedPoints(FaceMesh& mesh);

  std::string meshName_;
  std::vector<Point> points_;
  std::vector<Patch> patches_;
  CellNamer nameOfCell_;

  std::vector<CellShape> shape_;
  std::vector<std::size_t> nodeStart_ = {0};
  std::vector<int> node_;
  std::vector<std::size_t> sideStart_ = {0};  ///< the sides of a cell in otherSide_

  std::vector<FaceNodes> surface_;
  std::vector<int> patchOfSurface_;

  std::vector<int> keptPoint_;

  std::vector<int> otherSide_;  ///< by side: the neighbour cell, or -1 - patch, or kUncovered
};

}  // namespace reference_host
