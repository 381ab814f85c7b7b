#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <nlohmann/json.hpp>
#include <vector>

#include "cli/base/StencilSizes.h"
#include "cli/base/TextTable.h"
#include "cli/options/InterpolationOptions.h"
#include "cli/points/PointErrors.h"
#include "cli/points/PointRun.h"
#include "cli/points/PointSet.h"
#include "cli/points/UsableCells.h"

namespace zyngrad {

/// What is known of one interpolation to points, on the first rank.
struct PointResults {
  PointSet points;
  std::vector<PointOwner> owners;
  PointRun run;
  ExactAtPoints exact;
  ErrorsAtPoints errors;
  std::vector<std::int32_t> flags;  ///< [point] sum of PointFlags

  InterpolationSettings settings;
  std::string whyNotFinite;        ///< empty if all values and gradients are finite
  int placeDigits = kPlaceDigits;  ///< from PlaceDigits
  double meanDistance = 0.0;       ///< between neighbour cells, L
  std::int64_t nUsableCells = 0;   ///< interior cells that values may come from
  std::int64_t nCells = 0;         ///< interior cells
};

/// Points with a weight, value or gradient that is infinite or NaN.
std::int64_t NotFinitePoints(PointResults const& results);

/// "far", "few" or "notfinite".
char const* NameOf(PointFlag flag);

/// The tables of errors and times, and the flagged points. Only the first rank's job.
void PrintPointResults(std::ostream& out, PointResults const& results);

/// The same numbers; what is not finite becomes null.
nlohmann::ordered_json PointResultsAsJson(PointResults const& results);

}  // namespace zyngrad
