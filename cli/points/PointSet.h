#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace zyngrad {

/// Points in space, counted from 0 here and from 1 in all output.
struct PointSet {
  std::vector<double> x, y, z;  ///< L

  // What an output file begins with, only where the points come from.
  std::string header = "x,y,z";   ///< names of the columns that are carried through
  std::vector<std::string> rows;  ///< [point] those columns, as text

  std::size_t size() const { return x.size(); }
};

/// Reads points from a CSV file: a header, in any order and with any other columns, and a row a point.
/// Columns are separated by commas, and quoted as in RFC 4180; blank lines do not count. x, y and z have to be
/// there once, in either case. All columns are carried through as they are written, but for those with one of
/// the names in `replaced`.
/// Throws UsageError `points.csv: line 3, column 7: "1.2.3" is not a finite number (y)`, columns counting
/// bytes from 1, or MeshError when the file cannot be read.
PointSet ReadPoints(std::string const& file, std::vector<std::string> const& replaced);

}  // namespace zyngrad
