#!/usr/bin/env bash
# Runs the example launcher and its client out of a build, in an empty directory of their own.
#
#   scripts/run_examples.sh PRESET
#
# PRESET is windows, native or native-asan, and built. The directory, build/PRESET/demo, holds
# afterwards what they wrote: config.json, client.log and received.bin. Exit status: 0 if the client
# got exactly the launcher's data.
set -euo pipefail

[ $# -eq 1 ] || { sed -n '2,/^set -/{/^set -/d;s/^# \{0,1\}//;p}' "$0" >&2; exit 2; }
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
bin="$root/build/$1/bin"

if [ ! -d "$bin" ]; then
  printf "examples: no build '%s'; run scripts/build.sh %s\n" "$1" "$1" >&2
  exit 2
fi
rm -rf "$root/build/$1/demo"
mkdir -p "$root/build/$1/demo"
cd "$root/build/$1/demo"

if [ "$1" != windows ]; then
  exec "$bin/example_launcher" "$bin/example_client"
fi
# Wine's drive Z: is the root of this machine.
client="Z:${bin//\//\\}\\example_client.exe"
exec "$root/scripts/wine.sh" "$bin/example_launcher.exe" "$client"
