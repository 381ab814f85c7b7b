#!/usr/bin/env bash
# Runs the commands of docs/use/probes.md in the repository's folder, exactly as they are written, with results in a
# temporary folder.
#   probes_page_test.sh REPOSITORY ZYNGRAD
set -euo pipefail
repository=$(realpath "$1") zyngrad=$(realpath "$2")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
  echo "$*"
  exit 1
}

mkdir "$work/bin" "$work/tests"
ln -s "$zyngrad" "$work/bin/zyngrad"
cp -r "$repository/tests/data" "$work/tests/data"
awk '/^```sh$/ { shown = 1; next } /^```$/ { shown = 0 } shown' "$repository/docs/use/probes.md" >"$work/commands.sh"
[[ $(grep -c '^zyngrad points' "$work/commands.sh") == 4 ]] || fail "docs/use/probes.md: some commands are missing"
cd "$work"
PATH=$work/bin:$PATH bash -eu commands.sh >shown.txt 2>&1 || { cat shown.txt; exit 1; }

# What the page says of the results.
[[ $(wc -l <at-probes/points.csv) == 4 ]] || fail "not one row for each probe"
header=$(head -n 1 at-probes/points.csv)
for column in name p p_gradient_x U_x U_x_gradient_x U_z_gradient_z distance members flags; do
  [[ ,$header, == *,$column,* ]] || fail "points.csv has no column $column"
done
[[ $(grep -c '^0\.[0-9]*,centre,\|^0,centre,' in-time/points.csv) == 3 ]] || fail "not one row for each time of a probe"
[[ -s in-time/points.pvd && -s in-time/points_0.4.vtp ]] || fail "no series for ParaView"
for folder in on-torus on-cylinder; do
  grep -aq 'Name="area"' $folder/points.vtp || fail "no triangles in $folder"
done
grep -aq 'Name="p_normal_derivative"' on-cylinder/points.vtp || fail "no slopes along the normal"
