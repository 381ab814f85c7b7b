#include "cli/systems/SpanRange.h"

#include <gtest/gtest.h>

#include <limits>

namespace zyngrad {
namespace {

TEST(SpanRange, LetsUsualSpansPass) {
  for (double const span : {1e-3, 1.0, 500.0, 1e6}) EXPECT_EQ("", SpanOutOfRange(span, 0.1)) << span;
}

TEST(SpanRange, NamesSpansWhosePowersAreNoNumbers) {
  EXPECT_NE(SpanOutOfRange(1e-308, 0.1).find("--span 1e-308 is too small"), std::string::npos);
  EXPECT_NE(SpanOutOfRange(1e-60, 0.1).find("too small"), std::string::npos);
  EXPECT_NE(SpanOutOfRange(1e308, 0.1).find("--span 1e+308 is too large"), std::string::npos);
}

TEST(SpanRange, BlamesTheSpanForNothingElse) {
  EXPECT_EQ("", SpanOutOfRange(500.0, 0.0));
  EXPECT_EQ("", SpanOutOfRange(500.0, std::numeric_limits<double>::infinity()));  // a mesh of one cell
  EXPECT_NE(WhyRadialBasisIsNotFinite(500.0, 0.1).find("zyngrad check"), std::string::npos);
}

}  // namespace
}  // namespace zyngrad
