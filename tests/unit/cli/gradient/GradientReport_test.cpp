#include "cli/gradient/GradientReport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <sstream>

namespace zyngrad {
namespace {

MethodResult PlainResult() {
  MethodResult result;
  result.method = &GradientMethods()[0];
  result.times = {0.001, 0.004, 0.002, 12.34};
  GradientResult one;
  one.label = "plain";
  one.errors.interior = {1000, 0.5, 0.001, 0.002, 0.01, 0.125, 77, {0.5, 0.25, 0.75}, 0};
  one.errors.boundary.l1 = one.errors.boundary.l2 = one.errors.boundary.max = std::nan("");
  result.gradients.push_back(one);
  return result;
}

MethodResult NotRunResult() {
  MethodResult result;
  result.method = &GradientMethods()[3];
  result.notRun = "least squares stops at cell 9 (zero pivot)";
  return result;
}

std::string Printed(std::vector<MethodResult> const& results) {
  std::ostringstream out;
  PrintGradientResults(out, results, {2.0});
  return out.str();
}

TEST(GradientReport, PrintsARowForInteriorAndBoundaryCells) {
  std::string const text = Printed({PlainResult()});
  EXPECT_NE(text.find("plain   interior   1,000  1.000e-03  2.000e-03    1.000e-02  1.250e-01       77  "
                      "(0.5, 0.25, 0.75)"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("          boundary       0          -"), std::string::npos) << text;
  EXPECT_NE(text.find("1.000          4.000           2.000         12.3"), std::string::npos) << text;
}

TEST(GradientReport, PrintsPlacesWithTheDigitsThatTheMeshNeeds) {
  MethodResult result = PlainResult();
  ErrorNorms& norms = result.gradients[0].errors.interior;
  norms.maxPlace[0] = 6400000.5;
  std::ostringstream out;
  PrintGradientResults(out, {result}, {2.0}, 9);
  EXPECT_NE(out.str().find("(6400000.5, 0.25, 0.75)"), std::string::npos) << out.str();
}

TEST(GradientReport, SaysWhyAMethodDidNotRun) {
  std::string const text = Printed({PlainResult(), NotRunResult()});
  EXPECT_NE(text.find("  lsq: not run: least squares stops at cell 9 (zero pivot)\n"), std::string::npos)
      << text;
  EXPECT_EQ(text.find("lsq  "), std::string::npos) << text;
}

TEST(GradientReport, CountsCellsThatAreNotFinite) {
  MethodResult result = PlainResult();
  result.gradients[0].errors.boundary.nNotFinite = 3;
  EXPECT_NE(Printed({result}).find("  plain: the gradient is not finite in 3 of 1,000 cells\n"),
            std::string::npos);
  result.whyNotFinite = "--span 1e-308 is too small";
  EXPECT_NE(Printed({result}).find(" 3 of 1,000 cells: --span 1e-308 is too small\n"), std::string::npos);
  EXPECT_EQ(3, result.NotFiniteCells());
}

MethodResult ResultWithoutExactGradient() {
  MethodResult result = PlainResult();
  GradientSizes sizes;
  sizes.norms = result.gradients[0].errors;
  sizes.norms.boundary.nNotFinite = 2;
  sizes.lowest = {-1.5, 0.0, 0.25};
  sizes.highest = {2.5, 0.0, std::nan("")};
  result.gradients[0].errors = {};
  result.gradients[0].sizes = sizes;
  return result;
}

TEST(GradientReport, PrintsSizesWhereThereIsNoExactGradient) {
  std::ostringstream out;
  PrintGradientResults(out, {ResultWithoutExactGradient()}, {});
  std::string const text = out.str();
  EXPECT_EQ(text.find("error"), std::string::npos) << text;
  EXPECT_NE(
      text.find("plain   interior   1,000  1.000e-03  2.000e-03  1.250e-01       77  (0.5, 0.25, 0.75)"),
      std::string::npos)
      << text;
  EXPECT_NE(text.find("plain   -1.500e+00  2.500e+00  0.000e+00  0.000e+00  2.500e-01   -"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("  plain: the gradient is not finite in 2 of 1,000 cells\n"), std::string::npos)
      << text;
}

TEST(GradientReport, GivesSizesAsJsonWhereThereIsNoExactGradient) {
  nlohmann::ordered_json const json = GradientResultsAsJson({ResultWithoutExactGradient()});
  EXPECT_FALSE(json[0].contains("errors"));
  auto const& gradient = json[0]["gradients"][0];
  EXPECT_EQ(0.002, gradient["interior"]["l2"]);
  EXPECT_FALSE(gradient["interior"].contains("l2Relative"));
  EXPECT_EQ((std::vector<double>{-1.5, 2.5}), gradient["range"]["x"]);
  EXPECT_EQ("[0.25,null]", gradient["range"]["z"].dump());
}

TEST(GradientReport, GivesTheSameNumbersAsJson) {
  nlohmann::ordered_json const json = GradientResultsAsJson({PlainResult(), NotRunResult()});
  ASSERT_EQ(2U, json.size());
  EXPECT_EQ("plain", json[0]["method"]);
  EXPECT_EQ(0.002, json[0]["seconds"]["laterCalls"]);
  auto const& interior = json[0]["errors"][0]["interior"];
  EXPECT_EQ(0.002, interior["l2"]);
  EXPECT_EQ(77, interior["maxCell"]);
  EXPECT_EQ((std::vector<double>{0.5, 0.25, 0.75}), interior["maxPlace"]);
  EXPECT_TRUE(json[0]["errors"][0]["boundary"]["maxCell"].is_null());
  EXPECT_NE(json.dump().find("\"l2\":null"), std::string::npos);
  EXPECT_EQ(false, json[1]["ran"]);
  EXPECT_EQ("least squares stops at cell 9 (zero pivot)", json[1]["notRun"]);
}

}  // namespace
}  // namespace zyngrad
