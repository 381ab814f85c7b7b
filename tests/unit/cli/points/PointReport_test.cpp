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
  EXPECT_TRUE(Has(out.str(), "there are no points, so there are no errors to show")) << out.str();
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

TEST(PointFiles, ReportAFileThatCannotBeWritten) {
  EXPECT_THROW(WritePointCsv(TestFile("no_such_folder/points.csv"), ThreePoints()), UsageError);
  EXPECT_THROW(WritePointVtp(TestFile("no_such_folder/points.vtp"), ThreePoints()), UsageError);
}

}  // namespace
}  // namespace zyngrad
