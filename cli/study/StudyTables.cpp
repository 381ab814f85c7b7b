#include "cli/study/StudyTables.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <ostream>
#include <utility>

#include "cli/base/OneLine.h"
#include "cli/base/Timing.h"
#include "cli/study/StudyPlot.h"

namespace zyngrad {
namespace {

using nlohmann::ordered_json;
using Align = TextTable::Align;

/// "inf" instead of the dash of Scientific, because a singular system has an infinite condition number.
std::string ConditionText(double condition) {
  return std::isinf(condition) ? "inf" : Scientific(condition, 2);
}

/// Whether an order between two levels is meaningful: at about the same spacing, errors differ for other reasons.
bool IsFiner(double spacing, double coarseSpacing) {
  constexpr double kNoticeably = 0.99;
  return spacing < kNoticeably * coarseSpacing;
}

StudyTable ErrorTable(StudyQuestion const& question, std::vector<StudyLevel> const& levels,
                      std::size_t iField, char const* quantity) {
  StudyField const& field = question.fields[iField];
  StudyTable table;
  table.title = "errors of the " + std::string(quantity) + ", field " + field.name + ": " +
                OneLine(field.formula.text());
  table.columns = {
      {"method", Align::Left}, {"cells"},       {"spacing"}, {"interior L1"}, {"L2"},         {"maximum"},
      {"order of L2"},         {"boundary L1"}, {"L2"},      {"maximum"},     {"order of L2"}};
  for (std::size_t c = 0; c < question.cases.size(); ++c) {
    StudyResult const* coarse = nullptr;
    double coarseSpacing = 0.0;
    for (StudyLevel const& level : levels) {
      StudyResult const* const result = FindResult(level, c, iField, quantity);
      if (result == nullptr) continue;
      auto const order = [&](StudyNorms StudyErrors::*region) {
        if (coarse == nullptr || !IsFiner(level.spacing, coarseSpacing)) return std::string("-");
        return Fixed(ObservedOrder((coarse->errors.*region).l2, (result->errors.*region).l2, coarseSpacing,
                                   level.spacing),
                     2);
      };
      StudyNorms const &interior = result->errors.interior, &boundary = result->errors.boundary;
      table.rows.push_back(
          {coarse == nullptr ? Label(question.cases[c]) : "", Grouped(level.nCells),
           Scientific(level.spacing, 3), Scientific(interior.l1, 3), Scientific(interior.l2, 3),
           Scientific(interior.max, 3), order(&StudyErrors::interior), Scientific(boundary.l1, 3),
           Scientific(boundary.l2, 3), Scientific(boundary.max, 3), order(&StudyErrors::boundary)});
      coarse = result;
      coarseSpacing = level.spacing;
    }
  }
  return table;
}

StudyTable CostTable(StudyQuestion const& question, std::vector<StudyLevel> const& levels) {
  StudyTable table;
  table.title = "cost per cell, face or point, and condition numbers";
  table.columns = {{"method", Align::Left}, {"cells"}, {"set-up us"}, {"application ns"},
                   {"condition median"},    {"worst"}, {"of systems"}};
  for (std::size_t c = 0; c < question.cases.size(); ++c) {
    bool isFirst = true;
    for (StudyLevel const& level : levels) {
      auto const result = std::find_if(level.results.begin(), level.results.end(), [c](StudyResult const& r) {
        return r.iCase == c && r.notRun.empty();
      });
      if (result == level.results.end()) continue;
      StudyCondition const& condition = result->condition;
      bool const has = condition.nSystems > 0;
      table.rows.push_back(
          {isFirst ? Label(question.cases[c]) : "", Grouped(level.nCells), Fixed(result->usSetUp, 3),
           Fixed(result->nsApply, 1), has ? ConditionText(condition.median) : "-",
           has ? ConditionText(condition.worst) : "-", has ? Grouped(condition.nSystems) : "-"});
      isFirst = false;
    }
  }
  return table;
}

ordered_json NormsAsJson(StudyNorms const& norms) {
  return {{"count", norms.count},
          {"l1", norms.l1},
          {"l2", norms.l2},
          {"max", norms.max},
          {"notFinite", norms.nNotFinite}};
}

/// The bins that are not empty.
ordered_json HistogramAsJson(ErrorHistogram const& histogram) {
  ordered_json bins = ordered_json::array();
  for (int bin = 0; bin < ErrorHistogram::kBins; ++bin) {
    std::int64_t const count = histogram.count[static_cast<std::size_t>(bin)];
    if (count > 0) bins.push_back({{"from", ErrorHistogram::LowerEnd(bin)}, {"count", count}});
  }
  return bins;
}

ordered_json ResultAsJson(StudyQuestion const& question, StudyResult const& result) {
  StudyCase const& theCase = question.cases[result.iCase];
  ordered_json json = {{"method", theCase.method->name},
                       {"label", Label(theCase)},
                       {"field", question.fields[result.iField].name},
                       {"quantity", result.quantity}};
  if (theCase.method->TakesSpan()) json["span"] = theCase.span;
  if (theCase.method->takesSweeps) json["sweeps"] = theCase.nSweeps;
  if (!result.notRun.empty()) {
    json["notRun"] = result.notRun;
    return json;
  }
  json["interior"] = NormsAsJson(result.errors.interior);
  json["boundary"] = NormsAsJson(result.errors.boundary);
  json["usSetUp"] = result.usSetUp;
  json["nsApplication"] = result.nsApply;
  if (!result.remarks.empty()) json["remarks"] = result.remarks;
  if (!result.whyNotFinite.empty()) json["whyNotFinite"] = result.whyNotFinite;
  if (result.condition.nSystems > 0) {
    json["condition"] = {{"systems", result.condition.nSystems},
                         {"median", result.condition.median},
                         {"worst", result.condition.worst}};
  }
  json["histogram"] = HistogramAsJson(result.errors.histogram);
  return json;
}

/// The remarks of the methods on their results. A remark that applies to every mesh appears once.
std::vector<std::string> RemarksOfMethods(StudyQuestion const& question,
                                          std::vector<StudyLevel> const& levels) {
  std::vector<std::pair<std::string, std::string>> said;  // by method, what
  std::vector<std::vector<std::string>> meshes;           // where, for each of them
  for (StudyLevel const& level : levels) {
    for (StudyResult const& result : level.results) {
      for (std::string const& remark : result.remarks) {
        std::pair<std::string, std::string> const one = {Label(question.cases[result.iCase]), remark};
        auto const known = std::find(said.begin(), said.end(), one);
        auto const k = static_cast<std::size_t>(known - said.begin());
        if (known == said.end()) {
          said.push_back(one);
          meshes.emplace_back();
        }
        if (meshes[k].empty() || meshes[k].back() != level.mesh) meshes[k].push_back(level.mesh);
      }
    }
  }
  std::vector<std::string> remarks;
  for (std::size_t k = 0; k < said.size(); ++k) {
    auto const& [label, remark] = said[k];
    if (meshes[k].size() == levels.size()) {
      remarks.push_back(label + ": " + remark);
      continue;
    }
    for (std::string const& mesh : meshes[k])
      remarks.push_back(label + " on " + OneLine(mesh) + ": " + remark);
  }
  return remarks;
}

bool AnyTimeIsTooShort(std::vector<StudyLevel> const& levels) {
  return std::any_of(levels.begin(), levels.end(), [](StudyLevel const& level) {
    return std::any_of(level.results.begin(), level.results.end(), [](StudyResult const& result) {
      return result.notRun.empty() && (std::isnan(result.usSetUp) || std::isnan(result.nsApply));
    });
  });
}

}  // namespace

std::vector<char const*> QuantitiesOf(std::vector<StudyLevel> const& levels) {
  std::vector<char const*> quantities;
  for (StudyLevel const& level : levels) {
    for (StudyResult const& result : level.results) {
      auto const isIt = [&result](std::string const& known) { return known == result.quantity; };
      if (std::none_of(quantities.begin(), quantities.end(), isIt)) quantities.push_back(result.quantity);
    }
  }
  return quantities;
}

StudyResult const* FindResult(StudyLevel const& level, std::size_t iCase, std::size_t iField,
                              std::string const& quantity) {
  for (StudyResult const& result : level.results) {
    if (result.iCase == iCase && result.iField == iField && result.notRun.empty() &&
        quantity == result.quantity)
      return &result;
  }
  return nullptr;
}

std::vector<StudyTable> StudyTables(StudyQuestion const& question, std::vector<StudyLevel> const& levels) {
  std::vector<StudyTable> tables;
  for (std::size_t f = 0; f < question.fields.size(); ++f)
    for (char const* quantity : QuantitiesOf(levels))
      tables.push_back(ErrorTable(question, levels, f, quantity));
  tables.push_back(CostTable(question, levels));
  return tables;
}

std::vector<std::string> StudyRemarks(StudyQuestion const& question, std::vector<StudyLevel> const& levels) {
  std::vector<std::string> remarks = RemarksOfMethods(question, levels);
  if (AnyTimeIsTooShort(levels))
    remarks.push_back("times below " + Fixed(1e6 * ShortestTime(), 1) +
                      " us for a whole mesh are not shown, since they are within the noise of the clock");
  for (StudyLevel const& level : levels) {
    for (StudyResult const& result : level.results) {
      std::string const beginning = Label(question.cases[result.iCase]) + " on " + OneLine(level.mesh) + ": ";
      std::int64_t const n = result.NotFinite();
      if (!result.notRun.empty()) remarks.push_back(beginning + "not run: " + result.notRun);
      if (n > 0)
        remarks.push_back(beginning + "the " + result.quantity + " is not finite at " + Grouped(n) + " of " +
                          Grouped(result.errors.interior.count + result.errors.boundary.count) + " places" +
                          (result.whyNotFinite.empty() ? "" : ": " + result.whyNotFinite));
    }
  }
  return remarks;
}

void PrintTable(std::ostream& out, StudyTable const& table) {
  TextTable text(table.columns);
  for (std::vector<std::string> const& row : table.rows) text.AddRow(row);
  out << table.title << "\n\n";
  text.Print(out);
}

std::string MarkdownOf(StudyTable const& table) {
  std::string text = "**" + table.title + "**\n\n|", rule = "|";
  for (TextTable::Column const& column : table.columns) {
    text += ' ' + column.title + " |";
    rule += column.align == Align::Left ? "---|" : "--:|";
  }
  text += '\n' + rule + '\n';
  for (std::vector<std::string> const& row : table.rows) {
    text += '|';
    for (std::string const& cell : row) text += ' ' + cell + " |";
    text += '\n';
  }
  return text;
}

std::string HtmlOf(StudyTable const& table) {
  std::string text = "<table>\n<caption>" + Escaped(table.title) + "</caption>\n<thead><tr>";
  for (TextTable::Column const& column : table.columns) text += "<th>" + Escaped(column.title) + "</th>";
  text += "</tr></thead>\n<tbody>\n";
  for (std::vector<std::string> const& row : table.rows) {
    text += "<tr>";
    for (std::size_t k = 0; k < row.size(); ++k) {
      text += table.columns[k].align == Align::Left ? "<td class=\"word\">" : "<td>";
      text += Escaped(row[k]) + "</td>";
    }
    text += "</tr>\n";
  }
  return text + "</tbody>\n</table>\n";
}

ordered_json StudyAsJson(StudyQuestion const& question, std::vector<StudyLevel> const& levels) {
  ordered_json json;
  for (StudyField const& field : question.fields)
    json["fields"].push_back({{"name", field.name}, {"formula", field.formula.text()}});
  json["searchNumber"] = question.searchNumber;
  json["levels"] = ordered_json::array();
  for (StudyLevel const& level : levels) {
    ordered_json one = {{"mesh", level.mesh}, {"cells", level.nCells}, {"spacing", level.spacing}};
    one["results"] = ordered_json::array();
    for (StudyResult const& result : level.results) one["results"].push_back(ResultAsJson(question, result));
    json["levels"].push_back(std::move(one));
  }
  return json;
}

}  // namespace zyngrad
