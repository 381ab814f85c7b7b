#include "cli/field/TimeChoice.h"

#include <gtest/gtest.h>

#include "cli/base/UsageError.h"

namespace zyngrad {
namespace {

using Names = std::vector<std::string>;

/// Times of a case; the field is missing at 0 and at 1.
std::vector<CaseTime> Times() {
  return {{"0", false}, {"1e-05", true}, {"0.1", true}, {"0.30", true},
          {"1", false}, {"2", true},     {"3", false}};
}

Names Chosen(std::string const& text) { return TimeChoice(text).ChooseFrom(Times()); }

std::string Refusal(std::string const& text) {
  try {
    Chosen(text);
  } catch (UsageError const& error) {
    return error.what();
  }
  return "taken";
}

TEST(TimeChoice, TakesNumbersByNameAndByValue) {
  EXPECT_EQ(Chosen("0.1"), Names({"0.1"}));
  EXPECT_EQ(Chosen("0.3"), Names({"0.30"}));
  EXPECT_EQ(Chosen("0.00001,2.0"), Names({"1e-05", "2"}));
}

TEST(TimeChoice, GivesTheOrderOfTheCaseAndEachTimeOnce) {
  EXPECT_EQ(Chosen("2,0.1,2,0:0.2"), Names({"1e-05", "0.1", "2"}));
}

TEST(TimeChoice, TakesLatestAllAndRangesFromTimesWithTheFields) {
  EXPECT_EQ(Chosen("latest"), Names({"2"}));
  EXPECT_EQ(Chosen("all"), Names({"1e-05", "0.1", "0.30", "2"}));
  EXPECT_EQ(Chosen("0.1:0.3"), Names({"0.1", "0.30"}));
  EXPECT_EQ(Chosen("0.2:"), Names({"0.30", "2"}));
  EXPECT_EQ(Chosen(":0.1"), Names({"1e-05", "0.1"}));
}

// The caller says which field is missing there.
TEST(TimeChoice, TakesATimeByNumberEvenWithoutTheFields) { EXPECT_EQ(Chosen("1"), Names({"1"})); }

TEST(TimeChoice, NamesTheTimesThatThereAre) {
  EXPECT_EQ(Refusal("0.2"), "--time \"0.2\": no time 0.2; times: 0, 1e-05, 0.1, 0.30, 1, 2, 3");
  EXPECT_EQ(Refusal("5:6"),
            "--time \"5:6\": no time in this range has the fields; times: 0, 1e-05, 0.1, 0.30, 1, 2, 3");
}

TEST(TimeChoice, RefusesOtherTexts) {
  for (char const* text : {"", "x", "0.1,", "0x1", "inf", "1:2:3", "latest,all", "nan"})
    EXPECT_NE(Refusal(text).find("expected latest, all, or times and ranges"), std::string::npos) << text;
  EXPECT_EQ(Refusal("2:1"), "--time \"2:1\": the range 2:1 ends before it begins");
}

}  // namespace
}  // namespace zyngrad
