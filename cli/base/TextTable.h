#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace zyngrad {

/// Rows of text in columns as wide as their widest cell, counted as a terminal shows them. Numbers stand to the
/// right, words to the left.
class TextTable {
 public:
  enum class Align { Left, Right };

  /// Longer cells are shortened: names come from files, and one of 100 kB would pad every other row to its width.
  static constexpr std::size_t kWidest = 60;
  /// For a last column, which pads nothing, with texts of the program's own.
  static constexpr std::size_t kAnyWidth = static_cast<std::size_t>(-1);

  struct Column {
    std::string title;
    Align align = Align::Right;
    std::size_t widest = kWidest;
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

/// As many significant digits as a place has at least.
constexpr int kPlaceDigits = 6;

/// "(x, y, z)". @param[in] digits  significant ones, as PlaceDigits of cli/MeshScale.h finds them
std::string Place(double x, double y, double z, int digits = kPlaceDigits);

}  // namespace zyngrad
