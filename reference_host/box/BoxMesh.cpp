#include "reference_host/box/BoxMesh.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "reference_host/box/BoxBlocks.h"
#include "reference_host/box/BoxDual.h"
#include "reference_host/box/BoxNodes.h"
#include "reference_host/box/BoxPieces.h"
#include "reference_host/box/BoxShapes.h"
#include "reference_host/mesh/DualMesh.h"
#include "reference_host/mesh/MeshError.h"

namespace reference_host {
namespace {

void CheckParts(BoxSpec const& spec, int nParts) {
  CheckBoxSpec(spec, BoxText(spec));
  std::int64_t const nCubes = CubesOf(spec).Size();
  if (nParts > nCubes) {
    throw MeshError(BoxText(spec) + ": cannot be divided among " + std::to_string(nParts) +
                    " ranks, since a rank needs a whole block of cells and there are " +
                    std::to_string(nCubes));
  }
}

/// Whether an int counts what a block of cubes and the layer around it have.
bool FitsInt(BoxSpec const& spec, GridBlock const& cubes) {
  GridBlock const shell = Grown(cubes, CubesOf(spec));
  ShapeInCube const& shape = ShapeTable(spec.shape);
  std::int64_t nFaces = shell.Size() * shape.nInnerFaces();
  for (std::size_t d = 0; d < 3; ++d) {
    nFaces += (shell.Length(d) + std::int64_t{1}) * (shell.Size() / shell.Length(d)) *
              shape.nFacesOnSide(2 * static_cast<int>(d));
  }
  return std::max({shell.Size() * shape.nCells(), shell.Nodes().Size(), nFaces}) <=
         std::numeric_limits<int>::max();
}

/// The cells that a part is made from are a little more than it has.
void CheckPartFits(BoxSpec const& spec, GridBisection const& bisection, int part, int nParts) {
  bool const isDual = spec.shape == BoxSpec::Shape::Dual;
  GridBlock const own = bisection.BlockOf(part);
  bool const fits = isDual ? FitsInt(PrimalOf(spec), CubesOfDualPart(spec, own)) : FitsInt(spec, own);
  if (fits) return;
  std::string const what = " has more cells, faces or nodes than a 32-bit number can count";
  if (nParts == 1) throw MeshError(BoxText(spec) + ": the box" + what);
  throw MeshError(BoxText(spec) + ": part " + std::to_string(part + 1) + " of " + std::to_string(nParts) +
                  what + "; more ranks have smaller parts");
}

GridBlock GridOfCells(BoxSpec const& spec) {
  return spec.shape == BoxSpec::Shape::Dual ? CubesOf(spec).Nodes() : CubesOf(spec);
}

/// Makes one part from its block of cubes and a shell of one layer of cubes around it, which contains the
/// halo cells.
class PartMaker {
 public:
  /// @param[in] bisection  tells the parts of the halo cells
  PartMaker(BoxSpec const& spec, GridBlock const& own, GridBisection const& bisection)
      : spec_(spec),
        nodes_(spec),
        shape_(ShapeTable(spec.shape)),
        grid_(CubesOf(spec)),
        bisection_(bisection),
        own_(own),
        shell_(Grown(own, grid_)),
        shellNodes_(shell_.Nodes()) {
    result_.patches = BoxPatches();
  }

  MeshPart Make() {
    NumberOwnedCells();
    NumberHaloCells();
    NumberNodes();
    ListHaloNodes();
    MakeFaces();
    return std::move(result_);
  }

 private:
  std::int64_t GlobalCell(GridIndex const& cube, int cell) const {
    return static_cast<std::int64_t>(grid_.Offset(cube)) * shape_.nCells() + cell;
  }

  /// Position of a cell of the shell in cellNumber_.
  std::size_t CellSlot(GridIndex const& cube, int cell) const {
    return shell_.Offset(cube) * shape_.cells.size() + static_cast<std::size_t>(cell);
  }

  /// Position of a node of the shell in nodeNumber_.
  std::size_t NodeSlot(GridIndex const& node) const { return shellNodes_.Offset(node); }

  void NumberOwnedCells() {
    cellNumber_.assign(static_cast<std::size_t>(shell_.Size() * shape_.nCells()), -1);
    result_.globalCell.reserve(static_cast<std::size_t>(own_.Size() * shape_.nCells()));
    own_.ForEach([this](GridIndex const& cube) {
      for (int cell = 0; cell < shape_.nCells(); ++cell) NumberCell(cube, cell);
    });
    result_.nOwned = static_cast<int>(result_.globalCell.size());
  }

