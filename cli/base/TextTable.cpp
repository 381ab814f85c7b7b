#include "cli/base/TextTable.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ostream>
#include <utility>

#include "cli/base/DisplayText.h"

namespace zyngrad {
namespace {

std::string Format(char const* format, int precision, double value) {
  if (!std::isfinite(value)) return "-";
  char buffer[512];  // the longest: "%.*f" of 1e308, 309 digits before the point
  std::snprintf(buffer, sizeof buffer, format, precision, value);
  return buffer;
}

std::string Padded(std::string const& text, std::size_t width, TextTable::Align align) {
  std::string const spaces(width - std::min(width, DisplayWidth(text)), ' ');
  return align == TextTable::Align::Left ? text + spaces : spaces + text;
}

}  // namespace

TextTable::TextTable(std::vector<Column> columns) : columns_(std::move(columns)) {}

void TextTable::AddRow(std::vector<std::string> cells) {
  cells.resize(columns_.size());
  for (std::size_t c = 0; c < cells.size(); ++c) cells[c] = Shortened(cells[c], columns_[c].widest);
  rows_.push_back(std::move(cells));
}

void TextTable::Print(std::ostream& out) const {
  std::vector<std::vector<std::string>> lines(2);
  for (std::size_t c = 0; c < columns_.size(); ++c) {
    std::size_t width = DisplayWidth(columns_[c].title);
    for (auto const& row : rows_) width = std::max(width, DisplayWidth(row[c]));
    lines[0].push_back(columns_[c].title);
    lines[1].push_back(std::string(width, '-'));
  }
  lines.insert(lines.end(), rows_.begin(), rows_.end());

  for (auto const& cells : lines) {
    std::string line;
    for (std::size_t c = 0; c < columns_.size(); ++c) {
      line += "  " + Padded(cells[c], lines[1][c].size(), columns_[c].align);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << '\n';
  }
}

std::string Scientific(double value, int digits) { return Format("%.*e", digits - 1, value); }

std::string Fixed(double value, int decimals) { return Format("%.*f", decimals, value); }

std::string Grouped(std::int64_t count) {
  std::string digits = std::to_string(count < 0 ? -count : count);
  for (auto at = static_cast<std::ptrdiff_t>(digits.size()) - 3; at > 0; at -= 3) {
    digits.insert(static_cast<std::size_t>(at), ",");
  }
  return count < 0 ? "-" + digits : digits;
}

std::string Place(double x, double y, double z, int digits) {
  char buffer[128];
  std::snprintf(buffer, sizeof buffer, "(%.*g, %.*g, %.*g)", digits, x, digits, y, digits, z);
  return buffer;
}

}  // namespace zyngrad
