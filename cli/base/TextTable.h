#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace zyngrad {

/// Rows of text in columns that are as wide as their widest cell on a terminal. Numbers are aligned to the right,
/// words to the left.
class TextTable {
 public:
  enum class Align { Left, Right };

  /// Longer cells are shortened: names come from files, and a name of 100 kB would pad every other row to its width.
  static constexpr std::size_t kWidest = 60;
  /// For a last column with the program's own texts, which pads nothing.
  static constexpr std::size_t kAnyWidth = static_cast<std::size_t>(-1);

  struct Column {
    std::string title;
    Align align = Align::Right;
    std::size_t widest = kWidest;
  };

  explicit TextTable(std::vector<Column> columns);

  /// One cell per column; missing cells stay empty.
  void AddRow(std::vector<std::string> cells);

  /// Prints titles, a rule and the rows. Each line is indented by two spaces and has no trailing spaces.
  void Print(std::ostream& out) const;

 private:
  std::vector<Column> columns_;
  std::vector<std::vector<std::string>> rows_;
};

/// `digits` significant digits in scientific form ("1.235e-03"); "-" if the value is not finite.
std::string Scientific(double value, int digits = 4);

/// `decimals` decimals; "-" if the value is not finite.
std::string Fixed(double value, int decimals);

/// 1234567 as "1,234,567".
std::string Grouped(std::int64_t count);

/// The least number of significant digits with which a place is printed.
constexpr int kPlaceDigits = 6;

/// "(x, y, z)". @param[in] digits  significant digits, from PlaceDigits in cli/output/MeshScale.h
std::string Place(double x, double y, double z, int digits = kPlaceDigits);

}  // namespace zyngrad
