// Whole runs of one method on a small box, as the command has them.

#include "cli/gradient/GradientRun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "cli/base/TemporaryFolder.h"
#include "cli/output/RunSettings.h"
#include "reference_host/parallel/LoadMesh.h"
#include "tests/unit/cli/TestRanks.h"

namespace zyngrad {
namespace {

GradientMethod const& Method(std::string const& name) {
  auto const& all = GradientMethods();
  return *std::find_if(all.begin(), all.end(), [&name](GradientMethod const& m) { return name == m.name; });
}

class GradientRun : public testing::Test {
 protected:
  GradientRun() : mesh_(reference_host::LoadMesh(TestRanks().communicator(), "box:5,5,5", {}, {})) {
    theCase_.isBoundaryCell = BoundaryCells(*mesh_.partition->mesh());
    theCase_.nRepeat = 1;
    theCase_.logFile = "/dev/null";
  }

  MethodResult Run(std::string const& method, std::vector<std::string> const& fields,
                   std::string const& weight, double span = 500.0) {
    theCase_.fields.clear();
    for (std::string const& field : fields)
      theCase_.fields.push_back({"", {MakeTestField(TestRanks(), *mesh_.partition, Expression(field))}});
    theCase_.exactL2.assign(fields.size(), 1.0);
    theCase_.weight = MakeCellValues(TestRanks(), *mesh_.partition, Expression(weight), "the weight");
    theCase_.radialBasis.span = span;
    mesh_.partition->SetBaseFileName(
        WriteSettingsText(folder_.path() + "/settings.rbf", SettingsFileText(theCase_.radialBasis)));
    return RunMethod(TestRanks(), mesh_, Method(method), theCase_);
  }

  TemporaryFolder folder_;
  reference_host::LoadedMesh mesh_;
  GradientCase theCase_;
};

TEST_F(GradientRun, CountsCellsThatAreNotFiniteAndBlamesTheSpan) {
  for (double const span : {1e-308, 1e-60, 1e60, 1e308}) {
    MethodResult const result = Run("rbf", {"x*y"}, "1", span);
    EXPECT_EQ(125, result.NotFiniteCells()) << span;
    EXPECT_NE(result.whyNotFinite.find("--span " + ShortestText(span)), std::string::npos)
        << result.whyNotFinite;
  }
  MethodResult const sound = Run("rbf", {"x*y"}, "1");
  EXPECT_EQ(0, sound.NotFiniteCells());
  EXPECT_EQ("", sound.whyNotFinite);
}

TEST_F(GradientRun, DistrustsFiniteNumbersOfASpanThatCannotWork) {
  theCase_.radialBasis.shapeNormalize = true;  // whose offsets, over an infinite length, are all 0
  MethodResult const result = Run("rbf", {"x*y"}, "1", 1e308);
  EXPECT_EQ(0, result.NotFiniteCells());
  EXPECT_NE(result.whyNotFinite.find("--span 1e+308 is too large"), std::string::npos) << result.whyNotFinite;
}

TEST_F(GradientRun, BlamesTheFieldWhoseSumsOverflow) {
  MethodResult const result = Run("plain", {"1e308*x"}, "1");
  EXPECT_GT(result.NotFiniteCells(), 0);
  EXPECT_NE(result.whyNotFinite.find("the field's values reach 1.0e+308"), std::string::npos)
      << result.whyNotFinite;
}

TEST_F(GradientRun, TakesAWeightOfZero) { EXPECT_EQ(0, Run("weighted", {"x*y"}, "0").NotFiniteCells()); }

bool SaysTheSameAsPlain(MethodResult const& result) {
  return std::any_of(result.remarks.begin(), result.remarks.end(), [](std::string const& remark) {
    return remark.find("the same numbers as plain") != std::string::npos;
  });
}

TEST_F(GradientRun, SaysWhereNumbersAreThoseOfPlain) {
  EXPECT_FALSE(SaysTheSameAsPlain(Run("plain", {"x*y"}, "1")));
  EXPECT_TRUE(SaysTheSameAsPlain(Run("weighted", {"x*y"}, "7")));
  EXPECT_FALSE(SaysTheSameAsPlain(Run("weighted", {"x*y"}, "1+x")));
  EXPECT_TRUE(SaysTheSameAsPlain(Run("vector", {"x*y"}, "1")));
  EXPECT_FALSE(SaysTheSameAsPlain(Run("vector", {"x*y", "y*z", "z*x"}, "1")));
}

// The remark is about printed numbers, of four digits.
TEST_F(GradientRun, GivesThoseNumbersThen) {
  double const plain = Run("plain", {"sin(x)*y"}, "1").gradients.front().errors.interior.l2;
  for (char const* method : {"weighted", "vector"})
    EXPECT_NEAR(Run(method, {"sin(x)*y"}, "7").gradients.front().errors.interior.l2, plain, 1e-9 * plain)
        << method;
}

}  // namespace
}  // namespace zyngrad
