#include "cli/vtk/VtkCell.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <vector>

namespace zyngrad {
namespace {

using Point = std::array<double, 3>;
using Faces = std::vector<std::vector<int>>;

double TetVolume(Point const& a, Point const& b, Point const& c, Point const& d) {
  std::array<Point, 3> e;
  for (std::size_t k = 0; k < 3; ++k) e[0][k] = b[k] - a[k], e[1][k] = c[k] - a[k], e[2][k] = d[k] - a[k];
  return (e[0][0] * (e[1][1] * e[2][2] - e[1][2] * e[2][1]) -
          e[0][1] * (e[1][0] * e[2][2] - e[1][2] * e[2][0]) +
          e[0][2] * (e[1][0] * e[2][1] - e[1][1] * e[2][0])) /
         6.0;
}

/// The volume of a cell in VTK's node order, by VTK's own cut into tetrahedra: negative when the order is
/// inverted.
double VtkVolume(VtkCell const& cell, std::vector<Point> const& points) {
  static std::vector<std::array<int, 4>> const tet = {{0, 1, 2, 3}};
  static std::vector<std::array<int, 4>> const pyramid = {{0, 1, 2, 4}, {0, 2, 3, 4}};
  static std::vector<std::array<int, 4>> const wedge = {{0, 2, 1, 3}, {1, 3, 5, 4}, {1, 2, 5, 3}};
  static std::vector<std::array<int, 4>> const hex = {
      {0, 1, 3, 4}, {1, 4, 5, 6}, {1, 4, 6, 3}, {1, 3, 6, 2}, {3, 6, 7, 4}};
  auto const& cut = cell.type == VtkType::Tetrahedron ? tet
                    : cell.type == VtkType::Pyramid   ? pyramid
                    : cell.type == VtkType::Wedge     ? wedge
                                                      : hex;
  double volume = 0.0;
  for (auto const& t : cut) {
    std::array<Point, 4> p;
    for (std::size_t k = 0; k < 4; ++k) {
      p[k] = points[static_cast<std::size_t>(cell.nodes[static_cast<std::size_t>(t[k])])];
    }
    volume += TetVolume(p[0], p[1], p[2], p[3]);
  }
  return volume;
}

VtkCell Make(Faces const& outward) {
  CellFaces faces;
  for (auto const& face : outward) faces.Add(face.data(), static_cast<int>(face.size()), false);
  VtkCell cell;
  MakeVtkCell(faces, cell);
  return cell;
}

/// The cell is recognised with its volume whichever face comes first and whichever node a face begins with.
void ExpectForm(Faces outward, std::vector<Point> const& points, VtkType type, double volume) {
  std::sort(outward.begin(), outward.end());
  do {
    for (std::size_t turn = 0; turn < 4; ++turn) {
      Faces turned = outward;
      for (auto& face : turned) {
        std::rotate(face.begin(), face.begin() + static_cast<std::ptrdiff_t>(turn % face.size()), face.end());
      }
      VtkCell const cell = Make(turned);
      ASSERT_EQ(cell.type, type);
      ASSERT_NEAR(VtkVolume(cell, points), volume, 1e-15);
    }
  } while (std::next_permutation(outward.begin(), outward.end()));
}

//     7----6
//    /|   /|      unit cube, z up
//   4----5 |
//   | 3--|-2
//   |/   |/
//   0----1
std::vector<Point> const kCube = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0},
                                  {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}};

TEST(VtkCell, OrdersATetrahedronWithPositiveVolume) {
  ExpectForm({{0, 3, 1}, {0, 1, 4}, {1, 3, 4}, {0, 4, 3}}, kCube, VtkType::Tetrahedron, 1.0 / 6.0);
}

TEST(VtkCell, OrdersAPyramidWithPositiveVolume) {
  ExpectForm({{0, 3, 2, 1}, {0, 1, 4}, {1, 2, 4}, {2, 3, 4}, {3, 0, 4}}, kCube, VtkType::Pyramid, 1.0 / 3.0);
}

TEST(VtkCell, OrdersAWedgeWithPositiveVolume) {
  ExpectForm({{0, 3, 1}, {4, 5, 7}, {0, 1, 5, 4}, {1, 3, 7, 5}, {3, 0, 4, 7}}, kCube, VtkType::Wedge, 0.5);
}

TEST(VtkCell, OrdersAHexahedronWithPositiveVolume) {
  ExpectForm({{0, 3, 2, 1}, {4, 5, 6, 7}, {0, 1, 5, 4}, {1, 2, 6, 5}, {2, 3, 7, 6}, {3, 0, 4, 7}}, kCube,
             VtkType::Hexahedron, 1.0);
}

TEST(VtkCell, TakesAHexahedronWithASplitFaceForAPolyhedron) {
  VtkCell const cell =
      Make({{0, 3, 2, 1}, {4, 5, 6}, {4, 6, 7}, {0, 1, 5, 4}, {1, 2, 6, 5}, {2, 3, 7, 6}, {3, 0, 4, 7}});
  EXPECT_EQ(VtkType::Polyhedron, cell.type);
  std::vector<int> all(8);
  std::iota(all.begin(), all.end(), 0);
  EXPECT_EQ(cell.nodes, all);
}

TEST(VtkCell, TakesAHexahedronWithANodeOnAnEdgeForAPolyhedron) {
  VtkCell const cell =
      Make({{0, 3, 2, 8, 1}, {4, 5, 6, 7}, {0, 1, 5, 4}, {1, 8, 2, 6, 5}, {2, 3, 7, 6}, {3, 0, 4, 7}});
  EXPECT_EQ(VtkType::Polyhedron, cell.type);
  EXPECT_EQ(9U, cell.nodes.size());
}

TEST(VtkCell, AddsARowBackwards) {
  int const row[] = {5, 6, 7};
  CellFaces faces;
  faces.Add(row, 3, false);
  faces.Add(row, 3, true);
  EXPECT_EQ((std::vector<int>{5, 6, 7, 7, 6, 5}), faces.node);
  faces.Clear();
  EXPECT_EQ(0, faces.nFaces());
}

}  // namespace
}  // namespace zyngrad
