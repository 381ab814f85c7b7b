#!/usr/bin/env bash
# Measures the tables of docs/use/probes.md: samples the same OpenFOAM cases with zyngrad points and with OpenFOAM's own
# sampling, and writes the tables between the markers of the page. Needs OpenFOAM 1912 and Gmsh (packages openfoam,
# gmsh, python3-numpy) and takes about ten minutes.
#   docs/make_probes.sh ZYNGRAD_BINARY
set -euo pipefail

zyngrad=$(realpath "$1")
docs=$(realpath "$(dirname "${BASH_SOURCE[0]}")")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
export WM_PROJECT_DIR=/usr/share/openfoam OMP_NUM_THREADS=1 OPENBLAS_NUM_THREADS=1

dictionary() { printf 'FoamFile { version 2.0; format ascii; class dictionary; object %s; }\n' "$1"; }

# The tools that make fields, points and errors: p = sin(2x) y + z^2 in the cells and on the boundary.
cat >tools.py <<'PY'
import csv, random, re, sys
import numpy as np

def numbers(path):
    """The internal field and the boundary values of a vector field in text."""
    text = open(path).read()
    lists = re.findall(r"nonuniform List<vector>\s*(\d+)\s*\((.*?)\n\)\s*;", text, re.S)
    return [np.array(re.findall(r"\(([^()]*)\)", body)).astype(str) for _, body in lists]

def value(x, y, z):
    return np.sin(2 * x) * y + z * z

def slope(x, y, z):
    return np.array([2 * np.cos(2 * x) * y, np.sin(2 * x), 2 * z]).T

def places(rows):
    return np.array([row.split() for row in rows], dtype=float)

def move(case, n):  # moves the nodes inside by up to a fifth of an edge
    path = case + "/constant/polyMesh/points"
    head, count, body = re.match(r"(.*?\n)(\d+)\n\((.*)\n\)", open(path).read(), re.S).groups()
    at = places(re.findall(r"\(([^()]*)\)", body))
    random.seed(1)
    for point in at:
        for k in range(3):
            moved = 0.2 / n * random.uniform(-1, 1)
            if 1e-9 < point[k] < 1 - 1e-9: point[k] += moved
    with open(path, "w") as out:
        out.write(head + count + "\n(\n" + "".join("(%.17g %.17g %.17g)\n" % tuple(p) for p in at) + ")\n")

def field(case):  # writes p from the centres of cells and boundary faces
    cells, faces = numbers(case + "/0/C")
    with open(case + "/0/p", "w") as out:
        out.write("FoamFile { version 2.0; format ascii; class volScalarField; object p; }\ndimensions [0 0 0 0 0 0 0];\n")
        for rows, before, after in ((cells, "internalField nonuniform List<scalar> ", ";\n"),
                                    (faces, "boundaryField { walls { type fixedValue; value nonuniform List<scalar> ", "; } }\n")):
            at = value(*places(rows).T)
            out.write(before + "%d (\n%s\n)" % (len(at), "\n".join("%.17g" % v for v in at)) + after)

def probes(case, low, high):  # the same points for both programs
    random.seed(2)
    at = [[random.uniform(low, high) for _ in range(3)] for _ in range(1000)]
    with open("probes.csv", "w") as out:
        out.write("x,y,z\n" + "".join("%.12g,%.12g,%.12g\n" % tuple(p) for p in at))
    for scheme in ("cell", "cellPoint"):
        with open(case + "/system/" + scheme, "w") as out:
            out.write("type sets; libs (sampling); interpolationScheme %s; setFormat raw; fields (p grad(p));\n" % scheme)
            out.write("sets ( probes { type cloud; axis xyz; points (%s); } );\n" %
                      " ".join("(%.12g %.12g %.12g)" % tuple(p) for p in at))

def l2(e):
    return np.sqrt(np.mean(np.sum(e.reshape(len(e), -1) ** 2, axis=1)))

def errors_of_foam(case, scheme):
    folder = case + "/postProcessing/" + scheme + "/0/"
    p = np.loadtxt(folder + "probes_p.xy")
    g = np.loadtxt(folder + "probes_grad(p).xy")
    assert len(p) == len(g) == 1000
    return l2(p[:, 3] - value(*p[:, :3].T)), l2(g[:, 3:] - slope(*g[:, :3].T))

def errors_of_zyngrad(table):
    rows = list(csv.DictReader(open(table)))
    at = np.array([[float(r[k]) for k in "xyz"] for r in rows])
    p = np.array([float(r["p"]) for r in rows])
    g = np.array([[float(r["p_gradient_" + k]) for k in "xyz"] for r in rows])
    assert len(rows) == 1000
    return l2(p - value(*at.T)), l2(g - slope(*at.T))

if __name__ == "__main__":
    command, *arguments = sys.argv[1:]
    if command == "move": move(arguments[0], int(arguments[1]))
    if command == "field": field(arguments[0])
    if command == "probes": probes(arguments[0], float(arguments[1]), float(arguments[2]))
    if command == "foam": print("%.3e %.3e" % errors_of_foam(*arguments))
    if command == "zyngrad": print("%.3e %.3e" % errors_of_zyngrad(*arguments))
