#include "cli/TextTable.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>

namespace zyngrad {
namespace {

TEST(TextTable, AlignsWordsLeftAndNumbersRight) {
  TextTable table({{"method", TextTable::Align::Left}, {"L2"}, {"at", TextTable::Align::Left}});
  table.AddRow({"lsq", "1.5", "here"});
  table.AddRow({"iterated", "10.25"});
  std::ostringstream out;
  table.Print(out);
  EXPECT_EQ(out.str(),
            "  method       L2  at\n"
            "  --------  -----  ----\n"
            "  lsq         1.5  here\n"
            "  iterated  10.25\n");
}

TEST(TextTable, FormatsNumbers) {
  EXPECT_EQ(Scientific(0.00123456), "1.235e-03");
  EXPECT_EQ(Scientific(1234.5, 2), "1.2e+03");
  EXPECT_EQ(Fixed(2.345, 1), "2.3");
  EXPECT_EQ(Grouped(0), "0");
  EXPECT_EQ(Grouped(999), "999");
  EXPECT_EQ(Grouped(1000), "1,000");
  EXPECT_EQ(Grouped(1234567), "1,234,567");
  EXPECT_EQ(Grouped(-1234), "-1,234");
  EXPECT_EQ(Place(0.5, -1.0, 1e-7), "(0.5, -1, 1e-07)");
}

TEST(TextTable, ShowsADashForWhatIsNotFinite) {
  EXPECT_EQ(Scientific(std::nan("")), "-");
  EXPECT_EQ(Fixed(std::numeric_limits<double>::infinity(), 3), "-");
  EXPECT_EQ(Fixed(1e308, 0).size(), 309U);
}

}  // namespace
}  // namespace zyngrad
