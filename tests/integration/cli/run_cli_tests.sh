#!/usr/bin/env bash
# Runs zyngrad as a user would: whole commands, on one and several ranks, with right and wrong input.
#   run_cli_tests.sh ZYNGRAD_BINARY MPIRUN DATA_DIR
# One line per check, then "N passed, M failed"; exit code 1 if any failed.
set -u

zyngrad=$(realpath "$1")
mpirun=$2
data=$(realpath "$3")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1

export OMPI_ALLOW_RUN_AS_ROOT=1 OMPI_ALLOW_RUN_AS_ROOT_CONFIRM=1 OMPI_MCA_rmaps_base_oversubscribe=1
export OMPI_MCA_mpi_yield_when_idle=1 OMPI_MCA_btl_vader_single_copy_mechanism=none OMP_NUM_THREADS=1
: "${OMPI_MCA_plm:=isolated}"
export OMPI_MCA_plm

passed=0
failed=0

check() {  # check NAME COMMAND...: the command must succeed
  local name=$1
  shift
  if "$@"; then
    passed=$((passed + 1))
    echo "ok      $name"
  else
    failed=$((failed + 1))
    echo "FAILED  $name"
    sed 's/^/        | /' stdout stderr 2>/dev/null | head -n 40
  fi
}

run() {  # run RANKS ARGS...: stdout, stderr and the exit code into files; a hang ends after two minutes
  local ranks=$1
  shift
  if [ "$ranks" = 1 ]; then
    timeout 120 "$zyngrad" "$@" >stdout 2>stderr </dev/null
  else
    timeout 120 "$mpirun" -n "$ranks" "$zyngrad" "$@" >stdout 2>stderr </dev/null
  fi
  code=$?
}

contains() { grep -qF -- "$2" "$1"; }
exited() { [ "$code" = "$1" ]; }

# The value of the N-th occurrence of a number in the results file, counted from 1.
number() {  # number FILE KEY N
  grep -o "\"$2\": [-+0-9.e]*" "$1" | sed -n "$3p" | sed 's/.*: //'
}

# The same behind the word "results": what is said of the mesh has numbers of the same names.
result() {  # result FILE KEY N
  sed -n '/^  "results"/,$p' "$1" | grep -o "\"$2\": [-+0-9.e]*" | sed -n "$3p" | sed 's/.*: //'
}

below() {  # below VALUE LIMIT
  [ -n "$1" ] && awk -v a="$1" -v b="$2" 'BEGIN { exit !(a + 0 < b + 0) }'
}

no_parts_left() { [ -z "$(find . -name '*.part')" ]; }

# Byte count of a raw-appended grid file against what its own arrays announce is the business of the unit tests; here: it
# is there, closed, and has the arrays.
grid_has() {  # grid_has FILE ARRAY...
  local file=$1 array
  shift
  [ "$(tail -c 11 "$file" | tr -d '\n')" = "</VTKFile>" ] || return 1
  for array in "$@"; do grep -aqF "Name=\"$array\"" "$file" || return 1; done
}

# --- small meshes of our own: polyhedra, a pyramid -------------------------------------------------------------------

# Two cubes side by side; the square between them is two faces, so both cells are polyhedra of seven faces.
two_polyhedra() {  # two_polyhedra FOLDER NAME: all boundary faces in one patch of that name
  mkdir -p "$1"
  foam() { printf 'FoamFile\n{\n    version 2.0;\n    format ascii;\n    class %s;\n    object %s;\n}\n' "$1" "$2"; }
  {
    foam vectorField points
    echo '14 ( (0 0 0) (1 0 0) (2 0 0) (0 1 0) (1 1 0) (2 1 0) (0 0 1) (1 0 1) (2 0 1) (0 1 1) (1 1 1) (2 1 1)'
    echo '(1 0 0.5) (1 1 0.5) )'
  } >"$1/points"
  {
    foam faceList faces
    echo '12 ( 4(1 4 13 12) 4(12 13 10 7) 4(0 6 9 3) 4(0 3 4 1) 4(6 7 10 9) 5(0 1 12 7 6) 5(3 9 10 13 4)'
    echo '4(2 5 11 8) 4(1 4 5 2) 4(7 8 11 10) 5(1 2 8 7 12) 5(4 13 10 11 5) )'
  } >"$1/faces"
  { foam labelList owner && echo '12 ( 0 0 0 0 0 0 0 1 1 1 1 1 )'; } >"$1/owner"
  { foam labelList neighbour && echo '2 ( 1 1 )'; } >"$1/neighbour"
  { foam polyBoundaryMesh boundary && echo "1 ( $2 { type patch; nFaces 10; startFace 2; } )"; } >"$1/boundary"
}

# The same two cells as OpenFOAM's tool for decomposing leaves them: one in each processor folder, without addressing.
two_processors() {  # two_processors CASE NAME
  local p mesh
  for p in 0 1; do
    mesh=$1/processor$p/constant/polyMesh
    mkdir -p "$mesh"
    {
      foam vectorField points
      echo "10 ( ($p 0 0) ($((p + 1)) 0 0) ($p 1 0) ($((p + 1)) 1 0) ($p 0 1) ($((p + 1)) 0 1) ($p 1 1) ($((p + 1)) 1 1)"
      echo '(1 0 0.5) (1 1 0.5) )'
    } >"$mesh/points"
    {
      foam faceList faces
      [ $p = 0 ] && echo '7 ( 4(0 4 6 2) 4(0 2 3 1) 4(4 5 7 6) 5(0 1 8 5 4) 5(2 6 7 9 3) 4(1 3 9 8) 4(8 9 7 5) )'
      [ $p = 1 ] && echo '7 ( 4(1 3 7 5) 4(0 2 3 1) 4(4 5 7 6) 5(0 1 5 4 8) 5(2 9 6 7 3) 4(0 8 9 2) 4(8 4 6 9) )'
    } >"$mesh/faces"
    { foam labelList owner && echo '7 { 0 }'; } >"$mesh/owner"
    { foam labelList neighbour && echo '0 ( )'; } >"$mesh/neighbour"
    {
      foam polyBoundaryMesh boundary
      echo "2 ( $2 { type patch; nFaces 5; startFace 0; }"
      echo "cut { type processor; nFaces 2; startFace 5; myProcNo $p; neighbProcNo $((1 - p)); } )"
    } >"$mesh/boundary"
  done
}

