#include "cli/options/InterpolationOptions.h"

#include "cli/base/OneLine.h"
#include "cli/base/TextTable.h"
#include "cli/base/UsageError.h"
#include "cli/options/MeshOptions.h"
#include "cli/options/RadialBasisSettings.h"
#include "cli/output/RunSettings.h"

namespace zyngrad {
namespace {

/// The lines that both operators read; lines count by their place, the keys are for people.
std::string CommonText(InterpolationSettings const& settings) {
  return "Span              = " + ShortestText(settings.span) +
         "\niSearch_method    = " + std::to_string(settings.method) +
         "\nSearch_distance   = " + Fixed(settings.distance, 6) +
         "\nSearch_number     = " + std::to_string(settings.number) + '\n';
}

}  // namespace

std::string FaceSettingsText(InterpolationSettings const& settings) {
  return "1004\n" + CommonText(settings) + "Debug mode        = " + (settings.printsReport ? "1" : "0") +
         '\n';
}

std::string PointSettingsText(InterpolationSettings const& settings) {
  return "1002\n" + CommonText(settings);
}

void AddInterpolationOptions(CLI::App& command, InterpolationOptions& options,
                             std::string const& methodHelp) {
  command
      .add_option("--search-method", options.method,
                  "How stencils are found (default " + options.method + "):" + methodHelp)
      ->type_name("N");
  command
      .add_option("--span", options.span,
                  "Support radius over the stencil's length (default " + options.span + ")")
      ->type_name("S");
  command
      .add_option("--search-number", options.number,
                  "Cells wanted in a stencil, methods 1 and 2 (default " + options.number + ")")
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

nlohmann::ordered_json InterpolationSettingsAsJson(InterpolationSettings const& settings) {
  return {{"searchMethod", settings.method}, {"span", settings.span}, {"searchNumber", settings.number}};
}

}  // namespace zyngrad
