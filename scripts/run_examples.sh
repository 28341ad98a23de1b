#!/usr/bin/env bash
# Runs the examples of a build in an empty directory: the launcher with its client, the host example,
# the Steam example with the stand-in and a server on the loopback interface, and each function once,
# with Steam and without.
#
#   scripts/run_examples.sh PRESET
#   scripts/wine.sh --with scripts/run_examples.sh windows
#
# PRESET is windows, native or native-asan; it must be built. The directory is build/PRESET/demo.
# Afterwards it has the files that the examples wrote: config.json, client.log, received.bin, and
# Steam's files below steam/. Exit status: 0 if the client got exactly the launcher's data and
# everything else went as expected.
set -euo pipefail

[ $# -eq 1 ] || { sed -n '2,/^set -/{/^set -/d;s/^# \{0,1\}//;p}' "$0" >&2; exit 2; }
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
bin="$root/build/$1/bin"
if [ ! -d "$bin" ]; then
  printf "examples: no build '%s'; run scripts/build.sh %s\n" "$1" "$1" >&2
  exit 2
fi

rm -rf "$root/build/$1/demo"
mkdir -p "$root/build/$1/demo/steam"
cd "$root/build/$1/demo"

if [ "$1" = windows ]; then
  # Wine's drive Z: is the root of this machine.
  client="Z:${bin//\//\\}\\example_client.exe"
  launcher=("$root/scripts/wine.sh" "$bin/example_launcher.exe")
  host=("$root/scripts/wine.sh" "$bin/example_host.exe")
  steam=("$root/scripts/wine.sh" "$bin/example_steam.exe")
  each=("$root/scripts/wine.sh" "$bin/example_each.exe")
else
  client="$bin/example_client"
  launcher=("$bin/example_launcher")
  host=("$bin/example_host")
  steam=("$bin/example_steam")
  each=("$bin/example_each")
fi

"${launcher[@]}" "$client"
"${host[@]}"

export STEAM_STAND_IN=steam
printf '{ "personaName": "Ada", "currentLanguage": "german" }\n' >steam/steam_settings.json
# shellcheck disable=SC2016  # the server sets the port for the inner shell
with_server=(python3 "$root/tests/support/http_server.py"
  bash -c 'exec "$@" "http://127.0.0.1:$TEST_HTTP_PORT/text"' bash)
"${with_server[@]}" "${steam[@]}"

# Each function once, with Steam, and without, in a folder that has no Steam client library.
for kind in with without; do
  mkdir -p "each/$kind/downloads/pack"
  printf 'content\n' | tee "each/$kind/downloads/pack/a.part" >"each/$kind/downloads/b.part"
done
if [ "$1" = windows ]; then
  cp "$bin/example_each.exe" "$bin/LauncherDll.dll" each/without
  alone=("$root/scripts/wine.sh" "$PWD/each/without/example_each.exe")
else
  cp "$bin/example_each" "$bin/../lib/libLauncherDll.so" each/without
  alone=(env LD_LIBRARY_PATH=. ./example_each)
fi
printf 'examples: each function once, with Steam\n'
(cd each/with && "${with_server[@]}" "${each[@]}" "$client" | tee each.log)
printf 'examples: each function once, without Steam\n'
(cd each/without && "${alone[@]}" "$client" http://127.0.0.1:9/ | tee each.log)
fail() {
  printf 'examples: failed: %s\n' "$1" >&2
  exit 1
}
grep -q '^each: .* 0 without Steam' each/with/each.log || fail 'a function found no Steam'
grep -q '^each: .* 26 without Steam' each/without/each.log || fail 'a function found Steam'
for kind in with without; do
  [ "$(cat "each/$kind/received.bin")" = level=7 ] || fail 'the client got other data'
  [ ! -e "each/$kind/downloads" ] || fail 'downloads are still there'
done
