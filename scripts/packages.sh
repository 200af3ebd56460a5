#!/bin/bash
# Installs what is missing, and makes the Debian packages in build/packages. Prints their names.
#
#   scripts/packages.sh [amd64|arm64]        (default: this machine's architecture; arm64 is cross-built elsewhere)
#
# DEBFULLNAME and DEBEMAIL say whose packages they are. SOURCE_DATE_EPOCH, by default the time of the last commit or
# that of the unpacked sources, is the time that is in them: the same sources give the same packages.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

here=$(dpkg --print-architecture)
architecture=${1:-$here}
case $architecture in
  "$here") preset=release ;;
  arm64) preset=aarch64 ;;
  *)
    echo "packages.sh: no packages for $architecture can be made here" >&2
    exit 2
    ;;
esac

if [ -z "${SOURCE_DATE_EPOCH:-}" ]; then
  SOURCE_DATE_EPOCH=$(git -c safe.directory='*' log -1 --format=%ct 2>/dev/null || stat -c %Y CHANGELOG.md)
fi
export SOURCE_DATE_EPOCH

scripts/dependencies.sh build packages >&2
scripts/docs.sh >&2
build=build/packages/$architecture
scripts/quietly.sh cmake --fresh -DARCHITECTURE="$architecture" -C packaging/debian/settings.cmake \
  --preset "$preset" -B "$build" -DH265_API_REFERENCE="$PWD/build/docs/html"
scripts/quietly.sh cmake --build "$build"
rm -f "$build"/*.deb
(cd "$build" && ../../../scripts/quietly.sh cpack)
ls "$build"/*.deb
