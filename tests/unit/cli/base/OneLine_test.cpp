#include "cli/base/OneLine.h"

#include <gtest/gtest.h>

namespace zyngrad {
namespace {

TEST(OneLine, TurnsLineEndsIntoSpacesAndDropsTheLast) { EXPECT_EQ("a b c", OneLine("a\nb\tc\r\n")); }

TEST(OneLine, ReplacesControlCharactersAndBrokenUtf8) {
  EXPECT_EQ("a?[2Jb", OneLine("a\x1b[2Jb"));
  EXPECT_EQ("??", OneLine("\xff\x80"));
  EXPECT_EQ("caf?", OneLine("caf\xc3"));
  EXPECT_EQ("a?b", OneLine(std::string("a\0b", 3)));
}

TEST(OneLine, KeepsUtf8) { EXPECT_EQ("paroi_\xc3\xa9t\xc3\xa9", OneLine("paroi_\xc3\xa9t\xc3\xa9")); }

TEST(Quoted, CutsLongTextsBetweenCharacters) {
  EXPECT_EQ("\"x\"", Quoted("x"));
  EXPECT_EQ(Quoted(std::string(60, 'a')), '"' + std::string(60, 'a') + '"');
  EXPECT_EQ(Quoted(std::string(61, 'a')), '"' + std::string(60, 'a') + "...\"");
  EXPECT_EQ(Quoted(std::string(59, 'a') + "\xc3\xa9\xc3\xa9"), '"' + std::string(59, 'a') + "...\"");
}

}  // namespace
}  // namespace zyngrad
