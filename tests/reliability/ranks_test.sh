#!/usr/bin/env bash
# The program on many ranks, most of them with a cell or two: the same results as on one, and an end in any case.
#   ranks_test.sh ZYNGRAD_BINARY MPIRUN DATA_DIR MPI_TESTS_BINARY
# shellcheck source=../integration/cli/cli_test_support.sh
. "$(dirname "${BASH_SOURCE[0]}")/../integration/cli/cli_test_support.sh"
mpi_tests=$(realpath "$4")

in_time() {  # in_time LIMIT: of the run before this
  [ "$seconds" -le "$1" ]
}
timed() {
  local begin=$SECONDS
  run "$@"
  seconds=$((SECONDS - begin))
}

# --- every number of ranks -----------------------------------------------------------------------------------------------

# 16 cells: two each on 8 ranks, one each on 16.
readonly small=box:2,2,4
counts=$(seq -s, 1 16)
for ranks in $(seq 1 16); do
  run "$ranks" info $small
  check "info on $ranks ranks: exit code 0" exited 0
  check "info on $ranks ranks: all cells" grep -Eq "^ +16 +45 " stdout
  fewest=$(awk '/fewest cells/ { getline; getline; print $2 }' stdout)
  check "info on $ranks ranks: no rank without cells" [ "$ranks" = 1 -o "$fewest" -ge 1 ]
done
check "info on 16 ranks: a cell each" [ "$fewest" = 1 ]

