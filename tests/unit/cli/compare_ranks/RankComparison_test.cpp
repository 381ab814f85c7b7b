#include "cli/compare_ranks/RankComparison.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <sstream>

#include "cli/base/UsageError.h"
#include "reference_host/mesh/MeshError.h"

namespace zyngrad {
namespace {

RankQuestion Ask(std::string const& field, std::string const& methods = "gradients", int nSweeps = 3) {
  return {StudyCases(ChooseStudyMethods(methods), {}, {nSweeps}), RankField(Expression(field)), 20};
}

std::size_t IndexOf(RankQuestion const& question, std::string const& name) {
  auto const found = std::find_if(question.cases.begin(), question.cases.end(),
                                  [&name](StudyCase const& c) { return name == c.method->name; });
  return static_cast<std::size_t>(found - question.cases.begin());
}

TEST(LayersFromCuts, CountsCellsFromTheNearestCut) {
  WholeMesh const row = ReadWholeMesh("box:10,1,1", {});
  EXPECT_EQ((std::vector<int>{3, 3, 2, 1, 0, 0, 1, 2, 3, 3}),
            LayersFromCuts(row.faces, {0, 0, 0, 0, 0, 1, 1, 1, 1, 1}));
  EXPECT_EQ((std::vector<int>{1, 0, 0, 1, 2, 2, 1, 0, 0, 1}),
            LayersFromCuts(row.faces, {0, 0, 1, 1, 1, 1, 1, 1, 2, 2}));
  EXPECT_EQ(LayersFromCuts(row.faces, std::vector<int>(10, 0)), std::vector<int>(10, kLastLayer));
}

TEST(WholeMesh, IsDividedAsOnRanks) {
  WholeMesh const mesh = ReadWholeMesh("box:4,4,4:tet", {});
  for (int const nParts : {1, 2, 3, 7}) {
    std::vector<int> const part = mesh.PartOfCell(nParts);
    EXPECT_EQ(384u, part.size());
    EXPECT_EQ(*std::max_element(part.begin(), part.end()), nParts - 1);
  }
  EXPECT_THROW(mesh.PartOfCell(65), reference_host::MeshError);
  EXPECT_THROW(ReadWholeMesh("nowhere.msh", {}), reference_host::MeshError);
  EXPECT_THROW(ReadWholeMesh("box:2,2,2", {{"lid", reference_host::BoundaryGroup::Wall}}),
               reference_host::MeshError);
}

TEST(RankComparison, KeepsThePromiseOnEveryKindOfCell) {
  for (std::string const mesh : {"box:6,6,6:hex:perturb=0.2,seed=3", "box:4,4,4:tet", "box:4,4,4:prism",
                                 "box:4,4,4:dual", "box:6,6,6:hex:stretch=1000", "box:6,6,6:hex:skew=0.25"}) {
    for (RankComparison const& comparison :
         CompareRankCounts(ReadWholeMesh(mesh, {}), {1, 2, 5}, Ask("sin(2*x)*y + z^2"))) {
      ASSERT_EQ(5u, comparison.differences.size());
      for (RankDifference const& d : comparison.differences) {
        EXPECT_TRUE(d.KeepsItsPromise())
            << mesh << ' ' << d.method << " on " << comparison.nRanks << ": " << d.worstRatio;
        EXPECT_TRUE(d.isRepeatable);
        EXPECT_EQ("", d.notRun);
      }
    }
  }
}

TEST(RankComparison, FindsDifferencesOnlyWhereThereAreAny) {
  auto const comparisons =
      CompareRankCounts(ReadWholeMesh("box:8,8,8:hex:perturb=0.2", {}), {1, 4}, Ask("sin(2*x)*y + z^2"));
  RankDifference const& plain = comparisons[1].differences[0];
  EXPECT_GT(plain.largest[0], 0.0);  // faces of a cut come after those inside
  EXPECT_LT(plain.largest[0], 1e-12);
  EXPECT_EQ(512, plain.nItems[0] + plain.nItems[1] + plain.nItems[2] + plain.nItems[3]);
  for (RankDifference const& d : comparisons[0].differences) EXPECT_EQ(0.0, d.worstRatio);
}

TEST(RunOnParts, GivesLeastSquaresTheExactSlopeOfALinearField) {
  RankQuestion const question = Ask("2*x - y + 3*z");
  WholeMesh const mesh = ReadWholeMesh("box:3,4,5:tet", {});
  for (int const nParts : {1, 3}) {
    auto const results = RunOnParts(mesh, nParts, question, nParts == 3);
    for (reference_host::Point const& g : results[IndexOf(question, "lsq")].item) {
      EXPECT_NEAR(2.0, g[0], 1e-12);
      EXPECT_NEAR(-1.0, g[1], 1e-12);
      EXPECT_NEAR(3.0, g[2], 1e-12);
    }
  }
}

TEST(RankComparison, FindsFacesAndPointsWithinTheirError) {
  RankQuestion const question = Ask("sin(2*x)*y + z^2", "faces,points");
  for (std::string const mesh : {"box:8,8,8", "box:8,8,8:hex:perturb=0.1,seed=3", "box:4,4,4:tet"}) {
    auto const comparisons = CompareRankCounts(ReadWholeMesh(mesh, {}), {1, 2}, question);
    for (RankDifference const& d : comparisons[1].differences) {
      EXPECT_TRUE(d.KeepsItsPromise()) << mesh << ' ' << d.method << ": " << d.worstRatio;
      EXPECT_EQ("error", d.level);
    }
    auto const& byVertices = comparisons[1].differences[IndexOf(question, "faces3")];
    EXPECT_GT(byVertices.largest[0], 1e-6);  // vertices on the cut lack cells
  }
}

TEST(RankComparison, FindsFacesOfTheMeshsOwnNeighboursTheSameAwayFromCuts) {
  RankQuestion const question = Ask("sin(2*x)*y + z^2", "faces3");
  RankDifference const d =
      CompareRankCounts(ReadWholeMesh("box:10,4,4:hex:perturb=0.1", {}), {1, 2}, question)[1]
          .differences.front();
  EXPECT_GT(d.nItems[kLastLayer], 0);
  EXPECT_LT(d.largest[kLastLayer], 1e-4);  // round-off times condition numbers of 1e11
  EXPECT_GT(d.largest[0], 10 * d.largest[kLastLayer]);
}

TEST(RunOnParts, GivesAFaceOnlyBetweenCellsOfOnePart) {
  WholeMesh const row = ReadWholeMesh("box:4,1,1", {});
  RankQuestion const question = Ask("x", "faces4");
  auto const count = [&](int nParts) {
    RankResult const result = RunOnParts(row, nParts, question, false).front();
    return std::count(result.isThere.begin(), result.isThere.end(), 1);
  };
  EXPECT_EQ(3, count(1));
  EXPECT_EQ(2, count(2));
  EXPECT_EQ(0, count(4));
}

TEST(RunOnParts, GivesEveryCellAPointWhateverTheParts) {
  WholeMesh const mesh = ReadWholeMesh("box:4,4,4", {});
  RankQuestion const question = Ask("1 + 0*x", "points2");
  for (int const nParts : {1, 3}) {
    RankResult const result = RunOnParts(mesh, nParts, question, false).front();
    EXPECT_EQ(64, std::count(result.isThere.begin(), result.isThere.end(), 1));
    for (reference_host::Point const& value : result.item) EXPECT_NEAR(1.0, value[0], 1e-4);
  }
}

TEST(RunOnParts, RefusesAFieldThatIsNotFinite) {
  EXPECT_THROW(RunOnParts(ReadWholeMesh("box:4,4,4", {}), 2, Ask("log(x)"), false), UsageError);
}

// With Phi = 1, G = |(1, 0, 0)| and cubes of edge 1/4: sum S / V = 24.
TEST(RankLevels, FollowTheirFormulas) {
  RankQuestion const question = Ask("x", "gradients", 5);
  WholeMesh const mesh = ReadWholeMesh("box:4,4,4", {});
  auto const results = RunOnParts(mesh, 1, question, false);
  std::vector<RankLevel> const levels = LevelsOf(mesh, question, results);
  double const eps = std::numeric_limits<double>::epsilon(), slope = 1e-12;
  EXPECT_NEAR(1.0, levels[IndexOf(question, "plain")].atItem[0] / slope, 1e-9);  // more than 8 eps 24
  EXPECT_GT(slope, 5 * 8 * eps * 24);
  EXPECT_NEAR(1.0, levels[IndexOf(question, "lsq")].atItem[0] / slope, 1e-9);
  EXPECT_EQ("conditioning", levels[IndexOf(question, "rbf")].name);
  for (double const level : levels[IndexOf(question, "rbf")].atItem) {
    EXPECT_GT(level, 1e9 * eps);  // condition numbers at Span 500 are above 1e9
    EXPECT_LT(level, 1e-3);
  }
}

TEST(RankLevels, GrowOnFlatItems) {
  RankQuestion const question = Ask("x+y");
  WholeMesh const cubes = ReadWholeMesh("box:6,6,6", {}),
                  flat = ReadWholeMesh("box:6,6,6:hex:stretch=100000", {});
  auto const level = [&](WholeMesh const& mesh, std::string const& method) {
    auto const levels = LevelsOf(mesh, question, RunOnParts(mesh, 1, question, false));
    std::vector<double> const& atItem = levels[IndexOf(question, method)].atItem;
    return *std::max_element(atItem.begin(), atItem.end());
  };
  EXPECT_GT(level(flat, "plain"), 10 * level(cubes, "plain"));
  EXPECT_GT(level(flat, "lsq"), 10 * level(cubes, "lsq"));
}

TEST(RankComparison, CountsWhatIsNotFinite) {
  RankQuestion question = Ask("x*y");
  question.cases = StudyCases(ChooseStudyMethods("plain,rbf"), {1e-308}, {3});
  auto const comparisons = CompareRankCounts(ReadWholeMesh("box:3,3,3", {}), {1, 2}, question);
  EXPECT_FALSE(comparisons[1].differences[0].IsVoid());
  RankDifference const& d = comparisons[1].differences[1];
  EXPECT_EQ(27, d.nNotFinite);
  EXPECT_TRUE(d.IsVoid());
  std::ostringstream out;
  PrintComparisons(out, comparisons);
  EXPECT_NE(out.str().find("  rbf, Span 1e-308: not finite at 27 of 27 places: --span 1e-308 is too small"),
            std::string::npos)
      << out.str();
}

TEST(RankComparison, SaysWhatIsBrokenAndWhatDidNotRun) {
  RankDifference kept = {"plain", "round-off", "", {1e-15, 0, 0, 0}, {1, 2, 3, 0}, 0.5, true, 0, ""};
  RankDifference broken = kept, unrepeatable = kept, notRun = kept;
  broken.method = "lsq";
  broken.worstRatio = 1.5;
  unrepeatable.isRepeatable = false;
  notRun.notRun = "no pivot";
  EXPECT_TRUE(kept.KeepsItsPromise());
  EXPECT_FALSE(broken.KeepsItsPromise());
  EXPECT_FALSE(unrepeatable.KeepsItsPromise());
  EXPECT_TRUE(notRun.KeepsItsPromise());
  EXPECT_TRUE(notRun.IsVoid());
  EXPECT_FALSE(kept.IsVoid());
  std::ostringstream out;
  PrintComparisons(out, {{2, 1, {kept, broken, notRun}}});
  std::string const text = out.str();
  EXPECT_NE(text.find("on 2 ranks compared with 1, by distance"), std::string::npos);
  EXPECT_NE(text.find("lsq     round-off       1.0e-15      0.0e+00  0.0e+00          -           1.5e+00  "
                      "same bits   BROKEN"),
            std::string::npos)
      << text;
  EXPECT_EQ(text.find("BROKEN"), text.rfind("BROKEN"));
  EXPECT_NE(text.find("  plain: not run: no pivot\n"), std::string::npos);
}

}  // namespace
}  // namespace zyngrad
