#include "cli/check/CheckReport.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <ostream>

#include "cli/base/TextTable.h"
#include "cli/check/CheckFindings.h"

namespace zyngrad {
namespace {

using nlohmann::ordered_json;
using Align = TextTable::Align;

constexpr double kLongestBar = 50.0;

std::string ConditionText(double condition) {
  if (std::isnan(condition)) return "not finite";
  if (std::isinf(condition)) return "singular";
  return condition > 0.0 ? Scientific(condition, 3) : "-";
}

std::string NumberText(CheckedSystem const& system) {
  std::string const number = std::to_string(system.number);
  return system.other > 0 ? number + " and " + std::to_string(system.other) : number;
}

void PrintCounts(std::ostream& out, CheckResult const& result) {
  TextTable table({{"found", Align::Left}, {result.kind}, {"result", Align::Left}});
  for (FindingKind const& kind : FindingKinds()) {
    if ((result.lookedFor & kind.finding) == 0) continue;
    std::int64_t const count = result.summary.Count(kind.finding);
    bool const hasMeaning = count > 0 && kind.severity != Severity::Note;
    table.AddRow({kind.text, Grouped(count), hasMeaning ? NameOf(kind.severity) : ""});
  }
  table.Print(out);
}

/// The rows of the histogram from the first to the last that is not empty.
struct Decades {
  std::size_t first = ConditionHistogram::kDecades, last = 0;

