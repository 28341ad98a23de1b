#!/usr/bin/env bash
# Times the 32-bit DLL under Wine, compares the native library with other libraries, and writes
# docs/benchmarks.md and its plot, docs/benchmarks.svg. If Wine is emulated on this machine, times of
# the DLL would mean nothing, so the page keeps its last figures.
#
#   scripts/bench.sh [--quick] [--dll] [--help]
#
#   --quick   fewer repetitions, and nothing written to docs/
#   --dll     the DLL only; the page keeps the native library's last figures
#
# Installs what is missing. Takes about four minutes, with --dll half a minute after the build. The raw
# results are in build/native-bench/run and build/windows-bench/run. Exit status: 0 if all ran.
set -euo pipefail

quick=false
native=true
for option; do
  case $option in
    --quick) quick=true ;;
    --dll) native=false ;;
    --help)
      sed -n '2,/^set -/{/^set -/d;s/^# \{0,1\}//;p}' "$0"
      exit 0
      ;;
    *)
      printf "bench: unknown option '%s'; try --help\n" "$option" >&2
      exit 2
      ;;
  esac
done
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

# Creates an empty folder to run a benchmark in.
new_folder() {
  rm -rf "$1"
  mkdir -p "$1"
}

results=()
scripts/setup.sh build bench wine
if "$native"; then
  scripts/build.sh native-bench benchmarks
  new_folder build/native-bench/run
  repetitions=15
  if "$quick"; then repetitions=3; fi
  printf 'bench: the native library: %s interleaved repetitions; this takes minutes\n' "$repetitions"
  (
    cd build/native-bench/run
    ../bin/benchmarks "--benchmark_repetitions=$repetitions" --benchmark_min_time=0.02 \
      --benchmark_enable_random_interleaving=true \
      --benchmark_out=benchmarks.json --benchmark_out_format=json 2>benchmarks.log ||
      { cat benchmarks.log >&2; exit 1; }
  )
  results+=(--native build/native-bench/run/benchmarks.json)
fi

# Repeats all outputs in turn, so that other work of the machine slows all of them.
time_dll() {
  local program=../bin/dll_benchmark.exe rounds=3
  if "$quick"; then rounds=1; fi
  cd build/windows-bench/run
  "$root/scripts/wine.sh" "$program" dll.tsv calls >output.txt
  for ((i = 0; i < rounds; ++i)); do
    "$root/scripts/wine.sh" "$program" dll.tsv lookups file >output.txt
    "$root/scripts/wine.sh" "$program" dll.tsv lookups pipe | cat >output.txt
    "$root/scripts/wine.sh" "$program" dll.tsv lookups 'character device' >/dev/null
  done
}

status=0
what=$(scripts/wine.sh --check) || status=$?
if [ "$status" -ne 0 ] || [[ $what == *emulated* ]]; then
  printf 'bench: the DLL is not timed, its last figures stay: %s\n' "$what"
else
  scripts/build.sh windows-bench dll_benchmark
  new_folder build/windows-bench/run
  printf 'bench: the DLL under Wine\n'
  export root quick
  export -f time_dll
  scripts/wine.sh --with bash -euo pipefail -c time_dll
  results+=(--dll build/windows-bench/run/dll.tsv --wine "$(wine --version)")
fi

page=docs/benchmarks.md
plot=docs/benchmarks.svg
if "$quick"; then
  page=build/benchmarks.md
  plot=build/benchmarks.svg
fi
python3 scripts/make_benchmarks_page.py "${results[@]}" docs/benchmarks.md "$page" "$plot"
printf 'bench: wrote %s and %s\n' "$page" "$plot"
