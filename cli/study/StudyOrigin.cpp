#include "cli/study/StudyOrigin.h"

#include <sys/utsname.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fstream>

#include "cli/base/OneLine.h"
#include "cli/base/UsageError.h"

namespace zyngrad {
namespace {

/// "model name" of the first processor; where the system does not tell it, the kind of machine.
std::string ProcessorName() {
  std::ifstream in("/proc/cpuinfo");
  for (std::string line; std::getline(in, line);) {
    std::size_t const colon = line.find(": ");
    if (line.rfind("model name", 0) == 0 && colon != std::string::npos)
      return OneLine(line.substr(colon + 2));
  }
  utsname machine{};
  return uname(&machine) == 0 ? OneLine(machine.machine) : "unknown";
}

std::time_t TimeOfReport() {
  char const* const text = std::getenv("SOURCE_DATE_EPOCH");
  if (text == nullptr || *text == '\0') return std::time(nullptr);
  char* end = nullptr;
  errno = 0;
  long long const seconds = std::strtoll(text, &end, 10);
  constexpr long long kYear10000 = 253402300800;
  if (errno != 0 || *end != '\0' || seconds < 0 || seconds >= kYear10000)
    throw UsageError("SOURCE_DATE_EPOCH " + Quoted(text) + ": expected seconds since 1970");
  return static_cast<std::time_t>(seconds);
}

}  // namespace

std::string ShellArgument(std::string const& text) {
  constexpr char const* kPlain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_@%+=:,./-";
  if (!text.empty() && text.find_first_not_of(kPlain) == std::string::npos) return text;
  std::string quoted = "'";
  for (char const c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + '\'';
}

std::string CommandLine(std::vector<std::string> const& arguments, int nRanks) {
  std::string line = nRanks > 1 ? "mpirun -n " + std::to_string(nRanks) + " zyngrad" : "zyngrad";
  for (std::string const& argument : arguments) line += ' ' + ShellArgument(argument);
  return line;
}

std::string DateText(std::time_t seconds) {
  std::tm utc{};
  gmtime_r(&seconds, &utc);
  char text[sizeof "9999-12-31T23:59:59Z"];
  return std::string(text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc));
}

StudyOrigin OriginOfStudy(std::vector<std::string> const& arguments, int nRanks) {
  return {CommandLine(arguments, nRanks), DateText(TimeOfReport()), ProcessorName()};
}

}  // namespace zyngrad
