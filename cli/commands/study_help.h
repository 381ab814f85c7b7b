#pragma once

/// What `zyngrad study --help` prints.
namespace zyngrad::study_help {

inline constexpr char const* kSummary =
    "Measure errors, orders, times and condition numbers under mesh refinement";

inline constexpr char const* kMesh = "Meshes of one domain, as for the other commands";
inline constexpr char const* kSeries = "Refine a box, or one of these series:";
inline constexpr char const* kLevels = "Number of meshes in the series (default 4)";
inline constexpr char const* kMethods = "Methods, separated by commas (default gradients):";
inline constexpr char const* kAllOfAKind = "\n  gradients, faces, points, all: all methods of that kind";
inline constexpr char const* kField =
    "The field; may be repeated (default trigonometric). A formula, or one of";
inline constexpr char const* kSpan =
    "Support radii as multiples of the stencil's length, separated by commas (default 500, for faces 1000)";
inline constexpr char const* kSweeps =
    "Numbers of sweeps of the iterated method, separated by commas (default 3)";
inline constexpr char const* kWeight = "Coefficient of the weighted method, as a formula (default 1)";
inline constexpr char const* kSearchNumber =
    "Number of cells wanted in a stencil by faces1, faces2, points1 and points2 (default 20)";

inline constexpr char const* kFooter =
    R"(Give either --series, which doubles the number of cells in every direction from mesh to mesh, or the meshes
themselves, which the study sorts from coarse to fine. An order is shown where the spacing, the cube root of
the mean cell volume, falls by 1 % or more.

The error of a gradient is the Euclidean length of the difference, measured in all cells; values on faces are
measured at inner faces. Points lie half-way between a cell's centre and one of its nodes, in 2000 to 4000
evenly distributed cells, or in all cells of a smaller mesh. Results at the boundary are shown separately:
cells with a boundary face, the faces of such cells, and the points in them. Condition numbers are estimates
for at most 2000 systems on each rank.

The exit code is 1 if a method could not be run on a mesh or gave results that are not finite. The last lines
then give the method and the reason.

The output folder receives study.json (all numbers), report.html (tables and plots on one page that needs no
network), each plot as an .svg, study.md (the tables) and log.rankN.txt (what the operators print).

Examples:
  zyngrad study --series tet --method plain,iterated,lsq,rbf -o study-tet
  zyngrad study --series box:8,8,8:prism --levels 3 --field linear --field "x^2*y"
  zyngrad study --series hex --levels 2 --method rbf --span 5,20,100,500,2000 --field linear
  zyngrad study --series tet --method iterated --sweeps 1,2,3,5,10
  zyngrad study coarse.msh middle.msh fine.msh --method all)";

}  // namespace zyngrad::study_help
