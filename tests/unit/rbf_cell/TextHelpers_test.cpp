#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "rbf_cell/CZynRBFInternalObject.h"

// How a settings line is split and how the settings file gets its name.

namespace zyn_test::text_helpers_test {
namespace {

struct Split {
  int status;
  std::string key, value;
};

bool operator==(Split const& a, Split const& b) {
  return a.status == b.status && a.key == b.key && a.value == b.value;
}

std::ostream& operator<<(std::ostream& out, Split const& split) {
  return out << split.status << " [" << split.key << "] [" << split.value << "]";
}

Split SplitLine(std::string const& line) {
  char key[2048], value[2048];
  std::memset(key, '#', sizeof key);
  std::memset(value, '#', sizeof value);
  CZynRBFInternalObject object;
  int const status = object.StrCopyAB(line.c_str(), key, value);
  return {status, key, value};
}

Split Is(int status, char const* key, char const* value) { return {status, key, value}; }

TEST(SettingsLine, IsSplitAtTheEqualsSign) { EXPECT_EQ(Is(1, "Span", "500"), SplitLine("Span = 500\n")); }

TEST(SettingsLine, KeepsTrailingBlanksOfTheValue) {
  EXPECT_EQ(Is(1, "Span", "500  "), SplitLine("Span  =   500  \n"));
}

TEST(SettingsLine, WithoutAKeyHasNoValueEither) { EXPECT_EQ(Is(1, "", ""), SplitLine("=5\n")); }

TEST(SettingsLine, WithBlanksForAKeyHasNoValueEither) { EXPECT_EQ(Is(1, "", ""), SplitLine("   =5\n")); }

TEST(SettingsLine, WithoutEqualsSignHasNoValue) { EXPECT_EQ(Is(0, "abc", ""), SplitLine("abc\n")); }

TEST(SettingsLine, WithoutEqualsSignAndNewlineHasItsLastCharacterForAValue) {
  EXPECT_EQ(Is(0, "abc", "c"), SplitLine("abc"));
}

TEST(SettingsLine, WithoutEqualsSignEndingInABlankHasABlankForAValue) {
  EXPECT_EQ(Is(0, "abc", " "), SplitLine("abc "));
}

TEST(SettingsLine, EndingInTheEqualsSignHasItForAValue) { EXPECT_EQ(Is(1, "a", "="), SplitLine("a =")); }

TEST(SettingsLine, EndingInBlanksAfterTheEqualsSignHasAllOfThatForAValue) {
  EXPECT_EQ(Is(1, "a", "=  "), SplitLine("a =  "));
}

TEST(SettingsLine, WithOnlyANewlineAfterTheEqualsSignHasAnEmptyValue) {
  EXPECT_EQ(Is(1, "a", ""), SplitLine("a =\n"));
  EXPECT_EQ(Is(1, "a", ""), SplitLine("a =   \n"));
}

TEST(SettingsLine, OfANewlineAloneIsEmpty) { EXPECT_EQ(Is(0, "", ""), SplitLine("\n")); }

TEST(SettingsLine, OfBlanksAloneIsEmpty) { EXPECT_EQ(Is(0, "", ""), SplitLine("   \n")); }

TEST(SettingsLine, OfLengthZeroIsEmpty) { EXPECT_EQ(Is(0, "", ""), SplitLine("")); }

TEST(SettingsLine, LosesTheBlanksInItsKey) {
  EXPECT_EQ(Is(1, "ShapeNormalize", "1"), SplitLine(" Shape Normalize   = 1\n"));
}

TEST(SettingsLine, KeepsTheBlanksInItsValue) {
  EXPECT_EQ(Is(1, "key", "one two  three"), SplitLine("key = one two  three\n"));
}

TEST(SettingsLine, KeepsTabsInKeyAndValue) {
  EXPECT_EQ(Is(1, "k\tey\t", "\tvalue\t"), SplitLine("k\tey\t=\tvalue\t\n"));
}

TEST(SettingsLine, KeepsACarriageReturnInItsValue) {
  EXPECT_EQ(Is(1, "Span", "500\r"), SplitLine("Span = 500\r\n"));
  EXPECT_EQ(Is(0, "abc\r", ""), SplitLine("abc\r\n"));
}

TEST(SettingsLine, IsSplitAtTheFirstOfSeveralEqualsSigns) {
  EXPECT_EQ(Is(1, "a", "b = c"), SplitLine("a = b = c\n"));
  EXPECT_EQ(Is(1, "a", "=b"), SplitLine("a ==b\n"));
}

TEST(SettingsLine, LosesNewlinesInItsKey) { EXPECT_EQ(Is(1, "abcd", "5"), SplitLine("ab\ncd = 5\n")); }

TEST(SettingsLine, EndsItsValueAtTheFirstNewline) { EXPECT_EQ(Is(1, "a", "b"), SplitLine("a = b\nc\n")); }

TEST(SettingsLine, WithoutNewlineEndsItsValueAtItsEnd) { EXPECT_EQ(Is(1, "a", "500"), SplitLine("a = 500")); }

TEST(SettingsLine, OfBytesAbove127IsSplitLikeAnyOther) {
  EXPECT_EQ(Is(1, "\xff\x80", "\xc3\xa9"), SplitLine("\xff\x80 = \xc3\xa9\n"));
}

TEST(SettingsLine, WritesNothingBeyondTheTerminators) {
  char key[8], value[8];
  std::memset(key, '#', sizeof key);
  std::memset(value, '#', sizeof value);
  CZynRBFInternalObject object;
  object.StrCopyAB("ab = 12\n", key, value);
  EXPECT_EQ(0, std::memcmp("ab\0#####", key, 8));
  EXPECT_EQ(0, std::memcmp("12\0#####", value, 8));
}

/// The same with the key, or the value, in the place of the line.
Split SplitIntoItself(std::string const& line, bool keyThere) {
  char text[2048], other[2048];
  std::memcpy(text, line.c_str(), line.size() + 1);
  char* const key = keyThere ? text : other;
  char* const value = keyThere ? other : text;
  int const status = CZynRBFInternalObject().StrCopyAB(text, key, value);
  return {status, key, value};
}

TEST(SettingsLine, IsSplitAlikeIntoItsOwnBuffer) {
  char const* const lines[] = {"Span=500", "Span=500\n",   "Span = 500\n", "a=b=c\n",     "a=",  "a =",
                               "a =   ",   " a  =  b  ",   "abc",          "abc\n",       "a b", "a b\n",
                               " a b ",    "ab ",          "=5\n",         "   =5\n",     "",    "\n",
                               "   \n",    "ab\ncd = 5\n", "a=    b\nc\n", "a b c = d\te"};
  for (char const* const line : lines) {
    EXPECT_EQ(SplitLine(line), SplitIntoItself(line, true)) << "key in [" << line << "]";
    EXPECT_EQ(SplitLine(line), SplitIntoItself(line, false)) << "value in [" << line << "]";
  }
}

// ------------------------------------------------------------------------------------------- the file's name

std::string Renamed(std::string name, char const* extension = ".rbf") {
  char result[2048];
  std::memset(result, '#', sizeof result);
  CZynRBFInternalObject object;
  std::string const before = name;
  EXPECT_EQ(1, object.ChangeFileName(result, extension, name.data()));
  EXPECT_EQ(before, name) << "the source is only read";
  return result;
}

TEST(SettingsFileName, ReplacesTheLastFourCharacters) {
  EXPECT_EQ("case.rbf", Renamed("case.xyz"));
  EXPECT_EQ("/some/folder/case.rbf", Renamed("/some/folder/case.xyz"));
}

TEST(SettingsFileName, DoesNotAskWhetherTheyAreAnExtension) {
  EXPECT_EQ("cas.rbf", Renamed("case.ab"));
  EXPECT_EQ("case..rbf", Renamed("case.long"));
  EXPECT_EQ(".rbf", Renamed("case"));
}

TEST(SettingsFileName, OfANameOfFourCharactersIsTheExtension) { EXPECT_EQ(".rbf", Renamed(".xyz")); }

TEST(SettingsFileName, OfAShorterNameIsTheExtension) {
  for (char const* const name : {"", "a", "ab", "abc"}) EXPECT_EQ(".rbf", Renamed(name));
}

TEST(SettingsFileName, TakesAnyExtension) {
  EXPECT_EQ("case", Renamed("case.xyz", ""));
  EXPECT_EQ("case.settings", Renamed("case.xyz", ".settings"));
}

TEST(SettingsFileName, OfTheLongestNameThatFitsIsWhole) {
  std::string const stem(1019, 's');
  EXPECT_EQ(stem + ".rbf", Renamed(stem + ".xyz"));
}

TEST(SettingsFileName, OfALongerNameIsCutAt1023Characters) {
  for (std::size_t const length : {1024U, 1025U, 1500U, 5000U}) {
    std::string const name = std::string(length, 's');
    EXPECT_LE(Renamed(name).size(), 1023U) << length;
    EXPECT_EQ(std::string(1000, 's'), Renamed(name).substr(0, 1000)) << length;
  }
}

TEST(SettingsFileName, WithALongExtensionIsCutAt1023Characters) {
  std::string const extension = "." + std::string(2000, 'e');
  EXPECT_EQ(("case" + extension).substr(0, 1023), Renamed("case.xyz", extension.c_str()));
}

}  // namespace
}  // namespace zyn_test::text_helpers_test
