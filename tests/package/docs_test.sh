#!/usr/bin/env bash
# Doxygen makes the site of the Markdown pages and the API without a warning, and no link dangles.
#   docs_test.sh REPOSITORY
set -euo pipefail
cd "$1"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
(cat docs/Doxyfile; echo "OUTPUT_DIRECTORY = $work") | doxygen - >"$work/log.txt" 2>&1 || { cat "$work/log.txt"; exit 1; }
for page in docs/*.md docs/*/*.md; do
  name=${page%.md}
  if [[ ! -s $work/html/md_${name//[-\/]/_}.html ]]; then
    echo "no page was made of $page"
    exit 1
  fi
done
# This Doxygen does not understand emphasis that begins or ends next to code, and shows the asterisks.
if sed 's|<code>[^<]*</code>||g; /class="line"/d' "$work"/html/{index,md_*}.html | grep '\*\*'; then
  echo "the lines above show the marks of emphasis"
  exit 1
fi
# Sources and tests name pages that exist.
while read -r page; do
  [[ -e $page ]] && continue
  echo "$page is named in the sources, but does not exist"
  exit 1
done < <(grep -rhoE 'docs/[a-z_/-]+\.(md|sh|py|bib)' ./*.md host foundation gradient rbf_cell rbf_face rbf_ib reference_host \
  host_check cli tests | sort -u)
# Classes show how their header is included.
if ! sed 's/<[^>]*>//g' "$work/html/classCOperatorGradient.html" | grep '#include &lt;gradient/COperatorGradient.h&gt;' >/dev/null; then
  echo "the page of COperatorGradient does not show how its header is included"
  exit 1
fi
dangling=0
while read -r target; do
  [[ -e $work/html/$target ]] && continue
  echo "a link leads to $target, which is not there"
  dangling=1
done < <(grep -rhoE 'href="[^"#]+' "$work"/html/*.html | sed 's/^href="//' | grep -v '^[a-z]*:' | sort -u)
exit $dangling
