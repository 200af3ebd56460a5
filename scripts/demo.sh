#!/bin/bash
# Installs what is missing, builds, and takes a sample stream apart with the inspector.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
trap '[ $? -eq 0 ] || echo "scripts/demo.sh: FAILED"' EXIT

sample=tests/samples/progressive-hrd-vui.hevc
tool=build/release/tools/h265tool/h265tool

scripts/dependencies.sh build
echo "Building in build/release"
scripts/build.sh release h265tool
echo "$tool inspect $sample"
"$tool" inspect "$sample"
echo "scripts/demo.sh: the inspector read all of $sample"
