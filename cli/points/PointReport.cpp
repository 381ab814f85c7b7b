#include "cli/points/PointReport.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "cli/base/TextTable.h"

namespace zyngrad {
namespace {

using nlohmann::ordered_json;
using Align = TextTable::Align;

constexpr char const* kWhyDefault =
    "third-order values and second-order gradients from the nearest cells; --search-method 3 is the "
    "library's default";

// On regular hexahedra the error of values from 20 cells is 23 times that on cubes at a ratio of 3 (docs/methods/points.md).
// Cells that are not flat measure up to 2.93 where two boundaries or cuts meet. A little less than 3, for cells that are
// three times as wide as thick up to rounding.
constexpr double kFlatCell = 2.99;
constexpr int kCellsForFlatCells = 80;

std::string PlaceOf(PointResults const& results, std::size_t i) {
  PointSet const& points = results.points;
  return Place(points.x[i], points.y[i], points.z[i], results.placeDigits);
}

StencilSizes SizesOf(std::vector<std::int64_t> const& members) {
  if (members.empty()) return {};
  StencilSizes sizes;
  sizes.nStencils = static_cast<std::int64_t>(members.size());
  for (std::int64_t const n : members) sizes.nMembers += n;
  sizes.least = static_cast<int>(*std::min_element(members.begin(), members.end()));
  sizes.most = static_cast<int>(*std::max_element(members.begin(), members.end()));
  return sizes;
}

void AddErrorRow(TextTable& table, std::string const& what, PointNorms const& norms,
                 PointResults const& results) {
  bool const hasMax = norms.maxPoint > 0;
  table.AddRow({what, Scientific(norms.l1), Scientific(norms.l2), Scientific(norms.relativeL2),
                Scientific(norms.max), hasMax ? std::to_string(norms.maxPoint) : "-",
                hasMax ? PlaceOf(results, static_cast<std::size_t>(norms.maxPoint - 1)) : "-"});
}

void PrintErrors(std::ostream& out, PointResults const& results) {
  TextTable table(
      {{"of", Align::Left}, {"L1"}, {"L2"}, {"L2 relative"}, {"maximum"}, {"at point"}, {"at", Align::Left}});
  AddErrorRow(table, "value", ValueNorms(results.errors, results.exact), results);
  AddErrorRow(table, "gradient", GradientNorms(results.errors, results.exact), results);
  out << "errors against the exact values\n\n";
  table.Print(out);
}

/// Least and largest value of a component over all points and times, with their places.
struct Range {
  double least = std::numeric_limits<double>::quiet_NaN(), most = least;
  std::size_t leastPoint = 0, mostPoint = 0, leastTime = 0, mostTime = 0;
  std::int64_t nNotFinite = 0;
};

Range RangeOf(FieldAtPoints const& field, std::size_t component) {
  Range range;
  for (std::size_t t = 0; t < field.at.size(); ++t) {
    std::vector<double> const& values = field.at[t][component].value;
    for (std::size_t i = 0; i < values.size(); ++i) {
      if (!std::isfinite(values[i])) {
        ++range.nNotFinite;
        continue;
      }
      if (!(values[i] >= range.least)) range.least = values[i], range.leastPoint = i, range.leastTime = t;
      if (!(values[i] <= range.most)) range.most = values[i], range.mostPoint = i, range.mostTime = t;
    }
  }
  return range;
}

void PrintFields(std::ostream& out, PointResults const& results) {
  bool const hasTimes = results.times.size() > 1;
  std::vector<TextTable::Column> columns = {{"field", Align::Left}, {"minimum"}, {"at point"}};
  if (hasTimes) columns.push_back({"at time"});
  columns.insert(columns.end(), {{"maximum"}, {"at point"}});
  if (hasTimes) columns.push_back({"at time"});
  TextTable table(columns);
  for (FieldAtPoints const& field : results.fields) {
    for (std::size_t k = 0; k < field.at.front().size(); ++k) {
      Range const range = RangeOf(field, k);
      std::vector<std::string> row = {ComponentName(field, k), Scientific(range.least),
                                      std::to_string(range.leastPoint + 1)};
      if (hasTimes) row.push_back(results.times[range.leastTime]);
      row.insert(row.end(), {Scientific(range.most), std::to_string(range.mostPoint + 1)});
      if (hasTimes) row.push_back(results.times[range.mostTime]);
      table.AddRow(row);
    }
  }
  out << "values at the points";
  if (hasTimes) out << " at " << results.times.size() << " times";
  if (results.times.size() == 1 && !results.times.front().empty())
    out << " at time " << results.times.front();
  out << "\n\n";
  table.Print(out);
}

/// A scalar on the surface and its name.
struct OnSurface {
  std::string name;
  PointValues const* values;
};

/// The formula, or each component of each field at a time.
std::vector<OnSurface> OnSurfaceAt(PointResults const& results, std::size_t time) {
  if (results.fields.empty()) return {{"field", &results.run.values}};
  std::vector<OnSurface> all;
  for (FieldAtPoints const& field : results.fields)
    for (std::size_t k = 0; k < field.at[time].size(); ++k)
      all.push_back({ComponentName(field, k), &field.at[time][k]});
  return all;
}

SurfaceIntegrals IntegralsOf(PointResults const& results, PointValues const& values) {
  return IntegralsOf(AtTriangles(results.points, values, results.normals), results.normals);
}

void PrintSurface(std::ostream& out, PointResults const& results) {
  SurfaceSize const size = SizeOf(results.points);
  out << "\nsurface of " << Grouped(static_cast<std::int64_t>(results.points.triangles.size()))
      << " triangles, area " << Scientific(size.area);
  if (size.faults.IsClosed()) {
    out << ", closed around a volume of " << Scientific(size.volume);
  } else {
    out << ", open at " << Grouped(size.faults.nOpen) << " edges";
  }
  bool const hasTimes = results.times.size() > 1;
  if (hasTimes) out << "; integrals at time " << results.times.back();
  out << "\n\n";
  TextTable table({{"integral of", Align::Left},
                   {"value"},
                   {"value n_x"},
                   {"value n_y"},
                   {"value n_z"},
                   {"slope along n"}});
  std::size_t const last = results.times.empty() ? 0 : results.times.size() - 1;
  for (OnSurface const& scalar : OnSurfaceAt(results, last)) {
    SurfaceIntegrals const sum = IntegralsOf(results, *scalar.values);
    table.AddRow({scalar.name, Scientific(sum.value), Scientific(sum.nx), Scientific(sum.ny),
                  Scientific(sum.nz), Scientific(sum.slope)});
  }
  table.Print(out);
}

ordered_json SurfaceAsJson(PointResults const& results) {
  SurfaceSize const size = SizeOf(results.points);
  ordered_json json = {{"triangles", results.points.triangles.size()}, {"area", size.area}};
  json["volume"] = size.faults.IsClosed() ? ordered_json(size.volume) : ordered_json(nullptr);
  json["openEdges"] = size.faults.nOpen;
  ordered_json integrals = ordered_json::array();
  for (std::size_t t = 0; t < std::max<std::size_t>(results.times.size(), 1); ++t) {
    for (OnSurface const& scalar : OnSurfaceAt(results, t)) {
      SurfaceIntegrals const sum = IntegralsOf(results, *scalar.values);
      ordered_json entry = {{"of", scalar.name}};
      if (!results.times.empty() && !results.times[t].empty()) entry["time"] = results.times[t];
      entry["value"] = sum.value;
      entry["valueNormal"] = {sum.nx, sum.ny, sum.nz};
      entry["slope"] = sum.slope;
      integrals.push_back(entry);
    }
  }
  json["integrals"] = integrals;
  return json;
}

ordered_json FieldsAsJson(PointResults const& results) {
  ordered_json json = ordered_json::array();
  for (FieldAtPoints const& field : results.fields) {
    for (std::size_t k = 0; k < field.at.front().size(); ++k) {
      Range const range = RangeOf(field, k);
      ordered_json entry = {{"name", ComponentName(field, k)}, {"min", range.least}, {"max", range.most}};
      entry["minPoint"] = range.leastPoint + 1;
      entry["maxPoint"] = range.mostPoint + 1;
      entry["notFinite"] = range.nNotFinite;
      if (!results.times.front().empty()) {
        entry["minTime"] = results.times[range.leastTime];
        entry["maxTime"] = results.times[range.mostTime];
      }
      json.push_back(entry);
    }
  }
  return json;
}

void PrintTimes(std::ostream& out, PointTimes const& times) {
  constexpr double kMilli = 1e3;
  TextTable table({{"set-up ms"}, {"us per point"}, {"first call ms"}, {"later calls ms"}, {"ns per point"}});
  table.AddRow({Fixed(times.setUp * kMilli, 3), Fixed(times.usPerPoint, 2), Fixed(times.first * kMilli, 3),
                Fixed(times.later * kMilli, 3), Fixed(times.nsPerPoint, 1)});
  out << "\ntimes of the slowest rank\n\n";
  table.Print(out);
}

/// What a flag says about its points, to follow their number.
std::string Meaning(PointFlag flag, PointResults const& results) {
  switch (flag) {
    case kIsFar:
      return "farther than " + Fixed(kFarDistances, 0) + " mean cell distances (" +
             Scientific(kFarDistances * results.meanDistance) + ") from the nearest usable cell";
    case kHasFewCells:
      return "with fewer than " + std::to_string(kLeastMembers) + " cells in the stencil";
    case kIsNotFinite:
      return "with weights that are not finite";
    case kIsOutside:
      return "outside the mesh: an extrapolation";
  }
  return {};
}

void PrintFlags(std::ostream& out, PointResults const& results) {
  TextTable table({{"flag", Align::Left}, {"point"}, {"distance"}, {"cells"}, {"at", Align::Left}});
  bool isAny = false;
  for (FlaggedPoints const& flagged : CountFlags(results.flags, results.run.values, results.owners)) {
    if (flagged.count == 0) continue;
    if (!isAny) out << '\n';
    isAny = true;
    out << "  warning: " << NameOf(flagged.flag) << ": " << Grouped(flagged.count)
        << (flagged.count == 1 ? " point " : " points ") << Meaning(flagged.flag, results) << '\n';
    for (std::size_t const i : flagged.worst) {
      table.AddRow({NameOf(flagged.flag), std::to_string(i + 1), Scientific(results.owners[i].distance),
                    std::to_string(results.run.values.members[i]), PlaceOf(results, i)});
    }
  }
  if (!isAny) return;
  out << "\nthe worst of these points\n\n";
  table.Print(out);
}

ordered_json NormsAsJson(PointNorms const& norms) {
  ordered_json json = {
      {"l1", norms.l1}, {"l2", norms.l2}, {"l2Relative", norms.relativeL2}, {"max", norms.max}};
  json["maxPoint"] = norms.maxPoint > 0 ? ordered_json(norms.maxPoint) : ordered_json(nullptr);
  json["notFinite"] = norms.nNotFinite;
  return json;
}

ordered_json FlagsAsJson(PointResults const& results) {
  ordered_json json = ordered_json::object();
  for (FlaggedPoints const& flagged : CountFlags(results.flags, results.run.values, results.owners)) {
    ordered_json worst = ordered_json::array();
    for (std::size_t const i : flagged.worst) worst.push_back(i + 1);
    json[NameOf(flagged.flag)] = {{"points", flagged.count}, {"worst", worst}};
  }
  return json;
}

}  // namespace

std::string ComponentName(FieldAtPoints const& field, std::size_t component) {
  return field.at.front().size() == 1 ? field.name : field.name + '_' + "xyz"[component];
}

std::int64_t NotFinitePoints(PointResults const& results) {
  auto const isFinite = [](PointValues const& values, std::size_t i) {
    // A sum is finite only if all its terms are.
    return std::isfinite(values.value[i] + values.gx[i] + values.gy[i] + values.gz[i]);
  };
  std::int64_t count = 0;
  for (std::size_t i = 0; i < results.run.values.isRowFinite.size(); ++i) {
    bool isGood = results.run.values.isRowFinite[i] != 0;
    if (results.fields.empty()) isGood = isGood && isFinite(results.run.values, i);
    for (FieldAtPoints const& field : results.fields)
      for (auto const& components : field.at)
        for (PointValues const& values : components) isGood = isGood && isFinite(values, i);
    count += isGood ? 0 : 1;
  }
  return count;
}

std::string FlatCellWarning(PointResults const& results) {
  if (results.settings.method != 2) return {};
  std::int64_t nFlat = 0;
  std::size_t flattest = 0;
  for (std::size_t i = 0; i < results.aspectRatios.size(); ++i) {
    if (results.aspectRatios[i] < kFlatCell) continue;
    if (nFlat++ == 0 || results.aspectRatios[i] > results.aspectRatios[flattest]) flattest = i;
  }
  if (nFlat == 0) return {};
  double const most = results.aspectRatios[flattest];
  if (results.settings.number >= kCellsForFlatCells) return {};
  return Grouped(nFlat) + (nFlat == 1 ? " point lies" : " points lie") + " where cells are " +
         Fixed(kFlatCell, 1) + " or more times as wide as thick, up to " + Fixed(most, 1) +
         " times at point " + std::to_string(flattest + 1) + ": the nearest " +
         std::to_string(results.settings.number) +
         " cells stand in a few columns there, and values lose up to two digits; --search-number " +
         std::to_string(kCellsForFlatCells) + " recovers most of them";
}

char const* NameOf(PointFlag flag) {
  switch (flag) {
    case kIsFar:
      return "far";
    case kHasFewCells:
      return "few";
    case kIsNotFinite:
      return "notfinite";
    case kIsOutside:
      return "outside";
  }
  return "";
}

void PrintPointResults(std::ostream& out, PointResults const& results) {
  out << Grouped(static_cast<std::int64_t>(results.points.size())) << " points by search method "
      << results.settings.method << (results.isMethodChosen ? "" : " (the default)") << ", "
      << StencilSizesInWords(SizesOf(results.run.values.members)) << ", from "
      << Grouped(results.nUsableCells) << " usable of " << Grouped(results.nCells) << " cells\n";
  if (results.points.x.empty()) {
    out << "there are no points, so there is nothing to show\n";
    return;
  }
  if (!results.isMethodChosen) out << kWhyDefault << '\n';
  for (std::string const& remark : results.remarks) out << "  warning: " << remark << '\n';
  std::string const flat = FlatCellWarning(results);
  if (!flat.empty()) out << "  warning: " << flat << '\n';
  out << '\n';
  if (results.fields.empty()) {
    PrintErrors(out, results);
  } else {
    PrintFields(out, results);
  }
  if (results.HasSurface()) PrintSurface(out, results);
  PrintTimes(out, results.run.times);
  PrintFlags(out, results);
  std::int64_t const n = NotFinitePoints(results);
  if (n == 0) return;
  out << "\n  search method " << results.settings.method << ": value or gradient is not finite at "
      << Grouped(n) << " of " << Grouped(static_cast<std::int64_t>(results.points.size())) << " points"
      << (results.whyNotFinite.empty() ? "" : ": " + results.whyNotFinite) << '\n';
}

ordered_json PointResultsAsJson(PointResults const& results) {
  PointTimes const& times = results.run.times;
  ordered_json json = {{"points", results.points.size()},
                       {"usableCells", results.nUsableCells},
                       {"meanCellDistance", results.meanDistance},
                       {"farDistance", kFarDistances * results.meanDistance}};
  json["stencils"] = StencilSizesAsJson(SizesOf(results.run.values.members));
  json["seconds"] = {{"setUp", times.setUp}, {"firstCall", times.first}, {"laterCalls", times.later}};
  json["usSetUpPerPoint"] = times.usPerPoint;
  json["nsPerPoint"] = times.nsPerPoint;
  if (results.fields.empty()) {
    json["value"] = NormsAsJson(ValueNorms(results.errors, results.exact));
    json["gradient"] = NormsAsJson(GradientNorms(results.errors, results.exact));
  } else {
    if (!results.times.front().empty()) json["times"] = results.times;
    json["fields"] = FieldsAsJson(results);
  }
  if (results.HasSurface()) json["surface"] = SurfaceAsJson(results);
  if (!results.aspectRatios.empty())
    json["largestAspectRatio"] = *std::max_element(results.aspectRatios.begin(), results.aspectRatios.end());
  json["flags"] = FlagsAsJson(results);
  std::vector<std::string> remarks = results.remarks;
  std::string const flat = FlatCellWarning(results);
  if (!flat.empty()) remarks.push_back(flat);
  json["remarks"] = remarks;
  if (!results.whyNotFinite.empty()) json["whyNotFinite"] = results.whyNotFinite;
  return json;
}

}  // namespace zyngrad
