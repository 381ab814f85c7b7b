#include "cli/RadialBasisSettings.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "cli/OneLine.h"
#include "cli/UsageError.h"

namespace zyngrad {
namespace {

constexpr std::size_t kLongestName = 1023;  // the operator cuts what is longer, and would read another file
constexpr std::size_t kExtensionLength = 4;

/// The shortest text that reads back as the same number; 500 is "500".
std::string Shortest(double value) {
  char buffer[32];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  return {buffer, result.ptr};
}

}  // namespace

double PositiveNumber(const std::string& option, const std::string& text) {
  double value = 0.0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  if (result.ec != std::errc() || result.ptr != end || !std::isfinite(value) || value <= 0.0)
    throw UsageError(option + ' ' + Quoted(text) + ": expected a number above 0");
  return value;
}

std::string SettingsFileText(const RadialBasisSettings& settings) {
  return "1001\n"
         "Span              = " +
         Shortest(settings.span) +
         "\n"
         "Shape Normalize   = " +
         (settings.shapeNormalize ? "1" : "0") + "\n";
}

std::string WriteSettingsFile(const std::string& file, const RadialBasisSettings& settings) {
  if (file.size() > kLongestName) {
    throw UsageError("the name of the settings file " + Quoted(file) + " is longer than " +
                     std::to_string(kLongestName) + " characters");
  }
  // What an interrupted run left there may be a link to somewhere else.
  std::error_code ignored;
  std::filesystem::remove(file, ignored);
  std::ofstream out(file, std::ios::trunc);
  out << SettingsFileText(settings) << std::flush;
  if (!out) throw UsageError("cannot write " + Quoted(file) + ": " + std::strerror(errno));
  // The operator puts ".rbf" in the place of the last four characters, whatever they are.
  return file.substr(0, file.size() - kExtensionLength) + ".dat";
}

}  // namespace zyngrad