  void NumberCell(GridIndex const& cube, int cell) {
    cellNumber_[CellSlot(cube, cell)] = static_cast<int>(result_.globalCell.size());
    result_.globalCell.push_back(GlobalCell(cube, cell));
  }

  void NumberHaloCells() {
    shell_.ForEach([this](GridIndex const& cube) {
      if (own_.Contains(cube)) return;
      for (int cell = 0; cell < shape_.nCells(); ++cell) {
        if (!TouchesOwnBlock(cube, cell)) continue;
        NumberCell(cube, cell);
        result_.haloPart.push_back(bisection_.PartOf(cube));
        result_.haloPeriod.push_back(0);
        haloCells_.push_back({cube, cell});
      }
    });
  }

  bool TouchesOwnBlock(GridIndex const& cube, int cell) const {
    for (ShapeInCube::Face const& face : shape_.cells[static_cast<std::size_t>(cell)].faces) {
      if (face.side >= 0 && own_.Contains(CubeAcross(cube, face.side))) return true;
    }
    return false;
  }

  void NumberNodes() {
    GridBlock const ownNodes = own_.Nodes();
    nodeNumber_.assign(static_cast<std::size_t>(shellNodes_.Size()), kAbsent);
    for (auto const& [cube, cell] : haloCells_) {
      for (int const corner : shape_.cells[static_cast<std::size_t>(cell)].corners) {
        nodeNumber_[NodeSlot(CornerOf(cube, corner))] = kPresent;
      }
    }
    shellNodes_.ForEach([&](GridIndex const& node) {
      int& number = nodeNumber_[NodeSlot(node)];
      if (number == kAbsent && !ownNodes.Contains(node)) return;
      number = static_cast<int>(result_.points.size());
      result_.globalNode.push_back(nodes_.Number(node));
      result_.points.push_back(nodes_.PlaceOf(node));
    });
  }

  void ListHaloNodes() {
    for (auto const& [cube, cell] : haloCells_) {
      for (int const corner : shape_.cells[static_cast<std::size_t>(cell)].corners) {
        result_.haloNode.push_back(nodeNumber_[NodeSlot(CornerOf(cube, corner))]);
      }
      result_.haloNodeStart.push_back(result_.haloNode.size());
    }
  }

  void MakeFaces() {
    ReserveFaces();
    shell_.ForEach([this](GridIndex const& cube) {
      for (int cell = 0; cell < shape_.nCells(); ++cell) {
        int const number = cellNumber_[CellSlot(cube, cell)];
        if (number < 0) continue;
        for (ShapeInCube::Face const& face : shape_.cells[static_cast<std::size_t>(cell)].faces) {
          MakeFace(cube, cell, number, face);
        }
      }
    });
  }

  // An upper bound: inner faces and one side of each pair for every cube, and the block's surface.
  void ReserveFaces() {
    auto const facesOf = [&](std::size_t d) {
      return (own_.Length(d) + std::int64_t{1}) * (own_.Size() / own_.Length(d));
    };
    std::int64_t const nFaces = own_.Size() * shape_.nInnerFaces() + facesOf(0) * shape_.nFacesOnSide(0) +
                                facesOf(1) * shape_.nFacesOnSide(2) + facesOf(2) * shape_.nFacesOnSide(4);
    auto const n = static_cast<std::size_t>(nFaces);
    result_.faceStart.reserve(n + 1);
    result_.faceNode.reserve(n * (spec_.shape == BoxSpec::Shape::Tet ? 3 : 4));
    result_.owner.reserve(n);
    result_.neighbour.reserve(n);
    result_.facePatch.reserve(n);
  }

  /// Adds the face if the cell is its owner and one of its two cells belongs to the part.
  void MakeFace(GridIndex const& cube, int cell, int number, ShapeInCube::Face const& face) {
    GridIndex const other = face.side < 0 ? cube : CubeAcross(cube, face.side);
    bool const atBoundary = face.side >= 0 && !grid_.Contains(other);
    int neighbour = -1;
    if (!atBoundary) {
      bool const owns = face.side < 0 ? face.cellAcross > cell : face.side % 2 == 1;
      if (!owns || !shell_.Contains(other)) return;
      neighbour = cellNumber_[CellSlot(other, face.cellAcross)];
    }
    bool const neighbourIsOwned = neighbour >= 0 && neighbour < result_.nOwned;
    if (number >= result_.nOwned && !neighbourIsOwned) return;

    for (int const corner : face.corners)
      result_.faceNode.push_back(nodeNumber_[NodeSlot(CornerOf(cube, corner))]);
    result_.faceStart.push_back(result_.faceNode.size());
    result_.owner.push_back(number);
    result_.neighbour.push_back(neighbour);
    result_.facePatch.push_back(atBoundary ? face.side : -1);  // sides and patches have the same order
  }

