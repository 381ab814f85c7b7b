#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <random>
#include <utility>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"
#include "reference_host/mesh/Vector3.h"

/// Small meshes of the unit cube for tests, of every kind of cell. Patches: "inlet" x=0, "outlet" x=1, "wall"
/// y=0 and z=0, z=1, "symmetry" y=1.
namespace test_meshes {

using reference_host::BoundaryGroup;
using reference_host::Difference;
using reference_host::FaceMesh;
using reference_host::Point;

using Face = std::vector<int>;  ///< nodes in order around the face
using Cell = std::vector<Face>;

/// Joins cells given by their faces to a mesh. The faces of a cell may have either orientation: the builder
/// turns them outwards, which works for cells that are star-shaped about the average of their nodes.
class Builder {
 public:
  int AddPoint(Point const& point) {
    mesh_.points.push_back(point);
    return static_cast<int>(mesh_.points.size()) - 1;
  }

  void AddCell(Cell const& cell) {
    int const c = mesh_.nCells++;
    Point const inside = Average(cell);
    for (Face face : cell) {
      if (!TurnsOutwards(face, inside)) std::reverse(face.begin(), face.end());
      AddFace(c, face);
    }
  }

  FaceMesh Finish() {
    mesh_.patches = {{"inlet", "", BoundaryGroup::Inlet},
                     {"outlet", "", BoundaryGroup::Outlet},
                     {"wall", "", BoundaryGroup::Wall},
                     {"symmetry", "", BoundaryGroup::Symmetry}};
    for (int f = 0; f < mesh_.nFaces(); ++f) {
      if (mesh_.neighbour[f] < 0) mesh_.facePatch[f] = PatchOf(f);
    }
    return std::move(mesh_);
  }

 private:
  Point Average(Cell const& cell) const {
    Point sum = {0, 0, 0};
    int n = 0;
    for (Face const& face : cell) {
      for (int const node : face) {
        sum = reference_host::Sum(sum, mesh_.points[node]);
        ++n;
      }
    }
    return reference_host::Scaled(1.0 / n, sum);
  }

  bool TurnsOutwards(Face const& face, Point const& inside) const {
    Point area = {0, 0, 0};
    Point const& first = mesh_.points[face[0]];
    for (std::size_t i = 2; i < face.size(); ++i) {
      area = reference_host::Sum(area, reference_host::Cross(Difference(mesh_.points[face[i - 1]], first),
                                                             Difference(mesh_.points[face[i]], first)));
    }
    return reference_host::Dot(area, Difference(first, inside)) > 0;
  }

  void AddFace(int c, Face const& face) {
    Face key = face;
    std::sort(key.begin(), key.end());
    auto const [found, isNew] = faceOfNodes_.emplace(key, mesh_.nFaces());
    if (!isNew) {
      mesh_.neighbour[found->second] = c;
      return;
    }
    mesh_.faceNode.insert(mesh_.faceNode.end(), face.begin(), face.end());
    mesh_.faceStart.push_back(mesh_.faceNode.size());
    mesh_.owner.push_back(c);
    mesh_.neighbour.push_back(-1);
    mesh_.facePatch.push_back(-1);
  }

  bool LiesIn(int f, int direction, double value) const {
    for (std::size_t i = mesh_.faceStart[f]; i < mesh_.faceStart[f + 1]; ++i) {
      if (mesh_.points[mesh_.faceNode[i]][direction] != value) return false;
    }
    return true;
  }

  int PatchOf(int f) const {
    if (LiesIn(f, 0, 0.0)) return 0;
    if (LiesIn(f, 0, 1.0)) return 1;
    if (LiesIn(f, 1, 1.0)) return 3;
    return LiesIn(f, 1, 0.0) || LiesIn(f, 2, 0.0) || LiesIn(f, 2, 1.0) ? 2 : -1;
  }

  FaceMesh mesh_;
  std::map<Face, int> faceOfNodes_;
};

/// The points of a grid of nx x ny x nz boxes in the unit cube.
class Grid {
 public:
  Grid(Builder& builder, int nx, int ny, int nz) : nx_(nx), ny_(ny) {
    for (int k = 0; k <= nz; ++k) {
      for (int j = 0; j <= ny; ++j) {
        for (int i = 0; i <= nx; ++i) builder.AddPoint({1.0 * i / nx, 1.0 * j / ny, 1.0 * k / nz});
      }
    }
  }

  int Node(int i, int j, int k) const { return (k * (ny_ + 1) + j) * (nx_ + 1) + i; }

  /// Corners of a box: bit 0 of the position is x, bit 1 y, bit 2 z.
  std::vector<int> Corners(int i, int j, int k) const {
    std::vector<int> v;
    for (int b = 0; b < 8; ++b) v.push_back(Node(i + (b & 1), j + ((b >> 1) & 1), k + (b >> 2)));
    return v;
  }

