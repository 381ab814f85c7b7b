#pragma once

#include <algorithm>
#include <cstdint>
#include <iosfwd>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "cli/base/StencilSizes.h"
#include "cli/base/TextTable.h"
#include "cli/faces/FaceErrors.h"
#include "cli/faces/FaceRun.h"
#include "cli/field/FieldFiles.h"
#include "cli/options/InterpolationSettings.h"

namespace zyngrad {

/// The interpolated values of a scalar, or of one component of a vector, from a file: their own sizes, because the exact
/// values are not known.
struct FaceSizes {
  std::string name;  ///< "p", or "U.x" of a vector
  FaceErrors norms;
  double lowest = 0.0, highest = 0.0;  ///< U
};

/// What one time of fields from files gave.
struct FaceTime {
  std::string name;               ///< empty if the run has no times
  std::vector<FileField> fields;  ///< names and boundary values, without values
  std::vector<FaceSizes> values;
};

/// The results of one interpolation to faces, over all ranks.
struct FaceResults {
  FaceKind group = FaceKind::Inner;
  InterpolationSettings settings;
  StencilSizes stencils;
  FaceTimes times;
  FaceErrors errors;                ///< of a formula
  std::vector<FaceTime> fromFiles;  ///< in place of errors; empty for a formula
  FaceRowCheck rows;
  std::string whyNotFinite;        ///< empty if all values are finite
  int placeDigits = kPlaceDigits;  ///< from PlaceDigits

  /// On boundary faces method 4 derives only the slope along the normal: the weights of the value are 0, and so
  /// are the values.
  bool GivesNoValues() const { return settings.method == 4 && IsBoundary(group); }

  /// Faces with a weight or a value that is infinite or NaN.
  std::int64_t NotFiniteFaces() const {
    std::int64_t most = std::max(rows.nNotFinite, errors.nNotFinite);
    for (FaceTime const& time : fromFiles)
      for (FaceSizes const& one : time.values) most = std::max(most, one.norms.nNotFinite);
    return most;
  }

  std::int64_t NumberOfFaces() const {
    return fromFiles.empty() ? errors.nFaces : fromFiles.front().values.front().norms.nFaces;
  }
};

/// Prints the table of errors (or a line saying that there are no values by design), the times and the warnings.
/// For the first rank only.
void PrintFaceResults(std::ostream& out, FaceResults const& results);

/// The same numbers. A number that is not finite becomes null.
nlohmann::ordered_json FaceResultsAsJson(FaceResults const& results);

}  // namespace zyngrad
