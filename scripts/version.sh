#!/bin/bash
# Prints the version of this tree, or that which another state of the header has.
#
#   scripts/version.sh [VERSION.h]
set -euo pipefail

header=$(dirname "${BASH_SOURCE[0]}")/../components/include/h265/version.h
sed -n 's/^#define H265_VERSION_\(MAJOR\|MINOR\|PATCH\) \([0-9]*\).*/\2/p' "${1:-$header}" | paste -sd .
