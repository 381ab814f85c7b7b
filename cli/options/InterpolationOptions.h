#pragma once

#include <string>

#include "cli/options/InterpolationSettings.h"

namespace CLI {
class App;
}

namespace zyngrad {

/// The settings as texts from the command line.
struct InterpolationOptions {
  std::string method, span, number = "20";
};

/// Adds --search-method, --span and --search-number; `options` holds the defaults.
/// @param[in] methodHelp  describes each method
void AddInterpolationOptions(CLI::App& command, InterpolationOptions& options, std::string const& methodHelp);

/// Throws UsageError, which names the option.
InterpolationSettings ReadInterpolationOptions(InterpolationOptions const& options, int nMethods);

}  // namespace zyngrad
