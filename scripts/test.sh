#!/bin/bash
# Installs what is missing, builds, and runs all tests.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
trap '[ $? -eq 0 ] || echo "scripts/test.sh: FAILED"' EXIT

scripts/dependencies.sh build test
echo "Building and testing in build/debug"
scripts/run_tests.sh debug
echo "scripts/test.sh: all tests pass"
