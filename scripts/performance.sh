#!/bin/bash
# Measures the library beside independent software that does the same, and beside what limits both. Installs what is
# missing, builds the preset `bench`, prints a table and writes it to docs/performance.md.
#
#   scripts/performance.sh [--quick]        (--quick: fewer repetitions)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/dependencies.sh build bench peers
scripts/build.sh bench
exec scripts/performance.py "$@" build/bench
