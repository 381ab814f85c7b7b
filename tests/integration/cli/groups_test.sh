#!/usr/bin/env bash
# Which boundary goes into which group: by the user, by type, by name; on meshes of Gmsh and OpenFOAM. Also --json, the
# geometry that info shows, and the origin of a study.
#   groups_test.sh ZYNGRAD_BINARY MPIRUN DATA_DIR
# shellcheck source=cli_test_support.sh
. "$(dirname "${BASH_SOURCE[0]}")/cli_test_support.sh"

plate=$data/gmsh_plate/plate.msh
cases=$data/openfoam_cases
line() { grep -qxF -- "$1" stdout; }
row() { tr -s ' ' <stdout | grep -qxF -- " $1"; }  # row TEXT: a line of a table, with single spaces

refused() {  # refused NAME TEXT ARGS...: exit code 2 and one line that ends with TEXT, on 1 and 2 ranks
  local name=$1 text=$2 ranks
  shift 2
  for ranks in 1 2; do
    run $ranks "$@"
    check "$name, $ranks ranks: exit code 2" exited 2
    check "$name, $ranks ranks: one line" [ "$(grep -c '^zyngrad: ' stderr)" = 1 ]
    check "$name, $ranks ranks: says what" grep -qF -- "$text" stderr
    check "$name, $ranks ranks: nothing on stdout" [ ! -s stdout ]
  done
}

# --- a mesh of Gmsh ------------------------------------------------------------------------------------------------------

refused "boundaries without a group" \
  "type --group 'back=wall' --group 'front=wall' --group 'hole*=wall' or --default-group wall (or inlet, outlet, symmetry)" \
  info "$plate"
for ranks in 1 2; do
  run $ranks info "$plate" --group 'hole*=wall' --default-group symmetry
  check "a pattern and the rest, $ranks ranks: exit code 0" exited 0
  check "a pattern and the rest, $ranks ranks: inlet" line "  inlet: inlet (name)"
  check "a pattern and the rest, $ranks ranks: symmetry" line "  symmetry: back, front (--default-group)"
  check "a pattern and the rest, $ranks ranks: walls" \
    line "  wall: lowerWall, upperWall (name); hole1, hole2, hole3 (--group 'hole*')"
done
printf '# holes are walls\n hole? = wall\r\n\nfront=symmetry\nback=outlet\nhole2=inlet\n' >groups.txt
for ranks in 1 2; do
  run $ranks gradient "$plate" --field "x*y" --method plain --groups groups.txt --group 'front=inlet' -o plate
  check "a file of groups, $ranks ranks: exit code 0" exited 0
  check "a file of groups, $ranks ranks: options win, names win over patterns" \
    line "  inlet: inlet (name); front (--group); hole2 (groups.txt:6)"
  check "a file of groups, $ranks ranks: the others" \
    line "  wall: lowerWall, upperWall (name); hole1, hole3 (groups.txt:2 'hole?')"
  check "a file of groups, $ranks ranks: in the results" contains plate/gradient.json '"reason": "groups.txt:6"'
done
for command in "faces $plate --field x --group inner" "points $plate --field x --body x-1.05" "check $plate" \
  "explain $plate --cell 1" "study $plate --method plain" "compare-ranks $plate --method plain --ranks 1"; do
  # shellcheck disable=SC2086
  run 1 $command --groups groups.txt
  check "${command%% *} takes --groups" [ "$code" -lt 2 ]
  # shellcheck disable=SC2086
  run 1 $command --default-group wall
  check "${command%% *} takes --default-group" [ "$code" -lt 2 ]
done

printf 'front=wall\nback\n' >wrong.txt
refused "a line without a group" '--groups wrong.txt:2: "back": expected NAME=inlet, outlet, wall or symmetry' \
  info "$plate" --groups wrong.txt
