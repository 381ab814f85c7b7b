#!/usr/bin/env bash
# Helpers for the tests that run zyngrad as a user would: whole commands, on one and several ranks, with valid and
# invalid input. A test sources this file with its own three arguments and ends with `finish`:
#   SOME_test.sh ZYNGRAD_BINARY MPIRUN DATA_DIR
# Prints one line per check, then "N passed, M failed". The exit code is 1 if any check failed. Each test works in a
# folder of its own, so that several tests can run at the same time.
set -u

zyngrad=$(realpath "$1")
mpirun=$2
data=$(realpath "$3")
work=$(mktemp -d)
# Open MPI makes and removes a folder of its own; runs that begin and end at the same time stumble over a common one.
sessions=$(mktemp -d)
export OMPI_MCA_orte_tmpdir_base=$sessions
trap 'rm -rf "$work" "$sessions"' EXIT
cd "$work" || exit 1

export OMPI_ALLOW_RUN_AS_ROOT=1 OMPI_ALLOW_RUN_AS_ROOT_CONFIRM=1 OMPI_MCA_rmaps_base_oversubscribe=1
export OMPI_MCA_mpi_yield_when_idle=1 OMPI_MCA_btl_vader_single_copy_mechanism=none OMP_NUM_THREADS=1
# One machine with shared memory: the search for networks and graphics cards would take longer than most runs here.
: "${OMPI_MCA_plm:=isolated}" "${OMPI_MCA_pml:=ob1}" "${OMPI_MCA_btl:=self,vader}" "${HWLOC_COMPONENTS:=-gl,-opencl,-pci}"
# After an exit code other than 0, mpirun would wait two seconds before it ends the other ranks, which have ended already.
: "${OMPI_MCA_odls_base_sigkill_timeout:=0}"
export OMPI_MCA_plm OMPI_MCA_pml OMPI_MCA_btl OMPI_MCA_odls_base_sigkill_timeout HWLOC_COMPONENTS

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

# The same after the word "results", because the section on the mesh has numbers with the same names.
result() {  # result FILE KEY N
  sed -n '/^  "results"/,$p' "$1" | grep -o "\"$2\": [-+0-9.e]*" | sed -n "$3p" | sed 's/.*: //'
}

below() {  # below VALUE LIMIT
  [ -n "$1" ] && awk -v a="$1" -v b="$2" 'BEGIN { exit !(a + 0 < b + 0) }'
}

no_parts_left() { [ -z "$(find . -name '*.part')" ]; }

# Whether a grid file exists, is closed, and has the arrays. The unit tests check the byte counts of its raw data.
grid_has() {  # grid_has FILE ARRAY...
  local file=$1 array
  shift
  [ "$(tail -c 11 "$file" | tr -d '\n')" = "</VTKFile>" ] || return 1
  for array in "$@"; do grep -aqF "Name=\"$array\"" "$file" || return 1; done
}

agree() {  # agree A B SHARE: the numbers differ by at most that share of the first
  awk -v a="$1" -v b="$2" -v s="$3" 'BEGIN { d = a - b; exit !(a != "" && b != "" && d <= s * a && -d <= s * a) }'
}

column() {  # column FILE NUMBER: a column of a table without quotes, its header left out
  cut -d, -f"$2" "$1" | tail -n +2
}

ranks_of() {  # ranks_of PID: the processes of zyngrad that this mpirun has started, in the order of ranks
  cat /proc/[0-9]*/status 2>/dev/null | awk -v parent="$1" -v program="$(basename "$zyngrad")" '
    /^Name:/ { name = $2 } /^Pid:/ { pid = $2 } /^PPid:/ && $2 == parent && name == program { print pid }' | sort -n
}

finish() {
  echo "$passed passed, $failed failed"
  [ "$failed" = 0 ] && exit 0
  exit 1
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

# The same two cells as OpenFOAM's decomposition tool writes them: one in each processor folder, without addressing.
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

# A cube inside a hollow cube: both cells have the same centre, so a method cannot tell their values apart.
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

# --- what several tests ask about --------------------------------------------------------------------------------------

make_meshes() {
  mkdir meshes
  two_polyhedra meshes/polyhedra/constant/polyMesh lid
  two_polyhedra meshes/walls wall
  pyramid_and_tetrahedron meshes/pyramid.msh
}

# The two polyhedra as a case with fields, and the same decomposed.
make_case() {
  two_polyhedra meshes/case/constant/polyMesh wall
  scalar_field meshes/case/0/T wall 'nonuniform List<scalar> 2 (1 5)' 'value nonuniform List<scalar> 10 (0 1 2 3 4 5 6 7 8 9)'
  scalar_field meshes/case/0/short wall 'nonuniform List<scalar> 1 (1)' 'value uniform 0'
  scalar_field meshes/case/0/bare wall 'uniform 7' 'refValue uniform 3'
  scalar_field meshes/case/0/infinite wall 'nonuniform List<scalar> 2 (1 nan)' 'value uniform 0'
  two_processors meshes/decomposed wall
  scalar_field meshes/decomposed/processor0/0/T wall 'uniform 1' 'value nonuniform List<scalar> 5 (0 1 2 3 4)'
  scalar_field meshes/decomposed/processor1/0/T wall 'uniform 5' 'value nonuniform List<scalar> 5 (5 6 7 8 9)'
}

make_points() {  # the same table of points
  cat >points.csv <<'CSV'
id,x,y,z
a,0.5,0.5,0.5
b,0.3,0.31,0.72
c,0.5,0.21,0.21
c again,0.5,0.21,0.21
far,4,4,4
corner,0,0,0
CSV
}
