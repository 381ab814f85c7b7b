#pragma once

/// What `zyngrad points --help` prints.
namespace zyngrad::points_help {

inline constexpr char const* kSummary =
    "Sample fields and their gradients at points or on the surface of a body";

inline constexpr char const* kField = "The field, as a formula; errors are measured against it";
inline constexpr char const* kPoints = "The points, as a table with columns x, y and z";
inline constexpr char const* kBody = "A body in the mesh, as a formula that is negative inside";
inline constexpr char const* kBodyFile = "A body in the mesh, by its surface in an STL file, text or binary";
inline constexpr char const* kSpacing =
    "Merge points of the body's surface that are closer together than this";

inline constexpr char const* kSearchMethods = R"(
  1: all usable cells of the first cube that contains enough of them
  2: the nearest cells of that cube
  3: the nearest one or two cells and all usable cells around their nodes)";

inline constexpr char const* kFooter =
    R"(With --field-file, the fields of a case are sampled, at one time or several (--time). With --field, EXPR is a
formula in x, y and z, as for zyngrad gradient.

FILE.csv has a header and one row per point. It has columns x, y and z; all other columns are copied to the
output.

The formula of --body is negative inside the body, for example "x^2+y^2+z^2-0.25"; only cells with their
centre outside the body contribute values. Without --points, the points are those of the body's surface: the
corners of the triangles in FILE.stl, or where the surface of the formula crosses the edges of tetrahedra into
which the program divides the cells. They come with triangles, normals and slopes along the normal.

Points in flat cells are a weakness of search method 2; the program warns of them. Points outside the mesh,
far from all cells or with few cells are flagged.

The exit code is 1 if some values or gradients are not finite. The last line then gives their number and the
reason.

The output folder receives points.json (the numbers of the tables), points.csv and points.vtp (value and
gradient at each point, in the order of the points; with --field the exact ones and the errors; on a body
triangles), log.rankN.txt (what the operator prints) and settings.rankN.rbf (its settings). With several times,
points.csv has one row for each point and time, and points.pvd opens points_TIME.vtp as a series.

Examples:
  zyngrad points cavity --field-file U --field-file p --time latest --points probes.csv
  zyngrad points tunnel --field-file 500/p --body-file car.stl
  zyngrad points channel.msh --field "sin(x)*y + z^2" --points probes.csv
  zyngrad points box:20,20,20:tet --field x --body "(x-0.5)^2+(y-0.5)^2+(z-0.5)^2-0.1" --spacing 0.02
  mpirun -n 2 zyngrad points channel.msh --field "x*y" --points probes.csv --body "x^2+y^2+z^2-0.25")";

}  // namespace zyngrad::points_help
