#!/usr/bin/env bash
# Makes the cases of this folder with OpenFOAM 1912 (Debian 12, packages openfoam and openfoam-examples are enough):
#     make_cases.sh FOLDER
# FOLDER must not exist yet; README.md says what each case is for.
set -euo pipefail
(($# == 1)) && [[ ! -e $1 ]] || { echo "usage: make_cases.sh FOLDER (a new one)" >&2; exit 2; }
export WM_PROJECT_DIR=${WM_PROJECT_DIR:-/usr/share/openfoam}
export OMPI_ALLOW_RUN_AS_ROOT=1 OMPI_ALLOW_RUN_AS_ROOT_CONFIRM=1 OMPI_MCA_rmaps_base_oversubscribe=1
mkdir -p "$1"
cd "$1"

# dictionary FILE CLASS: the header, and what standard input has.
dictionary() {
  mkdir -p "$(dirname "$1")"
  { printf 'FoamFile { version 2.0; format ascii; class %s; object %s; }\n' "$2" "$(basename "$1")"; cat; } >"$1"
}

# settings CASE FORMAT COMPRESSION END-TIME WRITE-INTERVAL
settings() {
  dictionary "$1/system/controlDict" dictionary <<END
application icoFoam;
startFrom startTime;
startTime 0;
stopAt endTime;
endTime $4;
deltaT 0.005;
writeControl runTime;
writeInterval $5;
writeFormat $2;
writePrecision 12;
writeCompression $3;
timeFormat general;
timePrecision 6;
runTimeModifiable false;
END
  dictionary "$1/system/fvSchemes" dictionary <<'END'
ddtSchemes { default Euler; }
gradSchemes { default Gauss linear; }
divSchemes { default none; div(phi,U) Gauss linear; }
laplacianSchemes { default Gauss linear corrected; }
interpolationSchemes { default linear; }
snGradSchemes { default corrected; }
END
  dictionary "$1/system/fvSolution" dictionary <<'END'
solvers
{
    p { solver PCG; preconditioner DIC; tolerance 1e-10; relTol 0; }
    pFinal { $p; }
    U { solver smoothSolver; smoother symGaussSeidel; tolerance 1e-10; relTol 0; }
}
PISO { nCorrectors 3; nNonOrthogonalCorrectors 0; pRefCell 0; pRefValue 0; }
END
  dictionary "$1/constant/transportProperties" dictionary <<'END'
nu [0 2 -1 0 0 0 0] 0.01;
END
}

# decomposition CASE N-X: parts side by side along x.
decomposition() {
  dictionary "$1/system/decomposeParDict" dictionary <<END
numberOfSubdomains $2;
method simple;
simpleCoeffs { n ($2 1 1); delta 0.001; }
END
}

quiet() { "$@" >log.txt 2>&1 || { tail -n 30 log.txt >&2; exit 1; }; rm -f log.txt; }

# box CASE NX NY NZ BOUNDARY: 1 x 1 x DEPTH, the sides as the sixth argument names them.
box() {
  dictionary "$1/system/blockMeshDict" dictionary <<END
scale 1;
vertices ((0 0 0) (1 0 0) (1 1 0) (0 1 0) (0 0 $6) (1 0 $6) (1 1 $6) (0 1 $6));
blocks (hex (0 1 2 3 4 5 6 7) ($2 $3 $4) simpleGrading (1 1 1));
boundary ( $5 );
END
  quiet blockMesh -case "$1"
}

# --- A driven cavity, one layer of cells.
cavity_start() {
  box "$1" 8 8 1 'lid { type wall; faces ((3 7 6 2)); } sides { type wall; faces ((0 4 7 3) (2 6 5 1) (1 5 4 0)); }
    frontAndBack { type empty; faces ((0 3 2 1) (4 5 6 7)); }' 0.125
  dictionary "$1/0/U" volVectorField <<'END'
dimensions [0 1 -1 0 0 0 0];
internalField uniform (0 0 0);
boundaryField
{
    lid { type fixedValue; value uniform (1 0 0); }
    sides { type noSlip; }
    frontAndBack { type empty; }
}
END
  dictionary "$1/0/p" volScalarField <<'END'
dimensions [0 2 -2 0 0 0 0];
internalField uniform 0;
boundaryField
{
    "lid|sides" { type zeroGradient; }
    frontAndBack { type empty; }
}
END
}

settings cavity ascii off 0.4 0.2
cavity_start cavity
quiet icoFoam -case cavity
rm -rf cavity/*/{phi,uniform}

for variant in cavity_binary:binary:off cavity_gz:ascii:on; do
  IFS=: read -r name format compression <<<"$variant"
  cp -r cavity "$name"
  settings "$name" "$format" "$compression" 0.4 0.2
  quiet foamFormatConvert -case "$name" -constant
done

# decomposed CASE FROM FORMAT COMPRESSION HANDLER N
decomposed() {
  cp -r "$2" "$1"
  settings "$1" "$3" "$4" 0.4 0.2
  decomposition "$1" "$6"
  quiet decomposePar -case "$1" -constant -time 0.4 -fileHandler "$5"
}
decomposed cavity_parts cavity ascii off uncollated 2
decomposed cavity_parts_binary_gz cavity binary off uncollated 3
decomposed cavity_collated cavity binary off collated 3
decomposed cavity_collated_text cavity ascii off collated 2
# This version writes binary files uncompressed; other versions compress them, too.
cp -r cavity_binary cavity_binary_gz
find cavity_binary_gz/{constant,0,0.2,0.4} cavity_parts_binary_gz/processor* -type f -exec gzip -n9 {} +
rm -rf cavity_{parts,parts_binary_gz,collated,collated_text}/{0,0.2,0.4,constant/polyMesh}

# --- A channel that repeats itself in x and in z, with a flow that varies in both.
channel_start() {
  box "$1" 6 4 5 'left { type cyclic; neighbourPatch right; faces ((0 4 7 3)); }
    right { type cyclic; neighbourPatch left; faces ((2 6 5 1)); }
    back { type cyclic; neighbourPatch front; faces ((0 3 2 1)); }
    front { type cyclic; neighbourPatch back; faces ((4 5 6 7)); }
    bottom { type wall; faces ((1 5 4 0)); } top { type wall; faces ((3 7 6 2)); }' 0.75
  dictionary "$1/0/U" volVectorField <<'END'
dimensions [0 1 -1 0 0 0 0];
internalField uniform (1 0 0);
boundaryField
{
    "(left|right|back|front)" { type cyclic; }
    bottom { type noSlip; }
    top { type fixedValue; value uniform (1 0 0.3); }
}
END
  dictionary "$1/0/p" volScalarField <<'END'
dimensions [0 2 -2 0 0 0 0];
internalField uniform 0;
boundaryField
{
    "(left|right|back|front)" { type cyclic; }
    "bottom|top" { type zeroGradient; }
}
END
}
settings channel ascii off 0.1 0.1
channel_start channel
# A start that varies along x and z, so that the flow does, too.
/usr/bin/python3 - channel/0/U 6 4 5 <<'END'
import math, sys
path, nx, ny, nz = sys.argv[1], *map(int, sys.argv[2:])
rows = []
for k in range(nz):
    for j in range(ny):
        for i in range(nx):
            x, z = (i + 0.5) / nx, (k + 0.5) / nz
            rows.append("(%.6f %.6f %.6f)" % (1 + 0.3 * math.sin(2 * math.pi * z), 0.2 * math.sin(2 * math.pi * x), 0.1 * math.cos(2 * math.pi * x)))
text = open(path).read().replace("internalField uniform (1 0 0);", "internalField nonuniform List<vector> %d (%s);" % (len(rows), " ".join(rows)))
open(path, "w").write(text)
END
quiet icoFoam -case channel
rm -rf channel/*/{phi,uniform}
decomposed_channel() {  # NAME N FORMAT HANDLER
  cp -r channel "$1"
  settings "$1" "$3" off 0.1 0.1
  decomposition "$1" "$2"
  quiet decomposePar -case "$1" -constant -time 0.1 -fileHandler "$4"
  rm -rf "$1"/{0,0.1,constant/polyMesh}
}
decomposed_channel channel_parts 2 ascii uncollated
decomposed_channel channel_parts_3 3 binary uncollated
decomposed_channel channel_collated 3 binary collated

# --- A wedge of a pipe, a block with symmetry planes, and a sector that repeats itself around an axis.
dictionary wedge/system/blockMeshDict dictionary <<'END'
scale 1;
vertices ((0 0 0) (2 0 0) (2 0.9990482216 0.0436193874) (0 0.9990482216 0.0436193874) (2 0.9990482216 -0.0436193874) (0 0.9990482216 -0.0436193874));
blocks (hex (0 1 4 5 0 1 2 3) (6 5 1) simpleGrading (1 1 1));
boundary
(
    inlet { type patch; faces ((0 3 5 0)); }
    outlet { type patch; faces ((1 4 2 1)); }
    pipe { type wall; faces ((5 3 2 4)); }
    front { type wedge; faces ((0 1 2 3)); }
    back { type wedge; faces ((0 5 4 1)); }
    axis { type empty; faces ((0 1 1 0)); }
);
END
settings wedge ascii off 0.02 0.02
quiet blockMesh -case wedge
dictionary wedge/0/U volVectorField <<'END'
dimensions [0 1 -1 0 0 0 0];
wall (0 0 0);
speed 1.5;
internalField uniform (1 0 0);
boundaryField
{
    inlet { type fixedValue; value $internalField; }
    outlet { type zeroGradient; }
    pipe { type fixedValue; value uniform $wall; }
    front { type wedge; }
    back { type wedge; }
    axis { type empty; }
}
END
dictionary wedge/0/p volScalarField <<'END'
dimensions [0 2 -2 0 0 0 0];
internalField uniform 0;
boundaryField
{
    inlet { type zeroGradient; }
    outlet { type fixedValue; value $internalField; }
    pipe { type zeroGradient; }
    ".*" { type zeroGradient; }
    front { type wedge; }
    back { type wedge; }
    axis { type empty; }
}
END
quiet icoFoam -case wedge
rm -rf wedge/*/{phi,uniform}

settings symmetry ascii off 0.05 0.05
box symmetry 5 4 4 'inlet { type patch; faces ((0 4 7 3)); } outlet { type patch; faces ((2 6 5 1)); }
  ground { type wall; faces ((1 5 4 0)); } top { type symmetryPlane; faces ((3 7 6 2)); }
  sides { type symmetry; faces ((0 3 2 1) (4 5 6 7)); }' 1
dictionary symmetry/0/U volVectorField <<'END'
dimensions [0 1 -1 0 0 0 0];
internalField uniform (1 0.1 0);
boundaryField
{
    inlet { type fixedValue; value uniform (1 0.1 0); }
    outlet { type zeroGradient; }
    ground { type noSlip; }
    top { type symmetryPlane; }
    sides { type symmetry; }
}
END
dictionary symmetry/0/p volScalarField <<'END'
dimensions [0 2 -2 0 0 0 0];
internalField uniform 0;
boundaryField
{
    inlet { type zeroGradient; }
    outlet { type fixedValue; value uniform 0; }
    ground { type zeroGradient; }
    top { type symmetryPlane; }
    sides { type symmetry; }
}
END
quiet icoFoam -case symmetry
rm -rf symmetry/*/{phi,uniform}

settings sector ascii off 0.1 0.1
dictionary sector/system/blockMeshDict dictionary <<'END'
scale 1;
vertices ((1 0 0) (2 0 0) (1.4142135624 1.4142135624 0) (0.7071067812 0.7071067812 0)
  (1 0 1) (2 0 1) (1.4142135624 1.4142135624 1) (0.7071067812 0.7071067812 1));
blocks (hex (0 1 2 3 4 5 6 7) (3 3 3) simpleGrading (1 1 1));
boundary
(
    walls { type wall; faces ((0 4 7 3) (1 2 6 5) (0 3 2 1) (4 5 6 7)); }
    first { type cyclic; neighbourPatch second; transform rotational; rotationAxis (0 0 1); rotationCentre (0 0 0); faces ((0 1 5 4)); }
    second { type cyclic; neighbourPatch first; transform rotational; rotationAxis (0 0 1); rotationCentre (0 0 0); faces ((3 7 6 2)); }
);
END
quiet blockMesh -case sector
# What the tests do not read, and the folder in the headers of collated files.
find . -name '*Zones*' -delete
rm -rf -- */constant/transportProperties */system/fvSolution
find . -path '*/processors*' -type f -exec env LC_ALL=C sed -i "s|\"$PWD/[^/]*/|\"|" {} +
find . -type d -empty -delete
