#!/usr/bin/env bash
# Runs all checks: the static ones, the tests of the native build, also with sanitizers, a short run
# of the fuzzers, and the tests of the 32-bit DLL itself under Wine.
#
#   scripts/test.sh [CHECK...]
#
#   CHECK   lint, native, native-asan, native-tsan, native-fuzz or windows; all if none is named
#
# Installs what is missing. What cannot run is reported as skipped, with the reason. Exit status: 0
# if everything that ran passed; 1 if not, and in CI also if Wine is not installed.
set -euo pipefail

case "${1:-}" in
  --help)
    sed -n '2,/^set -/{/^set -/d;s/^# \{0,1\}//;p}' "$0"
    exit 0
    ;;
  -*)
    printf "test: unknown option '%s'; try --help\n" "$1" >&2
    exit 2
    ;;
esac
cd "$(dirname "${BASH_SOURCE[0]}")/.."

checks=("$@")
[ $# -gt 0 ] || checks=(lint native native-asan native-tsan native-fuzz windows)
passed=0
failed=0
skipped=0

skip() {
  printf 'test: skipped: %s\n' "$1"
  skipped=$((skipped + 1))
}

# Runs a preset's tests and counts their results. Passes further arguments to ctest.
run_tests() {
  local preset=$1 report="$PWD/build/$1/tests.xml" status=0
  shift
  rm -f "$report"
  "${with[@]}" ctest --preset "$preset" --parallel "$(nproc)" --output-junit "$report" \
    --test-output-size-passed 1000000 "$@" ||
    status=$?
  [ "$status" -eq 0 ] || printf 'test: %s: not all passed\n' "$preset"
  # ctest leaves no report if it found no test or ended early.
  if [ ! -e "$report" ]; then
    failed=$((failed + 1))
    return
  fi
  local counts=()
  read -ra counts <<<"$(python3 - "$report" <<'PYTHON'
import re, sys, xml.etree.ElementTree as tree
suite = tree.parse(sys.argv[1]).getroot()
total, failures, skips = (int(suite.get(k)) for k in ("tests", "failures", "skipped"))
# A program that passes as one test can have skipped some of its own tests. It prints each twice.
for case in suite.iter("testcase"):
    if case.get("status") == "run":
        output = case.findtext("system-out") or ""
        names = sorted(set(re.findall(r"^\[  SKIPPED \] (\S*/\S+|\S+\.\S+)", output, re.M)))
        why = re.findall(r"^.*: Skipped\n(.*)$", output, re.M)
        for name, reason in zip(names, why):
            print(f"test: skipped: {case.get('name')}: {name}: {reason}", file=sys.stderr)
        skips, total = skips + len(names), total + len(names)
print(total - failures - skips, failures, skips)
PYTHON
)"
  # In the report a program that could not be started counts as skipped. Trust ctest's exit status.
  if [ "$status" -ne 0 ] && [ "${counts[1]}" -eq 0 ]; then counts[1]=1; fi
  passed=$((passed + counts[0]))
  failed=$((failed + counts[1]))
  skipped=$((skipped + counts[2]))
}

# Runs a script that is one check by itself.
run_script() {
  if "$@"; then
    passed=$((passed + 1))
  else
    printf 'test: %s: failed\n' "$1"
    failed=$((failed + 1))
  fi
}

# Runs the tests of the DLL.
run_windows_tests() {
  local status=0 what
  # First the tests that need no Wine: they examine the files.
  run_tests windows --label-exclude wine
  what=$(scripts/wine.sh --check) || status=$?
  if [ "$status" -eq 0 ]; then
    printf 'test: the DLL itself, under %s\n' "$what"
    with=(scripts/wine.sh --with)
    run_tests windows --label-regex wine
  else
    skip "the tests of the DLL under Wine: $what"
    if [ "${CI:-}" = true ] && [ "$status" -eq 2 ]; then
      printf 'test: in CI that counts as a failure\n'
      failed=$((failed + 1))
    fi
  fi
}

needs=(build)
for check in "${checks[@]}"; do
  case $check in
    lint) needs+=(lint) ;;
    native-fuzz) needs+=(fuzz) ;;
    native-tsan) needs+=(test) ;;
    windows) needs+=(test wine) ;;
    *) needs+=(test site) ;;
  esac
done
scripts/setup.sh "${needs[@]}"
for check in "${checks[@]}"; do
  with=()
  began=$SECONDS
  printf 'test: %s\n' "$check"
  case $check in
    lint) run_script scripts/lint.sh ;;
    native-fuzz) run_script scripts/fuzz.sh --runs 20000 ;;
    windows)
      scripts/build.sh windows
      run_windows_tests
      ;;
    *)
      scripts/build.sh "$check"
      run_tests "$check"
      ;;
  esac
  printf 'test: %s took %d s\n' "$check" "$((SECONDS - began))"
done

printf '%d passed, %d failed, %d skipped\n' "$passed" "$failed" "$skipped"
[ "$failed" -eq 0 ]
