#!/usr/bin/env bash
# Least squares on ranks that are bound to no core, more of them than fit: with OMP_NUM_THREADS unset, a call takes no longer
# than with one thread.
#   unbound_ranks_test.sh ZYNGRAD_BINARY MPIRUN DATA_DIR
# shellcheck source=../integration/cli/cli_test_support.sh
. "$(dirname "${BASH_SOURCE[0]}")/../integration/cli/cli_test_support.sh"

# Both settings take turns, so that a slow spell of the machine falls on either. The fastest turn of each counts: other
# programs make turns slower, never faster. There are further turns as long as the limit is exceeded.
readonly limit=1.2 fewest_turns=3 most_turns=12

call_ms() {  # call_ms RANKS: a call of least squares
  timeout 120 "$mpirun" -n "$1" --bind-to none "$zyngrad" gradient box:50,40,40 --field "sin(x)*y" --method lsq --repeat 60 \
    -o unbound >stdout 2>stderr </dev/null
  code=$?
  awk '/later calls ms/ { getline; getline; print $4 }' stdout
}
least() { printf '%s\n' "$@" | sort -g | head -n 1; }
within_limit() { awk -v a="$1" -v b="$2" -v limit="$limit" 'BEGIN { exit !(a > 0 && b > 0 && a <= limit * b) }'; }

for ranks in 2 3; do
  unset_ms=() one_ms=()
  for ((turn = 1; turn <= most_turns; ++turn)); do
    unset_ms+=("$(unset OMP_NUM_THREADS; call_ms $ranks)")
    one_ms+=("$(OMP_NUM_THREADS=1 call_ms $ranks)")
    of_unset=$(least "${unset_ms[@]}") of_one=$(least "${one_ms[@]}")
    ((turn >= fewest_turns)) && within_limit "$of_unset" "$of_one" && break
  done
  echo "$ranks ranks, ms a call: OMP_NUM_THREADS unset ${unset_ms[*]}; 1 ${one_ms[*]}"
  check "$ranks ranks: a call with OMP_NUM_THREADS unset takes at most $limit times as long as with 1 ($of_unset, $of_one ms)" \
    within_limit "$of_unset" "$of_one"
done

finish
