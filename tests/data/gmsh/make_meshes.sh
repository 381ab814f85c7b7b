#!/usr/bin/env bash
# Makes the meshes of this folder again, with Gmsh 4.8 (Debian 12): ./make_meshes.sh
set -eu
cd "$(dirname "$0")"

mesh() {  # mesh GEO OUTPUT OPTIONS...
  local geo=$1 output=$2
  shift 2
  gmsh -3 -v 1 "$geo.geo" -o "$output" "$@" 2>/dev/null
}

mesh box box_41.msh -format msh41
mesh box box_22.msh -format msh22
mesh box box_41_binary.msh -format msh41 -bin
mesh box box_22_binary.msh -format msh22 -bin
mesh box box_parts_41.msh -format msh41 -part 3
mesh box box_parts_41_binary.msh -format msh41 -bin -part 3
mesh box box_ghosts_41.msh -format msh41 -part 3 -part_ghosts
mesh box box_parts_22.msh -format msh22 -part 3
mesh box box_split_41.msh -format msh41 -part 2 -part_split
mesh box box_split_22.msh -format msh22 -part 2 -part_split
rm box_split_22_1.msh box_split_41_2.msh
mesh named named_41.msh -format msh41
mesh sector sector_41.msh -format msh41
