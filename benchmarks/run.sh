#!/usr/bin/env bash
# Measures the tables of docs/measured/speed.md.
#   run.sh BUILD_FOLDER [--quick]
# With ZYN_BENCH_ALL=1, method 1 on 300,000 hexahedra is added, for eight minutes more.
# The values go to docs/measured/speed/PROCESSOR.tsv, and the tables of the page are made from all files there: a run on
# another processor adds its columns. Takes about 20 minutes, and some more for the meshes of OpenFOAM, which are kept in
# build/openfoam. The machine should have nothing else to do.
# With --quick, everything runs on tiny meshes in two minutes; values and page go to BUILD_FOLDER/quick.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=${1:?"BUILD_FOLDER is missing"}
quick=
[[ ${2:-} != --quick ]] || quick=yes

export OMPI_ALLOW_RUN_AS_ROOT=1 OMPI_ALLOW_RUN_AS_ROOT_CONFIRM=1 OMPI_MCA_rmaps_base_oversubscribe=1
export OMPI_MCA_mpi_yield_when_idle=1 OMPI_MCA_plm=isolated OMPI_MCA_btl_vader_single_copy_mechanism=none
# One core is what is measured, but for ranks and for the table of threads.
export OMP_NUM_THREADS=1 OPENBLAS_NUM_THREADS=1

processor=$(lscpu | sed -n 's/^Model name: *//p' | head -1)
pages=docs/measured results=docs/measured/speed
if [[ $quick ]]; then
  pages=$build/quick results=$build/quick/speed
  rm -rf "$results"
fi
mkdir -p "$results"
file=$results/$(tr -cs '[:alnum:]' - <<<"$processor" | tr '[:upper:]' '[:lower:]' | sed 's/-$//').tsv
lines=$(mktemp)
blocks=$(mktemp -d)
trap 'rm -rf "$lines" "$blocks"' EXIT
failed=()

fact() { printf 'fact\t%s\t%s\n' "$1" "$2" >>"$lines"; }

# part NAME COMMAND...: keeps the lines with values and facts. A part that fails leaves its rows out, and the run goes on.
part() {
  local name=$1 start=$SECONDS
  shift
  echo "== $name"
  if "$@" >"$blocks/output"; then
    grep -P '^(value|fact)\t' "$blocks/output" >>"$lines" || true
  else
    failed+=("$name")
    tail -5 "$blocks/output" >&2
  fi
  echo "   $((SECONDS - start)) s"
}

busy_seconds() { awk -v tick="$(getconf CLK_TCK)" '/^cpu / { print ($2 + $3 + $4 + $7 + $8 + $9) / tick }' /proc/stat; }
# Sets `own` to the processor time of what this script has started; in a subshell, it would not be known.
own_seconds() {
  times >"$blocks/times"
  own=$(tr 'ms' '  ' <"$blocks/times" | awk '{ sum += $1 * 60 + $2 + $3 * 60 + $4 } END { print sum }')
}
program() { "$build/benchmarks/$@"; }

# threads CELLS ROUNDS: least squares on unbound ranks with as many threads as the runtime likes, and with one, in turn.
threads() {
  local ranks i free one
  for ranks in 1 2 3; do
    for ((i = 0; i < $2; ++i)); do
      free=$(env -u OMP_NUM_THREADS mpirun -n $ranks --bind-to none "$build/benchmarks/gradient_benchmark" threads "$1")
      one=$(OMP_NUM_THREADS=1 mpirun -n $ranks --bind-to none "$build/benchmarks/gradient_benchmark" threads "$1")
      echo "$free $one $(awk "BEGIN { print $free / $one }")"
    done | sort -k 3 -n >"$blocks/threads"
    # The median of the ratios, with its two times.
    sed -n "$((($2 + 1) / 2))p" "$blocks/threads" | awk -v row="$ranks" '{
      printf "value\tthreads\t%s\tns per cell, variable unset\t%.1f\t\n", row, $1
      printf "value\tthreads\t%s\twith 1 thread\t%.1f\t\n", row, $2
      printf "value\tthreads\t%s\tratio\t%.2f\t1.2\n", row, $3 }'
  done
}

# openfoam MESHES ROUNDS
openfoam() {
  local source
  source=$(integrations/openfoam/get_headers.sh build/openfoam/headers | tail -n 1) &&
    cmake -S . -B build/openfoam -G Ninja -DCMAKE_BUILD_TYPE=Release -DZYN_BUILD_TESTS=OFF -DZYN_BUILD_TOOL=OFF \
      -DZYN_BUILD_OPENFOAM=ON -DOPENFOAM_SOURCE="$source" &&
    cmake --build build/openfoam --target zynFoamTime &&
    integrations/openfoam/benchmark/run.py build/openfoam/integrations/openfoam build/openfoam/speed --meshes $1 --rounds "$2"
}

