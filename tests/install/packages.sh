#!/bin/bash
# Tries Debian packages as a user would: installs them into an empty root, builds the README's example against it in
# C and in C++, shared and static, takes the README's first look with the tool, completes its command line, parses in
# Python, and removes them again.
#
#   packages.sh PACKAGE.deb...        (of one architecture; AArch64 is cross-compiled and emulated where need be)
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
if [ "$(id -u)" -ne 0 ]; then
  exec fakeroot -- "${BASH_SOURCE[0]}" "$@" # dpkg installs for root alone
fi
PATH=$PATH:/usr/sbin:/sbin
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
root=$work/root

# field PACKAGE.deb NAME
field() {
  dpkg-deb --field "$1" "$2"
}

# fail TEXT
fail() {
  echo "packages.sh: $1" >&2
  exit 1
}

names=()
architecture=
for package in "$@"; do
  names+=("$(field "$package" Package)")
  version=$(field "$package" Version)
  case $(field "$package" Architecture) in
    all) ;;
    "${architecture:=$(field "$package" Architecture)}") ;;
    *) fail "$package is not for $architecture" ;;
  esac
done

CC=cc CXX=c++ RUN=
case $architecture in
  amd64) machine="Advanced Micro Devices X86-64" triplet=x86_64-linux-gnu ;;
  arm64) machine=AArch64 triplet=aarch64-linux-gnu ;;
  *) fail "packages for '$architecture'" ;;
esac
if [ "$architecture" != "$(dpkg --print-architecture)" ]; then
  CC=$triplet-gcc CXX=$triplet-g++ RUN="qemu-${triplet%%-*} -L /usr/$triplet"
fi
export CC CXX RUN

# The root is empty but for the distribution's own packages, which are there in name, as they are on this machine.
database=$root/var/lib/dpkg
mkdir -p "$database/info" "$database/updates"
for package in libc6 libc6-dev libgcc-s1 libstdc++6 python3; do
  dpkg-query --show --showformat 'Package: ${Package}\nStatus: install ok installed\nVersion: ${Version}\n' "$package"
  printf 'Architecture: %s\nMaintainer: nobody\nDescription: here in name\n\n' "$architecture"
  touch "$database/info/$package.list"
done >"$database/status"
dpkg_there() {
  dpkg --root="$root" --log="$work/log" "$@"
}
dpkg_there --add-architecture "$architecture"

# For dpkg, what is for all architectures belongs to this machine's, so the Python package finds nothing of another.
dpkg_there ${RUN:+--force-depends} --install "$@"
dpkg_there --verify "${names[@]}"

own=$(cd "$root/usr/lib/$triplet" && echo lib*.so.*)
from_dependencies="libc.so.6 libm.so.6 libgcc_s.so.1 libstdc++.so.6 ld-linux-aarch64.so.1 ld-linux-x86-64.so.2"
for file in "$root/usr/lib/$triplet"/lib*.{a,so} "$root"/usr/bin/*; do
  header=$(readelf -hd "$file")
  ! grep 'Machine:' <<<"$header" | grep -v "Machine: *$machine\$" || fail "$file is not of $architecture"
  ! grep -E 'RPATH|RUNPATH' <<<"$header" || fail "$file looks for libraries in places of its own"
  while read -r library; do
    case " $own $from_dependencies " in
      *" $library "*) ;;
      *) fail "$file needs $library, which its package's dependencies do not bring" ;;
    esac
  done < <(sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' <<<"$header")
done

for method in pkg-config find_package; do
  "$here/build_example.sh" "$method" "C;CXX" "${version%-*}" "$work/$method" "$root/usr" "lib/$triplet"
done

read -ra tool <<<"$RUN $root/usr/bin/h265tool"
export LD_LIBRARY_PATH=$root/usr/lib/$triplet
[ "$("${tool[@]}" --version)" = "h265tool ${version%-*}" ]
"$here/first_look.sh" "${tool[@]}"
"$here/../h265tool/completion.sh" "$root/usr/share/bash-completion/completions/h265tool" "${tool[@]}"
if [ -z "$RUN" ]; then # Python is not emulated
  width=$(PYTHONPATH=$root/usr/lib/python3/dist-packages python3 -B -c '
import sys, h265
print(h265.Sps.parse(open(sys.argv[1], "rb").read()).pic_width_in_luma_samples)' "$here/../samples/units/sps-heavy.nal")
  [ "$width" = 1920 ]
fi
unset LD_LIBRARY_PATH

dpkg_there --purge "${names[@]}"
left=$(find "$root/usr" ! -type d 2>/dev/null || true)
[ -z "$left" ] || fail "left behind: $left"

# The tag is about Debian's own archive.
lintian --fail-on error,warning --suppress-tags initial-upload-closes-no-bugs "$@"
