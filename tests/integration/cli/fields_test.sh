#!/usr/bin/env bash
# Fields from files that other programs wrote: scalars and vectors of OpenFOAM cases at one time and several, whole and
# decomposed, and arrays of a CGNS file, in gradient, faces and compare-ranks.
#   fields_test.sh ZYNGRAD_BINARY MPIRUN DATA_DIR [WRITE_CGNS_FLOW]
write_cgns=${4:+$(realpath "$4")}
# shellcheck source=cli_test_support.sh
. "$(dirname "${BASH_SOURCE[0]}")/cli_test_support.sh"

cp -r "$data/openfoam_cases" cases
flat=(--group frontAndBack=wall --group sides=wall --group lid=wall)

# The last of the runs that a file of results describes: the numbers with these names, in order.
numbers() { grep -oE "\"($2)\": [^,]*" "$1"; }

same_numbers() {  # same_numbers A B SHARE: all l1, l2 and max of two files agree
  paste <(numbers "$1" 'l1|l2|max' | sed 's/.*: //') <(numbers "$2" 'l1|l2|max' | sed 's/.*: //') |
    awk -v s="$3" '{ if ($1 == $2) next; d = $1 - $2; a = $1 < 0 ? -$1 : $1; if (d > s * a + 1e-14 || -d > s * a + 1e-14) bad = 1 }
      END { exit bad || NR < 4 }'
}

# --- several times -------------------------------------------------------------------------------------------------------

