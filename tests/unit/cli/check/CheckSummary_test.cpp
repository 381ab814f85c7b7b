#include "cli/check/CheckSummary.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>

#include "cli/check/CheckFindings.h"
#include "cli/check/CheckReport.h"
#include "tests/unit/cli/NotFinite.h"
#include "tests/unit/cli/TestRanks.h"

namespace zyngrad {
namespace {

CheckedSystem Cell(std::int64_t number, double condition, std::uint32_t findings = 0) {
  CheckedSystem cell;
  cell.number = number;
  cell.members = 7;
  cell.condition = condition;
  cell.findings = findings;
  return cell;
}

std::vector<std::int64_t> Numbers(std::vector<CheckedSystem> const& cells) {
  std::vector<std::int64_t> numbers;
  for (CheckedSystem const& cell : cells) numbers.push_back(cell.number);
  return numbers;
}

TEST(CheckFindings, HaveABitEach) {
  std::uint32_t all = 0;
  for (FindingKind const& kind : FindingKinds()) {
    EXPECT_EQ(0U, all & kind.finding) << kind.key;
    EXPECT_NE(0U, kind.finding) << kind.key;
    all |= kind.finding;
  }
}

TEST(CheckFindings, ComeInWordsTheGravestFirst) {
  EXPECT_EQ("", InWords(kIsAtBoundary));
  EXPECT_EQ("weights not finite; extreme skewness", InWords(kIsAtBoundary | kIsSkew | kHasRowNotFinite));
  EXPECT_EQ(Severity::Wrong, SeverityOf(kIsSkew | kIsSingular));
  EXPECT_EQ(Severity::Note, SeverityOf(0));
}

TEST(CheckSummary, CountsFindingsAndConditions) {
  CheckSummary const summary = SummariseCheck(
      TestRanks(), {Cell(1, 5.0), Cell(2, 99.0, kIsSkew), Cell(3, 100.0, kIsSkew | kIsAtBoundary),
                    Cell(4, kInfinity, kIsSingular), Cell(5, kNaN), Cell(6, 1e200), Cell(7, 0.0)});
  EXPECT_EQ(7, summary.nSystems);
  EXPECT_EQ(2, summary.Count(kIsSkew));
  EXPECT_EQ(1, summary.Count(kIsAtBoundary));
  EXPECT_EQ(0, summary.Count(kHasRowNotFinite));
  EXPECT_EQ(1, summary.histogram.decade[0]);
  EXPECT_EQ(1, summary.histogram.decade[1]);
  EXPECT_EQ(1, summary.histogram.decade[2]);
  EXPECT_EQ(1, summary.histogram.decade.back());
  EXPECT_EQ(1, summary.histogram.nSingular);
  EXPECT_EQ(1, summary.histogram.nNotFinite);
  EXPECT_TRUE(summary.IsFinite());
}

TEST(CheckSummary, PutsGraverFindingsBeforeConditionsAndLowerNumbersFirst) {
  std::vector<CheckedSystem> const cells = {Cell(4, 10.0),
                                            Cell(3, 1e9, kIsSkew),
                                            Cell(2, 1e9, kIsSkew),
                                            Cell(7, 1.0, kHasRowNotFinite),
                                            Cell(5, kInfinity, kIsSingular),
                                            Cell(6, kNaN, kHasSystemNotFinite)};
  EXPECT_EQ((std::vector<std::int64_t>{7, 6, 5, 2, 3, 4}), Numbers(SummariseCheck(TestRanks(), cells).worst));
}

TEST(CheckSummary, TakesRoundOffForEqual) {
  EXPECT_TRUE(IsWorse(Cell(1, 1e9), Cell(2, 1e9 * (1.0 + 1e-12))));
  EXPECT_FALSE(IsWorse(Cell(1, 1e9), Cell(2, 1e9 * (1.0 + 1e-3))));
  EXPECT_FALSE(IsWorse(Cell(1, kNaN), Cell(1, kNaN)));
}

TEST(CheckSummary, ListsTenWhateverTheirOrder) {
  std::vector<CheckedSystem> cells;
  for (int n = 1; n <= 40; ++n) cells.push_back(Cell(n, 100.0 + n % 20));
  auto const expected = Numbers(SummariseCheck(TestRanks(), cells).worst);
  ASSERT_EQ(kShownWorst, expected.size());
  EXPECT_EQ(19, expected[0]);
  EXPECT_EQ(39, expected[1]);
  std::reverse(cells.begin(), cells.end());
  EXPECT_EQ(Numbers(SummariseCheck(TestRanks(), cells).worst), expected);
}

TEST(CheckSummary, OfNothingIsEmpty) {
  CheckSummary const summary = SummariseCheck(TestRanks(), {});
  EXPECT_EQ(0, summary.nSystems);
  EXPECT_TRUE(summary.worst.empty());
  EXPECT_TRUE(summary.histogram.IsEmpty());
}

CheckResult ResultOf(std::vector<CheckedSystem> const& cells) {
  return {"cells", "cells", kIsSkew | kHasRowNotFinite | kIsAtBoundary, SummariseCheck(TestRanks(), cells)};
}

TEST(CheckReport, SaysWhatWouldNotBeFinite) {
  std::ostringstream sound, broken;
  PrintVerdict(sound, {ResultOf({Cell(1, 2.0, kIsSkew)})});
  EXPECT_EQ("all results would be finite numbers, and none would be wrong\n", sound.str());
  PrintVerdict(broken, {ResultOf({Cell(1, 2.0, kHasRowNotFinite), Cell(2, 2.0)})});
  EXPECT_EQ(
      "  weights not finite: 1 of 2 cells\n"
      "NOT all results would be finite numbers: not finite in 1 of 2 cells\n",
      broken.str());
}

TEST(CheckReport, CountsWhatIsWrongInItsLastLine) {
  std::vector<CheckResult> const wrong = {
      ResultOf({Cell(1, 2.0, kHasMemberAtOrigin | kHasFlatAxis), Cell(2, 2.0, kHasFlatAxis), Cell(3, 2.0)})};
  EXPECT_FALSE(AreSound(wrong));
  EXPECT_TRUE(AreSound({ResultOf({Cell(1, 2.0, kIsSkew)})}));
  std::ostringstream out;
  PrintVerdict(out, wrong);
  EXPECT_EQ(
      "  members at the origin (symmetry): 1 of 3 cells\n"
      "  stencil flat along an axis: 2 of 3 cells\n"
      "all results would be finite numbers, but WRONG in 2 of 3 cells\n",
      out.str());
}

TEST(CheckReport, CountsEachSystemByItsGravestFinding) {
  std::vector<CheckResult> const both = {
      ResultOf({Cell(1, 2.0, kHasRowNotFinite | kIsSingular), Cell(2, 2.0, kIsSingular), Cell(3, 2.0)})};
  EXPECT_EQ(1, both.front().summary.nNotFinite);
  EXPECT_EQ(1, both.front().summary.nWrong);
  std::ostringstream out;
  PrintVerdict(out, both);
  EXPECT_NE(out.str().find("numbers: not finite in 1 of 3 cells, and WRONG in 1 of 3 cells\n"),
            std::string::npos)
      << out.str();
}

TEST(CheckReport, SaysWhatItsNumbersAre) {
  std::ostringstream out;
  CheckResult result = ResultOf({Cell(12, 1e3)});
  result.placeDigits = 9;
  result.summary.worst.front().at[0] = 6400000.5;
  PrintCheckResult(out, result);
  EXPECT_NE(out.str().find("worst cell  at "), std::string::npos) << out.str();
  EXPECT_NE(out.str().find("(6400000.5, 0, 0)"), std::string::npos) << out.str();
}

TEST(CheckReport, ShowsCountsHistogramAndTheWorst) {
  std::ostringstream out;
  PrintCheckResult(out, ResultOf({Cell(12, 1e3, kIsSkew), Cell(13, 1e5), Cell(14, kInfinity)}));
  std::string const text = out.str();
  for (char const* part :
       {"3 cells\n", "extreme skewness        1  poor\n", "weights not finite      0\n",
        "3 to 4               1  ##", "4 to 5               0\n", "5 to 6               1  ##",
        "singular             1  ##", "12 ", "1.00e+03", "extreme skewness\n"})
    EXPECT_NE(text.find(part), std::string::npos) << part << "\nin\n" << text;
  EXPECT_EQ(text.find("stencil flat"), std::string::npos);
}

TEST(CheckReport, GivesTheSameAsJson) {
  auto const json = CheckResultAsJson(ResultOf({Cell(12, kInfinity, kIsSkew | kHasRowNotFinite)}));
  EXPECT_EQ(false, json["finite"]);
  EXPECT_EQ(1, json["found"]["skew"]["count"]);
  EXPECT_EQ("not finite", json["found"]["rowNotFinite"]["severity"]);
  EXPECT_EQ(1, json["log10Condition"]["singular"]);
  EXPECT_EQ("singular", json["worst"][0]["condition"]);
  EXPECT_EQ((std::vector<std::string>{"skew", "rowNotFinite"}), json["worst"][0]["findings"]);
}

}  // namespace
}  // namespace zyngrad
