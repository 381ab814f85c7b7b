#include "tests/support/mesh/Hexahedra.h"

#include <random>

namespace zyn_test {
namespace {

using Random = std::mt19937_64;

Point Middle(TestMesh const& mesh, std::vector<int> const& nodes) {
  Point sum;
  for (int const n : nodes) {
    Point const& p = mesh.nodes[static_cast<std::size_t>(n)];
    sum = {sum.x + p.x, sum.y + p.y, sum.z + p.z};
  }
  auto const count = static_cast<double>(nodes.size());
  return {sum.x / count, sum.y / count, sum.z / count};
}

/// The numbers of nodes and cells in a box of cubes.
struct Lattice {
  HexahedraOptions const& o;

  int Node(int i, int j, int k) const { return (k * (o.ny + 1) + j) * (o.nx + 1) + i + 1; }
  int Cell(int i, int j, int k) const { return (k * o.ny + j) * o.nx + i + 1; }

  std::vector<int> CellNodes(int i, int j, int k) const {
    return {Node(i, j, k),     Node(i + 1, j, k),     Node(i, j + 1, k),     Node(i + 1, j + 1, k),
            Node(i, j, k + 1), Node(i + 1, j, k + 1), Node(i, j + 1, k + 1), Node(i + 1, j + 1, k + 1)};
  }
  std::vector<int> FaceX(int i, int j, int k) const {
    return {Node(i, j, k), Node(i, j + 1, k), Node(i, j + 1, k + 1), Node(i, j, k + 1)};
  }
  std::vector<int> FaceY(int i, int j, int k) const {
    return {Node(i, j, k), Node(i + 1, j, k), Node(i + 1, j, k + 1), Node(i, j, k + 1)};
  }
  std::vector<int> FaceZ(int i, int j, int k) const {
    return {Node(i, j, k), Node(i + 1, j, k), Node(i + 1, j + 1, k), Node(i, j + 1, k)};
  }

  template <typename Visit>
  void ForEachCube(Visit visit) const {
    for (int k = 0; k < o.nz; ++k)
      for (int j = 0; j < o.ny; ++j)
        for (int i = 0; i < o.nx; ++i) visit(i, j, k);
  }
};

void AddNodes(TestMesh& mesh, HexahedraOptions const& o) {
  Random random(o.seed);
  std::uniform_real_distribution<double> shift(-o.jitter, o.jitter);
  for (int k = 0; k <= o.nz; ++k)
    for (int j = 0; j <= o.ny; ++j)
      for (int i = 0; i <= o.nx; ++i) {
        double const dx = shift(random), dy = shift(random), dz = shift(random);
        mesh.AddNode({o.edge * (i + dx), o.edge * (j + dy), o.edge * (k + dz)});
      }
}

void AddInnerFaces(TestMesh& mesh, Lattice const& lattice) {
  HexahedraOptions const& o = lattice.o;
  lattice.ForEachCube([&](int i, int j, int k) {
    int const c = lattice.Cell(i, j, k);
    if (i + 1 < o.nx) mesh.JoinInterior(c, lattice.Cell(i + 1, j, k));
    if (j + 1 < o.ny) mesh.JoinInterior(c, lattice.Cell(i, j + 1, k));
    if (k + 1 < o.nz) mesh.JoinInterior(c, lattice.Cell(i, j, k + 1));
  });
}

void AddSides(TestMesh& mesh, Lattice const& lattice) {
  auto const add = [&mesh](Group group, int cell, std::vector<int> const& nodes) {
    Point const face = Middle(mesh, nodes), own = mesh.Centre(cell);
    mesh.AddSide(group, cell, face, {2 * face.x - own.x, 2 * face.y - own.y, 2 * face.z - own.z}, nodes);
  };
  HexahedraOptions const& o = lattice.o;
  lattice.ForEachCube([&](int i, int j, int k) {
    int const c = lattice.Cell(i, j, k);
    if (i == 0) add(kInlet, c, lattice.FaceX(i, j, k));
    if (i + 1 == o.nx) add(kOutlet, c, lattice.FaceX(i + 1, j, k));
    if (j == 0) add(kWall, c, lattice.FaceY(i, j, k));
    if (j + 1 == o.ny) add(kPartition, c, lattice.FaceY(i, j + 1, k));
    if (k == 0) add(kSymmetry, c, lattice.FaceZ(i, j, k));
    if (k + 1 == o.nz) add(kWall, c, lattice.FaceZ(i, j, k + 1));
  });
}

/// Takes the interior cells out of the rows of all nodes on the surface.
void ListOuterCellsAlone(TestMesh& mesh) {
  for (std::vector<int>& row : mesh.nodeCells) {
    if (row.empty() || row.back() <= mesh.nInnerCells) continue;
    std::vector<int> outer;
    for (int const c : row)
      if (c > mesh.nInnerCells) outer.push_back(c);
    row = outer;
  }
}

}  // namespace

TestMesh Hexahedra(HexahedraOptions const& options) {
  TestMesh mesh;
  Lattice const lattice{options};
  AddNodes(mesh, options);
  lattice.ForEachCube([&](int i, int j, int k) {
    std::vector<int> const nodes = lattice.CellNodes(i, j, k);
    mesh.AddCell(Middle(mesh, nodes), nodes);
  });
  AddInnerFaces(mesh, lattice);
  AddSides(mesh, lattice);
  if (!options.listInteriorCellsAtBoundaryNodes) ListOuterCellsAlone(mesh);
  return mesh;
}

}  // namespace zyn_test
