#include "reference_host/mesh/GroupRules.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using reference_host::MatchesPattern;

TEST(GroupRules, PatternsMatchWholeNames) {
  EXPECT_TRUE(MatchesPattern("hole*", "hole"));
  EXPECT_TRUE(MatchesPattern("hole*", "hole12"));
  EXPECT_FALSE(MatchesPattern("hole*", "a hole"));
  EXPECT_TRUE(MatchesPattern("*hole", "a hole"));
  EXPECT_TRUE(MatchesPattern("h?le", "hole"));
  EXPECT_FALSE(MatchesPattern("h?le", "hle"));
  EXPECT_FALSE(MatchesPattern("hole", "Hole"));
  EXPECT_TRUE(MatchesPattern("*", ""));
  EXPECT_TRUE(MatchesPattern("", ""));
  EXPECT_FALSE(MatchesPattern("?", ""));
  EXPECT_FALSE(MatchesPattern("", "a"));
}

TEST(GroupRules, AStarTakesAsMuchAsTheRestNeeds) {
  EXPECT_TRUE(MatchesPattern("*ab*ab", "abcabab"));
  EXPECT_TRUE(MatchesPattern("a*b?c*", "aXbYbZc"));
  EXPECT_FALSE(MatchesPattern("a*b?c", "aXbYbZcd"));
  EXPECT_TRUE(MatchesPattern("**a**", "bab"));
}

TEST(GroupRules, TakeNoMoreThanTheProductOfBothLengths) {
  std::string const name(3000, 'a');
  std::string pattern;
  for (int i = 0; i < 1000; ++i) pattern += "a*";  // matched by backtracking, this would never end
  EXPECT_FALSE(MatchesPattern(pattern + 'b', name));
  EXPECT_TRUE(MatchesPattern(pattern, name));
}

TEST(GroupRules, OtherCharactersAreLiteral) {
  EXPECT_TRUE(MatchesPattern("a[1].*", "a[1].x"));
  EXPECT_FALSE(MatchesPattern("a[1]", "a1"));
  EXPECT_FALSE(MatchesPattern("a.", "ab"));
}

}  // namespace
