#pragma once

#include <iosfwd>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "cli/base/TextTable.h"
#include "cli/check/CheckFindings.h"
#include "cli/check/CheckSummary.h"

namespace zyngrad {

/// What was checked of one kind: the cells, the faces of a group, or points.
struct CheckResult {
  std::string kind;             ///< "cells", "inner faces", "points"
  std::string key;              ///< "cells", "faces", "points": in check.json
  std::uint32_t lookedFor = 0;  ///< sum of Finding: what the table shows
  CheckSummary summary;
  int placeDigits = kPlaceDigits;  ///< from PlaceDigits
};

/// Prints counts, histogram and the ten worst systems. For the first rank only.
void PrintCheckResult(std::ostream& out, CheckResult const& result);

/// Prints the last lines: how many results would not be finite or would be wrong, and the findings that say so.
void PrintVerdict(std::ostream& out, std::vector<CheckResult> const& results);

/// Whether no result would be wrong or not finite.
bool AreSound(std::vector<CheckResult> const& results);

/// The same numbers. A number that is not finite becomes null.
nlohmann::ordered_json CheckResultAsJson(CheckResult const& result);

/// The findings of that severity, one line each: "weights not finite: 2 of 8 cells". A system may be in several.
std::vector<std::string> FoundInWords(std::vector<CheckResult> const& results, Severity severity);

}  // namespace zyngrad
