#pragma once

/// What `zyngrad compare-ranks --help` prints.
namespace zyngrad::compare_ranks_help {

inline constexpr char const* kSummary = "Compare the results of every method between numbers of ranks";

inline constexpr char const* kRanks = "Numbers of ranks; all are compared with the first (default 1,2,4)";
inline constexpr char const* kField =
    "The field: linear, quadratic or trigonometric (default), as in zyngrad study, or a formula";
inline constexpr char const* kMethods =
    "Methods, separated by commas, named as in zyngrad study; gradients, faces, points: all methods of that "
    "kind (default all)";
inline constexpr char const* kSweeps = "Sweeps of the iterated method (default 3)";
inline constexpr char const* kSpan =
    "Support radius as a multiple of the stencil's length (default 500, for faces 1000)";

inline constexpr char const* kPromises =
    R"(The command simulates each number of ranks with as many threads, each of which owns a partition of the mesh,
divided as under mpirun. Start it alone; under mpirun, the first rank does all the work. Each number is run
twice, the second time with non-blocking exchange, and both runs must give the same bits. Between numbers of
ranks, a method's results may differ by a limit, its promise:
  Green-Gauss and least squares: by round-off, because the faces are added in another order. That is 1e-12 of
  the largest gradient, or more on flat cells, where round-off grows with area over volume and with the
  condition number of the cell's moments;
  radial basis: by round-off times the condition number of the cell's system;
  values at inner faces and at points: by about their error (ten times the largest one), because stencils
  beside a cut lack the cells that touch it only with a node, plus round-off times the condition number. The
  error of a field from a file is not known. Its promise is the largest step instead: the difference of a
  value at a face from the mean of its two cells, or at a point from its cell.
)";

/// Behind the paragraph on fields from files.
inline constexpr char const* kExamples = R"(
Each component of a vector is compared by itself.

The exit code is 1 if a method breaks its promise, could not be run, or gave results that are not finite.

Examples:
  zyngrad compare-ranks box:12,12,12:tet --ranks 1,2,4
  zyngrad compare-ranks channel.msh --ranks 1,3 --method gradients --field "sin(x)*y" --span 50
  zyngrad compare-ranks case --field-file 0.5/U --ranks 1,4 --method gradients)";

}  // namespace zyngrad::compare_ranks_help
