#!/usr/bin/env bash
# Measures the tables of docs/methods/faces.md and points.md: runs zyngrad faces and zyngrad points and writes the
# tables between the markers of the pages. Takes about five minutes.
#   docs/make_interpolation.sh ZYNGRAD_BINARY
set -euo pipefail

zyngrad=$(realpath "$1")
docs=$(realpath "$(dirname "${BASH_SOURCE[0]}")")
channel=$docs/../examples/channel_sphere/channel_sphere.msh
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
export OMP_NUM_THREADS=1 OPENBLAS_NUM_THREADS=1

readonly field='sin(2*x)*y + z^2'
readonly body='(x-0.5)^2+(y-0.5)^2+(z-0.5)^2-0.09'

# number NAME N: the N-th number of that name in the results of the last run.
number() { sed '1,/"results": {/d' "$results" | sed -n "s/^ *\"$1\": *\([^,]*\),\{0,1\}$/\1/p" | sed -n "$2p"; }

short() { LC_ALL=C printf '%.1e' "$1"; }

thousands() { sed -E ':a; s/^([0-9]+)([0-9]{3})/\1 \2/; ta' <<<"$1"; }

# The name of a mesh in the tables: "hex 10" for a box, the file name for a file.
name_of() {
  local name
  case $1 in
    box:*) name=$(sed -E 's/^box:([0-9]+),[^:]*(:(hex|tet))?(:.*)?$/\3 \1/; s/^ /hex /' <<<"$1") ;;
    *) name=$(basename "$1" .msh) ;;
  esac
  [[ $1 != *perturb* ]] || name+=', moved nodes'
  echo "$name"
}

faces() {  # faces MESH METHOD SPAN [GROUP]
  results=out/faces.json
  rm -rf out  # a folder holds results of one command
  "$zyngrad" faces "$1" --field "$field" --group "${4:-inner}" --search-method "$2" --span "$3" -o out >log.txt 2>&1 ||
    { cat log.txt; exit 1; }
}

launcher=()

points() {  # points MESH METHOD SPAN OPTION...
  results=out/points.json
  rm -rf out
  "${launcher[@]}" "$zyngrad" points "$1" --field "$field" --search-method "$2" --span "$3" "${@:4}" -o out >log.txt 2>&1 ||
    { cat log.txt; exit 1; }
}

mkdir blocks

echo "faces"
moved=perturb=0.2,seed=1
{
  echo '| mesh | faces | method 1 | | method 2 | | method 3 | | method 4 | |'
  echo '|---|---|---|---|---|---|---|---|---|---|'
  while read -r mesh span; do
    cells=""
    for method in 1 2 3 4; do
      faces "$mesh" $method "$span"
      cells+=" | $(short "$(number l2 1)") | $(short "$(number max 1)")"
    done
    name=$(name_of "$mesh")
    [[ $span = 1000 ]] || name+=", \`Span\` $span"
    echo "| $name | $(thousands "$(number faces 1)")$cells |"
  done <<END
box:5,5,5:hex 1000
box:10,10,10:hex 1000
box:20,20,20:hex 1000
box:4,4,4:tet 1000
box:8,8,8:tet 1000
box:16,16,16:tet 1000
box:10,10,10:hex 100
box:20,20,20:hex 100
box:8,8,8:tet 100
box:16,16,16:tet 100
box:20,20,20:hex:$moved 1000
box:20,20,20:hex:$moved 200
box:16,16,16:tet:$moved 1000
box:16,16,16:tet:$moved 200
$channel 1000
$channel 100
END
} >blocks/faces

spans_of_faces=(20 50 100 200 500 1000 2000)
{
  echo '| method, mesh | 20 | 50 | 100 | 200 | 500 | 1000 | 2000 |'
  echo '|---|---|---|---|---|---|---|---|'
  while read -r method mesh; do
    printf '| %s, %s' "$method" "$(name_of "$mesh")"
    for span in "${spans_of_faces[@]}"; do
      faces "$mesh" "$method" "$span"
      printf ' | %s' "$(short "$(number l2 1)")"
      [[ $(number notSummingToOne 1) = 0 ]] || printf ' *'
    done
    echo ' |'
  done <<END
1 box:10,10,10:hex
1 box:8,8,8:tet
2 box:20,20,20:hex
2 box:16,16,16:tet
3 box:20,20,20:hex
3 box:16,16,16:tet
4 box:20,20,20:hex
4 box:16,16,16:tet
END
} >blocks/faces-span