scalar_field() {  # scalar_field FILE PATCH CELLS BOUNDARY: a field of OpenFOAM
  mkdir -p "$(dirname "$1")"
  { foam volScalarField T && echo "internalField $3; boundaryField { $2 { type fixedValue; $4; } }"; } >"$1"
}

# A pyramid on the unit square with a tetrahedron on its side x = 1.
pyramid_and_tetrahedron() {  # pyramid_and_tetrahedron FILE
  cat >"$1" <<'MSH'
$MeshFormat
2.2 0 8
$EndMeshFormat
$PhysicalNames
1
2 1 "wall"
$EndPhysicalNames
$Nodes
6
1 0 0 0
2 1 0 0
3 1 1 0
4 0 1 0
5 0.5 0.5 1
6 2 0.5 0.5
$EndNodes
$Elements
9
1 3 2 1 1 1 2 3 4
2 2 2 1 1 1 2 5
3 2 2 1 1 3 4 5
4 2 2 1 1 4 1 5
5 2 2 1 1 2 3 6
6 2 2 1 1 3 5 6
7 2 2 1 1 5 2 6
8 7 2 2 1 1 2 3 4 5
9 4 2 2 1 2 3 5 6
$EndElements
MSH
}

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
      below "$(number "linear-$ranks/results.json" l2 7)" 1e-12
    check "linear field, $mesh, $ranks ranks: lsq exact in boundary cells" \
      below "$(number "linear-$ranks/results.json" l2 8)" 1e-12
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

# The same question on 1, 2 and 4 ranks has the same answer; sums run in another order, so not to the last bit.
for ranks in 1 2 4; do run $ranks gradient box:8,8,8 --field "sin(3*x)*y + z^2" -o "same-$ranks"; done
for entry in 1 2 3 4 5 6 7 8 9 10; do
  for ranks in 2 4; do
    a=$(number same-1/results.json l2 $entry)
    b=$(number same-$ranks/results.json l2 $entry)
    check "l2 number $entry agrees between 1 and $ranks ranks ($a, $b)" \
      awk -v a="$a" -v b="$b" 'BEGIN { d = a - b; exit !(a != "" && d <= 1e-12 * a && -d <= 1e-12 * a) }'
  done
done

run 2 gradient box:6,6,6 --field "x^2" -o blocking
run 2 gradient box:6,6,6 --field "x^2" -o non-blocking --non-blocking
check "non-blocking exchanges give the same errors" [ "$(grep '"l2"' blocking/results.json)" = "$(grep '"l2"' non-blocking/results.json)" ]
run 2 gradient box:6,6,6 --field "x^2" -o blocking-again
check "a second run gives the same bits" [ "$(grep -E '"(l1|l2|max)"' blocking/results.json)" = "$(grep -E '"(l1|l2|max)"' blocking-again/results.json)" ]

run 1 gradient box:6,6,6:tet --field "x^2 + y" --method iterated --sweeps 5 --repeat 1 -o iterated
check "iterated with --sweeps" contains iterated/results.json '"sweeps": 5'
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

mkdir meshes
two_polyhedra meshes/polyhedra/constant/polyMesh lid
two_polyhedra meshes/walls wall
pyramid_and_tetrahedron meshes/pyramid.msh
for ranks in 1 2; do
  run $ranks gradient meshes/polyhedra --group lid=wall --field "x+2*y" -o polyhedra-$ranks
  check "polyhedra on $ranks ranks: exit code 0" exited 0
  check "polyhedra on $ranks ranks: lsq exact" below "$(number polyhedra-$ranks/results.json l2 8)" 1e-12
  run $ranks gradient meshes/pyramid.msh --field "x+2*y" -o pyramid-$ranks
  check "pyramid and tetrahedron on $ranks ranks: exit code 0" exited 0
  check "pyramid and tetrahedron on $ranks ranks: lsq exact" below "$(number pyramid-$ranks/results.json l2 8)" 1e-12
  run $ranks info meshes/walls
  check "info on polyhedra on $ranks ranks" grep -q "^  wall  *wall  *10$" stdout
done
check "polyhedra are written with their faces" grid_has polyhedra-1/gradient.vtu faces faceoffsets

# --- a decomposed case, fields from files ------------------------------------------------------------------------------

two_polyhedra meshes/case/constant/polyMesh wall
scalar_field meshes/case/0/T wall 'nonuniform List<scalar> 2 (1 5)' 'value nonuniform List<scalar> 10 (0 1 2 3 4 5 6 7 8 9)'
scalar_field meshes/case/0/short wall 'nonuniform List<scalar> 1 (1)' 'value uniform 0'
scalar_field meshes/case/0/bare wall 'uniform 7' 'refValue uniform 3'
scalar_field meshes/case/0/infinite wall 'nonuniform List<scalar> 2 (1 nan)' 'value uniform 0'
two_processors meshes/decomposed wall
scalar_field meshes/decomposed/processor0/0/T wall 'uniform 1' 'value nonuniform List<scalar> 5 (0 1 2 3 4)'
scalar_field meshes/decomposed/processor1/0/T wall 'uniform 5' 'value nonuniform List<scalar> 5 (5 6 7 8 9)'

run 1 gradient meshes/case --field "x+2*y" -o whole-formula
run 2 gradient meshes/decomposed --field "x+2*y" -o decomposed-formula
check "decomposed case: exit code 0" exited 0
check "decomposed case: lsq exact" below "$(number decomposed-formula/results.json l2 8)" 1e-12
check "decomposed case: cells and nodes of the whole" \
  [ "$(grep -E '"(cells|nodes)": ' decomposed-formula/results.json)" = "$(grep -E '"(cells|nodes)": ' whole-formula/results.json)" ]
for ranks in 1 2; do
  run $ranks gradient meshes/case --field-file 0/T -o field-$ranks
  check "field from a file on $ranks ranks: exit code 0" exited 0
  check "field from a file on $ranks ranks: nothing on stderr" [ ! -s stderr ]
  check "field from a file on $ranks ranks: no warning" [ "$(grep -c warning stdout)" = 0 ]
  check "field from a file on $ranks ranks: sizes instead of errors" contains stdout "no exact gradient"
  check "field from a file on $ranks ranks: row of every method" [ "$(grep -cE '^  (plain|iterated|weighted|lsq|vector|rbf) +boundary|^ +boundary' stdout)" = 6 ]