  explicit Decades(ConditionHistogram const& histogram) {
    for (std::size_t k = 0; k < histogram.decade.size(); ++k) {
      if (histogram.decade[k] == 0) continue;
      first = std::min(first, k);
      last = k;
    }
  }
};

void PrintHistogram(std::ostream& out, CheckResult const& result) {
  ConditionHistogram const& histogram = result.summary.histogram;
  if (histogram.IsEmpty()) return;
  std::int64_t const most = std::max({*std::max_element(histogram.decade.begin(), histogram.decade.end()),
                                      histogram.nSingular, histogram.nNotFinite});
  TextTable table({{"log10 condition", Align::Left}, {result.kind}, {"", Align::Left}});
  auto const add = [&table, most](std::string const& name, std::int64_t count) {
    // Rounded up, so that every count above 0 shows.
    double const length = std::ceil(kLongestBar * static_cast<double>(count) / static_cast<double>(most));
    table.AddRow({name, Grouped(count), std::string(static_cast<std::size_t>(length), '#')});
  };
  Decades const rows(histogram);
  for (std::size_t k = rows.first; k <= rows.last; ++k) {
    bool const isLast = k + 1 == histogram.decade.size();
    add(std::to_string(k) + (isLast ? " or more" : " to " + std::to_string(k + 1)), histogram.decade[k]);
  }
  if (histogram.nSingular > 0) add("singular", histogram.nSingular);
  if (histogram.nNotFinite > 0) add("not finite", histogram.nNotFinite);
  out << '\n';
  table.Print(out);
}

/// The column shows numbers of cells or points. A face has no number; the numbers of its cells identify it.
std::string WorstTitle(CheckResult const& result) {
  if (result.key == "faces") return "worst face, between cells";
  return result.key == "points" ? "worst point" : "worst cell";
}

void PrintWorst(std::ostream& out, CheckResult const& result) {
  if (result.summary.worst.empty()) return;
  TextTable table({{WorstTitle(result), Align::Left},
                   {"at", Align::Left},
                   {"members"},
                   {"condition"},
                   {"sum off by"},
                   {"why", Align::Left, TextTable::kAnyWidth}});
  for (CheckedSystem const& system : result.summary.worst) {
    std::string const why = InWords(system.findings);
    table.AddRow({NumberText(system), Place(system.at[0], system.at[1], system.at[2], result.placeDigits),
                  system.members > 0 ? std::to_string(system.members) : "-", ConditionText(system.condition),
                  system.members > 0 ? Scientific(system.rowSum, 2) : "-", why.empty() ? "-" : why});
  }
  out << '\n';
  table.Print(out);
}

ordered_json ConditionAsJson(double condition) {
  if (std::isfinite(condition)) return condition;
  return ConditionText(condition);
}

ordered_json HistogramAsJson(ConditionHistogram const& histogram) {
  if (histogram.IsEmpty()) return nullptr;
  return {
      {"decades", histogram.decade}, {"singular", histogram.nSingular}, {"notFinite", histogram.nNotFinite}};
}

/// "2 of 8 cells, 1 of 6 points"; empty if all counts are 0.
std::string Counted(std::vector<CheckResult> const& results, std::int64_t CheckSummary::*count) {
  std::string text;
  for (CheckResult const& result : results) {
    std::int64_t const n = result.summary.*count;
    if (n == 0) continue;
    text += (text.empty() ? "" : ", ") + Grouped(n) + " of " + Grouped(result.summary.nSystems) + ' ' +
            result.kind;
  }
  return text;
}

ordered_json SystemAsJson(CheckedSystem const& system) {
  ordered_json json = {{"number", system.number}, {"other", system.other}, {"place", system.at}};
  json["members"] = system.members;
  json["condition"] = ConditionAsJson(system.condition);
  json["rowSumOff"] = system.rowSum;
  json["skewness"] = system.skewness;
  json["nonOrthogonalityDegrees"] = system.nonOrthogonality;
  json["severity"] = NameOf(SeverityOf(system.findings));
  json["findings"] = ordered_json::array();
  for (FindingKind const& kind : FindingKinds())
    if ((system.findings & kind.finding) != 0) json["findings"].push_back(kind.key);
  return json;
}

}  // namespace

void PrintCheckResult(std::ostream& out, CheckResult const& result) {
  out << Grouped(result.summary.nSystems) << ' ' << result.kind << "\n\n";
  PrintCounts(out, result);
  PrintHistogram(out, result);
  PrintWorst(out, result);
  out << '\n';
}

std::vector<std::string> FoundInWords(std::vector<CheckResult> const& results, Severity severity) {
  std::vector<std::string> lines;
  for (CheckResult const& result : results) {
    for (FindingKind const& kind : FindingKinds()) {
      std::int64_t const count = result.summary.Count(kind.finding);
      if (kind.severity == severity && count > 0)
        lines.push_back(kind.text + ": " + Grouped(count) + " of " + Grouped(result.summary.nSystems) + ' ' +
                        result.kind);
    }
  }
  return lines;
}

bool AreSound(std::vector<CheckResult> const& results) {
  return std::all_of(results.begin(), results.end(),
                     [](CheckResult const& r) { return r.summary.IsSound(); });
}

void PrintVerdict(std::ostream& out, std::vector<CheckResult> const& results) {
  std::string const notFinite = Counted(results, &CheckSummary::nNotFinite);
  std::string const wrong = Counted(results, &CheckSummary::nWrong);
  for (Severity const severity : {Severity::NotFinite, Severity::Wrong})
    for (std::string const& line : FoundInWords(results, severity)) out << "  " << line << '\n';
  if (notFinite.empty() && wrong.empty())
    out << "all results would be finite numbers, and none would be wrong\n";
  else if (notFinite.empty())
    out << "all results would be finite numbers, but WRONG in " << wrong << '\n';
  else
    out << "NOT all results would be finite numbers: not finite in " << notFinite
        << (wrong.empty() ? "" : ", and WRONG in " + wrong) << '\n';
}

ordered_json CheckResultAsJson(CheckResult const& result) {
  CheckSummary const& summary = result.summary;
  ordered_json json = {{"kind", result.kind}, {"count", summary.nSystems}, {"finite", summary.IsFinite()}};
  json["wrongCount"] = summary.nWrong;
  json["notFiniteCount"] = summary.nNotFinite;
  ordered_json& found = json["found"] = ordered_json::object();
  for (FindingKind const& kind : FindingKinds()) {
    if ((result.lookedFor & kind.finding) != 0)
      found[kind.key] = {{"count", summary.Count(kind.finding)}, {"severity", NameOf(kind.severity)}};
  }
  json["worstCondition"] = ConditionAsJson(summary.worstCondition);
  json["worstRowSumOff"] = summary.worstRowSum;
  json["worstSkewness"] = summary.worstSkewness;
  json["worstNonOrthogonalityDegrees"] = summary.worstNonOrthogonality;
  json["log10Condition"] = HistogramAsJson(summary.histogram);
  json["worst"] = ordered_json::array();
  for (CheckedSystem const& system : summary.worst) json["worst"].push_back(SystemAsJson(system));
  return json;
}

}  // namespace zyngrad
