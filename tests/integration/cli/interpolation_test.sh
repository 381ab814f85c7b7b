#!/usr/bin/env bash
# zyngrad faces and points: results, files, and the same results on several ranks.
#   interpolation_test.sh ZYNGRAD_BINARY MPIRUN DATA_DIR
# shellcheck source=cli_test_support.sh
. "$(dirname "${BASH_SOURCE[0]}")/cli_test_support.sh"

make_meshes
make_points

# The numbers of the corners of a body's triangles, as bytes.
triangles() {
  python3 - "$1/points.vtp" <<'PY'
import re, struct, sys
content = open(sys.argv[1], "rb").read()
offset = int(re.search(rb'Name="connectivity"[^>]*offset="(\d+)"', content).group(1))
begin = content.index(b"_", content.index(b"<AppendedData")) + 1 + offset
size, = struct.unpack_from("<Q", content, begin)
print(struct.unpack_from("<%dq" % (size // 8), content, begin + 8))
PY
}

# --- interpolation to faces ------------------------------------------------------------------------------------------

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
    # The method does not force the weights to sum to 1; at a span of 100 they do so within 1e-3.
    check "$name: constant" below "$(result "faces-$ranks/faces.json" max 1)" 7e-3
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
        check "$name: says that there are no values" [ "$(grep -c 'all values are 0 by design' stdout)" = 1 ]
        check "$name: no errors" contains sides/faces.json '"errors": null'
      else
        # The cell beyond the face lies on the face and holds the boundary value.
        check "$name: nearly the boundary value" below "$(result sides/faces.json max 1)" 1e-3
      fi
    done
  done
  run $ranks faces box:6,6,6 --field "sin(x)*y" --group inner -o whole-$ranks
done
for ranks in 2 4; do
  run $ranks faces box:6,6,6 --field "sin(x)*y" --group partition -o cut-$ranks
  check "partition faces on $ranks ranks: exit code 0" exited 0
  # By method 4 they take the halo cell's value; its weights have a condition number of about 1e9.
  check "partition faces on $ranks ranks: the halo cell's value" below "$(result cut-$ranks/faces.json max 1)" 1e-6
  check "inner and cut faces on $ranks ranks are the inner faces of the whole" \
    [ $((2 * $(result whole-$ranks/faces.json faces 1) + $(result cut-$ranks/faces.json faces 1))) = $((2 * 540)) ]
  # Stencils at a cut lack the cells that only touch it with a node, so only about the same.
  check "error of inner faces on $ranks ranks is about that on one" \
    agree "$(result whole-1/faces.json l2 1)" "$(result whole-$ranks/faces.json l2 1)" 0.3
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
check "faces, weights that are no numbers: exit code 1" exited 1
check "faces, weights that are no numbers: how many and why" \
  contains stdout "search method 2: the values are not finite at 144 of 144 inner faces: --span 1e-60 is too small"
check "faces, weights that are no numbers: says so" grep -q "warning: the weights of 144 faces are not finite; first: face" stdout
run 1 faces box:4,4,4 --field x --group inner --search-method 2 --span 1e308 -o few
check "faces, a span too large that gives finite numbers: exit code 1" exited 1
check "faces, a span too large that gives finite numbers: says why" \
  contains stdout "search method 2: the values are meaningless: --span 1e+308 is too large"
for ranks in 1 2; do
  run $ranks faces meshes/polyhedra --group lid=wall --group inner --field "x+2*y" -o polyhedra-$ranks
  check "faces of polyhedra on $ranks ranks: exit code" exited $([ $ranks = 1 ] && echo 0 || echo 2)
  run $ranks faces meshes/pyramid.msh --group wall --search-method 2 --field "x+2*y" -o pyramid-$ranks
  check "faces of a pyramid on $ranks ranks: exit code 0" exited 0
done

# --- nodes with very many cells ---------------------------------------------------------------------------------------

fan() {  # fan N: tetrahedra around the edge between the nodes 1 and 2
  awk -v n="$1" 'BEGIN {
    print "$MeshFormat\n2.2 0 8\n$EndMeshFormat\n$PhysicalNames\n1\n2 1 \"wall\"\n$EndPhysicalNames\n$Nodes"
    print n + 2 "\n1 0 0 -0.5\n2 0 0 0.5"
    for (i = 0; i < n; ++i) { a = 6.283185307179586 * i / n; printf "%d %.17g %.17g 0\n", i + 3, cos(a), sin(a) }
    print "$EndNodes\n$Elements\n" 3 * n
    for (i = 0; i < n; ++i) {
      p = i + 3; q = (i + 1) % n + 3
      print 3 * i + 1, 2, 2, 1, 1, 1, p, q "\n" 3 * i + 2, 2, 2, 1, 1, 2, p, q "\n" 3 * i + 3, 4, 2, 1, 1, 1, p, q, 2
    }
    print "$EndElements"
  }'
}

fan 500 >fan.msh
printf "x,y,z\n0.3,0.1,0.1\n" >one.csv
for ranks in 1 2; do
  run $ranks points fan.msh --field x --points one.csv --search-method 2 -o fan
  check "points beside a fan, method 2, $ranks ranks: nothing to warn of" [ "$(grep -c 'cells around it' stdout)" = 0 ]
done
run 1 points fan.msh --field x --points one.csv --search-method 3 -o fan
check "points beside a fan: exit code 0" exited 0
check "points beside a fan: warns of node and cost" \
  grep -q "warning: node 1 at (0, 0, -0.5) has 500 cells around it.*--search-method 2 avoids this" stdout
check "points beside a fan: warns before the result" \
  [ "$(grep -n 'cells around it' stdout | cut -d: -f1)" -lt "$(grep -n 'points by search' stdout | cut -d: -f1)" ]
run 1 check fan.msh --method plain --points one.csv -o fan-check
check "check of a fan: warns" contains stdout "--point-method 2 avoids this"
run 1 study fan.msh --method points3 --field linear -o fan-study
check "study of a fan: warns" contains stdout "A study without points3 avoids this"
run 1 compare-ranks fan.msh --ranks 1 --method points3 --field x
check "compare-ranks on a fan: warns" contains stdout "A comparison without faces3 and points3 avoids this"
run 1 faces fan.msh --field x --group inner -o fan-faces
check "faces of a fan, method 4: nothing to warn of" [ "$(grep -c 'cells around it' stdout)" = 0 ]

# The work for 6000 cells takes a minute; the warning must appear when it has hardly begun.
fan 6000 >fan.msh
"$zyngrad" points fan.msh --field x --points one.csv --search-method 3 -o fan >early 2>&1 &
early=$!
for _ in $(seq 600); do
  if grep -q 'cells around it' early || ! kill -0 $early 2>/dev/null; then break; fi
  sleep 0.1
done
check "points beside a large fan: the warning comes first" grep -q 'warning: node 1 .* has 6,000 cells around it' early
check "points beside a large fan: the work goes on" kill -0 $early
check "points beside a large fan: nothing else is there" [ "$(grep -c 'points by search' early)" = 0 ]
kill -9 $early
wait $early 2>/dev/null
rm -rf fan

# --- interpolation to points -----------------------------------------------------------------------------------------

echo "z,y,x" >none.csv
for ranks in 1 2 4; do
  for method in 1 2 3; do
    run $ranks points box:6,6,6:tet --field "1 + x - 2*y + 3*z" --points points.csv --search-method $method --span 200 -o "points-$ranks-$method"
    name="points, method $method, $ranks ranks"
    check "$name: exit code 0" exited 0
    check "$name: nothing on stderr" [ ! -s stderr ]
    check "$name: original order" [ "$(column "points-$ranks-$method/points.csv" 1)" = "$(column points.csv 1)" ]
    check "$name: duplicates alike" [ "$(sed -n '4s/^c,//p' "points-$ranks-$method/points.csv")" = "$(sed -n '5s/^c again,//p' "points-$ranks-$method/points.csv")" ]
    check "$name: flags the far one alone" [ "$(column "points-$ranks-$method/points.csv" 18 | tr '\n' '-')" = "----far;outside--" ]
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
  run $ranks points box:4,4,4 --field "x" --points points.csv --search-method 3 --span 1e-308 -o none-$ranks
  check "points, a span too small, $ranks ranks: exit code 1" exited 1
  check "points, a span too small, $ranks ranks: how many and why" contains stdout \
    "search method 3: value or gradient is not finite at 6 of 6 points: --span 1e-308 is too small"
  run $ranks points box:4,4,4 --field "x" --points none.csv -o none-$ranks
  check "no points, $ranks ranks: exit code 0" exited 0
  check "no points, $ranks ranks: says so" contains stdout "there are no points, so there is nothing to show"
  check "no points, $ranks ranks: a table without rows" [ "$(cat none-$ranks/points.csv | wc -l)" = 1 ]
  check "no points, $ranks ranks: a file without vertices" grep -aq 'NumberOfVerts="0"' none-$ranks/points.vtp

  run $ranks points box:9,9,9 --field "x*y + z" --body "(x-0.5)^2+(y-0.5)^2+(z-0.5)^2-0.1" -o body-$ranks
  check "points of a body, $ranks ranks: exit code 0" exited 0
  check "points of a body, $ranks ranks: the same points" \
    [ "$(cut -d, -f1-3 body-$ranks/points.csv)" = "$(cut -d, -f1-3 body-1/points.csv)" ]
  check "points of a body, $ranks ranks: the same triangles" [ "$(triangles body-$ranks)" = "$(triangles body-1)" ]
  check "points of a body, $ranks ranks: closed" contains stdout "closed around a volume of 1.2"
  check "points of a body, $ranks ranks: says which method and why" contains stdout "search method 2 (the default)"
  check "points of a body, $ranks ranks: slopes along the normal" \
    grid_has body-$ranks/points.vtp value gradient normal normal_derivative area exact error point
  run $ranks points box:9,9,9 --field "x*y + z" --body "(x-0.5)^2+(y-0.5)^2+(z-0.5)^2-0.1" --spacing 0.1 -o thin-$ranks
  check "points of a body with a spacing, $ranks ranks: less" [ "$(wc -l <thin-$ranks/points.csv)" -lt "$(wc -l <body-1/points.csv)" ]
  check "points of a body with a spacing, $ranks ranks: the same points" \
    [ "$(cut -d, -f1-3 thin-$ranks/points.csv)" = "$(cut -d, -f1-3 thin-1/points.csv)" ]
  # The field has no value inside the body, so only cells outside may be evaluated.
  run $ranks points box:9,9,9 --field "sqrt((x-0.5)^2+(y-0.5)^2+(z-0.5)^2-0.06)" --body "(x-0.5)^2+(y-0.5)^2+(z-0.5)^2-0.1" -o root
  check "field outside a body, $ranks ranks: exit code 0" exited 0
  check "field outside a body, $ranks ranks: all values are numbers" [ "$(result root/points.json notFinite 1)" = 0 ]
  # The body fills half of the box. A point deep inside it is far from usable cells, a point on its surface is not.
  printf 'x,y,z\n0.2,0.5,0.5\n0.7,0.5,0.5\n0.5,0.5,0.5\n' >half.csv
  run $ranks points box:10,10,10 --field "x" --points half.csv --body "x-0.5" -o half
  check "points inside a body, $ranks ranks: exit code 0" exited 0
  check "points inside a body, $ranks ranks: usable cells" contains stdout "from 500 usable of 1,000 cells"
  check "points inside a body, $ranks ranks: flag" [ "$(column half/points.csv 17 | tr '\n' '-')" = "far---" ]
done

# --- bodies from files -----------------------------------------------------------------------------------------------

for ranks in 1 2 4; do
  for kind in torus torus_binary; do
    name="body of $kind.stl, $ranks ranks"
    run $ranks points box:12,12,12 --field "x*y + z" --body-file "$data/stl/$kind.stl" -o $kind-$ranks
    check "$name: exit code 0" exited 0
    check "$name: nothing on stderr" [ ! -s stderr ]
    check "$name: the same usable cells" contains stdout "from 1,648 usable of 1,728 cells"
    check "$name: closed" contains stdout "closed around a volume of"
    check "$name: the same points and triangles" [ "$(cut -d, -f1-3 $kind-$ranks/points.csv)" = "$(cut -d, -f1-3 $kind-1/points.csv)" ]
    check "$name: a point at each corner once" [ "$(cut -d, -f1-3 $kind-$ranks/points.csv | sort -u | wc -l)" = "$(wc -l <$kind-$ranks/points.csv)" ]
    check "$name: triangles with values" \
      grid_has $kind-$ranks/points.vtp value gradient normal normal_derivative area exact error point
    check "$name: as many triangles as in the file" grep -aq "NumberOfPolys=\"$(grep -c endfacet "$data/stl/torus.stl")\"" $kind-$ranks/points.vtp
    # The field is smooth; its slopes are known from one side only.
    check "$name: near the field" [ "$(result $kind-$ranks/points.json l2 1 | awk '{ print $1 < 0.002 }')" = 1 ]
  done
  run $ranks points box:12,12,12 --field "x*y + z" --body-file "$data/stl/torus.stl" --spacing 0.15 -o thin-$ranks
  check "thinned body, $ranks ranks: less" [ "$(wc -l <thin-$ranks/points.csv)" -lt "$(wc -l <torus-1/points.csv)" ]
  check "thinned body, $ranks ranks: closed" contains stdout "closed around a volume of"
  # One point on the axis of the tube, one in the hole.
  printf 'x,y,z\n0.75,0.5,0.5\n0.5,0.5,0.5\n' >tube.csv
  run $ranks points box:40,40,40 --field "x" --points tube.csv --body-file "$data/stl/torus.stl" -o tube
  check "points beside the body of a file, $ranks ranks" [ "$(column tube/points.csv 17 | tr '\n' '-')" = "far--" ]
done
grep -v '^$' "$data/stl/torus.stl" | head -n -8 | sed '$a endsolid' >open.stl
run 1 points box:12,12,12 --field x --body-file open.stl -o open
check "open body: warns with the number of edges" contains stdout "the surface is not closed: 3 open edges"

# --- fields from files -----------------------------------------------------------------------------------------------

cavity=$data/openfoam_cases/cavity
walls=(--group frontAndBack=wall)
printf 'name,x,y,z,time\nmiddle,0.5,0.5,0.0625,8\nabove,0.5,0.9,0.0625,9\nbeside,2,0.5,0.0625,10\n' >probes.csv
for ranks in 1 2; do
  run $ranks points "$cavity" "${walls[@]}" --field-file U --field-file p --time all --points probes.csv -o probes-$ranks
  check "probes at all times, $ranks ranks: exit code 0" exited 0
  check "probes at all times, $ranks ranks: columns" [ "$(head -n 1 probes-$ranks/points.csv | cut -d, -f1-10)" = \
    "time,name,x,y,z,U_x,U_x_gradient_x,U_x_gradient_y,U_x_gradient_z,U_y" ]
  check "probes at all times, $ranks ranks: a series for each probe" [ "$(column probes-$ranks/points.csv 1 | tr '\n' ' ')" = "0 0.2 0.4 0 0.2 0.4 0 0.2 0.4 " ]
  check "probes at all times, $ranks ranks: one is outside" [ "$(column probes-$ranks/points.csv 25 | sort | uniq -c | tr -d ' \n')" = "63far;outside" ]
  for time in 0 0.2 0.4; do
    check "probes at all times, $ranks ranks: vertices at $time" \
      grid_has probes-$ranks/points_$time.vtp U U_gradient p p_gradient distance members rank flags point
  done
  check "probes at all times, $ranks ranks: an index of the times" [ "$(grep -c 'timestep=' probes-$ranks/points.pvd)" = 3 ]
  run $ranks points "$cavity" "${walls[@]}" --field-file 0.4/p --points probes.csv -o probe-$ranks
  check "probes in one file, $ranks ranks: exit code 0" exited 0
  check "probes in one file, $ranks ranks: no errors of unknown fields" [ "$(grep -c '"l2"' probe-$ranks/points.json)" = 0 ]
  check "probes in one file, $ranks ranks: as among all times" \
    [ "$(sed -n 2p probe-$ranks/points.csv | cut -d, -f6)" = "$(sed -n 4p probes-$ranks/points.csv | cut -d, -f18)" ]
  run $ranks points "$cavity" "${walls[@]}" --field-file 0.4/U --body "(x-0.5)^2+(y-0.5)^2-0.04" -o cylinder
  check "a vector on a body, $ranks ranks: arrays" grid_has cylinder/points.vtp U U_gradient U_normal_derivative normal area
  check "a vector on a body, $ranks ranks: integrals of its components" [ "$(grep -c '"of": "U_' cylinder/points.json)" = 3 ]
done
check "probes do not depend on the ranks" agree "$(sed -n 4p probes-1/points.csv | cut -d, -f18)" "$(sed -n 4p probes-2/points.csv | cut -d, -f18)" 0.05
run 1 points "$cavity" "${walls[@]}" --field-file 0.4/p --points probe-1/points.csv -o again
check "probes of an earlier result: its columns are replaced" [ "$(cat again/points.csv)" = "$(cat probe-1/points.csv)" ]

for ranks in 2 4; do
  for method in 1 2 3; do
    a=$(result points-1-$method/points.json meanCellDistance 1)
    b=$(result points-$ranks-$method/points.json meanCellDistance 1)
    check "mean distance of cells agrees between 1 and $ranks ranks" agree "$a" "$b" 1e-12
  done
  # Stencils at a cut lack the cells that only touch it with a node, so only about the same.
  check "error of a body's points on $ranks ranks is about that on one" \
    agree "$(result body-1/points.json l2 1)" "$(result body-$ranks/points.json l2 1)" 0.5
done
run 2 points box:9,9,9 --field "x*y + z" --body "(x-0.5)^2+(y-0.5)^2+(z-0.5)^2-0.1" -o body-again
check "a second run gives the same bits" [ "$(cat body-2/points.csv)" = "$(cat body-again/points.csv)" ]
run 1 points box:6,6,6 --field x --points points-1-3/points.csv -o second
check "points of an earlier result: its columns are replaced" [ "$(head -n 1 second/points.csv)" = "$(head -n 1 points-1-3/points.csv)" ]
run 1 points box:4,4,4 --field x --points points.csv --search-method 2 --search-number 3 -o second
check "stencils of three cells are flagged" grep -q "warning: few: 6 points with fewer than 4 cells" stdout
run 1 points box:4,4,4 --field x --points points.csv --search-method 2 --span 1e60 -o second
check "weights that are no numbers are flagged" grep -q "warning: notfinite: 6 points" stdout
# Two cells, one on each rank, one of them usable: the other rank has nothing to do.
printf 'x,y,z\n0.1,0.5,0.5\n0.9,0.5,0.5\n' >two.csv
run 2 points box:2,1,1 --field x --points two.csv --body "x-0.5" --search-method 2 -o lonely
check "a rank without usable cells: exit code 0" exited 0
check "a rank without usable cells serves no point" [ "$(column lonely/points.csv 16 | sort -u | wc -l)" = 1 ]

finish
