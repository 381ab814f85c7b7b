#!/usr/bin/env bash
# zyngrad check, study and compare-ranks.
#   study_and_check_test.sh ZYNGRAD_BINARY MPIRUN DATA_DIR
# shellcheck source=cli_test_support.sh
. "$(dirname "${BASH_SOURCE[0]}")/cli_test_support.sh"

make_meshes
make_points
cell_within_a_cell meshes/shell

# --- check -----------------------------------------------------------------------------------------------------------

# The part of the output on the cells, which does not depend on the number of ranks.
of_cells() { sed -n '/^[0-9,]* cells$/,/^all results\|^NOT all/p' "$1"; }
finding() { grep -A 1 "\"$2\": {" "$1" | number /dev/stdin count 1; }  # finding FILE KEY

for ranks in 1 2; do
  run $ranks check --help
  check "check --help, $ranks ranks: examples once" [ "$(grep -c '^Examples:' stdout)" = 1 ]
  run $ranks check box:5,5,5:tet:perturb=0.2 --group wall_zmin=symmetry -o check-$ranks
  check "check of a mesh with symmetry, $ranks ranks: exit code 1" exited 1
  check "check of a mesh with symmetry, $ranks ranks: no error line" [ "$(grep -c '^zyngrad' stderr)" = 0 ]
  check "check of a mesh with symmetry, $ranks ranks: counts what is wrong" \
    contains stdout "all results would be finite numbers, but WRONG in 50 of 750 cells"
  check "check of a mesh with symmetry, $ranks ranks: histogram" grep -q "^  log10 condition  cells$" stdout
  check "check of a mesh with symmetry, $ranks ranks: json says so" contains check-$ranks/check.json '"finite": true,'
  check "check of a mesh with symmetry, $ranks ranks: cells beside symmetry" [ "$(finding check-$ranks/check.json besideSymmetry)" = 50 ]
  check "check of a mesh with symmetry, $ranks ranks: members at the origin" [ "$(finding check-$ranks/check.json memberAtOrigin)" = 50 ]
  check "check of a mesh with symmetry, $ranks ranks: ten worst" [ "$(grep -c '"nonOrthogonalityDegrees": [0-9]' check-$ranks/check.json)" = 10 ]
  check "check of a mesh with symmetry, $ranks ranks: what operators print is in the log" contains check-$ranks/log.rank0.txt "method lsq"
  check "check of a mesh with symmetry, $ranks ranks: no unfinished file" no_parts_left
  of_cells stdout >check-$ranks/cells.txt
  check "check of a mesh with symmetry, $ranks ranks: the same table" cmp -s check-1/cells.txt check-$ranks/cells.txt
  run $ranks check box:5,5,5:tet:perturb=0.2 -o sound
  check "check of a sound mesh, $ranks ranks: exit code 0" exited 0
  check "check of a sound mesh, $ranks ranks: nothing on stderr" [ ! -s stderr ]
  check "check of a sound mesh, $ranks ranks: says so" \
    contains stdout "all results would be finite numbers, and none would be wrong"
  check "check, $ranks ranks: names cells as cells" grep -q "^  worst cell  at " stdout
  run $ranks check box:6,6,1 --group wall_zmin=symmetry --group wall_zmax=symmetry --method rbf -o plane
  check "check of a plane with symmetry, $ranks ranks: exit code 1" exited 1
  check "check of a plane with symmetry, $ranks ranks: every cell is wrong" contains stdout "WRONG in 36 of 36 cells"
  run $ranks check box:6,6,1 --method rbf -o plane
  check "check of a plane with walls, $ranks ranks: exit code 0" exited 0

  run $ranks check meshes/shell -o shell-$ranks
  check "check of a cell within a cell, $ranks ranks: exit code 1" exited 1
  check "check of a cell within a cell, $ranks ranks: says what" contains stdout "  weights not finite: 1 of 2 cells"
  check "check of a cell within a cell, $ranks ranks: zero pivot" contains stdout "  least squares stops: zero pivot: 1 of 2 cells"
  check "check of a cell within a cell, $ranks ranks: one position" [ "$(finding shell-$ranks/check.json coincidentMembers)" = 2 ]
  check "check of a cell within a cell, $ranks ranks: json" contains shell-$ranks/check.json '"finite": false,'
  of_cells stdout >shell-$ranks/cells.txt
  check "check of a cell within a cell, $ranks ranks: the same table" cmp -s shell-1/cells.txt shell-$ranks/cells.txt
  run $ranks check meshes/shell --methods plain,iterated,vector,weighted -o shell-$ranks  # the earlier spelling
  check "check of Green-Gauss only, $ranks ranks: exit code 0" exited 0
  check "check of Green-Gauss only, $ranks ranks: no systems" [ "$(grep -c 'condition' stdout)" = 1 ]

  run $ranks check box:4,4,4 --method rbf --span 1e60 -o wide
  check "check of a span beyond all numbers, $ranks ranks: exit code 1" exited 1
  check "check of a span beyond all numbers, $ranks ranks: all cells" contains stdout "weights not finite: 64 of 64 cells"
  run $ranks check box:6,6,6 --method plain --group-faces inner --group-faces wall --points points.csv -o systems-$ranks
  check "check of faces and points, $ranks ranks: exit code 1" exited 1
  check "check of faces and points, $ranks ranks: counts the point far away" \
    contains stdout "all results would be finite numbers, but WRONG in 1 of 6 points"
  check "check of faces and points, $ranks ranks: wall faces" contains stdout "144 wall faces"
  check "check of faces and points, $ranks ranks: points" contains stdout "6 points"
  run $ranks check box:6,6,6 --method plain --points points.csv --span 1e60 -o wide
  check "check of points, span beyond all numbers, $ranks ranks: exit code 1" exited 1
  check "check of points, span beyond all numbers, $ranks ranks: says what" contains stdout "weights not finite: 6 of 6 points"
  run $ranks check box:9,9,9 --method lsq --body "(x-0.5)^2+(y-0.5)^2+(z-0.5)^2-0.1" --point-method 2 -o body-check
  check "check of a body's points, $ranks ranks: exit code 0" exited 0
