#!/usr/bin/env bash
# Quantities derived from vectors, and results that go back into the case of OpenFOAM that they come from.
. "$(dirname "${BASH_SOURCE[0]}")/cli_test_support.sh"

cases=$data/openfoam_cases
derived=(--derive grad,div,curl,Q,strain)
fields=(--field-file U --field-file p --time latest)

same_files() { diff -r "$1" "$2" >stdout 2>&1; }  # folders, to the last byte
body() {  # the content of a field file without its header
  gzip -cdf "$1" | sed '1,/^}/d'
}
names=('grad(U)' 'div(U)' vorticity Q strainRate 'grad(p)')

echo "== formulas"
run 1 gradient box:8,8,8 --field 'x^2+y^2' --field 'x*y' --field 'y*z' --method plain,lsq,vector "${derived[@]}" -o formulas
check "three formulas are a vector" exited 0
check "its quantities have errors" contains stdout 'quantities derived from the gradient of u: errors'
check "they are in the viewer's file" grid_has formulas/gradient.vtu u gradient_u_lsq error_u_lsq divergence_u_lsq \
  vorticity_u_vector Q_u_plain strain_rate_u_lsq exact_Q_u error_Q_u_lsq exact_vorticity_u
check "components have names" grep -aqF 'ComponentName1="dux/dy"' formulas/gradient.vtu
check "methods of one field and of three give the same bits" python3 - <<'END'
import json
entries = json.load(open("formulas/gradient.json"))["derived"]
plain, vector = (next(e["errors"] for e in entries if e["method"] == m) for m in ("plain", "vector"))
assert plain == vector and len(plain) == 5, (plain, vector)
END
run 1 gradient box:5,5,5 --field '1+2*x-y+3*z' --field '4*x+y-z' --field 'x-2*y+5*z' --method lsq "${derived[@]}" -o linear
check "least squares is exact for linear vectors" python3 - <<'END'
import json
for quantity in json.load(open("linear/gradient.json"))["derived"][0]["errors"]:
    for cells in "interior", "boundary":
        assert quantity[cells]["max"] < 1e-11, quantity
END
run 2 gradient box:8,8,8 --field 'x^2+y^2' --field 'x*y' --field 'y*z' --method lsq "${derived[@]}" -o formulas2
check "two ranks" exited 0
check "they have the same largest errors as one" python3 - <<'END'
import json
def largest(file):
    entries = json.load(open(file))["derived"]
    lsq = next(e["errors"] for e in entries if e["method"] == "lsq")
    return [q[c]["max"] for q in lsq for c in ("interior", "boundary")]
one, two = largest("formulas/gradient.json"), largest("formulas2/gradient.json")
assert all(abs(a - b) <= 1e-12 * max(1, a) for a, b in zip(one, two)), (one, two)
END

echo "== refused before anything is read"
is_refused_with() { exited 2 && contains stderr "$1" && [ "$(wc -l <stderr)" = 1 ] && [ ! -e refused ]; }
refused() {  # refused MESSAGE ARGUMENT...
  run 1 gradient "${@:2}" -o refused
  check "$1" is_refused_with "$1"
}
refused 'unknown quantity "vorticity": expected grad, div, curl, Q, strain' box:2,2,2 --field x --derive vorticity
refused '--derive needs a vector: three --field, its components, or --field-file; got 1 --field' box:2,2,2 --field x --derive Q
refused '--derive needs a vector, but p is a scalar' "$cases/cavity" --field-file 0.4/p --derive Q
refused '--write-case writes results of --field-file into its case' box:2,2,2 --field x --write-case
refused 'choose it, for example with --method plain' "$cases/cavity" --field-file 0.4/p --write-case
refused '--overwrite belongs to --write-case' "$cases/cavity" --field-file 0.4/p --overwrite

echo "== into the case"
cp -r "$cases/cavity" cavity
run 1 gradient cavity "${fields[@]}" --method plain "${derived[@]}" --write-case -o out
check "results go into the case" exited 0
check "the last line names them" contains stdout 'written into the case: 0.4/grad(U), 0.4/div(U), 0.4/vorticity, 0.4/Q, 0.4/strainRate, 0.4/grad(p)'
for name in "${names[@]}"; do
  check "$name has our note" grep -q 'note        "written by zyngrad .*, crc64 [0-9a-f]\{16\}";' "cavity/0.4/$name"