  static constexpr int kAbsent = -1;
  static constexpr int kPresent = -2;  // belongs to the part, but has no number yet

  BoxSpec const spec_;
  BoxNodes const nodes_;
  ShapeInCube const& shape_;
  GridBlock const grid_;
  GridBisection const bisection_;
  GridBlock const own_;    // cubes of this part
  GridBlock const shell_;  // own_ and a layer around it, within the box
  GridBlock const shellNodes_;
  std::vector<int> cellNumber_;  // in the part, by place in the shell; -1: neither owned nor halo
  std::vector<int> nodeNumber_;  // in the part, by place in the shell
  std::vector<std::pair<GridIndex, int>> haloCells_;  // cube and cell in it, in the order of their numbers
  MeshPart result_;
};

}  // namespace

std::vector<Patch> BoxPatches() {
  std::vector<Patch> patches;
  for (char const* name : {"inlet", "outlet", "wall_ymin", "wall_ymax", "wall_zmin", "wall_zmax"}) {
    patches.push_back({name, "", std::nullopt});
  }
  return patches;
}

std::int64_t BoxNodeCount(BoxSpec const& spec) {
  std::int64_t const nx = spec.nx, ny = spec.ny, nz = spec.nz;
  if (spec.shape != BoxSpec::Shape::Dual) return (nx + 1) * (ny + 1) * (nz + 1);
  // The points of a dual: centres of tetrahedra and boundary triangles, nodes on the edges of the box and the
  // midpoints between them.
  return 6 * nx * ny * nz + 4 * (nx * ny + ny * nz + nz * nx) + 8 * (nx + ny + nz) - 4;
}

FaceMesh WholeOf(MeshPart&& part) {
  FaceMesh mesh;
  mesh.points = std::move(part.points);
  mesh.faceStart = std::move(part.faceStart);
  mesh.faceNode = std::move(part.faceNode);
  mesh.owner = std::move(part.owner);
  mesh.neighbour = std::move(part.neighbour);
  mesh.facePatch = std::move(part.facePatch);
  mesh.patches = std::move(part.patches);
  mesh.nCells = static_cast<int>(part.globalCell.size());
  return mesh;
}

FaceMesh MakeBox(BoxSpec const& spec) {
  if (spec.shape == BoxSpec::Shape::Dual) return MakeDual(MakeBox(PrimalOf(spec)));
  return WholeOf(MakeBoxPart(spec, 0, 1));
}

MeshPart MakeBoxBlock(BoxSpec const& spec, GridBlock const& cubes) {
  return PartMaker(spec, cubes, GridBisection(CubesOf(spec), 1)).Make();
}

MeshPart MakeBoxPart(BoxSpec const& spec, int part, int nParts) {
  CheckParts(spec, nParts);
  GridBisection const bisection(GridOfCells(spec), nParts);
  CheckPartFits(spec, bisection, part, nParts);
  MeshPart result = spec.shape == BoxSpec::Shape::Dual
                        ? MakeBoxDualPart(spec, bisection, part, nParts)
                        : PartMaker(spec, bisection.BlockOf(part), bisection).Make();
  result.part = part;
  result.nParts = nParts;
  return result;
}

void CheckBoxPartsFit(BoxSpec const& spec, int nParts) {
  GridBlock const grid = GridOfCells(spec);
  if (nParts > grid.Size()) return;
  GridBisection const bisection(grid, nParts);
  for (int part = 0; part < nParts; ++part) CheckPartFits(spec, bisection, part, nParts);
}

std::vector<int> BoxPartOfCell(BoxSpec const& spec, int nParts) {
  CheckParts(spec, nParts);
  bool const isDual = spec.shape == BoxSpec::Shape::Dual;
  GridBlock const grid = GridOfCells(spec);
  GridBisection const bisection(grid, nParts);
  std::size_t const cellsInCube = isDual ? 1 : ShapeTable(spec.shape).cells.size();
  std::vector<int> partOfCell;
  grid.ForEach([&](GridIndex const& cube) {
    partOfCell.insert(partOfCell.end(), cellsInCube, bisection.PartOf(cube));
  });
  return partOfCell;
}

}  // namespace reference_host
