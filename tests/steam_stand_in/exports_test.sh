#!/usr/bin/env bash
# Holds the exported names of the stand-in against the list, and the DLL's imports against the
# system's libraries.
#
#   tests/steam_stand_in/exports_test.sh OBJDUMP LIBRARY
set -euo pipefail

objdump=$1 library=$2
expected=$(sort <<'NAMES'
SteamAPI_Init
SteamAPI_Shutdown
SteamAPI_IsSteamRunning
SteamAPI_RestartAppIfNecessary
SteamUser
SteamFriends
SteamApps
SteamRemoteStorage
SteamHTTP
StandInVerifyTicket
NAMES
)

if [[ $library == *.dll ]]; then
  exported=$("$objdump" -p "$library" |
    sed -n '/\[Ordinal\/Name Pointer\]/,/^$/s/^\t\[ *[0-9]*\] //p' | sort)
  foreign=$("$objdump" -p "$library" | sed -n 's/^\tDLL Name: //p' |
    grep -ivxE '(bcrypt|kernel32|msvcrt|shlwapi|winhttp)\.dll' || true)
  if [ -n "$foreign" ]; then
    printf 'imports from %s\n' "$foreign"
    exit 1
  fi
else
  exported=$("$objdump" -T "$library" | awk '$2 == "g" && $4 != "*UND*" { print $NF }' | sort)
fi
if [ "$exported" != "$expected" ]; then
  printf 'exported:\n%s\nexpected:\n%s\n' "$exported" "$expected"
  exit 1
fi
