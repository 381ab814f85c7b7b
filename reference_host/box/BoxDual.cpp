#include "reference_host/box/BoxDual.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "reference_host/box/BoxPieces.h"
#include "reference_host/box/BoxShapes.h"
#include "reference_host/mesh/CellGeometry.h"
#include "reference_host/mesh/Vector3.h"

namespace reference_host {
namespace {

constexpr std::int64_t kTetrahedra = 6;  // of a cube

/// Cells of the dual, or cubes, of which one piece is made at a time.
constexpr std::int64_t kPieceSize = 4096;

/// The place with this number; behind the last one for the number of all.
GridIndex PlaceOrEnd(GridBlock const& grid, std::int64_t number) {
  return number < grid.Size() ? grid.Place(number) : GridIndex{grid.low[0], grid.low[1], grid.high[2]};
}

std::int64_t CountBefore(GridBlock const& grid, std::int64_t number, std::vector<GridBlock> const& blocks) {
  GridIndex const place = PlaceOrEnd(grid, number);
  std::int64_t count = 0;
  for (GridBlock const& block : blocks) count += block.CountBefore(place);
  return count;
}

/// The layer of a grid at a side.
GridBlock LayerAt(GridBlock grid, int side) {
  std::size_t const d = static_cast<std::size_t>(side) / 2;
  (side % 2 == 0 ? grid.high[d] : grid.low[d]) = side % 2 == 0 ? grid.low[d] + 1 : grid.high[d] - 1;
  return grid;
}

bool IsAtBoundary(GridBlock const& cubes, GridIndex const& cube, ShapeInCube::Face const& face) {
  return face.side >= 0 && !cubes.Contains(CubeAcross(cube, face.side));
}

/// The cubes that have nodes in a block.
GridBlock CubesAround(GridBlock const& nodes, GridBlock const& cubes) {
  GridBlock around = nodes;
  for (std::size_t d = 0; d < 3; ++d) {
    around.low[d] = std::max(nodes.low[d] - 1, cubes.low[d]);
    around.high[d] = std::min(nodes.high[d], cubes.high[d]);
  }
  return around;
}

/// The tetrahedra around some nodes, and the numbers of what is made of them.
class Surroundings {
 public:
  Surroundings(BoxSpec const& dual, BoxDualNumbers const& numbers, GridBlock const& nodes)
      : numbers_(numbers) {
    MeshPart part = MakeBoxBlock(PrimalOf(dual), CubesAround(nodes, numbers.cubes()));
    cell_ = std::move(part.globalCell);
    node_ = std::move(part.globalNode);
    mesh_ = WholeOf(std::move(part));
    mesh_.nCells = static_cast<int>(cell_.size());
    for (std::int64_t const node : node_)
      isInside_.push_back(nodes.Contains(numbers.nodes().Place(node)) ? 1 : 0);
  }

  FaceMesh const& mesh() const { return mesh_; }
  std::vector<std::int64_t> const& node() const { return node_; }
  bool IsInside(int node) const { return isInside_[static_cast<std::size_t>(node)] != 0; }

  /// The number in the whole dual.
  std::int64_t NumberOf(DualPoint const& point) const {
    auto const a = static_cast<std::size_t>(point.a);
    switch (point.kind) {
      case DualPoint::Kind::Face: {
        std::int64_t const cell = cell_[static_cast<std::size_t>(mesh_.owner[a])];
        return numbers_.Triangle(numbers_.cubes().Place(cell / kTetrahedra),
                                 static_cast<int>(cell % kTetrahedra), mesh_.facePatch[a]);
      }
      case DualPoint::Kind::Edge:
        return numbers_.Midpoint(PlaceOfNode(point.a), PlaceOfNode(point.b));
      case DualPoint::Kind::Node:
        return numbers_.Node(PlaceOfNode(point.a));
      case DualPoint::Kind::Cell:
        break;
    }
    return cell_[a];
  }

 private:
  GridIndex PlaceOfNode(int node) const {
    return numbers_.nodes().Place(node_[static_cast<std::size_t>(node)]);
  }

