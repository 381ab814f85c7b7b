#include "cli/points/PointReport.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "cli/base/TemporaryFolder.h"
#include "cli/base/UsageError.h"
#include "cli/points/PointFiles.h"
#include "tests/unit/cli/NotFinite.h"
#include "tests/unit/cli/vtk/VtkFileContent.h"

namespace zyngrad {
namespace {

bool Has(std::string const& text, std::string const& part) { return text.find(part) != std::string::npos; }

/// Three points, the second far away with two cells, the third with weights that are not finite.
PointResults ThreePoints() {
  PointResults results;
  results.points = {{0, 1, 2}, {0, 0, 0}, {0, 0, 0}, "x,y,z,name", {"0,0,0,a", "1,0,0,\"b, c\"", "2,0,0,d"}};
  results.owners = {{0.25, 0}, {0.75, 1}, {0.125, 0}};
  results.run.values = {{1.0, 2.5, kNaN}, {1, 1, 1}, {0, 0, 0}, {0, 0, 0}, {20, 2, 20}, {1, 1, 0}};
  results.exact = {{1, 2, 3}, {1, 1, 1}, {0, 0, 0}, {0, 0, 0}};
  results.errors = ErrorsAt(results.run.values, results.exact);
  results.meanDistance = 0.25;
  results.flags = FlagPoints(results.run.values, results.owners, results.meanDistance);
  results.settings = {3, 500.0, 20, 0.0, false};
  results.nUsableCells = 90;
  results.nCells = 100;
  return results;
}

TEST(PointReport, CountsAndShowsFlaggedPoints) {
  std::ostringstream out;
  PrintPointResults(out, ThreePoints());
  std::string const text = out.str();
  EXPECT_TRUE(
      Has(text,
          "3 points by search method 3, stencils of 2 to 20 cells, 14.0 on average, from 90 usable of 100 "
          "cells"))
      << text;
  EXPECT_TRUE(
      Has(text, "far: 1 point farther than 2 mean cell distances (5.000e-01) from the nearest usable cell"))
      << text;
  EXPECT_TRUE(Has(text, "few: 1 point with fewer than 4 cells in the stencil")) << text;
  EXPECT_TRUE(Has(text, "notfinite: 1 point with weights that are not finite")) << text;
  EXPECT_TRUE(Has(text, "  search method 3: value or gradient is not finite at 1 of 3 points\n")) << text;
  EXPECT_EQ(1, NotFinitePoints(ThreePoints()));
  auto const json = PointResultsAsJson(ThreePoints());
  EXPECT_EQ((std::vector<int>{2}), json["flags"]["far"]["worst"]);
  EXPECT_EQ(1, json["flags"]["notfinite"]["points"]);
  EXPECT_EQ(2, json["value"]["maxPoint"]);
  EXPECT_EQ(1, json["value"]["notFinite"]);
}

TEST(PointReport, SaysThatThereAreNoPoints) {
  std::ostringstream out;
  PrintPointResults(out, {});
  EXPECT_TRUE(Has(out.str(), "there are no points, so there is nothing to show")) << out.str();
  EXPECT_TRUE(PointResultsAsJson({})["value"]["maxPoint"].is_null());
}

TEST(PointFiles, HoldOneRowAPointBehindWhatItCameWith) {
  TemporaryFolder const folder;
  WritePointCsv(folder.path() + "/points.csv", ThreePoints());
  EXPECT_EQ(
      "x,y,z,name,value,gradient_x,gradient_y,gradient_z,exact,exact_gradient_x,exact_gradient_y,"
      "exact_gradient_z,error,gradient_error,distance,members,rank,flags\n"
      "0,0,0,a,1,1,0,0,1,1,0,0,0,0,0.25,20,0,\n"
      "1,0,0,\"b, c\",2.5,1,0,0,2,1,0,0,0.5,0,0.75,2,1,far;few\n"
      "2,0,0,d,nan,1,0,0,3,1,0,0,nan,0,0.125,20,0,notfinite\n",
      ReadAll(folder.path() + "/points.csv"));
  WritePointVtp(folder.path() + "/points.vtp", ThreePoints());
  std::string const content = ReadAll(folder.path() + "/points.vtp");
  EXPECT_EQ((std::vector<double>{0, 0, 0, 1, 0, 0, 2, 0, 0}), ArrayOf<double>(content, "Points"));
  EXPECT_EQ((std::vector<double>{0.25, 0.75, 0.125}), ArrayOf<double>(content, "distance"));
  EXPECT_EQ((std::vector<std::int32_t>{0, 3, 4}), ArrayOf<std::int32_t>(content, "flags"));
  EXPECT_EQ((std::vector<std::int64_t>{1, 2, 3}), ArrayOf<std::int64_t>(content, "point"));
}

/// A triangle in the plane z = 0 and a fourth point, with a scalar and a vector at two times.
PointResults OnTriangle() {
  PointResults results;
  results.points = {{0, 2, 0, 5}, {0, 0, 1, 5}, {0, 0, 0, 0}, "x,y,z", {"0,0,0", "2,0,0", "0,1,0", "5,5,0"},
                    {{0, 1, 2}}};
  results.owners = {{0.25, 0}, {0.25, 0}, {0.125, 0}, {0.5, 0}};
  results.run.values = {{}, {}, {}, {}, {20, 20, 20, 20}, {1, 1, 1, 1}};
  PointValues const p = {{1, 2, 6, 4}, {0, 0, 0, 0}, {0, 0, 0, 0}, {1, 2, 3, 4}, {}, {}};
  PointValues later = p;
  for (double& value : later.value) value += 10.0;
  PointValues const nothing = {{0, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}, {}, {}};
  results.fields = {{"p", {{p}, {later}}}, {"U", {{nothing, p, nothing}, {nothing, later, nothing}}}};
  results.times = {"0.1", "0.2"};
  results.normals = NormalsOf(results.points);
  results.meanDistance = 1.0;
  results.aspectRatios = {1.0, 1.0, 1.0, 0.0};
  results.flags = FlagPoints(results.run.values, results.owners, 1.0, results.aspectRatios);
  results.settings = {2, 500.0, 20, 0.0, false};
  results.isMethodChosen = false;
  return results;
}

TEST(PointFiles, HoldFieldsOfFilesByNameAndTheTimesOfAPointOneAfterTheOther) {
  TemporaryFolder const folder;
  WritePointCsv(folder.path() + "/points.csv", OnTriangle());
  std::string const csv = ReadAll(folder.path() + "/points.csv");
  EXPECT_EQ(
      0U,
      csv.find("time,x,y,z,p,p_gradient_x,p_gradient_y,p_gradient_z,p_normal_derivative,U_x,U_x_gradient_x,"))
      << csv;
  EXPECT_TRUE(Has(csv, "normal_x,normal_y,normal_z,distance,members,rank,flags\n0.1,0,0,0,1,0,0,1,1,0,"))
      << csv;
  EXPECT_TRUE(Has(csv, "\n0.2,0,0,0,11,0,0,1,1,0,")) << csv;
  EXPECT_LT(csv.find("\n0.2,0,0,0"), csv.find("\n0.1,2,0,0"));
  EXPECT_TRUE(Has(csv, ",0,0,0,0.5,20,0,outside\n")) << csv;  // it has no triangle and no normal
}

TEST(PointFiles, HoldTrianglesWithMeansAndSlopesAlongTheNormal) {
  TemporaryFolder const folder;
  WritePointVtp(folder.path() + "/points.vtp", OnTriangle(), 1);
  std::string const content = ReadAll(folder.path() + "/points.vtp");
  EXPECT_TRUE(Has(content, "NumberOfVerts=\"0\"") && Has(content, "NumberOfPolys=\"1\""));
  EXPECT_EQ((std::vector<std::int64_t>{0, 1, 2}), ArrayOf<std::int64_t>(content, "connectivity"));
  EXPECT_EQ((std::vector<double>{11, 12, 16, 14}), ArrayOf<double>(content, "p"));
  EXPECT_EQ((std::vector<double>{0, 11, 0, 0, 12, 0, 0, 16, 0, 0, 14, 0}), ArrayOf<double>(content, "U"));
  EXPECT_EQ((std::vector<double>{1, 2, 3, 0}), ArrayOf<double>(content, "p_normal_derivative"));
  EXPECT_EQ((std::vector<double>{1.0}), ArrayOf<double>(content, "area"));
}

TEST(PointReport, AddsUpTheSurfaceAndGivesRangesOfFields) {
  std::ostringstream out;
  PrintPointResults(out, OnTriangle());
  EXPECT_TRUE(Has(out.str(), "4 points by search method 2 (the default)")) << out.str();
  EXPECT_TRUE(Has(out.str(), "outside: 1 point outside the mesh")) << out.str();
  EXPECT_TRUE(Has(out.str(), "surface of 1 triangles, area 1.000e+00, open at 3 edges")) << out.str();
  auto const json = PointResultsAsJson(OnTriangle());
  EXPECT_EQ("U_y", json["fields"][2]["name"]);
  EXPECT_EQ(1.0, json["fields"][2]["min"]);
  EXPECT_EQ(16.0, json["fields"][2]["max"]);
  EXPECT_EQ(3, json["fields"][2]["maxPoint"]);
  EXPECT_EQ("0.2", json["fields"][2]["maxTime"]);
  // The mean of p at the corners is 3, and that of its slope along z is 2.
  EXPECT_EQ(3.0, json["surface"]["integrals"][0]["value"]);
  EXPECT_EQ((std::vector<double>{0, 0, 3}), json["surface"]["integrals"][0]["valueNormal"]);
  EXPECT_EQ(2.0, json["surface"]["integrals"][0]["slope"]);
  EXPECT_EQ(0, NotFinitePoints(OnTriangle()));
  EXPECT_FALSE(json.contains("value"));
}

TEST(PointReport, WarnsOfFlatCellsWithTheOptionThatHelps) {
  PointResults results = OnTriangle();
  EXPECT_EQ("", FlatCellWarning(results));
  results.aspectRatios = {1.9, 3.0, 2.8, 0.0};
  EXPECT_EQ(0U, FlatCellWarning(results).find(
                    "1 point lies where cells are 3.0 or more times as wide as thick, up to 3.0 times "
                    "at point 2: the nearest 20 cells"));
  EXPECT_TRUE(Has(FlatCellWarning(results), "--search-number 80"));
  results.aspectRatios[3] = 10.0;
  EXPECT_TRUE(Has(FlatCellWarning(results), "up to 10.0 times at point 4"));
  results.settings.number = 80;
  EXPECT_EQ("", FlatCellWarning(results));
  results.settings.number = 20;
  results.settings.method = 3;
  EXPECT_EQ("", FlatCellWarning(results));
}

TEST(PointFiles, ReportAFileThatCannotBeWritten) {
  EXPECT_THROW(WritePointCsv(TestFile("no_such_folder/points.csv"), ThreePoints()), UsageError);
  EXPECT_THROW(WritePointVtp(TestFile("no_such_folder/points.vtp"), ThreePoints()), UsageError);
}

}  // namespace
}  // namespace zyngrad
