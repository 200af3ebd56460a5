#!/bin/bash
# Builds the README's example as users of the library do, with the shared and with the static libraries, and runs it
# on an SPS of 1920 x 1088.
#
#   build_example.sh pkg-config|find_package         LANGUAGES VERSION WORK PREFIX LIBDIR
#   build_example.sh add_subdirectory|FetchContent   LANGUAGES VERSION WORK
#
# LANGUAGES is C, CXX or "C;CXX", WORK a directory whose objects a later run uses again. The first two take the
# library from PREFIX, the others from the source tree. The compilers are $CC and $CXX, and $RUN runs what they make.
set -euo pipefail

method=$1 languages=$2 version=$3 work=$4 prefix=${5:-} libdir=${5:+$5/$6}
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
read -ra run <<<"${RUN:-}"
declare -A extension=([C]=c [CXX]=cpp) compiler=([C]=$CC [CXX]=$CXX) standard=([C]=c11 [CXX]=c++17)

mkdir -p "$work"
for language in ${languages//;/ }; do
  "$here/readme_example.sh" >"$work/example.${extension[$language]}"
done

# with_pkg_config PROGRAM LANGUAGE [-static]
with_pkg_config() {
  local program=$1 language=$2 static=${3:-} flags
  flags=$(pkg-config ${static:+--static} --cflags --libs h265)
  # shellcheck disable=SC2086 # a list
  "${compiler[$language]}" "-std=${standard[$language]}" -Wall -Wextra -Wpedantic -Werror ${static:+"$static"} \
    "$work/example.${extension[$language]}" $flags -o "$program"
}

if [ "$method" = pkg-config ]; then
  export PKG_CONFIG_PATH=$libdir/pkgconfig
  [ "$(pkg-config --modversion h265)" = "$version" ]
  for language in ${languages//;/ }; do
    with_pkg_config "$work/example_${language,,}" "$language"
    with_pkg_config "$work/example_${language,,}_static" "$language" -static
  done
else
  cmake --fresh -G Ninja -S "$here/consumer" -B "$work" -DMETHOD="$method" -DLANGUAGES="$languages" \
    -DVERSION="$version" -DEXAMPLE="$work/example" -DSOURCE="$here/../.." -DCMAKE_PREFIX_PATH="$prefix"
  cmake --build "$work"
fi

for language in ${languages//;/ }; do
  for static in "" _static; do
    program=$work/example_${language,,}$static
    needed=$(readelf -d "$program" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
    [ "$(grep '^libh265\.' <<<"$needed" || true)" = "$([ -n "$static" ] || echo libh265.so.1)" ]
    if [ "$language" = C ] && grep 'libstdc++' <<<"$needed"; then
      exit 1 # C programs stay free of it
    fi
    size=$(LD_LIBRARY_PATH=$libdir "${run[@]}" "$program" <"$here/../samples/units/sps-heavy.nal")
    echo "${program##*/}: $size"
    [ "$size" = "1920 x 1088" ]
  done
done
