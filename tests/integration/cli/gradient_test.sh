#!/usr/bin/env bash
# zyngrad gradient, info and explain: results, files, and the same results on several ranks.
#   gradient_test.sh ZYNGRAD_BINARY MPIRUN DATA_DIR
# shellcheck source=cli_test_support.sh
. "$(dirname "${BASH_SOURCE[0]}")/cli_test_support.sh"

make_meshes
make_case

# --- help and version ------------------------------------------------------------------------------------------------

for ranks in 1 2; do
  run $ranks --version
  check "--version on $ranks ranks: exit code 0" exited 0
  check "--version on $ranks ranks: printed once" [ "$(grep -c '^zyngrad [0-9]' stdout)" = 1 ]
  run $ranks --help
  check "--help on $ranks ranks names the commands" contains stdout "gradient"
  run $ranks gradient --help
  check "gradient --help on $ranks ranks: exit code 0" exited 0
  check "gradient --help on $ranks ranks shows examples once" [ "$(grep -c '^Examples:' stdout)" = 1 ]
  run $ranks info --help
  check "info --help on $ranks ranks shows examples once" [ "$(grep -c '^Examples:' stdout)" = 1 ]
done

# Every option in a help text belongs to the command.
for command in gradient faces points study check compare-ranks info explain; do
  run 1 $command --help
  for option in $(grep -o -- '--[a-z][a-z-]*' stdout | sort -u); do
    run 1 $command "$option"
    check "$command takes $option" [ "$(grep -c 'not expected' stderr)" = 0 ]
  done
done

# --- gradient, all methods -------------------------------------------------------------------------------------------

