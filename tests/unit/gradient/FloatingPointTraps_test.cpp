#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Processor.h"
#include "tests/support/gradient/BitComparison.h"
#include "tests/support/gradient/ConnectedOperator.h"
#include "tests/support/mesh/BoxMesh.h"
#include "tests/support/mesh/RandomMesh.h"
#include "tests/support/mesh/SmallMeshes.h"
#include "tests/support/watch/ArmedTraps.h"

// Solvers that look for their own errors have divisions by zero, invalid operations and overflow stop the program. No
// gradient of valid data has any, and where a result is defined to be no finite number, nothing stops. A trap ends
// these tests.

namespace zyn_test::floating_point_traps_test {
namespace {

struct Result {
  explicit Result(int nCell) : g{GuardedGradient(nCell), GuardedGradient(nCell), GuardedGradient(nCell)} {}

  std::string printed;
  std::vector<GuardedGradient> g;
};

std::vector<Vector3> const kAllAxes = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};
std::vector<Vector3> const kNoX = {{0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};
std::vector<Vector3> const kNoY = {{1.0, 0.0, 0.0}, {0.0, 0.0, 1.0}};
std::vector<Vector3> const kNoZ = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}};

/// Runs a gradient from set-up to result with the traps armed, or without.
template <typename Call>
Result RunOn(TestMesh const& mesh, int type, bool withTraps, Call call) {
  GradientHost host(mesh, ExchangeWithItself(mesh));
  ConnectedOperator op(host, type);
  Result result(mesh.NCell());
  testing::internal::CaptureStdout();
  if (withTraps) {
    ArmedTraps const traps;
    op.gradient.Initialize();
    call(op.gradient, result);
    EXPECT_TRUE(traps.StillArmed());
  } else {
    op.gradient.Initialize();
    call(op.gradient, result);
  }
  result.printed = testing::internal::GetCapturedStdout();
  return result;
}

/// With and without traps the same bits and texts come out.
template <typename Call>
void ExpectNoTrap(TestMesh const& mesh, int type, Call call) {
  Result const without = RunOn(mesh, type, false, call), with = RunOn(mesh, type, true, call);
  EXPECT_EQ(without.printed, with.printed);
  for (std::size_t k = 0; k < with.g.size(); ++k) EXPECT_TRUE(SameBits(without.g[k], with.g[k])) << k;
}

std::vector<TestMesh> ValidMeshes() {
  std::vector<TestMesh> meshes = {ClosedBox({0, 1, 2, 3}, {0, 1, 2, 3}, {0, 1, 2, 3}),
                                  ClosedBox({0, 1, 2, 3, 4}, {0, 0.5, 2}, {0, 1})};
  // Centres off the lattice, so that no pivot is zero.
  Random random(7);
  for (Vector3& centre : meshes[1].centres) {
    centre.x += Uniform(random, -0.2, 0.2);
    centre.y += Uniform(random, -0.2, 0.2);
    centre.z += Uniform(random, -0.2, 0.2);
  }
  return meshes;
}

/// Values with equal neighbours, zeros of both signs, and far from 1.
std::vector<GuardedArray<double>> ValidFields(TestMesh const& mesh) {
  Random random(11);
  std::vector<double> ties(mesh.centres.size(), 0.0), large(mesh.centres.size(), 0.0);
  for (std::size_t c = 1; c < ties.size(); ++c) {
    ties[c] = c % 3 == 0 ? 0.0 : (c % 3 == 1 ? -0.0 : 1.0);
    large[c] = Uniform(random, -1e100, 1e100);
  }
  std::vector<GuardedArray<double>> fields;
  for (auto const& values : {TameField(random, mesh), ties, large}) fields.push_back(Guarded(values));
  return fields;
}

TEST(FloatingPointTraps, NoGreenGaussGradientOfValidDataHasOne) {
  for (TestMesh const& mesh : ValidMeshes()) {
    for (GuardedArray<double>& phi : ValidFields(mesh)) {
      for (int const nSweep : {1, 0, 2, 5}) {
        ExpectNoTrap(mesh, 0, [&](COperatorGradient& gradient, Result& r) {
          gradient.GradMethod(phi.Data(), r.g[0].x.Data(), r.g[0].y.Data(), r.g[0].z.Data(), nSweep);
        });
      }
      ExpectNoTrap(mesh, 7, [&](COperatorGradient& gradient, Result& r) {
        gradient.GradMethod(phi.Data(), r.g[0].x.Data(), r.g[0].y.Data(), r.g[0].z.Data(), 1);
      });
    }
  }
}

// A coefficient of 0 counts as 1e-30; weights of 0 and 1 put the face on a cell.
TEST(FloatingPointTraps, NoWeightedGradientOfValidDataHasOne) {
  for (TestMesh mesh : ValidMeshes()) {
    mesh.inner[0].weight = 0.0;
    mesh.inner[1].weight = 1.0;
    Random random(13);
    std::vector<double> coefficients = TameField(random, mesh);
    coefficients[1] = 1e12;
    coefficients[2] = 0.0;
    GuardedArray<double> k = Guarded(coefficients);
    for (GuardedArray<double>& phi : ValidFields(mesh)) {
      ExpectNoTrap(mesh, 0, [&](COperatorGradient& gradient, Result& r) {
        gradient.GradMethod_Weighted(phi.Data(), r.g[0].x.Data(), r.g[0].y.Data(), r.g[0].z.Data(), k.Data(),
                                     1);
      });
    }
  }
}

