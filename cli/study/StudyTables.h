#pragma once

#include <iosfwd>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cli/base/TextTable.h"
#include "cli/study/StudyRun.h"

namespace zyngrad {

/// A table of a study, for the terminal, Markdown and HTML alike.
struct StudyTable {
  std::string title;
  std::vector<TextTable::Column> columns;
  std::vector<std::vector<std::string>> rows;
};

/// The quantities that the results hold, each once, in the order of their first result.
std::vector<char const*> QuantitiesOf(std::vector<StudyLevel> const& levels);

/// The result of a case for a field and quantity on a level; null: there is none, or the method did not run.
StudyResult const* FindResult(StudyLevel const& level, std::size_t iCase, std::size_t iField,
                              std::string const& quantity);

/// Errors and observed orders, a table for each field and quantity; then times and condition numbers.
std::vector<StudyTable> StudyTables(StudyQuestion const& question, std::vector<StudyLevel> const& levels);

/// "lsq on box:4,4,4: not run: ...", one a line; the tables have no row of it.
std::vector<std::string> StudyRemarks(StudyQuestion const& question, std::vector<StudyLevel> const& levels);

void PrintTable(std::ostream& out, StudyTable const& table);
std::string MarkdownOf(StudyTable const& table);
std::string HtmlOf(StudyTable const& table);

/// All numbers; what is not finite becomes null.
nlohmann::ordered_json StudyAsJson(StudyQuestion const& question, std::vector<StudyLevel> const& levels);

}  // namespace zyngrad
