#!/usr/bin/env bash
# zyngrad on the formats in which OpenFOAM writes a case: whatever the format, the results are the same bits.
#   formats_test.sh ZYNGRAD_BINARY MPIRUN DATA_DIR
# shellcheck source=cli_test_support.sh
. "$(dirname "${BASH_SOURCE[0]}")/cli_test_support.sh"
cp -r "$data/openfoam_cases" cases

fields=(--field-file 0.4/p --field-file 0.4/U --method lsq --group frontAndBack=wall)
gradient() { run "$1" gradient "cases/$2" "${fields[@]}" -o "out_$2"; }
same_results() { diff -rq "out_$1/gradient" "out_$2/gradient" >stdout 2>&1; }

# --- whole cases -----------------------------------------------------------------------------------------------------
run 1 gradient cases/cavity "${fields[@]}" -o out_cavity
check "a case in text" exited 0
for format in binary gz binary_gz; do
  gradient 1 cavity_$format
  check "the same case, $format" exited 0
  check "has the same results" cmp -s out_cavity/gradient.vtu out_cavity_$format/gradient.vtu
done

# --- decomposed cases: each rank reads its piece -----------------------------------------------------------------------
gradient 3 cavity_parts_binary_gz
check "a decomposed case, binary and compressed" exited 0
gradient 3 cavity_collated
check "a collated case" exited 0
check "has the same results" same_results cavity_parts_binary_gz cavity_collated
gradient 2 cavity_parts
check "a decomposed case in text" exited 0
gradient 2 cavity_collated_text
check "a collated case in text" exited 0
check "has the same results" same_results cavity_parts cavity_collated_text

# The same pieces in a folder for each group of processors.
mkdir -p cases/groups
cp -r cases/cavity_collated_text/processors2 cases/groups/processors2_0-1
gradient 2 groups
check "a collated case in folders of groups" exited 0
check "has the same results" same_results cavity_parts groups

# --- what is wrong with a file: one line, exit code 2, no output -------------------------------------------------------
refused() { [ "$(grep -c zyngrad: stderr)" = 1 ] && contains stderr "$1" && [ "$code" = 2 ] && [ ! -e "$2" ]; }
truncate -s 3000 cases/cavity_binary/constant/polyMesh/points && rm -r out_cavity_binary
gradient 1 cavity_binary
check "a truncated binary file" refused "points: offset " out_cavity_binary
truncate -s 300 cases/cavity_gz/constant/polyMesh/owner.gz && rm -r out_cavity_gz
gradient 1 cavity_gz
check "a truncated compressed file" refused "owner.gz: the compressed file is truncated" out_cavity_gz
truncate -s 3000 cases/cavity_collated/processors3/constant/polyMesh/faces && rm -r out_cavity_collated
gradient 3 cavity_collated
check "a truncated collated file" refused "faces: offset " out_cavity_collated
rm -r cases/groups out_groups && mkdir -p cases/groups/processors2_0-0
gradient 1 groups
check "a collated case without a processor" refused "no folder has the pieces of processor 1 of 2" out_groups

finish
