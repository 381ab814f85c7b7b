#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/ZYNOptKer.h"
#include "tests/support/gradient/BitComparison.h"
#include "tests/support/host/GuardedArray.h"
#include "tests/support/mesh/Hexahedra.h"
#include "tests/support/mesh/LatticeMesh.h"
#include "tests/support/mesh/SmallMeshes.h"
#include "tests/support/rbf_cell/CellBed.h"
#include "tests/support/watch/ArmedTraps.h"
#include "tests/support/watch/SettingsFolder.h"

// A solver may have divisions by zero, invalid operations and overflow stop the program. The cell operator divides by
// zero only where its results are defined by that, and the LAPACK below it may do what it likes: nothing stops the
// solver, and the results are those without traps. A trap ends these tests.

namespace zyn_test::floating_point_traps_test {
namespace {

using Array = GuardedArray<double>;

/// Runs `call` with the traps armed, or without.
template <typename Call>
void RunWith(bool withTraps, Call call) {
  if (!withTraps) return call();
  ArmedTraps const traps;
  call();
  EXPECT_TRUE(traps.StillArmed());
}

struct Outcome {
  std::string printed;
  std::vector<Array> arrays;
};

void ExpectSame(Outcome const& a, Outcome const& b) {
  EXPECT_EQ(a.printed, b.printed);
  ASSERT_EQ(a.arrays.size(), b.arrays.size());
  for (std::size_t k = 0; k < a.arrays.size(); ++k)
    EXPECT_TRUE(SameBits(a.arrays[k].Size(), a.arrays[k].Data(), b.arrays[k].Data())) << k;
}

Array Field(int n) {
  Array phi(n);
  for (int c = 1; c <= n; ++c) phi[c] = 1.0 + 0.01 * (c % 17);
  return phi;
}

/// Set-up, weights, gradient, and the face family of every kind.
Outcome GradientAndFaces(TestMesh const& mesh, std::string const& settings, int mode, bool withTraps) {
  CellBed bed(mesh, settings);
  Array phi = Field(mesh.NCell()), gx(mesh.NCell()), gy(gx), gz(gx);
  Array fx(static_cast<int>(mesh.inner.size())), fy(fx), fz(fx);
  CZynRBFInternalObject& o = *bed.object;
  Outcome outcome;
  outcome.printed = Printed([&] {
    RunWith(withTraps, [&] {
      o.InitialRBFSetting();
      o.DeriveRBFweighting();
      o.DeriveCellCoefficentBysolveDQfullMatrix(1);
      o.MultiplyRBFCoefficent(phi.Data(), gx.Data(), gy.Data(), gz.Data());
      o.faceToCellconnection_memoryallocate(mode);
      o.DeriveRBFweighting_InnerfaceFlux();
      o.DeriveRBFweighting_InletfaceFlux();
      o.DeriveRBFweighting_OutletfaceFlux();
      o.DeriveRBFweighting_WallfaceFlux();
      o.DeriveRBFweighting_PartInterfaceFlux();
      for (int f = 1; f <= static_cast<int>(mesh.wall.size()); ++f)
        o.DeriveWallFaceCoefficentBysolveDQfullMatrix(f);
      if (!mesh.inlet.empty()) o.DeriveInletFaceCoefficentBysolveDQfullMatrix(1);
      o.MultiplyRBFCoefficent_InnerfaceFlux(phi.Data(), fx.Data(), fy.Data(), fz.Data());
    });
  });
  outcome.arrays = {gx, gy, gz, fx, fy, fz};
  return outcome;
}

/// The operations for points.
Outcome Points(TestMesh const& mesh, int method, bool withTraps) {
  constexpr int kPoints = 3;
  CellBed bed(mesh, DefaultSettings());
  CZynRBFInternalObject& o = *bed.object;
  double reals[5];
  int ints[5];
  o.m_pGV->ResetRealBlock = reals;
  o.m_pGV->ResetIntBlock = ints;
  CZYNOptKer tree;
  std::vector<int> cellOfBlock = {0};
  for (int c = 1; c <= mesh.NCell(); ++c) {
    Point const& p = mesh.Centre(c);
    cellOfBlock.push_back(c);
    tree.AddSurfaceToADTree(c, p.x + 1e-6, p.y + 1e-6, p.z + 1e-6, p.x - 1e-6, p.y - 1e-6, p.z - 1e-6);
  }
  Array x(kPoints), support(x), value(x), dx(x), dy(x), dz(x), phi = Field(mesh.NCell());
  for (int i = 1; i <= kPoints; ++i) x[i] = 0.4 + 0.3 * i;
  Outcome outcome;
  outcome.printed = Printed([&] {
    RunWith(withTraps, [&] {
      o.Initialize_IBInterpolateData(nullptr, kPoints, x.Data(), x.Data(), x.Data(), method, 1.5, 5);
      o.SearchIBADTress(x.Data(), x.Data(), x.Data(), method, 1.5, 5, cellOfBlock.data(), tree,
                        support.Data());
      for (int i = 1; i <= kPoints; ++i)
        o.DeriveIBCoefficentBysolveDQfullMatrix(i, x.Data(), x.Data(), x.Data(), support.Data());
      o.Multiply_IBRBFCoefficent(phi.Data(), value.Data(), dx.Data(), dy.Data(), dz.Data());
    });
  });
  for (int i = 1; i <= kPoints; ++i) {
    outcome.printed += std::to_string(o.m_ppIBConn[i][0]) + " ";
    Array sums(1);
    for (int k = 1; k <= o.m_ppIBConn[i][0]; ++k) sums[1] += o.m_ppIBValueCoef[i][k] + o.m_ppIBCoef[i][k].x;
    outcome.arrays.push_back(sums);
  }
  outcome.arrays.push_back(support);
  return outcome;
}

std::vector<TestMesh> Meshes() {
  std::vector<TestMesh> meshes;
  for (Cells const cells : {Cells::Hexahedra, Cells::Tetrahedra, Cells::Polyhedra}) {
    for (double const jitter : {0.0, 0.2}) {
      LatticeOptions options;
      options.cells = cells;
      options.jitter = jitter;
      meshes.push_back(LatticeMesh(options));
    }
  }
  return meshes;
}

TEST(CellOperatorTraps, NothingOfTheGradientOrOfFacesStopsASolver) {
  for (TestMesh const& mesh : Meshes())
    for (char const* const span : {"500", "5"})
      for (int const mode : {0, 1})
        ExpectSame(GradientAndFaces(mesh, Settings(span, "0"), mode, false),
                   GradientAndFaces(mesh, Settings(span, "0"), mode, true));
}

// Faces along an axis have no extent along the others, and the weights of four of the five kinds are not finite then.
TEST(CellOperatorTraps, NothingOfTheShapeNormalisedFormStopsASolver) {
  for (TestMesh const& mesh : Meshes())
    ExpectSame(GradientAndFaces(mesh, Settings("500", "1"), 0, false),
               GradientAndFaces(mesh, Settings("500", "1"), 0, true));
}

TEST(CellOperatorTraps, NothingForPointsStopsASolver) {
  for (TestMesh const& mesh : Meshes())
    for (int const method : {1, 2, 3}) ExpectSame(Points(mesh, method, false), Points(mesh, method, true));
}

// The mean distance over no inner faces is 0 / 0, the stencil of a cell without neighbours has no length, and two
// members in one place make a singular system.
TEST(CellOperatorTraps, NoDegenerateMeshStopsASolver) {
  TestMesh twins = SevenPoints();
  twins.Centre(3) = twins.Centre(2);
  for (TestMesh const& mesh : {SevenPoints(), OneStencil({}, {}), OneStencil({}, {{1, 0, 0}}), twins}) {
    for (char const* const normalised : {"0", "1"})
      ExpectSame(GradientAndFaces(mesh, Settings("500", normalised), 0, false),
                 GradientAndFaces(mesh, Settings("500", normalised), 0, true));
    for (int const method : {1, 2}) ExpectSame(Points(mesh, method, false), Points(mesh, method, true));
  }
}

TEST(CellOperatorTraps, ASpanBeyondTheNumbersStopsNoSolver) {
  for (char const* const span : {"1e999", "1e300", "1e-300", "0", "nan"})
    ExpectSame(GradientAndFaces(SevenPoints(), Settings(span, "0"), 0, false),
               GradientAndFaces(SevenPoints(), Settings(span, "0"), 0, true));
}

}  // namespace
}  // namespace zyn_test::floating_point_traps_test
