#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace zyngrad {

/// Points in space, counted from 0 here and from 1 in all output.
struct PointSet {
  std::vector<double> x, y, z;  ///< L

  // The columns of the input file, only on the rank that read it.
  std::string header = "x,y,z";   ///< names of the columns that are copied to the output
  std::vector<std::string> rows;  ///< [point] those columns as text

  /// If the points are those of a surface, its triangles, on the same rank.
  std::vector<std::array<std::int64_t, 3>> triangles = {};

  std::size_t size() const { return x.size(); }
};

/// Reads points from a CSV file: a header, and one row per point. Commas separate the columns, which may be quoted
/// as in RFC 4180; blank lines are ignored. The columns may have any order. Each of x, y and z must exist once, in
/// upper or lower case. All columns are copied to the output unchanged, except those with a name in `replaced`.
///
/// Throws UsageError `points.csv: line 3, column 7: "1.2.3" is not a finite number (y)`, where columns count bytes
/// from 1, or MeshError if the file cannot be read.
PointSet ReadPoints(std::string const& file, std::vector<std::string> const& replaced);

}  // namespace zyngrad
