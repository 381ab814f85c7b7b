#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace zyngrad {

/// Rows of text in columns as wide as their widest cell. Numbers stand to the right, words to the left.
class TextTable {
 public:
  enum class Align { Left, Right };
  struct Column {
    std::string title;
    Align align = Align::Right;
  };

  explicit TextTable(std::vector<Column> columns);

  /// One cell per column; missing ones stay empty.
  void AddRow(std::vector<std::string> cells);

  /// The titles, a rule and the rows, each line indented by two spaces, no spaces at line ends.
  void Print(std::ostream& out) const;

 private:
  std::vector<Column> columns_;
  std::vector<std::vector<std::string>> rows_;
};

/// "-" for what is not finite, else `digits` significant digits in scientific form ("1.235e-03").
std::string Scientific(double value, int digits = 4);

/// "-" for what is not finite, else with `decimals` decimals.
std::string Fixed(double value, int decimals);

/// 1234567 as "1,234,567".
std::string Grouped(std::int64_t count);

/// "(x, y, z)" with six significant digits.
std::string Place(double x, double y, double z);

}  // namespace zyngrad
