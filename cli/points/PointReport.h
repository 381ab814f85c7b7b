#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "cli/base/StencilSizes.h"
#include "cli/base/TextTable.h"
#include "cli/options/InterpolationSettings.h"
#include "cli/points/PointErrors.h"
#include "cli/points/PointRun.h"
#include "cli/points/PointSet.h"
#include "cli/points/PointSurface.h"
#include "cli/points/UsableCells.h"

namespace zyngrad {

/// A field from a file at the points.
struct FieldAtPoints {
  std::string name;                          ///< "p", "U"
  std::vector<std::vector<PointValues>> at;  ///< [time][component], one component or three; without stencils
};

/// "p", or "U_x" for a component of a vector.
std::string ComponentName(FieldAtPoints const& field, std::size_t component);

/// The results of one interpolation to points, on the first rank. Either the field is a formula, and `exact` and
/// `errors` compare it with `run.values`, or there are `fields` from files.
struct PointResults {
  PointSet points;
  std::vector<PointOwner> owners;
  PointRun run;  ///< stencils and times; the values of the formula
  ExactAtPoints exact;
  ErrorsAtPoints errors;
  std::vector<std::int32_t> flags;    ///< [point] sum of PointFlags
  std::vector<FieldAtPoints> fields;  ///< empty if the field is a formula
  std::vector<std::string> times;     ///< of the fields; one without a name if none was chosen
  SurfaceNormals normals;             ///< of a body's surface
  std::vector<double> aspectRatios;   ///< [point] as AspectRatiosAt returns them; may be empty
  std::vector<std::string> remarks;   ///< sentences about fields and body, printed as warnings

  bool HasSurface() const { return !points.triangles.empty(); }

  InterpolationSettings settings;
  bool isMethodChosen = true;      ///< by the user, with --search-method
  std::string whyNotFinite;        ///< empty if all values and gradients are finite
  int placeDigits = kPlaceDigits;  ///< from PlaceDigits
  double meanDistance = 0.0;       ///< mean distance between neighbouring cells, L
  std::int64_t nUsableCells = 0;   ///< interior cells that may contribute values
  std::int64_t nCells = 0;         ///< interior cells
};

/// Number of points with a weight, value or gradient that is infinite or NaN.
std::int64_t NotFinitePoints(PointResults const& results);

/// "far", "few", "notfinite" or "outside".
char const* NameOf(PointFlag flag);

/// The warning about points in flat cells, where search method 2 is inaccurate; empty if there is nothing to warn of.
std::string FlatCellWarning(PointResults const& results);

/// Prints the tables of errors, or of the range of each field, of a surface and of times, and the flagged points. For the first rank only.
void PrintPointResults(std::ostream& out, PointResults const& results);

/// The same numbers. A number that is not finite becomes null.
nlohmann::ordered_json PointResultsAsJson(PointResults const& results);

}  // namespace zyngrad
