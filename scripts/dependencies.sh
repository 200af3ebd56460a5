#!/bin/bash
# Installs the Debian 12 packages that are missing for the groups named; touches nothing when none is.
#
#   scripts/dependencies.sh GROUP...
set -euo pipefail

declare -A packages=(
  # compiles everything but the benchmarks
  [build]="cmake g++ libcli11-dev libgmock-dev libgtest-dev ninja-build nlohmann-json3-dev"
  # what the tests run beside it
  [test]="abigail-tools binutils ffmpeg gstreamer1.0-plugins-bad gstreamer1.0-plugins-base gstreamer1.0-plugins-good
    gstreamer1.0-tools pkg-config python3"
  # the other compilers, the AArch64 cross build with its emulator, Valgrind, and the checks of the sources
  [ci]="clang clang-format clang-tidy g++-aarch64-linux-gnu gcovr git googletest qemu-user shellcheck valgrind"
  [bench]="libbenchmark-dev"
  # what the benchmarks are compared with, and what makes their streams and counts instructions
  [peers]="ffmpeg libavcodec-dev libgstreamer-plugins-bad1.0-dev pkg-config python3 valgrind x265"
  # makes the Debian packages, for AArch64 too, and the source tarball, and tries them
  [packages]="binutils fakeroot g++-aarch64-linux-gnu git lintian pkg-config python3 qemu-user xz-utils"
  # the API reference, and the check of the man pages
  [docs]="doxygen groff-base"
  # fuzzers: clang's run-time libraries, and the names in their reports
  [fuzz]="clang cmake libcli11-dev libclang-rt-dev libgmock-dev libgtest-dev llvm ninja-build nlohmann-json3-dev"
)

if [ $# -eq 0 ]; then
  echo "usage: scripts/dependencies.sh GROUP...   of the groups: ${!packages[*]}" >&2
  exit 2
fi
wanted=()
for group in "$@"; do
  if [ -z "${packages[$group]:-}" ]; then
    echo "dependencies.sh: no group '$group', only: ${!packages[*]}" >&2
    exit 2
  fi
  read -rd "" -a names <<<"${packages[$group]}" || true # it ends at the end of the text
  wanted+=("${names[@]}")
done

if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
  echo "dependencies.sh: no Debian package tools here; install what corresponds to: ${wanted[*]}" >&2
  exit 1
fi

missing=()
for package in "${wanted[@]}"; do
  status=$(dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null) || status=unknown
  [ "$status" = installed ] || missing+=("$package")
done
if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  if ! command -v sudo >/dev/null; then
    echo "dependencies.sh: not root, and there is no sudo. As root: apt-get install ${missing[*]}" >&2
    exit 1
  fi
  as_root=(sudo)
fi

log=$(mktemp)
trap 'rm -f "$log"' EXIT
apt_get() {
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq -o DPkg::Lock::Timeout=300 "$@" >"$log" 2>&1
}
install_missing() {
  apt_get install --yes --no-install-recommends "${missing[@]}"
}

echo "Installing ${missing[*]}"
# A machine that never fetched the package lists, or long ago, fails at first. Only the packages asked for
# count: a foreign package source that cannot be reached does not.
if ! install_missing; then
  apt_get update || true
  if ! install_missing; then
    cat "$log" >&2
    echo "dependencies.sh: apt-get could not install ${missing[*]}" >&2
    exit 1
  fi
fi
