#pragma once

/// What `zyngrad info --help` prints.
namespace zyngrad::info_help {

inline constexpr char const* kSummary = "Show the size, cells, boundaries, quality and partition of a mesh";

inline constexpr char const* kFooter =
    R"(For each boundary, the last but one table shows its group and why it has it. docs/use/output.md describes the
aspect ratio and the keys of --json.

Examples:
  zyngrad info channel.msh
  mpirun -n 4 zyngrad info box:40,40,40:tet:perturb=0.2,seed=1
  zyngrad info case/constant/polyMesh --group "hole*=wall" --default-group outlet
  mpirun -n 64 zyngrad info wing.cgns --save-partition wing.parts
  zyngrad info channel.msh --json)";

}  // namespace zyngrad::info_help
