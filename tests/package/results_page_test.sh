#!/usr/bin/env bash
# Runs the commands of docs/use/results.md in a copy of the folders that they need, exactly as they are written. Without
# Matplotlib, the picture is left out, and the last line says so.
#   results_page_test.sh REPOSITORY ZYNGRAD PYTHON
set -euo pipefail
repository=$(realpath "$1") zyngrad=$(realpath "$2") python=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
  echo "$*"
  exit 1
}

mkdir -p "$work/bin" "$work/docs" "$work/examples"
ln -s "$zyngrad" "$work/bin/zyngrad"
ln -s "$python" "$work/bin/python3"
cp -r "$repository/examples/cavity" "$work/examples/cavity"
cp "$repository/docs/vtu.py" "$work/docs"
awk '/^```sh$/ { shown = 1; next } /^```$/ { shown = 0 } shown' "$repository/docs/use/results.md" >"$work/commands.sh"
[[ $(grep -c '^zyngrad ' "$work/commands.sh") == 5 && $(grep -c '^python3 ' "$work/commands.sh") == 1 ]] ||
  fail "docs/use/results.md: some commands are missing"
draws=yes
"$python" -c 'import matplotlib, numpy' 2>/dev/null || draws=no
[[ $draws == yes ]] || sed -i '/^python3 /d' "$work/commands.sh"
cd "$work"
PATH=$work/bin:$PATH bash -eu commands.sh >shown.txt 2>&1 || { cat shown.txt; exit 1; }

# What the page says of the results.
for file in cavity/{1,2}/{vorticity,Q,'grad(p)'} gradients/{gradient.json,gradient.pvd,gradient_1.vtu} wall/faces.vtp; do
  [[ -s $file ]] || fail "there is no $file"
done
[[ $draws == no || -s cavity.png ]] || fail "there is no picture"
[[ $(grep -c ',centre,' probes/points.csv) == 2 ]] || fail "not one row for each time of a probe"
cp -r cavity before
again=$(grep -A 1 '^zyngrad gradient' commands.sh)
PATH=$work/bin:$PATH bash -euc "$again" >shown.txt 2>&1 || { cat shown.txt; exit 1; }
diff -r before cavity || fail "a second run has not replaced the fields by the same"
echo '// edited' >>cavity/2/Q
if PATH=$work/bin:$PATH bash -euc "$again" >shown.txt 2>&1; then fail "an edited field was replaced"; fi
grep -q 'overwrite replaces it' shown.txt || { cat shown.txt; exit 1; }
[[ $draws == yes ]] || echo "the picture was left out: there is no Matplotlib"
