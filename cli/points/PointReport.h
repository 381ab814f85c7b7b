#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <nlohmann/json_fwd.hpp>
#include <vector>

#include "cli/base/StencilSizes.h"
#include "cli/base/TextTable.h"
#include "cli/options/InterpolationSettings.h"
#include "cli/points/PointErrors.h"
#include "cli/points/PointRun.h"
#include "cli/points/PointSet.h"
#include "cli/points/UsableCells.h"

namespace zyngrad {

/// The results of one interpolation to points, on the first rank.
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
  double meanDistance = 0.0;       ///< mean distance between neighbouring cells, L
  std::int64_t nUsableCells = 0;   ///< interior cells that may contribute values
  std::int64_t nCells = 0;         ///< interior cells
};

/// Number of points with a weight, value or gradient that is infinite or NaN.
std::int64_t NotFinitePoints(PointResults const& results);

/// "far", "few" or "notfinite".
char const* NameOf(PointFlag flag);

/// Prints the tables of errors and times, and the flagged points. For the first rank only.
void PrintPointResults(std::ostream& out, PointResults const& results);

/// The same numbers. A number that is not finite becomes null.
nlohmann::ordered_json PointResultsAsJson(PointResults const& results);

}  // namespace zyngrad
