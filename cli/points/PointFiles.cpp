#include "cli/points/PointFiles.h"

#include <cstdint>
#include <utility>

#include "cli/output/OutputFile.h"
#include "cli/output/RunSettings.h"
#include "cli/vtk/VtpFile.h"

namespace zyngrad {
namespace {

/// "far;few", empty without a flag.
std::string FlagsText(std::int32_t flags) {
  std::string text;
  for (PointFlag const flag : {kIsFar, kHasFewCells, kIsNotFinite, kIsOutside}) {
    if ((flags & flag) == 0) continue;
    if (!text.empty()) text += ';';
    text += NameOf(flag);
  }
  return text;
}

void AddAxes(std::vector<std::string>& columns, std::string const& name) {
  for (char const axis : {'x', 'y', 'z'}) columns.push_back(name + '_' + axis);
}

std::vector<std::string> FormulaColumns() {
  std::vector<std::string> columns = {"value"};
  AddAxes(columns, "gradient");
  columns.emplace_back("exact");
  AddAxes(columns, "exact_gradient");
  columns.insert(columns.end(), {"error", "gradient_error"});
  return columns;
}

/// Value and gradient of a component.
void AddComponentColumns(std::vector<std::string>& columns, std::string const& name) {
  columns.push_back(name);
  AddAxes(columns, name + "_gradient");
}

std::string SlopeColumn(std::string const& name) {
  return name.empty() ? "normal_derivative" : name + "_normal_derivative";
}

std::vector<std::string> ColumnsOf(PointResults const& results) {
  std::vector<std::string> columns;
  if (results.fields.empty()) {
    columns = FormulaColumns();
    if (results.HasSurface()) columns.push_back(SlopeColumn(""));
  }
  for (FieldAtPoints const& field : results.fields) {
    for (std::size_t k = 0; k < field.at.front().size(); ++k) {
      AddComponentColumns(columns, ComponentName(field, k));
      if (results.HasSurface()) columns.push_back(SlopeColumn(ComponentName(field, k)));
    }
  }
  if (results.HasSurface()) AddAxes(columns, "normal");
  columns.insert(columns.end(), {"distance", "members", "rank", "flags"});
  return columns;
}

void AddNumbers(std::string& row, std::initializer_list<double> numbers) {
  for (double const number : numbers) row += ShortestText(number) + ',';
}

/// All that is in the files beside the results themselves.
class Slopes {
 public:
  explicit Slopes(PointResults const& results) {
    if (!results.HasSurface()) return;
    if (results.fields.empty()) slopes_.push_back(SlopeAlongNormal(results.run.values, results.normals));
    for (FieldAtPoints const& field : results.fields)
      for (auto const& components : field.at)
        for (PointValues const& values : components)
          slopes_.push_back(SlopeAlongNormal(values, results.normals));
  }

  /// Appends the slope at a point, in the order in which the constructor visits the components; nothing without a
  /// surface.
  void AddTo(std::string& row, std::size_t component, std::size_t point) const {
    if (!slopes_.empty()) AddNumbers(row, {slopes_[component][point]});
  }

