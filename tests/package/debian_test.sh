#!/usr/bin/env bash
# The Debian packages: what is in them, what they depend on, that the program runs and Python imports the module, that
# dpkg installs and removes them. Nothing outside a temporary folder is touched, and no rights are needed.
#   debian_test.sh BUILD_FOLDER REPOSITORY
set -euo pipefail
build=$1 repository=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
  echo "$*"
  exit 1
}

cpack --config "$build/CPackConfig.cmake" -B "$work" >"$work/cpack.txt" 2>&1 || fail "$(cat "$work/cpack.txt")"
package=$(echo "$work"/zyn3dgradop_*.deb)
[[ -f $package ]] || fail "no package was made: $(cat "$work/cpack.txt")"

# Its own libraries are in it, all others are some package's.
dpkg-deb --field "$package" >"$work/fields.txt"
for needed in libc6 liblapacke libopenmpi3 libmetis5; do
  grep -q "^Depends:.*\b$needed\b" "$work/fields.txt" || fail "no dependency on $needed: $(cat "$work/fields.txt")"
done
dpkg-deb --contents "$package" | awk '{print $6}' >"$work/contents.txt"
for file in bin/zyngrad include/Zyn3dGradOp/gradient/COperatorGradient.h include/Zyn3dGradOp/host/Zyn3dGV.h \
  share/man/man1/zyngrad.1.gz share/bash-completion/completions/zyngrad share/doc/zyn3dgradop/copyright share/doc/zyn3dgradop/changelog.gz \
  lib/libZyn3dGradOp.so lib/cmake/Zyn3dGradOp/Zyn3dGradOpConfig.cmake lib/pkgconfig/Zyn3dGradOp.pc; do
  # Below lib there may be a folder for the machine's kind.
  grep -qE "^\./usr/${file/#lib\//lib/([^/]*/)?}$" "$work/contents.txt" || fail "not in the package: $file"
done
if grep -vE '^\./(usr/((bin|lib|include|share)/.*)?)?$' "$work/contents.txt"; then
  fail "the paths above are not the package's to fill"
fi

# What Debian's own checker calls an error. Where it is not installed, at least the maintainer's address is one that can be.
if grep -qE '^Maintainer: .*(localhost|localdomain)' "$work/fields.txt"; then
  fail "no mail reaches $(grep '^Maintainer:' "$work/fields.txt")"
fi
version=$(sed -n 's/^Version: //p' "$work/fields.txt")
dpkg-deb --fsys-tarfile "$package" | tar -xO ./usr/share/doc/zyn3dgradop/changelog.gz | gzip -dc |
  grep "^zyn3dgradop ($version) " >/dev/null || fail "the changelog does not have the package's version, $version"
if command -v lintian >/dev/null; then
  lintian --allow-root --fail-on error "$package" >"$work/lintian.txt" 2>&1 || fail "lintian: $(cat "$work/lintian.txt")"
fi

# Installed into a root of its own, with a database of its own; what it depends on is that of this machine.
root=$work/root
mkdir -p "$root/var/lib/dpkg/updates" "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/triggers"
touch "$root/var/lib/dpkg/status"
export PATH=$PATH:/usr/sbin:/sbin  # dpkg wants to find ldconfig
dpkg_there() {
  dpkg --root="$root" --log=/dev/null --force-not-root --force-depends --force-script-chrootless "$@" \
    >"$work/dpkg.txt" 2>&1 || fail "dpkg $*: $(cat "$work/dpkg.txt")"
}
dpkg_there --install "$package"
library=$(dirname "$(find "$root" -name libZyn3dGradOp.so)")
export LD_LIBRARY_PATH=$library
zyngrad=$root/usr/bin/zyngrad
"$zyngrad" --version | grep -q '^zyngrad [0-9]' || fail "the installed zyngrad does not tell its version"
(cd "$work" && "$zyngrad" gradient box:4,4,4 --field x --method lsq -o out >zyngrad.txt) || fail "$(cat "$work/zyngrad.txt")"
[[ -s $work/out/gradient.json ]] || fail "zyngrad gradient has written no results"

# The manual page: every command has a section, and the formatter has nothing to complain about.
page=$root/usr/share/man/man1/zyngrad.1.gz
commands=$("$zyngrad" --help | awk '/^Subcommands:/ {inside = 1; next} inside && NF == 0 {inside = 0} inside && /^  [a-z]/ {print $1}')
for command in gradient info; do grep -qx "$command" <<<"$commands" || fail "no command $command in zyngrad --help"; done
for command in $commands; do
  gzip -dc "$page" | grep -qx "\.SS $command" || fail "the manual page does not tell about zyngrad $command"