{
  echo '| wall faces of channel_sphere | method 1 | method 2 | method 3 |'
  echo '|---|---|---|---|'
  cells=""
  for method in 1 2 3; do
    faces "$channel" $method 1000 wall
    cells+=" | $(short "$(number l2 1)")"
  done
  echo "| $(thousands "$(number faces 1)")$cells |"
} >blocks/faces-wall

echo "points"
# 2 000 random points between two coordinates. An integer generator gives the same points everywhere.
random_points() {  # random_points FROM TO
  awk -v from="$1" -v to="$2" 'BEGIN {
    print "x,y,z"
    state = 1
    for (i = 1; i <= 2000; ++i) {
      for (k = 1; k <= 3; ++k) {
        state = (state * 16807) % 2147483647
        printf "%.9f%s", from + (to - from) * state / 2147483647, k < 3 ? "," : "\n"
      }
    }
  }'
}
random_points 0.2 0.8 >inside.csv
random_points 0 1 >everywhere.csv

rows_of_points() {  # rows_of_points OPTION...: a row for each mesh of the input
  local mesh cells method name
  while read -r mesh; do
    cells=""
    for method in 1 2 3; do
      points "$mesh" $method 500 "$@"
      cells+=" | $(short "$(number l2 1)") | $(short "$(number l2 2)")"
    done
    name=$(name_of "$mesh")
    [[ $1 = --points ]] || name+=" | $(thousands "$(number points 1)")"
    echo "| $name$cells |"
  done
}

{
  echo '| mesh | method 1 | | method 2 | | method 3 | |'
  echo '|---|---|---|---|---|---|---|'
  rows_of_points --points inside.csv <<END
box:10,10,10:hex
box:20,20,20:hex
box:40,40,40:hex
box:6,6,6:tet
box:12,12,12:tet
box:24,24,24:tet
box:10,10,10:hex:$moved
box:20,20,20:hex:$moved
box:40,40,40:hex:$moved
box:12,12,12:tet:$moved
END
} >blocks/points-inside

{
  echo '| mesh | method 1 | | method 2 | | method 3 | |'
  echo '|---|---|---|---|---|---|---|'
  rows_of_points --points everywhere.csv <<END
box:10,10,10:hex
box:20,20,20:hex
box:40,40,40:hex
box:12,12,12:tet
END
} >blocks/points-everywhere

{
  echo '| mesh | points | method 1 | | method 2 | | method 3 | |'
  echo '|---|---|---|---|---|---|---|---|'
  rows_of_points --body "$body" <<END
box:10,10,10:hex
box:20,20,20:hex
box:40,40,40:hex
box:6,6,6:tet
box:12,12,12:tet
box:24,24,24:tet
END
  rows_of_points --body 'x^2+y^2+z^2-0.16' <<<"$channel"
} >blocks/points-body

# hexahedra N M: N x N x M regular hexahedra in the unit cube, as a Gmsh file.
hexahedra() {
  awk -v N="$1" -v M="$2" '
    function node(i, j, k) { return i + (N + 1) * (j + (N + 1) * k) + 1 }
    function quad(a, b, c, d) { faces[++nFaces] = a " " b " " c " " d }
    BEGIN {
      print "$MeshFormat\n2.2 0 8\n$EndMeshFormat\n$PhysicalNames\n2\n2 1 \"wall\"\n3 2 \"inside\"\n$EndPhysicalNames\n$Nodes"
      print (N + 1) * (N + 1) * (M + 1)
      for (k = 0; k <= M; ++k) for (j = 0; j <= N; ++j) for (i = 0; i <= N; ++i)
        printf "%d %.17g %.17g %.17g\n", node(i, j, k), i / N, j / N, k / M
      for (j = 0; j < N; ++j) for (i = 0; i < N; ++i) for (k = 0; k <= M; k += M)
        quad(node(i, j, k), node(i + 1, j, k), node(i + 1, j + 1, k), node(i, j + 1, k))
      for (k = 0; k < M; ++k) for (i = 0; i < N; ++i) for (j = 0; j <= N; j += N) {
        quad(node(i, j, k), node(i + 1, j, k), node(i + 1, j, k + 1), node(i, j, k + 1))
        quad(node(j, i, k), node(j, i + 1, k), node(j, i + 1, k + 1), node(j, i, k + 1))
      }
      print "$EndNodes\n$Elements"
      print nFaces + N * N * M
      for (f = 1; f <= nFaces; ++f) print f, "3 2 1 1", faces[f]
      for (k = 0; k < M; ++k) for (j = 0; j < N; ++j) for (i = 0; i < N; ++i)
        print f++, "5 2 2 2", node(i, j, k), node(i + 1, j, k), node(i + 1, j + 1, k), node(i, j + 1, k),
          node(i, j, k + 1), node(i + 1, j, k + 1), node(i + 1, j + 1, k + 1), node(i, j + 1, k + 1)
      print "$EndElements"
    }'
}
{
  printf '| width over thickness | method 1 | | method 1, 40 cells | | method 2 | | method 2, 40 cells | | method 2, 80 cells | '
  echo '| method 3 | |'
  echo '|---|---|---|---|---|---|---|---|---|---|---|---|---|'
  for flat in 1 1.5 2 3 5 10; do
    hexahedra 10 "$(awk -v f=$flat 'BEGIN { print 10 * f }')" >flat.msh
    cells=""
    while read -r method wanted; do
      points flat.msh "$method" 500 --search-number "$wanted" --points inside.csv
      cells+=" | $(short "$(number l2 1)") | $(short "$(number l2 2)")"
    done <<END
1 20
1 40
2 20
2 40
2 80
3 20
END
    echo "| $flat$cells |"
  done
} >blocks/points-flat

