#!/usr/bin/env bash
# Every header compiles alone, and twice: it includes what it uses and guards itself.
#   headers_test.sh REPOSITORY COMPILER
set -euo pipefail
cd "$1"
compiler=$2
failed=0
while read -r header; do
  flags=(-std=c++17 -fsyntax-only -I. -x c++)
  [[ $header != reference_host/parallel/* && $header != reference_host/slabs/* ]] || continue  # need MPI
  if ! printf '#include "%s"\n#include "%s"\n' "$header" "$header" | "$compiler" "${flags[@]}" - ; then
    echo "not self-contained: $header"
    failed=1
  fi
done < <(find host foundation gradient rbf_cell rbf_face rbf_ib reference_host -name '*.h' 2>/dev/null | sort)
exit $failed
