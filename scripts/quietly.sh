#!/bin/bash
# Runs a command and shows what it says only when it fails; the exit status is the command's.
#
#   scripts/quietly.sh COMMAND...
set -uo pipefail

log=$(mktemp)
trap 'rm -f "$log"' EXIT
"$@" >"$log" 2>&1
status=$?
if [ $status -ne 0 ]; then
  cat "$log" >&2
fi
exit $status
