#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <vector>

#include "reference_host/box/BoxBlocks.h"
#include "reference_host/box/BoxNodes.h"
#include "reference_host/box/BoxSpec.h"
#include "reference_host/mesh/DualMesh.h"
#include "reference_host/mesh/MeshPart.h"

namespace reference_host {

/// The box of tetrahedra of which a dual is made.
BoxSpec PrimalOf(BoxSpec dual);

/// The numbers that MakeDual gives to the points and faces of a whole box, computed without it. The points are the
/// centres of the tetrahedra, the centres of the boundary triangles, the midpoints of the edges of cubes on the edges of
/// the box, and the nodes there; each kind has the order of its numbers in the box of tetrahedra, midpoints that of
/// their nodes.
class BoxDualNumbers {
 public:
  explicit BoxDualNumbers(BoxSpec const& dual);

  GridBlock const& cubes() const { return cubes_; }
  GridBlock const& nodes() const { return nodes_; }  ///< the cells of the dual
  std::int64_t nPoints() const { return nodesFirst_ + CountCornersBefore(nodes_.Size()); }

  std::int64_t Triangle(GridIndex const& cube, int tetrahedron, int side) const;  ///< at the boundary
  std::int64_t Midpoint(GridIndex const& low, GridIndex const& high) const;
  std::int64_t Node(GridIndex const& node) const;

  /// The upper ends of the edges of cubes that lie on edges of the box and whose lower end is this node, ascending.
  std::vector<GridIndex> EndsOfEdgesFrom(GridIndex const& low) const;
  bool IsOnEdge(GridIndex const& node) const;

  // Where each kind of points begins; the centres of tetrahedra begin at 0. How many points of a kind the cubes or nodes
  // before one make; for the number behind the last one, how many there are.
  std::int64_t trianglesFirst() const { return trianglesFirst_; }
  std::int64_t midpointsFirst() const { return midpointsFirst_; }
  std::int64_t nodesFirst() const { return nodesFirst_; }
  std::int64_t CountTrianglesBefore(std::int64_t cube) const;
  std::int64_t CountMidpointsBefore(std::int64_t node) const;
  std::int64_t CountCornersBefore(std::int64_t node) const;  ///< nodes on the edges of the box

  /// The faces of the dual whose owners are cells before this one.
  std::int64_t CountFacesBefore(std::int64_t cell) const;

 private:
  GridBlock cubes_, nodes_;
  std::array<GridBlock, 6> sideCubes_, sideNodes_;  // by side of the box
  std::vector<GridBlock> edges_;    // by edge of the box: the low nodes of the edges of cubes on it
  std::vector<GridBlock> corners_;  // the nodes on the edges of the box, each in one block
  std::int64_t trianglesFirst_ = 0, midpointsFirst_ = 0, nodesFirst_ = 0;
};

/// A face of the dual by its numbers in the whole.
struct BoxDualFace {
  std::int64_t owner, neighbour;  ///< neighbour -1: at the boundary
  int patch;
  std::vector<std::int64_t> nodes;
};

/// Calls action(face) for the faces whose owners are the cells first..end-1, in their order. Needs the memory of a few
/// thousand cells.
void ForEachFaceOfBoxDual(BoxSpec const& dual, std::int64_t first, std::int64_t end,
                          std::function<void(BoxDualFace const&)> const& action);

/// The points first..end-1 of the dual.
std::vector<Point> PointsOfBoxDual(BoxSpec const& dual, std::int64_t first, std::int64_t end);

/// A part of the dual, made from the cubes around it; without `part` and `nParts`.
/// @param[in] bisection  of the nodes
MeshPart MakeBoxDualPart(BoxSpec const& dual, GridBisection const& bisection, int part, int nParts);

/// The cubes of which MakeBoxDualPart makes a block of cells.
GridBlock CubesOfDualPart(BoxSpec const& dual, GridBlock const& cells);

}  // namespace reference_host
