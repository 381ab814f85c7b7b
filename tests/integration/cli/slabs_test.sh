#!/usr/bin/env bash
# Meshes that no rank holds whole: how the ranks get them, what the program says about it, and what goes wrong.
#   slabs_test.sh ZYNGRAD_BINARY MPIRUN DATA_DIR
source "$(dirname "${BASH_SOURCE[0]}")/cli_test_support.sh"

# What the program itself says in an error; mpirun adds lines of its own.
words() { grep '^zyngrad: ' stderr; }
in_one_line() { [ "$(words | wc -l)" = 1 ]; }

# The grids of two runs on several ranks: a piece a rank, all bytes the same.
same_grids() {  # same_grids FOLDER FOLDER RANKS
  [ "$(find "$1/gradient" -name '*.vtu' | wc -l)" = "$3" ] && diff -rq "$1/gradient" "$2/gradient" >/dev/null
}

# --- the two ways, on the same parts --------------------------------------------------------------------------------------

both_ways() {  # both_ways NAME RANKS MESH OPTION...
  local name="$1 on $2 ranks" ranks=$2 mesh=$3 way
  shift 3
  rm -rf parts slabs whole
  run "$ranks" info "$mesh" "$@" --read slabs --save-partition parts
  check "$name: read in slabs" exited 0
  check "$name: says so" contains stdout "slab"
  for way in slabs whole; do
    run "$ranks" gradient "$mesh" "$@" --field 'sin(3*x)*y+z*z' --method iterated,lsq --read $way --partition parts -o $way
    check "$name, $way, on these parts" exited 0
    check "$name, $way: names the file of parts" contains stdout "parts divides"
  done
  check "$name: the same bits" same_grids slabs whole "$ranks"
}

for ranks in 2 3; do
  for file in box_41_binary box_22_binary box_parts_41_binary; do
    both_ways $file $ranks "$data/gmsh/$file.msh" --default-group wall
  done
  for case in cavity cavity_binary cavity_binary_gz channel; do
    both_ways $case $ranks "$data/openfoam_cases/$case" --default-group wall
  done
  both_ways warped $ranks "$data/openfoam_warped/polyMesh" --default-group wall
done
both_ways dual 4 box:4,3,3:dual
both_ways tetrahedra 7 box:4,3,3:tet:perturb=0.2

# --- the program chooses --------------------------------------------------------------------------------------------------

run 2 info "$data/gmsh/box_41_binary.msh" --default-group wall
check "small file: whole" contains stdout "on 2 ranks: rank 0 reads the whole mesh, METIS divides it"
run 2 info "$data/gmsh/box_41.msh" --default-group wall --read slabs
check "text of Gmsh in slabs: refused" exited 2
check "text of Gmsh in slabs: says why" contains stderr "box_41.msh: not in slabs: of Gmsh files, only binary ones can be read so"
run 2 info box:3,3,3
check "box: each rank its part" contains stdout "on 2 ranks: each rank generates its part"
run 3 info "$data/openfoam_cases/channel_parts_3"
check "decomposed: each rank its folder" contains stdout "on 3 ranks: each rank reads its processor folder"
run 3 info "$data/openfoam_cases/channel_parts_3" --read slabs
check "decomposed in slabs: refused" exited 2
check "decomposed in slabs: says why" contains stderr "channel_parts_3: decomposed, so each rank reads the processor folder"
run 1 info "$data/gmsh/box_41_binary.msh" --default-group wall --read slabs
check "one rank in slabs" exited 0
run 2 info "$data/gmsh/box_41_binary.msh" --default-group wall --read slabs
check "small mesh in slabs: METIS divides it" contains stdout "on 2 ranks: each rank reads a slab, METIS divides the mesh"
run 1 info "$data/gmsh/box_41_binary.msh" --default-group wall --read half
check "unknown way: refused" exited 2
check "unknown way: says what there is" contains stderr '--read "half": expected whole or slabs'
run 2 check "$data/gmsh/box_41_binary.msh" --default-group wall --read slabs
check "check in slabs" exited 0
run 2 faces "$data/gmsh/box_41_binary.msh" --default-group wall --read slabs --field 'x+y' --group inner
check "faces in slabs" exited 0
printf 'x,y,z\n1,0.5,0.5\n0.7,0.4,0.6\n' >points.csv
run 2 points "$data/gmsh/box_41_binary.msh" --default-group wall --read slabs --field 'x+y' --points points.csv
check "points in slabs" exited 0

