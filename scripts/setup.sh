#!/usr/bin/env bash
# Installs what this project needs on Debian. What is already installed stays as it is; if nothing is
# missing, the script ends at once and needs no network.
#
#   scripts/setup.sh [--check] [NEED...]
#
#   NEED      a name from the list below, or all; build and wine if none is given
#   --check   only report what is missing for each need; exit status 1 if anything is
#
# Runs as root, or as a user who may use sudo. Exit status: 0 if all is installed, 1 if not. If only
# Wine is missing, that is reported and the status is 0: scripts that need Wine check for it.
set -euo pipefail

# name | what it is for | packages
needs=(
  'build | compilers and libraries, native and for Windows | cmake ninja-build g++ clang lld
    g++-mingw-w64-i686 nlohmann-json3-dev libcli11-dev googletest libssl-dev
    libcurl4-openssl-dev python3'
  # Xvfb and Mesa give Wine a screen, and with it consoles and Direct3D.
  'wine | runs the 32-bit DLL | wine wine32:i386 libgl1:i386 libgl1-mesa-dri:i386 xvfb'
  'test | programs that the tests call | git openssl mandoc mono-mcs zsh fish'
  'lint | static checks | git clang-format clang-tidy cppcheck shellcheck'
  'fuzz | the fuzzers | libclang-rt-dev'
  'site | the documents as a site | mkdocs mkdocs-material'
  'bench | benchmarks and the libraries to compare with | libbenchmark-dev nettle-dev
    libgcrypt20-dev libbotan-2-dev libcrypto++-dev'
  'coverage | what the tests reach | gcovr'
  'mutate | whether the tests notice changes | git bubblewrap'
  'blank | a try on an empty Debian | git debootstrap'
)
# On a machine that cannot run 32-bit programs Wine also needs these, and a kernel.
emulator_packages='qemu-system-x86 busybox-static'

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

say() { printf 'setup: %s\n' "$*"; }
complain() { printf 'setup: %s\n' "$*" >&2; }

declare -A purposes packages
names=()
for line in "${needs[@]}"; do
  IFS='|' read -rd '' name purpose list <<<"$line" || true
  name=${name// /}
  names+=("$name")
  read -r purposes["$name"] <<<"$purpose"
  read -rd '' packages["$name"] <<<"${list//$'\n'/ }" || true
done

check=
wanted=()
for argument in "$@"; do
  case $argument in
    --check) check=yes ;;
    --help)
      sed -n '2,/^set -/{/^set -/d;s/^# \{0,1\}//;p}' "$0"
      for name in "${names[@]}"; do printf '  %-9s %s\n' "$name" "${purposes[$name]}"; done
      exit 0
      ;;
    all) wanted=("${names[@]}") ;;
    *)
      if [[ -z $argument || ! -v packages[$argument] ]]; then
        complain "unknown need or option '$argument'; try --help"
        exit 2
      fi
      [[ " ${wanted[*]} " == *" $argument "* ]] || wanted+=("$argument")
      ;;
  esac
done
[ "${#wanted[@]}" -gt 0 ] || wanted=(build wine)

wants_wine() { [[ " ${wanted[*]} " == *' wine '* ]]; }

is_installed() {
  [ "$(dpkg-query -W -f '${db:Status-Abbrev}' "$1" 2>/dev/null)" = 'ii ' ]
}

# True if Wine is installed, but this machine cannot run it. Only root can use the emulator.
needs_emulator() {
  is_installed wine32:i386 && ! wine --version >/dev/null 2>&1 && [ "$(id -u)" -eq 0 ]
}

# Fills the array `missing` with the packages of these needs that are not installed.
find_missing() {
  missing=()
  local name package
  for name in "$@"; do
    for package in ${packages[$name]}; do
      if ! is_installed "$package" && [[ " ${missing[*]} " != *" $package "* ]]; then
        missing+=("$package")
      fi
    done
  done
}

if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
  complain 'this is not Debian: install the equivalents of these packages by hand:'
  for name in "${wanted[@]}"; do complain "  $name: ${packages[$name]}"; done
  exit 1
fi

if wants_wine && needs_emulator; then packages[wine]+=" $emulator_packages"; fi
has_kernel() { ! wants_wine || ! needs_emulator || "$root/scripts/emulate.sh" --check >/dev/null; }

