#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "tests/support/mesh/Hexahedra.h"
#include "tests/support/rbf_ib/PointBed.h"
#include "tests/support/rbf_ib/PointTables.h"
#include "tests/support/watch/FlushedOutput.h"
#include "tests/support/watch/FlushedPieces.h"
#include "tests/support/watch/SettingsFolder.h"

// The accuracy report: how the errors are gathered, and its text byte for byte.

namespace zyn_test::report_test {
namespace {

using Object = CZynIBRBFInternalObject;

std::string Number(double value) {
  char text[64];
  std::snprintf(text, sizeof text, "%le", value);
  return text;
}

std::string Coordinates(PointArrays const& points, int i) {
  return Number(10.0 * points.x[i]) + " " + Number(10.0 * points.y[i]) + " " + Number(10.0 * points.z[i]);
}

/// An object with statistics of the test's own, as the derivations would have left them.
Object WithStatistics() {
  Object o;
  o.m_iNDerived = 4;
  o.m_dFiSumSq = 16.0;
  o.m_dFiMaxError = 0.25, o.m_iFiMaxPoint = 1, o.m_dFiMaxAnalysis = 1.0, o.m_dFiMaxRBF = 0.75;
  o.m_dDfdxSumSq = 4.0;
  o.m_dDfdxMaxError = 0.5, o.m_iDfdxMaxPoint = 2, o.m_dDfdxMaxRBF = -0.5;
  o.m_dDfdySumSq = 1.0;
  o.m_dDfdyMaxError = 0.125, o.m_iDfdyMaxPoint = 3, o.m_dDfdyMaxRBF = 0.125;
  o.m_dDfdzSumSq = 0.0;
  o.m_dDfdzMaxError = 0.0, o.m_iDfdzMaxPoint = 0, o.m_dDfdzMaxRBF = 0.0;
  return o;
}

PointArrays ThreePoints() {
  PointArrays points({{1, 2, 3}, {0.1, 0.2, 0.3}, {-4, 5e10, -6e-10}});
  points.x[0] = 7.0, points.y[0] = 8.0, points.z[0] = 9.0;
  return points;
}

std::string const kReport =
    "FI = 1.e0\n\n"
    "fi RMS ERROR                = 2.000000e+00\n"
    "fi MAX ERROR                = 2.500000e-01\n"
    "fi MAX analysis ; RBF fi    = 1.000000e+00 7.500000e-01\n"
    "fi MAX Coord                = 1.000000e+01 2.000000e+01 3.000000e+01\n\n"
    "dfi/dx RMS ERROR                = 1.000000e+00\n"
    "dfi/dx MAX ERROR                = 5.000000e-01\n"
    "dfi/dx MAX analysis ; RBF dfi/dx= 0.000000e+00 -5.000000e-01\n"
    "dfi/dx MAX Coord                = 1.000000e+00 2.000000e+00 3.000000e+00\n\n"
    "dfi/dy RMS ERROR                = 5.000000e-01\n"
    "dfi/dy MAX ERROR                = 1.250000e-01\n"
    "dfi/dy MAX analysis ; RBF dfi/dy= 0.000000e+00 1.250000e-01\n"
    "dfi/dy MAX Coord                = -4.000000e+01 5.000000e+11 -6.000000e-09\n\n"
    "dfi/dz RMS ERROR                = 0.000000e+00\n"
    "dfi/dz MAX ERROR                = 0.000000e+00\n"
    "dfi/dz MAX analysis ; RBF dfi/dz= 0.000000e+00 0.000000e+00\n"
    "dfi/dz MAX Coord                = 7.000000e+01 8.000000e+01 9.000000e+01\n\n";

TEST(PointReport, IsPrintedByteForByteWithCoordinatesTimes10) {
  Object object = WithStatistics();
  PointArrays points = ThreePoints();
  EXPECT_EQ(kReport, Printed([&] {
              EXPECT_EQ(0, object.PrintDebugMessage(points.x.Data(), points.y.Data(), points.z.Data()));
            }));
}

TEST(PointReport, IsFlushed) {
  Object object = WithStatistics();
  PointArrays points = ThreePoints();
  std::string arrived;
  {
    FlushedOutput const output;
    object.PrintDebugMessage(points.x.Data(), points.y.Data(), points.z.Data());
    arrived = output.Arrived();
  }
  EXPECT_EQ(kReport, arrived);
}

TEST(PointReport, IsFlushedLineByLine) {
  Object object = WithStatistics();
  PointArrays points = ThreePoints();
  std::vector<std::string> const pieces =
      PrintedPieces([&] { object.PrintDebugMessage(points.x.Data(), points.y.Data(), points.z.Data()); });
  EXPECT_EQ(17U, pieces.size());
  EXPECT_EQ(LinesWithTheirGaps(kReport), pieces);
}

TEST(PointReport, LeavesTheRootMeanSquaresInPlaceOfTheSums) {
  Object object = WithStatistics();
  PointArrays points = ThreePoints();
  Printed([&] { object.PrintDebugMessage(points.x.Data(), points.y.Data(), points.z.Data()); });
  EXPECT_EQ(2.0, object.m_dFiSumSq);
  EXPECT_EQ(1.0, object.m_dDfdxSumSq);
  EXPECT_EQ(0.5, object.m_dDfdySumSq);
  EXPECT_EQ(0.0, object.m_dDfdzSumSq);
}

TEST(PointReport, PrintedTwiceTakesRootsOfRoots) {
  Object object = WithStatistics();
  PointArrays points = ThreePoints();
  for (int k = 0; k < 2; ++k)
    Printed([&] { object.PrintDebugMessage(points.x.Data(), points.y.Data(), points.z.Data()); });
  EXPECT_EQ(std::sqrt(2.0 / 4.0), object.m_dFiSumSq);
}

TEST(PointReport, LeavesTheCoordinatesUnscaled) {
  Object object = WithStatistics();
  PointArrays points = ThreePoints();
  Printed([&] { object.PrintDebugMessage(points.x.Data(), points.y.Data(), points.z.Data()); });
  PointArrays const fresh = ThreePoints();
  EXPECT_TRUE(fresh.x.IdenticalTo(points.x) && fresh.y.IdenticalTo(points.y) &&
              fresh.z.IdenticalTo(points.z));
}

// ---------------------------------------------------------------------------------------- gathering, in a set-up

std::string ExpectedReport(Object const& o, PointArrays const& p) {
  auto const part = [](std::string const& name, std::string const& pad, double rms, double largest,
                       double exact, double found, std::string const& at) {
    std::string const analysis = pad.empty() ? name + " MAX analysis ; RBF " + name + "= "
                                             : name + " MAX analysis ; RBF " + name + "    = ";
    std::string const gap = "                = ";
    return name + " RMS ERROR" + gap + Number(rms) + "\n" + name + " MAX ERROR" + gap + Number(largest) +
           "\n" + analysis + Number(exact) + " " + Number(found) + "\n" + name + " MAX Coord" + gap + at +
           "\n\n";
  };
  return "FI = 1.e0\n\n" +
         part("fi", "    ", o.m_dFiSumSq, o.m_dFiMaxError, o.m_dFiMaxAnalysis, o.m_dFiMaxRBF,
              Coordinates(p, o.m_iFiMaxPoint)) +
         part("dfi/dx", "", o.m_dDfdxSumSq, o.m_dDfdxMaxError, 0.0, o.m_dDfdxMaxRBF,
              Coordinates(p, o.m_iDfdxMaxPoint)) +
         part("dfi/dy", "", o.m_dDfdySumSq, o.m_dDfdyMaxError, 0.0, o.m_dDfdyMaxRBF,
              Coordinates(p, o.m_iDfdyMaxPoint)) +
         part("dfi/dz", "", o.m_dDfdzSumSq, o.m_dDfdzMaxError, 0.0, o.m_dDfdzMaxRBF,
              Coordinates(p, o.m_iDfdzMaxPoint));
}

std::vector<Point> SomePoints() {
  return {{1.2, 1.4, 1.6}, {0.3, 0.2, 2.5}, {2.9, 1.5, 0.4}, {1.5, 1.5, 1.5}, {5.0, -2.0, 1.0}};
}

TEST(PointReport, EndsEverySetUpOfEveryMethod) {
  for (int const method : {1, 2, 3}) {
    TestMesh const mesh = Hexahedra(HexahedraOptions());
    PointBed bed(mesh, PointSettings{500.0, method, 9});
    Array marks = InteriorUsable(mesh);
    PointArrays points(SomePoints());
    std::string const printed = bed.SetUp(marks, points);
    EXPECT_EQ(ExpectedReport(bed.object, points), printed.substr(printed.find("FI = ")));
    EXPECT_EQ(5, bed.object.m_iNDerived);
    EXPECT_EQ(1.0, bed.object.m_dFiMaxAnalysis);
    EXPECT_GT(bed.object.m_iFiMaxPoint, 0);
  }
}

/// Sums over the stencil of point i: value, d/dx, d/dy, d/dz.
std::vector<double> Sums(Object const& o, int i) {
  std::vector<double> s(4, 0.0);
  for (int k = 1; k <= o.m_ppIBConn[i][0]; ++k) {
    s[0] += o.m_ppIBValueCoef[i][k];
    s[1] += o.m_ppIBCoef[i][k].x;
    s[2] += o.m_ppIBCoef[i][k].y;
    s[3] += o.m_ppIBCoef[i][k].z;
  }
  return s;
}

TEST(PointReport, GathersRootMeanSquareAndLargestErrorOfTheSums) {
  for (int const method : {1, 2, 3}) {
    TestMesh const mesh = Hexahedra(HexahedraOptions());
    PointBed bed(mesh, PointSettings{500.0, method, 9});
    bed.SetUp(InteriorUsable(mesh), SomePoints());
    Object const& o = bed.object;
    double squares[4] = {}, largest[4] = {};
    int at[4] = {};
    for (int i = 1; i <= 5; ++i) {
      std::vector<double> error = Sums(o, i);
      error[0] = 1.0 - error[0];
      for (std::size_t q = 0; q < 4; ++q) {
        squares[q] += error[q] * error[q];
        if (std::fabs(error[q]) > largest[q]) {
          largest[q] = std::fabs(error[q]);
          at[q] = i;
        }
      }
    }
    double const rms[] = {o.m_dFiSumSq, o.m_dDfdxSumSq, o.m_dDfdySumSq, o.m_dDfdzSumSq};
    double const found[] = {o.m_dFiMaxError, o.m_dDfdxMaxError, o.m_dDfdyMaxError, o.m_dDfdzMaxError};
    int const foundAt[] = {o.m_iFiMaxPoint, o.m_iDfdxMaxPoint, o.m_iDfdyMaxPoint, o.m_iDfdzMaxPoint};
    for (int q = 0; q < 4; ++q) {
      EXPECT_EQ(std::sqrt(squares[q] / 5), rms[q]) << "method " << method << " quantity " << q;
      EXPECT_EQ(largest[q], found[q]) << "method " << method << " quantity " << q;
      EXPECT_EQ(at[q], foundAt[q]) << "method " << method << " quantity " << q;
    }
    EXPECT_EQ(Sums(o, o.m_iDfdyMaxPoint)[2], o.m_dDfdyMaxRBF) << "with its sign";
  }
}

TEST(PointReport, NamesTheFirstOfEqualErrors) {
  TestMesh const mesh = Hexahedra(HexahedraOptions());
  PointBed bed(mesh, PointSettings{500.0, 2, 9});
  bed.SetUp(InteriorUsable(mesh), std::vector<Point>(3, Point{1.2, 1.4, 1.6}));
  for (int const point : {bed.object.m_iFiMaxPoint, bed.object.m_iDfdxMaxPoint, bed.object.m_iDfdyMaxPoint,
                          bed.object.m_iDfdzMaxPoint})
    EXPECT_EQ(1, point);
}

// A single step of the driver's, so that sums of squares and not yet their roots are there.
TEST(PointReport, CountsAndSumsWithEveryDerivation) {
  TestMesh const mesh = Hexahedra(HexahedraOptions());
  PointBed bed(mesh, PointSettings{500.0, 2, 9});
  Array marks = InteriorUsable(mesh);
  PointArrays points(SomePoints());
  bed.SetUpToTree(marks, 5);
  bed.object.SearchIBADTress(points.x.Data(), points.y.Data(), points.z.Data(), 2, 0.0, 9);
  double squares = 0.0;
  for (int i = 1; i <= 5; ++i) {
    bed.object.DeriveIBCoefficentBysolveDQfullMatrix(i, points.x.Data(), points.y.Data(), points.z.Data());
    double const e = std::fabs(1.0 - Sums(bed.object, i)[0]);
    squares += e * e;
    EXPECT_EQ(squares, bed.object.m_dFiSumSq);
    EXPECT_EQ(i, bed.object.m_iNDerived);
  }
}

TEST(PointReport, WithoutPointsShowsNoNumbersAndTheCoordinatesOfElement0) {
  PointBed bed(Hexahedra(HexahedraOptions()));
  PointArrays none({});
  none.x[0] = 0.5, none.y[0] = -0.25, none.z[0] = 0.125;
  Array marks = AllUsable(bed.host.mesh.NCell);
  std::string const printed = bed.SetUp(marks, none);
  auto const has = [&printed](std::string const& text) { return printed.find(text) != std::string::npos; };
  for (std::string const name : {"fi", "dfi/dx", "dfi/dy", "dfi/dz"}) {
    EXPECT_TRUE(has("\n" + name + " RMS ERROR                = nan\n") ||
                has("\n" + name + " RMS ERROR                = -nan\n"));
    EXPECT_TRUE(has("\n" + name + " MAX ERROR                = 0.000000e+00\n"));
    EXPECT_TRUE(has("\n" + name + " MAX Coord                = 5.000000e+00 -2.500000e+00 1.250000e+00\n\n"));
  }
  EXPECT_TRUE(has("\nfi MAX analysis ; RBF fi    = 0.000000e+00 0.000000e+00\n"));
}

}  // namespace
}  // namespace zyn_test::report_test