done
check "check on one rank: grid with all measures" grid_has check-1/check.vtu condition row_sum_off skewness \
  non_orthogonality volume members severity findings rank cell
check "check on two ranks: index and pieces" grid_has check-2/check/check.0001.vtu condition findings
check "check on two ranks: index lists both" [ "$(grep -c '<Piece Source="check/check' check-2/check.pvtu)" = 2 ]

# --- study -----------------------------------------------------------------------------------------------------------

for ranks in 1 2; do
  run $ranks study --series tet --levels 2 --method plain,lsq,rbf,faces2,points3 --field trigonometric -o "study-$ranks"
  check "study, $ranks ranks: exit code 0" exited 0
  check "study, $ranks ranks: nothing on stderr" [ ! -s stderr ]
  check "study, $ranks ranks: a table for each quantity and one of costs" [ "$(grep -c '^errors of the\|^cost per' stdout)" = 5 ]
  check "study, $ranks ranks: files" [ -s "study-$ranks/report.html" -a -s "study-$ranks/study.json" -a -s "study-$ranks/study.md" ]
  check "study, $ranks ranks: says how many plots" contains stdout "$(ls study-$ranks/*.svg | wc -l) plots"
  check "study, $ranks ranks: no unfinished file" no_parts_left
  check "study, $ranks ranks: the page fetches nothing" [ "$(grep -c 'src=\|href=\|<script' "study-$ranks/report.html")" = 0 ]
done
# Orders on tetrahedra: none for plain Green-Gauss, first for least squares and radial basis.
study_order() {  # study_order METHOD: between the two levels
  local e1 e2
  e1=$(grep -A2 "^  $1 " stdout | sed -n 1p | awk '{ print $(NF - 5) }')
  e2=$(grep -A2 "^  $1 " stdout | sed -n 2p | awk '{ print $(NF - 4) }')
  [ -n "$e1" ] && echo "$e2"
}
run 1 study --series tet --levels 2 --method plain,lsq --field trigonometric -o study-orders
check "study: plain Green-Gauss does not converge on tetrahedra" below "$(study_order plain)" 0.3
check "study: least squares is of first order" agree "$(study_order lsq)" 1.0 0.2
l2() { number "$1/study.json" l2 "$2"; }
for k in 1 2 3 4; do
  check "study: gradients agree between 1 and 2 ranks, number $k" agree "$(l2 study-1 $k)" "$(l2 study-2 $k)" 1e-9
done
run 1 study box:8,8,8 box:4,4,4 --method lsq --field trigonometric -o study-fine
check "study from fine to coarse: exit code 0" exited 0
check "study from fine to coarse: says so" contains stdout "the meshes are listed from coarse to fine, not in the order given"
check "study from fine to coarse: the coarse mesh first" grep -q "^  lsq  *64 .* - " stdout
check "study from fine to coarse: no negative order" [ "$(grep -c ' -[0-9]' stdout)" = 0 ]
run 1 study --series hex --levels 1 --method rbf,faces2 --span 1e-308 --field linear -o study-tiny
check "study with a span too small: exit code 1" exited 1
check "study with a span too small: says why" grep -q "^  rbf, Span 1e-308 on box:6,6,6:hex: the gradient is not finite at 216 of 216 places: --span" stdout
run 1 study --series hex --levels 2 --method plain,weighted --weight "1+x" --field linear -o study-weight
check "study with a weight: rows differ" [ "$(grep -c '^  weighted: the same' stdout)" = 0 ]
check "study with a weight: in the results" contains study-weight/study.json '"weight": "1+x"'
run 1 study box:3,3,3 box:4,4,4:prism --method rbf --span 5,500 --field linear --field "x*y" -o study-list
check "study of a list of meshes: exit code 0" exited 0
check "study of a list of meshes: their names" [ "$(grep -c '"mesh": "box:4,4,4:prism"' study-list/study.json)" = 1 ]
check "study of spans: the plot against Span" [ -s study-list/linear-gradient-span.svg -a -s study-list/condition-span.svg ]
run 1 study --series box:2,2,2:dual --levels 1 --method iterated --sweeps 1,2,3 -o study-sweeps
check "study of sweeps: the plot against sweeps" [ -s study-sweeps/trigonometric-gradient-sweeps.svg ]
run 1 study --series skewed --levels 1 --method all -o study-all
check "study of all methods: exit code 0" exited 0
for series in hex perturbed prism stretched polyhedra; do
  run 1 study --series $series --levels 1 --method gradients -o study-all
  check "study of the series $series: exit code 0" exited 0
done
check "study: a later run removes no plot of its own" [ -s study-all/trigonometric-gradient-interior.svg ]
if command -v python3 >/dev/null; then
  check "study: the numbers can be read" python3 -c "import json; json.load(open('study-1/study.json'))"
fi

# --- compare-ranks ---------------------------------------------------------------------------------------------------

for mesh in box:6,6,6:tet box:8,8,8:hex:perturb=0.2,seed=3 box:4,4,4:dual; do
  run 1 compare-ranks $mesh --ranks 1,2,4
  check "compare-ranks on $mesh: exit code 0" exited 0
  check "compare-ranks on $mesh: a table a count" [ "$(grep -c '^largest difference' stdout)" = 3 ]
  check "compare-ranks on $mesh: the same bits again" [ "$(grep -c 'same bits' stdout)" = 36 ]
  check "compare-ranks on $mesh: nothing is broken" [ "$(grep -c 'different bits\|BROKEN' stdout)" = 0 ]
done
cp stdout alone
run 2 compare-ranks box:4,4,4:dual --ranks 1,2,4
check "compare-ranks under mpirun: exit code 0" exited 0
check "compare-ranks under mpirun: the same text" cmp -s alone stdout
run 1 compare-ranks meshes/polyhedra --ranks 2,1 --group lid=wall --field "x*y" --span 50 --sweeps 5
check "compare-ranks on a file: exit code 0" exited 0
run 1 compare-ranks box:4,4,4 --ranks 1,2 --method plain --method rbf --span 1e-308
check "compare-ranks with a span too small: exit code 1" exited 1
check "compare-ranks with a span too small: says why" contains stdout "rbf, Span 1e-308: not finite at 64 of 64 places: --span 1e-308 is too small"

finish