  BoxDualNumbers const& numbers_;
  FaceMesh mesh_;
  std::vector<std::int64_t> cell_, node_;  // numbers in the whole box of tetrahedra
  std::vector<char> isInside_;             // by node: whether it is in the block
};

/// The number of the place that has this point.
/// @param[in] countBefore  the points before a place, by its number
template <class CountBefore>
std::int64_t PlaceOfPoint(std::int64_t nPlaces, std::int64_t point, CountBefore const& countBefore) {
  std::int64_t low = 0;
  for (std::int64_t high = nPlaces; low < high;) {
    std::int64_t const middle = low + (high - low) / 2;
    if (countBefore(middle + 1) > point) {
      high = middle;
    } else {
      low = middle + 1;
    }
  }
  return low;
}

/// Appends the points first..end-1 of one kind, which are made at some of the places of a grid.
/// @param[in] countBefore  as for PlaceOfPoint
/// @param[in] visit        visit(place, add) calls add(point) for the points of a place in their order
template <class CountBefore, class Visit>
void AppendPoints(GridBlock const& grid, std::int64_t first, std::int64_t end, CountBefore const& countBefore,
                  Visit const& visit, std::vector<Point>& points) {
  while (first < end) {
    std::int64_t const place = PlaceOfPoint(grid.Size(), first, countBefore);
    std::int64_t number = countBefore(place);
    visit(grid.Place(place), [&](Point const& point) {
      if (number++ != first || first == end) return;
      points.push_back(point);
      ++first;
    });
  }
}

/// Appends the centres of tetrahedra.
void AppendCentres(BoxSpec const& dual, std::int64_t first, std::int64_t end, std::vector<Point>& points) {
  if (first >= end) return;
  BoxSpec const primal = PrimalOf(dual);
  for (GridBlock const& cubes : ContiguousBlocks(CubesOf(dual), first / kTetrahedra,
                                                 (end + kTetrahedra - 1) / kTetrahedra, kPieceSize)) {
    MeshPart const part = MakeBoxBlock(primal, cubes);
    CellGeometry const cells = ComputeCellGeometry(part, part.nOwned);
    for (std::size_t c = 0; c < cells.centre.size(); ++c)
      if (part.globalCell[c] >= first && part.globalCell[c] < end) points.push_back(cells.centre[c]);
  }
}

Point CentreOfTriangle(BoxNodes const& nodes, GridIndex const& cube, ShapeInCube::Face const& face) {
  std::vector<Point> corners;
  for (int const corner : face.corners) corners.push_back(nodes.PlaceOf(CornerOf(cube, corner)));
  std::array<int, 3> const order = {0, 1, 2};
  return ComputeFaceGeometry(corners, order.data(), 3).centre;
}

/// Keeps the points of the faces, in the order of their numbers in the whole.
/// @return these numbers
std::vector<std::int64_t> SortPoints(DualPiece& piece, Surroundings const& around) {
  FaceMesh& mesh = piece.mesh;
  std::vector<char> isUsed(mesh.points.size(), 0);
  for (int const point : mesh.faceNode) isUsed[static_cast<std::size_t>(point)] = 1;
  std::vector<std::pair<std::int64_t, int>> order;
  for (std::size_t p = 0; p < isUsed.size(); ++p)
    if (isUsed[p] != 0) order.emplace_back(around.NumberOf(piece.source[p]), static_cast<int>(p));
  std::sort(order.begin(), order.end());

  std::vector<int> newNumber(mesh.points.size(), -1);
  std::vector<std::int64_t> numbers;
  std::vector<Point> points;
  numbers.reserve(order.size());
  points.reserve(order.size());
  for (auto const& [number, point] : order) {
    newNumber[static_cast<std::size_t>(point)] = static_cast<int>(points.size());
    numbers.push_back(number);
    points.push_back(mesh.points[static_cast<std::size_t>(point)]);
  }
  for (int& point : mesh.faceNode) point = newNumber[static_cast<std::size_t>(point)];
  mesh.points = std::move(points);
  return numbers;
}

}  // namespace

BoxSpec PrimalOf(BoxSpec dual) {
  dual.shape = BoxSpec::Shape::Tet;
  return dual;
}

BoxDualNumbers::BoxDualNumbers(BoxSpec const& dual) : cubes_(CubesOf(dual)), nodes_(cubes_.Nodes()) {
  for (int side = 0; side < 6; ++side) {
    sideCubes_[static_cast<std::size_t>(side)] = LayerAt(cubes_, side);
    sideNodes_[static_cast<std::size_t>(side)] = LayerAt(nodes_, side);
  }
  for (int d = 0; d < 3; ++d) {
    int const e = (d + 1) % 3, f = (d + 2) % 3;
    for (int k = 0; k < 4; ++k) {
      GridBlock const line = LayerAt(LayerAt(nodes_, 2 * e + k % 2), 2 * f + k / 2);
      GridBlock lows = line, corners = line;
      --lows.high[static_cast<std::size_t>(d)];
      edges_.push_back(lows);
      if (d > 0) {  // the ends belong to the lines along x
        ++corners.low[static_cast<std::size_t>(d)];
        --corners.high[static_cast<std::size_t>(d)];
      }
      corners_.push_back(corners);
    }
  }
  trianglesFirst_ = kTetrahedra * cubes_.Size();
  midpointsFirst_ = trianglesFirst_ + CountTrianglesBefore(cubes_.Size());
  nodesFirst_ = midpointsFirst_ + CountMidpointsBefore(nodes_.Size());
}

std::int64_t BoxDualNumbers::CountTrianglesBefore(std::int64_t cube) const {
  GridIndex const place = PlaceOrEnd(cubes_, cube);
  std::int64_t count = 0;
  for (std::size_t side = 0; side < 6; ++side) count += 2 * sideCubes_[side].CountBefore(place);
  return count;
}

std::int64_t BoxDualNumbers::CountMidpointsBefore(std::int64_t node) const {
  return CountBefore(nodes_, node, edges_);
}

std::int64_t BoxDualNumbers::CountCornersBefore(std::int64_t node) const {
  return CountBefore(nodes_, node, corners_);
}

std::int64_t BoxDualNumbers::CountFacesBefore(std::int64_t cell) const {
  GridIndex const place = PlaceOrEnd(nodes_, cell);
  std::int64_t count = 0;
  for (int corner = 1; corner < 8; ++corner) {  // edges lead from a cube's lowest corner to all others
    GridIndex const to = CornerOf({0, 0, 0}, corner);
    GridBlock lows = nodes_;
    for (std::size_t d = 0; d < 3; ++d) lows.high[d] -= to[d];
    count += lows.CountBefore(place);
  }
  for (GridBlock const& side : sideNodes_) count += side.CountBefore(place);
  return count;
}

std::int64_t BoxDualNumbers::Triangle(GridIndex const& cube, int tetrahedron, int side) const {
  std::int64_t number =
      trianglesFirst_ + CountTrianglesBefore(static_cast<std::int64_t>(cubes_.Offset(cube)));
  ShapeInCube const& shape = ShapeTable(BoxSpec::Shape::Tet);
  for (int t = 0; t <= tetrahedron; ++t) {
    for (ShapeInCube::Face const& face : shape.cells[static_cast<std::size_t>(t)].faces) {
      if (t == tetrahedron && face.side == side) break;
      number += IsAtBoundary(cubes_, cube, face) ? 1 : 0;
    }
  }
  return number;
}

std::int64_t BoxDualNumbers::Midpoint(GridIndex const& low, GridIndex const& high) const {
  std::vector<GridIndex> const ends = EndsOfEdgesFrom(low);
  return midpointsFirst_ + CountMidpointsBefore(static_cast<std::int64_t>(nodes_.Offset(low))) +
         (std::find(ends.begin(), ends.end(), high) - ends.begin());
}

std::vector<GridIndex> BoxDualNumbers::EndsOfEdgesFrom(GridIndex const& low) const {
  std::vector<GridIndex> ends;
  for (std::size_t e = 0; e < edges_.size(); ++e) {  // those along x come first, then y, then z
    if (!edges_[e].Contains(low)) continue;
    ends.push_back(low);
    ++ends.back()[e / 4];
  }
  return ends;
}

bool BoxDualNumbers::IsOnEdge(GridIndex const& node) const {
  return std::any_of(corners_.begin(), corners_.end(),
                     [&node](GridBlock const& line) { return line.Contains(node); });
}

std::int64_t BoxDualNumbers::Node(GridIndex const& node) const {
  return nodesFirst_ + CountCornersBefore(static_cast<std::int64_t>(nodes_.Offset(node)));
}

void ForEachFaceOfBoxDual(BoxSpec const& dual, std::int64_t first, std::int64_t end,
                          std::function<void(BoxDualFace const&)> const& action) {
  BoxDualNumbers const numbers(dual);
  BoxDualFace face{};
  for (GridBlock const& owners : ContiguousBlocks(numbers.nodes(), first, end, kPieceSize)) {
    Surroundings const around(dual, numbers, owners);
    DualPiece const piece =
        MakeDualPiece(around.mesh(), [&around](int owner, int) { return around.IsInside(owner); });
    FaceMesh const& mesh = piece.mesh;
    for (std::size_t f = 0; f < mesh.owner.size(); ++f) {
      face.owner = around.node()[static_cast<std::size_t>(mesh.owner[f])];
      face.neighbour =
          mesh.neighbour[f] < 0 ? -1 : around.node()[static_cast<std::size_t>(mesh.neighbour[f])];
      face.patch = mesh.facePatch[f];
      face.nodes.clear();
      for (std::size_t i = mesh.faceStart[f]; i < mesh.faceStart[f + 1]; ++i)
        face.nodes.push_back(around.NumberOf(piece.source[static_cast<std::size_t>(mesh.faceNode[i])]));
      action(face);
    }
  }
}

std::vector<Point> PointsOfBoxDual(BoxSpec const& dual, std::int64_t first, std::int64_t end) {
  BoxDualNumbers const numbers(dual);
  BoxNodes const nodes(dual);
  std::vector<Point> points;
  points.reserve(static_cast<std::size_t>(end - first));
  AppendCentres(dual, first, std::min(end, numbers.trianglesFirst()), points);

  // The range within one kind, whose numbers begin at kindFirst and end before kindEnd.
  auto const append = [&](GridBlock const& grid, std::int64_t kindFirst, std::int64_t kindEnd,
                          auto const& countBefore, auto const& visit) {
    AppendPoints(grid, std::max(first, kindFirst) - kindFirst, std::min(end, kindEnd) - kindFirst,
                 countBefore, visit, points);
  };
  append(
      numbers.cubes(), numbers.trianglesFirst(), numbers.midpointsFirst(),
      [&](std::int64_t cube) { return numbers.CountTrianglesBefore(cube); },
      [&](GridIndex const& cube, auto const& add) {
        for (ShapeInCube::Cell const& cell : ShapeTable(BoxSpec::Shape::Tet).cells)
          for (ShapeInCube::Face const& face : cell.faces)
            if (IsAtBoundary(numbers.cubes(), cube, face)) add(CentreOfTriangle(nodes, cube, face));
      });
  append(
      numbers.nodes(), numbers.midpointsFirst(), numbers.nodesFirst(),
      [&](std::int64_t node) { return numbers.CountMidpointsBefore(node); },
      [&](GridIndex const& low, auto const& add) {
        for (GridIndex const& high : numbers.EndsOfEdgesFrom(low))
          add(Scaled(0.5, Sum(nodes.PlaceOf(low), nodes.PlaceOf(high))));
      });
  append(
      numbers.nodes(), numbers.nodesFirst(), numbers.nPoints(),
      [&](std::int64_t node) { return numbers.CountCornersBefore(node); },
      [&](GridIndex const& node, auto const& add) {
        if (numbers.IsOnEdge(node)) add(nodes.PlaceOf(node));
      });
  return points;
}

GridBlock CubesOfDualPart(BoxSpec const& dual, GridBlock const& cells) {
  GridBlock const cubes = CubesOf(dual);
  return CubesAround(Grown(cells, cubes.Nodes()), cubes);
}

MeshPart MakeBoxDualPart(BoxSpec const& dual, GridBisection const& bisection, int part, int nParts) {
  BoxDualNumbers const numbers(dual);
  GridBlock const withHalo = Grown(bisection.BlockOf(part), numbers.nodes());
  DualPiece piece;
  std::vector<std::int64_t> cellNumber, pointNumber;
  std::vector<int> partOfCell;
  {
    Surroundings const around(dual, numbers, withHalo);
    piece = MakeDualPiece(around.mesh(), [&around](int owner, int neighbour) {
      return around.IsInside(owner) || (neighbour >= 0 && around.IsInside(neighbour));
    });
    pointNumber = SortPoints(piece, around);
    cellNumber = around.node();
  }
  partOfCell.reserve(cellNumber.size());
  for (std::int64_t const cell : cellNumber)
    partOfCell.push_back(bisection.PartOf(numbers.nodes().Place(cell)));
  MeshPart result = ExtractPart(piece.mesh, partOfCell, part, nParts);
  for (std::int64_t& cell : result.globalCell) cell = cellNumber[static_cast<std::size_t>(cell)];
  for (std::int64_t& point : result.globalNode) point = pointNumber[static_cast<std::size_t>(point)];
  return result;
}

}  // namespace reference_host
