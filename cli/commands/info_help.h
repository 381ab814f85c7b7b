#pragma once

/// What `zyngrad info --help` prints.
namespace zyngrad::info_help {

inline constexpr char const* kSummary = "Show the size, boundaries, quality and partition of a mesh";

inline constexpr char const* kFooter =
    R"(Examples:
  zyngrad info channel.msh
  mpirun -n 4 zyngrad info box:40,40,40:tet:perturb=0.2,seed=1
  zyngrad info case/constant/polyMesh --group frontAndBack=wall)";

}  // namespace zyngrad::info_help
