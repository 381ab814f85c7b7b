#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "tests/property/rbf_ib/PartitionedPoints.h"
#include "tests/support/host/Parameters.h"
#include "tests/support/rbf_ib/PlainPointOperator.h"
#include "tests/support/rbf_ib/PointTables.h"

// The interpolation to points on meshes of every element type, whole and cut into parts, with all cells usable and
// with some: everything against the plain form, and what the coefficients promise.

namespace zyn_test {
namespace {

using Object = CZynIBRBFInternalObject;

/// Runs check(part, marks) for every mesh, whole and in three parts, and every kind of usable cells.
template <typename Check>
void ForAllParts(std::vector<Usable> const& kinds, Check check) {
  for (auto const& [name, mesh] : Meshes()) {
    for (int const nParts : {1, 3}) {
      PointParts const cut(mesh, nParts);
      for (auto const& own : cut.Parts()) {
        for (Usable const usable : kinds) {
          SCOPED_TRACE(std::string(name) + ", part " + std::to_string(own->part()) + " of " +
                       std::to_string(nParts) + ", usable: " + Name(usable));
          Array marks = MarksOf(*own, usable);
          check(cut, *own, marks);
          if (::testing::Test::HasFatalFailure()) return;
        }
      }
    }
  }
}

std::vector<Usable> const kAllKinds(std::begin(kUsableKinds), std::end(kUsableKinds));

// --------------------------------------------------------------------------------------------- the plain form

class PointsOnMeshes : public ::testing::TestWithParam<PointSettings> {};

TEST_P(PointsOnMeshes, EqualThePlainFormBitForBit) {
  std::uint64_t seed = 1;
  ForAllParts(kAllKinds, [&](PointParts const& cut, HostPartition& own, Array& marks) {
    std::vector<Point> const points = PointsFor(own, seed++);
    cut.WriteSettings(GetParam());
    Object object;
    Connect(object, own);
    RunSetUp(object, marks, points);
    PlainPointOperator plain(*own.mesh(), *own.partitionFaces(), GetParam());
    plain.SetUp(marks.Data(), points);
    ASSERT_TRUE(SameTables(plain, object));
  });
}

TEST_P(PointsOnMeshes, GiveTheResultsOfThePlainFormBitForBit) {
  ForAllParts({Usable::All, Usable::OutsideBody},
              [&](PointParts const& cut, HostPartition& own, Array& marks) {
                std::vector<Point> const points = PointsFor(own, 77);
                cut.WriteSettings(GetParam());
                Object object;
                Connect(object, own);
                RunSetUp(object, marks, points);
                PlainPointOperator plain(*own.mesh(), *own.partitionFaces(), GetParam());
                plain.SetUp(marks.Data(), points);
                int const n = object.m_iNIBNode;
                Array field(own.mesh()->NCell), value(n), x(n), y(n), z(n);
                for (int c = 1; c <= field.Size(); ++c)
                  field[c] = std::sin(3.0 * own.mesh()->xc[c]) + own.mesh()->yc[c];
                object.Multiply_IBRBFCoefficent(field.Data(), value.Data(), x.Data(), y.Data(), z.Data());
                for (int i = 1; i <= n; ++i) {
                  Weights const expected = plain.Apply(i, field.Data());
                  ASSERT_TRUE(SameValue("value", expected.value, value[i])) << i;
                  ASSERT_TRUE(SameValue("d/dx", expected.x, x[i])) << i;
                  ASSERT_TRUE(SameValue("d/dy", expected.y, y[i])) << i;
                  ASSERT_TRUE(SameValue("d/dz", expected.z, z[i])) << i;
                }
                EXPECT_TRUE(value.GuardsIntact() && x.GuardsIntact() && y.GuardsIntact() && z.GuardsIntact());
              });
}

TEST_P(PointsOnMeshes, OfTheSamePlaceHaveTheSameRows) {
  ForAllParts({Usable::OutsideBody}, [&](PointParts const& cut, HostPartition& own, Array& marks) {
    std::vector<Point> const twice = {{0.2, 0.3, 0.4}, {0.7, 0.1, 0.9}, {0.2, 0.3, 0.4}};
    cut.WriteSettings(GetParam());
    Object object;
    Connect(object, own);
    RunSetUp(object, marks, twice);
    ASSERT_EQ(object.m_ppIBConn[1][0], object.m_ppIBConn[3][0]);
    for (int k = 1; k <= object.m_ppIBConn[1][0]; ++k) {
      ASSERT_EQ(object.m_ppIBConn[1][k], object.m_ppIBConn[3][k]);
      ASSERT_TRUE(SameValue("value", object.m_ppIBValueCoef[1][k], object.m_ppIBValueCoef[3][k]));
      ASSERT_TRUE(SameValue("d/dx", object.m_ppIBCoef[1][k].x, object.m_ppIBCoef[3][k].x));
    }
  });
}

TEST_P(PointsOnMeshes, WithoutAnyPointBuildNoRows) {
  ForAllParts({Usable::All}, [&](PointParts const& cut, HostPartition& own, Array& marks) {
    cut.WriteSettings(GetParam());
    Object object;
    Connect(object, own);
    std::string const printed = RunSetUp(object, marks, {});
    EXPECT_EQ(0, object.m_iNDerived);
    EXPECT_EQ(nullptr, object.m_ppIBConn[0]);
    EXPECT_NE(std::string::npos, printed.find("SearchIBADTress ok\n"));
  });
}

TEST_P(PointsOnMeshes, TakeUsableCellsAlone) {
  ForAllParts({Usable::OutsideBody, Usable::Few},
              [&](PointParts const& cut, HostPartition& own, Array& marks) {
                cut.WriteSettings(GetParam());
                Object object;
                Connect(object, own);
                RunSetUp(object, marks, PointsFor(own, 5));
                for (int i = 1; i <= object.m_iNIBNode; ++i) {
                  ASSERT_GT(object.m_ppIBConn[i][0], 0);
                  for (int k = 1; k <= object.m_ppIBConn[i][0]; ++k)
                    ASSERT_LT(marks[object.m_ppIBConn[i][k]], 0.0);
                }
              });
}

TEST_P(PointsOnMeshes, FromParametersEqualThoseFromTheFile) {
  ForAllParts({Usable::OutsideBody}, [&](PointParts const& cut, HostPartition& own, Array& marks) {
    std::vector<Point> const points = PointsFor(own, 9);
    cut.WriteSettings(GetParam());
    Object byFile, byBlock;
    Connect(byFile, own);
    Connect(byBlock, own);
    PointParameters parameters;
    parameters.block = {0, static_cast<int>(GetParam().span), GetParam().method, 0.0, GetParam().number};
    byBlock.SetZYNKNCMP(&parameters);
    RunSetUp(byFile, marks, points);
    RunSetUp(byBlock, marks, points);
    ASSERT_TRUE(SameContent(byFile, byBlock));
  });
}

// A body that moves through the mesh: other cells and points each time, on one object.
TEST_P(PointsOnMeshes, SetUpAgainEqualThoseOfAFreshObject) {
  for (auto const& [name, mesh] : Meshes()) {
    SCOPED_TRACE(name);
    PointParts const cut(mesh, 1);
    HostPartition& own = *cut.Parts()[0];
    cut.WriteSettings(GetParam());
    Object moving;
    Connect(moving, own);
    for (int step = 0; step < 6; ++step) {
      Array marks = MarksOf(own, kUsableKinds[step % 4]);
      std::vector<Point> const points = PointsFor(own, static_cast<std::uint64_t>(step), 3 * (5 - step));
      Object fresh;
      Connect(fresh, own);
      EXPECT_EQ(RunSetUp(fresh, marks, points), RunSetUp(moving, marks, points));
      ASSERT_TRUE(SameContent(fresh, moving)) << "step " << step;
    }
  }
}

std::string SettingsName(::testing::TestParamInfo<PointSettings> const& info) {
  PointSettings const& s = info.param;
  return "Method" + std::to_string(s.method) + "Span" + std::to_string(static_cast<int>(s.span)) + "Number" +
         std::to_string(s.number);
}

INSTANTIATE_TEST_SUITE_P(Settings, PointsOnMeshes,
                         ::testing::Values(PointSettings{500.0, 1, 20}, PointSettings{3.0, 1, 1},
                                           PointSettings{500.0, 2, 20}, PointSettings{500.0, 2, 1},
                                           PointSettings{20.0, 2, 7}, PointSettings{5.0, 2, 90},
                                           PointSettings{500.0, 3, 20}, PointSettings{2.0, 3, 1}),
                         SettingsName);

// ----------------------------------------------------------------------------------------------- the equations

/// The stored coefficients of one quantity at a point.
std::vector<double> Stored(Object const& object, int i, int column) {
  std::vector<double> w;
  for (int k = 1; k <= object.m_ppIBConn[i][0]; ++k) {
    IBCnode const& g = object.m_ppIBCoef[i][k];
    w.push_back(column == 0 ? g.x : column == 1 ? g.y : column == 2 ? g.z : object.m_ppIBValueCoef[i][k]);
  }
  return w;
}

// LU with row exchanges leaves some tens of roundings at these orders, however bad the condition.
TEST(PointSystems, OfMethods1And2AreSolvedToRoundOff) {
  double worst = 0.0;
  for (PointSettings const& settings :
       {PointSettings{500.0, 1, 20}, PointSettings{500.0, 2, 20}, PointSettings{2.0, 2, 30}}) {
    ForAllParts({Usable::InnerAndHalo, Usable::OutsideBody},
                [&](PointParts const& cut, HostPartition& own, Array& marks) {
                  std::vector<Point> const points = PointsFor(own, 21);
                  cut.WriteSettings(settings);
                  Object object;
                  Connect(object, own);
                  RunSetUp(object, marks, points);
                  PlainPointOperator plain(*own.mesh(), *own.partitionFaces(), settings);
                  plain.SetUp(marks.Data(), points);
                  for (int i = 1; i <= object.m_iNIBNode; ++i) {
                    System const system = plain.CellSystem(i, points[static_cast<std::size_t>(i - 1)]);
                    for (int const column : {0, 1, 2, 3}) {
                      double const error = BackwardError(system, column, Stored(object, i, column));
                      ASSERT_LT(error, 1e-12) << "point " << i;
                      worst = std::max(worst, error);
                    }
                  }
                });
  }
  RecordProperty("worst_backward_error", std::to_string(worst * 1e16) + "e-16");
}

// The object keeps only the sum of both levels, which equals the plain form's bit for bit; so the first level is
// taken from there.
TEST(PointSystems, OfMethod3AreSolvedToRoundOffOnBothLevels) {
  PointSettings const settings{500.0, 3, 20};
  ForAllParts({Usable::InnerAndHalo, Usable::OutsideBody}, [&](PointParts const& cut, HostPartition& own,
                                                               Array& marks) {
    std::vector<Point> const points = PointsFor(own, 22);
    cut.WriteSettings(settings);
    Object object;
    Connect(object, own);
    RunSetUp(object, marks, points);
    PlainPointOperator plain(*own.mesh(), *own.partitionFaces(), settings);
    plain.SetUp(marks.Data(), points);
    ASSERT_TRUE(SameTables(plain, object));
    for (int i = 1; i <= object.m_iNIBNode; ++i)
      ASSERT_LT(WorstBackwardError(plain.NodeAndSeedSystem(i, points[static_cast<std::size_t>(i - 1)])),
                1e-12);
    for (int n = 1; n <= own.mesh()->NNode; ++n) {
      Array w(object.ppRBFiNodeConn[n][0]);
      object.DeriveIBfiBysolveDQfullMatrix_03(n, w.Data());
      std::vector<double> const stored(w.Data() + 1, w.Data() + 1 + w.Size());
      if (!stored.empty()) {
        ASSERT_LT(BackwardError(plain.NodeSystem(n), 0, stored), 1e-12) << "node " << n;
      }
    }
  });
}

// To the condition of the systems times round-off, which is small with a narrow support.
TEST(PointsAtCells, GiveTheValuesOfThoseCells) {
  for (int const method : {1, 2}) {
    ForAllParts({Usable::InnerAndHalo}, [&](PointParts const& cut, HostPartition& own, Array& marks) {
      CZYN3DFiniteVolumeMesh const& mesh = *own.mesh();
      std::vector<int> cells;
      std::vector<Point> points;
      for (int c = 1; c <= mesh.NCell; ++c) {
        if (!(marks[c] < 0.0)) continue;
        cells.push_back(c);
        points.push_back({mesh.xc[c], mesh.yc[c], mesh.zc[c]});
      }
      cut.WriteSettings(PointSettings{2.0, method, 12});
      Object object;
      Connect(object, own);
      RunSetUp(object, marks, points);
      int const n = object.m_iNIBNode;
      Array field(mesh.NCell), value(n), x(n), y(n), z(n);
      for (int c = 1; c <= mesh.NCell; ++c) field[c] = std::sin(1.0 * c);
      object.Multiply_IBRBFCoefficent(field.Data(), value.Data(), x.Data(), y.Data(), z.Data());
      for (int i = 1; i <= n; ++i)
        ASSERT_NEAR(field[cells[static_cast<std::size_t>(i - 1)]], value[i], 1e-10);
    });
  }
}

// --------------------------------------------------------------------------------------------------- accuracy

double Smooth(double x, double y, double z) { return std::sin(2.0 * x) * y + z * z; }

struct Errors {
  double value = 0.0, slope = 0.0;
};

/// Errors at points inside the cube, on hexahedra with n cells along an edge.
Errors ErrorsOnHexahedra(int n, int method) {
  PointParts const cut(test_meshes::HexBox(n, n, n), 1);
  HostPartition& own = *cut.Parts()[0];
  CZYN3DFiniteVolumeMesh const& mesh = *own.mesh();
  std::mt19937_64 random(4);
  std::uniform_real_distribution<double> in(0.2, 0.8);
  std::vector<Point> points;
  for (int i = 0; i < 60; ++i) points.push_back({in(random), in(random), in(random)});
  cut.WriteSettings(PointSettings{100.0, method, 20});
  Object object;
  Connect(object, own);
  Array marks = MarksOf(own, Usable::InnerAndHalo);
  RunSetUp(object, marks, points);
  int const np = object.m_iNIBNode;
  Array field(mesh.NCell), value(np), x(np), y(np), z(np);
  for (int c = 1; c <= mesh.NCell; ++c) field[c] = Smooth(mesh.xc[c], mesh.yc[c], mesh.zc[c]);
  object.Multiply_IBRBFCoefficent(field.Data(), value.Data(), x.Data(), y.Data(), z.Data());
  Errors errors;
  for (int i = 1; i <= np; ++i) {
    Point const& p = points[static_cast<std::size_t>(i - 1)];
    errors.value = std::max(errors.value, std::fabs(Smooth(p.x, p.y, p.z) - value[i]));
    errors.slope = std::max({errors.slope, std::fabs(2.0 * std::cos(2.0 * p.x) * p.y - x[i]),
                             std::fabs(std::sin(2.0 * p.x) - y[i]), std::fabs(2.0 * p.z - z[i])});
  }
  return errors;
}

TEST(PointAccuracy, OfASmoothFieldImprovesWithTheMesh) {
  for (int const method : {1, 2, 3}) {
    Errors const coarse = ErrorsOnHexahedra(6, method), fine = ErrorsOnHexahedra(12, method);
    EXPECT_LT(fine.value, coarse.value / 2.0) << "method " << method;
    EXPECT_LT(coarse.value, 0.05) << "method " << method;
    EXPECT_LT(fine.slope, coarse.slope) << "method " << method;
    EXPECT_LT(coarse.slope, 0.5) << "method " << method;
    RecordProperty("method_" + std::to_string(method),
                   std::to_string(coarse.value) + " " + std::to_string(fine.value) + " slopes " +
                       std::to_string(coarse.slope) + " " + std::to_string(fine.slope));
  }
}

}  // namespace
}  // namespace zyn_test
