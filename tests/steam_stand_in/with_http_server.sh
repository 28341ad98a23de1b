#!/usr/bin/env bash
# Runs a command while a test server answers on the loopback interface.
#
#   tests/steam_stand_in/with_http_server.sh COMMAND [ARGUMENT...]
#
# The command finds the server's ports in TEST_HTTP_PORT and TEST_HTTPS_PORT. Exit status: the
# command's.
set -euo pipefail

[ $# -ge 1 ] || { sed -n '2,/^set -/{/^set -/d;s/^# \{0,1\}//;p}' "$0" >&2; exit 2; }
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)

# Should this script be killed, its end of the server's input goes with it, and so the server too.
coproc server { exec python3 "$root/tests/support/http_server.py" 900; }
read -r TEST_HTTP_PORT TEST_HTTPS_PORT <&"${server[0]}"
export TEST_HTTP_PORT TEST_HTTPS_PORT

status=0
"$@" || status=$?
input=${server[1]}
exec {input}>&-
# shellcheck disable=SC2154  # set by coproc
wait "$server_PID" || true
exit "$status"
