#!/bin/bash
# Makes the source tarball h265-VERSION.tar.xz of the last commit, the same bytes each time. Prints its name.
#
#   scripts/source_tarball.sh [OUTDIR]        (default: build)
set -euo pipefail

out=$(realpath "${1:-$(dirname "${BASH_SOURCE[0]}")/../build}")
mkdir -p "$out"
cd "$(dirname "${BASH_SOURCE[0]}")/.."
git=(git -c safe.directory='*' -c tar.umask=0022 -c core.autocrlf=false)

version=$(scripts/version.sh <("${git[@]}" show HEAD:components/include/h265/version.h))
tarball=$out/h265-$version.tar.xz

# Owners, times and modes are git's: root, those of the commit, and as the mask above has them. One thread, since more
# make other blocks.
"${git[@]}" archive --format=tar --prefix="h265-$version/" HEAD | xz -9 --threads=1 >"$tarball"
echo "$tarball"
