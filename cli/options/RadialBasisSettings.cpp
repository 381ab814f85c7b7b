#include "cli/options/RadialBasisSettings.h"

#include <charconv>
#include <cmath>
#include <system_error>

#include "cli/base/OneLine.h"
#include "cli/base/UsageError.h"
#include "cli/output/RunSettings.h"

namespace zyngrad {

double PositiveNumber(std::string const& option, std::string const& text) {
  double value = 0.0;
  char const* end = text.data() + text.size();
  auto const result = std::from_chars(text.data(), end, value);
  if (result.ec != std::errc() || result.ptr != end || !std::isfinite(value) || value <= 0.0)
    throw UsageError(option + ' ' + Quoted(text) + ": expected a number above 0");
  return value;
}

std::string SettingsFileText(RadialBasisSettings const& settings) {
  return "1001\n"
         "Span              = " +
         ShortestText(settings.span) +
         "\n"
         "Shape Normalize   = " +
         (settings.shapeNormalize ? "1" : "0") + "\n";
}

std::string WriteSettingsFile(std::string const& file, RadialBasisSettings const& settings) {
  return WriteSettingsText(file, SettingsFileText(settings));
}

}  // namespace zyngrad
