#!/usr/bin/env bash
# The shared library defines symbols of its public classes and of nothing else.
#   exports_test.sh LIBRARY
set -euo pipefail
allowed='^(COperatorGradient|CZynRBFInternalObject|CZynFaceRBFInternalObject|CZynIBRBFInternalObject|IBCnode|CZYNVector<[a-z]+, [01]>)::|^(vtable|typeinfo|typeinfo name) for (CZyn(|Face|IB)RBFInternalObject|IBCnode)$'
exported=$(nm -D --defined-only -C "$1" | sed 's/^[0-9a-f]* . //')
if ! grep -q '^COperatorGradient::GradMethod(' <<<"$exported"; then
  echo "COperatorGradient::GradMethod is not exported"
  exit 1
fi
if grep -vE "$allowed" <<<"$exported"; then
  echo "the symbols above are exported and should not be"
  exit 1
fi
