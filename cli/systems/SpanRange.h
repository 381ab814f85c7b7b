#pragma once

#include <string>

namespace zyngrad {

/// Why no radial-basis system can be finite with this span, in words that follow "because"; empty if the span is not
/// the reason. The kernel divides by the support radius and its eighth power.
/// @param[in] length  the size of a stencil, which the span multiplies, L; its order of magnitude is enough
std::string SpanOutOfRange(double span, double length);

/// What to tell a user whose radial-basis results are not finite: the span if that is the reason, or else where to
/// look.
std::string WhyRadialBasisIsNotFinite(double span, double length);

}  // namespace zyngrad
