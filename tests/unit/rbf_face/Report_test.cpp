#include <gtest/gtest.h>

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

#include "tests/support/compare/SameBits.h"
#include "tests/support/mesh/BoxMesh.h"
#include "tests/support/rbf_face/FaceBed.h"
#include "tests/support/rbf_face/FaceTables.h"
#include "tests/support/watch/FlushedOutput.h"
#include "tests/support/watch/SettingsFolder.h"

// The accuracy report: how the errors of the rows are gathered, and the text byte for byte.

namespace zyn_test::report_test {
namespace {

using Object = CZynFaceRBFInternalObject;

// ------------------------------------------------------------------------------------------------ the text

/// An operator with the tables that the report looks into: three faces, targets and virtual points as set here.
struct Reporting {
  explicit Reporting(int faceType, int method = 4) : bed(TwoCubes()) {
    object.iFaceType = faceType;
    object.NFace = 3;
    object.iSearch_method = method;
    object.Initialize_Face_memory_allocate();
    for (int i = 1; i <= 3; ++i) {
      object.m_FaceX[i] = 1.0 * i;
      object.m_FaceY[i] = 0.25 * i;
      object.m_FaceZ[i] = -2.0 * i;
      object.m_ppVirtualNode[i][1].SetData(0.5 * i, 0.125 * i, 3.0, 7);
      object.m_ppVirtualNode[i][2].SetData(1.5 * i, -0.125 * i, -3.0, 8);
    }
    object.NFaceDone = 4;
  }
  ~Reporting() { object.Release_Memory(); }

  std::string Text() {
    return Printed([this] { EXPECT_EQ(0, object.PrintDebugMessage()); });
  }