printf 'front=wall\n#\nhool*=wall\n' >wrong.txt
refused "a pattern in a file that matches nothing" "no boundary that matches 'hool*' (wrong.txt:3); it has 'inlet', " \
  info "$plate" --groups wrong.txt
refused "a pattern that matches nothing" \
  "no boundary that matches 'Hole*' (--group); it has 'inlet', 'outlet', 'lowerWall', 'upperWall', 'back', 'front', " \
  info "$plate" --group 'Hole*=wall'
refused "a missing file of groups" '--groups "none.txt": cannot be read' info "$plate" --groups none.txt
refused "a folder of groups" '--groups ".": cannot be read' info "$plate" --groups .
refused "a default group that is none" '--default-group "walls": expected inlet, outlet, wall or symmetry' \
  info "$plate" --default-group walls

# --- the types of OpenFOAM -----------------------------------------------------------------------------------------------

for ranks in 1 2; do
  run $ranks info "$cases/cavity"
  check "a plane case, $ranks ranks: its sides are walls" line "  wall: lid, sides (type wall); frontAndBack (type empty)"
  run $ranks info "$cases/wedge"
  check "a wedge, $ranks ranks: its sides are walls" line "  wall: pipe (type wall); front, back (type wedge)"
  check "a wedge, $ranks ranks: the others by name" line "  outlet: outlet (name)"
  run $ranks info "$cases/symmetry"
  check "planes of symmetry, $ranks ranks: walls" \
    line "  wall: ground (type wall); top (type symmetryPlane); sides (type symmetry)"
  run $ranks info "$cases/symmetry" --group top=symmetry
  check "planes of symmetry, $ranks ranks: unless the user says otherwise" line "  symmetry: top (--group)"
done

# The layer has no slope across, by any method.
run 1 gradient "$cases/cavity" --field-file 0.4/p -o cavity
check "a plane case: exit code 0" exited 0
check "a plane case: no slope across the layer" python3 - cavity/gradient.json <<'PYTHON'
import json
import sys
for method in json.load(open(sys.argv[1]))["methods"]:
    for result in method["gradients"]:
        for value in result["range"]["z"]:
            assert abs(value) < 1e-11, (method["method"], value)
PYTHON

# With values of the cells at the planes, the wall group gives what the symmetry group gives; in another order of additions
# where a cell has several boundary faces.
for group in wall symmetry; do
  run 1 gradient "$cases/symmetry" --field-file 0.05/p --method plain,iterated,lsq --group top=$group --group sides=$group \
    -o planes-$group
  check "planes of symmetry as $group: exit code 0" exited 0
done
check "planes of symmetry: the same gradients in either group" python3 - planes-*/gradient.json <<'PYTHON'
import json
import sys
wall, symmetry = ([(m["method"], g["boundary"][norm]) for m in json.load(open(name))["methods"] for g in m["gradients"]
                   for norm in ("l1", "l2", "max")] for name in sorted(sys.argv[1:], reverse=True))
assert len(wall) == 9 and all(a[0] == b[0] and abs(a[1] - b[1]) < 1e-12 * a[1] for a, b in zip(wall, symmetry)), (wall, symmetry)
PYTHON
run 1 check "$cases/symmetry" -o sound
check "planes of symmetry: sound for all methods" exited 0
run 1 check "$cases/symmetry" --group sides=symmetry -o spoiled
check "planes of symmetry in the symmetry group: not sound" exited 1

# --- geometry, JSON ------------------------------------------------------------------------------------------------------

for ranks in 1 2 3; do
  run $ranks info "$cases/wedge"
  check "geometry, $ranks ranks: types of cells" row "cells 24 hexahedra, 6 prisms"
  run $ranks info box:2,4,8
  check "geometry, $ranks ranks: bounding box" row "highest corner (1, 1, 1)"
  check "geometry, $ranks ranks: volume" row "volume 1.00000e+00"
  check "geometry, $ranks ranks: aspect ratio" grep -q "^  greatest aspect ratio *4\.00 in cell [1-9]" stdout
