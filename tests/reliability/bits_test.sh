#!/usr/bin/env bash
# The library gives the same bits whatever compiles it and whatever processor it runs on: every build of it, with warnings as
# errors, is put under one and the same program, which writes down what it computes; one build runs on an emulated processor
# without AVX and FMA, too.
#   bits_test.sh REPOSITORY BITS_DUMP SEARCH_TREE_LIBRARY [COMPILER_AND_FLAGS...]
set -euo pipefail
repository=$1
program=$2
search_tree=$3
shift 3

# The flags of cmake/CompilerOptions.cmake. -march=native: wide registers and fused operations, where the machine has them.
builds=("$@")
if ((${#builds[@]} == 0)); then
  for compiler in g++ clang++; do
    for flags in -O0 -O2 -O3 '-O3 -march=native'; do builds+=("$compiler $flags"); done
  done
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$repository"
# The first build compiles each source alone, as a solver may; the others compile the sources of a folder at once, as the
# presets do. So this compares the two ways, too, and most builds take a fraction of the time.
alone=$(ls foundation/*.cpp gradient/*.cpp rbf_cell/*.cpp rbf_face/*.cpp rbf_ib/*.cpp)
united=
for folder in foundation gradient rbf_cell rbf_face rbf_ib; do
  for source in "$folder"/*.cpp; do echo "#include \"$source\""; done >"$work/$folder.cpp"
  united+=" $work/$folder.cpp"
done
export work program search_tree alone united

# run NUMBER COMPILER FLAGS...: makes $work/NUMBER.so and its dump, or leaves $work/NUMBER.failed with the reason.
run() {
  local number=$1 sources=$united
  shift
  [[ $number != 0 ]] || sources=$alone
  # shellcheck disable=SC2086
  if ! "$@" -std=c++17 -fPIC -shared -fvisibility=hidden -fvisibility-inlines-hidden -ffp-contract=off -fopenmp \
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wold-style-cast -Wnon-virtual-dtor \
    -Woverloaded-virtual -Werror -I. $sources -Wl,--version-script=cmake/exports.map -Wl,-soname,libZyn3dGradOp.so.0 \
    "$search_tree" -Wl,-rpath,"$(dirname "$search_tree")" -llapacke -o "$work/$number.so" 2>"$work/$number.log"; then
    echo "does not compile" >"$work/$number.failed"
  # Several threads in the loops that have them; a BLAS of one thread adds in one order.
  elif ! OMP_NUM_THREADS=3 OPENBLAS_NUM_THREADS=1 LD_PRELOAD="$work/$number.so" "$program" "$work/$number.bits" \
    >"$work/$number.out" 2>"$work/$number.log"; then
    echo "does not run" >"$work/$number.failed"
  elif [[ $(tail -n 1 "$work/$number.log") != "$work/$number.so" ]]; then
    echo "was not the library in use" >"$work/$number.failed"
  fi
}
export -f run

# An OpenBLAS has other kernels for other processors.
export OPENBLAS_CORETYPE=Nehalem

# run_emulated NUMBER: the build of that number on a processor of 2008, which leaves $work/emulated.bits.
run_emulated() {
  qemu-x86_64 -cpu Nehalem -E LD_PRELOAD="$work/$1.so" -E OMP_NUM_THREADS=3 -E OPENBLAS_NUM_THREADS=1 \
    "$program" "$work/emulated.bits" >"$work/emulated.out" 2>"$work/emulated.log" &&
    [[ $(tail -n 1 "$work/emulated.log") == "$work/$1.so" ]]
}

# first_difference FILE FILE: the case and the two numbers.
first_difference() {
  awk -v other="$2" '
    { if ((getline line < other) <= 0) { print "one has more numbers"; exit } }
    $1 == "case" { name = substr($0, 6) }
    $0 != line { printf "%s:\n      %s\n      %s\n", name, $0, line; exit }' "$1"
}

numbers=()
for number in "${!builds[@]}"; do
  compiler=${builds[number]%% *}
  if command -v "$compiler" >/dev/null; then
    numbers+=("$number")
  else
    echo "skipped: ${builds[number]}: there is no $compiler here"
  fi
done
((${#numbers[@]} >= 2)) || { echo "nothing to compare with"; exit 1; }

for number in "${numbers[@]}"; do echo "$number ${builds[number]}"; done |
  xargs -P "${ZYN_JOBS:-2}" -L 1 bash -c 'run "$@"' run

failed=0
first=${numbers[0]}
for number in "${numbers[@]}"; do
  if [[ -e $work/$number.failed ]]; then
    echo "${builds[number]}: $(cat "$work/$number.failed")"
    tail -n 20 "$work/$number.log"
    failed=1
  elif [[ -e $work/$first.failed ]] || cmp -s "$work/$first.bits" "$work/$number.bits"; then
    echo "${builds[number]}: $(grep -vc '^case ' "$work/$number.bits") numbers"
  else
    echo "${builds[number]}: other bits than ${builds[first]} in $(first_difference "$work/$first.bits" "$work/$number.bits")"
    failed=1
  fi
done

# Without what the processor of this machine has and the emulated one has not.
emulated=
for number in "${numbers[@]}"; do
  [[ ${builds[number]} == *-march=* || ${builds[number]} == *-O0* ]] || { emulated=$number; break; }
done
if ! command -v qemu-x86_64 >/dev/null || [[ $(uname -m) != x86_64 || -z $emulated ]]; then
  echo "skipped: an emulated processor: there is no qemu-x86_64 here, or nothing to run under it"
elif [[ -e $work/$emulated.failed || -e $work/$first.failed ]]; then
  failed=1
elif ! run_emulated "$emulated"; then
  echo "${builds[emulated]} on an emulated processor: does not run"
  tail -n 20 "$work/emulated.log"
  failed=1
elif cmp -s "$work/$first.bits" "$work/emulated.bits"; then
  echo "${builds[emulated]} on an emulated processor: $(grep -vc '^case ' "$work/emulated.bits") numbers"
else
  echo "${builds[emulated]} on an emulated processor: other bits in" \
    "$(first_difference "$work/$first.bits" "$work/emulated.bits")"
  failed=1
fi
exit $failed
