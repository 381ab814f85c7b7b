#!/usr/bin/env bash
# An installed package: found by CMake and by pkg-config, compiled against, run.
#   install_test.sh REPOSITORY COMPILER BUILD_FOLDER
set -euo pipefail
repository=$1 compiler=$2 build=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build" --prefix "$work/prefix" >/dev/null

cmake -G Ninja -S "$repository/tests/package/consumer" -B "$work/build" -DCMAKE_CXX_COMPILER="$compiler" \
  -DCMAKE_PREFIX_PATH="$work/prefix" >/dev/null
cmake --build "$work/build" >/dev/null
"$work/build/consumer"

pkgconfig=$(dirname "$(find "$work/prefix" -name Zyn3dGradOp.pc)")
# The file was made for the configured prefix; --define-prefix makes it follow the files.
flags=$(PKG_CONFIG_PATH=$pkgconfig pkg-config --define-prefix --cflags --libs Zyn3dGradOp)
# shellcheck disable=SC2086
"$compiler" -std=c++17 "$repository/tests/package/consumer/main.cpp" $flags \
  -Wl,-rpath,"$(dirname "$pkgconfig")" -o "$work/by_pkg_config"
"$work/by_pkg_config"
