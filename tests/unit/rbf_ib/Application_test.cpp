#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "tests/support/mesh/Hexahedra.h"
#include "tests/support/mesh/SmallMeshes.h"
#include "tests/support/rbf_ib/PointBed.h"
#include "tests/support/rbf_ib/PointTables.h"
#include "tests/support/watch/AllocationCount.h"

// The four sums per point: their order, what is read and written, and that nothing else is touched.

namespace zyn_test::application_test {
namespace {

using Object = CZynIBRBFInternalObject;

/// Output arrays that begin with a value which must not stay, guarded at both ends.
struct Outputs {
  explicit Outputs(int n) : value(n, -7.5), x(n, -7.5), y(n, -7.5), z(n, -7.5) {}
  bool GuardsIntact() const {
    return value.GuardsIntact() && x.GuardsIntact() && y.GuardsIntact() && z.GuardsIntact();
  }
  bool IdenticalTo(Outputs const& other) const {
    return value.IdenticalTo(other.value) && x.IdenticalTo(other.x) && y.IdenticalTo(other.y) &&
           z.IdenticalTo(other.z);
  }
  Array value, x, y, z;
};

Outputs Apply(Object& object, Array& field) {
  Outputs out(object.m_iNIBNode);
  EXPECT_EQ(0, object.Multiply_IBRBFCoefficent(field.Data(), out.value.Data(), out.x.Data(), out.y.Data(),
                                               out.z.Data()));
  return out;
}

Array RandomField(int n) {
  std::mt19937_64 random(5);
  std::uniform_real_distribution<double> value(-1.0, 1.0);
  Array field(n);
  for (int c = 1; c <= n; ++c) field[c] = value(random);
  return field;
}

std::vector<Point> SomePoints() {
  return {{1.2, 1.4, 1.6}, {0.3, 0.2, 2.5}, {2.9, 1.5, 0.4}, {1.5, 1.5, 1.5}, {5.0, -2.0, 1.0}};
}

/// A lattice with all coefficients derived.
struct Derived : PointBed {
  explicit Derived(int method) : PointBed(Hexahedra(HexahedraOptions()), PointSettings{500.0, method, 9}) {
    SetUp(InteriorUsable(Hexahedra(HexahedraOptions())), SomePoints());
  }
};

/// One point at the origin with the given coefficients of cells 1, 2, ...
struct Prescribed : PointBed {
  explicit Prescribed(std::vector<double> const& coefficients)
      : PointBed(LooseCells(std::vector<Point>(coefficients.size(), Point{1, 0, 0})),
                 PointSettings{500.0, 2, 100}) {
    int const n = static_cast<int>(coefficients.size());
    SetUp(AllUsable(n), {{1, 0, 0}});
    for (int k = 1; k <= n; ++k) {
      double const w = coefficients[static_cast<std::size_t>(k - 1)];
      double const backward = coefficients[static_cast<std::size_t>(n - k)];
      object.m_ppIBConn[1][k] = k;
      object.m_ppIBCoef[1][k].SetData(w, backward, -0.0, 1);
      object.m_ppIBValueCoef[1][k] = 2.0 * w;
    }
  }
};

TEST(PointApplication, SumsFieldTimesCoefficients) {
  Prescribed bed({1.0, 10.0, 100.0});
  Array field(3);
  field[1] = 2.0, field[2] = 3.0, field[3] = 5.0;
  Outputs const out = Apply(bed.object, field);
  EXPECT_EQ(2.0 + 30.0 + 500.0, out.x[1]);
  EXPECT_EQ(200.0 + 30.0 + 5.0, out.y[1]);
  EXPECT_EQ(2.0 * (2.0 + 30.0 + 500.0), out.value[1]);
}

// Terms 1, 2^-53, 2^-53, ... in stencil order: from 1 on each small one is lost; any other order would keep some.
TEST(PointApplication, AddsInStencilOrderFromZeroOn) {
  double const small = std::ldexp(1.0, -53);
  Prescribed bed({1.0, small, small, small, small, small, small});
  Array field(7, 1.0);
  Outputs const out = Apply(bed.object, field);
  EXPECT_EQ(1.0, out.x[1]);
  EXPECT_EQ(1.0 + 3.0 * std::ldexp(1.0, -52), out.y[1]);
  EXPECT_EQ(2.0, out.value[1]);
  EXPECT_TRUE(SameValue("sum of -0.0 from 0.0 on", 0.0, out.z[1]));
}

TEST(PointApplication, EqualsThePlainFormBitForBit) {
  for (int const method : {1, 2, 3}) {
    Derived bed(method);
    PlainPointOperator plain(bed.host.mesh, bed.host.partitionFaces, PointSettings{500.0, method, 9});
    plain.SetUp(InteriorUsable(Hexahedra(HexahedraOptions())).Data(), SomePoints());
    Array field = RandomField(bed.host.mesh.NCell);
    Outputs const out = Apply(bed.object, field);
    for (int i = 1; i <= bed.object.m_iNIBNode; ++i) {
      Weights const expected = plain.Apply(i, field.Data());
      EXPECT_TRUE(SameValue("value", expected.value, out.value[i])) << i;
      EXPECT_TRUE(SameValue("d/dx", expected.x, out.x[i])) << i;
      EXPECT_TRUE(SameValue("d/dy", expected.y, out.y[i])) << i;
      EXPECT_TRUE(SameValue("d/dz", expected.z, out.z[i])) << i;
    }
  }
}

TEST(PointApplication, OfTheConstant1GivesTheSumsOfTheStatistics) {
  for (int const method : {1, 2, 3}) {
    Derived bed(method);
    Object const& o = bed.object;
    Array one(bed.host.mesh.NCell, 1.0);
    Outputs const out = Apply(bed.object, one);
    double largest = 0.0;
    for (int i = 1; i <= o.m_iNIBNode; ++i) {
      double s = 0.0, sx = 0.0, sy = 0.0, sz = 0.0;
      for (int k = 1; k <= o.m_ppIBConn[i][0]; ++k) {
        s += o.m_ppIBValueCoef[i][k];
        sx += o.m_ppIBCoef[i][k].x;
        sy += o.m_ppIBCoef[i][k].y;
        sz += o.m_ppIBCoef[i][k].z;
      }
      EXPECT_EQ(s, out.value[i]);
      EXPECT_EQ(sx, out.x[i]);
      EXPECT_EQ(sy, out.y[i]);
      EXPECT_EQ(sz, out.z[i]);
      largest = std::fmax(largest, std::fabs(1.0 - out.value[i]));
    }
    EXPECT_EQ(o.m_dFiMaxRBF, out.value[o.m_iFiMaxPoint]);
    EXPECT_EQ(o.m_dFiMaxError, largest);
    EXPECT_EQ(o.m_dDfdxMaxRBF, out.x[o.m_iDfdxMaxPoint]);
    EXPECT_EQ(o.m_dDfdyMaxRBF, out.y[o.m_iDfdyMaxPoint]);
    EXPECT_EQ(o.m_dDfdzMaxRBF, out.z[o.m_iDfdzMaxPoint]);
  }
}

TEST(PointApplication, StaysWithinElements1ToTheNumberOfPointsAndLeavesTheField) {
  for (int const method : {1, 2, 3}) {
    Derived bed(method);
    Array field = RandomField(bed.host.mesh.NCell);
    Array const before = field;
    Outputs const out = Apply(bed.object, field);
    EXPECT_TRUE(out.GuardsIntact());
    EXPECT_TRUE(field.IdenticalTo(before));
    for (int i = 1; i <= out.value.Size(); ++i) EXPECT_NE(-7.5, out.value[i]);
    EXPECT_TRUE(bed.host.InputsUntouched());
  }
}

TEST(PointApplication, OfAStencilWithoutMembersIsZero) {
  for (int const method : {1, 2, 3}) {
    TestMesh const mesh = Hexahedra(HexahedraOptions());
    PointBed bed(mesh, PointSettings{500.0, method, 9});
    bed.SetUp(Array(mesh.NCell(), kUnusable), SomePoints());
    Array field(mesh.NCell(), 3.0);
    Outputs const out = Apply(bed.object, field);
    for (int i = 1; i <= bed.object.m_iNIBNode; ++i) {
      for (double const result : {out.value[i], out.x[i], out.y[i], out.z[i]})
        EXPECT_TRUE(SameValue("result", 0.0, result)) << "method " << method;
    }
    for (int i = 1; i <= bed.object.m_iNIBNode; ++i) {
      IBCnode const& w = bed.object.m_ppIBCoef[i][0];
      EXPECT_TRUE(w.x == 0.0 && w.y == 0.0 && w.z == 0.0 && bed.object.m_ppIBValueCoef[i][0] == 0.0)
          << "written beyond the row before";
    }
    EXPECT_TRUE(out.GuardsIntact());
    EXPECT_EQ(5, bed.object.m_iNDerived);
    EXPECT_EQ(1.0, bed.object.m_dFiMaxError) << "and the report says so";
  }
}

TEST(PointApplication, AfterAnUnknownMethodIsZero) {
  PointBed bed(Hexahedra(HexahedraOptions()), PointSettings{500.0, 4, 9});
  bed.SetUp(AllUsable(bed.host.mesh.NCell), SomePoints());
  Array field(bed.host.mesh.NCell, 3.0);
  Outputs const out = Apply(bed.object, field);
  for (int i = 1; i <= bed.object.m_iNIBNode; ++i) {
    EXPECT_EQ(0.0, out.value[i]);
    EXPECT_EQ(0.0, out.x[i]);
    EXPECT_EQ(0.0, out.y[i]);
    EXPECT_EQ(0.0, out.z[i]);
  }
}

TEST(PointApplication, WithoutPointsTouchesNothing) {
  Object object;
  Array field(3, 1.0);
  Outputs out(2);
  object.Multiply_IBRBFCoefficent(field.Data(), out.value.Data(), out.x.Data(), out.y.Data(), out.z.Data());
  EXPECT_TRUE(out.IdenticalTo(Outputs(2)));
}

TEST(PointApplication, GivesTheSameBitsAgainAndLeavesTheObject) {
  Derived bed(3), untouched(3);
  Array field = RandomField(bed.host.mesh.NCell), other(bed.host.mesh.NCell, 1e200);
  Outputs const first = Apply(bed.object, field);
  Apply(bed.object, other);
  EXPECT_TRUE(first.IdenticalTo(Apply(bed.object, field)));
  EXPECT_TRUE(SameContent(untouched.object, bed.object));
}

TEST(PointApplication, AllocatesNothing) {
  for (int const method : {1, 2, 3}) {
    Derived bed(method);
    Array field = RandomField(bed.host.mesh.NCell);
    Outputs out(bed.object.m_iNIBNode);
    long const before = Allocations();
    bed.object.Multiply_IBRBFCoefficent(field.Data(), out.value.Data(), out.x.Data(), out.y.Data(),
                                        out.z.Data());
    EXPECT_EQ(before, Allocations());
  }
}

TEST(PointApplication, ReadsNeitherElement0NorTheTags) {
  Derived bed(2);
  Array field = RandomField(bed.host.mesh.NCell);
  Outputs const before = Apply(bed.object, field);
  for (int i = 1; i <= bed.object.m_iNIBNode; ++i) {
    double const guard = GuardValue<double>();
    bed.object.m_ppIBValueCoef[i][0] = guard;
    bed.object.m_ppIBCoef[i][0].SetData(guard, guard, guard, -1);
    for (int k = 1; k <= bed.object.m_ppIBConn[i][0]; ++k) bed.object.m_ppIBCoef[i][k].tag = -1;
  }
  EXPECT_TRUE(before.IdenticalTo(Apply(bed.object, field)));
}

/// The largest difference between the value at a cell's position and the cell's value.
double WorstAtCells(int method, double span, Array& field) {
  TestMesh const mesh = Hexahedra(HexahedraOptions());
  PointBed bed(mesh, PointSettings{span, method, 9});
  std::vector<Point> centres;
  for (int c = 1; c <= mesh.nInnerCells; ++c) centres.push_back(mesh.Centre(c));
  bed.SetUp(InteriorUsable(mesh), centres);
  Outputs const out = Apply(bed.object, field);
  double worst = 0.0;
  for (int c = 1; c <= mesh.nInnerCells; ++c) worst = std::fmax(worst, std::fabs(field[c] - out.value[c]));
  return worst;
}

TEST(PointApplication, AtACellGivesThatCellsValue) {
  Array field = RandomField(Hexahedra(HexahedraOptions()).NCell());
  for (int const method : {1, 2}) EXPECT_LT(WorstAtCells(method, 2.0, field), 1e-11) << "method " << method;
}

// With the wide support the systems are nearly singular: the weights are right to the condition of the system times
// round-off, which a smooth field hardly notices and a rough one does.
TEST(PointApplication, AtACellGivesThatCellsValueOfASmoothFieldWithAWideSupportToo) {
  TestMesh const mesh = Hexahedra(HexahedraOptions());
  Array smooth(mesh.NCell()), rough = RandomField(mesh.NCell());
  for (int c = 1; c <= mesh.NCell(); ++c)
    smooth[c] = std::sin(0.3 * mesh.Centre(c).x) + 0.2 * mesh.Centre(c).y * mesh.Centre(c).z;
  for (int const method : {1, 2}) {
    EXPECT_LT(WorstAtCells(method, 500.0, smooth), 1e-6) << "method " << method;
    EXPECT_LT(WorstAtCells(method, 500.0, rough), 1e-2) << "method " << method;
  }
}

}  // namespace
}  // namespace zyn_test::application_test
