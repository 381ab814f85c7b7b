#include "cli/gradient/GradientReport.h"

#include <array>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <ostream>

#include "cli/base/TextTable.h"
#include "cli/gradient/NormsReport.h"

namespace zyngrad {
namespace {

using nlohmann::ordered_json;
using Align = TextTable::Align;

void PrintErrors(std::ostream& out, std::vector<MethodResult> const& results, int digits) {
  TextTable table(NormsColumns({{"method", Align::Left}, {"cells", Align::Left}}, NormsOfWhat::Errors));
  for (MethodResult const& result : results) {
    for (GradientResult const& one : result.gradients) {
      table.AddRow(NormsRow({one.label, "interior"}, one.errors.interior, NormsOfWhat::Errors, digits));
      table.AddRow(NormsRow({"", "boundary"}, one.errors.boundary, NormsOfWhat::Errors, digits));
    }
  }
  table.Print(out);
}

void PrintSizes(std::ostream& out, std::vector<MethodResult> const& results, int digits) {
  TextTable table(NormsColumns({{"method", Align::Left}, {"cells", Align::Left}}, NormsOfWhat::Quantity));
  TextTable ranges(
      {{"method", Align::Left}, {"d/dx from"}, {"to"}, {"d/dy from"}, {"to"}, {"d/dz from"}, {"to"}});
  for (MethodResult const& result : results) {
    for (GradientResult const& one : result.gradients) {
      if (!one.sizes) continue;
      GradientErrors const& norms = one.sizes->norms;
      table.AddRow(NormsRow({one.label, "interior"}, norms.interior, NormsOfWhat::Quantity, digits));
      table.AddRow(NormsRow({"", "boundary"}, norms.boundary, NormsOfWhat::Quantity, digits));
      std::vector<std::string> row = {one.label};
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
      out << "  " << one.label << ": the gradient is not finite in " << Grouped(n) << " of "
          << Grouped(norms.interior.nCells + norms.boundary.nCells) << " cells"
          << (result.whyNotFinite.empty() ? "" : ": " + result.whyNotFinite) << '\n';
    }
  }
}

ordered_json ErrorsAsJson(GradientResult const& one) {
  return {{"name", one.label},
          {"field", one.field + 1},
          {"interior", NormsAsJson(one.errors.interior, NormsOfWhat::Errors)},
          {"boundary", NormsAsJson(one.errors.boundary, NormsOfWhat::Errors)}};
}

/// Norms of the gradient itself, without relative ones.
ordered_json SizesAsJson(GradientResult const& one) {
  ordered_json json = {{"name", one.label}, {"field", one.field + 1}};
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
  if (exactL2.empty()) {
    out << "length of the gradient and range of its components; the exact gradient is not known\n\n";
    PrintSizes(out, results, placeDigits);
  } else {
    out << "errors against the exact gradient, whose L2 norm is ";
    for (std::size_t k = 0; k < exactL2.size(); ++k) out << (k == 0 ? "" : ", ") << Scientific(exactL2[k]);
    out << "\n\n";
    PrintErrors(out, results, placeDigits);
  }
  out << "\ntimes of the slowest rank\n\n";
  PrintTimes(out, results);
  PrintRemarks(out, results);
}

ordered_json GradientResultsAsJson(std::vector<MethodResult> const& results) {
  ordered_json json = ordered_json::array();
  for (MethodResult const& result : results) json.push_back(MethodAsJson(result));
  return json;
}

}  // namespace zyngrad
