#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "tests/property/ObservedOrder.h"
#include "tests/property/rbf_ib/PartitionedPoints.h"

// The orders of convergence that docs/methods/points.md states.

namespace zyn_test {
namespace {

using reference_host::BoxSpec;

double Smooth(double x, double y, double z) { return std::sin(2 * x) * y + z * z; }

struct Orders {
  ObservedOrder value, slope;
};

/// L2 errors at the points, on n^3 hexahedra or 6 n^3 tetrahedra. Ghost cells are not usable.
void AddErrors(BoxSpec::Shape shape, int n, double perturb, int method, Usable usable,
               std::vector<Point> const& points, Orders& orders) {
  BoxSpec box;
  box.nx = box.ny = box.nz = n;
  box.shape = shape;
  box.perturb = perturb;
  box.seed = 1;
  PointParts const cut(MakeBox(box), 1);
  HostPartition& own = *cut.Parts()[0];
  CZYN3DFiniteVolumeMesh const& mesh = *own.mesh();
  cut.WriteSettings(PointSettings{500.0, method, 20});
  CZynIBRBFInternalObject object;
  Connect(object, own);
  Array marks = MarksOf(own, usable);
  RunSetUp(object, marks, points);
  int const np = object.m_iNIBNode;
  Array field(mesh.NCell), value(np), x(np), y(np), z(np);
  for (int c = 1; c <= mesh.NCell; ++c) field[c] = Smooth(mesh.xc[c], mesh.yc[c], mesh.zc[c]);
  object.Multiply_IBRBFCoefficent(field.Data(), value.Data(), x.Data(), y.Data(), z.Data());
  double ofValue = 0, ofSlope = 0;
  for (int i = 1; i <= np; ++i) {
    Point const& p = points[static_cast<std::size_t>(i - 1)];
    ofValue += std::pow(value[i] - Smooth(p.x, p.y, p.z), 2);
    ofSlope += std::pow(x[i] - 2 * std::cos(2 * p.x) * p.y, 2) + std::pow(y[i] - std::sin(2 * p.x), 2) +
               std::pow(z[i] - 2 * p.z, 2);
  }
  orders.value.Add(1.0 / n, std::sqrt(ofValue / np));
  orders.slope.Add(1.0 / n, std::sqrt(ofSlope / np));
}

/// Points at random in the inner part of the cube, two cells or more from its sides on the coarsest mesh.
std::vector<Point> InnerPoints() {
  std::mt19937_64 random(4);
  std::uniform_real_distribution<double> in(0.2, 0.8);
  std::vector<Point> points;
  for (int i = 0; i < 300; ++i) points.push_back({in(random), in(random), in(random)});
  return points;
}

Orders OrdersOf(BoxSpec::Shape shape, double perturb, int method, std::vector<int> const& cellsAlongAnEdge) {
  Orders orders;
  std::vector<Point> const points = InnerPoints();
  for (int const n : cellsAlongAnEdge)
    AddErrors(shape, n, perturb, method, Usable::InnerAndHalo, points, orders);
  return orders;
}

constexpr double kMoved = 0.2;

// From level to level the order swings by some tenths: another shell of cells comes into the stencils, and the points are
// a few hundred at random places between the cells.
constexpr double kSlack = 0.3;

TEST(PointOrders, OfMethods1And2AreThirdForValuesAndSecondForSlopes) {
  for (int const method : {1, 2}) {
    for (double const perturb : {0.0, kMoved}) {
      Orders const hexahedra = OrdersOf(BoxSpec::Shape::Hex, perturb, method, {10, 15, 22});
      Orders const tetrahedra = OrdersOf(BoxSpec::Shape::Tet, perturb, method, {5, 8, 12});
      ExpectOrder(hexahedra.value, 3, kSlack, "value, hexahedra");
      ExpectOrder(hexahedra.slope, 2, kSlack, "slope, hexahedra");
      ExpectOrder(tetrahedra.value, 3, kSlack, "value, tetrahedra");
      ExpectOrder(tetrahedra.slope, 2, kSlack, "slope, tetrahedra");
    }
  }
}

TEST(PointOrders, OfMethod3AreSecondForValuesAndFirstForSlopes) {
  for (double const perturb : {0.0, kMoved}) {
    Orders const hexahedra = OrdersOf(BoxSpec::Shape::Hex, perturb, 3, {10, 15, 22});
    Orders const tetrahedra = OrdersOf(BoxSpec::Shape::Tet, perturb, 3, {5, 8, 12});
    ExpectOrder(hexahedra.value, 2, kSlack, "value, hexahedra");
    ExpectOrder(hexahedra.slope, 1, kSlack, "slope, hexahedra");
    ExpectOrder(tetrahedra.value, 2, kSlack, "value, tetrahedra");
    ExpectOrder(tetrahedra.slope, 1, kSlack, "slope, tetrahedra");
  }
}

// On a body the cells stand on one side.
TEST(PointOrders, OfMethod3OnABodyAreFirstForValuesAndNoneForSlopes) {
  std::mt19937_64 random(5);
  std::normal_distribution<double> any;
  std::vector<Point> points;
  for (int i = 0; i < 300; ++i) {
    double const x = any(random), y = any(random), z = any(random),
                 s = kBodyRadius / std::sqrt(x * x + y * y + z * z);
    points.push_back({0.5 + s * x, 0.5 + s * y, 0.5 + s * z});
  }
  Orders orders;
  for (int const n : {10, 15, 22}) {
    AddErrors(BoxSpec::Shape::Hex, n, 0, 3, Usable::OutsideBody, points, orders);
  }
  ExpectOrder(orders.value, 1, kSlack, "value");
  EXPECT_LT(orders.slope.Overall(), 0.5) << orders.slope.Text();
}

}  // namespace
}  // namespace zyn_test
