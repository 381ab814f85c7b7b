#!/usr/bin/env bash
# Runs the lines of README.md and examples/README.md that lead from a clone to a running solver, exactly as they are
# written. A release build would take minutes, so the build folder of the tests, which has the same targets, replaces it.
#   readme_test.sh REPOSITORY COMPILER BUILD_FOLDER
set -euo pipefail
repository=$1 compiler=$2 build=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
  echo "$*"
  exit 1
}

# block PAGE HEADING LANGUAGE NUMBER: the NUMBER-th code block of a section with this language ("" for none), from 1.
block() {
  awk -v heading="$2" -v language="$3" -v number="$4" '
    /^```/ && !open { open = 1; shown = inside && $0 == "```" language && ++n == number; next }
    /^```/ { open = shown = 0; next }
    shown { print }
    !open && /^#/ { inside = $0 == heading }' "$repository/$1"
}

# type_in FOLDER LINES: runs the lines as a user would, with a temporary home folder.
type_in() {
  mkdir -p "$work/home"
  (cd "$1" && HOME=$work/home CXX=$compiler CMAKE_BUILD_PARALLEL_LEVEL=2 bash -euc "$2") >"$work/typed.txt" 2>&1 ||
    fail "these lines do not work:"$'\n'"$2"$'\n'"$(tail -n 30 "$work/typed.txt")"
}

heading="## Use it in your solver"
install_lines=$(block README.md "$heading" "" 1)
solver_lines=$(block README.md "$heading" "" 2)
cmake_lines=$(block README.md "$heading" cmake 1)
program_lines=$(block README.md "$heading" cpp 1)
for lines in "$install_lines" "$solver_lines" "$cmake_lines" "$program_lines"; do
  [[ -n $lines ]] || fail "README.md, $heading: a code block is missing"
done

# The clone. The README calls ./dev: the real one must know the command, and the stand-in finds everything built.
mkdir -p "$work/clone/build"
ln -s "$build" "$work/clone/build/release"
cp -r "$repository/examples" "$work/clone"
cat >"$work/clone/dev" <<'STAND_IN'
#!/usr/bin/env bash
[[ $# == 2 && $1 == build && $2 == release ]]
STAND_IN
chmod +x "$work/clone/dev"
grep -qE '^cmd_build\(\)' "$repository/dev" || fail "./dev has no command build"
(cd "$repository" && cmake --list-presets=build) | grep '"release"' >/dev/null || fail "there is no preset release"
type_in "$work/clone" "$install_lines"

# The solver: the smallest one, built with the lines of the README.
mkdir "$work/solver"
cp "$repository/tests/package/consumer/main.cpp" "$work/solver"
printf '%s\n' 'cmake_minimum_required(VERSION 3.16)' 'project(solver CXX)' 'add_executable(solver main.cpp)' "$cmake_lines" \
  >"$work/solver/CMakeLists.txt"
type_in "$work/solver" "$solver_lines"
"$work/solver/build/solver" >/dev/null || fail "the solver does not run"

# The C++ lines, with the objects that the README leaves to the solver as parameters.
{
  grep '^#include' <<<"$program_lines"
  printf '#include "host/%s"\n' Zyn3dGV.h ZYNCom.h ZYNCommunication.h
  echo 'void Solve(CZyn3dGV& globals, CZYN3DFiniteVolumeMesh& mesh, CPartitionFace_DLL& partitionFaces,'
  echo '           CCommunication& exchange, CZYNCom& reduction, double* phi, double* gx, double* gy, double* gz) {'
  grep -v '^#include' <<<"$program_lines"
  echo '}'
} >"$work/readme.cpp"
"$compiler" -std=c++17 -fsyntax-only -I"$work/home/zyn3dgradop/include/Zyn3dGradOp" "$work/readme.cpp" ||
  fail "the C++ lines of README.md do not compile"

# The guide for solver authors shows the same program in full.
block docs/use/porting.md "## A complete program" cpp 1 | diff - "$repository/tests/package/consumer/main.cpp" ||
  fail "docs/use/porting.md and tests/package/consumer/main.cpp differ"

# The lines for the examples, which install into the same folder.
type_in "$work/clone" "$(block examples/README.md "# Examples" "" 1)"

# After ./dev demo alone, host_check is missing: installing fails with a hint and copies nothing.
mkdir "$work/half"
(cd "$build" && find . -name cmake_install.cmake -exec cp --parents {} "$work/half" \;)
find "$work/half" -name cmake_install.cmake -exec sed -i "s|$build/|$work/half/|g" {} +
if cmake -DCMAKE_INSTALL_PREFIX="$work/nowhere" -P "$work/half/cmake_install.cmake" >"$work/half.txt" 2>&1; then
  fail "half a build was installed"
fi
grep -q 'Build first: cmake --build' "$work/half.txt" || fail "half a build: $(cat "$work/half.txt")"
[[ ! -e $work/nowhere ]] || fail "half a build was copied: $(find "$work/nowhere")"
