#!/usr/bin/env bash
# Runs the native tests and reports which lines and branches of src/ they reach.
#
#   scripts/coverage.sh [--help]
#
# Prints each file's figures, then the lines and the branches that were not reached; the page to
# browse is build/native-coverage/coverage/index.html. Branches that only an exception of a called
# function takes are left out. docs/coverage.md explains why the rest is not reached.
#
# Leaves out the kernel that needs AVX-512 VBMI if the processor does not have it.
#
# Installs what is missing. Exit status: 0 for at least 98 % of the lines and 95 % of the branches, 1
# for less or if a test fails.
set -euo pipefail

min_lines=98
min_branches=95

case "${1:-}" in
  '') ;;
  --help)
    sed -n '2,/^set -/{/^set -/d;s/^# \{0,1\}//;p}' "$0"
    exit 0
    ;;
  *)
    printf "coverage: unknown option '%s'; try --help\n" "$1" >&2
    exit 2
    ;;
esac
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/setup.sh build test site coverage
scripts/build.sh native-coverage
build=build/native-coverage
find "$build" -name '*.gcda' -delete
rm -rf "$build/coverage"
mkdir "$build/coverage"
# Prints nothing about tests that pass. Without the tests of the tools: some limit the size of files,
# also of those that hold the coverage.
if ! ctest --preset native-coverage --label-exclude tools --parallel "$(nproc)" \
  >"$build/coverage/tests.log" 2>&1; then
  cat "$build/coverage/tests.log" >&2
  printf 'coverage: not all tests passed\n' >&2
  exit 1
fi

# Searches $build alone: a Wine prefix below build/ has a link to the root of the file system.
report=(gcovr --root . --object-directory "$build" --filter 'src/' -j "$(nproc)"
  --exclude-throw-branches --exclude-unreachable-branches "$build")
if ! grep -qw avx512_vbmi /proc/cpuinfo; then
  printf 'coverage: left out: src/cipher/ecb_byte_planes.cpp: this processor cannot run it\n'
  report+=(--exclude src/cipher/ecb_byte_planes.cpp)
fi
"${report[@]}" --json "$build/coverage/coverage.json" \
  --html-details "$build/coverage/index.html"
# The first report lists the missing lines, the second the missing branches.
gcovr --root . --add-tracefile "$build/coverage/coverage.json"
status=0
gcovr --root . --add-tracefile "$build/coverage/coverage.json" --branches --print-summary \
  --fail-under-line "$min_lines" --fail-under-branch "$min_branches" || status=$?
[ "$status" -eq 0 ] || exit 1
