#pragma once

/// What `zyngrad explain --help` prints.
namespace zyngrad::explain_help {

inline constexpr char const* kSummary =
    "Show the radial-basis stencil, weights and condition number of one cell";

inline constexpr char const* kCell = "Number of the cell in the mesh, counted from 1";
inline constexpr char const* kSpan = "Support radius as a multiple of the stencil's length (default 500)";
inline constexpr char const* kShapeNormalize = "Scale each axis by the stencil's extent";

inline constexpr char const* kFooter =
    R"(The points, lengths and weights are those of the method rbf of zyngrad gradient. Each row of weights sums to
zero up to rounding. The condition number is estimated from the factors of the cell's system.

Examples:
  zyngrad explain box:9,9,9 --cell 365
  zyngrad explain channel.msh --cell 1 --span 5 --group sides=wall)";

}  // namespace zyngrad::explain_help
