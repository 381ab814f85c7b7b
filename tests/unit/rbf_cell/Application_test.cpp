#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "tests/support/host/GuardedArray.h"
#include "tests/support/mesh/LatticeMesh.h"
#include "tests/support/mesh/SmallMeshes.h"
#include "tests/support/rbf_cell/CellBed.h"
#include "tests/support/rbf_cell/TableComparison.h"
#include "tests/support/watch/AllocationCount.h"
#include "tests/support/watch/SettingsFolder.h"

// The sparse dot products: what each kind of cell holds afterwards, and that nothing else is touched.

namespace zyn_test::application_test {
namespace {

using Array = GuardedArray<double>;

/// Output arrays that begin with a value which must not stay, guarded at both ends.
struct Gradient {
  explicit Gradient(int n) : x(n, -7.5), y(n, -7.5), z(n, -7.5) {}
  bool GuardsIntact() const { return x.GuardsIntact() && y.GuardsIntact() && z.GuardsIntact(); }
  Triple At(int c) const { return {x[c], y[c], z[c]}; }
  Array x, y, z;
};

AssertionResult Same(Triple const& expected, Triple const& actual) {
  for (std::size_t a = 0; a < 3; ++a) {
    if (AssertionResult same = SameValue("component " + std::to_string(a), expected[a], actual[a]); !same)
      return same;
  }
  return AssertionSuccess();
}

int Apply(CellBed& bed, Array& phi, Gradient& g) {
  return bed.object->MultiplyRBFCoefficent(phi.Data(), g.x.Data(), g.y.Data(), g.z.Data());
}

Array RandomField(int n, std::uint64_t seed = 5) {
  Random random(seed);
  std::uniform_real_distribution<double> value(-1.0, 1.0);
  Array phi(n);
  for (int c = 1; c <= n; ++c) phi[c] = value(random);
  return phi;
}

TestMesh SomeMesh(Cells cells = Cells::HexaPyramids) {
  LatticeOptions options;
  options.cells = cells;
  return LatticeMesh(options);
}

TEST(CellApplication, EqualsThePlainFormOnEveryInteriorCell) {
  for (Cells const cells : kAllCells) {
    TestMesh const mesh = SomeMesh(cells);
    CellBed bed(mesh);
    bed.SetUpAndDerive();
    PlainCellOperator plain(mesh, 500.0, 0);
    plain.Collate();
    plain.DeriveAll();
    Array phi = RandomField(mesh.NCell());
    std::vector<double> values(phi.Data(), phi.Data() + mesh.NCell() + 1);
    Gradient g(mesh.NCell());
    EXPECT_EQ(1, Apply(bed, phi, g));
    for (int c = 1; c <= mesh.nInnerCells; ++c)
      EXPECT_TRUE(Same(plain.Gradient(c, values), g.At(c))) << Name(cells) << " " << c;
  }
}

// Terms 1, 2^-53, 2^-53 in stencil order: from 1 on each small one is lost; any other order would keep them.
TEST(CellApplication, SumsInStencilOrderFromZeroOn) {
  CellBed bed(SevenPoints());
  bed.SetUp();
  RBFnode* const row = bed.object->m_ppRBFCellCoef[1];
  double const small = std::ldexp(1.0, -53);
  double const terms[] = {1.0, small, small, small, small, small, small};
  for (int k = 1; k <= 7; ++k) {
    row[k].x = terms[k - 1];
    row[k].y = terms[7 - k];
    row[k].z = -0.0;
  }
  Array phi(7, 1.0);
  Gradient g(7);
  Apply(bed, phi, g);
  EXPECT_EQ(1.0, g.x[1]);
  EXPECT_EQ(1.0 + 3.0 * std::ldexp(1.0, -52), g.y[1]);
  EXPECT_TRUE(SameValue("sum of -0.0 from 0.0 on", 0.0, g.z[1]));
}

TEST(CellApplication, ReadsNeitherTheMultiplierNorTheSecondTripleNorTheId) {
  TestMesh const mesh = SevenPoints();
  CellBed bed(mesh);
  bed.SetUpAndDerive();
  Array phi = RandomField(7);
  Gradient before(7), after(7);
  Apply(bed, phi, before);
  RBFnode* const row = bed.object->m_ppRBFCellCoef[1];
  for (int k = 0; k <= 8; ++k) {
    row[k].x0 = row[k].y0 = row[k].z0 = GuardValue<double>();
    row[k].id = -1;
  }
  row[0].x = row[0].y = row[0].z = GuardValue<double>();
  row[8].x = row[8].y = row[8].z = GuardValue<double>();
  Apply(bed, phi, after);
  EXPECT_TRUE(Same(before.At(1), after.At(1)));
}

TEST(CellApplication, StaysWithinElements1ToNCellAndLeavesTheField) {
  TestMesh const mesh = SomeMesh();
  CellBed bed(mesh);
  bed.SetUpAndDerive();
  Array phi = RandomField(mesh.NCell());
  Array const before = phi;
  Gradient g(mesh.NCell());
  Apply(bed, phi, g);
  EXPECT_TRUE(g.GuardsIntact());
  EXPECT_TRUE(phi.IdenticalTo(before));
  EXPECT_TRUE(bed.host.InputsUntouched());
}

TEST(CellApplication, OfAConstantIsZeroUpToRoundOff) {
  for (Cells const cells : kAllCells) {
    TestMesh const mesh = SomeMesh(cells);
    CellBed bed(mesh);
    bed.SetUpAndDerive();
    PlainCellOperator plain(mesh, 500.0, 0);
    plain.Collate();
    Array phi(mesh.NCell(), 3.0);
    Gradient g(mesh.NCell());
    Apply(bed, phi, g);
    for (int c = 1; c <= mesh.nInnerCells; ++c) {
      if (plain.HasCoincidentPoints(c)) continue;  // perhaps a singular system
      double size = 0.0;
      for (int k = 1; k <= bed.object->m_ppRBFCellConn[c][0]; ++k) {
        RBFnode const& w = bed.object->m_ppRBFCellCoef[c][k];
        size += 3.0 * (std::fabs(w.x) + std::fabs(w.y) + std::fabs(w.z));
      }
      // The last row of the system is solved to some roundings of the weights' sizes, the sum adds as many.
      for (double const slope : g.At(c)) EXPECT_NEAR(0.0, slope, 1e-13 * size) << Name(cells) << " " << c;
    }
  }
}

TEST(CellApplication, GivesWallAndInletCellsTheGradientOfTheirInteriorCell) {
  TestMesh const mesh = SomeMesh();
  CellBed bed(mesh);
  bed.SetUpAndDerive();
  Array phi = RandomField(mesh.NCell());
  Gradient g(mesh.NCell());
  Apply(bed, phi, g);
  ASSERT_FALSE(mesh.wall.empty() || mesh.inlet.empty());
  for (auto const* const group : {&mesh.wall, &mesh.inlet}) {
    for (Face const& face : *group) {
      EXPECT_TRUE(Same(g.At(face.cv), g.At(face.other)));
      EXPECT_NE(0.0, g.x[face.other]);
    }
  }
}

TEST(CellApplication, LeavesZeroAtOutletSymmetryAndHaloCells) {
  TestMesh const mesh = SomeMesh();
  CellBed bed(mesh);
  bed.SetUpAndDerive();
  Array phi = RandomField(mesh.NCell());
  Gradient g(mesh.NCell());
  Apply(bed, phi, g);
  ASSERT_FALSE(mesh.outlet.empty() || mesh.symmetry.empty() || mesh.partition.empty());
  for (auto const* const group : {&mesh.outlet, &mesh.symmetry, &mesh.partition})
    for (Face const& face : *group) EXPECT_TRUE(Same(Triple{}, g.At(face.other)));
}

TEST(CellApplication, CellOfAWallAndAnInletKeepsTheInletsValue) {
  TestMesh mesh = SomeMesh();
  Face shared = mesh.inlet[0];
  shared.cv = mesh.nInnerCells;
  shared.other = mesh.wall[0].other;
  mesh.inlet.push_back(shared);
  CellBed bed(mesh);
  bed.SetUpAndDerive();
  Array phi = RandomField(mesh.NCell());
  Gradient g(mesh.NCell());
  Apply(bed, phi, g);
  ASSERT_NE(mesh.wall[0].cv, shared.cv);
  EXPECT_TRUE(Same(g.At(shared.cv), g.At(shared.other)));
}

TEST(CellApplication, WithoutBoundaryFacesLeavesZeroAboveTheInteriorCells) {
  TestMesh mesh = SevenPoints();
  mesh.AddOuterCell({1.0, 1.0, 1.0});
  CellBed bed(mesh);
  bed.SetUpAndDerive();
  Array phi = RandomField(8);
  Gradient g(8);
  Apply(bed, phi, g);
  for (int c = 2; c <= 8; ++c) EXPECT_TRUE(Same(Triple{}, g.At(c)));
  EXPECT_NE(0.0, g.x[1]);
}

TEST(CellApplication, BeforeTheWeightsAreDerivedIsZero) {
  TestMesh const mesh = SomeMesh();
  CellBed bed(mesh);
  bed.SetUp();
  Array phi = RandomField(mesh.NCell());
  Gradient g(mesh.NCell());
  EXPECT_EQ(1, Apply(bed, phi, g));
  for (int c = 1; c <= mesh.NCell(); ++c) EXPECT_TRUE(Same(Triple{}, g.At(c)));
}

TEST(CellApplication, UsesGhostAndHaloValuesAsTheyStandAndExchangesNothing) {
  TestMesh const mesh = SevenPoints();
  CellBed bed(mesh);
  bed.SetUpAndDerive();
  Array phi(7, 0.0);
  phi[2] = 1.0;  // a halo cell
  Gradient g(7);
  Apply(bed, phi, g);
  EXPECT_EQ(bed.object->m_ppRBFCellCoef[1][2].x, g.x[1]);
  EXPECT_TRUE(bed.host.exchanges.empty());
}

TEST(CellApplication, AllocatesNothing) {
  TestMesh const mesh = SomeMesh();
  CellBed bed(mesh);
  bed.SetUpAndDerive();
  bed.object->faceToCellconnection_memoryallocate(0);
  Array phi = RandomField(mesh.NCell());
  Gradient g(mesh.NCell()), f(static_cast<int>(mesh.inner.size()));
  long const before = Allocations();
  Apply(bed, phi, g);
  bed.object->MultiplyRBFCoefficent_InnerfaceFlux(phi.Data(), f.x.Data(), f.y.Data(), f.z.Data());
  EXPECT_EQ(before, Allocations());
}

TEST(CellApplication, CanBeRepeatedWithTheSameResult) {
  TestMesh const mesh = SomeMesh();
  CellBed bed(mesh);
  bed.SetUpAndDerive();
  Array phi = RandomField(mesh.NCell());
  Gradient first(mesh.NCell()), second(mesh.NCell());
  Apply(bed, phi, first);
  Apply(bed, phi, second);
  for (int c = 1; c <= mesh.NCell(); ++c) EXPECT_TRUE(Same(first.At(c), second.At(c)));
}

TEST(CellApplicationDeathTest, WithoutSetUpReachesANullTable) {
  EXPECT_DEATH(
      {
        CellBed bed(SevenPoints());
        Array phi(7);
        Gradient g(7);
        Apply(bed, phi, g);
      },
      "");
}

// ---------------------------------------------------------------------------------------------- inner faces

TEST(InnerFaceApplication, IsZeroAfterAllWeightsWereDerived) {
  TestMesh const mesh = SomeMesh();
  int const nFace = static_cast<int>(mesh.inner.size());
  CellBed bed(mesh);
  bed.SetUpAndDerive();
  bed.object->faceToCellconnection_memoryallocate(0);
  Printed([&] { bed.object->DeriveRBFweighting_InnerfaceFlux(); });
  ASSERT_NE(0.0, bed.object->m_ppRBFInnerFaceFlux[1][1]) << "the weights stand in a table that is not read";
  Array phi = RandomField(mesh.NCell());
  Gradient f(nFace);
  EXPECT_EQ(1,
            bed.object->MultiplyRBFCoefficent_InnerfaceFlux(phi.Data(), f.x.Data(), f.y.Data(), f.z.Data()));
  for (int i = 1; i <= nFace; ++i)
    for (double const value : f.At(i)) EXPECT_EQ(0.0, value);
  EXPECT_TRUE(f.GuardsIntact());
}

TEST(InnerFaceApplication, ReadsTheTableThatTheCallerFilled) {
  TestMesh mesh;
  mesh.AddInteriorCell({0.0, 0.0, 0.0});
  mesh.AddInteriorCell({1.0, 0.0, 0.0});
  mesh.AddInteriorCell({2.0, 0.0, 0.0});
  mesh.JoinInterior(2, 1);
  mesh.JoinInterior(2, 3);
  CellBed bed(mesh);
  bed.SetUp();
  bed.object->faceToCellconnection_memoryallocate(0);
  RBFnode** const table = bed.object->m_ppRBFInnerFaceCoef;
  for (int f = 1; f <= 2; ++f) {
    for (int k = 0; k <= 3; ++k) {
      RBFnode& w = table[f][k];
      bool const read = k == 1 || k == 2;
      w.x = read ? 100.0 * f + 10.0 * k + 1.0 : GuardValue<double>();
      w.y = w.x + 1.0;
      w.z = w.x + 2.0;
      w.x0 = w.y0 = w.z0 = GuardValue<double>();
    }
  }
  Array phi(3);
  phi[1] = 2.0, phi[2] = 3.0, phi[3] = 5.0;
  Gradient flux(2);
  bed.object->MultiplyRBFCoefficent_InnerfaceFlux(phi.Data(), flux.x.Data(), flux.y.Data(), flux.z.Data());
  EXPECT_TRUE(Same({3 * 111.0 + 2 * 121.0, 3 * 112.0 + 2 * 122.0, 3 * 113.0 + 2 * 123.0}, flux.At(1)));
  EXPECT_TRUE(Same({3 * 211.0 + 5 * 221.0, 3 * 212.0 + 5 * 222.0, 3 * 213.0 + 5 * 223.0}, flux.At(2)));
  EXPECT_TRUE(flux.GuardsIntact());
}

TEST(InnerFaceApplication, WithoutInnerFacesTouchesNothing) {
  CellBed bed(SevenPoints());
  bed.SetUp();
  bed.object->faceToCellconnection_memoryallocate(0);
  Array phi(7);
  EXPECT_EQ(1, bed.object->MultiplyRBFCoefficent_InnerfaceFlux(phi.Data(), nullptr, nullptr, nullptr));
}

}  // namespace
}  // namespace zyn_test::application_test
