#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "reference_host/mesh/CellShapes.h"
#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// Makes a face-addressed mesh from standard cells: finds the faces that two cells share, and takes the
/// patches of the other faces from surface elements.
///
/// Faces have the order of their first cell and its faces. That cell is the owner, so owner < neighbour.
class FaceMeshBuilder {
 public:
  /// The name of a cell in messages, from its number counted from 0.
  using CellNamer = std::function<std::string(int)>;

  /// @param[in] meshName  what messages begin with, such as the file
  /// @param[in] points    coordinates by node number; not all need be used
  /// @param[in] patches   what AddSurface refers to
  FaceMeshBuilder(std::string meshName, std::vector<Point> points, std::vector<Patch> patches);

  /// Without a namer, cells are called "cell 1", "cell 2", ...
  void SetCellNamer(CellNamer namer) { nameOfCell_ = std::move(namer); }

  /// Adds the next cell. A cell with negative volume is given inside out, as some files do, and is inverted.
  /// Throws MeshError if a node occurs twice.
  /// @param[in] nodes  [0..NodeCount(shape)-1] node numbers
  void AddCell(CellShape shape, int const* nodes);

  /// Assigns the boundary face with these nodes, in either orientation, to `patch`. The first of several
  /// calls for a face counts. Ignored if there is no such face or if it lies between two cells.
  /// @param[in] nodes  [0..n-1] node numbers, n = 3 or 4
  void AddSurface(int const* nodes, int n, int patch);

  /// Returns the mesh and leaves the builder empty. Boundary faces without a surface belong to the patch
  /// "unnamed", which is added if necessary. Points that no cell uses are left out. Throws MeshError for a
  /// face of more than two cells and for two cells on the same side of a face.
  FaceMesh Build();

  /// After Build: the original number of each point of the mesh.
  std::vector<int> const& KeptPoints() const { return keptPoint_; }

 private:
  /// One face of a cell, or a surface element, to be matched with its equals.
  struct Side {
    std::uint32_t item;   ///< cell, or number of cells + surface
    std::uint32_t local;  ///< which face of the cell
  };
  /// A side with its nodes except the lowest, ascending; -1 in place of a triangle's fourth node.
  struct SortedSide {
    std::array<int, 3> otherNodes;
    Side side;
  };
  using FaceNodes = ShortFace<int>;

  [[noreturn]] void Fail(std::string const& what) const;
  std::string NameOfCell(int cell) const;
  bool IsCell(Side const& side) const { return side.item < shape_.size(); }

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
