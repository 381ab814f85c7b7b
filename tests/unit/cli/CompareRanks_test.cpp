#include "cli/CompareRanks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <sstream>

#include "cli/UsageError.h"
#include "reference_host/MeshError.h"

namespace zyngrad {
namespace {

RankQuestion Ask(const std::string& field, const std::string& methods = "gradients", int nSweeps = 3) {
  return {StudyCases(ChooseStudyMethods(methods), {}, {nSweeps}), Expression(field), 20};
}

std::size_t IndexOf(const RankQuestion& question, const std::string& name) {
  const auto found = std::find_if(question.cases.begin(), question.cases.end(),
                                  [&name](const StudyCase& c) { return name == c.method->name; });
  return static_cast<std::size_t>(found - question.cases.begin());
}

TEST(LayersFromCuts, CountsCellsFromTheNearestCut) {
  const WholeMesh row = ReadWholeMesh("box:10,1,1", {});
  EXPECT_EQ(LayersFromCuts(row.faces, {0, 0, 0, 0, 0, 1, 1, 1, 1, 1}),
            (std::vector<int>{3, 3, 2, 1, 0, 0, 1, 2, 3, 3}));
  EXPECT_EQ(LayersFromCuts(row.faces, {0, 0, 1, 1, 1, 1, 1, 1, 2, 2}),
            (std::vector<int>{1, 0, 0, 1, 2, 2, 1, 0, 0, 1}));
  EXPECT_EQ(LayersFromCuts(row.faces, std::vector<int>(10, 0)), std::vector<int>(10, kLastLayer));
}

TEST(WholeMesh, IsDividedAsOnRanks) {
  const WholeMesh mesh = ReadWholeMesh("box:4,4,4:tet", {});
  for (const int nParts : {1, 2, 3, 7}) {
    const std::vector<int> part = mesh.PartOfCell(nParts);
    EXPECT_EQ(part.size(), 384u);
    EXPECT_EQ(*std::max_element(part.begin(), part.end()), nParts - 1);
  }
  EXPECT_THROW(mesh.PartOfCell(65), reference_host::MeshError);
  EXPECT_THROW(ReadWholeMesh("nowhere.msh", {}), reference_host::MeshError);
  EXPECT_THROW(ReadWholeMesh("box:2,2,2", {{"lid", reference_host::BoundaryGroup::Wall}}),
               reference_host::MeshError);
}

TEST(CompareRanks, KeepsThePromiseOnEveryKindOfCell) {
  for (const std::string mesh : {"box:6,6,6:hex:perturb=0.2,seed=3", "box:4,4,4:tet", "box:4,4,4:prism",
                                 "box:4,4,4:dual", "box:6,6,6:hex:stretch=1000", "box:6,6,6:hex:skew=0.25"}) {
    for (const RankComparison& comparison :
         CompareRankCounts(ReadWholeMesh(mesh, {}), {1, 2, 5}, Ask("sin(2*x)*y + z^2"))) {
      ASSERT_EQ(comparison.differences.size(), 5u);
      for (const RankDifference& d : comparison.differences) {
        EXPECT_TRUE(d.KeepsItsPromise())
            << mesh << ' ' << d.method << " on " << comparison.nRanks << ": " << d.worstRatio;
        EXPECT_TRUE(d.isRepeatable);
        EXPECT_EQ(d.notRun, "");
      }
    }
  }
}

TEST(CompareRanks, FindsDifferencesOnlyWhereThereAreAny) {
  const auto comparisons =
      CompareRankCounts(ReadWholeMesh("box:8,8,8:hex:perturb=0.2", {}), {1, 4}, Ask("sin(2*x)*y + z^2"));
  const RankDifference& plain = comparisons[1].differences[0];
  EXPECT_GT(plain.largest[0], 0.0);  // faces of a cut come after those inside
  EXPECT_LT(plain.largest[0], 1e-12);
  EXPECT_EQ(plain.nItems[0] + plain.nItems[1] + plain.nItems[2] + plain.nItems[3], 512);
  for (const RankDifference& d : comparisons[0].differences) EXPECT_EQ(d.worstRatio, 0.0);
}

TEST(RunOnParts, GivesLeastSquaresTheExactSlopeOfALinearField) {
  const RankQuestion question = Ask("2*x - y + 3*z");
  const WholeMesh mesh = ReadWholeMesh("box:3,4,5:tet", {});
  for (const int nParts : {1, 3}) {
    const auto results = RunOnParts(mesh, nParts, question, nParts == 3);
    for (const reference_host::Point& g : results[IndexOf(question, "lsq")].item) {
      EXPECT_NEAR(g[0], 2.0, 1e-12);
      EXPECT_NEAR(g[1], -1.0, 1e-12);
      EXPECT_NEAR(g[2], 3.0, 1e-12);
    }
  }
}

TEST(CompareRanks, FindsFacesAndPointsWithinTheirError) {
  const RankQuestion question = Ask("sin(2*x)*y + z^2", "faces,points");
  for (const std::string mesh : {"box:8,8,8", "box:8,8,8:hex:perturb=0.1,seed=3", "box:4,4,4:tet"}) {
    const auto comparisons = CompareRankCounts(ReadWholeMesh(mesh, {}), {1, 2}, question);
    for (const RankDifference& d : comparisons[1].differences) {
      EXPECT_TRUE(d.KeepsItsPromise()) << mesh << ' ' << d.method << ": " << d.worstRatio;
      EXPECT_EQ(d.level, "error");
    }
    const auto& byVertices = comparisons[1].differences[IndexOf(question, "faces3")];
    EXPECT_GT(byVertices.largest[0], 1e-6);  // vertices on the cut lack cells
  }
}

TEST(CompareRanks, FindsFacesOfTheMeshsOwnNeighboursTheSameAwayFromCuts) {
  const RankQuestion question = Ask("sin(2*x)*y + z^2", "faces3");
  const RankDifference d =
      CompareRankCounts(ReadWholeMesh("box:10,4,4:hex:perturb=0.1", {}), {1, 2}, question)[1]
          .differences.front();
  EXPECT_GT(d.nItems[kLastLayer], 0);
  EXPECT_LT(d.largest[kLastLayer], 1e-4);  // round-off times condition numbers of 1e11
  EXPECT_GT(d.largest[0], 10 * d.largest[kLastLayer]);
}

TEST(RunOnParts, GivesAFaceOnlyBetweenCellsOfOnePart) {
  const WholeMesh row = ReadWholeMesh("box:4,1,1", {});
  const RankQuestion question = Ask("x", "faces4");
  const auto count = [&](int nParts) {
    const RankResult result = RunOnParts(row, nParts, question, false).front();
    return std::count(result.isThere.begin(), result.isThere.end(), 1);
  };
  EXPECT_EQ(count(1), 3);
  EXPECT_EQ(count(2), 2);
  EXPECT_EQ(count(4), 0);
}

TEST(RunOnParts, GivesEveryCellAPointWhateverTheParts) {
  const WholeMesh mesh = ReadWholeMesh("box:4,4,4", {});
  const RankQuestion question = Ask("1 + 0*x", "points2");
  for (const int nParts : {1, 3}) {
    const RankResult result = RunOnParts(mesh, nParts, question, false).front();
    EXPECT_EQ(std::count(result.isThere.begin(), result.isThere.end(), 1), 64);
    for (const reference_host::Point& value : result.item) EXPECT_NEAR(value[0], 1.0, 1e-4);
  }
}

TEST(RunOnParts, RefusesAFieldThatIsNotFinite) {
  EXPECT_THROW(RunOnParts(ReadWholeMesh("box:4,4,4", {}), 2, Ask("log(x)"), false), UsageError);
}

// With Phi = 1, G = |(1, 0, 0)| and cubes of edge 1/4: sum S / V = 24.
TEST(RankLevels, FollowTheirFormulas) {
  const RankQuestion question = Ask("x", "gradients", 5);
  const WholeMesh mesh = ReadWholeMesh("box:4,4,4", {});
  const auto results = RunOnParts(mesh, 1, question, false);
  const std::vector<RankLevel> levels = LevelsOf(mesh, question, results);
  const double eps = std::numeric_limits<double>::epsilon(), slope = 1e-12;
  EXPECT_NEAR(levels[IndexOf(question, "plain")].atItem[0] / slope, 1.0, 1e-9);  // more than 8 eps 24
  EXPECT_GT(slope, 5 * 8 * eps * 24);
  EXPECT_NEAR(levels[IndexOf(question, "lsq")].atItem[0] / slope, 1.0, 1e-9);
  EXPECT_EQ(levels[IndexOf(question, "rbf")].name, "conditioning");
  for (const double level : levels[IndexOf(question, "rbf")].atItem) {
    EXPECT_GT(level, 1e9 * eps);  // condition numbers at Span 500 are above 1e9
    EXPECT_LT(level, 1e-3);
  }
}

TEST(RankLevels, GrowOnFlatItems) {
  const RankQuestion question = Ask("x+y");
  const WholeMesh cubes = ReadWholeMesh("box:6,6,6", {}),
                  flat = ReadWholeMesh("box:6,6,6:hex:stretch=100000", {});
  const auto level = [&](const WholeMesh& mesh, const std::string& method) {
    const auto levels = LevelsOf(mesh, question, RunOnParts(mesh, 1, question, false));
    const std::vector<double>& atItem = levels[IndexOf(question, method)].atItem;
    return *std::max_element(atItem.begin(), atItem.end());
  };
  EXPECT_GT(level(flat, "plain"), 10 * level(cubes, "plain"));
  EXPECT_GT(level(flat, "lsq"), 10 * level(cubes, "lsq"));
}

TEST(CompareRanks, CountsWhatIsNotFinite) {
  RankQuestion question = Ask("x*y");
  question.cases = StudyCases(ChooseStudyMethods("plain,rbf"), {1e-308}, {3});
  const auto comparisons = CompareRankCounts(ReadWholeMesh("box:3,3,3", {}), {1, 2}, question);
  EXPECT_FALSE(comparisons[1].differences[0].IsVoid());
  const RankDifference& d = comparisons[1].differences[1];
  EXPECT_EQ(d.nNotFinite, 27);
  EXPECT_TRUE(d.IsVoid());
  std::ostringstream out;
  PrintComparisons(out, comparisons);
  EXPECT_NE(out.str().find("  rbf, Span 1e-308: not finite at 27 of 27 places: --span 1e-308 is too small"),
            std::string::npos)
      << out.str();
}

TEST(CompareRanks, SaysWhatIsBrokenAndWhatDidNotRun) {
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
  const std::string text = out.str();
  EXPECT_NE(text.find("on 2 ranks from 1, by distance"), std::string::npos);
  EXPECT_NE(text.find("lsq     round-off       1.0e-15      0.0e+00  0.0e+00          -         1.5e+00  "
                      "same bits   BROKEN"),
            std::string::npos)
      << text;
  EXPECT_EQ(text.find("BROKEN"), text.rfind("BROKEN"));
  EXPECT_NE(text.find("  plain: not run: no pivot\n"), std::string::npos);
}

}  // namespace
}  // namespace zyngrad
