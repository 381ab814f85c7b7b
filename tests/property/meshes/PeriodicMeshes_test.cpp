// Gradients on meshes that continue beyond their boundary.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "tests/property/meshes/PartitionedGradients.h"
#include "tests/unit/reference_host/PeriodicMeshes.h"

namespace {

using namespace test_meshes;
using partitioned::CellResult;
using partitioned::Gradient;
using partitioned::Method;

constexpr double kTwoPi = 6.283185307179586477;

/// Has the period 1 in every direction.
double Wave(Point const& p) {
  return std::sin(kTwoPi * p[0]) + std::cos(kTwoPi * p[1]) * std::sin(kTwoPi * p[2]);
}

/// Without the method whose weight 1 + x*x is not periodic.
std::vector<Method> Methods() {
  std::vector<Method> methods;
  for (Method const& method : partitioned::AllMethods())
    if (!method.weighted) methods.push_back(method);
  return methods;
}

// The middle one of three copies sees the same cells around it as a period does; five keep the ends away from the
// sweeps of the iterated form. The order of faces and the last bits of coordinates differ, hence a tolerance: gradients
// are of the size of 2 pi, with sums of some 1e-16 of values near 2 over cell sizes of about 0.1.
TEST(GradientsOnPeriodicMeshes, EqualThoseInTheMiddleOfAMeshOfSeveralPeriods) {
  struct OneDirection {
    char const* name;
    FaceMesh mesh;
    char const* direction;
  };
  for (OneDirection const& theCase : {OneDirection{"hexahedra", Perturbed(HexBox(4, 3, 5), 0.05), "x"},
                                      OneDirection{"tetrahedra", Perturbed(TetBox(3), 0.04), "y"},
                                      OneDirection{"prisms", Perturbed(PrismBox(3), 0.04), "z"},
                                      OneDirection{"one cell between the sides", HexBox(1, 3, 3), "x"},
                                      OneDirection{"polyhedra", Perturbed(PolyBox(2), 0.03), "y"}}) {
    FaceMesh const mesh = Periodic(theCase.mesh, theCase.direction);
    constexpr int kCopies = 9, kMiddle = 4;
    FaceMesh const several = Repeated(mesh, kCopies);
    for (Method const& method : Methods()) {
      SCOPED_TRACE(std::string(theCase.name) + ", " + method.name);
      CellResult const periodic = Gradient(mesh, method, Wave);
      CellResult const expected = Gradient(several, method, Wave);
      for (int c = 0; c < mesh.nCells; ++c) {
        for (int d = 0; d < 3; ++d) {
          EXPECT_NEAR(periodic.gradient[c][d], expected.gradient[kMiddle * mesh.nCells + c][d], 1e-12)
              << "cell " << c;
        }
      }
    }
  }
}

TEST(GradientsOnPeriodicMeshes, AgreeInAnyNumberOfParts) {
  for (auto const& [name, mesh] : test_meshes::PeriodicMeshes()) {
    if (mesh.nCells < 8) continue;  // least squares needs neighbours in every direction
    for (Method const& method : Methods()) {
      CellResult const whole = Gradient(mesh, method, Wave);
      for (int const nParts : {2, 3, 4}) {
        SCOPED_TRACE(std::string(name) + ", " + method.name + ", " + std::to_string(nParts) + " parts");
        for (bool const nonBlocking : {false, true}) {
          CellResult const parts =
              Gradient(mesh, RandomParts(mesh.nCells, nParts), nParts, method, Wave, nonBlocking);
          for (int c = 0; c < mesh.nCells; ++c)
            for (int d = 0; d < 3; ++d) EXPECT_NEAR(parts.gradient[c][d], whole.gradient[c][d], 1e-12);
        }
      }
    }
  }
}

// A mesh without any boundary: sum over the cells of V grad(phi) = 0 for any field, because every face adds the
// same to one cell as it takes from another.
TEST(GradientsOnPeriodicMeshes, AddUpToZeroWithoutABoundary) {
  for (auto const& [name, mesh] : test_meshes::PeriodicMeshes()) {
    if (mesh.periods.size() < 3) continue;
    SCOPED_TRACE(name);
    auto const part = reference_host::ExtractPart(mesh, std::vector<int>(mesh.nCells, 0), 0, 1);
    CellResult const result = Gradient(mesh, {"plain", 0, 1, false}, Wave);
    auto const volumes = [&part, nCells = mesh.nCells] {
      std::vector<double> v(nCells);
      reference_host::HostPartition whole(part);
      for (int c = 1; c <= nCells; ++c) v[whole.globalCell()[c] - 1] = whole.mesh()->Volume[c];
      return v;
    }();
    for (int d = 0; d < 3; ++d) {
      double sum = 0.0;
      for (int c = 0; c < mesh.nCells; ++c) sum += volumes[c] * result.gradient[c][d];
      EXPECT_NEAR(sum, 0.0, 1e-14);
    }
  }
}

}  // namespace
