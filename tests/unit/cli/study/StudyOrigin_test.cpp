#include "cli/study/StudyOrigin.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "cli/base/UsageError.h"

namespace zyngrad {
namespace {

TEST(StudyOrigin, QuotesArgumentsForAShell) {
  EXPECT_EQ("box:4,4,4:tet", ShellArgument("box:4,4,4:tet"));
  EXPECT_EQ("'sin(x)*y'", ShellArgument("sin(x)*y"));
  EXPECT_EQ("'hole*=wall'", ShellArgument("hole*=wall"));
  EXPECT_EQ("'it'\\''s'", ShellArgument("it's"));
  EXPECT_EQ("''", ShellArgument(""));
  EXPECT_EQ("'a\nb $HOME'", ShellArgument("a\nb $HOME"));
}

TEST(StudyOrigin, GivesTheCommandLine) {
  EXPECT_EQ("zyngrad study --series tet --field 'x*y'",
            CommandLine({"study", "--series", "tet", "--field", "x*y"}, 1));
  EXPECT_EQ("mpirun -n 4 zyngrad study a.msh", CommandLine({"study", "a.msh"}, 4));
}

TEST(StudyOrigin, WritesDatesAsIso8601) {
  EXPECT_EQ("1970-01-01T00:00:00Z", DateText(0));
  EXPECT_EQ("2001-09-09T01:46:40Z", DateText(1000000000));
}

/// Sets an environment variable until the end of a test.
class Environment {
 public:
  explicit Environment(char const* value) { setenv(kName, value, 1); }
  ~Environment() { unsetenv(kName); }
  Environment(Environment const&) = delete;
  Environment& operator=(Environment const&) = delete;

 private:
  static constexpr char const* kName = "SOURCE_DATE_EPOCH";
};

TEST(StudyOrigin, TakesTheDateFromTheEnvironment) {
  Environment const fixed("1000000000");
  StudyOrigin const origin = OriginOfStudy({"study"}, 1);
  EXPECT_EQ("2001-09-09T01:46:40Z", origin.date);
  EXPECT_EQ("zyngrad study", origin.commandLine);
  EXPECT_FALSE(origin.processor.empty());
}

TEST(StudyOrigin, RefusesADateThatIsNone) {
  for (char const* text : {"today", "-1", "12x", "999999999999999999999", "253402300800"}) {
    Environment const fixed(text);
    EXPECT_THROW(OriginOfStudy({}, 1), UsageError) << text;
  }
}

}  // namespace
}  // namespace zyngrad
