#!/usr/bin/env bash
# Runs a Windows program under Wine, in a prefix of this project's own and, where there is no
# display, with one that nobody sees.
#
#   scripts/wine.sh PROGRAM.exe [ARGUMENT...]
#   scripts/wine.sh --check                    says why Wine cannot run here; exit status 1 then
#
# WINEPREFIX  the prefix; build/wine if unset. It is made on first use.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX="${WINEPREFIX:-$root/build/wine}"
export WINEARCH=win32
export WINEDEBUG="${WINEDEBUG:--all}"
# Neither Mono nor Gecko is used, and without this Wine asks for them in a window.
export WINEDLLOVERRIDES="${WINEDLLOVERRIDES:-mscoree,mshtml=}"

if [ "${1:-}" = --check ]; then
  if ! command -v wine >/dev/null || ! command -v xvfb-run >/dev/null; then
    echo 'Wine is not installed'
    exit 1
  elif ! wine --version >/dev/null 2>&1; then
    echo 'this machine runs no 32-bit programs'
    exit 1
  fi
  exit 0
fi

# A console of its own, which the client gets, is a window under Wine.
if [ -z "${DISPLAY:-}" ]; then exec xvfb-run -a "$0" "$@"; fi

if [ ! -e "$WINEPREFIX/system.reg" ]; then
  mkdir -p "$WINEPREFIX"
  # Two programs that start at once must not both make the prefix.
  exec 9>"$WINEPREFIX/.making"
  flock 9
  [ -e "$WINEPREFIX/system.reg" ] || wineboot --init >"$WINEPREFIX/wineboot.log" 2>&1 9>&-
  exec 9>&-
fi

exec wine "$@"
