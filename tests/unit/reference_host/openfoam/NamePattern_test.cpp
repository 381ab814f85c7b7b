#include "reference_host/openfoam/NamePattern.h"

#include <gtest/gtest.h>
#include <regex.h>

#include <random>
#include <string>
#include <vector>

#include "reference_host/openfoam/PatternTable.h"

namespace {

using reference_host::NamePattern;
using reference_host::PatternTable;

bool Matches(std::string const& text, std::string const& name) {
  NamePattern pattern;
  EXPECT_EQ("", pattern.Parse(text)) << text;
  NamePattern::Workspace workspace;
  return pattern.Matches(name, workspace);
}

std::string Fault(std::string const& text) { return NamePattern().Parse(text); }

TEST(NamePattern, MatchesTheWholeName) {
  EXPECT_TRUE(Matches("inlet", "inlet"));
  EXPECT_FALSE(Matches("inlet", "inlet2"));
  EXPECT_FALSE(Matches("inlet", "inle"));
  EXPECT_FALSE(Matches("inlet", ""));
  EXPECT_TRUE(Matches(".*", "anything at all"));
  EXPECT_TRUE(Matches(".*", ""));
  EXPECT_TRUE(Matches("^wall.*$", "wall_low"));
}

TEST(NamePattern, KnowsRepeatsGroupsAndAlternatives) {
  EXPECT_TRUE(Matches("(inlet|outlet)_[0-9]+", "outlet_42"));
  EXPECT_FALSE(Matches("(inlet|outlet)_[0-9]+", "outlet_"));
  EXPECT_TRUE(Matches("wall(_low)?", "wall"));
  EXPECT_TRUE(Matches("wall(_low)?", "wall_low"));
  EXPECT_FALSE(Matches("wall(_low)?", "wall_low_low"));
  EXPECT_TRUE(Matches("(ab*)*c", "abbbaabc"));
  EXPECT_TRUE(Matches("a|b|", ""));
  EXPECT_TRUE(Matches("(a|b)*", "abba"));
  EXPECT_TRUE(Matches("((a*)*)*b", "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaab"));
  EXPECT_FALSE(Matches("((a*)*)*b", std::string(5000, 'a')));
}

TEST(NamePattern, KnowsClassesOfCharacters) {
  EXPECT_TRUE(Matches("[a-cx]+", "abcx"));
  EXPECT_FALSE(Matches("[a-cx]", "d"));
  EXPECT_TRUE(Matches("[^a-c]", "d"));
  EXPECT_TRUE(Matches("[]a]", "]"));
  EXPECT_TRUE(Matches("[a-]+", "-a"));
  EXPECT_TRUE(Matches("[[:digit:]_]+", "1_2"));
  EXPECT_FALSE(Matches("[[:alpha:]]", "1"));
}

TEST(NamePattern, TakesTheMeaningFromEscapedCharacters) {
  EXPECT_TRUE(Matches("a\\.b", "a.b"));
  EXPECT_FALSE(Matches("a\\.b", "axb"));
  EXPECT_TRUE(Matches("\\(a\\)\\$", "(a)$"));
}

TEST(NamePattern, SaysWhatItCannotTake) {
  EXPECT_EQ("is empty", Fault(""));
  EXPECT_EQ("has a counted repeat '{'; only ?, + and * can be read", Fault("a{2}"));
  EXPECT_EQ("has a '(' that is not closed", Fault("(a"));
  EXPECT_EQ("has one ')' too many", Fault("a)"));
  EXPECT_EQ("has a '[' that is not closed", Fault("[a"));
  EXPECT_EQ("has a range of characters in descending order", Fault("[b-a]"));
  EXPECT_EQ("has an unknown class of characters", Fault("[[:word:]]"));
  EXPECT_EQ("has a '*' with nothing to repeat", Fault("*a"));
  EXPECT_EQ("has a '?' with nothing to repeat", Fault("(?i)a"));
  EXPECT_EQ("has a '+' with nothing to repeat", Fault("a|+"));
  EXPECT_EQ("has a '^' inside; the whole name has to match anyway", Fault("a^b"));
  EXPECT_EQ("has the escape '\\w', which cannot be read", Fault("\\w+"));
  EXPECT_EQ("ends in a backslash", Fault("a\\"));
  EXPECT_EQ("", Fault(std::string(1000, 'a')));
  EXPECT_EQ("has 1001 characters, more than 1000", Fault(std::string(1001, 'a')));
}

TEST(NamePattern, FindsTheLettersThatAllNamesBeginAndEndWith) {
  NamePattern pattern;
  EXPECT_EQ("", pattern.Parse("wall_.*_low"));
  EXPECT_EQ("wall_|_low", pattern.Prefix() + "|" + pattern.Suffix());
  EXPECT_EQ("", pattern.Parse("ab?c"));
  EXPECT_EQ("a|c", pattern.Prefix() + "|" + pattern.Suffix());
  EXPECT_EQ("", pattern.Parse("ab|ac"));
  EXPECT_EQ("|", pattern.Prefix() + "|" + pattern.Suffix());
  EXPECT_EQ("", pattern.Parse("(a)b+"));
  EXPECT_EQ("|", pattern.Prefix() + "|" + pattern.Suffix());
  EXPECT_FALSE(pattern.IsLiteral());
  EXPECT_EQ("", pattern.Parse("in\\.let"));
  EXPECT_TRUE(pattern.IsLiteral());
  EXPECT_EQ("in.let", pattern.Prefix());
}

// A match takes a few steps for each state and each character, whatever the pattern.
TEST(NamePattern, TakesStepsInProportionToPatternAndName) {
  for (char const* const unit : {"(a*)*", "(a|a)*", "(a|b|)+", "a?", ".*"}) {
    std::string text;
    while (text.size() + 10 < NamePattern::kLongest) text += unit;
    NamePattern pattern;
    ASSERT_EQ("", pattern.Parse(text));
    NamePattern::Workspace workspace;
    pattern.Matches(std::string(300, 'a') + "!", workspace);
    EXPECT_LT(workspace.nSteps, 12 * text.size() * 301) << unit;
  }
}

// Compares a thousand random patterns, each on names of the same letters, with the C library.
TEST(NamePattern, AgreesWithTheRegularExpressionsOfTheCLibrary) {
  std::mt19937 random(7);
  auto const below = [&random](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  std::vector<std::string> const pieces = {"a",  "b",  "c",  ".",    "[ab]", "[^a]", "a*",    "b+",
                                           "c?", "(a", "(b", "(ab)", "|",    ")",    "(a|b)*"};
  int nCompared = 0, nMatches = 0;
  for (int i = 0; i < 3000; ++i) {
    std::string text;
    for (int n = 1 + below(6); n > 0; --n)
      text += pieces[static_cast<std::size_t>(below(static_cast<int>(pieces.size())))];
    NamePattern pattern;
    if (!pattern.Parse(text).empty()) continue;
    regex_t expected;
    if (regcomp(&expected, ("^(" + text + ")$").c_str(), REG_EXTENDED | REG_NOSUB) != 0) continue;
    for (int k = 0; k < 20; ++k) {
      std::string name;
      for (int n = below(6); n > 0; --n) name += static_cast<char>('a' + below(3));
      NamePattern::Workspace workspace;
      bool const matches = pattern.Matches(name, workspace);
      EXPECT_EQ(matches, regexec(&expected, name.c_str(), 0, nullptr, 0) == 0) << text << " on " << name;
      ++nCompared;
      nMatches += matches ? 1 : 0;
    }
    regfree(&expected);
  }
  EXPECT_GT(nCompared, 10000);
  EXPECT_GT(nMatches, 1000);
}

TEST(PatternTable, FindsTheLastPatternThatMatches) {
  std::vector<std::string> const texts = {".*",       "wall_.*",         "inlet", ".*_low",
                                          "wall_low", "(inlet|wall_.*)", "w.*",   ".*high"};
  PatternTable table(1000000);
  for (std::string const& text : texts) {
    NamePattern pattern;
    ASSERT_EQ("", pattern.Parse(text));
    table.Add(pattern);
  }
  EXPECT_EQ(0, table.FindLast("outlet"));
  EXPECT_EQ(5, table.FindLast("inlet"));
  EXPECT_EQ(3, table.FindLast("seat_low"));
  EXPECT_EQ(6, table.FindLast("wall_low"));
  EXPECT_EQ(7, table.FindLast("wall_high"));
  EXPECT_EQ(7, table.FindLast("x_high"));
  EXPECT_FALSE(table.IsExhausted());
  EXPECT_EQ(-1, PatternTable(10).FindLast("a"));
}

}  // namespace
