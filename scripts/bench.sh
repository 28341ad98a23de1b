#!/usr/bin/env bash
# Runs the benchmarks of the native library beside other libraries and writes docs/benchmarks.md and
# its plot, docs/benchmarks.svg, anew. Then times the 32-bit build under Wine, unless that is
# emulated here, where times mean nothing.
#
#   scripts/bench.sh [--quick] [--help]
#
#   --quick   3 repetitions instead of 15, and nothing written to docs/
#
# Installs what is missing. Takes about four minutes. The raw results are in
# build/native-bench/run/benchmarks.json. Exit status: 0 if all ran.
set -euo pipefail

repetitions=15
case "${1:-}" in
  '') ;;
  --quick) repetitions=3 ;;
  --help)
    sed -n '2,/^set -/{/^set -/d;s/^# \{0,1\}//;p}' "$0"
    exit 0
    ;;
  *)
    printf "bench: unknown option '%s'; try --help\n" "$1" >&2
    exit 2
    ;;
esac
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

scripts/setup.sh build bench wine
scripts/build.sh native-bench benchmarks
rm -rf build/native-bench/run
mkdir -p build/native-bench/run
cd build/native-bench/run
printf 'bench: %s interleaved repetitions, %s\n' "$repetitions" "this takes minutes"
../bin/benchmarks "--benchmark_repetitions=$repetitions" --benchmark_min_time=0.02 \
  --benchmark_enable_random_interleaving=true \
  --benchmark_out=benchmarks.json --benchmark_out_format=json 2>benchmarks.log ||
  { cat benchmarks.log >&2; exit 1; }

if [ "$repetitions" -eq 3 ]; then
  python3 "$root/scripts/make_benchmarks_page.py" benchmarks.json page.md plot.svg
  cat page.md
else
  python3 "$root/scripts/make_benchmarks_page.py" benchmarks.json "$root/docs/benchmarks.md" \
    "$root/docs/benchmarks.svg"
  printf 'bench: wrote docs/benchmarks.md and docs/benchmarks.svg\n'
fi

cd "$root"
status=0
what=$(scripts/wine.sh --check) || status=$?
if [ "$status" -ne 0 ] || [[ $what == *emulated* ]]; then
  printf 'bench: skipped: the 32-bit build: %s\n' "$what"
  exit 0
fi
scripts/build.sh windows-bench dll_benchmark
scripts/wine.sh build/windows-bench/bin/dll_benchmark.exe
