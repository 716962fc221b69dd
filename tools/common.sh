# Shared by run, test, check and bench: installs what is missing, builds a preset. Sourced, not run.
# shellcheck shell=bash
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

say() { printf '== %s\n' "$*"; }
die() { printf 'error: %s\n' "$*" >&2; exit 1; }

# as_root COMMAND...: runs it as root, through sudo where needed.
as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  elif command -v sudo >/dev/null 2>&1; then
    sudo "$@"
  else
    die "root is needed to run '$*'; run it yourself as root, then start this again"
  fi
}

# need PACKAGE...: installs the Debian packages that are not installed yet, and says so.
installed=0
need() {
  local missing=() package
  for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q '^install ok installed$' ||
      missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  command -v apt-get >/dev/null 2>&1 ||
    die "these packages are missing and there is no apt-get to install them: ${missing[*]}"
  say "installing ${missing[*]}"
  as_root apt-get update -q >/dev/null || die "apt-get update failed; is the network there?"
  installed=1
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends \
    "${missing[@]}" >/dev/null || die "apt-get could not install ${missing[*]}"
}

# What building needs; what the desktop needs besides, then the tests, the stricter door, ./package, ./bench.
BUILD_PACKAGES=(g++ cmake ninja-build ccache pkg-config libasound2-dev libjack-jackd2-dev libfluidsynth-dev
  timgm6mb-soundfont)
DESKTOP_PACKAGES=(qt6-base-dev libqt6opengl6-dev libgl1-mesa-dri)
TEST_PACKAGES=(doctest-dev binutils gnustep-base-runtime jackd2 xvfb)
CHECK_PACKAGES=(clang clang-format clang-tidy libclang-rt-14-dev)
PACKAGE_PACKAGES=(dpkg-dev)
BENCH_PACKAGES=(libbenchmark-dev libfftw3-dev xvfb)

# build PRESET [TARGET...]: configures once and after an installation, builds what changed.
build() {
  local preset=$1
  shift
  [ "$installed" = 0 ] && [ -f "build/$preset/build.ninja" ] || { say "configuring $preset"; cmake --preset "$preset" >/dev/null; }
  say "building $preset${*:+ ($*)}"
  if [ $# -gt 0 ]; then
    cmake --build --preset "$preset" --target "$@"
  else
    cmake --build --preset "$preset"
  fi
}
