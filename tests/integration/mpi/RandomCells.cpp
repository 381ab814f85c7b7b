#include "RandomCells.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>
#include <random>
#include <utility>

namespace reference_host::test {
namespace {

/// Divides a cube with these corners, in the order of a hexahedron, into cells of one kind.
void AddCube(std::array<int, 8> const& n, int kind, StandardCells& mesh) {
  auto const add = [&](CellShape shape, std::vector<int> const& positions) {
    std::vector<int> nodes;
    for (int const p : positions) nodes.push_back(p < 8 ? n[p] : static_cast<int>(mesh.points.size()) - 1);
    mesh.cells.push_back({shape, nodes});
  };
  if (kind == 0) {
    add(CellShape::Hexahedron, {0, 1, 2, 3, 4, 5, 6, 7});
  } else if (kind == 1) {
    add(CellShape::Prism, {0, 1, 2, 4, 5, 6});
    add(CellShape::Prism, {0, 2, 3, 4, 6, 7});
  } else if (kind == 2) {  // around the diagonal from 0 to 6
    for (auto const& [a, b] : {std::pair(1, 2), {2, 3}, {3, 7}, {7, 4}, {4, 5}, {5, 1}}) {
      add(CellShape::Tetrahedron, {0, a, b, 6});
    }
  } else {  // around a node in the middle, position 8
    Point centre = {0, 0, 0};
    for (int const node : n) {
      for (int d = 0; d < 3; ++d) centre[d] += mesh.points[node][d] / 8;
    }
    mesh.points.push_back(centre);
    for (auto const& base :
         {std::array{0, 1, 2, 3}, {4, 7, 6, 5}, {0, 4, 5, 1}, {1, 5, 6, 2}, {2, 6, 7, 3}, {3, 7, 4, 0}}) {
      add(CellShape::Pyramid, {base[0], base[1], base[2], base[3], 8});
    }
  }
}

}  // namespace

StandardCells RandomCells(int m, std::vector<int> const& kinds, unsigned seed, bool shuffled) {
  std::mt19937 random(seed);
  auto const below = [&](std::size_t n) { return static_cast<int>(random() % n); };
  StandardCells mesh;
  auto const node = [m](int i, int j, int k) { return i + (m + 1) * (j + (m + 1) * k); };
  for (int k = 0; k <= m; ++k) {
    for (int j = 0; j <= m; ++j) {
      for (int i = 0; i <= m; ++i) {
        auto const moved = [&](int x) { return x + 0.001 * below(100); };
        mesh.points.push_back({moved(i), moved(j), moved(k)});
      }
    }
  }
  for (int k = 0; k < m; ++k) {
    for (int j = 0; j < m; ++j) {
      for (int i = 0; i < m; ++i) {
        AddCube({node(i, j, k), node(i + 1, j, k), node(i + 1, j + 1, k), node(i, j + 1, k),
                 node(i, j, k + 1), node(i + 1, j, k + 1), node(i + 1, j + 1, k + 1), node(i, j + 1, k + 1)},
                kinds[below(kinds.size())], mesh);
      }
    }
  }
  for (StandardCell& cell : mesh.cells) {  // swaps two corners of a triangle: inside out, and the same faces
    if (cell.shape == CellShape::Tetrahedron && below(4) == 0) std::swap(cell.nodes[0], cell.nodes[1]);
  }
  for (int i = 0; i < 5; ++i) mesh.points.push_back({-1.0 - i, 0, 0});

  for (StandardCell const& cell : mesh.cells) {
    for (int local = 0; local < FaceCount(cell.shape); ++local) {
      ShortFace<int> nodes = FaceOfCell(cell.shape, local, cell.nodes.data());
      if (below(3) > 0) continue;
      std::rotate(nodes.begin(), nodes.begin() + below(3), nodes.begin() + NodeCountOfFace(nodes));
      if (below(2) == 0) std::reverse(nodes.begin(), nodes.begin() + NodeCountOfFace(nodes));
      for (int n = below(8); n < 2; ++n) mesh.surfaces.push_back({nodes, below(1000)});
      mesh.surfaces.push_back({nodes, below(1000)});
    }
  }
  mesh.surfaces.push_back({{0, node(1, 0, 0), static_cast<int>(mesh.points.size()) - 1, -1}, 3});

  if (shuffled) {
    std::vector<int> newNumber(mesh.points.size());
    std::iota(newNumber.begin(), newNumber.end(), 0);
    std::shuffle(newNumber.begin(), newNumber.end(), random);
    std::vector<Point> points(mesh.points.size());
    for (std::size_t n = 0; n < points.size(); ++n) points[newNumber[n]] = mesh.points[n];
    mesh.points = std::move(points);
    for (StandardCell& cell : mesh.cells) {
      for (int& n : cell.nodes) n = newNumber[n];
    }
    for (SurfaceElement& surface : mesh.surfaces) {
      for (int i = 0; i < NodeCountOfFace(surface.nodes); ++i) surface.nodes[i] = newNumber[surface.nodes[i]];
    }
    std::shuffle(mesh.cells.begin(), mesh.cells.end(), random);
    std::shuffle(mesh.surfaces.begin(), mesh.surfaces.end(), random);
  }
  return mesh;
}

}  // namespace reference_host::test
