#include "foundation/Progress.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <iomanip>
#include <ios>
#include <iostream>
#include <locale>
#include <sstream>
#include <string>
#include <vector>

#include "tests/unit/foundation/CommaLocale.h"

// The texts of the library are the same bytes whatever a program did to std::cout and to its locale before, and the
// program finds its std::cout as it left it.

namespace foundation_test {
namespace {

/// Gives std::cout a buffer of this test for its lifetime, and at the end the state and the buffer that it had.
class HeldOutput {
 public:
  HeldOutput() : state_(nullptr), former_(std::cout.rdbuf(&buffer_)) { state_.copyfmt(std::cout); }
  ~HeldOutput() {
    std::cout.rdbuf(former_);
    std::cout.copyfmt(state_);
  }
  HeldOutput(HeldOutput const&) = delete;
  HeldOutput& operator=(HeldOutput const&) = delete;

  std::string Text() const { return buffer_.str(); }

 private:
  std::ios state_;
  std::stringbuf buffer_;
  std::streambuf* former_;
};

class Grouping : public std::numpunct<char> {
  std::string do_grouping() const override { return "\3"; }
  char do_thousands_sep() const override { return '.'; }
  char do_decimal_point() const override { return ','; }
};

/// What a program may have left in its stream.
struct Habit {
  char const* name;
  std::function<void()> set;
};

std::vector<Habit> const kHabits = {
    {"showpos", [] { std::cout << std::showpos; }},
    {"hex, showbase", [] { std::cout << std::hex << std::showbase; }},
    {"oct, uppercase", [] { std::cout << std::oct << std::uppercase; }},
    {"a width", [] { std::cout << std::setw(40); }},
    {"a width, left, filled", [] { std::cout << std::setw(40) << std::left << std::setfill('*'); }},
    {"internal, filled", [] { std::cout << std::setw(40) << std::internal << std::setfill('0'); }},
    {"precision, scientific", [] { std::cout << std::setprecision(2) << std::scientific; }},
    {"hexfloat", [] { std::cout << std::hexfloat << std::boolalpha << std::showpoint; }},
    {"a flush after each output", [] { std::cout << std::unitbuf; }},
    {"a locale that groups digits", [] { std::cout.imbue(std::locale(std::cout.getloc(), new Grouping)); }},
};

TEST(Progress, TextsAreTheSameWhateverTheProgramSetInItsStream) {
  for (Habit const& habit : kHabits) {
    HeldOutput out;
    habit.set();
    PrintFlushed("NWall ok!\n");
    PrintFormatted("%d of %d, %lf %le\n", 4, 1234567, 1234.5, 0.25);
    PrintFlushed("");
    EXPECT_EQ("NWall ok!\n4 of 1234567, 1234.500000 2.500000e-01\n", out.Text()) << habit.name;
  }
}

TEST(Progress, LeavesTheStreamAsTheProgramSetIt) {
  for (Habit const& habit : kHabits) {
    HeldOutput out;
    habit.set();
    std::ios::fmtflags const flags = std::cout.flags();
    std::streamsize const width = std::cout.width(), precision = std::cout.precision();
    char const fill = std::cout.fill();
    std::locale const locale = std::cout.getloc();
    PrintFlushed("NWall ok!\n");
    PrintFormatted("icell = %d\n", 7);
    EXPECT_EQ(flags, std::cout.flags()) << habit.name;
    EXPECT_EQ(width, std::cout.width()) << habit.name << ": a pending width is for the program's own output";
    EXPECT_EQ(precision, std::cout.precision()) << habit.name;
    EXPECT_EQ(fill, std::cout.fill()) << habit.name;
    EXPECT_TRUE(locale == std::cout.getloc()) << habit.name;
  }
}

TEST(Progress, APendingWidthStillPadsTheProgramsNextNumber) {
  HeldOutput out;
  std::cout << std::setw(6);
  PrintFlushed("NWall ok!\n");
  std::cout << 4;
  EXPECT_EQ("NWall ok!\n     4", out.Text());
}

TEST(Progress, StandsBetweenWhatTheProgramWritesByStreamAndByPrintf) {
  testing::internal::CaptureStdout();
  std::cout << "stream ";
  std::printf("printf ");
  PrintFlushed("text ");
  std::cout << "stream ";
  PrintFormatted("%d ", 5);
  std::printf("printf");
  EXPECT_EQ("stream printf text stream 5 printf", testing::internal::GetCapturedStdout());
}

TEST(Progress, WritesNothingIntoAStreamThatHasFailed) {
  HeldOutput out;
  std::cout.setstate(std::ios::failbit);
  PrintFlushed("NWall ok!\n");
  std::cout.clear();
  EXPECT_EQ("", out.Text());
}

TEST(Progress, NumbersHaveADecimalPointInALocaleThatHasACommaThere) {
  CommaLocale const locale;
  if (!locale.IsSet()) GTEST_SKIP() << "localedef is not there";
  ASSERT_EQ("0,5", locale.Half());
  HeldOutput out;
  PrintFormatted("Span = %lf, MAXResidual_X = %le\n", 500.5, 0.25);
  char text[64];
  FormatText(text, sizeof(text), "Search_distance   = %lf\n", 1.5);
  EXPECT_EQ("Span = 500.500000, MAXResidual_X = 2.500000e-01\n", out.Text());
  EXPECT_STREQ("Search_distance   = 1.500000\n", text);
  EXPECT_EQ("0,5", locale.Half()) << "the program's locale is as it was";
}

TEST(Progress, CutsATextThatDoesNotFit) {
  char text[5] = "####";
  FormatText(text, sizeof(text), "%d", 123456);
  EXPECT_STREQ("1234", text);
}

}  // namespace
}  // namespace foundation_test
