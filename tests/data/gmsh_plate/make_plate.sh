#!/usr/bin/env bash
# Makes plate.msh of this folder from plate.geo with Gmsh 4.8 (Debian 12, package gmsh):
#     make_plate.sh FOLDER
set -euo pipefail
(($# == 1)) && [[ -d $1 ]] || { echo "usage: make_plate.sh FOLDER" >&2; exit 2; }
geometry=$(realpath "$(dirname "${BASH_SOURCE[0]}")")/plate.geo
cd "$1"
gmsh -3 -format msh41 -o plate.msh "$geometry"
