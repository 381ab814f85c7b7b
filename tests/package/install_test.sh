#!/usr/bin/env bash
# An installed package: found by CMake and by pkg-config, compiled against, run. So are all examples, which get nothing
# but CMAKE_PREFIX_PATH.
#   install_test.sh REPOSITORY COMPILER BUILD_FOLDER
set -euo pipefail
repository=$1 compiler=$2 build=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build" --prefix "$work/installed" >/dev/null
# Moved, so that nothing found below can come from where it was installed.
mv "$work/installed" "$work/prefix"

# Of the library's private headers none is installed but the operator's state, and no installed header needs one that is not.
include=$work/prefix/include/Zyn3dGradOp
(cd "$include" && find . -name '*.h' | sed 's|^\./||' | sort) >"$work/headers.txt"
grep -qx gradient/COperatorGradient.h "$work/headers.txt" || { echo "COperatorGradient.h is not installed"; exit 1; }
if grep -xE '(gradient|rbf_[a-z]*)/.*(Impl|Kernels?|Sort|SearchMethod|TwoFaces)\.h|foundation/(DQ|Row|Settings).*' \
  "$work/headers.txt" | grep -vx gradient/COperatorGradientImpl.h; then
  echo "the private headers above are installed"
  exit 1
fi
mpi=()
[[ ! -e "$work/prefix/bin/zyngrad" ]] || read -ra mpi < <(mpicxx --showme:compile)
sed 's/.*/#include "&"/' "$work/headers.txt" |
  "$compiler" -std=c++17 -fsyntax-only -I"$include" "${mpi[@]}" -x c++ - || { echo "an installed header is missing"; exit 1; }

# One version everywhere: for the preprocessor, CMake, pkg-config, the program, citations.
macro=$(printf '#include "foundation/Zyn3dGradOpVersion.h"\nv ZYN3DGRADOP_VERSION_MAJOR ZYN3DGRADOP_VERSION_MINOR %s\n' \
  ZYN3DGRADOP_VERSION_PATCH | "$compiler" -E -P -x c++ -I"$include" - | sed -n 's/^v \([0-9]*\) \([0-9]*\) \([0-9]*\)$/\1.\2.\3/p')
[[ -n $macro ]] || { echo "no version for the preprocessor"; exit 1; }
cat >"$work/version.cpp" <<'END'
#include "foundation/Zyn3dGradOpVersion.h"
#if ZYN3DGRADOP_VERSION < ZYN3DGRADOP_MAKE_VERSION(0, 1, 0) || ZYN3DGRADOP_VERSION >= ZYN3DGRADOP_MAKE_VERSION(1000, 0, 0)
#error "versions do not compare as numbers"
#endif
static_assert(ZYN3DGRADOP_MAKE_VERSION(0, 2, 0) > ZYN3DGRADOP_MAKE_VERSION(0, 1, 999));
END
"$compiler" -std=c++17 -fsyntax-only -I"$include" "$work/version.cpp"
same_version() {
  [[ $2 == "$macro" ]] || { echo "the header has version $macro, $1 '$2'"; exit 1; }
}
mkdir "$work/version"
cat >"$work/version/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.25)
project(version CXX)
find_package(Zyn3dGradOp CONFIG REQUIRED)
message(STATUS "found ${Zyn3dGradOp_VERSION}")
END
same_version find_package "$(cmake -G Ninja -S "$work/version" -B "$work/version/build" -DCMAKE_CXX_COMPILER="$compiler" \
  -DCMAKE_PREFIX_PATH="$work/prefix" | sed -n 's/^-- found //p')"
same_version pkg-config "$(PKG_CONFIG_PATH=$(dirname "$(find "$work/prefix" -name Zyn3dGradOp.pc)") pkg-config --modversion Zyn3dGradOp)"
same_version CITATION.cff "$(sed -n 's/^version: //p' "$repository/CITATION.cff")"
[[ ! -e "$work/prefix/bin/zyngrad" ]] || same_version zyngrad "$("$work/prefix/bin/zyngrad" --version | sed 's/^zyngrad //')"

# build_against FOLDER: configured with nothing but the place of the package, built in $work/FOLDER's name.
build_against() {
  cmake -G Ninja -S "$repository/$1" -B "$work/$(basename "$1")" -DCMAKE_CXX_COMPILER="$compiler" \
    -DCMAKE_PREFIX_PATH="$work/prefix" >/dev/null
  cmake --build "$work/$(basename "$1")" -j 2 >/dev/null
}

