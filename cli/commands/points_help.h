#pragma once

/// What `zyngrad points --help` prints.
namespace zyngrad::points_help {

inline constexpr char const* kSummary =
    "Interpolate a formula's field and its gradient to points and measure the errors";

inline constexpr char const* kField = "The field, as a formula";
inline constexpr char const* kPoints = "The points, as a table with columns x, y and z";
inline constexpr char const* kBody = "A body in the mesh, as a formula that is negative inside";
inline constexpr char const* kSpacing =
    "Merge points of the body's surface that are closer together than this";

inline constexpr char const* kSearchMethods = R"(
  1: all usable cells of the first cube that contains enough of them
  2: the nearest cells of that cube
  3: the nearest one or two cells and all usable cells around their nodes)";

inline constexpr char const* kFooter =
    R"(EXPR is a formula in x, y and z, as for zyngrad gradient. The formula of --body is negative inside the body,
for example "x^2+y^2+z^2-0.25"; only cells with their centre outside the body contribute values. Without
--points, the program divides the cells into tetrahedra and places a point wherever the body's surface
crosses one of their edges.

FILE.csv has a header and one row per point. It has columns x, y and z; all other columns are copied to the
output.

The exit code is 1 if some values or gradients are not finite. The last line then gives their number and the
reason.

The output folder receives points.json (the numbers of the tables), points.csv and points.vtp (value,
gradient, exact value and gradient, and errors at each point, in the order of the points), log.rankN.txt
(what the operator prints) and settings.rankN.rbf (its settings).

Examples:
  zyngrad points channel.msh --field "sin(x)*y + z^2" --points probes.csv
  zyngrad points box:20,20,20:tet --field x --body "(x-0.5)^2+(y-0.5)^2+(z-0.5)^2-0.1" --spacing 0.02
  mpirun -n 2 zyngrad points channel.msh --field "x*y" --points probes.csv --body "x^2+y^2+z^2-0.25")";

}  // namespace zyngrad::points_help
