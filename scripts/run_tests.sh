#!/bin/bash
# Builds one preset and runs all its tests. Prints the failures, and ctest's closing lines.
#
#   scripts/run_tests.sh PRESET
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

preset=${1:?usage: scripts/run_tests.sh PRESET}
scripts/build.sh "$preset"

log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! ctest --preset "$preset" --parallel "$(nproc)" --no-tests=error >"$log" 2>&1; then
  grep -vE '^ +Start |   Passed   ' "$log"
  exit 1
fi
sed -n '/tests passed/,$p' "$log"