# run NAME COMMAND...: in a folder of its own; shows the output only when it fails, else leaves it in $work/NAME.txt.
run() {
  local name=$1
  shift
  mkdir -p "$work/$name.run"
  if ! (cd "$work/$name.run" && "$@") >"$work/$name.txt" 2>&1; then
    echo "failed: $*"
    tail -n 40 "$work/$name.txt"
    exit 1
  fi
}

# The library alone asks for nothing: not for MPI either.
cmake -G Ninja -S "$repository/tests/package/consumer" -B "$work/without_mpi" -DCMAKE_CXX_COMPILER="$compiler" \
  -DCMAKE_PREFIX_PATH="$work/prefix" -DCMAKE_DISABLE_FIND_PACKAGE_MPI=ON --no-warn-unused-cli >/dev/null

# The reference host comes by itself where its dependencies are; as a component it says what is missing.
mkdir "$work/asks"
cat >"$work/asks/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.25)
project(asks CXX)
find_package(Zyn3dGradOp CONFIG REQUIRED ${ask_for})
if(NOT TARGET Zyn3dGradOp::reference_host)
  message(FATAL_ERROR "no reference host")
endif()
END
ask() { cmake -G Ninja -S "$work/asks" -B "$work/asks/$1" -DCMAKE_CXX_COMPILER="$compiler" \
  -DCMAKE_PREFIX_PATH="$work/prefix" "${@:2}" 2>&1; }
ask plain >/dev/null || { echo "find_package without components gives no reference host"; exit 1; }
if [[ -e "$work/prefix/bin/zyngrad" ]]; then
  said=$(ask without "-Dask_for=COMPONENTS;reference_host" -DCMAKE_DISABLE_FIND_PACKAGE_MPI=ON) && said="it was found"
  if [[ $(tr -s ' \n' ' ' <<<"$said") != *'what is not there: MPI for C++'* ]]; then
    echo "without MPI, the component: $said"
    exit 1
  fi
fi

build_against tests/package/consumer
run consumer "$work/consumer/consumer"

pkgconfig=$(dirname "$(find "$work/prefix" -name Zyn3dGradOp.pc)")
flags=$(PKG_CONFIG_PATH=$pkgconfig pkg-config --cflags --libs Zyn3dGradOp)
# shellcheck disable=SC2086
"$compiler" -std=c++17 "$repository/tests/package/consumer/main.cpp" $flags \
  -Wl,-rpath,"$(dirname "$pkgconfig")" -o "$work/by_pkg_config"
run by_pkg_config "$work/by_pkg_config"

for example in two_cells own_host; do
  build_against "examples/$example"
  run "$example" "$work/$example/$example"
done
run own_host_of_three "$work/own_host/own_host" 3
if [[ -n $(find "$work" -name 'own_host*.rbf') ]]; then
  echo "own_host has its settings from its parameters, and yet a settings file was written"
  exit 1
fi

# The parallel parts are there only when the reference host was built with MPI.
[[ -e "$work/prefix/bin/zyngrad" ]] || exit 0
for example in moving_body scalar_transport; do build_against "examples/$example"; done
run moving_body "$work/moving_body/moving_body" box:16,16,16 6

# The same errors on one rank and on two, and of second order: a quarter, or nearly, at half the spacing.
error() { sed -n 's/.*L2 \([^ ]*\) .*/\1/p' "$work/$1.txt" | tail -n 1; }
run coarse "$work/scalar_transport/scalar_transport" box:16,16,16
run fine "$work/scalar_transport/scalar_transport" box:32,32,32
run fine_on_two mpirun -n 2 "$work/scalar_transport/scalar_transport" box:32,32,32
run tetrahedra mpirun -n 2 "$work/scalar_transport/scalar_transport" box:10,10,10:tet:perturb=0.1,seed=1
if ! awk -v coarse="$(error coarse)" -v fine="$(error fine)" -v two="$(error fine_on_two)" 'BEGIN {
       difference = two - fine
       exit !(fine > 0 && coarse / fine > 3.5 && difference < 1e-8 * fine && -difference < 1e-8 * fine) }'; then
  echo "scalar_transport: errors $(error coarse) coarse, $(error fine) fine, $(error fine_on_two) fine on two ranks"
  exit 1
fi
