#pragma once

#include <algorithm>
#include <cstdint>
#include <iosfwd>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "cli/base/StencilSizes.h"
#include "cli/base/TextTable.h"
#include "cli/faces/FaceErrors.h"
#include "cli/faces/FaceRun.h"
#include "cli/options/InterpolationSettings.h"

namespace zyngrad {

/// The results of one interpolation to faces, over all ranks.
struct FaceResults {
  FaceKind group = FaceKind::Inner;
  InterpolationSettings settings;
  StencilSizes stencils;
  FaceTimes times;
  FaceErrors errors;
  FaceRowCheck rows;
  std::string whyNotFinite;        ///< empty if all values are finite
  int placeDigits = kPlaceDigits;  ///< from PlaceDigits

  /// On boundary faces method 4 derives only the slope along the normal: the weights of the value are 0, and so
  /// are the values.
  bool GivesNoValues() const { return settings.method == 4 && IsBoundary(group); }

  /// Faces with a weight or a value that is infinite or NaN.
  std::int64_t NotFiniteFaces() const { return std::max(rows.nNotFinite, errors.nNotFinite); }
};

/// Prints the table of errors (or a line saying that there are no values by design), the times and the warnings.
/// For the first rank only.
void PrintFaceResults(std::ostream& out, FaceResults const& results);

/// The same numbers. A number that is not finite becomes null.
nlohmann::ordered_json FaceResultsAsJson(FaceResults const& results);

}  // namespace zyngrad