PY

make_case() {  # make_case N regular|moved|tet
  rm -rf case
  mkdir -p case/system case/constant case/0
  {
    dictionary controlDict
    echo 'application icoFoam; startFrom startTime; startTime 0; stopAt endTime; endTime 1; deltaT 1;'
    echo 'writeControl timeStep; writeInterval 1; writeFormat ascii; writePrecision 16; timeFormat general; timePrecision 6;'
  } >case/system/controlDict
  {
    dictionary fvSchemes
    echo 'ddtSchemes { } gradSchemes { default Gauss linear; } divSchemes { } laplacianSchemes { }'
    echo 'interpolationSchemes { default linear; } snGradSchemes { }'
  } >case/system/fvSchemes
  dictionary fvSolution >case/system/fvSolution
  if [[ $2 == tet ]]; then
    # The faces of tetrahedra are flat: all programs agree on where the centres of cells are.
    {
      echo 'SetFactory("OpenCASCADE"); Box(1) = {0, 0, 0, 1, 1, 1}; Physical Volume("inside") = {1};'
      echo "Physical Surface(\"walls\") = {1:6}; Mesh.MeshSizeMin = 1.5 / $1; Mesh.MeshSizeMax = 1.5 / $1;"
    } >box.geo
    gmsh -v 2 -3 -format msh2 -o box.msh box.geo >log.txt
    (cd case && gmshToFoam ../box.msh) >>log.txt 2>&1
  else
    {
      dictionary blockMeshDict
      echo "scale 1; vertices ((0 0 0) (1 0 0) (1 1 0) (0 1 0) (0 0 1) (1 0 1) (1 1 1) (0 1 1));"
      echo "blocks (hex (0 1 2 3 4 5 6 7) ($1 $1 $1) simpleGrading (1 1 1)); edges (); mergePatchPairs ();"
      echo "boundary (walls { type wall; faces ((0 4 7 3) (2 6 5 1) (1 5 4 0) (3 7 6 2) (0 3 2 1) (4 5 6 7)); });"
    } >case/system/blockMeshDict
    (cd case && blockMesh) >log.txt 2>&1
  fi
  [[ $2 != moved ]] || python3 tools.py move case "$1"
  (cd case && postProcess -func writeCellCentres -time 0) >>log.txt 2>&1
  python3 tools.py field case
  (cd case && postProcess -func 'grad(p)' -time 0) >>log.txt 2>&1
}

errors() {  # errors NAME: value and gradient with one way of sampling
  case $1 in
    cell | cellPoint)
      (cd case && postProcess -func "$1" -time 0 >log.sample 2>&1)
      python3 tools.py foam case "$1"
      ;;
    method*)
      rm -rf out
      "$zyngrad" points case --field-file 0/p --points probes.csv --group walls=wall --search-method "${1#method}" -o out >log.out
      python3 tools.py zyngrad out/points.csv
      ;;
  esac
}

mkdir blocks
ways=(cell cellPoint method2 method1 method3)
declare -A name=([cell]="OpenFOAM \`cell\`" [cellPoint]="OpenFOAM \`cellPoint\`, linear" [method2]="\`zyngrad\`, method 2"
  [method1]="method 1" [method3]="method 3")
for kind in regular moved tet; do
  rm -f ./*.errors counts
  for n in 10 20 40; do
    make_case $n $kind
    "$zyngrad" info case --group walls=wall | awk '/^  -----/ { getline; print $1; exit }' | sed -E ':a; s/,//; ta' >>counts
    for where in "inside 0.2 0.8" "everywhere 0.001 0.999"; do
      # shellcheck disable=SC2086
      set -- $where
      python3 tools.py probes case "$2" "$3"
      for way in "${ways[@]}"; do errors "$way" >>"$1-$way.errors"; done
    done
  done
  mapfile -t count < <(sed -E ':a; s/^([0-9]+)([0-9]{3})/\1 \2/; ta' counts)
  for where in inside everywhere; do
    {
      echo "| sampled by | value: ${count[0]} | ${count[1]} | ${count[2]} cells | order | gradient | | | order |"
      echo '|---|---|---|---|---|---|---|---|---|'
      for way in "${ways[@]}"; do
        # The order in the length of a cell, which is the third root of its volume.
        awk -v name="${name[$way]}" 'NR == FNR { n[NR] = $1; next } { v[FNR] = $1; g[FNR] = $2 }
          function row(e) { return sprintf("%.1e | %.1e | %.1e | %.1f", e[1], e[2], e[3], 3 * log(e[2] / e[3]) / log(n[3] / n[2])) }
          END { print "| " name " | " row(v) " | " row(g) " |" }' counts "$where-$way.errors"
      done
    } >"blocks/probes-$where-$kind"
  done
done
awk -v blocks=blocks -f "$docs/put_blocks.awk" "$docs/use/probes.md" | cat -s >page.md
cp page.md "$docs/use/probes.md"