done

is_json() {  # is_json FILE PYTHON: the whole file is JSON, and the condition holds for `d`
  python3 -c "import json, sys; d = json.load(open(sys.argv[1])); assert ($2), d" "$1"
}
for ranks in 1 2; do
  run $ranks info "$cases/wedge" --json
  check "info --json, $ranks ranks: exit code 0" exited 0
  check "info --json, $ranks ranks" is_json stdout 'd["command"] == "info" and d["mesh"]["cells"] == 30 and
    d["cellTypes"]["prisms"] == 6 and d["mesh"]["patches"][3]["reason"] == "type wedge" and d["volume"]["least"] > 0 and
    d["aspectRatio"]["max"] >= d["aspectRatio"]["mean"] and len(d["boundingBox"]["from"]) == 3'
  run $ranks explain "$cases/wedge" --cell 17 --json
  check "explain --json, $ranks ranks: exit code 0" exited 0
  check "explain --json, $ranks ranks" is_json stdout 'd["command"] == "explain" and d["cell"] == 17 and
    d["members"][0]["cell"] == 17 and d["order"] == len(d["members"]) + 1 and
    abs(sum(m["weights"][0] for m in d["members"]) - d["sumOfWeights"][0]) < 1e-9'
  run $ranks check box:4,4,4 --json --group-faces inner -o checked
  check "check --json, $ranks ranks: exit code 0" exited 0
  check "check --json, $ranks ranks: that of the file" cmp -s stdout checked/check.json
  check "check --json, $ranks ranks" is_json stdout 'd["sound"] and len(d["checked"]) == 2'
  run $ranks check box:4,4,4 --json --group wall_ymin=symmetry -o checked
  check "check --json, findings, $ranks ranks: exit code 1" exited 1
  check "check --json, findings, $ranks ranks" is_json stdout 'not d["sound"]'
  for command in info check "explain --cell 1"; do
    # shellcheck disable=SC2086
    run $ranks $command nowhere.msh --json
    check "$command --json of a missing mesh, $ranks ranks: exit code 2" exited 2
    check "$command --json of a missing mesh, $ranks ranks: one line on stderr" [ "$(grep -c '^zyngrad: ' stderr)" = 1 ]
    check "$command --json of a missing mesh, $ranks ranks: nothing on stdout" [ ! -s stdout ]
  done
done

# --- the origin of a study -----------------------------------------------------------------------------------------------

export SOURCE_DATE_EPOCH=1000000000
for ranks in 1 2; do
  run $ranks study "$plate" --method plain --field "x*y" --group 'hole*=wall' --default-group wall -o study
  check "study, $ranks ranks: exit code 0" exited 0
  command="zyngrad study $plate --method plain --field 'x*y' --group 'hole*=wall' --default-group wall -o study"
  [ $ranks = 1 ] || command="mpirun -n $ranks $command"
  check "study, $ranks ranks: its command line" grep -qxF "$command" study/study.md
  check "study, $ranks ranks: in the page, too" grep -qF "<pre>${command//\'/\'}</pre>" study/report.html
  check "study, $ranks ranks: its date" contains study/study.json '"date": "2001-09-09T01:46:40Z"'
  check "study, $ranks ranks: its processor" [ "$(grep -c '"processor": "..*"' study/study.json)" = 1 ]
  [ $ranks = 1 ] || continue
  pasted=$(grep '^zyngrad study' study/study.md)
  (PATH=$(dirname "$zyngrad"):$PATH; eval "$pasted") >stdout 2>stderr
  check "study: its command line can be pasted" [ $? = 0 ]
done
export SOURCE_DATE_EPOCH=yesterday
refused "a date that is none" 'SOURCE_DATE_EPOCH "yesterday": expected seconds since 1970' study box:2,2,2 --method plain
unset SOURCE_DATE_EPOCH

finish
