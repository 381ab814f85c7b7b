#!/usr/bin/env bash
# The library folders and the search tree build with one compiler call and no macro or generated header, and work.
#   bare_compiler_test.sh REPOSITORY COMPILER
set -euo pipefail
cd "$1"
compiler=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
folders=()
for folder in foundation gradient rbf_cell rbf_face rbf_ib; do [[ ! -d $folder ]] || folders+=("$folder"); done
mapfile -t sources < <(find "${folders[@]}" -name '*.cpp' | sort)
"$compiler" -std=c++17 -O1 -fPIC -shared -I. -fopenmp "${sources[@]}" reference_host/ZYNOptKer.cpp -llapacke \
  -o "$work/libbare.so"
if nm -C "$work/libbare.so" | grep ' u '; then
  echo "a process keeps one of each of the symbols above for ever, and the library with them: it could not be unloaded"
  exit 1
fi
"$compiler" -std=c++17 -I. tests/package/consumer/main.cpp "$work/libbare.so" -Wl,-rpath,"$work" -o "$work/consumer"
"$work/consumer"
