#pragma once

/// What `zyngrad faces --help` prints.
namespace zyngrad::faces_help {

inline constexpr char const* kSummary = "Interpolate fields to faces; for a formula, with errors";

inline constexpr char const* kGroup = "The faces: ";  ///< stands before the names of the groups
inline constexpr char const* kGroupOfBoundary =
    ".\nWith \"=\": the group of a boundary whose name does not tell it";
inline constexpr char const* kField = "The field, as a formula";
inline constexpr char const* kDebugReport = "Let the operator write its accuracy report to the log";

inline constexpr char const* kSearchMethods = R"(
  1: all cells of the first box that contains enough of them
  2: the nearest cells of that box
  3: the face's two cells and all cells around its nodes
  4: cells around two points on the face's normal; no values on boundary faces)";

inline constexpr char const* kFields =
    R"(EXPR is a formula in x, y and z, as for zyngrad gradient. The field takes its values at cell centres and,
on the boundary, at face centres. The interpolated values are compared with the formula at face centres. A
partition face gets its value at the centre of the cell beyond it and is compared with the formula there.
)";

/// Behind the paragraph on fields from files.
inline constexpr char const* kOutput = R"(
Give --group once without "=" to choose the faces, and as often as needed as NAME=GROUP to assign a boundary
to a group.

The exit code is 1 if some values are not finite. The last line then gives their number and the reason.

The output folder receives faces.json (the numbers of the tables), faces.vtp (or faces.pvtp and its
pieces; for several times faces_TIME.vtp and faces.pvd), log.rankN.txt (what the operator prints) and settings.rankN.rbf (its settings).

Examples:
  zyngrad faces channel.msh --field "sin(x)*y + z^2" --group inner
  zyngrad faces box:20,20,20:tet --field "x^2" --group wall --search-method 3 -o walls
  zyngrad faces case --field-file U --time latest --group inner --search-method 2
  mpirun -n 2 zyngrad faces case/constant/polyMesh --field x --group inner --group frontAndBack=wall)";

}  // namespace zyngrad::faces_help