if [ -n "$check" ]; then
  for name in "${wanted[@]}"; do
    find_missing "$name"
    say "$name (${purposes[$name]}): ${missing[*]:+missing: }${missing[*]:-all there}"
  done
  has_kernel || say 'wine: the kernel for the emulator is missing'
fi
find_missing "${wanted[@]}"
if [ "${#missing[@]}" -eq 0 ] && has_kernel; then
  say "nothing to install for: ${wanted[*]}"
  exit 0
fi
[ -z "$check" ] || exit 1

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  if ! command -v sudo >/dev/null; then
    complain "missing for ${wanted[*]}: ${missing[*]}"
    complain 'only root can install them: run this as root, or install sudo'
    exit 1
  fi
  as_root=(sudo)
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

apt() {
  "${as_root[@]}" env LC_ALL=C DEBIAN_FRONTEND=noninteractive apt-get -y -q \
    -o Acquire::Retries=3 -o DPkg::Lock::Timeout=300 "$@"
}

install_options=(--no-install-recommends --no-remove)

run_logged() {
  if "$@" >"$work/log" 2>&1; then return 0; fi
  complain "this failed: $*"
  tail -n 15 "$work/log" | sed 's/^/setup:   /' >&2
  return 1
}

# An i386 library must have the same version as the amd64 one. If the amd64 one came from the security
# suite and that suite's i386 index is older, the plain install fails: apt could only succeed by
# removing packages, which --no-remove forbids. The release's main suite has every library for both
# architectures, so the second try takes all packages from there.
install_from_main_suite() {
  local codename older
  # shellcheck disable=SC1091  # the system's
  codename=$(. /etc/os-release && printf '%s' "${VERSION_CODENAME:-}")
  [ -n "$codename" ] || return 1
  printf 'Package: *\nPin: release n=%s\nPin-Priority: 1001\n' "$codename" >"$work/preferences"
  chmod 755 "$work" && chmod 644 "$work/preferences"
  local from_main=(apt -o "Dir::Etc::Preferences=$work/preferences" install --allow-downgrades
    "${install_options[@]}" "$@")
  run_logged "${from_main[@]}" --simulate || return 1
  older=$(sed -n '/ DOWNGRADED:$/,/^[^ ]/s/^ *\( .*\)/\1/p' "$work/log" | tr -d '\n')
  say "trying again with only the packages of the main suite of $codename: an i386 library must have" \
    'the same version as the amd64 one, and a newer version may exist for amd64 only'
  say "packages that this takes back to an older version:${older:- none}"
  run_logged "${from_main[@]}"
}

# Installs all its arguments in one transaction, or none.
install() {
  say "installing for ${wanted[*]} (this can take minutes): $*"
  run_logged apt install "${install_options[@]}" "$@" || install_from_main_suite "$@"
}

if wants_wine && [ "$(dpkg --print-architecture)" = amd64 ] &&
  ! dpkg --print-foreign-architectures | grep -qx i386; then
  say 'adding the architecture i386, for Wine'
  run_logged "${as_root[@]}" dpkg --add-architecture i386
fi

say 'reading the package lists'
run_logged apt update || complain 'some package lists cannot be read; going on with what there is'

others=()
for name in "${wanted[@]}"; do [ "$name" = wine ] || others+=("$name"); done
if [ "${#missing[@]}" -gt 0 ] && ! install "${missing[@]}"; then
  find_missing "${others[@]}"
  if [ "${#missing[@]}" -gt 0 ]; then install "${missing[@]}" || true; fi
fi

# Wine is installed now, so whether it runs can be tested.
if wants_wine && needs_emulator; then
  say 'this machine runs no 32-bit programs: installing an emulator for Wine'
  packages[wine]+=" $emulator_packages"
  find_missing wine
  if [ "${#missing[@]}" -gt 0 ]; then install "${missing[@]}" || true; fi
  run_logged "$root/scripts/emulate.sh" --install || complain 'the kernel for it cannot be installed'
fi

find_missing "${others[@]}"
if [ "${#missing[@]}" -gt 0 ]; then
  complain "a failure of packages, not of this project: not installed: ${missing[*]}"
  exit 1
fi
[ "${#others[@]}" -eq 0 ] || say "installed for: ${others[*]}"
if wants_wine; then
  if why=$("$root/scripts/wine.sh" --check); then
    say "the DLL runs under $why"
  else
    complain "the DLL cannot run here, because of packages or of the machine: $why"
  fi
fi
