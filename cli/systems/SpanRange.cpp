#include "cli/systems/SpanRange.h"

#include <cmath>

#include "cli/base/TextTable.h"
#include "cli/output/RunSettings.h"

namespace zyngrad {

std::string SpanOutOfRange(double span, double length) {
  constexpr double kHighestPower = 8.0;
  if (!std::isfinite(length) || !(length > 0.0)) return {};
  double const power = std::pow(span * length, kHighestPower);
  if (std::isnormal(power) && std::isnormal(1.0 / power)) return {};
  return "--span " + ShortestText(span) + " is too " + (power < 1.0 ? "small" : "large") +
         ": the support radius, that times a stencil's length of about " + Scientific(length, 2) +
         ", has an eighth power beyond the range of floating-point numbers";
}

std::string WhyRadialBasisIsNotFinite(double span, double length) {
  std::string const reason = SpanOutOfRange(span, length);
  return reason.empty() ? "zyngrad check shows which systems are singular, and where" : reason;
}

}  // namespace zyngrad