 private:
  int nx_, ny_;
};

inline Cell Hex(std::vector<int> const& v) {
  return {{v[0], v[2], v[6], v[4]}, {v[1], v[3], v[7], v[5]}, {v[0], v[1], v[5], v[4]},
          {v[2], v[3], v[7], v[6]}, {v[0], v[1], v[3], v[2]}, {v[4], v[5], v[7], v[6]}};
}

inline Cell Tet(int a, int b, int c, int d) { return {{a, b, c}, {a, b, d}, {a, c, d}, {b, c, d}}; }

inline Cell Pyramid(Face const& base, int top) {
  Cell cell = {base};
  for (std::size_t i = 0; i < base.size(); ++i) cell.push_back({base[i], base[(i + 1) % base.size()], top});
  return cell;
}

/// A prism over the triangle with the given corner positions (0..3) at the bottom of a box.
inline Cell Prism(std::vector<int> const& v, int a, int b, int c) {
  return {{v[a], v[b], v[c]},
          {v[a + 4], v[b + 4], v[c + 4]},
          {v[a], v[b], v[b + 4], v[a + 4]},
          {v[b], v[c], v[c + 4], v[b + 4]},
          {v[c], v[a], v[a + 4], v[c + 4]}};
}

inline void AddTwoPrisms(Builder& builder, std::vector<int> const& v) {
  builder.AddCell(Prism(v, 0, 1, 3));
  builder.AddCell(Prism(v, 0, 3, 2));
}

/// Six tetrahedra around the diagonal 0-7, one per order of the directions; neighbouring boxes fit.
inline void AddSixTets(Builder& builder, std::vector<int> const& v) {
  for (auto const& [first, second] : {std::pair{1, 3}, std::pair{1, 5}, std::pair{2, 3}, std::pair{2, 6},
                                      std::pair{4, 5}, std::pair{4, 6}}) {
    builder.AddCell(Tet(v[0], v[first], v[second], v[7]));
  }
}

/// Six pyramids around the centre of a box. `splitTop` makes two tetrahedra of the upper one.
inline void AddSixPyramids(Builder& builder, std::vector<int> const& v, Point const& middle,
                           bool splitTop = false) {
  int const top = builder.AddPoint(middle);
  Cell const hex = Hex(v);
  for (std::size_t side = 0; side < hex.size(); ++side) {
    Face const& base = hex[side];
    if (splitTop && side == 5) {
      builder.AddCell(Tet(base[0], base[1], base[2], top));
      builder.AddCell(Tet(base[0], base[2], base[3], top));
    } else {
      builder.AddCell(Pyramid(base, top));
    }
  }
}

/// Calls addBox(builder, corners, middle, i, j, k) for each box of the grid.
template <class AddBox>
FaceMesh BoxByBox(int nx, int ny, int nz, AddBox const& addBox) {
  Builder builder;
  Grid const grid(builder, nx, ny, nz);
  for (int k = 0; k < nz; ++k) {
    for (int j = 0; j < ny; ++j) {
      for (int i = 0; i < nx; ++i) {
        addBox(builder, grid.Corners(i, j, k), Point{(i + 0.5) / nx, (j + 0.5) / ny, (k + 0.5) / nz}, i, j,
               k);
      }
    }
  }
  return builder.Finish();
}

inline FaceMesh HexBox(int nx, int ny, int nz) {
  return BoxByBox(nx, ny, nz, [](Builder& builder, std::vector<int> const& v, Point const&, int, int, int) {
    builder.AddCell(Hex(v));
  });
}

inline FaceMesh TetBox(int n) {
  return BoxByBox(n, n, n, [](Builder& builder, std::vector<int> const& v, Point const&, int, int, int) {
    AddSixTets(builder, v);
  });
}

inline FaceMesh PrismBox(int n) {
  return BoxByBox(n, n, n, [](Builder& builder, std::vector<int> const& v, Point const&, int, int, int) {
    AddTwoPrisms(builder, v);
  });
}

inline FaceMesh PyramidBox(int n) {
  return BoxByBox(n, n, n,
                  [](Builder& builder, std::vector<int> const& v, Point const& middle, int, int, int) {
                    AddSixPyramids(builder, v, middle);
                  });
}

/// Columns of hexahedra, of prisms and of pyramids side by side. The pyramids at the top are cut into
/// tetrahedra.
inline FaceMesh MixedBox(int n) {
  return BoxByBox(n, n, n,
                  [n](Builder& builder, std::vector<int> const& v, Point const& middle, int i, int j, int k) {
                    if ((i + j) % 3 == 0) builder.AddCell(Hex(v));
                    if ((i + j) % 3 == 1) AddTwoPrisms(builder, v);
                    if ((i + j) % 3 == 2) AddSixPyramids(builder, v, middle, k == n - 1);
                  });
}

/// Coarse boxes at low x, boxes of half the size at high x, as in a castellated mesh. A coarse cell at the
/// step has four small faces there, and adjacent faces of five nodes, three of them collinear.
///
///     +-------+---+---+
///     |       |   |   |
///     |       +---+---+      n x n coarse cells, each with 2 x 2 x 2 fine ones beside it
///     |       |   |   |
///     +-------+---+---+
inline FaceMesh PolyBox(int n) {
  Builder builder;
  Grid const grid(builder, 4, 2 * n, 2 * n);
  for (int k = 0; k < 2 * n; k += 2) {
    for (int j = 0; j < 2 * n; j += 2) {
      auto const at = [&grid, j, k](int i, int dj, int dk) { return grid.Node(i, j + dj, k + dk); };
      Cell cell = {{at(0, 0, 0), at(0, 2, 0), at(0, 2, 2), at(0, 0, 2)}};
      // The row begins on the straight edge, so that its first three nodes are collinear: tests need such a
      // row.
      cell.push_back({at(2, 0, 0), at(2, 0, 1), at(2, 0, 2), at(0, 0, 2), at(0, 0, 0)});
      cell.push_back({at(2, 2, 0), at(2, 2, 1), at(2, 2, 2), at(0, 2, 2), at(0, 2, 0)});
      cell.push_back({at(2, 0, 0), at(2, 1, 0), at(2, 2, 0), at(0, 2, 0), at(0, 0, 0)});
      cell.push_back({at(2, 0, 2), at(2, 1, 2), at(2, 2, 2), at(0, 2, 2), at(0, 0, 2)});
      for (int dk = 0; dk < 2; ++dk) {
        for (int dj = 0; dj < 2; ++dj) {
          cell.push_back({at(2, dj, dk), at(2, dj + 1, dk), at(2, dj + 1, dk + 1), at(2, dj, dk + 1)});
        }
      }
      builder.AddCell(cell);
    }
  }
  for (int k = 0; k < 2 * n; ++k) {
    for (int j = 0; j < 2 * n; ++j) {
      for (int i = 2; i < 4; ++i) builder.AddCell(Hex(grid.Corners(i, j, k)));
    }
  }
  return builder.Finish();
}

/// Moves every node by up to `amount` (L) in each direction, the same on every run; nodes on the cube's
/// surface only if `alsoSurface`. Quadrilaterals become warped.
inline FaceMesh Perturbed(FaceMesh mesh, double amount, bool alsoSurface = false, unsigned seed = 1) {
  std::mt19937 random(seed);
  for (Point& point : mesh.points) {
    bool isInside = true;
    for (double const x : point) isInside = isInside && x > 0.0 && x < 1.0;
    for (double& x : point) {
      double const shift = amount * (static_cast<double>(random()) / 2147483648.0 - 1.0);
      if (isInside || alsoSurface) x += shift;
    }
  }
  return mesh;
}

inline FaceMesh Shifted(FaceMesh mesh, double by) {
  for (Point& point : mesh.points) point = reference_host::Sum(point, {by, by, by});
  return mesh;
}

struct NamedMesh {
  char const* name;
  FaceMesh mesh;
};

/// One mesh of every kind, plane and warped.
inline std::vector<NamedMesh> AllMeshes() {
  return {{"hexahedra", HexBox(4, 3, 5)},
          {"warped hexahedra", Perturbed(HexBox(4, 3, 5), 0.05)},
          {"tetrahedra", TetBox(3)},
          {"moved tetrahedra", Perturbed(TetBox(3), 0.04)},
          {"prisms", Perturbed(PrismBox(3), 0.04)},
          {"pyramids", Perturbed(PyramidBox(3), 0.03)},
          {"all types", Perturbed(MixedBox(4), 0.03)},
          {"polyhedra", PolyBox(2)},
          {"warped polyhedra", Perturbed(PolyBox(2), 0.03)}};
}

/// The part of every cell, at random but the same on every run: ragged parts that touch everywhere.
inline std::vector<int> RandomParts(int nCells, int nParts, unsigned seed = 7) {
  std::mt19937 random(seed);
  std::vector<int> part(nCells);
  for (int& p : part) p = static_cast<int>(random() % static_cast<unsigned>(nParts));
  return part;
}

/// The part of every cell in runs of equal length, as in a decomposition by number.
inline std::vector<int> RunParts(int nCells, int nParts) {
  std::vector<int> part(nCells);
  for (int c = 0; c < nCells; ++c) {
    part[c] = static_cast<int>(static_cast<std::int64_t>(c) * nParts / std::max(nCells, 1));
  }
  return part;
}

}  // namespace test_meshes
