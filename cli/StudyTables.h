#pragma once

#include <iosfwd>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cli/StudyRun.h"
#include "cli/TextTable.h"

namespace zyngrad {

/// A table of a study, for the terminal, Markdown and HTML alike.
struct StudyTable {
  std::string title;
  std::vector<TextTable::Column> columns;
  std::vector<std::vector<std::string>> rows;
};

/// The quantities that the results hold, each once, in the order of their first result.
std::vector<const char*> QuantitiesOf(const std::vector<StudyLevel>& levels);

/// The result of a case for a field and quantity on a level; null: there is none, or the method did not run.
const StudyResult* FindResult(const StudyLevel& level, std::size_t iCase, std::size_t iField,
                              const std::string& quantity);

/// Errors and observed orders, a table for each field and quantity; then times and condition numbers.
std::vector<StudyTable> StudyTables(const StudyQuestion& question, const std::vector<StudyLevel>& levels);

/// "lsq on box:4,4,4: not run: ...", one a line; the tables have no row of it.
std::vector<std::string> StudyRemarks(const StudyQuestion& question, const std::vector<StudyLevel>& levels);

void PrintTable(std::ostream& out, const StudyTable& table);
std::string MarkdownOf(const StudyTable& table);
std::string HtmlOf(const StudyTable& table);

/// All numbers; what is not finite becomes null.
nlohmann::ordered_json StudyAsJson(const StudyQuestion& question, const std::vector<StudyLevel>& levels);

}  // namespace zyngrad
