#!/usr/bin/env bash
# Runs the fuzzers of fuzz/, two at a time.
#
#   scripts/fuzz.sh SECONDS [NAME...]
#   scripts/fuzz.sh --runs N [NAME...]
#   scripts/fuzz.sh --help
#
#   SECONDS  how long each fuzzer runs
#   N        how many inputs each fuzzer tries; slow fuzzers try fewer
#   NAME     container, settings or removal: only these fuzzers
#
# Each starts with its seeds and with the inputs that earlier runs kept in
# build/native-fuzz/fuzzing/NAME/corpus. An input that breaks something stays in .../NAME/found;
# give it to build/native-fuzz/bin/NAME_fuzzer, by its whole path, to see it again. Exit status: 0
# if nothing was found, 1 if something was, 2 for wrong arguments.
set -euo pipefail

# For fuzzers that need long for an input, --runs is divided by this.
declare -A divisors=([removal]=10 [container]=2 [settings]=2)

usage() {
  printf 'fuzz: %s; try --help\n' "$1" >&2
  exit 2
}

case "${1:-}" in
  --help)
    sed -n '2,/^set -/{/^set -/d;s/^# \{0,1\}//;p}' "$0"
    exit 0
    ;;
  --runs)
    runs=${2:-}
    limit=$runs
    amount="$runs runs or fewer"
    shift
    ;;
  *)
    runs=
    limit=${1:-}
    amount="$limit seconds"
    ;;
esac
[[ $limit =~ ^[1-9][0-9]*$ ]] || usage "'$limit' is not a number above 0"
shift

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"
names=("$@")
if [ $# -eq 0 ]; then
  for source in fuzz/*_fuzzer.cpp; do
    name=${source#fuzz/}
    names+=("${name%_fuzzer.cpp}")
  done
fi
for name in "${names[@]}"; do
  [ -e "fuzz/${name}_fuzzer.cpp" ] || usage "there is no fuzzer '$name'"
done

scripts/setup.sh build fuzz
scripts/build.sh native-fuzz

# In memory, if there is such a folder, since the fuzzers work with files.
scratch=$(mktemp -d -p /dev/shm 2>/dev/null || mktemp -d)
trap 'rm -rf "$scratch"' EXIT
output="$root/build/native-fuzz/fuzzing"

run_fuzzer() {
  local name=$1 own="$output/$1" arguments=()
  rm -rf "$own/found"
  mkdir -p "$own/corpus" "$own/found"
  if [ -n "$runs" ]; then
    arguments+=("-runs=$((runs / ${divisors[$name]:-1}))")
  else
    arguments+=("-max_total_time=$limit")
  fi
  if [ -e "fuzz/dictionaries/$name.dict" ]; then
    arguments+=("-dict=$root/fuzz/dictionaries/$name.dict")
  fi
  TMPDIR="$scratch" nice "build/native-fuzz/bin/${name}_fuzzer" "${arguments[@]}" -max_len=4096 \
    -timeout=60 -print_final_stats=1 -reload=0 "-artifact_prefix=$own/found/" "$own/corpus" \
    "$root/fuzz/seeds/$name" >"$own/log" 2>&1
}

# Runs every second fuzzer, beginning with index $1.
run_half() {
  local i
  for ((i = $1; i < ${#names[@]}; i += 2)); do
    run_fuzzer "${names[i]}" || touch "$output/${names[i]}/failed"
  done
}

for name in "${names[@]}"; do rm -f "$output/$name/"{failed,log}; done
printf 'fuzz: %s fuzzers, %s each\n' "${#names[@]}" "$amount"
run_half 0 &
run_half 1 &
wait

total=0
found=0
for name in "${names[@]}"; do
  own="$output/$name"
  count=$(sed -n 's/^stat::number_of_executed_units: *//p' "$own/log")
  speed=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$own/log")
  printf 'fuzz: %-14s %10s runs, %s a second\n' "$name" "${count:-0}" "${speed:-0}"
  total=$((total + ${count:-0}))
  [ -e "$own/failed" ] || continue
  found=$((found + 1))
  grep -E '^does not hold|ERROR:|runtime error:' "$own/log" | head -n 3 || tail -n 5 "$own/log"
  find "$own/found" -type f -printf 'fuzz: %p\n'
done
printf 'fuzz: %s runs in all, %s of %s fuzzers found something\n' "$total" "$found" "${#names[@]}"
[ "$found" -eq 0 ]