done
# Green-Gauss of the left cell: (4 faces of value 0..4, the middle at 3) by hand: (3 - 0, 4 - 3, 2 - 1).
check "field from a file: plain gradient as by hand" contains <(tr -d ' \n' <field-1/results.json) '"range":{"x":[2.0,3.0],"y":[1.0,1.0],"z":[1.0,1.0]}'
check "field from a file: grid has field and gradients" grid_has field-1/gradient.vtu field gradient_plain gradient_rbf rank cell
check "field from a file: grid has no errors" [ "$(grep -acE 'Name="(exact_gradient|error_plain)"' field-1/gradient.vtu)" = 0 ]
check "field from a file: named in the results" contains field-1/results.json '"fieldFiles"'
run 2 gradient meshes/decomposed --field-file 0/T -o field-decomposed
check "field of a decomposed case: exit code 0" exited 0
for entry in $(seq 1 12); do
  a=$(number field-1/results.json l2 $entry)
  for other in 2 decomposed; do
    b=$(number field-$other/results.json l2 $entry)
    # The radial-basis systems of these two cells have a condition number of about 1e5.
    check "field from a file, l2 number $entry agrees with field-$other ($a, $b)" \
      awk -v a="$a" -v b="$b" 'BEGIN { d = a - b; exit !(a == b || (d <= 1e-9 * a && -d <= 1e-9 * a)) }'
  done
done
run 1 gradient meshes/case --field-file meshes/case/0/bare --method plain -o bare
check "field without boundary values: exit code 0" exited 0
check "field without boundary values: one warning" \
  [ "$(grep -c 'warning: "meshes/case/0/bare" has no values for the faces of "wall"' stdout)" = 1 ]
check "field without boundary values: the warning in the results" contains bare/results.json '"warnings"'
run 2 gradient meshes/case --field-file 0/T --field-file 0/T --field-file 0/bare --method vector -o three-files
check "three fields from files: a row each" [ "$(grep -c '^  vector\.[123]  *interior' stdout)" = 3 ]

# --- info ------------------------------------------------------------------------------------------------------------

for ranks in 1 2 4; do
  run $ranks info box:4,4,4
  check "info on $ranks ranks: exit code 0" exited 0
  check "info on $ranks ranks: patches with groups" grep -q "^  wall_ymin  *wall  *16$" stdout
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
      below "$(number "constant-$ranks/results.json" l2 1)" 1e-12
    check "rbf, $mesh, $ranks ranks: no slope of a constant, boundary cells" \
      below "$(number "constant-$ranks/results.json" l2 2)" 1e-12
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
    a=$(number rbf-1/results.json l2 $entry)
    b=$(number rbf-$ranks/results.json l2 $entry)
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

# --- interpolation to faces ------------------------------------------------------------------------------------------

agree() {  # agree A B SHARE: the numbers differ by at most that share of the first
  awk -v a="$1" -v b="$2" -v s="$3" 'BEGIN { d = a - b; exit !(a != "" && b != "" && d <= s * a && -d <= s * a) }'
}

for ranks in 1 2; do
  run $ranks faces --help
  check "faces --help on $ranks ranks: exit code 0" exited 0
  check "faces --help on $ranks ranks shows examples once" [ "$(grep -c '^Examples:' stdout)" = 1 ]
  check "faces --help on $ranks ranks tells both uses of --group" contains stdout "GROUP or NAME="
  run $ranks points --help
  check "points --help on $ranks ranks: exit code 0" exited 0
  check "points --help on $ranks ranks shows examples once" [ "$(grep -c '^Examples:' stdout)" = 1 ]
done

