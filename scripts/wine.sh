#!/usr/bin/env bash
# Runs Windows programs under Wine in the project's own prefix. Without a display it starts an
# invisible one. On a machine that cannot run 32-bit programs it uses an emulated processor.
#
#   scripts/wine.sh PROGRAM.exe [ARGUMENT...]
#   scripts/wine.sh --with COMMAND [ARGUMENT...]   one display, one emulator and one Wine server for all
#                                                  programs that COMMAND runs by this script
#   scripts/wine.sh --check                        says what will be used, or why nothing can be;
#                                                  exit status 2 if Wine is not installed, 1 if
#                                                  this machine cannot run it
#
# WINEPREFIX  the prefix; build/wine if unset. It is created on first use. Runs of one prefix at the
#             same time share a display and a Wine server. When the last of them ends, the script
#             ends both, and every program of the prefix that still runs.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

is_installed() { command -v wine >/dev/null && command -v Xvfb >/dev/null; }
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
    [ $# -gt 0 ] || exit 2
    exit 0
    ;;
esac

if ! is_installed; then
  echo 'wine: Wine is not installed: run scripts/setup.sh wine' >&2
  exit 1
fi
if ! runs_here; then exec "$root/scripts/emulate.sh" "$root/scripts/wine.sh" "$@"; fi

export WINEPREFIX="${WINEPREFIX:-$root/build/wine}"
export WINEARCH=win32
export WINEDEBUG="${WINEDEBUG:--all}"
# Without this Wine opens a window to ask for Mono and Gecko, which are not needed.
export WINEDLLOVERRIDES="${WINEDLLOVERRIDES:-mscoree,mshtml=}"

case $1 in
  --with) command=("${@:2}") ;;
  *) command=(wine "$@") ;;
esac
if [ "${LAUNCHER_WINE_SERVED:-}" = "$WINEPREFIX" ]; then exec "${command[@]}"; fi
export LAUNCHER_WINE_SERVED="$WINEPREFIX"
display="$WINEPREFIX/.display"  # its name, and its process if it was started here

fail() {
  printf 'wine: %s\n' "$1" >&2
  exit 1
}

# Wine needs a display because the client gets its own console, which is a window. Xvfb itself chooses
# a free number, so two that start at once do not choose the same.
start_display() {
  local process number
  { read -r process && read -r number; } < <(
    echo "$BASHPID"
    exec setsid Xvfb -displayfd 1 -screen 0 1280x1024x24 -nolisten tcp -noreset \
      </dev/null 2>"$WINEPREFIX/display.log" 8>&- 9>&-
  ) || fail "Xvfb did not start; see $WINEPREFIX/display.log"
  printf ':%s %s\n' "$number" "$process" >"$display"
}

# Starts what the runs of this prefix share: its first argument is the script's.
start_session() {
  end_session  # left by a run that was killed
  if [ -n "${DISPLAY:-}" ]; then echo "$DISPLAY" >"$display"; else start_display; fi
  read -r DISPLAY _ <"$display"
  export DISPLAY
  # A run that was killed can have left half a prefix, which Wine cannot complete.
  if [ -e "$WINEPREFIX/.making" ]; then
    rm -rf "$WINEPREFIX"/{drive_c,dosdevices,.update-timestamp,{system,user,userdef}.reg}
  fi
  if [ ! -e "$WINEPREFIX/system.reg" ]; then
    touch "$WINEPREFIX/.making"
    {
      wineboot --init
      # A program that crashes ends, and nobody is asked in a window.
      wine reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f
    } >"$WINEPREFIX/wineboot.log" 2>&1 8>&- 9>&- || fail "no prefix; see $WINEPREFIX/wineboot.log"
    wineserver --wait
    rm "$WINEPREFIX/.making"
  fi
  wineserver --persistent=300 8>&- 9>&-
  if [ "$1" = --with ]; then
    # Starts Wine's services here and not with the first program: they keep the streams of the
    # program that starts them.
    wineboot </dev/null >/dev/null 2>&1 8>&- 9>&- ||
      fail "the services of $WINEPREFIX did not start"
  fi
}

# Ends the Wine server with all programs, then the display. Wine's desktop is a window of that
# display, and its process prints an error if the display ends first.
end_session() {
  wineserver --kill || true  # it may have ended by itself
  local process=''
  if [ -e "$display" ]; then read -r _ process <"$display" || true; fi
  # Another process can have got the number meanwhile.
  if [ -n "$process" ] && grep -qszFx "WINEPREFIX=$WINEPREFIX" "/proc/$process/environ"; then
    kill "$process" 2>/dev/null || true
  fi
  rm -f "$display"
}

# Each run holds lock 9, shared, until it ends. It takes and releases that lock while it holds lock 8.
# So a run that gets lock 9 exclusively is the first or the last one.
# shellcheck disable=SC2317  # the trap calls it
leave() {
  flock 8
  flock -u 9
  if flock -n 9; then end_session; fi
}

mkdir -p "$WINEPREFIX"
exec 8>"$WINEPREFIX/.starting" 9>"$WINEPREFIX/.running"
flock 8
trap leave EXIT
if flock -n 9; then start_session "$1"; fi
flock -s 9
flock -u 8
read -r DISPLAY _ <"$display"
export DISPLAY
status=0
"${command[@]}" 8>&- 9>&- || status=$?
exit "$status"
