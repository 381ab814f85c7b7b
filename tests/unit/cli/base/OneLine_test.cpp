#include "cli/base/OneLine.h"

#include <gtest/gtest.h>

namespace zyngrad {
namespace {

TEST(OneLine, TurnsLineEndsIntoSpacesAndDropsTheLast) { EXPECT_EQ(OneLine("a\nb\tc\r\n"), "a b c"); }

TEST(OneLine, ReplacesControlCharactersAndBrokenUtf8) {
  EXPECT_EQ(OneLine("a\x1b[2Jb"), "a?[2Jb");
  EXPECT_EQ(OneLine("\xff\x80"), "??");
  EXPECT_EQ(OneLine("caf\xc3"), "caf?");
  EXPECT_EQ(OneLine(std::string("a\0b", 3)), "a?b");
}

TEST(OneLine, KeepsUtf8) { EXPECT_EQ(OneLine("paroi_\xc3\xa9t\xc3\xa9"), "paroi_\xc3\xa9t\xc3\xa9"); }

TEST(Quoted, CutsLongTextsBetweenCharacters) {
  EXPECT_EQ(Quoted("x"), "\"x\"");
  EXPECT_EQ(Quoted(std::string(60, 'a')), '"' + std::string(60, 'a') + '"');
  EXPECT_EQ(Quoted(std::string(61, 'a')), '"' + std::string(60, 'a') + "...\"");
  EXPECT_EQ(Quoted(std::string(59, 'a') + "\xc3\xa9\xc3\xa9"), '"' + std::string(59, 'a') + "...\"");
}

}  // namespace
}  // namespace zyngrad
