#include "cli/StudyTables.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <ostream>
#include <utility>

#include "cli/OneLine.h"
#include "cli/StudyPlot.h"

namespace zyngrad {
namespace {

using nlohmann::ordered_json;
using Align = TextTable::Align;

/// "inf" where TextTable would show a dash: a singular system has a condition number, after all.
std::string ConditionText(double condition) {
  return std::isinf(condition) ? "inf" : Scientific(condition, 2);
}

/// Whether an order between two levels means anything: of about the same spacing, errors differ for other reasons.
bool IsFiner(double spacing, double coarseSpacing) {
  constexpr double kNoticeably = 0.99;
  return spacing < kNoticeably * coarseSpacing;
}

StudyTable ErrorTable(const StudyQuestion& question, const std::vector<StudyLevel>& levels,
                      std::size_t iField, const char* quantity) {
  const StudyField& field = question.fields[iField];
  StudyTable table;
  table.title = "errors of the " + std::string(quantity) + ", field " + field.name + ": " +
                OneLine(field.formula.text());
  table.columns = {
      {"method", Align::Left}, {"cells"},       {"spacing"}, {"interior L1"}, {"L2"},         {"maximum"},
      {"order of L2"},         {"boundary L1"}, {"L2"},      {"maximum"},     {"order of L2"}};
  for (std::size_t c = 0; c < question.cases.size(); ++c) {
    const StudyResult* coarse = nullptr;
    double coarseSpacing = 0.0;
    for (const StudyLevel& level : levels) {
      const StudyResult* const result = FindResult(level, c, iField, quantity);
      if (result == nullptr) continue;
      const auto order = [&](StudyNorms StudyErrors::*region) {
        if (coarse == nullptr || !IsFiner(level.spacing, coarseSpacing)) return std::string("-");
        return Fixed(ObservedOrder((coarse->errors.*region).l2, (result->errors.*region).l2, coarseSpacing,
                                   level.spacing),
                     2);
      };
      const StudyNorms &interior = result->errors.interior, &boundary = result->errors.boundary;
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

StudyTable CostTable(const StudyQuestion& question, const std::vector<StudyLevel>& levels) {
  StudyTable table;
  table.title = "cost per cell, face or point, and condition numbers";
  table.columns = {{"method", Align::Left}, {"cells"}, {"set-up us"}, {"application ns"},
                   {"condition median"},    {"worst"}, {"of systems"}};
  for (std::size_t c = 0; c < question.cases.size(); ++c) {
    bool isFirst = true;
    for (const StudyLevel& level : levels) {
      const auto result = std::find_if(level.results.begin(), level.results.end(), [c](const StudyResult& r) {
        return r.iCase == c && r.notRun.empty();
      });
      if (result == level.results.end()) continue;
      const StudyCondition& condition = result->condition;
      const bool has = condition.nSystems > 0;
      table.rows.push_back(
          {isFirst ? Label(question.cases[c]) : "", Grouped(level.nCells), Fixed(result->usSetUp, 3),
           Fixed(result->nsApply, 1), has ? ConditionText(condition.median) : "-",
           has ? ConditionText(condition.worst) : "-", has ? Grouped(condition.nSystems) : "-"});
      isFirst = false;
    }
  }
  return table;
}

ordered_json NormsAsJson(const StudyNorms& norms) {
  return {{"count", norms.count},
          {"l1", norms.l1},
          {"l2", norms.l2},
          {"max", norms.max},
          {"notFinite", norms.nNotFinite}};
}

/// The bins that hold something and those between them.
ordered_json HistogramAsJson(const ErrorHistogram& histogram) {
  ordered_json bins = ordered_json::array();
  for (int bin = 0; bin < ErrorHistogram::kBins; ++bin) {
    const std::int64_t count = histogram.count[static_cast<std::size_t>(bin)];
    if (count > 0) bins.push_back({{"from", ErrorHistogram::LowerEnd(bin)}, {"count", count}});
  }
  return bins;
}

ordered_json ResultAsJson(const StudyQuestion& question, const StudyResult& result) {
  const StudyCase& theCase = question.cases[result.iCase];
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

/// What the methods say of their results; what is said on every mesh is said once.
std::vector<std::string> RemarksOfMethods(const StudyQuestion& question,
                                          const std::vector<StudyLevel>& levels) {
  std::vector<std::pair<std::string, std::string>> said;  // by method, what
  std::vector<std::vector<std::string>> meshes;           // where, for each of them
  for (const StudyLevel& level : levels) {
    for (const StudyResult& result : level.results) {
      for (const std::string& remark : result.remarks) {
        const std::pair<std::string, std::string> one = {Label(question.cases[result.iCase]), remark};
        const auto known = std::find(said.begin(), said.end(), one);
        const auto k = static_cast<std::size_t>(known - said.begin());
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
    const auto& [label, remark] = said[k];
    if (meshes[k].size() == levels.size()) {
      remarks.push_back(label + ": " + remark);
      continue;
    }
    for (const std::string& mesh : meshes[k])
      remarks.push_back(label + " on " + OneLine(mesh) + ": " + remark);
  }
  return remarks;
}

}  // namespace

std::vector<const char*> QuantitiesOf(const std::vector<StudyLevel>& levels) {
  std::vector<const char*> quantities;
  for (const StudyLevel& level : levels) {
    for (const StudyResult& result : level.results) {
      const auto isIt = [&result](const std::string& known) { return known == result.quantity; };
      if (std::none_of(quantities.begin(), quantities.end(), isIt)) quantities.push_back(result.quantity);
    }
  }
  return quantities;
}

const StudyResult* FindResult(const StudyLevel& level, std::size_t iCase, std::size_t iField,
                              const std::string& quantity) {
  for (const StudyResult& result : level.results) {
    if (result.iCase == iCase && result.iField == iField && result.notRun.empty() &&
        quantity == result.quantity)
      return &result;
  }
  return nullptr;
}

std::vector<StudyTable> StudyTables(const StudyQuestion& question, const std::vector<StudyLevel>& levels) {
  std::vector<StudyTable> tables;
  for (std::size_t f = 0; f < question.fields.size(); ++f)
    for (const char* quantity : QuantitiesOf(levels))
      tables.push_back(ErrorTable(question, levels, f, quantity));
  tables.push_back(CostTable(question, levels));
  return tables;
}

std::vector<std::string> StudyRemarks(const StudyQuestion& question, const std::vector<StudyLevel>& levels) {
  std::vector<std::string> remarks = RemarksOfMethods(question, levels);
  for (const StudyLevel& level : levels) {
    for (const StudyResult& result : level.results) {
      const std::string beginning = Label(question.cases[result.iCase]) + " on " + OneLine(level.mesh) + ": ";
      const std::int64_t n = result.NotFinite();
      if (!result.notRun.empty()) remarks.push_back(beginning + "not run: " + result.notRun);
      if (n > 0)
        remarks.push_back(beginning + "the " + result.quantity + " is not finite at " + Grouped(n) + " of " +
                          Grouped(result.errors.interior.count + result.errors.boundary.count) + " places" +
                          (result.whyNotFinite.empty() ? "" : ": " + result.whyNotFinite));
    }
  }
  return remarks;
}

void PrintTable(std::ostream& out, const StudyTable& table) {
  TextTable text(table.columns);
  for (const std::vector<std::string>& row : table.rows) text.AddRow(row);
  out << table.title << "\n\n";
  text.Print(out);
}

std::string MarkdownOf(const StudyTable& table) {
  std::string text = "**" + table.title + "**\n\n|", rule = "|";
  for (const TextTable::Column& column : table.columns) {
    text += ' ' + column.title + " |";
    rule += column.align == Align::Left ? "---|" : "--:|";
  }
  text += '\n' + rule + '\n';
  for (const std::vector<std::string>& row : table.rows) {
    text += '|';
    for (const std::string& cell : row) text += ' ' + cell + " |";
    text += '\n';
  }
  return text;
}

std::string HtmlOf(const StudyTable& table) {
  std::string text = "<table>\n<caption>" + Escaped(table.title) + "</caption>\n<thead><tr>";
  for (const TextTable::Column& column : table.columns) text += "<th>" + Escaped(column.title) + "</th>";
  text += "</tr></thead>\n<tbody>\n";
  for (const std::vector<std::string>& row : table.rows) {
    text += "<tr>";
    for (std::size_t k = 0; k < row.size(); ++k) {
      text += table.columns[k].align == Align::Left ? "<td class=\"word\">" : "<td>";
      text += Escaped(row[k]) + "</td>";
    }
    text += "</tr>\n";
  }
  return text + "</tbody>\n</table>\n";
}

ordered_json StudyAsJson(const StudyQuestion& question, const std::vector<StudyLevel>& levels) {
  ordered_json json;
  for (const StudyField& field : question.fields)
    json["fields"].push_back({{"name", field.name}, {"formula", field.formula.text()}});
  json["searchNumber"] = question.searchNumber;
  json["levels"] = ordered_json::array();
  for (const StudyLevel& level : levels) {
    ordered_json one = {{"mesh", level.mesh}, {"cells", level.nCells}, {"spacing", level.spacing}};
    one["results"] = ordered_json::array();
    for (const StudyResult& result : level.results) one["results"].push_back(ResultAsJson(question, result));
    json["levels"].push_back(std::move(one));
  }
  return json;
}

}  // namespace zyngrad