for ranks in 1 2; do
  run $ranks gradient cases/cavity "${flat[@]}" --field-file U --field-file p --time all --method plain,lsq,vector -o all-$ranks
  check "all times on $ranks ranks: exit code 0" exited 0
  check "all times on $ranks ranks: nothing on stderr" [ ! -s stderr ]
  check "all times on $ranks ranks: a line for each" [ "$(grep -cE '^time 0(\.[24])?: read in' stdout)" = 3 ]
  check "all times on $ranks ranks: tables of each" [ "$(grep -cE '^time 0(\.[24])?$' stdout)" = 3 ]
  check "all times on $ranks ranks: the values at the boundary, once for each field" \
    [ "$(grep -c 'at the boundary: values of the' stdout)" = 2 ]
  check "all times on $ranks ranks: of the file on the lid" \
    contains stdout 'U at the boundary: values of the file at "lid", "sides"; values of the cells at "frontAndBack"'
  check "all times on $ranks ranks: three entries of results" [ "$(grep -c '"time": "0' all-$ranks/gradient.json)" = 3 ]
  check "all times on $ranks ranks: set up once" [ "$(grep -c '^method ' all-$ranks/log.rank0.txt)" = 3 ]
done
check "all times: an index of the series" \
  [ "$(grep -o 'timestep="[^"]*" part="0" file="[^"]*"' all-1/gradient.pvd | tr '\n' ';')" = \
    'timestep="0" part="0" file="gradient_0.vtu";timestep="0.2" part="0" file="gradient_0.2.vtu";timestep="0.4" part="0" file="gradient_0.4.vtu";' ]
check "all times on 2 ranks: the index names the pieces' indices" contains all-2/gradient.pvd 'file="gradient_0.4.pvtu"'
check "all times on 2 ranks: the pieces are there" grid_has all-2/gradient_0.4/gradient_0.4.0001.vtu U p gradient_U_plain
check "all times: arrays have the names of the fields" \
  grid_has all-1/gradient_0.2.vtu U p gradient_U_plain gradient_p_plain gradient_U_lsq gradient_U_vector rank cell
check "all times: the gradient of a vector has nine components" \
  grep -aq 'Name="gradient_U_plain" NumberOfComponents="9"' all-1/gradient_0.2.vtu
check "all times: no array of formulas" [ "$(grep -acE 'Name="(field|exact_gradient|error_[a-z]*)"' all-1/gradient_0.2.vtu)" = 0 ]

# A time among several gives the file that it gives alone; so does a path instead of --time.
for time in 0.2 0.4; do
  run 1 gradient cases/cavity "${flat[@]}" --field-file U --field-file p --time $time --method plain,lsq,vector -o alone
  check "time $time alone: exit code 0" exited 0
  check "time $time alone: the same bytes as among all times" cmp -s alone/gradient.vtu all-1/gradient_$time.vtu
  run 1 gradient cases/cavity "${flat[@]}" --field-file $time/U --field-file cases/cavity/$time/p --method plain,lsq,vector -o paths
  check "paths of time $time: the same bytes" cmp -s paths/gradient.vtu alone/gradient.vtu
done
check "a run with fewer times removes the grids of the others" [ ! -e alone/gradient.pvd ]
run 1 gradient cases/cavity "${flat[@]}" --field-file U --time 0.1:0.3,4e-1 --method plain -o alone
check "a range and a number of other form: two times" [ "$(cd alone && echo gradient_*.vtu)" = "gradient_0.2.vtu gradient_0.4.vtu" ]
check "a range: the grid of one time is gone" [ ! -e alone/gradient.vtu ]
run 1 gradient cases/cavity "${flat[@]}" --field-file U --time latest --method plain -o latest
check "the latest time is 0.4" contains latest/gradient.json '"time": "0.4"'
mkdir cases/cavity/0.6 && cp cases/cavity/0.4/p cases/cavity/0.6
run 1 gradient cases/cavity "${flat[@]}" --field-file U --time latest --method plain -o latest
check "the latest time that has the field is 0.4" contains latest/gradient.json '"time": "0.4"'
rm -r cases/cavity/0.6

# The three components in one pass, or one after the other.
run 1 gradient cases/cavity "${flat[@]}" --field-file 0.4/U --method vector -o vector
run 1 gradient cases/cavity "${flat[@]}" --field-file 0.4/U --method plain -o plain
check "vector of a vector: a row for each component" [ "$(grep -cE '"fieldName": "U\.[xyz]"' vector/gradient.json)" = 3 ]
check "vector and plain of a vector: the same bits" \
  [ "$(numbers vector/gradient.json 'l1|l2|max|maxCell')" = "$(numbers plain/gradient.json 'l1|l2|max|maxCell')" ]
check "whole mesh on 2 ranks: the same numbers" same_numbers all-1/gradient.json all-2/gradient.json 1e-9

# --- decomposed cases ----------------------------------------------------------------------------------------------------

run 2 gradient cases/cavity_parts "${flat[@]}" --field-file U --field-file p --time latest --method plain,lsq,vector -o parts
check "decomposed case: exit code 0" exited 0
run 1 gradient cases/cavity "${flat[@]}" --field-file U --field-file p --time 0.4 --method plain,lsq,vector -o whole
check "decomposed case: the numbers of the whole" same_numbers whole/gradient.json parts/gradient.json 1e-9
check "decomposed case: the same values at the boundary" \
  [ "$(sed -n '/boundaryValues/,/}/p' parts/gradient.json)" = "$(sed -n '/boundaryValues/,/}/p' whole/gradient.json)" ]

# --- symmetry planes and wedges --------------------------------------------------------------------------------------------

run 1 gradient cases/symmetry --field-file 0.05/U --method plain -o symmetry
check "symmetry planes: exit code 0" exited 0
check "symmetry planes: vectors without their normal part" \
  contains stdout 'values of the cells without their normal part at "top", "sides"'
run 1 gradient cases/wedge --group front=wall --group back=wall --field-file 0.02/U --method plain -o wedge
check "a wedge: exit code 0" exited 0
check "a wedge: turned vectors" contains stdout 'values of the cells turned to the sides of the wedge at "front", "back"'

# --- faces and compare-ranks -----------------------------------------------------------------------------------------------

for ranks in 1 2; do
  run $ranks faces cases/cavity "${flat[@]}" --group inner --field-file U --field-file p --time 0.2,0.4 --search-method 2 -o faces-$ranks
  check "faces on $ranks ranks: exit code 0" exited 0
  check "faces on $ranks ranks: sizes of each component and time" [ "$(grep -cE '^  (U\.[xyz]|p) ' stdout)" = 8 ]
done
check "faces: values under the names of the fields" grid_has faces-1/faces_0.4.vtp U p weight_sum members rank cell
check "faces: no array of formulas" [ "$(grep -acE 'Name="(value|exact|error)"' faces-1/faces_0.4.vtp)" = 0 ]
check "faces: an index of the series" contains faces-1/faces.pvd 'timestep="0.2" part="0" file="faces_0.2.vtp"'
check "faces: sizes instead of errors in the results" [ "$(grep -c '"errors"' faces-1/faces.json)" = 0 ]
check "faces: set up once" [ "$(grep -c '^inner faces$' faces-1/log.rank0.txt)" = 1 ]
run 1 faces cases/cavity "${flat[@]}" --group inner --field-file 0.4/U --field-file 0.4/p --search-method 2 -o faces-alone
check "faces: a time alone gives the same bytes" cmp -s faces-alone/faces.vtp faces-1/faces_0.4.vtp
run 1 faces cases/cavity "${flat[@]}" --group inner --field x --search-method 2 -o faces-alone
check "faces of a formula: value, exact, error" grid_has faces-alone/faces.vtp value exact error

run 1 compare-ranks cases/cavity "${flat[@]}" --ranks 1,2,3 --method gradients --field-file U --time latest
check "compare-ranks: exit code 0" exited 0
check "compare-ranks: each component by itself" [ "$(grep -c '^time 0.4, field U\.[xyz]$' stdout)" = 3 ]
check "compare-ranks: no promise broken" [ "$(grep -c BROKEN stdout)" = 0 ]
run 1 compare-ranks cases/symmetry --ranks 1,2 --method faces,points --field-file 0.05/p
check "compare-ranks of faces and points: exit code 0" exited 0
check "compare-ranks of faces and points: the promise is a step" [ "$(grep -c ' step ' stdout)" -ge 4 ]

# --- CGNS --------------------------------------------------------------------------------------------------------------------

if [ -n "$write_cgns" ]; then
  "$write_cgns" flow.cgns || exit 1
  for ranks in 1 2; do
    run $ranks gradient flow.cgns --field-file flow.cgns:Pressure --field-file flow.cgns:Velocity --method lsq -o cgns-$ranks
    check "CGNS on $ranks ranks: exit code 0" exited 0
    check "CGNS on $ranks ranks: says that cells stand in" \
      contains stdout 'warning: "flow.cgns:Pressure" has no values for the faces of "inlet", "outlet", "symmetry", "walls"'
    check "CGNS on $ranks ranks: but not for a vector at a plane of symmetry" \
      contains stdout 'warning: "flow.cgns:Velocity" has no values for the faces of "inlet", "outlet", "walls"'
    # Linear fields: 2x - 3y + z, and y, 3z, -x. Interior cells see no boundary.
    index=1
    for length in 3.74165738677394 1 3 1; do
      check "CGNS on $ranks ranks: gradient number $index in interior cells" \
        agree $length "$(number cgns-$ranks/gradient.json l2 $index)" 1e-12
      index=$((index + 1))
      while [ $index -le 8 ] && [ $((index % 2)) = 0 ]; do index=$((index + 1)); done
    done
  done
  check "CGNS: scalar and vector in the grid" grid_has cgns-1/gradient.vtu Pressure Velocity gradient_Pressure_lsq gradient_Velocity_lsq
  run 2 faces flow.cgns --group inner --field-file flow.cgns:VelocityY -o cgns-faces
  check "CGNS, faces of one component: exit code 0" exited 0
fi

# --- wrong input -------------------------------------------------------------------------------------------------------------

# Exit code 2 and one line; the results of an earlier run stay as they are.
cp -r whole kept
sum_of() { find kept -type f -exec cksum {} + | sort; }
sum_of >sums
wrong() {  # wrong NAME TEXT ARGS...
  local name=$1 text=$2 ranks
  shift 2
  for ranks in 1 2; do
    run $ranks "$@"
    check "$name, $ranks ranks: exit code 2" exited 2
    check "$name, $ranks ranks: one line" [ "$(grep -c '^zyngrad: ' stderr)" = 1 ]
    check "$name, $ranks ranks: says what" contains <(grep '^zyngrad: ' stderr) "$text"
    check "$name, $ranks ranks: folder as it was" cmp -s sums <(sum_of)
  done
}
cavity=(gradient cases/cavity "${flat[@]}" -o kept)
wrong "missing time" '--time "0.3": no time 0.3; times: 0, 0.2, 0.4' "${cavity[@]}" --field-file U --time 0.3
wrong "missing field of a time" '--time "0.2": no field "T"; fields of time 0.2: U, p' "${cavity[@]}" --field-file T --time 0.2
wrong "field that no time has" 'no time has all fields, and 0.4 has no "T"; fields of time 0.4: U, p' "${cavity[@]}" --field-file T --time latest
wrong "empty range" '--time "5:": no time in this range has the fields; times: 0, 0.2, 0.4' "${cavity[@]}" --field-file U --time 5:
wrong "range that ends before it begins" 'the range 2:1 ends before it begins' "${cavity[@]}" --field-file U --time 2:1
wrong "no time" '--time "now": expected latest, all, or times and ranges' "${cavity[@]}" --field-file U --time now
wrong "time and path" 'give --field-file U instead of "0.4/U"' "${cavity[@]}" --field-file 0.4/U --time 0.4
wrong "time without fields" '--time chooses the times of --field-file' "${cavity[@]}" --field x --time 0.4
wrong "time of a box" 'is no OpenFOAM case with folders of times' gradient box:3,3,3 --field-file U --time all -o kept
wrong "time of a CGNS array" 'has no times' gradient box:3,3,3 --field-file a.cgns:U --time all -o kept
wrong "missing time in a path" '0.3/U: no such file, here or in the case; times: 0, 0.2, 0.4' "${cavity[@]}" --field-file 0.3/U
wrong "missing field in a path" '0.2/T: no such file, here or in the case; fields of time 0.2: U, p' "${cavity[@]}" --field-file 0.2/T
wrong "field without time" 'name its time, as in 0.4/U; times: 0, 0.2, 0.4' "${cavity[@]}" --field-file U
sed 's/volVectorField/surfaceVectorField/' cases/cavity/0.4/U >cases/cavity/0.4/Uf
wrong "wrong class" 'surfaceVectorField' "${cavity[@]}" --field-file 0.4/Uf
sed 's/^64$/63/' cases/cavity/0.4/U >cases/cavity/0.4/short
wrong "wrong count" 'cases/cavity/0.4/short' "${cavity[@]}" --field-file short --time 0.4
sed 's/^(0.164376307353 /(nan /' cases/cavity/0.4/U >cases/cavity/0.4/bad
check "the file has a NaN" contains cases/cavity/0.4/bad '(nan 0.119060473466 0)'
wrong "NaN in a vector" 'component x of the field "0.4/bad" is not a number at cell' "${cavity[@]}" --field-file bad --time 0.4
wrong "NaN, faces" 'component x of the field "0.4/bad" is not a number at cell' faces cases/cavity "${flat[@]}" --group inner --field-file bad --time 0.4
wrong "NaN, compare-ranks" 'is not finite at cell' compare-ranks cases/cavity "${flat[@]}" --field-file bad --time 0.4 --method plain
wrong "faces of formula and file" 'exclude each other' faces cases/cavity "${flat[@]}" --group inner --field x --field-file 0.4/U
wrong "compare-ranks of formula and file" 'exclude each other' compare-ranks cases/cavity "${flat[@]}" --field x --field-file 0.4/U
run 2 gradient cases/cavity_parts "${flat[@]}" --field-file 0.4/T -o kept
check "decomposed, missing field: exit code 2" exited 2
check "decomposed, missing field: names the others" contains stderr '0.4/T: no such file; fields of time 0.4: U, p'
rm cases/cavity_parts/processor1/0.4/U
run 2 gradient cases/cavity_parts "${flat[@]}" --field-file U --time all -o kept
check "decomposed, field missing on one rank: exit code 2" exited 2
check "decomposed, field missing on one rank: names its folder" contains stderr 'processor1/0.4/U: no such file'
check "decomposed, missing fields: folder as it was" cmp -s sums <(sum_of)
if [ -n "$write_cgns" ]; then
  wrong "CGNS, no such array" "no array 'Mach'" gradient flow.cgns --field-file flow.cgns:Mach -o kept
  wrong "CGNS, another mesh" '80 values for the 27 cells' gradient box:3,3,3 --field-file flow.cgns:Velocity -o kept
  wrong "CGNS, NaN" 'the field "flow.cgns:Bad" is not a number at cell 3' gradient flow.cgns --field-file flow.cgns:Bad -o kept
fi

finish