# --- files of parts -------------------------------------------------------------------------------------------------------

run 2 info box:4,3,2 --save-partition chosen
check "file of parts: written" exited 0
check "file of parts: a line a cell" [ "$(wc -l <chosen)" = 24 ]
before=$(cksum <chosen)
run 2 info box:4,3,2 --save-partition chosen
check "file of parts: never replaced" exited 2
check "file of parts: the older one stays" [ "$(cksum <chosen)" = "$before" ]
refused() {  # refused NAME TEXT: --partition bad
  run 2 info box:4,3,2 --partition bad
  check "$1: refused" exited 2
  check "$1: one line" in_one_line
  check "$1: says what" contains stderr "$2"
}
head -20 chosen >bad && refused "too few lines" "bad"
(cat chosen && echo 0) >bad && refused "too many lines" "bad"
sed '3s/.*/2/' chosen >bad && refused "a part that no rank has" "bad:3"
sed '3s/.*/x/' chosen >bad && refused "a word" "bad:3"
rm bad && refused "no such file" "bad"

# Large enough for PT-Scotch, which small meshes are spared: the same parts each time.
for time in 1 2; do
  run 3 info box:32,32,24 --read slabs --save-partition cut$time
  check "parts of PT-Scotch, run $time" exited 0
  check "parts of PT-Scotch, run $time: says so" contains stdout "each rank generates a slab, PT-Scotch divides the mesh"
done
check "parts of PT-Scotch: the same in two runs" cmp -s cut1 cut2
check "parts of PT-Scotch: three of nearly equal size" \
  [ "$(sort cut1 | uniq -c | awk '$1 < 8000 || $1 > 8400 { bad = 1 } END { print NR, bad + 0 }')" = "3 0" ]

# --- what goes wrong ------------------------------------------------------------------------------------------------------

run 3 info box:1,1,2 --read slabs
check "fewer cells than ranks: refused" exited 2
check "fewer cells than ranks: says so" contains stderr "box:1,1,2: the mesh has 2 cells, fewer than the 3 ranks"

# Whatever is cut off, both ways say it in the same words.
for file in box_41_binary box_22_binary; do
  size=$(stat -c %s "$data/gmsh/$file.msh")
  for part in 1 2 3 4 5 6 7; do
    head -c $((size * part / 8)) "$data/gmsh/$file.msh" >cut.msh
    run 1 info cut.msh --default-group wall
    cp stderr whole.txt
    run 2 info cut.msh --default-group wall --read slabs
    check "$file cut off at $part/8: refused" exited 2
    check "$file cut off at $part/8: one line" in_one_line
    check "$file cut off at $part/8: as rank 0 says it" [ "$(words)" = "$(cat whole.txt)" ]
  done
done

# A rank that dies while the others send it cells, or soon before or after.
for delay in 0.2 0.6 1.0 1.4; do
  rm -rf killed
  "$mpirun" -n 3 "$zyngrad" gradient box:60,60,60:tet --field x --read slabs -o killed >stdout 2>stderr </dev/null &
  run=$!
  until [ "$(pgrep -P $run -x zyngrad -c)" = 3 ] || ! kill -0 $run 2>/dev/null; do sleep 0.05; done
  sleep $delay
  victim=$(pgrep -P $run -x zyngrad | head -1)
  check "rank killed after $delay s: was running" [ -n "$victim" ]
  [ -z "$victim" ] || kill -9 "$victim"
  start=$SECONDS
  wait $run
  code=$?
  check "rank killed after $delay s: no success" [ $code != 0 ]
  check "rank killed after $delay s: the others end" [ $((SECONDS - start)) -le 15 ]
  check "rank killed after $delay s: no results" [ ! -e killed/gradient.json ]
done

finish
