#pragma once

#include <string>

namespace zyngrad {

/// What the radial-basis operator can be told. It reads it from a file beside the run's base file name.
struct RadialBasisSettings {
  double span = 500.0;          ///< support radius over the stencil's length
  bool shapeNormalize = false;  ///< the shape-normalised form of the kernel
};

/// A finite number above zero, as --span takes it; throws UsageError that names the option.
double PositiveNumber(std::string const& option, std::string const& text);

/// The three lines of the settings file. `span` is written with as many digits as it takes to read back the
/// same number.
std::string SettingsFileText(RadialBasisSettings const& settings);

/// Writes the settings to `file`, which ends in ".rbf".
/// @return the base file name that makes the operator read this file
/// Throws UsageError when that fails or when the name is too long for the operator.
std::string WriteSettingsFile(std::string const& file, RadialBasisSettings const& settings);

}  // namespace zyngrad
