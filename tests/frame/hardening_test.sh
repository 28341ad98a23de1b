#!/usr/bin/env bash
# Tests that programs and libraries for Linux are hardened.
#
#   tests/frame/hardening_test.sh FILE...
set -euo pipefail

status=0
for file; do
  text=$(readelf --wide --file-header --program-headers --dynamic --dyn-syms "$file")
  # any address, relro, now, the stack protector, and any function of _FORTIFY_SOURCE
  for sign in 'DYN (' GNU_RELRO BIND_NOW __stack_chk_fail _chk@; do
    [[ $text == *"$sign"* ]] || {
      printf '%s: no %s\n' "$file" "$sign"
      status=1
    }
  done
done
exit "$status"
