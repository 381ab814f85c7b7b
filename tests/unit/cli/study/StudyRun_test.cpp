// Whole studies of small meshes, and what is made of their results.

#include "cli/study/StudyRun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "cli/base/UsageError.h"
#include "cli/study/StudyReport.h"
#include "cli/study/StudySeries.h"
#include "cli/study/StudyTables.h"
#include "tests/unit/cli/TestRanks.h"
#include "tests/unit/cli/study/Occurrences.h"

namespace zyngrad {
namespace {

StudyQuestion Ask(std::vector<std::string> const& meshes, std::string const& methods,
                  std::vector<std::string> const& fields) {
  StudyQuestion question;
  question.meshes = meshes;
  for (std::string const& field : fields) question.fields.push_back(MakeStudyField(field, 1));
  question.cases = StudyCases(ChooseStudyMethods(methods), {}, {3});
  question.nRepeat = 1;
  return question;
}

std::vector<StudyLevel> Answer(StudyQuestion const& question) {
  std::vector<StudyLevel> levels;
  for (std::string const& mesh : question.meshes)
    levels.push_back(RunStudyLevel(TestRanks(), question, mesh, "/dev/null", [](std::string const&) {}));
  return levels;
}

double InteriorL2(StudyLevel const& level, std::size_t iCase, std::string const& quantity) {
  StudyResult const* const result = FindResult(level, iCase, 0, quantity);
  return result == nullptr ? std::nan("") : result->errors.interior.l2;
}

TEST(Study, MeasuresSecondOrderOfGreenGaussOnOrthogonalHexahedra) {
  StudyQuestion const question = Ask({"box:8,8,8", "box:16,16,16"}, "plain", {"trigonometric"});
  std::vector<StudyLevel> const levels = Answer(question);
  EXPECT_EQ(4096, levels[1].nCells);
  EXPECT_NEAR(levels[0].spacing, 1.0 / 8, 1e-12);
  EXPECT_NEAR(levels[1].spacing, 1.0 / 16, 1e-12);
  EXPECT_NEAR(2.0,
              ObservedOrder(InteriorL2(levels[0], 0, kGradient), InteriorL2(levels[1], 0, kGradient), 1.0 / 8,
                            1.0 / 16),
              0.1);
}

TEST(Study, MeasuresNoOrderOfGreenGaussOnTetrahedraAndFirstOfTheOthers) {
  StudyQuestion const question = Ask({"box:4,4,4:tet", "box:8,8,8:tet"}, "plain,lsq,rbf", {"trigonometric"});
  std::vector<StudyLevel> const levels = Answer(question);
  auto const order = [&](std::size_t c) {
    return ObservedOrder(InteriorL2(levels[0], c, kGradient), InteriorL2(levels[1], c, kGradient),
                         levels[0].spacing, levels[1].spacing);
  };
  EXPECT_NEAR(0.0, order(0), 0.15);
  EXPECT_NEAR(1.0, order(1), 0.15);
  EXPECT_NEAR(1.0, order(2), 0.15);
}

TEST(Study, GivesEveryQuantityOfEveryMethodOnEveryKindOfMesh) {
  for (NamedSeries const& series : NamedStudySeries()) {
    StudyQuestion const question = Ask(MeshesOfSeries(series.name, 1), "all", {"linear"});
    StudyLevel const level = Answer(question).front();
    for (std::size_t c = 0; c < question.cases.size(); ++c) {
      StudyMethod const& method = *question.cases[c].method;
      std::vector<std::string> quantities = {kGradient};
      if (method.kind == StudyMethod::Kind::Faces) quantities = {kFaceValue};
      if (method.kind == StudyMethod::Kind::Points) quantities = {kPointValue, kPointGradient};
      for (std::string const& quantity : quantities) {
        StudyResult const* const result = FindResult(level, c, 0, quantity);
        ASSERT_NE(nullptr, result) << series.name << ' ' << method.name << ' ' << quantity;
        EXPECT_GT(result->errors.interior.count, 0) << series.name << ' ' << method.name;
        EXPECT_GT(result->errors.boundary.count, 0) << series.name << ' ' << method.name;
        EXPECT_EQ(0, result->errors.interior.nNotFinite)
            << series.name << ' ' << method.name << ' ' << quantity;
        EXPECT_GT(result->nsApply, 0.0);
        EXPECT_EQ(result->condition.nSystems > 0, method.TakesSpan()) << method.name;
        EXPECT_LE(result->condition.median, result->condition.worst);
      }
    }
  }
}

TEST(Study, LeastSquaresReproducesTheLinearFieldOnEverySeries) {
  for (NamedSeries const& series : NamedStudySeries()) {
    StudyLevel const level = Answer(Ask(MeshesOfSeries(series.name, 1), "lsq", {"linear"})).front();
    // Round-off times the aspect ratio of 1000, squared in the normal equations.
    EXPECT_LT(InteriorL2(level, 0, kGradient), std::string(series.name) == "stretched" ? 1e-6 : 1e-12)
        << series.name;
  }
}

TEST(Study, ConditionNumbersGrowWithTheFourthPowerOfSpan) {
  StudyQuestion question = Ask({"box:4,4,4"}, "rbf,faces1,faces2,points1,points2", {"linear"});
  question.cases = StudyCases(ChooseStudyMethods("rbf"), {100, 200}, {3});
  StudyLevel const level = Answer(question).front();
  double const a = FindResult(level, 0, 0, kGradient)->condition.median;
  double const b = FindResult(level, 1, 0, kGradient)->condition.median;
  EXPECT_NEAR(4.0, std::log2(b / a), 0.2);
}

/// Without the remark on times within the noise of the clock, which depends on the machine.
std::vector<std::string> RemarksApartFromTimes(StudyQuestion const& question,
                                               std::vector<StudyLevel> const& levels) {
  std::vector<std::string> remarks = StudyRemarks(question, levels);
  remarks.erase(std::remove_if(remarks.begin(), remarks.end(),
                               [](std::string const& remark) { return remark.rfind("times below", 0) == 0; }),
                remarks.end());
  return remarks;
}

TEST(Study, SaysWhyAMethodDidNotRun) {
  StudyQuestion const question = Ask({"box:4,1,1:hex"}, "lsq,plain", {"linear"});
  StudyLevel level = Answer(question).front();
  level.results[1].notRun = "no pivot";
  EXPECT_EQ(nullptr, FindResult(level, 1, 0, kGradient));
  EXPECT_EQ((std::vector<std::string>{"lsq on box:4,1,1:hex: not run: no pivot"}),
            RemarksApartFromTimes(question, {level}));
}

TEST(Study, BringsMeshesIntoTheOrderCoarseToFine) {
  StudyQuestion const question = Ask({"box:8,8,8", "box:4,4,4", "box:6,6,6"}, "lsq", {"trigonometric"});
  std::vector<StudyLevel> levels = Answer(question);
  EXPECT_TRUE(SortCoarseToFine(levels));
  EXPECT_EQ("box:4,4,4", levels[0].mesh);
  EXPECT_EQ("box:8,8,8", levels[2].mesh);
  EXPECT_FALSE(SortCoarseToFine(levels));
  StudyTable const errors = StudyTables(question, levels).front();
  EXPECT_EQ("-", errors.rows[0][6]);
  for (std::size_t const row : {1, 2}) EXPECT_GT(std::stod(errors.rows[row][6]), 0.0);
}

TEST(Study, ShowsNoOrderWhereTheSpacingDoesNotFall) {
  StudyQuestion const question = Ask({"box:4,4,4", "box:4,4,4:hex:perturb=0.1"}, "plain", {"trigonometric"});
  std::vector<StudyLevel> levels = Answer(question);
  levels[1].spacing = levels[0].spacing * (1.0 - 1e-9);  // round-off of another mesh of as many cells
  for (std::size_t const column : {6, 10})
    EXPECT_EQ("-", StudyTables(question, levels).front().rows[1][column]);
  levels[1].spacing = levels[0].spacing * 2.0;
  for (std::size_t const column : {6, 10})
    EXPECT_EQ("-", StudyTables(question, levels).front().rows[1][column]);
}

TEST(Study, HasFaultsWhereResultsAreNotFinite) {
  StudyQuestion question = Ask({"box:4,4,4"}, "plain", {"linear"});
  EXPECT_FALSE(AnyFaults(Answer(question)));
  question.cases = StudyCases(ChooseStudyMethods("rbf,faces2,points2"), {1e-308}, {3});
  std::vector<StudyLevel> const levels = Answer(question);
  EXPECT_TRUE(AnyFaults(levels));
  std::vector<std::string> const remarks = RemarksApartFromTimes(question, levels);
  for (std::string const beginning : {"rbf, Span 1e-308 on box:4,4,4: the gradient is not finite at 64 of 64 "
                                      "places: --span 1e-308 is too small",
                                      "faces2, Span 1e-308 on box:4,4,4: the value at faces is not finite at "
                                      "144 of 144 places: --span 1e-308",
                                      "points2, Span 1e-308 on box:4,4,4: the value at points is not finite "
                                      "at 64 of 64 places: --span 1e-308"})
    EXPECT_TRUE(std::any_of(remarks.begin(), remarks.end(), [&](std::string const& remark) {
      return remark.rfind(beginning, 0) == 0;
    })) << beginning;
}

TEST(Study, SaysOnceThatAConstantWeightChangesNothing) {
  StudyQuestion question = Ask({"box:3,3,3", "box:4,4,4"}, "plain,weighted", {"linear", "x*y"});
  EXPECT_EQ(
      (std::vector<std::string>{
          "weighted: the same numbers as plain, because the weight is the same in all cells (--weight)"}),
      RemarksApartFromTimes(question, Answer(question)));
  question.weight.emplace("1+x");
  EXPECT_TRUE(RemarksApartFromTimes(question, Answer(question)).empty());
}

TEST(StudyFields, HaveNamesOrAreFormulas) {
  EXPECT_EQ("2*x + 3*y - z + 1", MakeStudyField("linear", 1).formula.text());
  EXPECT_EQ("formula 2", MakeStudyField("x*y", 2).name);
  EXPECT_THROW(MakeStudyField("cubic", 1), UsageError);
}

TEST(StudyReport, HasAPlotForEveryQuestion) {
  StudyQuestion question = Ask({"box:3,3,3", "box:6,6,6"}, "plain", {"linear"});
  question.cases = StudyCases(ChooseStudyMethods("iterated,rbf"), {5, 500}, {1, 2});
  std::set<std::string> names;
  for (StudyPlot const& plot : StudyPlots(question, Answer(question)))
    EXPECT_TRUE(names.insert(plot.name).second);
  EXPECT_EQ(
      (std::set<std::string>{"linear-gradient-interior", "linear-gradient-boundary", "linear-gradient-span",
                             "linear-gradient-sweeps", "linear-gradient-histogram", "condition-span",
                             "time-set-up", "time-application"}),
      names);
}

TEST(StudyReport, IsOnePageThatNeedsNothingElse) {
  StudyQuestion const question = Ask({"box:3,3,3", "box:6,6,6"}, "gradients", {"x*y", "linear"});
  std::vector<StudyLevel> const levels = Answer(question);
  std::string const page = StudyPage("series <b>", StudyOrigin{}, question, levels);
  EXPECT_EQ(Occurrences(page, "<svg "), StudyPlots(question, levels).size());
  EXPECT_EQ(Occurrences(page, "<table>"), StudyTables(question, levels).size());
  EXPECT_EQ(Occurrences(page, "http"),
            Occurrences(page, "xmlns=\"http://www.w3.org/2000/svg\""));  // a name, not an address
  for (std::string const other : {"<script", "src=", "href=", "@import", "url(", "<b>"})
    EXPECT_EQ(0u, Occurrences(page, other)) << other;
}

TEST(StudyTables, HaveARowForEveryCaseAndLevelInEveryForm) {
  StudyQuestion const question = Ask({"box:3,3,3", "box:6,6,6"}, "plain,rbf", {"linear"});
  std::vector<StudyLevel> const levels = Answer(question);
  std::vector<StudyTable> const tables = StudyTables(question, levels);
  ASSERT_EQ(2u, tables.size());
  for (StudyTable const& table : tables) {
    ASSERT_EQ(4u, table.rows.size());
    EXPECT_EQ("plain", table.rows[0][0]);
    EXPECT_EQ("", table.rows[1][0]);
    EXPECT_EQ("rbf, Span 500", table.rows[2][0]);
    for (auto const& row : table.rows) EXPECT_EQ(row.size(), table.columns.size());
    std::ostringstream text;
    PrintTable(text, table);
    EXPECT_EQ(Occurrences(text.str(), "\n"), 2u + 2u + 4u);
    EXPECT_EQ(6u, Occurrences(MarkdownOf(table), "\n|"));
    EXPECT_EQ(5u, Occurrences(HtmlOf(table), "<tr>"));
  }
}

TEST(StudyJson, HasAllNumbersAndNullForWhatIsNone) {
  StudyQuestion const question = Ask({"box:2,2,2"}, "rbf", {"linear"});  // no interior cell
  auto const json = nlohmann::json::parse(StudyAsJson(question, Answer(question)).dump());
  auto const& result = json["levels"][0]["results"][0];
  EXPECT_EQ(8, json["levels"][0]["cells"]);
  EXPECT_EQ("rbf", result["method"]);
  EXPECT_EQ(500.0, result["span"]);
  EXPECT_EQ(0, result["interior"]["count"]);
  EXPECT_TRUE(result["interior"]["l2"].is_null());
  EXPECT_EQ(8, result["boundary"]["count"]);
  EXPECT_GT(result["boundary"]["l2"], 0.0);
  EXPECT_EQ(8, result["condition"]["systems"]);
  std::int64_t counted = 0;
  for (auto const& bin : result["histogram"]) counted += bin["count"].get<std::int64_t>();
  EXPECT_EQ(8, counted);
}

}  // namespace
}  // namespace zyngrad