 private:
  std::vector<std::vector<double>> slopes_;
};

std::string ResultRow(PointResults const& results, Slopes const& slopes, std::size_t i, std::size_t time) {
  std::string row;
  if (results.fields.empty()) {
    PointValues const& found = results.run.values;
    ExactAtPoints const& exact = results.exact;
    AddNumbers(row, {found.value[i], found.gx[i], found.gy[i], found.gz[i], exact.value[i], exact.gx[i],
                     exact.gy[i], exact.gz[i], results.errors.value[i], results.errors.gradient[i]});
    slopes.AddTo(row, 0, i);
  }
  std::size_t first = 0;
  for (FieldAtPoints const& field : results.fields) {
    std::size_t const n = field.at[time].size();
    for (std::size_t k = 0; k < n; ++k) {
      PointValues const& found = field.at[time][k];
      AddNumbers(row, {found.value[i], found.gx[i], found.gy[i], found.gz[i]});
      slopes.AddTo(row, first + time * n + k, i);
    }
    first += field.at.size() * n;
  }
  SurfaceNormals const& normals = results.normals;
  if (results.HasSurface()) AddNumbers(row, {normals.px[i], normals.py[i], normals.pz[i]});
  AddNumbers(row, {results.owners[i].distance});
  row += std::to_string(results.run.values.members[i]) + ',' + std::to_string(results.owners[i].rank) + ',';
  return row + FlagsText(results.flags[i]);
}

/// x, y, z of each entry in turn.
std::vector<double> Interleaved(std::vector<double> const& x, std::vector<double> const& y,
                                std::vector<double> const& z) {
  std::vector<double> values;
  values.reserve(3 * x.size());
  for (std::size_t i = 0; i < x.size(); ++i) values.insert(values.end(), {x[i], y[i], z[i]});
  return values;
}

VtkArray Vectors(std::string const& name, std::vector<double> const& x, std::vector<double> const& y,
                 std::vector<double> const& z) {
  return {name, 3, Interleaved(x, y, z)};
}

/// A scalar or vector, its gradient and its slope along the normal, at points or triangles.
struct FieldColumns {
  std::vector<std::vector<double> const*> value, gx, gy, gz;
  std::vector<std::vector<double>> slope;  ///< empty without a surface
};

std::vector<double> Together(std::vector<std::vector<double> const*> const& columns) {
  std::vector<double> values;
  values.reserve(columns.size() * columns.front()->size());
  for (std::size_t i = 0; i < columns.front()->size(); ++i)
    for (auto const* column : columns) values.push_back((*column)[i]);
  return values;
}

/// Value, gradient and slope as arrays, one component or three.
/// @param[in] prefix  of the names behind the first one
void AddArrays(std::vector<VtkArray>& arrays, std::string const& name, std::string const& prefix,
               FieldColumns const& of) {
  auto const n = static_cast<int>(of.value.size());
  std::vector<std::vector<double> const*> gradient, slope;
  std::vector<std::string> names;
  for (std::size_t k = 0; k < of.value.size(); ++k) {
    gradient.insert(gradient.end(), {of.gx[k], of.gy[k], of.gz[k]});
    if (n > 1)
      for (char const axis : {'x', 'y', 'z'}) names.push_back(std::string("d") + "xyz"[k] + "_d" + axis);
  }
  for (std::vector<double> const& column : of.slope) slope.push_back(&column);
  arrays.push_back({name, n, Together(of.value)});
  arrays.push_back({prefix + "gradient", 3 * n, Together(gradient), names});
  if (!slope.empty()) arrays.push_back({prefix + "normal_derivative", n, Together(slope)});
}

FieldColumns AtPoints(PointResults const& results, std::vector<PointValues const*> const& components) {
  FieldColumns columns;
  for (PointValues const* values : components) {
    columns.value.push_back(&values->value);
    columns.gx.push_back(&values->gx);
    columns.gy.push_back(&values->gy);
    columns.gz.push_back(&values->gz);
    if (results.HasSurface()) columns.slope.push_back(SlopeAlongNormal(*values, results.normals));
  }
  return columns;
}

/// The scalars and vectors of a time, by name and components.
std::vector<std::pair<std::string, std::vector<PointValues const*>>> FieldsAt(PointResults const& results,
                                                                              std::size_t time) {
  if (results.fields.empty()) return {{"", {&results.run.values}}};
  std::vector<std::pair<std::string, std::vector<PointValues const*>>> fields;
  for (FieldAtPoints const& field : results.fields) {
    fields.emplace_back(field.name, std::vector<PointValues const*>());
    for (PointValues const& values : field.at[time]) fields.back().second.push_back(&values);
  }
  return fields;
}

std::vector<VtkArray> PointArrays(PointResults const& results, std::size_t time) {
  std::vector<VtkArray> arrays;
  for (auto const& [name, components] : FieldsAt(results, time)) {
    AddArrays(arrays, name.empty() ? "value" : name, name.empty() ? "" : name + '_',
              AtPoints(results, components));
  }
  if (results.fields.empty()) {
    ExactAtPoints const& exact = results.exact;
    arrays.push_back({"exact", 1, exact.value});
    arrays.push_back(Vectors("exact_gradient", exact.gx, exact.gy, exact.gz));
    arrays.push_back({"error", 1, results.errors.value});
    arrays.push_back({"gradient_error", 1, results.errors.gradient});
  }
  SurfaceNormals const& normals = results.normals;
  if (results.HasSurface()) arrays.push_back(Vectors("normal", normals.px, normals.py, normals.pz));
  std::vector<double> distance;
  std::vector<std::int32_t> rank;
  std::vector<std::int64_t> number;
  for (std::size_t i = 0; i < results.points.size(); ++i) {
    distance.push_back(results.owners[i].distance);
    rank.push_back(results.owners[i].rank);
    number.push_back(static_cast<std::int64_t>(i) + 1);
  }
  arrays.push_back({"distance", 1, distance});
  arrays.push_back({"members", 1, results.run.values.members});
  arrays.push_back({"rank", 1, rank});
  arrays.push_back({"flags", 1, results.flags});
  arrays.push_back({"point", 1, number});
  return arrays;
}

std::vector<VtkArray> TriangleArrays(PointResults const& results, std::size_t time) {
  std::vector<VtkArray> arrays;
  for (auto const& [name, components] : FieldsAt(results, time)) {
    std::vector<TriangleValues> values;
    for (PointValues const* component : components)
      values.push_back(AtTriangles(results.points, *component, results.normals));
    FieldColumns columns;
    for (TriangleValues const& at : values) {
      columns.value.push_back(&at.value);
      columns.gx.push_back(&at.gx);
      columns.gy.push_back(&at.gy);
      columns.gz.push_back(&at.gz);
      columns.slope.push_back(at.slope);
    }
    AddArrays(arrays, name.empty() ? "value" : name, name.empty() ? "" : name + '_', columns);
  }
  SurfaceNormals const& normals = results.normals;
  arrays.push_back(Vectors("normal", normals.tx, normals.ty, normals.tz));
  arrays.push_back({"area", 1, normals.area});
  return arrays;
}

}  // namespace

std::vector<std::string> PointResultColumns(std::vector<std::string> const& fields, bool hasTimes) {
  std::vector<std::string> columns = FormulaColumns();
  columns.push_back(SlopeColumn(""));
  if (!fields.empty()) columns.clear();
  if (hasTimes) columns.emplace_back("time");
  for (std::string const& name : fields) {
    for (std::string const component : {"", "_x", "_y", "_z"}) {
      AddComponentColumns(columns, name + component);
      columns.push_back(SlopeColumn(name + component));
    }
  }
  AddAxes(columns, "normal");
  columns.insert(columns.end(), {"distance", "members", "rank", "flags"});
  return columns;
}

void WritePointCsv(std::string const& file, PointResults const& results) {
  OutputFile table(file);
  std::ostream& out = table.stream();
  bool const hasTimes = !results.times.empty() && !results.times.front().empty();
  if (hasTimes) out << "time,";
  out << results.points.header;
  for (std::string const& column : ColumnsOf(results)) out << ',' << column;
  out << '\n';
  Slopes const slopes(results);
  std::size_t const nTimes = results.fields.empty() ? 1 : results.times.size();
  for (std::size_t i = 0; i < results.points.size(); ++i) {
    for (std::size_t t = 0; t < nTimes; ++t) {
      if (hasTimes) out << results.times[t] << ',';
      out << results.points.rows[i] << ',' << ResultRow(results, slopes, i, t) << '\n';
    }
  }
  table.Close();
}

void WritePointVtp(std::string const& file, PointResults const& results, std::size_t time) {
  PointSet const& points = results.points;
  std::vector<double> const places = Interleaved(points.x, points.y, points.z);
  std::vector<VtkArray> const pointData = PointArrays(results, time);
  if (!results.HasSurface()) {
    WriteVertices(file, places, pointData);
    return;
  }
  VtpSurface surface;
  surface.points = places;
  for (Triangle const& t : points.triangles) {
    surface.connectivity.insert(surface.connectivity.end(), t.begin(), t.end());
    surface.offsets.push_back(static_cast<std::int64_t>(surface.connectivity.size()));
  }
  WritePolygons(file, surface, TriangleArrays(results, time), pointData);
}

}  // namespace zyngrad
