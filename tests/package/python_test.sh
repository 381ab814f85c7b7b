#!/usr/bin/env bash
# pip installs the Python module from the repository, offline and with the packages of the system, and the wheel serves a
# user who has nothing else of this project.
#   python_test.sh REPOSITORY PYTHON
set -euo pipefail
repository=$1 python=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# pip builds in the folder that it is given: a copy, so that no file appears in the repository.
mkdir "$work/source"
tar -C "$repository" --exclude=./.git --exclude='./build*' -cf - . | tar -C "$work/source" -xf -
# Without optimisation, which takes half the time. A user has no such variable.
export CMAKE_ARGS=-DCMAKE_CXX_FLAGS_RELEASE=-O0

# The second block of commands under "Install" of the page, in a shell where python3 is the one of the system.
awk '/^## Install/ {inside = 1} inside && /^```$/ {shown = 0} shown {print} inside && /^```sh$/ {shown = ++blocks == 2}' \
  "$repository/docs/use/python.md" >"$work/install.sh"
grep -q 'pip install --no-build-isolation \.$' "$work/install.sh" || { echo "docs/use/python.md does not say how pip builds it"; exit 1; }
(cd "$work/source" && PATH=$(dirname "$python"):$PATH PIP_NO_INDEX=1 PIP_DISABLE_PIP_VERSION_CHECK=1 bash -eu "$work/install.sh") \
  >"$work/pip.txt" 2>&1 || {
  tail -n 60 "$work/pip.txt"
  exit 1
}
mv "$work/source/build/venv" "$work/venv"
rm -rf "$work/source"  # nothing in the module may lead back to it

mkdir "$work/empty"
cd "$work/empty"
"$work/venv/bin/python" - <<'END'
import numpy as np
import zyn3dgradop as zyn

mesh = zyn.Mesh.read("box:4,4,4:tet")
assert mesh.check() == []
for method in "plain", "iterated", "least_squares", "radial_basis":
    slope = zyn.Gradient(mesh, method)(np.ones(mesh.total_count))
    assert np.abs(slope[:, : mesh.cell_count]).max() < 1e-2, method
assert "site-packages" in zyn.__file__, zyn.__file__
END
left=$(ls -A)
[[ -z $left ]] || { echo "left in the working folder: $left"; exit 1; }
"$work/venv/bin/python" -m pip uninstall --yes zyn3dgradop >/dev/null
left=$(find "$work/venv" -path '*zyn3dgradop*')
[[ -z $left ]] || { echo "left behind: $left"; exit 1; }
