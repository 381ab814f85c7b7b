#include "cli/options/InterpolationOptions.h"

#include <CLI/CLI.hpp>

#include "cli/base/OneLine.h"
#include "cli/base/UsageError.h"
#include "cli/options/OptionValue.h"

namespace zyngrad {

void AddInterpolationOptions(CLI::App& command, InterpolationOptions& options,
                             std::string const& methodHelp) {
  command
      .add_option("--search-method", options.method,
                  "How to find stencils (default " + options.method + "):" + methodHelp)
      ->type_name("N");
  command
      .add_option("--span", options.span,
                  "Support radius as a multiple of the stencil's length (default " + options.span + ")")
      ->type_name("S");
  command
      .add_option(
          "--search-number", options.number,
          "Number of cells wanted in a stencil, search methods 1 and 2 (default " + options.number + ")")
      ->type_name("N");
}

InterpolationSettings ReadInterpolationOptions(InterpolationOptions const& options, int nMethods) {
  InterpolationSettings settings;
  settings.method = WholeNumber("--search-method", options.method, 1);
  if (settings.method > nMethods) {
    throw UsageError("--search-method " + Quoted(options.method) + ": expected 1 to " +
                     std::to_string(nMethods));
  }
  settings.span = PositiveNumber("--span", options.span);
  settings.number = WholeNumber("--search-number", options.number, 1);
  return settings;
}

}  // namespace zyngrad