done
if command -v groff >/dev/null; then
  complaints=$(gzip -dc "$page" | LC_ALL=C groff -man -Tascii -ww -z 2>&1 | grep -v "cannot .*break line" || true)
  [[ -z $complaints ]] || fail "the manual page: $complaints"
fi

# The completion: commands, options, and the values of an option.
completed() {
  bash -c 'source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _zyngrad; echo "${COMPREPLY[*]}"' \
    bash "$root/usr/share/bash-completion/completions/zyngrad" zyngrad "$@"
}
[[ $(completed grad) == gradient ]] || fail "grad is completed to: $(completed grad)"
[[ $(completed gradient --swe) == --sweeps ]] || fail "--swe is completed to: $(completed gradient --swe)"
[[ $(completed gradient --method ls) == lsq ]] || fail "--method ls is completed to: $(completed gradient --method ls)"

dpkg_there --purge zyn3dgradop
nothing_is_left() {
  local left
  left=$(find "$root" -path "$root/var" -prune -o ! -type d -print)
  [[ -z $left ]] || fail "left behind: $left"
}
nothing_is_left

# The package of the Python module, if it was built: it needs no other package of ours.
# Its file has the name that the page for users gives.
pattern=$(sed -n 's|^sudo apt-get install \./build/release/\(python3-.*\.deb\)$|\1|p' "$repository/docs/use/python.md")
[[ -n $pattern ]] || fail "docs/use/python.md does not say which package to install"
# shellcheck disable=SC2086 # a pattern
python_package=$(cd "$work" && echo "$work"/$pattern)
if ! grep -q '^ZYN_BUILD_PYTHON:BOOL=ON' "$build/CMakeCache.txt" || [[ ! -d $build/python/zyn3dgradop ]]; then
  [[ ! -f $python_package ]] || fail "there is a package of a module that was not built"
  exit 0
fi
[[ -f $python_package ]] || fail "no package of the Python module was made: $(cat "$work/cpack.txt")"
dpkg-deb --field "$python_package" >"$work/fields.txt"
for needed in libc6 liblapacke python3 python3-numpy; do
  grep -q "^Depends:.*\b$needed\b" "$work/fields.txt" || fail "no dependency on $needed: $(cat "$work/fields.txt")"
done
dpkg-deb --contents "$python_package" | awk '{print $6}' >"$work/contents.txt"
for file in lib/python3/dist-packages/zyn3dgradop/__init__.py share/doc/python3-zyn3dgradop/copyright \
  share/doc/python3-zyn3dgradop/changelog.gz; do
  grep -qx "./usr/$file" "$work/contents.txt" || fail "not in the package of the Python module: $file"
done
if grep -vE '^\./(usr/(lib/(python3/(dist-packages/(zyn3dgradop.*)?)?)?|share/(doc/(python3-zyn3dgradop/.*)?)?)?)?$' \
  "$work/contents.txt"; then
  fail "the paths above are not the Python package's to fill"
fi
if command -v lintian >/dev/null; then
  lintian --allow-root --fail-on error "$python_package" >"$work/lintian.txt" 2>&1 || fail "lintian: $(cat "$work/lintian.txt")"
fi
dpkg_there --install "$python_package"
# Below a folder of its own, with nothing of the build in sight.
(cd "$work" && env -u LD_LIBRARY_PATH PYTHONDONTWRITEBYTECODE=1 PYTHONPATH="$root/usr/lib/python3/dist-packages" \
  /usr/bin/python3 - >"$work/python.txt" 2>&1 <<'END'
import importlib.metadata
import numpy as np
import zyn3dgradop as zyn

mesh = zyn.Mesh.read("box:4,4,4")
slope = zyn.Gradient(mesh, "least_squares")(np.ascontiguousarray(2.0 * mesh.centres[0]))
assert np.abs(slope[0, : mesh.cell_count] - 2.0).max() < 1e-12, slope
assert importlib.metadata.version("zyn3dgradop") == zyn.__version__
print(zyn.__file__)
END
) || fail "the installed Python module: $(cat "$work/python.txt")"
grep -q "^$root/" "$work/python.txt" || fail "Python imported another module: $(cat "$work/python.txt")"
dpkg_there --purge python3-zyn3dgradop
nothing_is_left
