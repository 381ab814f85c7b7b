#pragma once

#include <ctime>
#include <string>
#include <vector>

namespace zyngrad {

/// Where the numbers of a study come from, for its reports.
struct StudyOrigin {
  std::string commandLine;  ///< to be pasted into a shell
  std::string date;         ///< of the beginning, UTC: "2026-11-22T18:05:41Z"
  std::string processor;    ///< its name
};

/// The program with its arguments, and mpirun in front of it if there are several ranks.
std::string CommandLine(std::vector<std::string> const& arguments, int nRanks);

/// The argument as a shell reads it back; in quotes only if it needs them.
std::string ShellArgument(std::string const& text);

/// ISO 8601, UTC.
std::string DateText(std::time_t seconds);

/// Not collective. Takes the date from SOURCE_DATE_EPOCH (seconds since 1970) if that is set, so that the same study
/// can give the same report, and otherwise from the clock. Throws UsageError if the variable is not a number.
StudyOrigin OriginOfStudy(std::vector<std::string> const& arguments, int nRanks);

}  // namespace zyngrad
