#!/usr/bin/env bash
# Builds LauncherDll.dll and shows its main job: a launcher signs and enciphers data and starts a
# client, which reads the data from the launcher's memory and deciphers them. Then it shows what a
# launcher does on its machine (display modes, a server's name, the removal of a folder) and with Steam
# (the stand-in for Steam's client library). Last, it calls each function once, with Steam and without.
#
#   scripts/demo.sh [--help]
#
# Installs what is missing. Runs the 32-bit DLL under Wine or, if Wine cannot run, the native build.
# Exit status: 0 if the client got exactly the launcher's data.
set -euo pipefail

case "${1:-}" in
  '') ;;
  --help)
    sed -n '2,/^set -/{/^set -/d;s/^# \{0,1\}//;p}' "$0"
    exit 0
    ;;
  *)
    printf "demo: unknown option '%s'; try --help\n" "$1" >&2
    exit 2
    ;;
esac
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/setup.sh build wine
targets=(LauncherDll steam_api example_launcher example_client example_host example_steam
  example_each)
scripts/build.sh windows "${targets[@]}"
printf 'demo: built build/windows/bin/LauncherDll.dll, %s bytes\n' \
  "$(stat -c %s build/windows/bin/LauncherDll.dll)"

if what=$(scripts/wine.sh --check); then
  preset=windows
  what="the 32-bit DLL under $what"
  with=(scripts/wine.sh --with)
else
  preset=native
  what="the native build, since $what"
  with=()
  scripts/build.sh native "${targets[@]}"
fi

printf 'demo: running %s, in build/%s/demo\n' "$what" "$preset"
if "${with[@]}" scripts/run_examples.sh "$preset"; then
  printf "demo: passed: all went as expected, and the client got exactly the launcher's data (%s)\n" "$what"
else
  printf 'demo: FAILED, see above (%s)\n' "$what"
  exit 1
fi
