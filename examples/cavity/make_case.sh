#!/usr/bin/env bash
# Makes the case of this folder with OpenFOAM 1912 (Debian: package openfoam):
#     make_case.sh FOLDER
# FOLDER must not exist yet; it becomes what case/ is here.
set -euo pipefail
(($# == 1)) && [[ ! -e $1 ]] || { echo "usage: make_case.sh FOLDER (a new one)" >&2; exit 2; }
export WM_PROJECT_DIR=${WM_PROJECT_DIR:-/usr/share/openfoam}
mkdir -p "$1"
cd "$1"

# dictionary FILE CLASS: the header, and what standard input has.
dictionary() {
  mkdir -p "$(dirname "$1")"
  { printf 'FoamFile { version 2.0; format ascii; class %s; object %s; }\n' "$2" "$(basename "$1")"; cat; } >"$1"
}

dictionary system/blockMeshDict dictionary <<'END'
scale 1;
vertices ((0 0 0) (1 0 0) (1 1 0) (0 1 0) (0 0 0.05) (1 0 0.05) (1 1 0.05) (0 1 0.05));
blocks (hex (0 1 2 3 4 5 6 7) (20 20 1) simpleGrading (1 1 1));
boundary
(
    lid { type wall; faces ((3 7 6 2)); }
    walls { type wall; faces ((0 4 7 3) (2 6 5 1) (1 5 4 0)); }
    frontAndBack { type empty; faces ((0 3 2 1) (4 5 6 7)); }
);
END
dictionary system/controlDict dictionary <<'END'
application icoFoam;
startFrom startTime;
startTime 0;
stopAt endTime;
endTime 2;
deltaT 0.01;
writeControl runTime;
writeInterval 1;
writeFormat ascii;
writePrecision 8;
writeCompression off;
timeFormat general;
timePrecision 6;
runTimeModifiable false;
END
dictionary system/fvSchemes dictionary <<'END'
ddtSchemes { default Euler; }
gradSchemes { default Gauss linear; }
divSchemes { default none; div(phi,U) Gauss linear; }
laplacianSchemes { default Gauss linear corrected; }
interpolationSchemes { default linear; }
snGradSchemes { default corrected; }
END
dictionary system/fvSolution dictionary <<'END'
solvers
{
    p { solver PCG; preconditioner DIC; tolerance 1e-10; relTol 0; }
    pFinal { $p; }
    U { solver smoothSolver; smoother symGaussSeidel; tolerance 1e-10; relTol 0; }
}
PISO { nCorrectors 3; nNonOrthogonalCorrectors 0; pRefCell 0; pRefValue 0; }
END
dictionary constant/transportProperties dictionary <<'END'
nu [0 2 -1 0 0 0 0] 0.01;
END
dictionary 0/U volVectorField <<'END'
dimensions [0 1 -1 0 0 0 0];
internalField uniform (0 0 0);
boundaryField
{
    lid { type fixedValue; value uniform (1 0 0); }
    walls { type noSlip; }
    frontAndBack { type empty; }
}
END
dictionary 0/p volScalarField <<'END'
dimensions [0 2 -2 0 0 0 0];
internalField uniform 0;
boundaryField
{
    "lid|walls" { type zeroGradient; }
    frontAndBack { type empty; }
}
END

blockMesh >/dev/null
icoFoam >/dev/null
rm -rf [0-9]*/phi [0-9]*/uniform