done
check "the unit of Q is that of U over length, squared" grep -qxF 'dimensions      [0 0 -2 0 0 0 0];' cavity/0.4/Q
check "the unit of grad(p) is that of p over length" grep -qxF 'dimensions      [0 1 -2 0 0 0 0];' 'cavity/0.4/grad(p)'
check "walls have the values of their cells" eval 'sed -n "/^    lid/,/^    }/p" cavity/0.4/Q | grep -q "nonuniform List<scalar>"'
check "empty patches stay empty" eval 'sed -n "/^    frontAndBack/,/^    }/p" cavity/0.4/Q | tr -d " \n" | grep -qxF "frontAndBack{typeempty;}"'
cp -r cavity first
run 1 gradient cavity "${fields[@]}" --method plain "${derived[@]}" --write-case -o out
check "what zyngrad wrote is replaced" exited 0
check "by the same bytes" same_files first cavity
run 1 gradient cavity --field-file 0.4/Q --method lsq --write-case -o out_q
check "its own files are read like others" eval 'exited 0 && [ -s "cavity/0.4/grad(Q)" ]'
rm "cavity/0.4/grad(Q)"

for ranks in 2 3; do
  rm -rf several && cp -r "$cases/cavity" several
  run $ranks gradient several "${fields[@]}" --method plain "${derived[@]}" --write-case -o out_several
  check "$ranks ranks write a whole case" exited 0
  check "the same values as one" python3 - <<'END'
import re
def numbers(name):
    return [float(n) for n in re.findall(r"[-+]?\d[.\deE+-]*", open(name).read().split("internalField")[1].split(";")[0])]
for name in "grad(U)", "div(U)", "vorticity", "Q", "strainRate", "grad(p)":
    a, b = numbers("cavity/0.4/" + name), numbers("several/0.4/" + name)
    assert len(a) == len(b) > 64 and max(abs(x - y) for x, y in zip(a, b)) < 1e-12, name
END
done

echo "== formats"
for format in binary gz binary_gz; do
  cp -r "$cases/cavity_$format" $format
  run 1 gradient $format "${fields[@]}" --method plain --derive Q,curl --write-case -o out_$format
  check "$format" exited 0
  suffix=''
  [[ $format == *gz ]] && suffix=.gz
  check "$format: files are named like those beside them" [ -s "$format/0.4/vorticity$suffix" ]
  check "$format: and written like them" eval \
    'body_of() { gzip -cdf "$1" | head -c 300 | tr -d "\0"; }; [ "$(body_of $format/0.4/Q$suffix | grep -ao "format .*;")" = "$(gzip -cdf $format/0.4/U$suffix | grep -ao "format .*;")" ]'
  run 1 gradient $format --field-file 0.4/Q --method plain --write-case -o out_again
  check "$format: they can be read" exited 0
done
check "text and compressed text have the same numbers" eval \
  'cmp -s <(body cavity/0.4/Q) <(body gz/0.4/Q.gz) && cmp -s <(body cavity/0.4/vorticity) <(body gz/0.4/vorticity.gz)'