# All methods on all numbers of parts, by threads of one process; what is promised stands in docs/measured/study.md.
for case in "$counts $small" "1,2,3,4,5,6,7,8,9,10,11,12 box:3,2,2:prism"; do
  mesh=${case#* }
  run 1 compare-ranks "$mesh" --ranks "${case% *}" --span 50
  check "compare-ranks on $mesh, as many ranks as can be: what is promised holds" exited 0
  check "compare-ranks on $mesh, as many ranks as can be: a table a number" \
    [ "$(grep -c '^largest difference' stdout)" = "$(echo "${case% *}" | tr , '\n' | wc -l)" ]
done

# Without those that go through hundreds of files or large meshes: on so few cores, they would take minutes. They run on one
# to four ranks.
readonly many='*Damaged*:*Truncated*:*MessagesOf*:*Refusal*:*SeveralRounds*:*AnyConditions*:PartitionSlab.Balances*'
timeout 240 "$mpirun" -n 16 "$mpi_tests" --gtest_color=no --gtest_filter="-$many" >stdout 2>stderr
code=$?
check "tests of the reference host on 16 ranks" exited 0
check "tests of the reference host on 16 ranks: they ran" grep -Eq "PASSED.* [0-9]{2,3} tests" stdout

# Meshes in slabs, of which no rank holds the whole: the bits of the same parts cut out of the whole.
for ranks in $(seq 5 15); do
  timeout 120 "$mpirun" -n "$ranks" "$mpi_tests" --gtest_color=no --gtest_filter='*GradientsOnSlabs*' >stdout 2>stderr
  code=$?
  check "gradients on slabs on $ranks ranks" exited 0
  check "gradients on slabs on $ranks ranks: they ran" grep -q "PASSED.* [0-9][0-9] tests" stdout
done

# --- results on a few numbers ----------------------------------------------------------------------------------------------

same_numbers() {  # same_numbers A B SHARE: all l2 numbers of two results
  paste <(grep -o '"l2": .*' "$1" | tr -dc '0-9.e+\n-') <(grep -o '"l2": .*' "$2" | tr -dc '0-9.e+\n-') |
    awk -v s="$3" 'NF != 2 && NF != 0 { bad = 1 }
      NF == 2 { n++; d = $1 - $2; if (d > s * $1 + 1e-12 || -d > s * $1 + 1e-12) bad = 1 } END { exit bad || n == 0 }'
}
of_cells() { sed -n '/^[0-9,]* cells$/,/^all results\|^NOT all/p' "$1"; }

on_all_sides() {  # on_all_sides MESH RANKS...: everything, against one rank
  local mesh=$1 inner ranks method
  shift
  run 1 info "$mesh"
  inner=$(awk '/inner faces/ { getline; getline; print $3 }' stdout)
  run 1 gradient "$mesh" --field "sin(3*x)*y + z^2" --span 50 -o gradient-1
  # Interpolation at a cut is another one than on the whole mesh: a lone cell and its neighbours carry less than a whole
  # neighbourhood. How far values may differ is measured above; here fields vary by 1 and 2 over the box.
  run 1 check "$mesh" --method all -o check-1
  of_cells stdout >cells-1
  for ranks in "$@"; do
    on="on $mesh, $ranks ranks"
    run "$ranks" gradient "$mesh" --field "sin(3*x)*y + z^2" --span 50 --non-blocking -o gradient-n
    check "gradient $on: exit code 0" exited 0
    check "gradient $on: the same errors" same_numbers gradient-1/gradient.json gradient-n/gradient.json 1e-9
    check "gradient $on: a piece a rank" [ "$(find gradient-n/gradient -name '*.vtu' | wc -l)" = "$ranks" ]
    check "gradient $on: nothing unfinished" no_parts_left
    for method in 1 2 3 4; do
      run "$ranks" faces "$mesh" --field "sin(x)*y" --group inner --search-method $method --span 50 -o faces-n
      if [ "$code" = 2 ] && grep -q "every face between cells is a partition face" stderr; then
        faces_inside=0
      else
        check "faces by method $method $on: exit code 0" exited 0
        check "faces by method $method $on: an error of the size to be expected" \
          below "$(result faces-n/faces.json max 1)" 0.02
        faces_inside=$(result faces-n/faces.json faces 1)
      fi
    done
    run "$ranks" faces "$mesh" --field "sin(x)*y" --group partition -o faces-cut
    check "partition faces $on: exit code 0" exited 0
    check "partition faces $on: with the inner ones all there are" \
      [ $((2 * faces_inside + $(result faces-cut/faces.json faces 1))) = $((2 * inner)) ]
    for method in 1 2 3; do
      run "$ranks" points "$mesh" --field "x*y + z" --points near.csv --search-method $method --span 50 -o points-n
      check "points by method $method $on: exit code 0" exited 0
      check "points by method $method $on: an error of the size to be expected" \
        below "$(result points-n/points.json max 1)" 0.2
      check "points by method $method $on: all are near one corner, so few ranks have any" \
        [ "$(column points-n/points.csv 17 | sort -u | wc -l)" -le 3 ]
    done
    run "$ranks" check "$mesh" -o check-n
    check "check $on: exit code 0" exited 0
    of_cells stdout >cells-n
    check "check $on: the same table" cmp -s cells-1 cells-n
  done
}
printf 'id,x,y,z\na,0.1,0.1,0.05\nb,0.2,0.15,0.1\nc,0.3,0.3,0.1\n' >near.csv
on_all_sides $small 5 16
on_all_sides box:3,2,2:prism 7

# One cell a rank, and the one in the middle has nothing but partition faces: neither boundary nor inner faces.
run 1 gradient box:3,3,3 --field "sin(3*x)*y + z^2" --span 50 -o middle-1
timed 27 gradient box:3,3,3 --field "sin(3*x)*y + z^2" --span 50 -o middle-27
check "a cell between partition faces alone: exit code 0" exited 0
check "a cell between partition faces alone: the same errors" \
  same_numbers middle-1/gradient.json middle-27/gradient.json 1e-9
run 27 faces box:3,3,3 --field "x" --group partition --search-method 4 -o middle-faces
check "a cell between partition faces alone, its faces: exit code 0" exited 0
run 27 faces box:3,3,3 --field "x" --group inner -o middle-faces
check "no inner face on any rank: exit code 2" exited 2
check "no inner face on any rank: says why" contains stderr "no rank has inner faces: on 27 ranks every face between cells"

# A body that covers all cells but a layer: most ranks have none that can be used.
run 16 points $small --field "x" --points near.csv --body "z-0.3" -o covered
check "ranks without usable cells: exit code 0" exited 0
check "ranks without usable cells: how many there are" contains stdout "from 12 usable of 16 cells"
run 16 points $small --field "x" --points near.csv --body "0.8-z" -o covered
check "usable cells on a quarter of the ranks: exit code 0" exited 0
check "usable cells on a quarter of the ranks: as many" contains stdout "usable of 16 cells"

# --- a zero pivot of least squares -----------------------------------------------------------------------------------------

# Cubes within cubes around one centre: every cell but the outermost has nothing to tell directions apart. Where the
# operator meets it, it returns without its exchange, and the other ranks would wait for ever.
nested_cubes() {  # nested_cubes FOLDER CELLS
  mkdir -p "$1"
  foam() { printf 'FoamFile\n{\n    version 2.0;\n    format ascii;\n    class %s;\n    object %s;\n}\n' "$1" "$2"; }
  local n=$2
  {
    foam vectorField points
    awk -v n="$n" 'BEGIN { print 8 * n " ("; for (k = 1; k <= n; ++k) for (z = -1; z <= 1; z += 2) {
      print "(" (-k) " " (-k) " " z * k ") (" k " " (-k) " " z * k ") (" k " " k " " z * k ") (" (-k) " " k " " z * k ")" }
      print ")" }'
  } >"$1/points"
  {
    foam faceList faces
    awk -v n="$n" 'BEGIN { print 6 * n " ("; split("0 3 2 1 4 5 6 7 0 1 5 4 3 7 6 2 0 4 7 3 1 2 6 5", v, " ")
      for (k = 0; k < n; ++k) for (f = 0; f < 6; ++f) print "4(" v[4 * f + 1] + 8 * k, v[4 * f + 2] + 8 * k, v[4 * f + 3] + 8 * k, v[4 * f + 4] + 8 * k ")"
      print ")" }'
  } >"$1/faces"
  { foam labelList owner && awk -v n="$n" 'BEGIN { print 6 * n " ("; for (i = 0; i < 6 * n; ++i) print int(i / 6); print ")" }'; } >"$1/owner"
  { foam labelList neighbour && awk -v n="$n" 'BEGIN { print 6 * (n - 1) " ("; for (i = 0; i < 6 * (n - 1); ++i) print int(i / 6) + 1; print ")" }'; } >"$1/neighbour"
  { foam polyBoundaryMesh boundary && echo "1 ( wall { type wall; nFaces 6; startFace $((6 * (n - 1))); } )"; } >"$1/boundary"
}
nested_cubes nested 16
cell_within_a_cell shell
for case in "1 shell" "2 shell" "3 nested" "16 nested"; do
  ranks=${case% *} mesh=${case#* }
  timed "$ranks" gradient "$mesh" --field "x" --method lsq -o pivot
  name="zero pivot, $mesh, $ranks ranks"
  check "$name: ends within 10 s ($seconds s)" in_time 10
  check "$name: exit code 1" exited 1
  check "$name: names cell and rank" grep -Eq "^  lsq: not run: least squares stops at cell 1 on rank [0-9]+ \(zero pivot\)" stdout
  timed "$ranks" gradient "$mesh" --field "x" -o pivot
  check "$name, among all methods: ends within 10 s ($seconds s)" in_time 10
  check "$name, among all methods: exit code 1" exited 1
  check "$name, among all methods: the others have run" [ "$(grep -cE '^  (plain|iterated|weighted|vector)' stdout)" -ge 8 ]
  check "$name, among all methods: in the results" contains pivot/gradient.json '"ran": false'
done

# --- ranks that are not alike ----------------------------------------------------------------------------------------------

run_each() {  # run_each COMMAND...: a rank for each, which bash starts; then as after timed
  local begin=$SECONDS arguments=() command
  for command in "$@"; do
    [ ${#arguments[@]} = 0 ] || arguments+=(:)
    arguments+=(-n 1 bash -c "$command" "$zyngrad")
  done
  timeout 60 "$mpirun" "${arguments[@]}" >stdout 2>stderr </dev/null
  code=$?
  seconds=$((SECONDS - begin))
}
all_end() {  # all_end NAME TEXT: in time, by one line of ours that says why
  check "$1: ends within 20 s ($seconds s)" in_time 20
  check "$1: exit code 2" exited 2
  check "$1: one line of ours" [ "$(grep -c '^zyngrad: ' stderr)" = 1 ]
  check "$1: says why" grep -q "^zyngrad: .*$2" stderr
  check "$1: nothing is left" [ ! -e "$work/odd" ]
  rm -rf "$work/odd"
}
good='exec "$0" gradient box:6,6,6 --field x --method plain -o odd'
for odd in 0 1 2; do  # which rank of three
  each=("$good" "$good" "$good")
  [ $odd = 0 ] && who=1 || who=$odd
  each[odd]='exec "$0" info --nosuch'
  run_each "${each[@]}"
  all_end "other arguments on rank $odd" "rank $who was started with arguments that differ from those of rank 0"
  each[odd]=${good/box:6,6,6/other.msh}
  run_each "${each[@]}"
  all_end "another mesh on rank $odd" "rank $who was started with arguments that differ from those of rank 0"
  mkdir -p elsewhere
  each[odd]="cd elsewhere && $good"
  run_each "${each[@]}"
  all_end "another working folder on rank $odd" "rank $who does not share the output folder \"odd\" with rank 0"
  check "another working folder on rank $odd: nothing is left there" [ -z "$(ls elsewhere)" ]
  each[odd]="export TMPDIR=$work/none; exec \"\$0\" study box:3,3,3 --method plain -o odd"
  each[$(((odd + 1) % 3))]='exec "$0" study box:3,3,3 --method plain -o odd'
  each[$(((odd + 2) % 3))]=${each[$(((odd + 1) % 3))]}
  run_each "${each[@]}"
  all_end "no folder for temporary files on rank $odd" "folder for temporary files"
done
run_each 'exec "$0" info box:4,4,4' 'exec "$0" info --nosuch'
all_end "a command that is right on rank 0 alone" "rank 1 was started with arguments that differ from those of rank 0"
run_each "${good/box:6,6,6/nosuch.msh}" "${good/box:6,6,6/nosuch.msh}" "${good/box:6,6,6/nosuch.msh}"
all_end "no mesh" "nosuch.msh"
if grep -q __asan_init "$zyngrad"; then
  echo "skipped memory that one rank does not have: AddressSanitizer reserves more than that"
else
  lots='exec "$0" gradient box:60,60,60 --field x --method plain -o odd'
  for odd in 0 1 2; do
    each=("$lots" "$lots" "$lots")
    # Enough to begin with, but not for its part of the mesh.
    each[odd]="ulimit -v 300000; $lots"
    run_each "${each[@]}"
    all_end "no memory on rank $odd" "not enough memory on rank $odd"
  done
fi

# --- threads -----------------------------------------------------------------------------------------------------------------

for ranks in 1 2; do
  OMP_NUM_THREADS=65535 run $ranks gradient box:4,4,4 --field x --method lsq -o threads
  check "65535 threads, $ranks ranks: exit code 0" exited 0
  check "65535 threads, $ranks ranks: one line says how many" \
    grep -qxE "zyngrad: note: 65535 OpenMP threads were requested; [0-9]+ are used" stderr
  check "65535 threads, $ranks ranks: nothing else" [ "$(grep -c zyngrad stderr)" = 1 ]
done

# --- a rank that is killed -------------------------------------------------------------------------------------------------

# How long it takes is to be seen as users see it.
unset OMPI_MCA_odls_base_sigkill_timeout

content() { (cd "$1" && find . -type f -not -path './unfinished.part/*' -print0 | sort -z | xargs -0r sha256sum); }
none_alive() {  # none_alive PID...; one that has ended and that nobody has asked for its exit code is not alive
  local pid attempt
  for pid in "$@"; do
    for attempt in $(seq 20); do  # what it has allocated takes a moment to go
      grep -qs '^State:[[:space:]]*[RSDTtI]' "/proc/$pid/status" || continue 2
      sleep 0.1
    done
    return 1
  done
}

run 3 gradient box:3,3,3 --field x --method plain -o killed
content killed >earlier
# So many calls that it is long before the end in any case.
for moment in 0 0.3 1; do
  for victim in 1 3; do  # the first and the last rank
    run 3 gradient box:3,3,3 --field x --method plain -o killed  # clears what the run before has left
    content killed >earlier
    "$mpirun" -n 3 "$zyngrad" gradient box:40,40,40:tet --field "sin(x)*y" --repeat 1000000 \
      -o killed >stdout 2>stderr </dev/null &
    pid=$!
    until [ -e killed/unfinished.part/lock ] || ! kill -0 $pid 2>/dev/null; do sleep 0.01; done
    sleep $moment
    ranks_of $pid >pids
    kill -9 "$(sed -n ${victim}p pids)"
    begin=$SECONDS
    wait $pid
    code=$?
    seconds=$((SECONDS - begin))
    name="rank $victim of 3 killed $moment s into its run"
    check "$name: all have begun" [ "$(wc -l <pids)" = 3 ]
    check "$name: an error" [ "$code" != 0 ]
    check "$name: ends within 10 s ($seconds s)" in_time 10
    check "$name: no rank goes on" none_alive $(cat pids)
    check "$name: the earlier result is whole" [ "$(content killed)" = "$(cat earlier)" ]
  done
done
run 3 gradient box:3,3,3 --field x --method plain -o killed
check "after all that: exit code 0" exited 0
check "after all that: nothing unfinished" [ ! -e killed/unfinished.part ]

finish
