#!/usr/bin/env bash
# Installs what building and testing LauncherDll needs on Debian. Safe to run any number of times:
# what is there already is left alone, and when nothing is missing it ends at once, without network.
#
#   scripts/setup.sh [--check] [--help]
#
#   --check   only say what is missing; exit status 1 if anything is
#
# Runs as root, or as a user who may use sudo. Exit status: 0 when the library can be built and
# tested natively and for Windows; 1 when not. Wine alone may fail: that is told, and scripts that
# need it decide for themselves.
set -euo pipefail

build_packages=(
  cmake ninja-build g++ g++-mingw-w64-i686 binutils clang libclang-rt-dev lld
  nlohmann-json3-dev googletest libssl-dev libcurl4-openssl-dev
  ca-certificates git openssl python3
  libcli11-dev zlib1g-dev libz-mingw-w64-dev mono-mcs
  clang-format clang-tidy cppcheck shellcheck
  doxygen mandoc bash-completion zsh fish
)
# Wine runs the 32-bit DLL; Xvfb and Mesa give it a screen, and with it consoles and Direct3D.
wine_packages=(
  wine wine32:i386 libgl1:i386 libgl1-mesa-dri:i386 xvfb xauth
)
# Only for a machine whose processor runs no 32-bit programs; a kernel comes on top.
emulator_packages=(
  qemu-system-x86 busybox-static
)

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

say() { printf 'setup: %s\n' "$*"; }
complain() { printf 'setup: %s\n' "$*" >&2; }

case "${1:-}" in
  '' | --check) ;;
  --help)
    sed -n '2,/^set -/{/^set -/d;s/^# \{0,1\}//;p}' "$0"
    exit 0
    ;;
  *)
    complain "unknown option '$1'; try --help"
    exit 2
    ;;
esac

if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
  complain 'this is no Debian system: install the equivalents of these packages by hand:'
  complain "  ${build_packages[*]} ${wine_packages[*]}"
  exit 1
fi

is_installed() {
  [ "$(dpkg-query -W -f '${db:Status-Abbrev}' "$1" 2>/dev/null)" = 'ii ' ]
}

# Fills the array `missing` with those of its arguments that are not installed.
find_missing() {
  missing=()
  local package
  for package in "$@"; do
    is_installed "$package" || missing+=("$package")
  done
}

# Whether Wine is there and the processor refuses it. Only root can use the emulator.
needs_emulator() {
  is_installed wine32:i386 && ! wine --version >/dev/null 2>&1 && [ "$(id -u)" -eq 0 ]
}

find_all_missing() {
  local packages=("${build_packages[@]}" "${wine_packages[@]}")
  if needs_emulator; then packages+=("${emulator_packages[@]}"); fi
  find_missing "${packages[@]}"
}

has_all_files() { ! needs_emulator || "$root/scripts/emulate.sh" --check >/dev/null; }

find_all_missing
if [ "${#missing[@]}" -eq 0 ] && has_all_files; then
  say 'nothing to install'
  exit 0
fi
if [ "${1:-}" = --check ]; then
  say "missing: ${missing[*]:-the kernel for the emulator}"
  exit 1
fi

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  if ! command -v sudo >/dev/null; then
    complain "missing: ${missing[*]}"
    complain 'installing them takes root: run this as root, or install sudo'
    exit 1
  fi
  as_root=(sudo)
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

apt() {
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -y -q \
    -o Acquire::Retries=3 -o DPkg::Lock::Timeout=300 "$@"
}

# An i386 library must have the version of its amd64 twin. Where the twin came from the security
# suite and that suite's i386 index is out of step, the plain install can't be resolved. The
# release's main suite holds every library for both, so the second try takes all from there.
install_from_main_suite() {
  local codename
  # shellcheck disable=SC1091  # the system's
  codename=$(. /etc/os-release && printf '%s' "${VERSION_CODENAME:-}")
  [ -n "$codename" ] || return 1
  printf 'Package: *\nPin: release n=%s\nPin-Priority: 1001\n' "$codename" >"$work/preferences"
  chmod 755 "$work" && chmod 644 "$work/preferences"
  apt install --no-install-recommends --allow-downgrades \
    -o "Dir::Etc::Preferences=$work/preferences" "$@"
}

run_logged() {
  if "$@" >"$work/log" 2>&1; then return 0; fi
  complain "this failed: $*"
  tail -n 15 "$work/log" | sed 's/^/setup:   /' >&2
  return 1
}

# Installs all its arguments in one transaction, or none.
install() {
  say "installing (this can take minutes): $*"
  if run_logged apt install --no-install-recommends "$@"; then return 0; fi
  say "trying again with the release's main suite, downgrades allowed"
  run_logged install_from_main_suite "$@" || return 1
  say "installed from the main suite; packages may have gone back to the release's version"
}

if [ "$(dpkg --print-architecture)" = amd64 ] &&
  ! dpkg --print-foreign-architectures | grep -qx i386; then
  say 'adding the architecture i386, for Wine'
  run_logged "${as_root[@]}" dpkg --add-architecture i386
fi

say 'reading the package lists'
run_logged apt update || complain 'some package lists are out of step; going on with what there is'

if [ "${#missing[@]}" -gt 0 ] && ! install "${missing[@]}"; then
  find_missing "${build_packages[@]}"
  if [ "${#missing[@]}" -gt 0 ]; then install "${missing[@]}" || true; fi
fi

# Only now can it be known whether Wine's programs run.
if needs_emulator; then
  say 'this machine runs no 32-bit programs: installing an emulator for Wine'
  find_missing "${emulator_packages[@]}"
  if [ "${#missing[@]}" -gt 0 ]; then install "${missing[@]}" || true; fi
  run_logged "$root/scripts/emulate.sh" --install || complain 'the kernel for it was not to be had'
fi

find_missing "${build_packages[@]}"
if [ "${#missing[@]}" -gt 0 ]; then
  complain "a package failure, not one of this project: not installed: ${missing[*]}"
  exit 1
fi
if why=$("$root/scripts/wine.sh" --check); then
  say "all is there: the DLL runs under $why"
else
  complain "the DLL cannot run here, for want of packages or of the machine: $why"
fi
