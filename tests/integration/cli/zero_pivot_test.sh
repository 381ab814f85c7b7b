#!/usr/bin/env bash
# If least squares stops, the program names the cell and the rank that owns it. Decomposed cases determine which rank
# that is, because each rank reads its own folder.
source "$(dirname "$0")/cli_test_support.sh"

foam() { printf 'FoamFile\n{\n    version 2.0;\n    format ascii;\n    class %s;\n    object %s;\n}\n' "$1" "$2"; }

# One cube, at its own place on the x axis, with walls all around.
cube() {  # cube FOLDER PLACE
  mkdir -p "$1"
  {
    foam vectorField points
    awk -v x="$((10 * $2))" 'BEGIN { print "8 ("; for (z = 0; z < 2; ++z)
      print "(" x, 0, z ") (" x + 1, 0, z ") (" x + 1, 1, z ") (" x, 1, z ")"; print ")" }'
  } >"$1/points"
  { foam faceList faces && echo '6 ( 4(0 3 2 1) 4(4 5 6 7) 4(0 1 5 4) 4(3 7 6 2) 4(0 4 7 3) 4(1 2 6 5) )'; } >"$1/faces"
  { foam labelList owner && echo '6 ( 0 0 0 0 0 0 )'; } >"$1/owner"
  { foam labelList neighbour && echo '0 ( )'; } >"$1/neighbour"
  { foam polyBoundaryMesh boundary && echo '1 ( wall { type wall; nFaces 6; startFace 0; } )'; } >"$1/boundary"
}

# A case of a folder a rank: a cell within a cell, whose inner cell has nothing to tell directions apart, on the ranks named
# and a cube on the others. Cells are numbered rank by rank, or from the last rank's last cell down to the first's first.
decomposed() {  # decomposed CASE RANKS up|down HOLDER...
  local case=$1 ranks=$2 way=$3 p mesh first=0 cells total
  shift 3
  total=$((ranks + $#))
  for ((p = 0; p < ranks; ++p)); do
    mesh=$case/processor$p/constant/polyMesh
    if [[ " $* " == *" $p "* ]]; then
      cell_within_a_cell "$mesh"
      cells=2
    else
      cube "$mesh" $((p + 1))
      cells=1
    fi
    if [ "$way" = down ]; then
      {
        foam labelList cellProcAddressing
        awk -v n="$cells" -v last="$((total - 1 - first))" 'BEGIN { print n " ("; for (i = 0; i < n; ++i) print last - i; print ")" }'
      } >"$mesh/cellProcAddressing"
    fi
    first=$((first + cells))
  done
}

names() {  # names CELL RANK
  grep -qE "^  lsq: not run: least squares stops at cell $1 on rank $2 \(zero pivot\)" stdout
}

# What `check` says about the cell in its table of the worst cells.
checks() {  # checks CELL
  grep -qE "^[^(]*\b$1\b.*least squares stops: zero pivot" stdout
}

for ranks in 2 3; do
  for ((holder = 0; holder < ranks; ++holder)); do
    decomposed "of-$ranks-$holder" "$ranks" up "$holder"
    run "$ranks" gradient "of-$ranks-$holder" --field x --method lsq -o out
    check "$ranks ranks, rank $holder holds the cell: exit code 1" exited 1
    check "$ranks ranks, rank $holder holds the cell: it is named" names $((holder + 1)) "$holder"
    run "$ranks" check "of-$ranks-$holder" -o out-check
    check "$ranks ranks, rank $holder holds the cell: check names it" checks $((holder + 1))
  done
done

# One of many.
decomposed of-8-5 8 up 5
run 8 gradient of-8-5 --field x --method lsq -o out
check "8 ranks, rank 5 holds the cell: it is named" names 6 5

# Two cells on two ranks: the lower number counts, whichever rank has it.
decomposed both-up 3 up 1 2
run 3 gradient both-up --field x --method lsq -o out
check "ranks 1 and 2 hold such cells: the lower one is named" names 2 1
decomposed both-down 3 down 0 2
run 3 gradient both-down --field x --method lsq -o out
check "ranks 0 and 2 hold such cells, numbered downwards: the lower one is named" names 2 2

decomposed none 3 up
run 3 gradient none --field x --method lsq -o out
check "no rank holds such a cell: exit code 0" exited 0
check "no rank holds such a cell: none is named" eval '! contains stdout "zero pivot"'

finish
