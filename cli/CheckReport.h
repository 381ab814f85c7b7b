#pragma once

#include <iosfwd>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cli/CheckSummary.h"

namespace zyngrad {

/// What was checked of one kind: the cells, the faces of a group, or points.
struct CheckResult {
  std::string kind;             ///< "cells", "inner faces", "points"
  std::string key;              ///< "cells", "faces", "points": in check.json
  std::uint32_t lookedFor = 0;  ///< sum of Finding: those that the table shows
  CheckSummary summary;
};

/// Counts, histogram and the worst ten. Only the first rank's job.
void PrintCheckResult(std::ostream& out, const CheckResult& result);

/// The last line: whether all numbers would be finite, else what would not.
void PrintVerdict(std::ostream& out, const std::vector<CheckResult>& results);

/// The same numbers; what is not finite becomes null.
nlohmann::ordered_json CheckResultAsJson(const CheckResult& result);

/// What would not be finite, a line each: "weights not finite: 2 cells".
std::vector<std::string> NotFiniteInWords(const std::vector<CheckResult>& results);

}  // namespace zyngrad
