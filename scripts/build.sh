#!/usr/bin/env bash
# Configures and builds one preset of CMakePresets.json. Its output goes to build/PRESET.
#
#   scripts/build.sh PRESET [TARGET...]
#
# Without targets everything is built. Prints progress on a terminal, else only errors. Exit status: 0
# if all was built.
set -euo pipefail

case "${1:-}" in
  --help) sed -n '2,/^set -/{/^set -/d;s/^# \{0,1\}//;p}' "$0"; exit 0 ;;
  '' | -*) sed -n '2,/^set -/{/^set -/d;s/^# \{0,1\}//;p}' "$0" >&2; exit 2 ;;
esac
cd "$(dirname "${BASH_SOURCE[0]}")/.."
preset=$1
shift
if ! command -v cmake >/dev/null; then
  echo 'build: CMake is not installed: run scripts/setup.sh build' >&2
  exit 1
fi

log=$(mktemp)
trap 'rm -f "$log"' EXIT
run_quietly() {
  if "$@" >"$log" 2>&1; then return 0; fi
  cat "$log" >&2
  printf 'build: this failed: %s\n' "$*" >&2
  return 1
}

printf 'build: %s\n' "$preset"
run_quietly cmake --preset "$preset"
build=(cmake --build --preset "$preset" ${1:+--target "$@"})
if [ -t 1 ]; then
  # On a terminal Ninja overwrites one line, and prints the whole output of a command that fails.
  export NINJA_STATUS="build: $preset [%f/%t] "
  "${build[@]}"
else
  run_quietly "${build[@]}"
fi
