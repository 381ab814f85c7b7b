#!/usr/bin/env bash
# Measures everything in docs/measured/study.md: runs zyngrad study and compare-ranks, writes the tables between the
# markers of the page and the plots into docs/measured/study/. Then calls make_interpolation.sh, which does the same
# for docs/methods/faces.md and points.md. Takes about ten minutes.
#   docs/make_study.sh ZYNGRAD_BINARY
set -euo pipefail

zyngrad=$(realpath "$1")
docs=$(realpath "$(dirname "${BASH_SOURCE[0]}")")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
export OMP_NUM_THREADS=1 OPENBLAS_NUM_THREADS=1

study() {  # study NAME ARGS...: runs zyngrad study into the folder NAME
  local name=$1
  shift
  echo "study $name"
  "$zyngrad" study "$@" -o "$name" >/dev/null
}

# The Markdown tables of a run whose titles match; a table ends at an empty line.
tables() {  # tables NAME PATTERN
  awk -v pattern="$2" '/^\*\*/ { shown = $0 ~ pattern } shown && !/^- |^!\[/' "$1/study.md"
}

picture() {  # picture NAME PLOT: copies the plot of a run, prints the line that shows it
  local title
  cp "$1/$2.svg" "pictures/$1-$2.svg"
  title=$(sed -n "s/^!\[\(.*\)\]($2\.svg)$/\1/p" "$1/study.md")
  printf '![%s, series %s](study/%s-%s.svg)\n' "$title" "$1" "$1" "$2"
}

mkdir pictures blocks

for series in hex perturbed tet prism stretched skewed polyhedra; do
  study $series --series $series --method plain,iterated,lsq,rbf
  { tables $series '^\*\*errors'; picture $series trigonometric-gradient-interior; } >blocks/$series
done
{ picture tet trigonometric-gradient-boundary; picture tet trigonometric-gradient-histogram; } >>blocks/tet
{ tables tet '^\*\*cost'; picture tet time-application; } >blocks/cost

for series in tet perturbed skewed; do
  study sweeps-$series --series $series --levels 3 --method iterated --sweeps 1,2,3,4,5,10,20 --field linear --field trigonometric
  { picture sweeps-$series linear-gradient-sweeps; picture sweeps-$series trigonometric-gradient-sweeps; } >blocks/sweeps-$series
done

for series in hex tet; do
  study span-$series --series $series --levels 3 --method rbf --span 2,5,20,50,100,200,500,1000,2000 --field linear --field trigonometric
  { picture span-$series linear-gradient-span; picture span-$series trigonometric-gradient-span; picture span-$series condition-span; } >blocks/span-$series
done

for series in perturbed tet; do
  study interpolation-$series --series $series --levels 3 --method faces,points
  {
    tables interpolation-$series '^\*\*(errors|cost)'
    picture interpolation-$series trigonometric-value-at-faces-interior
    picture interpolation-$series trigonometric-value-at-points-interior
    picture interpolation-$series trigonometric-gradient-at-points-interior
  } >blocks/interpolation-$series
done

echo "compare-ranks"
{ echo '```'; "$zyngrad" compare-ranks box:12,12,12:tet --ranks 1,2,4 | sed -n '/on 2 ranks/,$p'; echo '```'; } >blocks/ranks

awk -v blocks=blocks -f "$docs/put_blocks.awk" "$docs/measured/study.md" | cat -s >study.md

rm -rf "$docs/measured/study"
cp -r pictures "$docs/measured/study"
cp study.md "$docs/measured/study.md"
echo "docs/measured/study.md and $(ls pictures | wc -l) plots in docs/measured/study"

"$docs/make_interpolation.sh" "$zyngrad"
