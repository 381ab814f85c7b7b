// The gradients on meshes of every element type, whole and cut into parts.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "tests/property/meshes/PartitionedGradients.h"
#include "tests/unit/reference_host/TestMeshes.h"

namespace {

using partitioned::CellResult;
using partitioned::Field;
using partitioned::Gradient;
using partitioned::Method;
using partitioned::Point;

Point const kSlope = {0.75, -1.5, 2.25};
double Linear(Point const& p) { return kSlope[0] * p[0] + kSlope[1] * p[1] + kSlope[2] * p[2] + 0.5; }
double Smooth(Point const& p) { return std::sin(2 * p[0]) * p[1] + p[2] * p[2]; }

double LargestComponent(CellResult const& result) {
  double largest = 0;
  for (Point const& g : result.gradient)
    for (double const component : g) largest = std::max(largest, std::abs(component));
  return largest;
}

double LargestDifference(CellResult const& a, CellResult const& b) {
  double largest = 0;
  for (std::size_t c = 0; c < a.gradient.size(); ++c)
    for (int d = 0; d < 3; ++d) largest = std::max(largest, std::abs(a.gradient[c][d] - b.gradient[c][d]));
  return largest;
}

// Distance to the exact slope over the cells that `counts` names.
template <class Counts>
double LargestError(CellResult const& result, Counts const& counts) {
  double largest = 0;
  for (std::size_t c = 0; c < result.gradient.size(); ++c)
    for (int d = 0; d < 3 && counts(c); ++d)
      largest = std::max(largest, std::abs(result.gradient[c][d] - kSlope[d]));
  return largest;
}

Method const kPlain = {"plain", 0, 1, false};
Method const kLeastSquares = {"least squares", 1, 0, false};

TEST(GradientsOnMeshes, PartsAgreeWithTheWholeForEveryMethodAndElementType) {
  for (auto const& [name, mesh] : test_meshes::AllMeshes()) {
    for (Method const& method : partitioned::AllMethods()) {
      CellResult const whole = Gradient(mesh, method, Smooth);
      for (int const nParts : {2, 3, 5}) {
        if (nParts > mesh.nCells) continue;
        for (bool const nonBlocking : {false, true}) {
          SCOPED_TRACE(std::string(name) + ", " + method.name + ", " + std::to_string(nParts) + " parts");
          CellResult const parts = Gradient(mesh, test_meshes::RandomParts(mesh.nCells, nParts), nParts,
                                            method, Smooth, nonBlocking);
          EXPECT_LE(LargestDifference(whole, parts), 1e-12 * LargestComponent(whole));
        }
      }
    }
  }
}

TEST(GradientsOnMeshes, ExchangeKindDoesNotChangeABit) {
  auto const mesh = test_meshes::Perturbed(test_meshes::HexBox(4, 4, 4), 0.1);
  auto const parts = test_meshes::RunParts(mesh.nCells, 3);
  for (Method const& method : partitioned::AllMethods()) {
    SCOPED_TRACE(method.name);
    CellResult const blocking = Gradient(mesh, parts, 3, method, Smooth, false);
    CellResult const nonBlocking = Gradient(mesh, parts, 3, method, Smooth, true);
    EXPECT_EQ(0, std::memcmp(blocking.gradient.data(), nonBlocking.gradient.data(),
                             blocking.gradient.size() * sizeof(Point)));
  }
}

TEST(GradientsOnMeshes, LeastSquaresReproducesALinearFieldOnEveryElementType) {
  for (auto const& [name, mesh] : test_meshes::AllMeshes()) {
    SCOPED_TRACE(name);
    CellResult const result = Gradient(mesh, kLeastSquares, Linear);
    auto const noSymmetry = [&](std::size_t c) { return !result.atSymmetry[c]; };
    EXPECT_LE(LargestError(result, noSymmetry), 1e-12);
  }
}

TEST(GradientsOnMeshes, LeastSquaresIsBiasedBesideSymmetryFaces) {
  CellResult const result = Gradient(test_meshes::HexBox(4, 4, 4), kLeastSquares, Linear);
  double const beside = LargestError(result, [&](std::size_t c) { return result.atSymmetry[c]; });
  EXPECT_GT(beside, 0.1);
}

TEST(GradientsOnMeshes, PlainReproducesALinearFieldOnOrthogonalHexahedra) {
  CellResult const result = Gradient(test_meshes::HexBox(5, 4, 3), kPlain, Linear);
  EXPECT_LE(LargestError(result, [](std::size_t) { return true; }), 1e-12);
}

TEST(GradientsOnMeshes, PlainDoesNotReproduceALinearFieldOnTetrahedra) {
  CellResult const result = Gradient(test_meshes::TetBox(4), kPlain, Linear);
  EXPECT_GT(LargestError(result, [](std::size_t) { return true; }), 1e-3);
}

TEST(GradientsOnMeshes, ConstantFieldHasNoSlope) {
  Field const constant = [](Point const&) { return 3.25; };
  for (auto const& [name, mesh] : test_meshes::AllMeshes()) {
    for (Method const& method : partitioned::AllMethods()) {
      SCOPED_TRACE(std::string(name) + ", " + method.name);
      CellResult const result = Gradient(mesh, method, constant);
      // Green-Gauss sums 3.25 S over a closed cell: round-off of the areas over the volume.
      EXPECT_LE(LargestComponent(result), method.type == 1 ? 0.0 : 1e-12);
    }
  }
}

TEST(GradientsOnMeshes, GradientScalesWithTheField) {
  auto const mesh = test_meshes::Perturbed(test_meshes::PrismBox(3), 0.1);
  for (Method const& method : partitioned::AllMethods()) {
    SCOPED_TRACE(method.name);
    CellResult const once = Gradient(mesh, method, Smooth);
    CellResult const fourfold = Gradient(mesh, method, [](Point const& p) { return 4 * Smooth(p); });
    for (std::size_t c = 0; c < once.gradient.size(); ++c)
      for (int d = 0; d < 3; ++d) ASSERT_EQ(4 * once.gradient[c][d], fourfold.gradient[c][d]);
  }
}

// Scaling by a power of two is exact, so a mesh in other units has the same gradient up to the unit.
TEST(GradientsOnMeshes, GradientFollowsTheUnitOfLength) {
  auto mesh = test_meshes::Perturbed(test_meshes::HexBox(3, 3, 3), 0.1);
  CellResult const once = Gradient(mesh, kLeastSquares, Smooth);
  for (Point& p : mesh.points)
    for (double& x : p) x *= 2;
  CellResult const twice = Gradient(mesh, kLeastSquares, [](Point const& p) {
    return Smooth({p[0] / 2, p[1] / 2, p[2] / 2});
  });
  for (std::size_t c = 0; c < once.gradient.size(); ++c)
    for (int d = 0; d < 3; ++d) ASSERT_EQ(once.gradient[c][d], 2 * twice.gradient[c][d]);
}

// A rotation by a quarter turn about z takes (x, y) to (-y, x), fields and gradients alike.
TEST(GradientsOnMeshes, GradientTurnsWithTheMesh) {
  auto mesh = test_meshes::Perturbed(test_meshes::TetBox(3), 0.05);
  for (Method const& method : partitioned::AllMethods()) {
    if (method.weighted) continue;  // its coefficient is not rotated
    SCOPED_TRACE(method.name);
    CellResult const plainResult = Gradient(mesh, method, Smooth);
    auto turned = mesh;
    for (Point& p : turned.points) p = {-p[1], p[0], p[2]};
    CellResult const turnedResult = Gradient(turned, method, [](Point const& p) {
      return Smooth({p[1], -p[0], p[2]});
    });
    for (std::size_t c = 0; c < plainResult.gradient.size(); ++c) {
      Point const& g = plainResult.gradient[c];
      Point const expected = {-g[1], g[0], g[2]};
      for (int d = 0; d < 3; ++d) ASSERT_NEAR(expected[d], turnedResult.gradient[c][d], 1e-11);
    }
  }
}

}  // namespace