TEST(FloatingPointTraps, NoGradientOfThreeComponentsOfValidDataHasOne) {
  for (TestMesh const& mesh : ValidMeshes()) {
    std::vector<GuardedArray<double>> phi = ValidFields(mesh);
    ExpectNoTrap(mesh, 0, [&](COperatorGradient& gradient, Result& r) {
      std::vector<GuardedGradient>& g = r.g;
      gradient.GradMethod_3(phi[0].Data(), phi[1].Data(), phi[2].Data(), g[0].x.Data(), g[0].y.Data(),
                            g[0].z.Data(), g[1].x.Data(), g[1].y.Data(), g[1].z.Data(), g[2].x.Data(),
                            g[2].y.Data(), g[2].z.Data());
    });
  }
}

// One field, then three, on this processor and without its special instructions.
void ExpectNoTrapInLeastSquares(TestMesh const& mesh, GuardedArray<double>& phi) {
  std::optional<processor::TakenForPlain> plain;
  for (bool const isPlain : {false, true}) {
    if (isPlain) plain.emplace();
    ExpectNoTrap(mesh, 1, [&](COperatorGradient& gradient, Result& r) {
      gradient.GradMethod(phi.Data(), r.g[0].x.Data(), r.g[0].y.Data(), r.g[0].z.Data(), 1);
    });
    ExpectNoTrap(mesh, 1, [&](COperatorGradient& gradient, Result& r) {
      std::vector<GuardedGradient>& g = r.g;
      gradient.GradMethod_LeastSquares_3(phi.Data(), phi.Data(), phi.Data(), g[0].x.Data(), g[0].y.Data(),
                                         g[0].z.Data(), g[1].x.Data(), g[1].y.Data(), g[1].z.Data(),
                                         g[2].x.Data(), g[2].y.Data(), g[2].z.Data());
    });
  }
}

// Differences whose squares would be infinite: nothing but products with offsets is worked out.
TEST(FloatingPointTraps, NoLeastSquaresGradientOfAHugeFieldHasOne) {
  for (TestMesh const& mesh : ValidMeshes()) {
    Random random(23);
    std::vector<double> huge(mesh.centres.size(), 0.0);
    for (double& value : huge) value = Uniform(random, -1e300, 1e300);
    GuardedArray<double> phi = Guarded(huge);
    ExpectNoTrapInLeastSquares(mesh, phi);
  }
}

TEST(FloatingPointTraps, NoLeastSquaresGradientOfValidDataHasOne) {
  for (TestMesh const& mesh : ValidMeshes())
    for (GuardedArray<double>& phi : ValidFields(mesh)) ExpectNoTrapInLeastSquares(mesh, phi);
}

// In either place of two cells that are solved side by side, and in the last of an odd number.
TEST(FloatingPointTraps, AZeroPivotOfLeastSquaresPrintsItsLinesAndReturns) {
  for (auto const& singular : {kNoX, kNoY, std::vector<Vector3>{}}) {
    for (std::size_t place = 0; place < 5; ++place) {
      std::vector<std::vector<Vector3>> cells(5, kAllAxes);
      cells[place] = singular;
      TestMesh const mesh = CellsWithWallNeighbours(cells);
      Random random(17);
      GuardedArray<double> phi = Guarded(TameField(random, mesh));
      ExpectNoTrapInLeastSquares(mesh, phi);
      Result const result = RunOn(mesh, 1, true, [&](COperatorGradient& gradient, Result& r) {
        gradient.GradMethod(phi.Data(), r.g[0].x.Data(), r.g[0].y.Data(), r.g[0].z.Data(), 1);
      });
      EXPECT_EQ("aa[ii][j]=0.\n4\n", result.printed) << place;
      for (int c = 1; c <= 5; ++c)
        EXPECT_EQ(result.g[0].x[c] != 0.0, c <= static_cast<int>(place)) << "cell " << c << " of " << place;
    }
  }
}

TEST(FloatingPointTraps, AZeroLastPivotOfLeastSquaresLeavesNoFiniteNumbersThere) {
  for (std::size_t place = 0; place < 5; ++place) {
    std::vector<std::vector<Vector3>> cells(5, kAllAxes);
    cells[place] = kNoZ;
    TestMesh const mesh = CellsWithWallNeighbours(cells);
    Random random(19);
    GuardedArray<double> phi = Guarded(TameField(random, mesh));
    ExpectNoTrapInLeastSquares(mesh, phi);
    Result const result = RunOn(mesh, 1, true, [&](COperatorGradient& gradient, Result& r) {
      gradient.GradMethod(phi.Data(), r.g[0].x.Data(), r.g[0].y.Data(), r.g[0].z.Data(), 1);
    });
    EXPECT_EQ("", result.printed);
    for (int c = 1; c <= 5; ++c)
      EXPECT_EQ(std::isfinite(result.g[0].z[c]), c != static_cast<int>(place) + 1) << "cell " << c;
  }
}

}  // namespace
}  // namespace zyn_test::floating_point_traps_test
