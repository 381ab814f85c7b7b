#pragma once

#include <iosfwd>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "cli/base/TextTable.h"
#include "cli/study/StudyRun.h"

namespace zyngrad {

/// A table of a study, for terminal, Markdown and HTML.
struct StudyTable {
  std::string title;
  std::vector<TextTable::Column> columns;
  std::vector<std::vector<std::string>> rows;
};

/// The quantities in the results, each once, in the order of their first result.
std::vector<char const*> QuantitiesOf(std::vector<StudyLevel> const& levels);

/// The result of a case for a field and quantity on a level; null if there is none or the method did not run.
StudyResult const* FindResult(StudyLevel const& level, std::size_t iCase, std::size_t iField,
                              std::string const& quantity);

/// A table of errors and observed orders for each field and quantity, and one of times and condition numbers.
std::vector<StudyTable> StudyTables(StudyQuestion const& question, std::vector<StudyLevel> const& levels);

/// Remarks such as "lsq on box:4,4,4: not run: ...", one per line, about what the tables cannot show.
std::vector<std::string> StudyRemarks(StudyQuestion const& question, std::vector<StudyLevel> const& levels);

void PrintTable(std::ostream& out, StudyTable const& table);
std::string MarkdownOf(StudyTable const& table);
std::string HtmlOf(StudyTable const& table);

/// All numbers. A number that is not finite becomes null.
nlohmann::ordered_json StudyAsJson(StudyQuestion const& question, std::vector<StudyLevel> const& levels);

}  // namespace zyngrad
