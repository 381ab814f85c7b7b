#include "reference_host/slabs/BoxSlab.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "reference_host/box/BoxDual.h"
#include "reference_host/box/BoxMesh.h"
#include "reference_host/box/BoxNodes.h"
#include "reference_host/box/BoxShapes.h"
#include "reference_host/box/BoxSpec.h"

namespace reference_host {
namespace {

/// `perItem` numbers for each item of the blocks.
BlockRanges Multiplied(BlockRanges const& items, std::int64_t perItem) {
  std::vector<std::int64_t> starts;
  starts.reserve(static_cast<std::size_t>(items.nBlocks()) + 1);
  for (int block = 0; block < items.nBlocks(); ++block) starts.push_back(items.First(block) * perItem);
  starts.push_back(items.nItems() * perItem);
  return BlockRanges(std::move(starts));
}

/// The share of a box whose cubes are divided into cells.
class BoxSlabMaker {
 public:
  BoxSlabMaker(BoxSpec const& spec, int rank, int nRanks)
      : nodes_(spec),
        shape_(ShapeTable(spec.shape)),
        grid_(CubesOf(spec)),
        cubes_(BlockRanges::Even(grid_.Size(), nRanks)),
        rank_(rank) {
    slab_.nodes = BlockRanges::Even(nodes_.grid().Size(), nRanks);
    slab_.cells = Multiplied(cubes_, shape_.nCells());
    slab_.patches = BoxPatches();
    std::vector<std::int64_t> faceStarts;
    faceStarts.reserve(static_cast<std::size_t>(nRanks) + 1);
    for (int r = 0; r < nRanks; ++r) faceStarts.push_back(CountFacesBefore(cubes_.First(r)));
    faceStarts.push_back(CountFacesBefore(grid_.Size()));
    slab_.faces = BlockRanges(std::move(faceStarts));
  }

  MeshSlab Make() {
    PlaceNodes();
    ReserveFaces();
    ForEachPlace(grid_, cubes_.First(rank_), cubes_.End(rank_), [this](GridIndex const& cube) {
      for (int cell = 0; cell < shape_.nCells(); ++cell) {
        for (ShapeInCube::Face const& face : shape_.cells[static_cast<std::size_t>(cell)].faces)
          MakeFace(cube, cell, face);
      }
    });
    return std::move(slab_);
  }

 private:
  /// The faces whose owners are in the cubes before this one. Each cube owns the faces inside and those on its upper
  /// sides, and at the boundary those on its lower sides, too.
  std::int64_t CountFacesBefore(std::int64_t cube) const {
    std::int64_t nPerCube = shape_.nInnerFaces();
    for (int const side : {1, 3, 5}) nPerCube += shape_.nFacesOnSide(side);
    std::int64_t nFaces = cube * nPerCube;
    GridIndex const place = cube < grid_.Size() ? grid_.Place(cube) : GridIndex{0, 0, grid_.high[2]};
    for (std::size_t d = 0; d < 3; ++d) {
      GridBlock lowest = grid_;
      lowest.high[d] = 1;
      nFaces += lowest.CountBefore(place) * shape_.nFacesOnSide(2 * static_cast<int>(d));
    }
    return nFaces;
  }

  void PlaceNodes() {
    slab_.points.reserve(static_cast<std::size_t>(slab_.nodes.Size(rank_)));
    ForEachPlace(nodes_.grid(), slab_.nodes.First(rank_), slab_.nodes.End(rank_),
                 [this](GridIndex const& node) { slab_.points.push_back(nodes_.PlaceOf(node)); });
  }

  void ReserveFaces() {
    auto const n = static_cast<std::size_t>(slab_.faces.Size(rank_));
    slab_.faceStart.reserve(n + 1);
    slab_.faceNode.reserve(n * MostNodesOfFace());
    slab_.owner.reserve(n);
    slab_.neighbour.reserve(n);
    slab_.facePatch.reserve(n);
  }

  std::size_t MostNodesOfFace() const {
    std::size_t most = 0;
    for (ShapeInCube::Cell const& cell : shape_.cells) {
      for (ShapeInCube::Face const& face : cell.faces) most = std::max(most, face.corners.size());
    }
    return most;
  }

  /// Adds the face if the cell owns it.
  void MakeFace(GridIndex const& cube, int cell, ShapeInCube::Face const& face) {
    GridIndex const other = face.side < 0 ? cube : CubeAcross(cube, face.side);
    bool const atBoundary = !grid_.Contains(other);
    bool const owns = atBoundary || (face.side < 0 ? face.cellAcross > cell : face.side % 2 == 1);
    if (!owns) return;
    for (int const corner : face.corners) slab_.faceNode.push_back(nodes_.Number(CornerOf(cube, corner)));
    slab_.faceStart.push_back(slab_.faceNode.size());
    slab_.owner.push_back(CellNumber(cube, cell));
    slab_.neighbour.push_back(atBoundary ? -1 : CellNumber(other, face.cellAcross));
    slab_.facePatch.push_back(atBoundary ? face.side : -1);  // sides and patches have the same order
  }

  std::int64_t CellNumber(GridIndex const& cube, int cell) const {
    return static_cast<std::int64_t>(grid_.Offset(cube)) * shape_.nCells() + cell;
  }

  BoxNodes const nodes_;
  ShapeInCube const& shape_;
  GridBlock const grid_;
  BlockRanges const cubes_;
  int const rank_;
  MeshSlab slab_;
};

MeshSlab MakeDualSlab(BoxSpec const& spec, int rank, int nRanks) {
  BoxDualNumbers const numbers(spec);
  MeshSlab slab;
  slab.cells = BlockRanges::Even(numbers.nodes().Size(), nRanks);
  slab.nodes = BlockRanges::Even(numbers.nPoints(), nRanks);
  std::vector<std::int64_t> faceStarts;
  faceStarts.reserve(static_cast<std::size_t>(nRanks) + 1);
  for (int r = 0; r < nRanks; ++r) faceStarts.push_back(numbers.CountFacesBefore(slab.cells.First(r)));
  faceStarts.push_back(numbers.CountFacesBefore(slab.cells.nItems()));
  slab.faces = BlockRanges(std::move(faceStarts));
  slab.patches = BoxPatches();

  slab.points = PointsOfBoxDual(spec, slab.nodes.First(rank), slab.nodes.End(rank));
  auto const n = static_cast<std::size_t>(slab.faces.Size(rank));
  slab.faceStart.reserve(n + 1);
  slab.faceNode.reserve(36 * n / 7);  // a cube has 7 edges, and its tetrahedra together 36
  slab.owner.reserve(n);
  slab.neighbour.reserve(n);
  slab.facePatch.reserve(n);
  ForEachFaceOfBoxDual(spec, slab.cells.First(rank), slab.cells.End(rank), [&slab](BoxDualFace const& face) {
    slab.faceNode.insert(slab.faceNode.end(), face.nodes.begin(), face.nodes.end());
    slab.faceStart.push_back(slab.faceNode.size());
    slab.owner.push_back(face.owner);
    slab.neighbour.push_back(face.neighbour);
    slab.facePatch.push_back(face.patch);
  });
  return slab;
}

}  // namespace

MeshSlab MakeBoxSlab(BoxSpec const& spec, int rank, int nRanks) {
  CheckBoxSpec(spec, BoxText(spec));
  if (spec.shape == BoxSpec::Shape::Dual) return MakeDualSlab(spec, rank, nRanks);
  return BoxSlabMaker(spec, rank, nRanks).Make();
}

}  // namespace reference_host
