#include "cli/study/StudyReport.h"

#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>

#include "cli/base/Timing.h"
#include "cli/study/StudyTables.h"

namespace zyngrad {
namespace {

double const kNaN = std::numeric_limits<double>::quiet_NaN();

/// A study of one method on one field, with two levels.
struct SmallStudy {
  StudyQuestion question;
  std::vector<StudyLevel> levels;
  StudyOrigin origin = {"zyngrad study --field 'x<y'", "2001-09-09T01:46:40Z", "A & B processor"};

  SmallStudy(double usSetUp, double nsApply) {
    question.fields.push_back(MakeStudyField("linear", 1));
    question.cases = StudyCases(ChooseStudyMethods("plain"), {}, {});
    for (int const nCells : {10, 80}) {
      StudyResult result;
      result.quantity = "gradient";
      result.errors.interior = {nCells, 0.1, 0.2, 0.3, 0};
      result.errors.boundary = {nCells, 0.1, 0.2, 0.3, 0};
      result.errors.histogram.Add(0.1);
      result.usSetUp = usSetUp;
      result.nsApply = nsApply;
      levels.push_back({"box", nCells, 1.0 / nCells, {result}});
    }
  }
};

bool Contains(std::string const& text, std::string const& part) {
  return text.find(part) != std::string::npos;
}

TEST(StudyReport, SaysWhereItsNumbersComeFrom) {
  SmallStudy const study(1.5, 2.5);
  std::string const page = StudyPage("small", study.origin, study.question, study.levels);
  EXPECT_TRUE(Contains(page, "<pre>zyngrad study --field 'x&lt;y'</pre>")) << page;
  EXPECT_TRUE(Contains(page, "Measured on 2001-09-09T01:46:40Z by zyngrad ")) << page;
  EXPECT_TRUE(Contains(page, " on A &amp; B processor:")) << page;
  std::string const text = StudyMarkdown(study.origin, study.question, study.levels);
  EXPECT_TRUE(Contains(text, "```sh\nzyngrad study --field 'x<y'\n```\n")) << text;
  EXPECT_TRUE(Contains(text, "on A & B processor:\n")) << text;
}

TEST(StudyReport, LeavesOutTimesThatTheClockCannotTell) {
  SmallStudy const told(1.5, 2.5), noise(kNaN, 2.5);
  EXPECT_TRUE(Contains(StudyMarkdown(told.origin, told.question, told.levels), "| 1.500 | 2.5 |"));
  EXPECT_TRUE(Contains(StudyMarkdown(told.origin, told.question, told.levels), "time-set-up.svg"));
  EXPECT_FALSE(Contains(StudyMarkdown(told.origin, told.question, told.levels), "noise"));
  std::string const text = StudyMarkdown(noise.origin, noise.question, noise.levels);
  EXPECT_TRUE(Contains(text, "| - | 2.5 |")) << text;
  EXPECT_FALSE(Contains(text, "time-set-up.svg"));
  EXPECT_TRUE(Contains(text, "are within the noise of the clock")) << text;
  auto const json = nlohmann::json::parse(StudyAsJson(noise.question, noise.levels).dump());
  EXPECT_TRUE(json["levels"][0]["results"][0]["usSetUp"].is_null());
  EXPECT_EQ(2.5, json["levels"][0]["results"][0]["nsApplication"]);
}

TEST(StudyReport, TakesTimesFromTheShortestOn) {
  EXPECT_EQ(7.0, AboveTheNoise(ShortestTime(), 7.0));
  EXPECT_TRUE(std::isnan(AboveTheNoise(0.5 * ShortestTime(), 7.0)));
  EXPECT_GT(ClockStep(), 0.0);
  EXPECT_LT(ShortestTime(), 1e-3);  // a clock that could not tell a millisecond would be useless
}

}  // namespace
}  // namespace zyngrad
