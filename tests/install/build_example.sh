#!/bin/bash
# Builds the example against an installed tree, and runs it on an SPS of 1920 x 1088.
#
#   build_example.sh pkg-config|cmake shared|static PREFIX LIBDIR EXAMPLE.c       (compiler: $CC)
set -euo pipefail

method=$1 static=${2#shared} prefix=$3 libdir=$3/$4 example=$5
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
sps=$here/../samples/units/sps-heavy.nal
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

warnings="-Wall -Wextra -Wpedantic -Werror"
case $method in
  pkg-config)
    export PKG_CONFIG_PATH=$libdir/pkgconfig
    flags=$(pkg-config ${static:+--static} --cflags --libs h265)
    # shellcheck disable=SC2086 # both are lists
    "$CC" -std=c11 $warnings ${static:+-static} "$example" $flags -o "$work/example"
    ;;
  cmake)
    cmake -G Ninja -S "$here/consumer" -B "$work" -DCMAKE_C_FLAGS="$warnings" -DCMAKE_PREFIX_PATH="$prefix" \
      -DEXAMPLE="$example" -DLIBRARY="h265::h265${static:+_static}"
    cmake --build "$work"
    ;;
esac

linked=$(readelf -d "$work/example" | grep -o 'libh265\.so\.1' || true)
[ "$linked" = "$([ -n "$static" ] || echo libh265.so.1)" ]

size=$(LD_LIBRARY_PATH=$libdir "$work/example" <"$sps")
echo "$size"
[ "$size" = "1920 x 1088" ]
