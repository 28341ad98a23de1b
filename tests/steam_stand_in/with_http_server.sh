#!/usr/bin/env bash
# Runs a command with a test server on the loopback interface.
#
#   tests/steam_stand_in/with_http_server.sh COMMAND [ARGUMENT...]
#
# The command finds the server's ports in TEST_HTTP_PORT and TEST_HTTPS_PORT. Exit status: the
# command's.
set -euo pipefail

[ $# -ge 1 ] || { sed -n '2,/^set -/{/^set -/d;s/^# \{0,1\}//;p}' "$0" >&2; exit 2; }
exec python3 "$(dirname "${BASH_SOURCE[0]}")/../support/http_server.py" "$@"
