#!/bin/sh
# Runs Python with these arguments, warnings being errors; exit status 77 without one of at least 3.11.
set -eu

if ! python3 -c 'import sys; sys.exit(sys.version_info < (3, 11))'; then
  echo "SKIPPED: no Python 3.11"
  exit 77
fi
exec python3 -B -W error "$@"