{
  echo '| mesh, method | `Span` | L2 of the value | largest | L2 of the gradient | largest |'
  echo '|---|---|---|---|---|---|'
  for mesh in box:12,12,12:hex:$moved box:20,20,20:hex:$moved; do
    name="$(name_of $mesh), 3"
    for run in '3 500' '3 100' '3 50' '3 20' '2 500'; do
      [[ $run != 2* ]] || name="$(name_of $mesh), 2"
      points $mesh ${run% *} "${run#* }" --points everywhere.csv
      echo "| $name${name:+ }| ${run#* } | $(short "$(number l2 1)") | $(short "$(number max 1)") | $(short "$(number l2 2)") | $(short "$(number max 2)") |"
      name=""
    done
  done
} >blocks/points-moved

spans_of_points=(5 20 50 100 200 500 1000 2000)
{
  echo '| mesh, method | 5 | 20 | 50 | 100 | 200 | 500 | 1000 | 2000 |'
  echo '|---|---|---|---|---|---|---|---|---|'
  for mesh in box:20,20,20:hex box:12,12,12:tet; do
    for method in 1 2 3; do
      values="" gradients=""
      for span in "${spans_of_points[@]}"; do
        points $mesh $method "$span" --body "$body"
        values+=" | $(short "$(number l2 1)")"
        gradients+=" | $(short "$(number l2 2)")"
      done
      echo "| $(name_of $mesh), $method, value$values |"
      echo "| gradient$gradients |"
    done
  done
} >blocks/points-span

# At the centres of all cells of 10^3 hexahedra.
awk 'BEGIN {
  print "x,y,z"
  for (i = 0; i < 10; ++i) for (j = 0; j < 10; ++j) for (k = 0; k < 10; ++k)
    printf "%.17g,%.17g,%.17g\n", (i + 0.5) / 10, (j + 0.5) / 10, (k + 0.5) / 10
}' >centres.csv
{
  echo '| at the cells of hex 10 | method 1 | method 2 | method 3 |'
  echo '|---|---|---|---|'
  cells=""
  for method in 1 2 3; do
    points box:10,10,10:hex $method 500 --points centres.csv
    cells+=" | $(short "$(number max 1)")"
  done
  echo "| largest error of the value$cells |"
} >blocks/points-at-cells

{
  echo '| ranks | method 2 | method 3 |'
  echo '|---|---|---|'
  for ranks in 1 2 4; do
    cells=""
    for method in 2 3; do
      launcher=(mpirun -n $ranks)
      points box:20,20,20:hex $method 500 --points inside.csv
      cells+=" | $(short "$(number l2 1)")"
    done
    echo "| $ranks$cells |"
  done
} >blocks/points-ranks

for page in faces points; do
  awk -v blocks=blocks -f "$docs/put_blocks.awk" "$docs/methods/$page.md" | cat -s >page.md
  cp page.md "$docs/methods/$page.md"
done
echo "docs/methods/faces.md and docs/methods/points.md"
