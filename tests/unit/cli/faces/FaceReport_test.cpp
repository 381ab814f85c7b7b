#include "cli/faces/FaceReport.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

namespace zyngrad {
namespace {

FaceResults SomeFaces(FaceKind group, int method) {
  FaceResults results;
  results.group = group;
  results.settings = {method, 1000.0, 20, 0.0, false};
  results.stencils = {10, 125, 12, 13};
  results.errors = {10, 4.0, 1e-3, 2e-3, 4e-3, 5e-3, {7, 1, 12, 13, {0.5, 0.25, 0.125}}, 0};
  return results;
}

std::string Printed(FaceResults const& results) {
  std::ostringstream out;
  PrintFaceResults(out, results);
  return out.str();
}

bool Has(std::string const& text, std::string const& part) { return text.find(part) != std::string::npos; }

TEST(FaceReport, SaysWhereTheLargestErrorIs) {
  std::string const text = Printed(SomeFaces(FaceKind::Inner, 4));
  EXPECT_TRUE(Has(text, "10 inner faces by search method 4, stencils of 12 to 13 cells, 12.5 on average"))
      << text;
  EXPECT_TRUE(Has(text, "12 and 13  (0.5, 0.25, 0.125)")) << text;
  EXPECT_FALSE(Has(text, "warning")) << text;
  EXPECT_FALSE(Has(text, "by design")) << text;
}

TEST(FaceReport, SaysThatMethodFourHasNoValuesOnBoundaryFaces) {
  for (FaceKind const group : {FaceKind::Wall, FaceKind::Inlet, FaceKind::Outlet, FaceKind::Symmetry}) {
    FaceResults results = SomeFaces(group, 4);
    results.rows.nOff = 10;  // as all sums are 0
    std::string const text = Printed(results);
    EXPECT_TRUE(Has(text, "all values are 0 by design")) << text;
    EXPECT_FALSE(Has(text, "errors against")) << text;
    EXPECT_FALSE(Has(text, "warning")) << text;
    EXPECT_TRUE(FaceResultsAsJson(results)["errors"].is_null());
    EXPECT_FALSE(SomeFaces(group, 3).GivesNoValues());
  }
  EXPECT_FALSE(SomeFaces(FaceKind::Partition, 4).GivesNoValues());
}

TEST(FaceReport, WarnsOfWeightsThatDoNotSumToOne) {
  FaceResults results = SomeFaces(FaceKind::Inner, 2);
  results.rows = {3, 1.25, {4, 0, 5, 6, {1, 2, 3}}, 1, {9, 1, 7, 8, {4, 5, 6}}};
  std::string const text = Printed(results);
  EXPECT_TRUE(
      Has(text,
          "the weights of 3 faces do not sum to 1 within 1e-03; worst: 1.25000e+00 at face 4 of rank 0 at "
          "(1, 2, 3)"))
      << text;
  EXPECT_TRUE(Has(text, "the weights of 1 face are not finite; first: face 9 of rank 1 at (4, 5, 6)"))
      << text;
  auto const json = FaceResultsAsJson(results);
  EXPECT_EQ(3, json["rows"]["notSummingToOne"]);
  EXPECT_EQ(4, json["rows"]["worstAt"]["face"]);
  EXPECT_EQ(13, json["errors"]["maxAt"]["other"]);
}

TEST(FaceReport, CountsValuesThatAreNotFiniteAndSaysWhy) {
  FaceResults results = SomeFaces(FaceKind::Inner, 2);
  EXPECT_EQ(0, results.NotFiniteFaces());
  results.rows.nNotFinite = 3;
  results.errors.nNotFinite = 2;
  results.whyNotFinite = "--span 1e-308 is too small";
  EXPECT_EQ(3, results.NotFiniteFaces());
  std::string const text = Printed(results);
  EXPECT_TRUE(Has(
      text,
      "  search method 2: the values are not finite at 3 of 10 inner faces: --span 1e-308 is too small\n"))
      << text;
  EXPECT_EQ("--span 1e-308 is too small", FaceResultsAsJson(results)["whyNotFinite"]);
}

TEST(FaceReport, PrintsPlacesWithTheDigitsThatTheMeshNeeds) {
  FaceResults results = SomeFaces(FaceKind::Inner, 2);
  results.errors.maxPlace.at[0] = 6400000.5;
  results.placeDigits = 9;
  EXPECT_TRUE(Has(Printed(results), "(6400000.5, 0.25, 0.125)")) << Printed(results);
}

}  // namespace
}  // namespace zyngrad