echo "== decomposed"
for parts in cavity_parts:2 cavity_parts_binary_gz:3; do
  name=${parts%:*} ranks=${parts#*:}
  cp -r "$cases/$name" "$name"
  run "$ranks" gradient "$name" "${fields[@]}" --method plain --derive Q,curl --write-case -o "out_$name"
  check "$name" exited 0
  check "$name: a file in each processor folder" [ "$(find "$name"/processor*/0.* -name 'vorticity*' | wc -l)" = "$ranks" ]
done
cp -r "$cases/channel_parts" channel_parts
run 2 gradient channel_parts "${fields[@]}" --method plain --derive Q,curl --write-case -o out_channel_parts
check "a periodic case that was cut" exited 0
check "the cut periodic patches have their type and values" python3 - <<'END'
text = open("channel_parts/processor0/0.1/Q").read().split("boundaryField")[1]
entry = text.split("procBoundary0to1throughleft")[1].split("}")[0]
assert "processorCyclic" in entry and "List<scalar>" in entry, entry
assert text.count("cyclic;") == 4, text
END
check "values at cuts are those of the cells beyond them" python3 - <<'END'
import re
def field(processor):
    text = open("cavity_parts/processor%d/0.4/Q" % processor).read()
    cells = [float(n) for n in text.split("internalField")[1].split("(")[1].split(")")[0].split()]
    cut = text.split("procBoundary")[1].split("(")[1].split(")")[0].split()
    owner = open("cavity_parts/processor%d/constant/polyMesh/owner" % processor).read()
    owner = [int(n) for n in re.search(r"\n\d+\s*\((.*?)\)", owner, re.S).group(1).split()]
    boundary = open("cavity_parts/processor%d/constant/polyMesh/boundary" % processor).read().split("procBoundary")[1]
    start, n = (int(re.search(key + r"\s+(\d+)", boundary).group(1)) for key in ("startFace", "nFaces"))
    return [cells[c] for c in owner[start:start + n]], [float(v) for v in cut]
(own0, cut0), (own1, cut1) = field(0), field(1)
assert own0 == cut1 and own1 == cut0 and len(cut0) == 8, (own0, cut1)
END
for parts in cavity_collated:3 cavity_collated_text:2; do
  name=${parts%:*} ranks=${parts#*:}
  cp -r "$cases/$name" "$name"
  run "$ranks" gradient "$name" "${fields[@]}" --method plain --derive Q,curl --write-case -o "out_$name"
  check "$name" exited 0
  check "$name: one file with all pieces" [ "$(grep -ac '^// Processor' "$name/processors$ranks/0.4/vorticity")" = "$ranks" ]
  run "$ranks" gradient "$name" --field-file 0.4/Q --method plain --write-case -o out_piece
  check "$name: it can be read" exited 0
done

echo "== files of others"
cp -r cavity others
echo '// edited' >>others/0.4/Q
cp -r others before
run 1 gradient others "${fields[@]}" --method plain "${derived[@]}" --write-case -o out_others
check "an edited file stops the run" exited 2
check "in one line that says what to type" eval \
  'contains stderr "cannot write \"others/0.4/Q\": zyngrad did not write it, or it has changed since; --overwrite replaces it" && [ "$(wc -l <stderr)" = 1 ]'
check "the case is as it was" same_files before others
check "no output folder" [ ! -e out_others ]
run 1 gradient others "${fields[@]}" --method plain "${derived[@]}" --write-case --overwrite -o out_others
check "--overwrite replaces it" exited 0
check "and the case is like the first" same_files cavity others
gzip others/0.4/Q
run 1 gradient others "${fields[@]}" --method plain "${derived[@]}" --write-case -o out_others
check "a compressed one of ours gives way to text" eval 'exited 0 && [ ! -e others/0.4/Q.gz ]'
check "so that only one of them is there" same_files cavity others

echo "== failures leave the case as it was"
run 1 gradient cavity --field-file 0.4/U --method rbf --span 1e-9 --write-case -o out_nan
check "a faulty result ends with exit code 1" exited 1
check "and is not written" contains stdout 'nothing is written into the case'
check "the case is as it was" same_files first cavity
"$zyngrad" gradient cavity "${fields[@]}" --method lsq "${derived[@]}" --write-case -o out_full >/dev/full 2>stderr
code=$?
check "a full standard output ends with exit code 2" exited 2
check "and the case is as it was" same_files first cavity
mkdir elsewhere && cp cavity/0.4/U elsewhere/U
run 1 gradient cavity --field-file elsewhere/U --method lsq --write-case -o out_elsewhere
check "a field from elsewhere has no place in the case" eval \
  'exited 2 && contains stderr "is not a field in a time folder of the case \"cavity\"" && [ ! -e out_elsewhere ]'
check "no hidden files are left" [ -z "$(find . -name '.*zyngrad*')" ]
check "no unfinished files are left" no_parts_left

finish