for ranks in 1 2 4; do
  for mesh in box:6,5,4 box:5,4,4:tet:perturb=0.2,seed=3 box:4,4,4:prism; do
    run $ranks gradient "$mesh" --field "1 + 2*x - 3*y + 4*z" -o "linear-$ranks"
    check "linear field, $mesh, $ranks ranks: exit code 0" exited 0
    check "linear field, $mesh, $ranks ranks: nothing on stderr" [ ! -s stderr ]
    for method in plain iterated weighted lsq vector rbf; do
      check "linear field, $mesh, $ranks ranks: row of $method" grep -q "^  $method  *interior" stdout
    done
    # The fourth method is lsq; each has its l2 for interior and for boundary cells.
    check "linear field, $mesh, $ranks ranks: lsq exact in interior cells" \
      below "$(number "linear-$ranks/gradient.json" l2 7)" 1e-12
    check "linear field, $mesh, $ranks ranks: lsq exact in boundary cells" \
      below "$(number "linear-$ranks/gradient.json" l2 8)" 1e-12
    check "linear field, $mesh, $ranks ranks: no unfinished file" no_parts_left
    if [ $ranks = 1 ]; then
      check "linear field, $mesh: grid with all arrays" grid_has linear-1/gradient.vtu field exact_gradient \
        gradient_plain error_plain gradient_iterated gradient_weighted gradient_lsq gradient_vector error_vector gradient_rbf rank cell
    else
      check "linear field, $mesh, $ranks ranks: index lists $ranks pieces" \
        [ "$(grep -c '<Piece Source="gradient/gradient' "linear-$ranks/gradient.pvtu")" = "$ranks" ]
      check "linear field, $mesh, $ranks ranks: last piece is there" \
        grid_has "linear-$ranks/gradient/gradient.000$((ranks - 1)).vtu" field error_lsq rank
    fi
    check "linear field, $mesh, $ranks ranks: a log per rank" [ -f "linear-$ranks/log.rank$((ranks - 1)).txt" ]
  done
  run $ranks gradient box:6,6,6 --field "x*y" --field "y*z" --field "sin(z)" --method vector -o "vector-$ranks"
  check "vector of three fields, $ranks ranks" exited 0
  check "vector of three fields, $ranks ranks: a row each" [ "$(grep -c '^  vector\.[123] ' stdout)" = 3 ]
done

# 1, 2 and 4 ranks give the same results except for the last bits, because the sums run in another order.
for ranks in 1 2 4; do run $ranks gradient box:8,8,8 --field "sin(3*x)*y + z^2" -o "same-$ranks"; done
for entry in 1 2 3 4 5 6 7 8 9 10; do
  for ranks in 2 4; do
    a=$(number same-1/gradient.json l2 $entry)
    b=$(number same-$ranks/gradient.json l2 $entry)
    check "l2 number $entry agrees between 1 and $ranks ranks ($a, $b)" \
      awk -v a="$a" -v b="$b" 'BEGIN { d = a - b; exit !(a != "" && d <= 1e-12 * a && -d <= 1e-12 * a) }'
  done
done

run 2 gradient box:6,6,6 --field "x^2" -o blocking
run 2 gradient box:6,6,6 --field "x^2" -o non-blocking --non-blocking
check "non-blocking exchanges give the same errors" [ "$(grep '"l2"' blocking/gradient.json)" = "$(grep '"l2"' non-blocking/gradient.json)" ]
run 2 gradient box:6,6,6 --field "x^2" -o blocking-again
check "a second run gives the same bits" [ "$(grep -E '"(l1|l2|max)"' blocking/gradient.json)" = "$(grep -E '"(l1|l2|max)"' blocking-again/gradient.json)" ]

run 1 gradient box:6,6,6:tet --field "x^2 + y" --method iterated --sweeps 5 --repeat 1 -o iterated
check "iterated with --sweeps" contains iterated/gradient.json '"sweeps": 5'
run 1 gradient box:6,6,6 --field x --method lsq,plain --method rbf -o list
check "methods between commas and one by one: each has a row" [ "$(grep -c ' interior ' stdout)" = 3 ]
run 1 gradient box:6,6,6 --field x --field y --field z --method vector,plain -o list
check "vector and plain of three fields: exit code 0" exited 0
run 1 gradient box:6,6,6 --field "sin(3*x)*y" -o equal
check "equal rows: says why" [ "$(grep -c '^  \(weighted\|vector\): the same numbers as plain' stdout)" = 2 ]
check "equal rows: they are" [ "$(grep '^  \(plain\|weighted\|vector\)  *interior' stdout | awk '{ print $4, $5, $7 }' | sort -u | wc -l)" = 1 ]
for ranks in 1 2; do
  run $ranks gradient box:5,5,5 --field "x*y" --method plain,rbf --span 1e-308 -o tiny
  check "a span too small, $ranks ranks: exit code 1" exited 1
  check "a span too small, $ranks ranks: method, cells and reason" \
    contains stdout "  rbf: the gradient is not finite in 125 of 125 cells: --span 1e-308 is too small"
  check "a span too small, $ranks ranks: files are written" [ -s tiny/gradient.json ]
done
run 1 gradient box:5,5,5 --field "x*y" --method rbf --shape-normalize --span 1e308 -o tiny
check "a span too large that gives finite numbers: exit code 1" exited 1
check "a span too large that gives finite numbers: says why" \
  contains stdout "  rbf: the gradient is meaningless: --span 1e+308 is too large"
run 1 gradient box:5,5,5 --field "x*y" --method weighted --weight 0 -o zero
check "a weight of 0: exit code 0" exited 0
run 1 gradient box:6,6,6 --field -x --method plain -o minus
check "a formula may begin with a minus" exited 0
run 1 gradient --field x box:3,3,3 --method weighted --weight "1+x" -o weighted
check "options may come before the mesh" exited 0
run 1 gradient box:1,1,1 --field "x+y" -o one-cell
check "one cell" exited 0
run 4 gradient box:4,1,1 --field "x+y" -o four-cells
check "four cells on four ranks" exited 0

mkdir kept
run 2 gradient box:4,4,4 --field x -o kept
check "an existing folder is used" [ -f kept/gradient.pvtu ]
run 1 gradient box:4,4,4 --field x -o kept
check "a later run on one rank removes the index of the earlier" [ ! -e kept/gradient.pvtu ]
check "a later run on one rank removes the pieces of the earlier" [ ! -e kept/gradient ]
check "a later run on one rank removes the logs of the earlier" [ ! -e kept/log.rank1.txt ]

for ranks in 1 2; do
  run $ranks gradient meshes/polyhedra --group lid=wall --field "x+2*y" -o polyhedra-$ranks
  check "polyhedra on $ranks ranks: exit code 0" exited 0
  check "polyhedra on $ranks ranks: lsq exact" below "$(number polyhedra-$ranks/gradient.json l2 8)" 1e-12
  run $ranks gradient meshes/pyramid.msh --field "x+2*y" -o pyramid-$ranks
  check "pyramid and tetrahedron on $ranks ranks: exit code 0" exited 0
  check "pyramid and tetrahedron on $ranks ranks: lsq exact" below "$(number pyramid-$ranks/gradient.json l2 8)" 1e-12
  run $ranks info meshes/walls
  check "info on polyhedra on $ranks ranks" grep -q "^  wall  *wall  *name  *10$" stdout
done
check "polyhedra are written with their faces" grid_has polyhedra-1/gradient.vtu faces faceoffsets

# --- a decomposed case, fields from files ------------------------------------------------------------------------------

run 1 gradient meshes/case --field "x+2*y" -o whole-formula
run 2 gradient meshes/decomposed --field "x+2*y" -o decomposed-formula
check "decomposed case: exit code 0" exited 0
check "decomposed case: lsq exact" below "$(number decomposed-formula/gradient.json l2 8)" 1e-12
check "decomposed case: cells and nodes of the whole" \
  [ "$(grep -E '"(cells|nodes)": ' decomposed-formula/gradient.json)" = "$(grep -E '"(cells|nodes)": ' whole-formula/gradient.json)" ]
for ranks in 1 2; do
  run $ranks gradient meshes/case --field-file 0/T -o field-$ranks
  check "field from a file on $ranks ranks: exit code 0" exited 0
  check "field from a file on $ranks ranks: nothing on stderr" [ ! -s stderr ]
  check "field from a file on $ranks ranks: no warning" [ "$(grep -c warning stdout)" = 0 ]
  check "field from a file on $ranks ranks: sizes instead of errors" contains stdout "the exact gradient is not known"
  check "field from a file on $ranks ranks: row of every method" [ "$(grep -cE '^  (plain|iterated|weighted|lsq|vector|rbf) +boundary|^ +boundary' stdout)" = 6 ]
done
# Green-Gauss of the left cell: (4 faces of value 0..4, the middle at 3) by hand: (3 - 0, 4 - 3, 2 - 1).
check "field from a file: plain gradient as by hand" contains <(tr -d ' \n' <field-1/gradient.json) '"range":{"x":[2.0,3.0],"y":[1.0,1.0],"z":[1.0,1.0]}'
check "field from a file: grid has field and gradients" grid_has field-1/gradient.vtu field gradient_plain gradient_rbf rank cell
check "field from a file: grid has no errors" [ "$(grep -acE 'Name="(exact_gradient|error_plain)"' field-1/gradient.vtu)" = 0 ]
check "field from a file: named in the results" contains field-1/gradient.json '"fieldFiles"'
run 2 gradient meshes/decomposed --field-file 0/T -o field-decomposed
check "field of a decomposed case: exit code 0" exited 0
for entry in $(seq 1 12); do
  a=$(number field-1/gradient.json l2 $entry)
  for other in 2 decomposed; do
    b=$(number field-$other/gradient.json l2 $entry)
    # The radial-basis systems of these two cells have a condition number of about 1e5.
    check "field from a file, l2 number $entry agrees with field-$other ($a, $b)" \
      awk -v a="$a" -v b="$b" 'BEGIN { d = a - b; exit !(a == b || (d <= 1e-9 * a && -d <= 1e-9 * a)) }'
  done
done
run 1 gradient meshes/case --field-file meshes/case/0/bare --method plain -o bare
check "field without boundary values: exit code 0" exited 0
check "field without boundary values: one warning" \
  [ "$(grep -c 'warning: "meshes/case/0/bare" has no values for the faces of "wall"' stdout)" = 1 ]
check "field without boundary values: the warning in the results" contains bare/gradient.json '"warnings"'
run 2 gradient meshes/case --field-file 0/T --field-file 0/T --field-file 0/bare --method vector -o three-files
check "three fields from files: a row each" [ "$(grep -c '^  vector\.[123]  *interior' stdout)" = 3 ]

# --- info ------------------------------------------------------------------------------------------------------------

for ranks in 1 2 4; do
  run $ranks info box:4,4,4
  check "info on $ranks ranks: exit code 0" exited 0
  check "info on $ranks ranks: patches with groups" grep -q "^  wall_ymin  *wall  *name  *16$" stdout
  check "info on $ranks ranks: printed once" [ "$(grep -c 'skewness' stdout)" = 1 ]
done

# --- radial basis: settings, symmetry, ranks, one cell explained ------------------------------------------------------

echo "mine" >users.rbf
echo "mine" >.rbf
for ranks in 1 2 4; do
  for mesh in box:6,5,4 box:5,4,4:tet:perturb=0.2,seed=3; do
    run $ranks gradient "$mesh" --field "7" --method rbf -o "constant-$ranks"
    check "rbf, $mesh, $ranks ranks: exit code 0" exited 0
    check "rbf, $mesh, $ranks ranks: nothing on stderr" [ ! -s stderr ]
    # Weights of about 10 each, so 7 times their sum is a few hundred roundings away from zero.
    check "rbf, $mesh, $ranks ranks: no slope of a constant, interior cells" \
      below "$(number "constant-$ranks/gradient.json" l2 1)" 1e-12
    check "rbf, $mesh, $ranks ranks: no slope of a constant, boundary cells" \
      below "$(number "constant-$ranks/gradient.json" l2 2)" 1e-12
    check "rbf, $mesh, $ranks ranks: settings of every rank" \
      [ "$(cat "constant-$ranks"/settings.rank*.rbf | grep -c '^Span              = 500$')" = "$ranks" ]
    check "rbf, $mesh, $ranks ranks: the operator's lines are in the log" \
      contains "constant-$ranks/log.rank$((ranks - 1)).txt" "Span = 500.000000"
    check "rbf, $mesh, $ranks ranks: nobody adopted defaults" \
      [ "$(cat "constant-$ranks"/log.rank*.txt | grep -c Default)" = 0 ]
    check "rbf, $mesh, $ranks ranks: no unfinished file" [ -z "$(find . -name '*.part*')" ]
  done
  run $ranks gradient box:8,8,8 --field "sin(3*x)*y + z^2" --method rbf --span 50 -o "rbf-$ranks"
  check "rbf with a span of 50, $ranks ranks: settings" contains "rbf-$ranks/settings.rank0.rbf" "Span              = 50"
  run $ranks gradient box:4,3,2 --field x --method rbf --group wall_zmin=symmetry --group wall_ymin=symmetry -o sides
  check "rbf beside symmetry faces, $ranks ranks: exit code 0" exited 0
  check "rbf beside symmetry faces, $ranks ranks: warns with the number of cells" \
    [ "$(grep 'in 16 cells' stdout | grep -c -- '--group NAME=wall')" = 1 ]
done
# At a span of 50 the condition number of these cells is about 1e6.
for ranks in 2 4; do
  for entry in 1 2; do
    a=$(number rbf-1/gradient.json l2 $entry)
    b=$(number rbf-$ranks/gradient.json l2 $entry)
    check "rbf, l2 number $entry agrees between 1 and $ranks ranks ($a, $b)" \
      awk -v a="$a" -v b="$b" 'BEGIN { d = a - b; exit !(a != "" && d <= 1e-8 * a && -d <= 1e-8 * a) }'
  done
done
run 1 gradient box:3,3,3 --field x --method rbf --shape-normalize -o shape
check "rbf, shape-normalised: settings" contains shape/settings.rank0.rbf "Shape Normalize   = 1"
check "rbf, shape-normalised: the operator saw it" contains shape/log.rank0.txt "iShape_Normalize = On"
check "rbf, shape-normalised: says what it gives" contains stdout "times Span and the stencil's extent"
run 1 gradient box:3,3,3 --field x --method plain -o constant-4
check "settings of an earlier run are removed" [ -z "$(find constant-4 -name '*.rbf')" ]
for ranks in 1 2 4; do
  run $ranks explain box:3,3,3 --cell 14
  check "explain, $ranks ranks: exit code 0" exited 0
  check "explain, $ranks ranks: nothing on stderr" [ ! -s stderr ]
  check "explain, $ranks ranks: the cell is its first member" grep -Eq "^ +1 +14 +interior +\(0\.5, 0\.5, 0\.5\)" stdout
  check "explain, $ranks ranks: central difference over two thirds" \
    [ "$(grep -o -- '1\.50008[0-9]*e+00' stdout | wc -l)" = 6 ]
  check "explain, $ranks ranks: printed once" [ "$(grep -c 'condition number of the system of order 8' stdout)" = 1 ]
  check "explain, $ranks ranks: none of the operator's own lines" [ "$(grep -c 'ok!' stdout)" = 0 ]
done
check "other .rbf files are left alone" [ "$(cat users.rbf .rbf)" = "$(printf 'mine\nmine')" ]
check "no .rbf file beside them" [ "$(find . -maxdepth 1 -name '*.rbf' | wc -l)" = 2 ]

# --- meshes of the repository ----------------------------------------------------------------------------------------

for mesh in "$data"/*.msh; do
  [ -f "$mesh" ] || continue
  for ranks in 1 2; do
    run $ranks info "$mesh"
    check "info on $(basename "$mesh"), $ranks ranks" exited 0
  done
done

finish
