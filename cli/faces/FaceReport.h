#pragma once

#include <algorithm>
#include <cstdint>
#include <iosfwd>
#include <nlohmann/json.hpp>
#include <string>

#include "cli/base/StencilSizes.h"
#include "cli/base/TextTable.h"
#include "cli/faces/FaceErrors.h"
#include "cli/faces/FaceRun.h"
#include "cli/options/InterpolationOptions.h"

namespace zyngrad {

/// What is known of one interpolation to faces, of all ranks.
struct FaceResults {
  FaceKind group = FaceKind::Inner;
  InterpolationSettings settings;
  StencilSizes stencils;
  FaceTimes times;
  FaceErrors errors;
  FaceRowCheck rows;
  std::string whyNotFinite;        ///< empty if all values are finite
  int placeDigits = kPlaceDigits;  ///< from PlaceDigits

  /// On boundary faces method 4 derives the slope along the normal only: the value rows are 0, and so is what
  /// they give.
  bool GivesNoValues() const { return settings.method == 4 && IsBoundary(group); }

  /// Faces with a weight or a value that is infinite or NaN.
  std::int64_t NotFiniteFaces() const { return std::max(rows.nNotFinite, errors.nNotFinite); }
};

/// The table of errors, or the line that there are no values by design, times and warnings. Only the first
/// rank's job.
void PrintFaceResults(std::ostream& out, FaceResults const& results);

/// The same numbers; what is not finite becomes null.
nlohmann::ordered_json FaceResultsAsJson(FaceResults const& results);

}  // namespace zyngrad
