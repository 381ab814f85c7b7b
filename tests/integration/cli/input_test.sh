#!/usr/bin/env bash
# Wrong input gives exit code 2 and one line that says what is wrong, and leaves no file behind.
#   input_test.sh ZYNGRAD_BINARY MPIRUN DATA_DIR
# shellcheck source=cli_test_support.sh
. "$(dirname "${BASH_SOURCE[0]}")/cli_test_support.sh"

make_meshes
make_case
make_points

# --- wrong input -----------------------------------------------------------------------------------------------------

run 1 points box:3,3,3 --field x --points points.csv -o points-1-1
echo "no mesh" >text.msh
echo "no mesh" >text.cgns
echo "no mesh" >picture.png
touch a-file
printf "x,y\n1,2\n" >no-z.csv
printf "x,y,z\n1,2,3\n4,5,six\n" >bad.csv
printf 'solid a\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 nan 0\n' >bad.stl
head -c 1000 "$data/stl/torus_binary.stl" >cut.stl
sed 's/vertex /vertex 1/' "$data/stl/torus.stl" >beside.stl
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
wrong "field not finite" 'the field "log(x)" is infinite at a face of "inlet"' gradient box:3,3,3 --field "log(x)"
wrong "field not finite on one rank" "at cell 8 at (0.9375" gradient box:8,1,1 --field "1/(x-0.9375)"
wrong "weight not finite" 'the weight "1/y"' gradient box:3,3,3 --field x --weight "1/y"
wrong "unknown method" 'unknown method "best"' gradient box:3,3,3 --field x --method best
wrong "unknown method in a list" 'unknown method "best"' gradient box:3,3,3 --field x --method plain,best
wrong "field not a number" 'the field "sqrt(x-1)" is not a number at cell 1 at (0.166667, 0.166667, 0.166667)' gradient box:3,3,3 --field "sqrt(x-1)"
wrong "no field" "--field" gradient box:3,3,3
wrong "no mesh" "MESH" gradient --field x
wrong "two fields" "one or three" gradient box:3,3,3 --field x --field y
wrong "vector of one field" "method vector takes three --field, got 1" gradient box:3,3,3 --field x --method vector
wrong "formula and file" "exclude each other" gradient box:3,3,3 --field x --field-file 0/T
wrong "file for a box" "needs an OpenFOAM mesh" gradient box:3,3,3 --field-file 0/T
wrong "missing field file" "0/p: no such file" gradient meshes/case --field-file 0/p
wrong "field file of another mesh" "meshes/case/0/short: 1 values for 2 cells" gradient meshes/case --field-file 0/short
wrong "field file not finite" 'the field "0/infinite" is not a number at cell 2' gradient meshes/case --field-file 0/infinite
wrong "CGNS without an array" "name an array" gradient meshes/case --field-file wing.cgns
wrong "not a CGNS file" "text.cgns" gradient text.cgns --field x
wrong "list of three fields" "method plain,lsq takes one --field, got 3" gradient box:3,3,3 --field x --field y --field z --method plain,lsq
wrong "plain of three fields" "method plain takes one --field, got 3" gradient box:3,3,3 --field x --field y --field z --method plain
wrong "sweeps not a number" '--sweeps "many"' gradient box:3,3,3 --field x --sweeps many
wrong "negative sweeps" '--sweeps "-1"' gradient box:3,3,3 --field x --sweeps -1
wrong "span not a number" '--span "wide"' gradient box:3,3,3 --field x --method rbf --span wide
wrong "span of zero" '--span "0": expected a number above 0' gradient box:3,3,3 --field x --method rbf --span 0
wrong "infinite span" '--span "inf"' gradient box:3,3,3 --field x --method rbf --span inf
wrong "explain without a cell" "--cell" explain box:3,3,3
wrong "explain cell 0" '--cell "0"' explain box:3,3,3 --cell 0
wrong "explain beyond the cells" '--cell "28": the mesh has cells 1 to 27' explain box:3,3,3 --cell 28
wrong "explain beyond 32 bits" '--cell "3000000000": the mesh has cells 1 to 27' explain box:3,3,3 --cell 3000000000
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
wrong "default group" '--default-group "door"' info box:3,3,3 --default-group door
wrong "groups of a missing file" '--groups "missing.txt": cannot be read' gradient box:3,3,3 --field x --groups missing.txt
wrong "pattern of no boundary" "that matches 'lid*' (--group)" info box:3,3,3 --group 'lid*=wall'
wrong "box without sizes" "box:" info box:
wrong "box of no cells" "box:0,3,3" info box:0,3,3
wrong "box of odd shape" "ball" info box:3,3,3:ball
wrong "folder below a file" "a-file" gradient box:3,3,3 --field x -o a-file/below
wrong "folder is a file" "a-file" gradient box:3,3,3 --field x -o a-file
wrong "folder without a name" "output folder" gradient box:3,3,3 --field x -o ""
wrong "folder that cannot be written" "/proc/zyngrad" gradient box:3,3,3 --field x -o /proc/zyngrad
wrong "faces without a group" "--group" faces box:3,3,3 --field x
wrong "faces with a kind only" "--group must choose the faces: inner, wall" faces box:3,3,3 --field x --group wall_ymin=wall
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
wrong "study without meshes" "give either --series or" study
wrong "study of series and meshes" "give either --series or" study box:3,3,3 --series tet
wrong "study of an unknown series" '--series "hexes": expected hex, perturbed, tet' study --series hexes
wrong "study of a bad box" "box:0,3,3" study --series box:0,3,3
wrong "study with too many levels" "32-bit" study --series hex --levels 12
wrong "box too large for a rank" "has more cells, faces or nodes than a 32-bit number can count" info box:2000,2000,2000
wrong "box too large for any rank" "64-bit" info box:2000000000,2000000000,2
wrong "study of no level" '--levels "0"' study --series hex --levels 0
wrong "study with levels of meshes" "--levels needs --series" study box:3,3,3 --levels 2
wrong "study of an unknown method" 'unknown method "best": expected plain, iterated' study --series hex --method plain,best
wrong "study of no method" 'unknown method ""' study --series hex --method plain,
wrong "study with a bad span" '--span "wide"' study --series hex --span 5,wide
wrong "study with no span" '--span ""' study --series hex --span 5,
wrong "study with a bad weight" 'expression "1+": column 3' study --series hex --weight "1+"
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
wrong "points without points" "--points FILE.csv, --body EXPR or --body-file FILE.stl" points box:3,3,3 --field x
wrong "points without a field" "--field" points box:3,3,3 --points points.csv
wrong "points, missing table" "missing.csv: no such file" points box:3,3,3 --field x --points missing.csv
wrong "points, folder as table" "meshes: a folder, not a regular file" points box:3,3,3 --field x --points meshes
wrong "points, table without z" "no-z.csv: line 1, column 1: the header has no column z" points box:3,3,3 --field x --points no-z.csv
wrong "points, no number" 'bad.csv: line 3, column 5: "six" is not a finite number (z)' points box:3,3,3 --field x --points bad.csv
wrong "points, spacing of a table" "--spacing is for points on the surface" points box:3,3,3 --field x --points points.csv --spacing 1
wrong "points, spacing of zero" '--spacing "0"' points box:3,3,3 --field x --body "x-0.5" --spacing 0
wrong "points, bad body" 'expression "x-": column 3' points box:3,3,3 --field x --body "x-"
wrong "points, body not finite" 'the body "log(x-0.6)" is' points box:3,3,3 --field x --body "log(x-0.6)"
wrong "points, body not finite at a node" 'the body "x-0.5+0/y" is not finite at a node at' points box:2,2,2 --field x --body "x-0.5+0/y"
wrong "points, body beside the mesh" 'the surface of the body "2-x" does not intersect any cell' points box:3,3,3 --field x --body "2-x"
wrong "points, all cells in the body" 'no cell has its centre outside the body "x-2"' points box:3,3,3 --field x --body "x-2" --points points.csv
wrong "points, field not finite in a cell" 'the field "log(x-0.4)" is' points box:3,3,3 --field "log(x-0.4)" --points points.csv
wrong "points, field not finite at a point" 'or its gradient is not finite at point 6 at (0, 0, 0)' points box:3,3,3 --field "sqrt(x)" --points points.csv
wrong "points, method 4" '--search-method "4": expected 1 to 3' points box:3,3,3 --field x --points points.csv --search-method 4
wrong "points, infinite span" '--span "inf"' points box:3,3,3 --field x --points points.csv --span inf
wrong "points, two fields" "--field and --field-file exclude each other" points box:3,3,3 --field x --field-file p --points points.csv
wrong "points, two bodies" "--body and --body-file exclude each other" points box:3,3,3 --field x --body x --body-file body.stl
wrong "points, missing body" "missing.stl: no such file" points box:3,3,3 --field x --body-file missing.stl
wrong "points, bad body" 'bad.stl:5: "nan" is not a finite number (y) (triangle 1)' points box:3,3,3 --field x --body-file bad.stl
wrong "points, cut body" "cut.stl: offset 80: not a binary STL file, or cut off: " points box:3,3,3 --field x --body-file cut.stl
wrong "points, body beside the mesh" "are both in the same unit of length?" points box:3,3,3 --field x --body-file beside.stl
wrong "points, time without a file" "--time chooses the times of --field-file" points box:3,3,3 --field x --time latest --points points.csv
wrong "points, its own output" "is a file that this run writes" points box:3,3,3 --field x --points points-1-1/points.csv -o points-1-1
wrong "points, folder that cannot be written" "/proc/zyngrad" points box:3,3,3 --field x --points points.csv -o /proc/zyngrad
wrong "check, unknown method" 'unknown method "best": expected plain' check box:3,3,3 --method plain,best
wrong "check, empty method" 'unknown method ""' check box:3,3,3 --method plain,
wrong "check, unknown faces" '--group-faces "door": expected inner' check box:3,3,3 --group-faces door
wrong "check, span of zero" '--span "0"' check box:3,3,3 --span 0
wrong "check, face method 5" '--face-method "5": expected 1 to 4' check box:3,3,3 --face-method 5
wrong "check, missing table" "missing.csv: no such file" check box:3,3,3 --points missing.csv
wrong "check, bad body" 'expression "x-": column 3' check box:3,3,3 --body "x-"
wrong "check, missing mesh" "missing.msh" check missing.msh
wrong "check, folder below a file" "a-file" check box:3,3,3 -o a-file/below
run 1 faces box:3,3,3 --field x --group partition
check "partition faces on one rank: exit code 2" exited 2
check "partition faces on one rank: says what" contains stderr "one rank has no partition faces"

for ranks in 1 4; do
  run $ranks gradient meshes/decomposed --field x
  check "decomposed case on $ranks ranks: exit code 2" exited 2
  check "decomposed case on $ranks ranks: says how many" contains stderr "decomposed for 2 processors, but this run has $ranks rank"
done

run 4 gradient box:3,1,1 --field x
check "more ranks than cells: exit code 2" exited 2
check "more ranks than cells: one line" [ "$(grep -c '^zyngrad: ' stderr)" = 1 ]
check "more ranks than cells: no folder left" [ ! -e zyngrad-output ]

finish
