#include "cli/base/TextTable.h"

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
  EXPECT_EQ(
      "  method       L2  at\n"
      "  --------  -----  ----\n"
      "  lsq         1.5  here\n"
      "  iterated  10.25\n",
      out.str());
}

TEST(TextTable, AlignsByWhatATerminalShows) {
  TextTable table({{"boundary", TextTable::Align::Left}, {"faces"}});
  table.AddRow({"W\xC3\xA4nde", "1"});
  table.AddRow({"\xE5\xA3\x81", "2"});
  std::ostringstream out;
  table.Print(out);
  EXPECT_EQ(
      "  boundary  faces\n"
      "  --------  -----\n"
      "  W\xC3\xA4nde         1\n"
      "  \xE5\xA3\x81            2\n",
      out.str());
}

TEST(TextTable, DoesNotPadEveryRowToOneLongName) {
  TextTable table({{"boundary", TextTable::Align::Left}, {"faces"}});
  std::size_t input = 0;
  for (int k = 0; k < 5000; ++k) {
    std::string const name = k == 0 ? std::string(100000, 'n') : "g" + std::to_string(k);
    input += name.size();
    table.AddRow({name, "1"});
  }
  std::ostringstream out;
  table.Print(out);
  EXPECT_LT(out.str().size(), 4 * input);
}

TEST(TextTable, LeavesTheProgramsOwnTextsWhole) {
  TextTable table({{"why", TextTable::Align::Left, TextTable::kAnyWidth}});
  table.AddRow({std::string(200, 'w')});
  std::ostringstream out;
  table.Print(out);
  EXPECT_NE(out.str().find(std::string(200, 'w')), std::string::npos);
}

TEST(TextTable, FormatsNumbers) {
  EXPECT_EQ("1.235e-03", Scientific(0.00123456));
  EXPECT_EQ("1.2e+03", Scientific(1234.5, 2));
  EXPECT_EQ("2.3", Fixed(2.345, 1));
  EXPECT_EQ("0", Grouped(0));
  EXPECT_EQ("999", Grouped(999));
  EXPECT_EQ("1,000", Grouped(1000));
  EXPECT_EQ("1,234,567", Grouped(1234567));
  EXPECT_EQ("-1,234", Grouped(-1234));
  EXPECT_EQ("(0.5, -1, 1e-07)", Place(0.5, -1.0, 1e-7));
  EXPECT_EQ("(6.4e+06, 4.8e+06, 0)", Place(6400000.5, 4800000.5, 0.0));
  EXPECT_EQ("(6400000.5, 4800000.5, 0)", Place(6400000.5, 4800000.5, 0.0, 9));
}

TEST(TextTable, ShowsADashForWhatIsNotFinite) {
  EXPECT_EQ("-", Scientific(std::nan("")));
  EXPECT_EQ("-", Fixed(std::numeric_limits<double>::infinity(), 3));
  EXPECT_EQ(309U, Fixed(1e308, 0).size());
}

}  // namespace
}  // namespace zyngrad
