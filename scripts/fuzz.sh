#!/bin/bash
# Builds the fuzzers and runs each for a given time, as many at once as there are processors. Prints a line
# for each; when one finds something, its report and the input that shows it.
#
#   scripts/fuzz.sh SECONDS [FUZZER...]        (default: all fuzzers)
#
# New inputs stay in build/asan/fuzz/work/FUZZER: corpus/ grows from run to run, finds/ has what failed.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

seconds=${1:?usage: scripts/fuzz.sh SECONDS [FUZZER...]}
shift
programs=build/asan/fuzz

# fuzz FUZZER: one fuzzer, from the inputs of earlier runs, those of the tree, and the sample streams
fuzz() {
  local fuzzer=$1 work=$programs/work/$1 executions progress
  mkdir -p "$work/corpus" "$work/finds"
  if ! "$programs/${fuzzer}_fuzzer" -max_total_time="$seconds" -max_len=4096 -timeout=10 -close_fd_mask=3 \
    -print_final_stats=1 -artifact_prefix="$work/finds/" "$work/corpus" "fuzz/corpus/$fuzzer" tests/samples \
    >"$work/log" 2>&1; then
    tail -n 60 "$work/log"
    echo "$fuzzer: FAILED: $(sed -n 's/.*Test unit written to //p' "$work/log")"
    return 1
  fi
  executions=$(sed -n 's/^stat::number_of_executed_units: //p' "$work/log")
  progress=$(sed -nE 's/^#[0-9]+[[:space:]]+DONE +cov: ([0-9]+).* corp: ([0-9]+).*/\1 edges, \2 inputs/p' \
    "$work/log")
  echo "$fuzzer: $executions executions, $progress"
}

scripts/build.sh asan fuzzers
if [ $# -eq 0 ]; then
  for program in "$programs"/*_fuzzer; do
    fuzzer=${program##*/}
    set -- "$@" "${fuzzer%_fuzzer}"
  done
fi

export -f fuzz
export seconds programs
if ! printf '%s\n' "$@" | xargs -P "$(nproc)" -I{} bash -euo pipefail -c 'fuzz {}'; then
  echo "scripts/fuzz.sh: FAILED"
  exit 1
fi
