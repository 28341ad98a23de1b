#!/usr/bin/env bash
# Runs Windows programs under Wine, in a prefix of this project's own, with a display that nobody sees
# where there is none, and on an emulated processor where this machine's runs no 32-bit programs.
#
#   scripts/wine.sh PROGRAM.exe [ARGUMENT...]
#   scripts/wine.sh --with COMMAND [ARGUMENT...]   one display, one emulator and one Wine server for all
#                                                  programs that COMMAND runs by this script
#   scripts/wine.sh --check                        says what will be used, or why nothing can be;
#                                                  exit status 2 if Wine is not installed, 1 if
#                                                  this machine cannot run it
#
# WINEPREFIX  the prefix; build/wine if unset. It is made on first use.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

is_installed() { command -v wine >/dev/null && command -v xvfb-run >/dev/null; }
runs_here() { wine --version >/dev/null 2>&1; }

case "${1:-}" in
  --check)
    if ! is_installed; then
      echo 'Wine is not installed'
      exit 2
    elif runs_here; then
      echo 'Wine'
    elif why=$("$root/scripts/emulate.sh" --check); then
      echo 'Wine on an emulated processor'
    else
      echo "this machine runs no 32-bit programs, and $why"
      exit 1
    fi
    exit
    ;;
  '' | --help)
    sed -n '2,/^set -/{/^set -/d;s/^# \{0,1\}//;p}' "$0"
    exit 2
    ;;
esac

if ! is_installed; then
  echo 'wine: Wine is not installed: run scripts/setup.sh' >&2
  exit 1
fi
if ! runs_here; then exec "$root/scripts/emulate.sh" "$root/scripts/wine.sh" "$@"; fi
# A console of its own, which the client gets, is a window under Wine.
if [ -z "${DISPLAY:-}" ]; then exec xvfb-run -a "$root/scripts/wine.sh" "$@"; fi

export WINEPREFIX="${WINEPREFIX:-$root/build/wine}"
export WINEARCH=win32
export WINEDEBUG="${WINEDEBUG:--all}"
# Neither Mono nor Gecko is used, and without this Wine asks for them in a window.
export WINEDLLOVERRIDES="${WINEDLLOVERRIDES:-mscoree,mshtml=}"

if [ ! -e "$WINEPREFIX/system.reg" ]; then
  mkdir -p "$WINEPREFIX"
  # Two programs that start at once must not both make the prefix.
  exec 9>"$WINEPREFIX/.making"
  flock 9
  if [ ! -e "$WINEPREFIX/system.reg" ]; then
    {
      wineboot --init
      # A program that crashes ends, and nobody is asked in a window.
      wine reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f
    } >"$WINEPREFIX/wineboot.log" 2>&1 9>&-
  fi
  exec 9>&-
fi

if [ "$1" != --with ]; then exec wine "$@"; fi
if [ "${LAUNCHER_WINE_SERVED:-}" = "$WINEPREFIX" ]; then exec "${@:2}"; fi

# Wine's services start once then, not for each program, which saves most of its time; and they start
# here, as they keep the streams of the program that starts them. A server that runs already would
# take no notice.
export LAUNCHER_WINE_SERVED="$WINEPREFIX"
wineserver --wait
wineserver --persistent=300
# It may have ended for want of programs: that is no failure of COMMAND.
trap 'wineserver --kill || true' EXIT
if ! wineboot </dev/null >/dev/null 2>&1; then
  echo "wine: the services of $WINEPREFIX did not start" >&2
  exit 1
fi
"${@:2}"
