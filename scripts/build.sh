#!/bin/bash
# Configures and builds one preset of CMakePresets.json in build/PRESET; prints nothing but a failure.
#
#   scripts/build.sh PRESET [TARGET...]        (default: all targets)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

preset=${1:?usage: scripts/build.sh PRESET [TARGET...]}
shift

scripts/quietly.sh cmake --preset "$preset"
scripts/quietly.sh cmake --build "build/$preset" ${1:+--target "$@"}
