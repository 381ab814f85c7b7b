#pragma once

#include <string>

namespace zyngrad {

/// The settings of the radial-basis gradient, which it reads from a file beside the run's base file name.
struct RadialBasisSettings {
  double span = 500.0;          ///< support radius as a multiple of the stencil's length
  bool shapeNormalize = false;  ///< the shape-normalised form of the kernel
};

/// The three lines of the settings file. `span` is written with as many digits as are needed to read back the same
/// number.
std::string SettingsFileText(RadialBasisSettings const& settings);

}  // namespace zyngrad
