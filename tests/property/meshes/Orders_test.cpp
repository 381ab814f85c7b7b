// The orders of convergence that the documentation of plain Green-Gauss and least squares states.

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "reference_host/box/BoxMesh.h"
#include "reference_host/mesh/Vector3.h"
#include "tests/property/ObservedOrder.h"
#include "tests/property/meshes/PartitionedGradients.h"

namespace {

using partitioned::CellResult;
using partitioned::Method;
using partitioned::Point;
using reference_host::BoxSpec;

double Smooth(Point const& p) { return std::sin(2 * p[0]) * p[1] + p[2] * p[2]; }
Point SlopeOfSmooth(Point const& p) { return {2 * std::cos(2 * p[0]) * p[1], std::sin(2 * p[0]), 2 * p[2]}; }

struct Orders {
  ObservedOrder inside, atBoundary;
};

/// L2 errors of the cells with and without boundary faces on cubes of n^3 boxes.
Orders OrdersOf(BoxSpec::Shape shape, double perturb, Method const& method,
                std::vector<int> const& boxesAlongAnEdge) {
  Orders orders;
  for (int const n : boxesAlongAnEdge) {
    BoxSpec box;
    box.nx = box.ny = box.nz = n;
    box.shape = shape;
    box.perturb = perturb;
    box.seed = 1;
    reference_host::FaceMesh mesh = MakeBox(box);
    for (auto& patch : mesh.patches) patch.group = reference_host::BoundaryGroup::Wall;
    CellResult const result = partitioned::Gradient(mesh, method, Smooth);
    double sum[2] = {0, 0}, count[2] = {0, 0};
    for (std::size_t c = 0; c < result.gradient.size(); ++c) {
      Point const error = reference_host::Difference(result.gradient[c], SlopeOfSmooth(result.centre[c]));
      int const kind = result.atBoundary[c] ? 1 : 0;
      sum[kind] += reference_host::Dot(error, error);
      ++count[kind];
    }
    orders.inside.Add(1.0 / n, std::sqrt(sum[0] / count[0]));
    orders.atBoundary.Add(1.0 / n, std::sqrt(sum[1] / count[1]));
  }
  return orders;
}

Method const kPlain = {"plain", 0, 1, false};
Method const kLeastSquares = {"least squares", 1, 0, false};
constexpr double kMoved = 0.2;

// Inside, the errors decrease at a constant order. At the boundary, the share of edge and corner cells, which
// have larger errors, also decreases with the cell size; on meshes this coarse, that adds up to a quarter to
// the observed order.
constexpr double kSlack = 0.25;

TEST(GradientOrders, OfPlainAreSecondInsideHexahedraAndFirstAtTheBoundary) {
  Orders const orders = OrdersOf(BoxSpec::Shape::Hex, 0, kPlain, {6, 12, 24});
  ExpectOrder(orders.inside, 2, kSlack, "inside");
  ExpectOrder(orders.atBoundary, 1, kSlack, "at the boundary");
}

TEST(GradientOrders, OfPlainAreFirstOnPrisms) {
  ExpectOrder(OrdersOf(BoxSpec::Shape::Prism, 0, kPlain, {4, 8, 16}).inside, 1, kSlack, "prisms");
}

TEST(GradientOrders, OfPlainAreZeroOnTetrahedraAndWithMovedNodes) {
  Orders const tetrahedra = OrdersOf(BoxSpec::Shape::Tet, 0, kPlain, {4, 8, 16});
  Orders const moved = OrdersOf(BoxSpec::Shape::Hex, kMoved, kPlain, {6, 12, 24});
  EXPECT_LT(tetrahedra.inside.Steps().back(), 0.5) << tetrahedra.inside.Text();
  EXPECT_LT(moved.inside.Steps().back(), 0.7) << moved.inside.Text();
}

TEST(GradientOrders, OfLeastSquaresAreSecondInsideHexahedraAndFirstElsewhere) {
  Orders const hexahedra = OrdersOf(BoxSpec::Shape::Hex, 0, kLeastSquares, {6, 12, 24});
  ExpectOrder(hexahedra.inside, 2, kSlack, "inside hexahedra");
  ExpectOrder(hexahedra.atBoundary, 1, kSlack, "hexahedra at the boundary");
  ExpectOrder(OrdersOf(BoxSpec::Shape::Hex, kMoved, kLeastSquares, {6, 12, 24}).inside, 1, kSlack,
              "moved nodes");
  ExpectOrder(OrdersOf(BoxSpec::Shape::Tet, 0, kLeastSquares, {4, 8, 16}).inside, 1, kSlack, "tetrahedra");
  ExpectOrder(OrdersOf(BoxSpec::Shape::Prism, 0, kLeastSquares, {4, 8, 16}).inside, 1, kSlack, "prisms");
}

}  // namespace
