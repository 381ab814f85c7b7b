#!/usr/bin/env bash
# Runs the benchmarks of a build folder: run.sh BUILD_FOLDER [CELLS]
set -euo pipefail
build=$1
cells=${2:-1000000}
options=(--benchmark_display_aggregates_only=true --benchmark_counters_tabular=true)

echo "compiler: $("${CXX:-c++}" --version | head -1)"
echo "machine:  $(lscpu | sed -n 's/^Model name: *//p'), $(nproc --all) cores"
echo "LAPACK:   $(ldd "$build"/benchmarks/rbf_benchmark | awk '/liblapack\.so|libopenblas/ {print $3}' | xargs -r readlink -f | paste -sd ' ')"
"$build"/benchmarks/gradient_benchmark "$cells" "${options[@]}" | grep -v '_mean\|_stddev\|_cv'
mpirun -n 2 "$build"/benchmarks/gradient_benchmark "$cells" "${options[@]}" | grep -v '_mean\|_stddev\|_cv'
# Threads of the BLAS would not help systems of this size, and one core is what is measured.
OMP_NUM_THREADS=1 OPENBLAS_NUM_THREADS=1 "$build"/benchmarks/rbf_benchmark "$cells"
OMP_NUM_THREADS=1 OPENBLAS_NUM_THREADS=1 "$build"/benchmarks/rbf_accuracy
# Stencils of a whole cube have a hundred members: three minutes on 20,000 cells.
OMP_NUM_THREADS=1 OPENBLAS_NUM_THREADS=1 "$build"/benchmarks/interpolation_benchmark "$(awk "BEGIN {print $cells / 50}")"
