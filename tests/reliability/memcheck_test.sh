#!/usr/bin/env bash
# Tests under valgrind's memcheck: it sees what is read before it is written, which AddressSanitizer does not.
#   memcheck_test.sh REPOSITORY FOLDER_OF_TEST_EXECUTABLES
set -euo pipefail
repository=$(cd "$1" && pwd)
folder=$(cd "$2" && pwd)
command -v valgrind >/dev/null || { echo "there is no valgrind here"; exit 2; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
export repository folder work

# memcheck EXECUTABLE [FILTER]. The soname synonym leaves operator new to the tests that count allocations. Death tests crash on
# purpose, valgrind's processor has no floating-point traps, orders of convergence need meshes that take minutes here, as do the
# largest boxes, and a million powers take one.
memcheck() {
  local start=$SECONDS status=0
  OMP_NUM_THREADS=2 OPENBLAS_NUM_THREADS=1 valgrind -q --error-exitcode=99 --leak-check=no --num-callers=20 \
    --suppressions="$repository/cmake/valgrind.supp" --soname-synonyms=somalloc=nouserintercepts \
    "$folder/$1" --gtest_brief=1 --gtest_filter="${2:-*}-*DeathTest*:*Traps*:*Orders.*:*OrderIs*:*AMillionArguments*:*Of6e10Cells*:*WholeDual*" >"$work/$1.log" 2>&1 || status=$?
  local passed
  passed=$(sed -n 's/^\[  PASSED  \] \([0-9]*\) tests*\.$/\1/p' "$work/$1.log")
  if ((status == 0 && ${passed:-0} > 0)); then
    echo "$1: $passed tests, $((SECONDS - start)) s"
  else
    echo "$1: failed with status $status, $((SECONDS - start)) s"
    head -n 80 "$work/$1.log"
    return 1
  fi
}
export -f memcheck

# The longest first. The property tests with fewer meshes and settings: memcheck is some thirty times slower.
xargs -P "${ZYN_JOBS:-2}" -L 1 bash -c 'memcheck "$@"' memcheck <<'END'
unit_reference_host
unit_search_tree
unit_search_tree_plain
property_meshes
property_rbf_face FaceOperator/FacesOnMeshes.*/Mixed_Perturbed_3_Parts
property_rbf_ib Settings/PointsOnMeshes.GiveTheResults*/Method?Span500Number20
unit_gradient
unit_rbf_face
unit_rbf_ib
unit_rbf_cell
unit_rbf
property_rbf_cell *_Span_5_*
unit_foundation
unit_host_check
unit_rbf_face_tree
unit_rbf_ib_tree
unit_rbf_cell_tree
END
