#include "cli/points/PointFiles.h"

#include <cstddef>
#include <cstdint>

#include "cli/output/OutputFile.h"
#include "cli/output/RunSettings.h"
#include "cli/vtk/VtpFile.h"

namespace zyngrad {
namespace {

/// "far;few", empty without a flag.
std::string FlagsText(std::int32_t flags) {
  std::string text;
  for (PointFlag const flag : {kIsFar, kHasFewCells, kIsNotFinite}) {
    if ((flags & flag) == 0) continue;
    if (!text.empty()) text += ';';
    text += NameOf(flag);
  }
  return text;
}

std::string ResultRow(PointResults const& results, std::size_t i) {
  PointValues const& found = results.run.values;
  ExactAtPoints const& exact = results.exact;
  std::string row;
  for (double const number :
       {found.value[i], found.gx[i], found.gy[i], found.gz[i], exact.value[i], exact.gx[i], exact.gy[i],
        exact.gz[i], results.errors.value[i], results.errors.gradient[i], results.owners[i].distance}) {
    row += ShortestText(number) + ',';
  }
  row += std::to_string(found.members[i]) + ',' + std::to_string(results.owners[i].rank) + ',';
  return row + FlagsText(results.flags[i]);
}

VtkArray Vectors(std::string const& name, std::vector<double> const& x, std::vector<double> const& y,
                 std::vector<double> const& z) {
  std::vector<double> values;
  values.reserve(3 * x.size());
  for (std::size_t i = 0; i < x.size(); ++i) values.insert(values.end(), {x[i], y[i], z[i]});
  return {name, 3, std::move(values)};
}

}  // namespace

std::vector<std::string> const& PointResultColumns() {
  static std::vector<std::string> const columns = {"value",
                                                   "gradient_x",
                                                   "gradient_y",
                                                   "gradient_z",
                                                   "exact",
                                                   "exact_gradient_x",
                                                   "exact_gradient_y",
                                                   "exact_gradient_z",
                                                   "error",
                                                   "gradient_error",
                                                   "distance",
                                                   "members",
                                                   "rank",
                                                   "flags"};
  return columns;
}

void WritePointCsv(std::string const& file, PointResults const& results) {
  OutputFile table(file);
  std::ostream& out = table.stream();
  out << results.points.header;
  for (std::string const& column : PointResultColumns()) out << ',' << column;
  out << '\n';
  for (std::size_t i = 0; i < results.points.size(); ++i)
    out << results.points.rows[i] << ',' << ResultRow(results, i) << '\n';
  table.Close();
}

void WritePointVtp(std::string const& file, PointResults const& results) {
  PointSet const& points = results.points;
  PointValues const& found = results.run.values;
  ExactAtPoints const& exact = results.exact;
  std::vector<double> distance;
  std::vector<std::int32_t> rank;
  std::vector<std::int64_t> number;
  for (std::size_t i = 0; i < points.size(); ++i) {
    distance.push_back(results.owners[i].distance);
    rank.push_back(results.owners[i].rank);
    number.push_back(static_cast<std::int64_t>(i) + 1);
  }
  VtkArray const places = Vectors("", points.x, points.y, points.z);
  WriteVertices(file, std::get<std::vector<double>>(places.values),
                {{"value", 1, found.value},
                 Vectors("gradient", found.gx, found.gy, found.gz),
                 {"exact", 1, exact.value},
                 Vectors("exact_gradient", exact.gx, exact.gy, exact.gz),
                 {"error", 1, results.errors.value},
                 {"gradient_error", 1, results.errors.gradient},
                 {"distance", 1, distance},
                 {"members", 1, found.members},
                 {"rank", 1, rank},
                 {"flags", 1, results.flags},
                 {"point", 1, number}});
}

}  // namespace zyngrad
