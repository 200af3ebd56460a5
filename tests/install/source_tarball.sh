#!/bin/bash
# Makes the source tarball twice, as two users with other habits, and compares; then configures what is in it.
set -euo pipefail

tree=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/home"
git config --file "$work/home/.gitconfig" tar.umask user
git config --file "$work/home/.gitconfig" core.autocrlf true

first=$("$tree/scripts/source_tarball.sh" "$work/first")
second=$(umask 077 && cd / && HOME=$work/home TZ=Asia/Kathmandu LC_ALL=C XZ_DEFAULTS=--threads=2 \
  "$tree/scripts/source_tarball.sh" "$work/second")
cmp "$first" "$second"

name=$(basename "$first" .tar.xz)
tar -xf "$first" -C "$work"
cmake --preset release -S "$work/$name" -B "$work/build"
grep -qx "CMAKE_PROJECT_VERSION:STATIC=${name#h265-}" "$work/build/CMakeCache.txt"
