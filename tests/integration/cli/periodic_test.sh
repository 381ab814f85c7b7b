#!/usr/bin/env bash
# Meshes that continue beyond their boundary, as OpenFOAM and Gmsh write them, through the commands of the program.
#   periodic_test.sh ZYNGRAD_BINARY MPIRUN DATA_DIR
# shellcheck source=cli_test_support.sh
. "$(dirname "$0")/cli_test_support.sh"

cases=$data/openfoam_cases
gmsh=$data/gmsh
# 6 x 4 x 5 cells, periodic in x (length 1) and z (length 0.75), walls in y.
field='sin(6.28318530717958648*x)*cos(8.37758040957278197*z)+y*y'

refused() {  # refused NAME TEXT ARGS...: exit code 2 and one line with the text
  local name=$1 text=$2
  shift 2
  run 1 "$@"
  check "$name" exited 2
  check "$name: one line" test "$(wc -l <stderr)" = 1
  check "$name: tells why" contains stderr "$text"
}

# --- OpenFOAM, whole: 1, 2, 3 ranks ----------------------------------------------------------------------------------
run 1 info "$cases/channel"
check "info takes cyclic patches" exited 0
check "info tells the partner" contains stdout "periodic with 'right'"
check "info counts the faces of both periods" contains stdout "periodic"
for ranks in 1 2 3; do
  run $ranks gradient "$cases/channel" --field "$field" --method plain,lsq,iterated --output "g$ranks"
  check "gradient on $ranks ranks" exited 0
  check "gradient on $ranks ranks: 44 pairs of periodic faces" contains "g$ranks/gradient.json" '"periodic": 44'
  check "gradient on $ranks ranks writes a grid" grid_has "g$ranks/gradient.vtu" cell
  run $ranks check "$cases/channel"
  check "check on $ranks ranks" exited 0
  run $ranks faces "$cases/channel" --field "$field" --group partition --output "f$ranks"
  check "faces on $ranks ranks" exited 0
done
for k in 1 2 3; do
  for ranks in 2 3; do
    check "error norm $k on $ranks ranks" agree "$(result g1/gradient.json l2 "$k")" "$(result g$ranks/gradient.json l2 "$k")" 1e-9
  done
done
run 1 compare-ranks "$cases/channel" --field "$field" --ranks 2,3,4
check "compare-ranks agrees" exited 0
run 1 explain "$cases/channel" --cell 1
check "explain of a cell at the period" exited 0
printf 'x,y,z\n0.01,0.5,0.01\n0.99,0.5,0.74\n' >points.csv
for ranks in 1 2; do
  run $ranks points "$cases/channel" --field "$field" --points points.csv --output "p$ranks"
  check "points beside the period on $ranks ranks" exited 0
done
run 1 gradient "$cases/channel" --field y --method plain --group left=wall --output walls
check "a group makes boundaries of both sides" exited 0
check "a group leaves the other period" contains walls/gradient.json '"periodic": 24'

# --- OpenFOAM, decomposed: the very results of the whole mesh --------------------------------------------------------
run 2 gradient "$cases/channel_parts" --field "$field" --method plain,lsq,iterated --output parts2
check "cut cyclic patches on 2 ranks" exited 0
check "cut cyclic patches: all pairs" contains parts2/gradient.json '"periodic": 44'
run 3 gradient "$cases/channel_parts_3" --field "$field" --method plain,lsq,iterated --output parts3
check "cut cyclic patches on 3 ranks, binary" exited 0
run 3 gradient "$cases/channel_collated" --field "$field" --method plain,lsq,iterated --output collated
check "cut cyclic patches on 3 ranks, collated" exited 0
for k in 1 2 3; do
  for result in parts2 parts3 collated; do
    check "$result: error norm $k" agree "$(result g1/gradient.json l2 "$k")" "$(result $result/gradient.json l2 "$k")" 1e-9
  done
done
run 2 gradient "$cases/channel_parts" --field y --method plain --group left=wall --output walls2
check "a group makes boundaries of cut patches" exited 0
check "a group makes boundaries of cut patches: the other period stays" contains walls2/gradient.json '"periodic": 24'
run 2 gradient "$cases/channel_parts" --field-file 0.1/p --method plain --output file2
check "a field of a case with cut cyclic patches" exited 0
run 1 gradient "$cases/channel" --field-file 0.1/p --method plain --output file1
check "the same field of the whole case" exited 0
check "both have the same largest slope" agree "$(result file1/gradient.json max 1)" "$(result file2/gradient.json max 1)" 1e-9

# --- rotations are refused -------------------------------------------------------------------------------------------
refused "a sector of OpenFOAM" "cyclic patch 'first' is rotational; only translations can be joined, --group 'first=wall'" info "$cases/sector"
refused "a sector of Gmsh" "is rotational; only translations can be joined, --group 'first=wall'" info "$gmsh/sector_41.msh"
run 1 gradient "$cases/sector" --field x --method plain --group first=wall --output sector
check "a sector with walls" exited 0

# --- Gmsh ------------------------------------------------------------------------------------------------------------
wave='sin(3.14159265358979324*x)+cos(6.28318530717958648*y)'
for mesh in box_41 box_22 box_41_binary box_22_binary box_parts_41 box_parts_41_binary box_parts_22; do
  run 1 gradient "$gmsh/$mesh.msh" --field "$wave" --method plain --output "$mesh"
  check "$mesh" exited 0
  check "$mesh: the same error" agree "$(result box_41/gradient.json l2 1)" "$(result "$mesh/gradient.json" l2 1)" 1e-12
done
run 3 gradient "$gmsh/box_parts_41.msh" --field "$wave" --method plain --output box3
check "box on 3 ranks" agree "$(result box_41/gradient.json l2 1)" "$(result box3/gradient.json l2 1)" 1e-9
run 1 info "$gmsh/named_41.msh"
check "names win over \$Periodic" exited 0
check "names win over \$Periodic: no period" test "$(grep -c 'periodic' stdout)" = 0
refused "one file of several" "only partition 1 of 2 is in this file" info "$gmsh/box_split_41_1.msh"

check "no parts of files are left" no_parts_left
finish
