#include "cli/points/PointReport.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

#include "cli/base/TextTable.h"

namespace zyngrad {
namespace {

using nlohmann::ordered_json;
using Align = TextTable::Align;

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

std::int64_t NotFinitePoints(PointResults const& results) {
  std::int64_t count = 0;
  for (std::size_t i = 0; i < results.errors.value.size(); ++i) {
    bool const isFinite = results.run.values.isRowFinite[i] != 0 && std::isfinite(results.errors.value[i]) &&
                          std::isfinite(results.errors.gradient[i]);
    count += isFinite ? 0 : 1;
  }
  return count;
}

char const* NameOf(PointFlag flag) {
  switch (flag) {
    case kIsFar:
      return "far";
    case kHasFewCells:
      return "few";
    case kIsNotFinite:
      return "notfinite";
  }
  return "";
}

void PrintPointResults(std::ostream& out, PointResults const& results) {
  out << Grouped(static_cast<std::int64_t>(results.points.size())) << " points by search method "
      << results.settings.method << ", " << StencilSizesInWords(SizesOf(results.run.values.members))
      << ", from " << Grouped(results.nUsableCells) << " usable of " << Grouped(results.nCells) << " cells\n";
  if (results.points.x.empty()) {
    out << "there are no points, so there are no errors to show\n";
    return;
  }
  PrintErrors(out, results);
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
  json["value"] = NormsAsJson(ValueNorms(results.errors, results.exact));
  json["gradient"] = NormsAsJson(GradientNorms(results.errors, results.exact));
  json["flags"] = FlagsAsJson(results);
  if (!results.whyNotFinite.empty()) json["whyNotFinite"] = results.whyNotFinite;
  return json;
}

}  // namespace zyngrad
