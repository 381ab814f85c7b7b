#pragma once

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>
#include <string>

namespace zyngrad {

/// What the operators that interpolate to faces and to points can be told.
struct InterpolationSettings {
  int method = 0;             ///< how stencils are found, 1 and up
  double span = 0.0;          ///< support radius over the stencil's length
  int number = 20;            ///< wanted size of a stencil, methods 1 and 2
  double distance = 0.0;      ///< L; the operators keep it and use it for nothing
  bool printsReport = false;  ///< the operator for faces prints its accuracy report
};

/// The six lines that the operator for faces reads.
std::string FaceSettingsText(InterpolationSettings const& settings);

/// The five lines that the operator for points reads.
std::string PointSettingsText(InterpolationSettings const& settings);

/// The settings as they come from the command line.
struct InterpolationOptions {
  std::string method, span, number = "20";
};

/// Adds --search-method, --span and --search-number; `options` holds the defaults.
/// @param[in] methodHelp  describes each method
void AddInterpolationOptions(CLI::App& command, InterpolationOptions& options, std::string const& methodHelp);

/// Throws UsageError that names the option.
InterpolationSettings ReadInterpolationOptions(InterpolationOptions const& options, int nMethods);

/// The question, for results files.
nlohmann::ordered_json InterpolationSettingsAsJson(InterpolationSettings const& settings);

}  // namespace zyngrad