for ranks in 1 2 4; do
  for method in 1 2 3 4; do
    run $ranks faces box:6,5,4:tet --field 7 --group inner --search-method $method --span 100 -o "faces-$ranks"
    name="faces, method $method, $ranks ranks"
    check "$name: exit code 0" exited 0
    check "$name: nothing on stderr" [ ! -s stderr ]
    # The weights are not made to sum to 1; at a span of 100 they do within 1e-3.
    check "$name: constant" below "$(result "faces-$ranks/results.json" max 1)" 7e-3
    check "$name: settings of every rank" \
      [ "$(cat "faces-$ranks"/settings.rank*.rbf | grep -c "^iSearch_method    = $method\$")" = "$ranks" ]
    check "$name: nobody adopted defaults" [ "$(cat "faces-$ranks"/log.rank*.txt | grep -c Default)" = 0 ]
    check "$name: no unfinished file" [ -z "$(find . -name '*.part*')" ]
    if [ $ranks = 1 ]; then
      check "$name: polygons with all arrays" grid_has faces-1/faces.vtp value exact error weight_sum members rank cell
    else
      check "$name: index lists $ranks pieces" \
        [ "$(grep -c '<Piece Source="faces/faces' "faces-$ranks/faces.pvtp")" = "$ranks" ]
      check "$name: last piece is there" grid_has "faces-$ranks/faces/faces.000$((ranks - 1)).vtp" value error
    fi
  done
  for group in wall inlet outlet symmetry; do
    [ $ranks = 4 ] && continue
    for method in 1 2 3 4; do
      run $ranks faces box:5,4,4 --field "1 + x*y" --group wall_zmin=symmetry --group $group --search-method $method -o sides
      name="$group faces, method $method, $ranks ranks"
      check "$name: exit code 0" exited 0
      check "$name: one count" [ "$(grep -c " $group faces by search method $method" stdout)" = 1 ]
      if [ $method = 4 ]; then
        check "$name: says that there are no values" [ "$(grep -c 'all are 0 by design' stdout)" = 1 ]
        check "$name: no errors" contains sides/results.json '"errors": null'
      else
        # The cell beyond the face stands on it and holds the boundary value.
        check "$name: nearly the boundary value" below "$(result sides/results.json max 1)" 1e-3
      fi
    done
  done
  run $ranks faces box:6,6,6 --field "sin(x)*y" --group inner -o whole-$ranks
done
for ranks in 2 4; do
  run $ranks faces box:6,6,6 --field "sin(x)*y" --group partition -o cut-$ranks
  check "partition faces on $ranks ranks: exit code 0" exited 0
  # By method 4 they take the halo cell's value; its weights have a condition number of about 1e9.
  check "partition faces on $ranks ranks: the halo cell's value" below "$(result cut-$ranks/results.json max 1)" 1e-6
  check "inner and cut faces on $ranks ranks are the inner faces of the whole" \
    [ $((2 * $(result whole-$ranks/results.json faces 1) + $(result cut-$ranks/results.json faces 1))) = $((2 * 540)) ]
  # Stencils at a cut lack the cells that only touch it with a node, so only about the same.
  check "error of inner faces on $ranks ranks is about that on one" \
    agree "$(result whole-1/results.json l2 1)" "$(result whole-$ranks/results.json l2 1)" 0.3
done
for ranks in 1 2; do
  run $ranks faces box:6,5,4 --field "x" --group inner --debug-report -o report
  check "--debug-report, $ranks ranks: in the log of every rank" \
    [ "$(cat report/log.rank*.txt | grep -c 'Inner Face FI = 1.e0')" = "$ranks" ]
  check "--debug-report, $ranks ranks: not in the output" [ "$(grep -c 'FI = 1.e0' stdout)" = 0 ]
done
check "faces of an earlier run on more ranks are gone" [ -e report/faces.pvtp ]
run 1 faces box:6,5,4 --field "x" --group inner -o report
check "no report unless asked for" [ "$(cat report/log.rank*.txt | grep -c 'FI = 1.e0')" = 0 ]
check "later on one rank: no index" [ ! -e report/faces.pvtp ]
check "later on one rank: no pieces" [ ! -e report/faces ]
check "later on one rank: no second settings file" [ ! -e report/settings.rank1.rbf ]
run 1 faces box:4,4,4 --field x --group inner --search-method 2 --search-number 9 --span 2.5 -o few
check "faces, settings with a fraction" contains few/settings.rank0.rbf "Span              = 2.5"
check "faces, settings with a number" contains few/settings.rank0.rbf "Search_number     = 9"
check "faces, stencils of that number" contains stdout "stencils of 9 to 9 cells"
check "faces, a small span does not sum to 1 and says so" grep -q "warning: the weights of [0-9,]* faces do not sum to 1" stdout
run 1 faces box:4,4,4 --field x --group inner --search-method 2 --span 1e-60 -o few
check "faces, weights that are no numbers: exit code 0" exited 0
check "faces, weights that are no numbers: says so" grep -q "warning: the weights of 144 faces are not finite; first: face" stdout
for ranks in 1 2; do
  run $ranks faces meshes/polyhedra --group lid=wall --group inner --field "x+2*y" -o polyhedra-$ranks
  check "faces of polyhedra on $ranks ranks: exit code" exited $([ $ranks = 1 ] && echo 0 || echo 2)
  run $ranks faces meshes/pyramid.msh --group wall --search-method 2 --field "x+2*y" -o pyramid-$ranks
  check "faces of a pyramid on $ranks ranks: exit code 0" exited 0
done

# --- interpolation to points -----------------------------------------------------------------------------------------

column() {  # column FILE NUMBER: a column of a table without quotes, its header left out
  cut -d, -f"$2" "$1" | tail -n +2
}

cat >points.csv <<'CSV'
id,x,y,z
a,0.5,0.5,0.5
b,0.3,0.31,0.72
c,0.5,0.21,0.21
c again,0.5,0.21,0.21
far,4,4,4
corner,0,0,0
CSV
echo "z,y,x" >none.csv
for ranks in 1 2 4; do
  for method in 1 2 3; do
    run $ranks points box:6,6,6:tet --field "1 + x - 2*y + 3*z" --points points.csv --search-method $method --span 200 -o "points-$ranks-$method"
    name="points, method $method, $ranks ranks"
    check "$name: exit code 0" exited 0
    check "$name: nothing on stderr" [ ! -s stderr ]
    check "$name: original order" [ "$(column "points-$ranks-$method/points.csv" 1)" = "$(column points.csv 1)" ]
    check "$name: duplicates alike" [ "$(sed -n '4s/^c,//p' "points-$ranks-$method/points.csv")" = "$(sed -n '5s/^c again,//p' "points-$ranks-$method/points.csv")" ]
    check "$name: flags the far one alone" [ "$(column "points-$ranks-$method/points.csv" 18 | tr '\n' '-')" = "----far--" ]
    check "$name: warns" [ "$(grep -c 'warning: far: 1 point ' stdout)" = 1 ]
    check "$name: vertices with all arrays" grid_has "points-$ranks-$method/points.vtp" value gradient exact exact_gradient error gradient_error distance members rank flags point
    check "$name: settings of every rank" [ "$(cat "points-$ranks-$method"/settings.rank*.rbf | grep -c "^iSearch_method    = $method\$")" = "$ranks" ]
    check "$name: nobody adopted defaults" [ "$(cat "points-$ranks-$method"/log.rank*.txt | grep -c Default)" = 0 ]
    check "$name: no unfinished file" [ -z "$(find . -name '*.part*')" ]
    # Points 1 to 4 lie inside; the slope of the linear field is 3.7. Method 3 goes through nodes, and those on a cut
    # lack the cells that only touch them.
    slope=0.01
    [ $method = 3 ] && slope=1
    check "$name: near the linear field" \
      [ "$(column "points-$ranks-$method/points.csv" 13 | head -n 4 | awk '{ if ($1 > 0.01 || -$1 > 0.01) print }' | wc -l)" = 0 ]
    check "$name: near its slope" \
      [ "$(column "points-$ranks-$method/points.csv" 14 | head -n 4 | awk -v s=$slope '{ if ($1 > s) print }' | wc -l)" = 0 ]
  done
  run $ranks points box:4,4,4 --field "x" --points none.csv -o none-$ranks
  check "no points, $ranks ranks: exit code 0" exited 0
  check "no points, $ranks ranks: says so" contains stdout "no points, no errors to show"
  check "no points, $ranks ranks: a table without rows" [ "$(cat none-$ranks/points.csv | wc -l)" = 1 ]
  check "no points, $ranks ranks: a file without vertices" grep -aq 'NumberOfVerts="0"' none-$ranks/points.vtp

  run $ranks points box:9,9,9 --field "x*y + z" --body "(x-0.5)^2+(y-0.5)^2+(z-0.5)^2-0.1" -o body-$ranks
  check "points of a body, $ranks ranks: exit code 0" exited 0
  check "points of a body, $ranks ranks: the same points" \
    [ "$(cut -d, -f1-3 body-$ranks/points.csv)" = "$(cut -d, -f1-3 body-1/points.csv)" ]
  run $ranks points box:9,9,9 --field "x*y + z" --body "(x-0.5)^2+(y-0.5)^2+(z-0.5)^2-0.1" --spacing 0.1 -o thin-$ranks
  check "points of a body with a spacing, $ranks ranks: less" [ "$(wc -l <thin-$ranks/points.csv)" -lt "$(wc -l <body-1/points.csv)" ]
  check "points of a body with a spacing, $ranks ranks: the same points" \
    [ "$(cut -d, -f1-3 thin-$ranks/points.csv)" = "$(cut -d, -f1-3 thin-1/points.csv)" ]
  # The field has no value inside the body: only cells outside are asked for one.
  run $ranks points box:9,9,9 --field "sqrt((x-0.5)^2+(y-0.5)^2+(z-0.5)^2-0.06)" --body "(x-0.5)^2+(y-0.5)^2+(z-0.5)^2-0.1" -o root
  check "field outside a body, $ranks ranks: exit code 0" exited 0
  check "field outside a body, $ranks ranks: all values are numbers" [ "$(result root/results.json notFinite 1)" = 0 ]
  # Half of the box is body; a point deep inside it is far from usable cells, one at its surface is not.
  printf 'x,y,z\n0.2,0.5,0.5\n0.7,0.5,0.5\n0.5,0.5,0.5\n' >half.csv
  run $ranks points box:10,10,10 --field "x" --points half.csv --body "x-0.5" -o half
  check "points inside a body, $ranks ranks: exit code 0" exited 0
  check "points inside a body, $ranks ranks: usable cells" contains stdout "from 500 usable of 1,000 cells"
  check "points inside a body, $ranks ranks: flag" [ "$(column half/points.csv 17 | tr '\n' '-')" = "far---" ]
done
for ranks in 2 4; do
  for method in 1 2 3; do
    a=$(result points-1-$method/results.json meanCellDistance 1)
    b=$(result points-$ranks-$method/results.json meanCellDistance 1)
    check "mean distance of cells agrees between 1 and $ranks ranks" agree "$a" "$b" 1e-12
  done
  # Stencils at a cut lack the cells that only touch it with a node, so only about the same.
  check "error of a body's points on $ranks ranks is about that on one" \
    agree "$(result body-1/results.json l2 1)" "$(result body-$ranks/results.json l2 1)" 0.5
done
run 2 points box:9,9,9 --field "x*y + z" --body "(x-0.5)^2+(y-0.5)^2+(z-0.5)^2-0.1" -o body-again
check "a second run gives the same bits" [ "$(cat body-2/points.csv)" = "$(cat body-again/points.csv)" ]
run 1 points box:6,6,6 --field x --points points-1-3/points.csv -o second
check "points of an earlier result: its columns are replaced" [ "$(head -n 1 second/points.csv)" = "$(head -n 1 points-1-3/points.csv)" ]
run 1 points box:4,4,4 --field x --points points.csv --search-method 2 --search-number 3 -o second
check "stencils of three cells are flagged" grep -q "warning: few: 6 points with less than 4 cells" stdout
run 1 points box:4,4,4 --field x --points points.csv --search-method 2 --span 1e60 -o second
check "weights that are no numbers are flagged" grep -q "warning: notfinite: 6 points" stdout
# Two cells, one on each rank, one of them usable: the other rank has nothing to do.
printf 'x,y,z\n0.1,0.5,0.5\n0.9,0.5,0.5\n' >two.csv
run 2 points box:2,1,1 --field x --points two.csv --body "x-0.5" --search-method 2 -o lonely
check "a rank without usable cells: exit code 0" exited 0
check "a rank without usable cells serves no point" [ "$(column lonely/points.csv 16 | sort -u | wc -l)" = 1 ]

# --- check -----------------------------------------------------------------------------------------------------------

# A cube within a hollow one: both cells have the same centre, so nothing tells their values apart.
cell_within_a_cell() {  # cell_within_a_cell FOLDER
  mkdir -p "$1"
  foam() { printf 'FoamFile\n{\n    version 2.0;\n    format ascii;\n    class %s;\n    object %s;\n}\n' "$1" "$2"; }
  {
    foam vectorField points
    echo '16 ( (1 1 1) (2 1 1) (2 2 1) (1 2 1) (1 1 2) (2 1 2) (2 2 2) (1 2 2)'
    echo '(0 0 0) (3 0 0) (3 3 0) (0 3 0) (0 0 3) (3 0 3) (3 3 3) (0 3 3) )'
  } >"$1/points"
  {
    foam faceList faces
    echo '12 ( 4(0 3 2 1) 4(4 5 6 7) 4(0 1 5 4) 4(3 7 6 2) 4(0 4 7 3) 4(1 2 6 5)'
    echo '4(8 11 10 9) 4(12 13 14 15) 4(8 9 13 12) 4(11 15 14 10) 4(8 12 15 11) 4(9 10 14 13) )'
  } >"$1/faces"
  { foam labelList owner && echo '12 ( 0 0 0 0 0 0 1 1 1 1 1 1 )'; } >"$1/owner"
  { foam labelList neighbour && echo '6 ( 1 1 1 1 1 1 )'; } >"$1/neighbour"
  { foam polyBoundaryMesh boundary && echo '1 ( wall { type wall; nFaces 6; startFace 6; } )'; } >"$1/boundary"
}

# What is said of the cells, which does not depend on the number of ranks.
of_cells() { sed -n '/^[0-9,]* cells$/,/^all results\|^NOT all/p' "$1"; }
finding() { grep -A 1 "\"$2\": {" "$1" | number /dev/stdin count 1; }  # finding FILE KEY

cell_within_a_cell meshes/shell
for ranks in 1 2; do
  run $ranks check --help
  check "check --help, $ranks ranks: examples once" [ "$(grep -c '^Examples:' stdout)" = 1 ]
  run $ranks check box:5,5,5:tet:perturb=0.2 --group wall_zmin=symmetry -o check-$ranks
  check "check of a sound mesh, $ranks ranks: exit code 0" exited 0
  check "check of a sound mesh, $ranks ranks: nothing on stderr" [ ! -s stderr ]
  check "check of a sound mesh, $ranks ranks: says so" contains stdout "all results would be finite numbers"
  check "check of a sound mesh, $ranks ranks: histogram" grep -q "^  log10 condition  cells$" stdout
  check "check of a sound mesh, $ranks ranks: json says so" contains check-$ranks/check.json '"finite": true,'
  check "check of a sound mesh, $ranks ranks: cells beside symmetry" [ "$(finding check-$ranks/check.json besideSymmetry)" = 50 ]
  check "check of a sound mesh, $ranks ranks: members at the origin" [ "$(finding check-$ranks/check.json memberAtOrigin)" = 50 ]
  check "check of a sound mesh, $ranks ranks: ten worst" [ "$(grep -c '"nonOrthogonalityDegrees": [0-9]' check-$ranks/check.json)" = 10 ]
  check "check of a sound mesh, $ranks ranks: what operators print is in the log" contains check-$ranks/log.rank0.txt "method lsq"
  check "check of a sound mesh, $ranks ranks: no unfinished file" no_parts_left
  of_cells stdout >check-$ranks/cells.txt
  check "check of a sound mesh, $ranks ranks: the same table" cmp -s check-1/cells.txt check-$ranks/cells.txt

  run $ranks check meshes/shell -o shell-$ranks
  check "check of a cell within a cell, $ranks ranks: exit code 1" exited 1
  check "check of a cell within a cell, $ranks ranks: says what" contains stdout "  weights not finite: 1 of 2 cells"
  check "check of a cell within a cell, $ranks ranks: zero pivot" contains stdout "  least squares stops: zero pivot: 1 of 2 cells"
  check "check of a cell within a cell, $ranks ranks: one position" [ "$(finding shell-$ranks/check.json coincidentMembers)" = 2 ]
  check "check of a cell within a cell, $ranks ranks: json" contains shell-$ranks/check.json '"finite": false,'
  of_cells stdout >shell-$ranks/cells.txt
  check "check of a cell within a cell, $ranks ranks: the same table" cmp -s shell-1/cells.txt shell-$ranks/cells.txt
  run $ranks check meshes/shell --methods plain,iterated,vector,weighted -o shell-$ranks
  check "check of Green-Gauss only, $ranks ranks: exit code 0" exited 0
  check "check of Green-Gauss only, $ranks ranks: no systems" [ "$(grep -c 'condition' stdout)" = 1 ]

  run $ranks check box:4,4,4 --methods rbf --span 1e60 -o wide
  check "check of a span beyond all numbers, $ranks ranks: exit code 1" exited 1
  check "check of a span beyond all numbers, $ranks ranks: all cells" contains stdout "weights not finite: 64 of 64 cells"
  run $ranks check box:6,6,6 --methods plain --group-faces inner --group-faces wall --points points.csv -o systems-$ranks
  check "check of faces and points, $ranks ranks: exit code 0" exited 0
  check "check of faces and points, $ranks ranks: wall faces" contains stdout "144 wall faces"
  check "check of faces and points, $ranks ranks: points" contains stdout "6 points"
  run $ranks check box:6,6,6 --methods plain --points points.csv --span 1e60 -o wide
  check "check of points, span beyond all numbers, $ranks ranks: exit code 1" exited 1
  check "check of points, span beyond all numbers, $ranks ranks: says what" contains stdout "weights not finite: 6 of 6 points"
  run $ranks check box:9,9,9 --methods lsq --body "(x-0.5)^2+(y-0.5)^2+(z-0.5)^2-0.1" --point-method 2 -o body-check
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
  check "compare-ranks on $mesh: nothing is broken" [ "$(grep -c 'other bits\|BROKEN' stdout)" = 0 ]
done
cp stdout alone
run 2 compare-ranks box:4,4,4:dual --ranks 1,2,4
check "compare-ranks under mpirun: exit code 0" exited 0
check "compare-ranks under mpirun: the same text" cmp -s alone stdout
run 1 compare-ranks meshes/polyhedra --ranks 2,1 --group lid=wall --field "x*y" --span 50 --sweeps 5
check "compare-ranks on a file: exit code 0" exited 0

# --- wrong input -----------------------------------------------------------------------------------------------------

echo "no mesh" >text.msh
echo "no mesh" >text.cgns
echo "no mesh" >picture.png
touch a-file
printf "x,y\n1,2\n" >no-z.csv
printf "x,y,z\n1,2,3\n4,5,six\n" >bad.csv
ls -A >before

wrong() {  # wrong NAME TEXT ARGS...: exit code 2, one line with TEXT, no file left; on 1 and 2 ranks
  local name=$1 text=$2 ranks
  shift 2
  for ranks in 1 2; do
    run $ranks "$@"
    check "$name, $ranks ranks: exit code 2" exited 2
    check "$name, $ranks ranks: one line" [ "$(grep -c '^zyngrad: ' stderr)" = 1 ]
    check "$name, $ranks ranks: says what" contains <(grep '^zyngrad: ' stderr) "$text"
    [ "$ranks" = 1 ] && check "$name: nothing else on stderr" [ "$(wc -l <stderr)" = 1 ]
    check "$name, $ranks ranks: no file left" [ "$(ls -A | grep -vxE 'stdout|stderr')" = "$(grep -vxE 'stdout|stderr' before)" ]
  done
}

wrong "missing file" "missing.msh" gradient missing.msh --field x
wrong "missing folder" "nowhere/polyMesh" info nowhere/polyMesh
wrong "unknown format" "picture.png" gradient picture.png --field x
wrong "not a mesh" "text.msh" gradient text.msh --field x
wrong "empty mesh name" "" info ""
wrong "open bracket" "expression \"sin(x\": column 6: expected ')'" gradient box:3,3,3 --field "sin(x"
wrong "unknown name" 'column 3: unknown name "u"' gradient box:3,3,3 --field "x+u"
wrong "bad weight" 'expression "1+": column 3' gradient box:3,3,3 --field x --weight "1+"
wrong "expression of two lines" 'column 2' gradient box:3,3,3 --field $'x\nzyngrad: y'
wrong "field not finite" 'the field "log(x)" is -inf at a face of "inlet"' gradient box:3,3,3 --field "log(x)"
wrong "field not finite on one rank" "at cell 8 at (0.9375" gradient box:8,1,1 --field "1/(x-0.9375)"
wrong "weight not finite" 'the weight "1/y"' gradient box:3,3,3 --field x --weight "1/y"
wrong "unknown method" 'unknown method "best"' gradient box:3,3,3 --field x --method best
wrong "no field" "--field" gradient box:3,3,3
wrong "no mesh" "MESH" gradient --field x
wrong "two fields" "one or three" gradient box:3,3,3 --field x --field y
wrong "vector of one field" "method vector takes three --field, got 1" gradient box:3,3,3 --field x --method vector
wrong "formula and file" "exclude each other" gradient box:3,3,3 --field x --field-file 0/T
wrong "file for a box" "needs a mesh of OpenFOAM" gradient box:3,3,3 --field-file 0/T
wrong "missing field file" "0/p: no such file" gradient meshes/case --field-file 0/p
wrong "field file of another mesh" "meshes/case/0/short: 1 values for 2 cells" gradient meshes/case --field-file 0/short
wrong "field file not finite" 'the field "0/infinite" is nan at cell 2' gradient meshes/case --field-file 0/infinite
wrong "CGNS without an array" "name the array" gradient meshes/case --field-file wing.cgns
wrong "not a CGNS file" "text.cgns" gradient text.cgns --field x
wrong "plain of three fields" "method plain takes one --field, got 3" gradient box:3,3,3 --field x --field y --field z --method plain
wrong "sweeps not a number" '--sweeps "many"' gradient box:3,3,3 --field x --sweeps many
wrong "negative sweeps" '--sweeps "-1"' gradient box:3,3,3 --field x --sweeps -1
wrong "span not a number" '--span "wide"' gradient box:3,3,3 --field x --method rbf --span wide
wrong "span of zero" '--span "0": expected a number above 0' gradient box:3,3,3 --field x --method rbf --span 0
wrong "infinite span" '--span "inf"' gradient box:3,3,3 --field x --method rbf --span inf
wrong "explain without a cell" "--cell" explain box:3,3,3
wrong "explain cell 0" '--cell "0"' explain box:3,3,3 --cell 0
wrong "explain beyond the cells" '--cell "28": the mesh has cells 1 to 27' explain box:3,3,3 --cell 28
wrong "explain no number" '--cell "last"' explain box:3,3,3 --cell last
wrong "explain with a bad span" '--span "-1"' explain box:3,3,3 --cell 1 --span -1
wrong "no repeats" '--repeat "0"' gradient box:3,3,3 --field x --repeat 0
wrong "unknown option" "--colour" gradient box:3,3,3 --field x --colour red
wrong "unknown command" 'unknown command "grad"' grad box:3,3,3
wrong "no command" "a command is required"
wrong "two meshes" "box:4,4,4" info box:3,3,3 box:4,4,4
wrong "unknown group" '--group "wall_ymin=door"' info box:3,3,3 --group wall_ymin=door
wrong "boundary without a group" "lid" gradient meshes/polyhedra --field x
wrong "boundary without a group, info" "lid" info meshes/polyhedra
wrong "group of no boundary" "lid" info box:3,3,3 --group lid=wall
wrong "box without sizes" "box:" info box:
wrong "box of no cells" "box:0,3,3" info box:0,3,3
wrong "box of odd shape" "ball" info box:3,3,3:ball
wrong "folder below a file" "a-file" gradient box:3,3,3 --field x -o a-file/below
wrong "folder is a file" "a-file" gradient box:3,3,3 --field x -o a-file
wrong "folder without a name" "output folder" gradient box:3,3,3 --field x -o ""
wrong "folder that cannot be written" "/proc/zyngrad" gradient box:3,3,3 --field x -o /proc/zyngrad
wrong "faces without a group" "--group" faces box:3,3,3 --field x
wrong "faces with a kind only" "--group has to choose the faces: inner, wall" faces box:3,3,3 --field x --group wall_ymin=wall
wrong "faces of an unknown group" '--group "door": expected inner, wall' faces box:3,3,3 --field x --group door
wrong "faces of two groups" "--group chooses both wall and inner faces" faces box:3,3,3 --field x --group wall --group inner
wrong "faces that the mesh has not" "the mesh has no symmetry faces" faces box:3,3,3 --field x --group symmetry
wrong "faces without a field" "--field" faces box:3,3,3 --group inner
wrong "faces, bad formula" 'column 3: unknown name "u"' faces box:3,3,3 --group inner --field "x+u"
wrong "faces, field not finite in a cell" 'the field "1/(x-0.5)" is' faces box:3,3,3 --group inner --field "1/(x-0.5)"
wrong "faces, field not finite at a face" "is not finite at a face of the group inner at (0.25" faces box:4,1,1 --group inner --field "1/(x-0.25)"
wrong "faces, method 5" '--search-method "5": expected 1 to 4' faces box:3,3,3 --field x --group inner --search-method 5
wrong "faces, method 0" '--search-method "0"' faces box:3,3,3 --field x --group inner --search-method 0
wrong "faces, span of zero" '--span "0"' faces box:3,3,3 --field x --group inner --span 0
wrong "faces, no cells wanted" '--search-number "0"' faces box:3,3,3 --field x --group inner --search-number 0
wrong "faces, missing mesh" "missing.msh" faces missing.msh --field x --group inner
wrong "faces, folder below a file" "a-file" faces box:3,3,3 --field x --group inner -o a-file/below
wrong "study without meshes" "either by --series or" study
wrong "study of series and meshes" "either by --series or" study box:3,3,3 --series tet
wrong "study of an unknown series" '--series "hexes": expected hex, perturbed, tet' study --series hexes
wrong "study of a bad box" "box:0,3,3" study --series box:0,3,3
wrong "study with too many levels" "32-bit" study --series hex --levels 12
wrong "study of no level" '--levels "0"' study --series hex --levels 0
wrong "study with levels of meshes" "--levels is for --series" study box:3,3,3 --levels 2
wrong "study of an unknown method" 'unknown method "best": expected plain, iterated' study --series hex --method plain,best
wrong "study of no method" 'unknown method ""' study --series hex --method plain,
wrong "study with a bad span" '--span "wide"' study --series hex --span 5,wide
wrong "study with no span" '--span ""' study --series hex --span 5,
wrong "study with bad sweeps" '--sweeps "-1"' study --series hex --sweeps 1,-1
wrong "study of a bad field" 'expression "cubic"' study --series hex --field cubic
wrong "study of a field twice" '--field "linear" is given twice' study --series hex --field linear --field linear
wrong "study of a field that is not finite" 'the field "1/x"' study --series hex --levels 1 --method plain --field 1/x
wrong "study of a missing mesh" "missing.msh" study missing.msh
wrong "study with no cells wanted" '--search-number "0"' study --series hex --search-number 0
wrong "study with a group of no boundary" "lid" study --series hex --levels 1 --group lid=wall
wrong "study, folder that cannot be written" "/proc/zyngrad" study --series hex --levels 1 -o /proc/zyngrad
wrong "compare-ranks without a mesh" "MESH" compare-ranks
wrong "compare-ranks with no rank" '--ranks "0"' compare-ranks box:3,3,3 --ranks 1,0
wrong "compare-ranks with bad ranks" '--ranks "two"' compare-ranks box:3,3,3 --ranks two
wrong "compare-ranks with very many ranks" '--ranks "65"' compare-ranks box:9,9,9 --ranks 65
wrong "compare-ranks with more ranks than cells" "2 ranks" compare-ranks box:1,1,1 --ranks 1,2
wrong "compare-ranks of an unknown method" 'unknown method "best"' compare-ranks box:3,3,3 --method best
wrong "compare-ranks of a bad field" 'expression "x+"' compare-ranks box:3,3,3 --field "x+"
wrong "compare-ranks of a field that is not finite" 'the field "1/x" is not finite' compare-ranks box:3,3,3 --field 1/x
wrong "compare-ranks of a missing mesh" "missing.msh" compare-ranks missing.msh
wrong "compare-ranks of an unknown group" "lid" compare-ranks box:3,3,3 --group lid=wall
wrong "stretch of a box" "stretch must be at least 1" info box:3,3,3:hex:stretch=0
wrong "skew of a box" "skew must be at least 0 and less than 0.3" info box:3,3,3:hex:skew=1
wrong "points without points" "--points FILE.csv or --body EXPR" points box:3,3,3 --field x
wrong "points without a field" "--field" points box:3,3,3 --points points.csv
wrong "points, missing table" "missing.csv: no such file" points box:3,3,3 --field x --points missing.csv
wrong "points, folder as table" "meshes: not a regular file" points box:3,3,3 --field x --points meshes
wrong "points, table without z" "no-z.csv: line 1, column 1: the header has no column z" points box:3,3,3 --field x --points no-z.csv
wrong "points, no number" 'bad.csv: line 3, column 5: "six" is not a finite number (z)' points box:3,3,3 --field x --points bad.csv
wrong "points, spacing of a table" "--spacing is for points on the surface" points box:3,3,3 --field x --points points.csv --spacing 1
wrong "points, spacing of zero" '--spacing "0"' points box:3,3,3 --field x --body "x-0.5" --spacing 0
wrong "points, bad body" 'expression "x-": column 3' points box:3,3,3 --field x --body "x-"
wrong "points, body not finite" 'the body "log(x-0.6)" is' points box:3,3,3 --field x --body "log(x-0.6)"
wrong "points, body not finite at a node" 'the body "x-0.5+0/y" is not finite at a node at' points box:2,2,2 --field x --body "x-0.5+0/y"
wrong "points, body beside the mesh" 'the surface of the body "2-x" meets no cell' points box:3,3,3 --field x --body "2-x"
wrong "points, all cells in the body" 'no cell has its centre outside the body "x-2"' points box:3,3,3 --field x --body "x-2" --points points.csv
wrong "points, field not finite in a cell" 'the field "log(x-0.4)" is' points box:3,3,3 --field "log(x-0.4)" --points points.csv
wrong "points, field not finite at a point" 'or its gradient is not finite at point 6 at (0, 0, 0)' points box:3,3,3 --field "sqrt(x)" --points points.csv
wrong "points, method 4" '--search-method "4": expected 1 to 3' points box:3,3,3 --field x --points points.csv --search-method 4
wrong "points, infinite span" '--span "inf"' points box:3,3,3 --field x --points points.csv --span inf
wrong "points, its own output" "is a file that this run writes" points box:3,3,3 --field x --points points-1-1/points.csv -o points-1-1
wrong "points, folder that cannot be written" "/proc/zyngrad" points box:3,3,3 --field x --points points.csv -o /proc/zyngrad
wrong "check, unknown method" '--methods: unknown method "best"' check box:3,3,3 --methods plain,best
wrong "check, empty method" '--methods: unknown method ""' check box:3,3,3 --methods plain,
wrong "check, unknown faces" '--group-faces "door": expected inner' check box:3,3,3 --group-faces door
wrong "check, span of zero" '--span "0"' check box:3,3,3 --span 0
wrong "check, face method 5" '--face-method "5": expected 1 to 4' check box:3,3,3 --face-method 5
wrong "check, missing table" "missing.csv: no such file" check box:3,3,3 --points missing.csv
wrong "check, bad body" 'expression "x-": column 3' check box:3,3,3 --body "x-"
wrong "check, missing mesh" "missing.msh" check missing.msh
wrong "check, folder below a file" "a-file" check box:3,3,3 -o a-file/below
run 1 faces box:3,3,3 --field x --group partition
check "partition faces on one rank: exit code 2" exited 2
check "partition faces on one rank: says what" contains stderr "no partition faces on one rank"

for ranks in 1 4; do
  run $ranks gradient meshes/decomposed --field x
  check "decomposed case on $ranks ranks: exit code 2" exited 2
  check "decomposed case on $ranks ranks: says how many" contains stderr "decomposed for 2 processors, but this run has $ranks rank"
done

run 4 gradient box:3,1,1 --field x
check "more ranks than cells: exit code 2" exited 2
check "more ranks than cells: one line" [ "$(grep -c '^zyngrad: ' stderr)" = 1 ]
check "more ranks than cells: no folder left" [ ! -e zyngrad-output ]

# --- meshes of the repository ----------------------------------------------------------------------------------------

for mesh in "$data"/*.msh; do
  [ -f "$mesh" ] || continue
  for ranks in 1 2; do
    run $ranks info "$mesh"
    check "info on $(basename "$mesh"), $ranks ranks" exited 0
  done
done

echo "$passed passed, $failed failed"
[ "$failed" = 0 ]