  FaceBed bed;
  Object& object = bed.object;
};

/// All members of the report, each with a value of its own.
void FillReport(Object& o) {
  o.fiRMS = 1.0, o.fiMAX = 0.125, o.fiMAXFaceID = 1, o.fiMAXAnalysis = 1.0, o.fiMAXRBF = 0.875;
  o.dfidxRMS = 4.0, o.dfidxMAX = 2.5, o.dfidxMAXFaceID = 2, o.dfidxMAXRBF = -2.5;
  o.dfidyRMS = 9.0, o.dfidyMAX = 3.5, o.dfidyMAXFaceID = 3, o.dfidyMAXRBF = 3.5;
  o.dfidzRMS = 16.0, o.dfidzMAX = 4.5, o.dfidzMAXFaceID = 1, o.dfidzMAXRBF = -4.5;
  o.dfidnRMS = 25.0, o.dfidnMAX = 5.5, o.dfidnMAXFaceID = 2, o.dfidnMAXRBF = 5.5;
  o.MAXerr = 0.0625, o.MAXerrNodeID = 11;
}

std::string const kValueLines =
    "fi RMS ERROR                = 5.000000e-01\n"
    "fi MAX ERROR                = 1.250000e-01\n"
    "fi MAX analysis ; RBF fi    = 1.000000e+00 8.750000e-01\n"
    "fi MAX Coord                = 1.000000e+01 2.500000e+00 -2.000000e+01\n\n";

std::string const kNormalLines =
    "dfi/dn RMS ERROR                = 2.500000e+00\n"
    "dfi/dn MAX ERROR                = 5.500000e+00\n"
    "dfi/dn MAX Face ID              = 2\n"
    "dfi/dn MAX analysis ; RBF dfi/dn= 0.000000e+00 5.500000e+00\n"
    "dfi/dn MAX Coord                = 2.000000e+01 5.000000e+00 -4.000000e+01\n"
    "dfi/dn MAX Virtual P Coord      = 1.000000e+01 2.500000e+00 3.000000e+01\n"
    "dfi/dn MAX Virtual E Coord      = 3.000000e+01 -2.500000e+00 -3.000000e+01\n\n";

std::string const kSlopeLines =
    "MAXerr NodeID = 11, ERROR = 6.250000e-02\n"
    "dfi/dx RMS ERROR                = 1.000000e+00\n"
    "dfi/dx MAX ERROR                = 2.500000e+00\n"
    "dfi/dx MAX analysis ; RBF dfi/dx= 0.000000e+00 -2.500000e+00\n"
    "dfi/dx MAX Coord                = 2.000000e+01 5.000000e+00 -4.000000e+01\n"
    "dfi/dx MAX Virtual P Coord      = 1.000000e+01 2.500000e+00 3.000000e+01\n"
    "dfi/dx MAX Virtual E Coord      = 3.000000e+01 -2.500000e+00 -3.000000e+01\n\n"
    "dfi/dy RMS ERROR                = 1.500000e+00\n"
    "dfi/dy MAX ERROR                = 3.500000e+00\n"
    "dfi/dy MAX analysis ; RBF dfi/dy= 0.000000e+00 3.500000e+00\n"
    "dfi/dy MAX Coord                = 3.000000e+01 7.500000e+00 -6.000000e+01\n\n"
    "dfi/dz RMS ERROR                = 2.000000e+00\n"
    "dfi/dz MAX ERROR                = 4.500000e+00\n"
    "dfi/dz MAX analysis ; RBF dfi/dz= 0.000000e+00 -4.500000e+00\n"
    "dfi/dz MAX Coord                = 1.000000e+01 2.500000e+00 -2.000000e+01\n\n";

TEST(FaceReport, OfMethod4IsTheseLinesByteForByte) {
  Reporting r(kInner);
  FillReport(r.object);
  EXPECT_EQ("Inner Face FI = 1.e0\n\n" + kValueLines + kNormalLines, r.Text());
}

TEST(FaceReport, OfAllOtherMethodsIsTheseLinesByteForByte) {
  for (int const method : {1, 2, 3, 7}) {
    Reporting r(kInner, method);
    FillReport(r.object);
    EXPECT_EQ("Inner Face FI = 1.e0\n\n" + kValueLines + kSlopeLines, r.Text()) << method;
  }
}

TEST(FaceReport, BeginsWithTheHeadingOfTheFaceType) {
  std::string const headings[] = {"", "Inner", "Wall", "Inlet", "Outlet", "Partinter", "Symmetry"};
  for (Group const group : kGroups) {
    Reporting r(group);
    FillReport(r.object);
    EXPECT_EQ(headings[group] + " Face FI = 1.e0\n\n" + kValueLines + kNormalLines, r.Text());
  }
}

TEST(FaceReport, OfAnUnknownTypeHasNoHeading) {
  for (int const type : {0, 7, -1}) {
    Reporting r(type);
    FillReport(r.object);
    EXPECT_EQ(kValueLines + kNormalLines, r.Text());
  }
}

TEST(FaceReport, IsFlushedAtOnce) {
  Reporting r(kInner);
  FillReport(r.object);
  std::string arrived;
  {
    FlushedOutput const output;
    r.object.PrintDebugMessage();
    arrived = output.Arrived();
  }
  EXPECT_EQ("Inner Face FI = 1.e0\n\n" + kValueLines + kNormalLines, arrived);
}

TEST(FaceReport, PrintsTheCoordinatesOfElement0WithoutAWorstFace) {
  Reporting four(kWall), three(kWall, 3);
  std::string const zeros = "0.000000e+00 0.000000e+00 0.000000e+00\n";
  EXPECT_EQ(
      "Wall Face FI = 1.e0\n\n"
      "fi RMS ERROR                = 0.000000e+00\n"
      "fi MAX ERROR                = 0.000000e+00\n"
      "fi MAX analysis ; RBF fi    = 0.000000e+00 0.000000e+00\n"
      "fi MAX Coord                = " +
          zeros +
          "\n"
          "dfi/dn RMS ERROR                = 0.000000e+00\n"
          "dfi/dn MAX ERROR                = 0.000000e+00\n"
          "dfi/dn MAX Face ID              = 0\n"
          "dfi/dn MAX analysis ; RBF dfi/dn= 0.000000e+00 0.000000e+00\n"
          "dfi/dn MAX Coord                = " +
          zeros + "dfi/dn MAX Virtual P Coord      = " + zeros +
          "dfi/dn MAX Virtual E Coord      = " + zeros + "\n",
      four.Text());
  EXPECT_NE(std::string::npos, three.Text().find("dfi/dz MAX Coord                = " + zeros));
}

TEST(FaceReport, TurnsAllFiveSumsOfSquaresIntoRootMeanSquares) {
  for (int const method : {3, 4}) {
    Reporting r(kInner, method);
    FillReport(r.object);
    r.Text();
    EXPECT_EQ(0.5, r.object.fiRMS);
    EXPECT_EQ(1.0, r.object.dfidxRMS);
    EXPECT_EQ(1.5, r.object.dfidyRMS);
    EXPECT_EQ(2.0, r.object.dfidzRMS);
    EXPECT_EQ(2.5, r.object.dfidnRMS);
  }
}

TEST(FaceReport, ChangesNothingElse) {
  Reporting r(kInner);
  FillReport(r.object);
  r.Text();
  EXPECT_EQ(0.125, r.object.fiMAX);
  EXPECT_EQ(5.5, r.object.dfidnMAX);
  EXPECT_EQ(4, r.object.NFaceDone);
  EXPECT_EQ(3.0, r.object.m_FaceX[3]);
}

/// A text with the signs of what is not a number taken away: nothing promises them.
std::string WithoutSignsOfNaN(std::string text) {
  for (std::size_t at = text.find("-nan"); at != std::string::npos; at = text.find("-nan")) text.erase(at, 1);
  return text;
}

TEST(FaceReport, OfMethods1And2DividesBy0AndPrintsWhatComesOut) {
  for (int const method : {1, 2}) {
    Reporting r(kInner, method);
    FillReport(r.object);
    r.object.dfidyRMS = 0.0;
    r.object.NFaceDone = 0;
    std::string const text = WithoutSignsOfNaN(r.Text());
    EXPECT_NE(std::string::npos, text.find("\nfi RMS ERROR                = inf\n"));
    EXPECT_NE(std::string::npos, text.find("\ndfi/dx RMS ERROR                = inf\n"));
    EXPECT_NE(std::string::npos, text.find("\ndfi/dy RMS ERROR                = nan\n"));
    EXPECT_NE(std::string::npos, text.find("\ndfi/dz RMS ERROR                = inf\n"));
    EXPECT_TRUE(std::isnan(r.object.dfidnRMS) || std::isinf(r.object.dfidnRMS));
  }
}

// ------------------------------------------------------------------------------------------ a report of a whole run

std::string Formatted(char const* format, ...) {
  char text[1024];
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  return text;
}

std::string Coordinates(char const* label, Point p, char const* end = "\n") {
  return Formatted("%s= %le %le %le%s", label, 10.0 * p.x, 10.0 * p.y, 10.0 * p.z, end);
}

double RootMean(PlainErrors const& errors, PlainFaceOperator const& plain) {
  return std::sqrt(errors.squares / static_cast<double>(plain.facesDone));
}

/// Lines of one derivative: mean, largest, value there, and the rest as given.
std::string SlopeLines(PlainFaceOperator const& plain, char axis, PlainErrors const& e,
                       std::string const& rest) {
  return Formatted("dfi/d%c RMS ERROR                = %le\n", axis, RootMean(e, plain)) +
         Formatted("dfi/d%c MAX ERROR                = %le\n", axis, e.largest) + rest;
}

std::string ExpectedReport(PlainFaceOperator const& p, char const* heading) {
  auto const target = [&](int face) { return p.targets[static_cast<std::size_t>(face)]; };
  auto const virtualPoint = [&](int face, std::size_t k) {
    return p.virtualPoints[static_cast<std::size_t>(face)][k].point;
  };
  std::string text = heading + std::string(" Face FI = 1.e0\n\n");
  text += Formatted("fi RMS ERROR                = %le\n", RootMean(p.value, p));
  text += Formatted("fi MAX ERROR                = %le\n", p.value.largest);
  text += Formatted("fi MAX analysis ; RBF fi    = %le %le\n", p.value.face == 0 ? 0.0 : 1.0, p.value.sum);
  text += Coordinates("fi MAX Coord                ", target(p.value.face), "\n\n");
  if (p.settings.method == 4) {
    text += Formatted("dfi/dn RMS ERROR                = %le\n", RootMean(p.ddn, p));
    text += Formatted("dfi/dn MAX ERROR                = %le\n", p.ddn.largest);
    text += Formatted("dfi/dn MAX Face ID              = %d\n", p.ddn.face);
    text += Formatted("dfi/dn MAX analysis ; RBF dfi/dn= %le %le\n", 0.0, p.ddn.sum);
    text += Coordinates("dfi/dn MAX Coord                ", target(p.ddn.face));
    text += Coordinates("dfi/dn MAX Virtual P Coord      ", virtualPoint(p.ddn.face, 1));
    return text + Coordinates("dfi/dn MAX Virtual E Coord      ", virtualPoint(p.ddn.face, 2), "\n\n");
  }
  text += Formatted("MAXerr NodeID = %d, ERROR = %le\n", p.maxVertexErrorNode, p.maxVertexError);
  const struct {
    char axis;
    PlainErrors const& e;
  } slopes[] = {{'x', p.ddx}, {'y', p.ddy}, {'z', p.ddz}};
  for (auto const& [axis, e] : slopes) {
    std::string rest = Formatted("dfi/d%c MAX analysis ; RBF dfi/d%c= %le %le\n", axis, axis, 0.0, e.sum);
    std::string const label = Formatted("dfi/d%c MAX Coord                ", axis);
    rest += Coordinates(label.c_str(), target(e.face), axis == 'x' ? "\n" : "\n\n");
    if (axis == 'x') {
      rest += Coordinates("dfi/dx MAX Virtual P Coord      ", virtualPoint(e.face, 1));
      rest += Coordinates("dfi/dx MAX Virtual E Coord      ", virtualPoint(e.face, 2), "\n\n");
    }
    text += SlopeLines(p, axis, e, rest);
  }
  return text;
}

/// The report alone of what a set-up printed.
std::string ReportIn(std::string const& printed, std::string const& heading) {
  std::size_t const begin = printed.find(heading + " Face FI");
  return begin == std::string::npos ? printed : printed.substr(begin);
}

TEST(FaceReport, OfARunIsMadeOfTheRowsOfAllFaces) {
  char const* const headings[] = {"", "Inner", "Wall", "Inlet", "Outlet", "Partinter", "Symmetry"};
  for (int const method : {1, 2, 3, 4}) {
    for (Group const group : kGroups) {
      FaceSettings const settings = {method, 50.0, 8};
      FaceBed bed(SkewedCubesOfAllGroups());
      bed.host.parameters.block.iDebugMode = 1;
      std::string const report = ReportIn(bed.SetUp(group, settings), headings[group]);
      PlainFaceOperator plain = bed.Plain(group, settings);
      plain.Run();
      EXPECT_EQ(WithoutSignsOfNaN(ExpectedReport(plain, headings[group])), WithoutSignsOfNaN(report))
          << method << " " << group;
    }
  }
}

TEST(FaceReport, IsPrintedOnlyInDebugMode) {
  for (std::string const debug : {"0", "1"}) {
    FaceBed bed(TwoCubes(), Settings("50", "4", "1.0", "8", debug));
    EXPECT_EQ(debug == "1", bed.SetUp(kInner).find("Inner Face FI = 1.e0\n\n") == 0);
  }
}

// The value rows of these faces are 0, so each has a sum of 0 and an error of 1.
TEST(FaceReport, OfMethod4ShowsAnErrorOf1ForEveryBoundaryFace) {
  for (Group const group : {kWall, kInlet, kOutlet, kSymmetry}) {
    FaceBed bed(SkewedCubesOfAllGroups());
    bed.SetUp(group, {4, 50.0, 8});
    EXPECT_EQ(static_cast<double>(bed.object.NFace), bed.object.fiRMS);
    EXPECT_EQ(1.0, bed.object.fiMAX);
    EXPECT_EQ(1, bed.object.fiMAXFaceID) << "the others are not greater";
    EXPECT_EQ(0.0, bed.object.fiMAXRBF);
    EXPECT_EQ(1.0, bed.object.fiMAXAnalysis);
    EXPECT_EQ(bed.object.NFace, bed.object.NFaceDone);
  }
}

TEST(FaceReport, OfMethods1To3HasZeroVirtualPoints) {
  for (int const method : {1, 2, 3}) {
    FaceBed bed(SkewedCubesOfAllGroups());
    bed.host.parameters.block.iDebugMode = 1;
    std::string const text = bed.SetUp(kInner, {method, 50.0, 8});
    EXPECT_GT(bed.object.dfidxMAXFaceID, 0);
    EXPECT_NE(std::string::npos,
              text.find("dfi/dx MAX Virtual P Coord      = 0.000000e+00 0.000000e+00 0.000000e+00\n"
                        "dfi/dx MAX Virtual E Coord      = 0.000000e+00 0.000000e+00 0.000000e+00\n\n"));
  }
}

TEST(FaceReport, OfMethods3And4CountsEveryFace) {
  for (int const method : {1, 2, 3, 4}) {
    FaceBed bed(SkewedCubesOfAllGroups());
    bed.SetUp(kInner, {method, 50.0, 8});
    EXPECT_EQ(method >= 3 ? 54 : 0, bed.object.NFaceDone) << method;
  }
}

}  // namespace
}  // namespace zyn_test::report_test