fact "processor" "$processor, $(nproc --all) cores"
fact "compiler" "$("${CXX:-c++}" --version | head -1), $(sed -n 's/^CMAKE_BUILD_TYPE:[A-Z]*=//p' "$build/CMakeCache.txt")"
fact "LAPACK" "$(ldd "$build/benchmarks/rbf_benchmark" | awk '/liblapack\.so|libopenblas|libblas\.so/ {print $3}' | xargs -r readlink -f | xargs -r -n 1 basename | paste -sd ' ')"
fact "threads" "OMP_NUM_THREADS=$OMP_NUM_THREADS OPENBLAS_NUM_THREADS=$OPENBLAS_NUM_THREADS, but for the table of threads"
fact "commit" "$(git describe --always --dirty 2>/dev/null || echo unknown), $(date +%F)"
own_seconds
busy=$(busy_seconds) own_before=$own start=$SECONDS

if [[ $quick ]]; then
  part "gradients" program gradient_benchmark 20000 3
  part "gradients, two ranks" mpirun -n 2 "$build/benchmarks/gradient_benchmark" 20000 3
  part "threads" threads 20000 1
  part "cells" program rbf_benchmark 1000
  part "faces and points" program interpolation_benchmark 1000 200 1234 hex,tet 1
  part "search tree" program search_tree_benchmark 1000 200
  part "kernels" program kernel_benchmark
  part "reading" program reading_benchmark 20000 1 "$blocks"
  part "case" benchmarks/case_run.py "$build/benchmarks" "$build/cli/zyngrad" 20000 1
  meshes="box-12 skew-12 tet-2" rounds=3
else
  part "gradients" program gradient_benchmark 1000000 11
  part "gradients, two ranks" mpirun -n 2 "$build/benchmarks/gradient_benchmark" 1000000 11
  part "threads" threads 300000 7
  part "cells" program rbf_benchmark 20000 300000
  part "faces and points, 20,000 cells" program interpolation_benchmark 20000 20000 1234 hex,tet 3
  part "faces and points, 300,000 cells" program interpolation_benchmark 300000 100000 234 hex,tet 2
  part "kernels" program kernel_benchmark
  part "search tree, 20,000 cells" program search_tree_benchmark 20000 20000
  part "search tree, 300,000 cells" program search_tree_benchmark 300000 20000
  part "reading" program reading_benchmark 1000000 3 "$blocks"
  part "case" benchmarks/case_run.py "$build/benchmarks" "$build/cli/zyngrad" 1000000 3
  part "method 1, 300,000 tetrahedra" program interpolation_benchmark 300000 100000 1 tet 1
  meshes="box-100 skew-100 tet-0.33" rounds=11
fi
if command -v blockMesh >/dev/null; then
  part "OpenFOAM" openfoam "$meshes" $rounds
else
  echo "OpenFOAM is not installed: its tables are left out"
fi
# The longest, eight minutes, and only where it is asked for: stencils of a whole cube have a hundred members.
[[ $quick || -z ${ZYN_BENCH_ALL:-} ]] ||
  part "method 1, 300,000 hexahedra" program interpolation_benchmark 300000 100000 1 hex 1

own_seconds
fact "taken by other processes during the run" "$(awk "BEGIN {
  others = ($(busy_seconds) - $busy) - ($own - $own_before)
  printf \"%.0f %% of the machine\", 100 * (others > 0 ? others : 0) / (($SECONDS - $start + 1) * $(nproc --all)) }")"
sort -s -k 1,1 -t $'\t' "$lines" >"$file"

# The operators' errors, for docs/methods/radial-basis-gradient.md.
program rbf_accuracy >"$build/rbf_accuracy.txt" || failed+=("rbf_accuracy")

page=$pages/speed.md
[[ ! $quick ]] || cp docs/measured/speed.md "$page"
mkdir "$blocks/tables"
benchmarks/tables.py "$page" "$results" "$blocks/tables"
awk -v blocks="$blocks/tables" -f docs/put_blocks.awk "$page" | cat -s >"$blocks/page"
cp "$blocks/page" "$page"
echo "$file, $page and $build/rbf_accuracy.txt are written, in $((SECONDS - start)) s"
if ((${#failed[@]})); then
  printf 'failed: %s\n' "${failed[@]}" >&2
  exit 1
fi
