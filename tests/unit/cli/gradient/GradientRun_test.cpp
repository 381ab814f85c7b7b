// Whole runs of one method on a small box, as the command has them.

#include "cli/gradient/GradientRun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
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

// A vector and two scalars: methods of three fields take the vector in one call and the scalars in another.
TEST_F(GradientRun, GivesVectorsAndScalarsTheSameBitsWhateverTheCallsTake) {
  auto const make = [this](std::string const& formula) {
    TestField field = MakeTestField(TestRanks(), *mesh_.partition, Expression(formula));
    field.gx.clear();  // as if from a file
    return field;
  };
  theCase_.fields = {
      {"p", {make("x*y")}}, {"U", {make("sin(x)*y"), make("y*z^2"), make("cos(z)+x")}}, {"T", {make("x^2")}}};
  theCase_.exactL2.clear();
  theCase_.weight.assign(theCase_.fields[0].component[0].value.size(), 1.0);
  MethodResult const plain = RunMethod(TestRanks(), mesh_, Method("plain"), theCase_);
  MethodResult const vector = RunMethod(TestRanks(), mesh_, Method("vector"), theCase_);
  ASSERT_EQ(5U, plain.gradients.size());
  ASSERT_EQ(5U, vector.gradients.size());
  std::vector<std::string> const names = {"p", "U.x", "U.y", "U.z", "T"};
  for (std::size_t k = 0; k < names.size(); ++k) {
    EXPECT_EQ(names[k], plain.gradients[k].fieldName);
    EXPECT_EQ(names[k], vector.gradients[k].fieldName);
    GradientArrays const& a = plain.gradients[k].gradient;
    GradientArrays const& b = vector.gradients[k].gradient;
    EXPECT_EQ(a.x, b.x) << names[k];
    EXPECT_EQ(a.y, b.y) << names[k];
    EXPECT_EQ(a.z, b.z) << names[k];
  }
}

TEST_F(GradientRun, GivesALaterTimeTheBitsOfARunOfItsOwn) {
  TestField const first = MakeTestField(TestRanks(), *mesh_.partition, Expression("x*y")),
                  second = MakeTestField(TestRanks(), *mesh_.partition, Expression("sin(3*x)*z"));
  theCase_.exactL2 = {1.0};
  theCase_.weight.assign(first.value.size(), 1.0);
  mesh_.partition->SetBaseFileName(
      WriteSettingsText(folder_.path() + "/settings.rbf", SettingsFileText(theCase_.radialBasis)));
  for (GradientMethod const& method : GradientMethods()) {
    theCase_.fields = {{"", {second}}};
    MethodResult const alone = RunMethod(TestRanks(), mesh_, method, theCase_);
    MethodRun run(TestRanks(), mesh_, method, theCase_);
    theCase_.fields = {{"", {first}}};
    run.Apply(theCase_);
    theCase_.fields = {{"", {second}}};
    MethodResult const later = run.Apply(theCase_);
    EXPECT_EQ(alone.gradients[0].gradient.x, later.gradients[0].gradient.x) << method.name;
    EXPECT_EQ(alone.gradients[0].gradient.z, later.gradients[0].gradient.z) << method.name;
    EXPECT_TRUE(std::isnan(later.times.first)) << "the first call was at another time";
    EXPECT_GT(later.times.later, 0.0);
  }
}

}  // namespace
}  // namespace zyngrad
