#include "cli/points/PointSet.h"

#include <algorithm>
#include <boost/range/iterator_range.hpp>
#include <boost/spirit/home/x3.hpp>
#include <charconv>
#include <cmath>
#include <string_view>
#include <system_error>

#include "cli/base/OneLine.h"
#include "cli/base/UsageError.h"
#include "reference_host/mesh/MeshFile.h"

namespace zyngrad {
namespace {

namespace grammar {

namespace x3 = boost::spirit::x3;

// A quoted field may hold commas, line ends and doubled quotes.
auto const kQuoted = '"' >> *(x3::lit("\"\"") | (x3::char_ - '"')) >> '"';
auto const kPlain = *(x3::char_ - x3::char_(",\"\r\n"));
auto const kBlanks = *x3::char_(" \t");
auto const kField = x3::raw[(kBlanks >> kQuoted >> kBlanks) | kPlain];
auto const kRow = kField % ',';

}  // namespace grammar

using Field = boost::iterator_range<char const*>;

std::string Trimmed(std::string_view text) {
  char const* const blanks = " \t";
  std::size_t const first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return std::string(text.substr(first, text.find_last_not_of(blanks) - first + 1));
}

/// The value of a field: without blanks at the ends and without quotes.
std::string Meaning(Field const& field) {
  std::string text = Trimmed({field.begin(), field.size()});
  if (text.size() < 2 || text.front() != '"') return text;
  std::string meant;
  for (std::size_t at = 1; at + 1 < text.size(); ++at) {
    meant += text[at];
    if (text[at] == '"') ++at;  // doubled
  }
  return meant;
}

std::string Lower(std::string text) {
  for (char& c : text) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return text;
}

/// A CSV file in memory, read row by row.
class CsvText {
 public:
  CsvText(std::string name, std::string_view text)
      : name_(std::move(name)), begin_(text.data()), at_(begin_), end_(begin_ + text.size()) {
    if (text.substr(0, 3) == "\xEF\xBB\xBF") at_ += 3;  // byte order mark
  }

  /// The next row that is not blank; false at the end of the file. Throws UsageError.
  bool Next(std::vector<Field>& fields) {
    do {
      if (at_ == end_) return false;
      fields.clear();
      boost::spirit::x3::parse(at_, end_, grammar::kRow, fields);
      if (at_ != end_ && *at_ == '"') Fail(at_, "a quote that is not closed, or not around a whole field");
      if (at_ != end_ && *at_ == '\r') ++at_;
      if (at_ != end_ && *at_ != '\n') Fail(at_, "expected a line end");
      if (at_ != end_) ++at_;
    } while (fields.size() == 1 && Meaning(fields.front()).empty());
    return true;
  }

  [[noreturn]] void Fail(char const* at, std::string const& what) const {
    auto const line = 1 + std::count(begin_, at, '\n');
    char const* lineBegin = at;
    while (lineBegin != begin_ && lineBegin[-1] != '\n') --lineBegin;
    throw UsageError(OneLine(name_) + ": line " + std::to_string(line) + ", column " +
                     std::to_string(at - lineBegin + 1) + ": " + what);
  }

  char const* at() const { return at_; }

 private:
  std::string name_;
  char const* begin_;
  char const* at_;
  char const* end_;
};

double Coordinate(CsvText const& csv, Field const& field, char axis) {
  std::string const text = Meaning(field);
  char const* begin = text.data() + (text.size() > 1 && text[0] == '+' && text[1] != '-' ? 1 : 0);
  char const* end = text.data() + text.size();
  double value = 0.0;
  auto const result = std::from_chars(begin, end, value);
  if (result.ec != std::errc() || result.ptr != end || !std::isfinite(value))
    csv.Fail(field.begin(), Quoted(text) + " is not a finite number (" + axis + ')');
  return value;
}

/// Which columns of a file are the coordinates, and which are copied to the output.
struct Columns {
  std::size_t axis[3] = {0, 0, 0};
  std::vector<std::size_t> carried;
  std::size_t count = 0;
};

Columns FindColumns(CsvText const& csv, std::vector<Field> const& header,
                    std::vector<std::string> const& replaced) {
  Columns columns;
  columns.count = header.size();
  for (std::size_t a = 0; a < 3; ++a) {
    std::string const name(1, static_cast<char>('x' + a));
    std::size_t nFound = 0;
    for (std::size_t k = 0; k < header.size(); ++k) {
      if (Lower(Meaning(header[k])) != name) continue;
      if (++nFound > 1) csv.Fail(header[k].begin(), "a second column " + name);
      columns.axis[a] = k;
    }
    if (nFound == 0) csv.Fail(header.front().begin(), "the header has no column " + name);
  }
  for (std::size_t k = 0; k < header.size(); ++k) {
    if (std::find(replaced.begin(), replaced.end(), Meaning(header[k])) == replaced.end())
      columns.carried.push_back(k);
  }
  return columns;
}

std::string Joined(std::vector<Field> const& fields, std::vector<std::size_t> const& columns) {
  std::string text;
  for (std::size_t const k : columns) {
    if (k != columns.front()) text += ',';
    text.append(fields[k].begin(), fields[k].end());
  }
  return text;
}

}  // namespace

PointSet ReadPoints(std::string const& file, std::vector<std::string> const& replaced) {
  reference_host::MeshFile const content(file);
  CsvText csv(file, content.Content());
  std::vector<Field> fields;
  if (!csv.Next(fields)) csv.Fail(csv.at(), "expected a header");
  Columns const columns = FindColumns(csv, fields, replaced);

  PointSet points;
  points.header = Joined(fields, columns.carried);
  while (csv.Next(fields)) {
    if (fields.size() != columns.count) {
      csv.Fail(
          fields.size() < columns.count ? fields.back().end() : fields[columns.count].begin(),
          std::to_string(fields.size()) + " fields where the header has " + std::to_string(columns.count));
    }
    points.x.push_back(Coordinate(csv, fields[columns.axis[0]], 'x'));
    points.y.push_back(Coordinate(csv, fields[columns.axis[1]], 'y'));
    points.z.push_back(Coordinate(csv, fields[columns.axis[2]], 'z'));
    points.rows.push_back(Joined(fields, columns.carried));
  }
  return points;
}

}  // namespace zyngrad
