#!/usr/bin/env bash
# docs/use/output.md names every key of the JSON files and every array of the viewer files that zyngrad writes, and
# docs/use/check.md every finding.
#   output_page_test.sh REPOSITORY ZYNGRAD
set -euo pipefail
page=$1/docs/use/output.md zyngrad=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

run() {  # run FOLDER ARGUMENT...: with exit code 1, findings, everything is written, too
  "$zyngrad" "${@:2}" -o "$1" >"$1.txt" 2>&1 || [[ $? == 1 ]] || { cat "$1.txt"; exit 1; }
}
printf 'x,y,z\n0.4,0.5,0.6\n9,9,9\n' >points.csv
run gradient gradient box:3,3,3 --field x*y
printf '%s\n' 'FoamFile { version 2.0; format ascii; class volScalarField; object T; }' \
  'dimensions [0 0 0 0 0 0 0];' 'internalField uniform 1;' 'boundaryField { ".*" { type zeroGradient; } }' >T
run from_file gradient "$1/tests/data/openfoam_planar" --field-file T --method lsq
cp -r "$1/tests/data/openfoam_cases/symmetry" .
run vector gradient symmetry --field-file U --field-file p --time all --method lsq
run vector_faces faces symmetry --field-file U --time all --group inner
run three gradient box:3,3,3 --method vector --field x --field y --field z
run derived gradient box:3,3,3 --method lsq --field x*y --field y*z --field z*x --derive grad,div,curl,Q,strain
run into_case gradient symmetry --field-file U --time latest --method lsq --derive grad,div,curl,Q,strain --write-case
run faces faces box:3,3,3 --field x --group inner --debug-report
run points points box:3,3,3 --field x --points points.csv
run body points box:9,9,9 --field x --body-file "$1/tests/data/stl/torus.stl"
run probes points "$1/tests/data/openfoam_cases/cavity" --group frontAndBack=wall --field-file p --field-file U --time all --points points.csv
run on_body points "$1/tests/data/openfoam_cases/cavity" --group frontAndBack=wall --field-file 0.4/p --field-file 0.4/U --body '(x-0.5)^2+(y-0.5)^2-0.04'
run check check box:3,3,3 --group-faces inner --points points.csv
run study study --series tet --levels 2 --method iterated,rbf
mkdir info explain
"$zyngrad" info "$1/tests/data/openfoam_cases/wedge" --json >info/info.json
"$zyngrad" explain box:3,3,3 --cell 14 --json >explain/explain.json

# Whole words between backticks.
grep -o '`[^`]*`' "$page" | tr -c 'A-Za-z0-9_\n' '\n' | sort -u >told.txt
{
  # Without the lines "PATCH": "file" of boundaryValues, whose keys are names of patches.
  grep -hvE '": "(file|cell|cellWithoutNormalPart|cellTurned)"' ./*/*.json | grep -oE '"[A-Za-z0-9]+":' | tr -d '":' | sed 's/^T$/p/'
  grep -haoE '<DataArray [^>]*Name="[^"]*"' ./*/*.vt[pu] | sed 's/.*Name="//; s/"//' |
    grep -vxE 'Points|connectivity|offsets|types|faces|faceoffsets' | sed -E 's/^gradient_(p|U|T)_[a-z]+/gradient_\1_METHOD/; s/^gradient_T_/gradient_p_/; s/^T$/p/
      s/^(gradient|error)_u_[a-z]+$/\1_u_METHOD/; s/^(divergence|vorticity|Q|strain_rate)_[uU]_[a-z]+$/\1_U_METHOD/
      s/^error_[a-zQ_]+_u_[a-z]+$/error_divergence_u_METHOD/
      /^(gradient_(error|[pUu]_METHOD)|error_(divergence_)?u_METHOD)$/! s/^(gradient|error)_[a-z]+/\1_METHOD/; s/_[123]$//'
} | sort -u >written.txt
for expected in l2Relative maxAt exact_gradient gradient_METHOD weight_sum gradient_error row_sum_off U_normal_derivative valueNormal; do
  grep -qx "$expected" written.txt || { echo "no run has written $expected"; exit 1; }
done
missing=$(comm -23 written.txt told.txt)
[[ -z $missing ]] || { echo "docs/use/output.md does not name:"; echo "$missing"; exit 1; }

# docs/use/check.md explains each finding under the text that the program's tables show.
sed -n 's/^ *{k[A-Za-z]*, Severity::[A-Za-z]*, "[A-Za-z]*", "\(.*\)"},$/\1/p' "$1/cli/check/CheckFindings.cpp" >findings.txt
[[ $(wc -l <findings.txt) -ge 20 ]] || { echo "the texts of the findings were not found"; exit 1; }
while read -r text; do
  grep -qF "| $text |" "$1/docs/use/check.md" || { echo "docs/use/check.md does not explain \"$text\""; exit 1; }
done <findings.txt
