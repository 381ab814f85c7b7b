#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace zyngrad {

/// The settings of the operators that interpolate to faces and to points.
struct InterpolationSettings {
  int method = 0;             ///< how stencils are found, from 1
  double span = 0.0;          ///< support radius as a multiple of the stencil's length
  int number = 20;            ///< cells wanted in a stencil, methods 1 and 2
  double distance = 0.0;      ///< L; the operators store it and do not use it
  bool printsReport = false;  ///< the operator for faces prints its accuracy report
};

/// The six lines that the operator for faces reads.
std::string FaceSettingsText(InterpolationSettings const& settings);

/// The five lines that the operator for points reads.
std::string PointSettingsText(InterpolationSettings const& settings);

/// The settings for results files.
nlohmann::ordered_json InterpolationSettingsAsJson(InterpolationSettings const& settings);

}  // namespace zyngrad
