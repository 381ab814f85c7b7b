#pragma once

/// What `zyngrad check --help` prints.
namespace zyngrad::check_help {

inline constexpr char const* kSummary =
    "Check what a mesh does to each method: condition numbers, faults, worst places";

inline constexpr char const* kMethods = "Gradient methods, separated by commas (default all): ";
inline constexpr char const* kSpan =
    "Support radius as a multiple of the stencil's length (default 500, for faces 1000)";
inline constexpr char const* kShapeNormalize = "rbf scales each axis by the stencil's extent";
inline constexpr char const* kFaceMethod = "Search method for faces, 1 to 4 (default 4)";
inline constexpr char const* kPointMethod = "Search method for points, 1 to 3 (default 3)";
inline constexpr char const* kSearchNumber =
    "Number of cells wanted in a stencil, search methods 1 and 2 (default 20)";
inline constexpr char const* kGroupFaces = "Check interpolation to these faces as well: ";
inline constexpr char const* kPoints = "Check interpolation to these points as well";
inline constexpr char const* kBody =
    "A body in the mesh, negative inside; without --points, check points on its surface";

inline constexpr char const* kFooter =
    R"(The check looks at every cell before you trust a run: its shape, the system that the radial-basis gradient
solves for it, the pivots of least squares, and whether the other gradients are finite. With --group-faces,
--points or --body it also looks at the systems of faces and points. docs/use/check.md explains each line and
what to do about it.

The exit code is 0 if all results would be finite and none is marked wrong, and 1 otherwise; the last lines
give the counts. It is 2 for wrong input.

The output folder receives check.json (the numbers of the tables), check.vtu (or check.pvtu and its pieces)
with the measures of each cell, and log.rankN.txt (what the operators print).

Examples:
  zyngrad check channel.msh
  zyngrad check box:20,20,20:tet:perturb=0.2 --method lsq,rbf --span 50 -o before
  mpirun -n 2 zyngrad check case/constant/polyMesh --group-faces inner --points probes.csv)";

}  // namespace zyngrad::check_help
