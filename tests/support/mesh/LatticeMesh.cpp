#include "tests/support/mesh/LatticeMesh.h"

#include <algorithm>
#include <array>
#include <map>
#include <numeric>
#include <set>
#include <utility>

namespace zyn_test {
namespace {

using NodeList = std::vector<int>;

Point operator+(Point a, Point b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
Point operator-(Point a, Point b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
Point operator*(double s, Point a) { return {s * a.x, s * a.y, s * a.z}; }
double Dot(Point a, Point b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
Point Cross(Point a, Point b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// Nodes and, per cell, faces as lists of nodes. Everything counts from 0 here.
struct Pieces {
  std::vector<Point> nodes;
  std::vector<std::vector<NodeList>> cells;
};

Pieces EmptyLattice(LatticeOptions const& o, Random& random) {
  std::uniform_real_distribution<double> shift(-o.jitter, o.jitter);
  Pieces pieces;
  for (int k = 0; k <= o.nz; ++k)
    for (int j = 0; j <= o.ny; ++j)
      for (int i = 0; i <= o.nx; ++i) {
        double const dx = shift(random), dy = shift(random), dz = shift(random);
        pieces.nodes.push_back({o.size.x * (i + dx), o.size.y * (j + dy), o.size.z * (k + dz)});
      }
  return pieces;
}

// Corners of a cube: bit 0 is +x, bit 1 is +y, bit 2 is +z.
using Cube = std::array<int, 8>;
constexpr int kCubeFaces[6][4] = {{0, 2, 6, 4}, {1, 3, 7, 5}, {0, 1, 5, 4},
                                  {2, 3, 7, 6}, {0, 1, 3, 2}, {4, 5, 7, 6}};

NodeList Pick(Cube const& cube, std::initializer_list<int> corners) {
  NodeList nodes;
  for (int const corner : corners) nodes.push_back(cube[static_cast<std::size_t>(corner)]);
  return nodes;
}

void AddHexahedron(Pieces& pieces, Cube const& cube) {
  std::vector<NodeList> faces;
  for (auto const& f : kCubeFaces) faces.push_back(Pick(cube, {f[0], f[1], f[2], f[3]}));
  pieces.cells.push_back(faces);
}

// Cut by the plane of the corners 0, 3, 4, 7.
void AddPrisms(Pieces& pieces, Cube const& cube) {
  NodeList const cut = Pick(cube, {0, 3, 7, 4});
  pieces.cells.push_back({Pick(cube, {0, 1, 3}), Pick(cube, {4, 5, 7}), Pick(cube, {0, 1, 5, 4}),
                          Pick(cube, {1, 3, 7, 5}), cut});
  pieces.cells.push_back({Pick(cube, {0, 3, 2}), Pick(cube, {4, 7, 6}), Pick(cube, {0, 2, 6, 4}),
                          Pick(cube, {2, 3, 7, 6}), cut});
}

void AddPyramids(Pieces& pieces, Cube const& cube) {
  Point middle;
  for (int const n : cube) middle = middle + 0.125 * pieces.nodes[static_cast<std::size_t>(n)];
  int const apex = static_cast<int>(pieces.nodes.size());
  pieces.nodes.push_back(middle);
  for (auto const& f : kCubeFaces) {
    NodeList const base = Pick(cube, {f[0], f[1], f[2], f[3]});
    std::vector<NodeList> faces = {base};
    for (std::size_t k = 0; k < 4; ++k) faces.push_back({base[k], base[(k + 1) % 4], apex});
    pieces.cells.push_back(faces);
  }
}

// The six tetrahedra around the diagonal 0-7: one per order in which x, y and z are stepped.
void AddTetrahedra(Pieces& pieces, Cube const& cube) {
  std::array<int, 3> steps = {1, 2, 4};
  do {
    int const a = steps[0], b = steps[0] + steps[1];
    pieces.cells.push_back(
        {Pick(cube, {0, a, b}), Pick(cube, {0, a, 7}), Pick(cube, {0, b, 7}), Pick(cube, {a, b, 7})});
  } while (std::next_permutation(steps.begin(), steps.end()));
}

void AddCells(Pieces& pieces, Cube const& cube, Cells cells, Random& random) {
  switch (cells) {
    case Cells::Hexahedra:
      return AddHexahedron(pieces, cube);
    case Cells::Prisms:
      return AddPrisms(pieces, cube);
    case Cells::Pyramids:
      return AddPyramids(pieces, cube);
    case Cells::Tetrahedra:
    case Cells::Polyhedra:
      return AddTetrahedra(pieces, cube);
    case Cells::HexaPyramids:
      return random() % 2 == 0 ? AddHexahedron(pieces, cube) : AddPyramids(pieces, cube);
  }
}

Pieces CutLattice(LatticeOptions const& o, Random& random) {
  Pieces pieces = EmptyLattice(o, random);
  for (int k = 0; k < o.nz; ++k)
    for (int j = 0; j < o.ny; ++j)
      for (int i = 0; i < o.nx; ++i) {
        Cube cube{};
        for (int corner = 0; corner < 8; ++corner) {
          int const x = i + (corner & 1), y = j + ((corner >> 1) & 1), z = k + (corner >> 2);
          cube[static_cast<std::size_t>(corner)] = (z * (o.ny + 1) + y) * (o.nx + 1) + x;
        }
        AddCells(pieces, cube, o.cells, random);
      }
  return pieces;
}

/// A face of the pieces: its nodes and the piece on either side, -1 for none.
struct PieceFace {
  NodeList nodes;
  int first = -1, second = -1;
};

std::vector<PieceFace> FacesOf(Pieces const& pieces) {
  std::map<NodeList, std::size_t> known;
  std::vector<PieceFace> faces;
  for (std::size_t c = 0; c < pieces.cells.size(); ++c) {
    for (NodeList const& nodes : pieces.cells[c]) {
      NodeList key = nodes;
      std::sort(key.begin(), key.end());
      auto const found = known.emplace(key, faces.size());
      if (found.second)
        faces.push_back({nodes, static_cast<int>(c), -1});
      else
        faces[found.first->second].second = static_cast<int>(c);
    }
  }
  return faces;
}

/// The cell, from 1, that each piece belongs to: itself, or a clump of about four pieces.
std::vector<int> CellsOfPieces(Pieces const& pieces, std::vector<PieceFace> const& faces, Cells cells,
                               Random& random) {
  std::vector<int> root(pieces.cells.size());
  std::iota(root.begin(), root.end(), 0);
  auto const find = [&root](int c) {
    while (root[static_cast<std::size_t>(c)] != c) c = root[static_cast<std::size_t>(c)];
    return c;
  };
  if (cells == Cells::Polyhedra) {
    for (PieceFace const& face : faces) {
      if (face.second >= 0 && random() % 5 < 2)
        root[static_cast<std::size_t>(find(face.second))] = find(face.first);
    }
  }
  std::map<int, int> number;
  std::vector<int> result;
  for (std::size_t c = 0; c < root.size(); ++c)
    result.push_back(
        number.emplace(find(static_cast<int>(c)), static_cast<int>(number.size()) + 1).first->second);
  return result;
}

Point Middle(Pieces const& pieces, NodeList const& nodes) {
  Point sum;
  for (int const n : nodes) sum = sum + pieces.nodes[static_cast<std::size_t>(n)];
  return (1.0 / static_cast<double>(nodes.size())) * sum;
}

Point Area(Pieces const& pieces, NodeList const& nodes, Point outward) {
  Point sum;
  Point const o = pieces.nodes[static_cast<std::size_t>(nodes[0])];
  for (std::size_t k = 1; k + 1 < nodes.size(); ++k) {
    Point const a = pieces.nodes[static_cast<std::size_t>(nodes[k])];
    Point const b = pieces.nodes[static_cast<std::size_t>(nodes[k + 1])];
    sum = sum + 0.5 * Cross(a - o, b - o);
  }
  return Dot(sum, outward) < 0.0 ? -1.0 * sum : sum;
}

void AddInteriorCells(TestMesh& mesh, Pieces const& pieces, std::vector<int> const& cellOf) {
  int const nCell = *std::max_element(cellOf.begin(), cellOf.end());
  std::vector<NodeList> corners(static_cast<std::size_t>(nCell) + 1);
  for (std::size_t p = 0; p < cellOf.size(); ++p) {
    NodeList& list = corners[static_cast<std::size_t>(cellOf[p])];
    for (NodeList const& face : pieces.cells[p]) list.insert(list.end(), face.begin(), face.end());
  }
  for (int c = 1; c <= nCell; ++c) mesh.AddInteriorCell(Middle(pieces, corners[static_cast<std::size_t>(c)]));
}

/// The group of a boundary face: the side of the box that all its lattice coordinates lie on.
Group GroupOf(LatticeOptions const& o, NodeList const& nodes) {
  auto const all = [&](auto coordinate, int value) {
    return std::all_of(nodes.begin(), nodes.end(), [&](int n) { return coordinate(n) == value; });
  };
  auto const x = [&o](int n) { return n % (o.nx + 1); };
  auto const y = [&o](int n) { return n / (o.nx + 1) % (o.ny + 1); };
  auto const z = [&o](int n) { return n / ((o.nx + 1) * (o.ny + 1)); };
  if (all(x, 0)) return kInlet;
  if (all(x, o.nx)) return kOutlet;
  if (all(y, 0)) return kWall;
  if (all(y, o.ny)) return kPartition;
  if (all(z, 0)) return kSymmetry;
  return kWall;
}

NodeList FromOne(NodeList const& nodes) {
  NodeList result;
  for (int const n : nodes) result.push_back(n + 1);
  return result;
}

void AddInnerFace(TestMesh& mesh, Pieces const& pieces, PieceFace const& face, int a, int b) {
  Face inner;
  inner.cv = a;
  inner.other = b;
  inner.centre = Middle(pieces, face.nodes);
  inner.area = Area(pieces, face.nodes, mesh.Centre(b) - mesh.Centre(a));
  mesh.AddFace(kInner, inner);
}

int AddBoundaryFace(TestMesh& mesh, LatticeOptions const& o, Pieces const& pieces, PieceFace const& face,
                    int c) {
  Point const centre = Middle(pieces, face.nodes);
  Point const outward = centre - mesh.Centre(c);
  Group const group = GroupOf(o, face.nodes);
  int const ghost = mesh.AddSide(group, c, centre, centre + outward);
  mesh.Of(group).back().area = Area(pieces, face.nodes, outward);
  mesh.Of(group).back().nodes = FromOne(face.nodes);
  return ghost;
}

void AddFaces(TestMesh& mesh, LatticeOptions const& o, Pieces const& pieces, std::vector<int> const& cellOf,
              std::vector<PieceFace> faces, Random& random) {
  std::vector<std::set<int>> around(pieces.nodes.size() + 1);
  std::shuffle(faces.begin(), faces.end(), random);  // so that the outer cells of the groups are mixed
  for (PieceFace const& face : faces) {
    int const a = cellOf[static_cast<std::size_t>(face.first)];
    int b = a;
    if (face.second < 0) {
      b = AddBoundaryFace(mesh, o, pieces, face, a);
    } else {
      b = cellOf[static_cast<std::size_t>(face.second)];
      if (a != b) AddInnerFace(mesh, pieces, face, a, b);
    }
    for (int const n : FromOne(face.nodes)) around[static_cast<std::size_t>(n)].insert({a, b});
  }
  for (std::size_t n = 1; n < around.size(); ++n)
    mesh.nodeCells.emplace_back(around[n].begin(), around[n].end());
}

}  // namespace

std::string Name(Cells cells) {
  char const* const names[] = {"hexahedra",  "prisms",    "pyramids",
                               "tetrahedra", "polyhedra", "hexahedra and pyramids"};
  return names[static_cast<int>(cells)];
}

TestMesh LatticeMesh(LatticeOptions const& options) {
  Random random(options.seed);
  Pieces const pieces = CutLattice(options, random);
  std::vector<PieceFace> const faces = FacesOf(pieces);
  std::vector<int> const cellOf = CellsOfPieces(pieces, faces, options.cells, random);
  TestMesh mesh;
  AddInteriorCells(mesh, pieces, cellOf);
  AddFaces(mesh, options, pieces, cellOf, faces, random);
  if (options.shuffleNeighbours) {
    for (int c = 1; c <= mesh.nInnerCells; ++c)
      std::shuffle(mesh.Neighbours(c).begin(), mesh.Neighbours(c).end(), random);
  }
  return mesh;
}

void AddOddities(TestMesh& mesh, Random& random) {
  for (int c = 1; c <= mesh.nInnerCells; ++c) {
    std::vector<int>& row = mesh.Neighbours(c);
    auto const position = [&] {
      return row.begin() + static_cast<std::ptrdiff_t>(random() % (row.size() + 1));
    };
    switch (random() % 8) {
      case 0:
      case 1: {
        int const member = row[random() % row.size()];  // may come to stand next to itself or far away
        row.insert(position(), member);
        break;
      }
      case 2:
        row.insert(position(), c);
        break;
      case 3:
        if (random() % 4 == 0) row.clear();
        break;
      default:
        break;
    }
  }
  if (!mesh.wall.empty() && !mesh.inlet.empty()) mesh.wall.back().other = mesh.inlet.front().other;
}

}  // namespace zyn_test
