#include "cli/gradient/GradientReport.h"

#include <array>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <ostream>
#include <utility>

#include "cli/base/OneLine.h"
#include "cli/base/TextTable.h"
#include "cli/gradient/NormsReport.h"

namespace zyngrad {
namespace {

using nlohmann::ordered_json;
using Align = TextTable::Align;

/// Whether the fields have names, which the tables then show.
bool HaveNames(std::vector<MethodResult> const& results) {
  for (MethodResult const& result : results)
    for (GradientResult const& one : result.gradients)
      if (!one.fieldName.empty()) return true;
  return false;
}

/// The method and, with `hasNames`, the field.
std::vector<TextTable::Column> FirstColumns(bool hasNames) {
  std::vector<TextTable::Column> columns = {{"method", Align::Left}};
  if (hasNames) columns.push_back({"field", Align::Left});
  return columns;
}

std::vector<std::string> FirstCells(GradientResult const& one, bool hasNames) {
  if (!hasNames) return {one.label};
  return {one.label, OneLine(one.fieldName)};
}

/// Rows for the interior and the boundary cells.
void AddNorms(TextTable& table, std::vector<std::string> first, GradientErrors const& norms, NormsOfWhat what,
              int digits) {
  std::vector<std::string> second(first.size());
  first.emplace_back("interior");
  second.emplace_back("boundary");
  table.AddRow(NormsRow(first, norms.interior, what, digits));
  table.AddRow(NormsRow(second, norms.boundary, what, digits));
}

TextTable NormsTable(bool hasNames, NormsOfWhat what) {
  std::vector<TextTable::Column> columns = FirstColumns(hasNames);
  columns.push_back({"cells", Align::Left});
  return TextTable(NormsColumns(columns, what));
}

void PrintErrors(std::ostream& out, std::vector<MethodResult> const& results, int digits) {
  TextTable table = NormsTable(false, NormsOfWhat::Errors);
  for (MethodResult const& result : results)
    for (GradientResult const& one : result.gradients)
      AddNorms(table, {one.label}, one.errors, NormsOfWhat::Errors, digits);
  table.Print(out);
}

void PrintSizes(std::ostream& out, std::vector<MethodResult> const& results, int digits) {
  bool const hasNames = HaveNames(results);
  TextTable table = NormsTable(hasNames, NormsOfWhat::Quantity);
  std::vector<TextTable::Column> columns = FirstColumns(hasNames);
  columns.insert(columns.end(), {{"d/dx from"}, {"to"}, {"d/dy from"}, {"to"}, {"d/dz from"}, {"to"}});
  TextTable ranges(columns);
  for (MethodResult const& result : results) {
    for (GradientResult const& one : result.gradients) {
      if (!one.sizes) continue;
      std::vector<std::string> row = FirstCells(one, hasNames);
      AddNorms(table, row, one.sizes->norms, NormsOfWhat::Quantity, digits);
      for (std::size_t d = 0; d < 3; ++d) {
        row.push_back(Scientific(one.sizes->lowest[d]));
        row.push_back(Scientific(one.sizes->highest[d]));
      }
      ranges.AddRow(row);
    }
  }
  table.Print(out);
  out << '\n';
  ranges.Print(out);
}

void PrintTimes(std::ostream& out, std::vector<MethodResult> const& results) {
  constexpr double kMilli = 1e3;
  TextTable table(
      {{"method", Align::Left}, {"set-up ms"}, {"first call ms"}, {"later calls ms"}, {"ns per cell"}});
  for (MethodResult const& result : results) {
    if (!result.notRun.empty()) continue;
    MethodTimes const& times = result.times;
    int const nFields = result.method->nFields;
    std::string const label = std::string(result.method->name) +
                              (nFields > 1 ? " (" + std::to_string(nFields) + " fields)" : std::string());
    table.AddRow({label, Fixed(times.setUp * kMilli, 3), Fixed(times.first * kMilli, 3),
                  Fixed(times.later * kMilli, 3), Fixed(times.nsPerCell, 1)});
  }
  table.Print(out);
}

void PrintRemarks(std::ostream& out, std::vector<MethodResult> const& results) {
  for (MethodResult const& result : results) {
    if (!result.notRun.empty()) out << "  " << result.method->name << ": not run: " << result.notRun << '\n';
    for (std::string const& remark : result.remarks)
      out << "  " << result.method->name << ": " << remark << '\n';
    if (result.NotFiniteCells() == 0 && !result.whyNotFinite.empty())
      out << "  " << result.method->name << ": the gradient is meaningless: " << result.whyNotFinite << '\n';
    for (GradientResult const& one : result.gradients) {
      GradientErrors const& norms = NormsOf(one);
      std::int64_t const n = norms.interior.nNotFinite + norms.boundary.nNotFinite;
      if (n == 0) continue;
      out << "  " << one.label << ": the gradient"
          << (one.fieldName.empty() ? "" : " of " + OneLine(one.fieldName)) << " is not finite in "
          << Grouped(n) << " of " << Grouped(norms.interior.nCells + norms.boundary.nCells) << " cells"
          << (result.whyNotFinite.empty() ? "" : ": " + result.whyNotFinite) << '\n';
    }
  }
}

void PrintNorms(std::ostream& out, std::vector<MethodResult> const& results,
                std::vector<double> const& exactL2, int placeDigits) {
  if (exactL2.empty()) {
    out << "length of the gradient and range of its components; the exact gradient is not known\n\n";
    PrintSizes(out, results, placeDigits);
  } else {
    out << "errors against the exact gradient, whose L2 norm is ";
    for (std::size_t k = 0; k < exactL2.size(); ++k) out << (k == 0 ? "" : ", ") << Scientific(exactL2[k]);
    out << "\n\n";
    PrintErrors(out, results, placeDigits);
  }
}

void PrintCallTimes(std::ostream& out, std::vector<MethodResult> const& results) {
  out << "\ntimes of the slowest rank\n\n";
  PrintTimes(out, results);
}

ordered_json NameAsJson(GradientResult const& one) {
  ordered_json json = {{"name", one.label}, {"field", one.field + 1}};
  if (!one.fieldName.empty()) json["fieldName"] = one.fieldName;
  return json;
}

ordered_json ErrorsAsJson(GradientResult const& one) {
  ordered_json json = NameAsJson(one);
  json["interior"] = NormsAsJson(one.errors.interior, NormsOfWhat::Errors);
  json["boundary"] = NormsAsJson(one.errors.boundary, NormsOfWhat::Errors);
  return json;
}

/// Norms of the gradient itself, without relative ones.
ordered_json SizesAsJson(GradientResult const& one) {
  ordered_json json = NameAsJson(one);
  json["interior"] = NormsAsJson(one.sizes->norms.interior, NormsOfWhat::Quantity);
  json["boundary"] = NormsAsJson(one.sizes->norms.boundary, NormsOfWhat::Quantity);
  std::array<char const*, 3> const names = {"x", "y", "z"};
  for (std::size_t d = 0; d < names.size(); ++d) {
    json["range"][names[d]] = {one.sizes->lowest[d], one.sizes->highest[d]};
  }
  return json;
}

ordered_json MethodAsJson(MethodResult const& result) {
  ordered_json json = {{"method", result.method->name}, {"ran", result.notRun.empty()}};
  if (!result.notRun.empty()) {
    json["notRun"] = result.notRun;
    return json;
  }
  MethodTimes const& times = result.times;
  json["fieldsPerCall"] = result.method->nFields;
  json["seconds"] = {{"setUp", times.setUp}, {"firstCall", times.first}, {"laterCalls", times.later}};
  json["nsPerCell"] = times.nsPerCell;
  if (!result.remarks.empty()) json["remarks"] = result.remarks;
  if (!result.whyNotFinite.empty()) json["whyNotFinite"] = result.whyNotFinite;
  bool const hasErrors = result.gradients.empty() || !result.gradients.front().sizes;
  ordered_json& list = json[hasErrors ? "errors" : "gradients"] = ordered_json::array();
  for (GradientResult const& one : result.gradients) {
    list.push_back(hasErrors ? ErrorsAsJson(one) : SizesAsJson(one));
  }
  return json;
}

}  // namespace

void PrintGradientResults(std::ostream& out, std::vector<MethodResult> const& results,
                          std::vector<double> const& exactL2, int placeDigits) {
  PrintNorms(out, results, exactL2, placeDigits);
  PrintCallTimes(out, results);
  PrintRemarks(out, results);
}

void PrintGradientResults(std::ostream& out, std::vector<GradientTime> const& times, int placeDigits) {
  out << "length of the gradient and range of its components; the exact gradient is not known\n";
  for (GradientTime const& time : times) {
    out << "\ntime " << time.name << "\n\n";
    PrintSizes(out, time.results, placeDigits);
    if (&time != &times.back()) PrintRemarks(out, time.results);
  }
  PrintCallTimes(out, times.front().results);
  PrintRemarks(out, times.back().results);
}

ordered_json GradientResultsAsJson(std::vector<MethodResult> const& results) {
  ordered_json json = ordered_json::array();
  for (MethodResult const& result : results) json.push_back(MethodAsJson(result));
  return json;
}

void AddGradientResults(ordered_json& json, std::vector<GradientTime> const& times) {
  auto const add = [](ordered_json& to, GradientTime const& time) {
    for (FileField const& field : time.fields) to["boundaryValues"][field.name] = BoundaryValuesAsJson(field);
    to["methods"] = GradientResultsAsJson(time.results);
  };
  if (times.front().name.empty()) {
    add(json, times.front());
    return;
  }
  for (GradientTime const& time : times) {
    ordered_json entry = {{"time", time.name}};
    entry["seconds"] = {
        {"reading", time.readSeconds}, {"computing", time.computeSeconds}, {"writing", time.writeSeconds}};
    add(entry, time);
    json["times"].push_back(std::move(entry));
  }
}

}  // namespace zyngrad
