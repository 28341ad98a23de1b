#!/usr/bin/env bash
# Compiles the C# binding, and calls the native library through it.
#
#   csharp_test.sh LIBRARY WORK
#
# LIBRARY is libLauncherDll.so, WORK a folder for the outputs. Exit status: 0 if all is well.
set -euo pipefail

library=$(realpath "$1") work=$2
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)

mkdir -p "$work"
cd "$work"
mcs -warnaserror+ -warn:4 -out:CallCheck.exe "$root"/{tests/bindings/CallCheck,bindings/csharp/*}.cs
# The native library has the plain names.
{
  printf '<configuration><dllmap dll="LauncherDll.dll" target="%s">\n' "$library"
  "$root/scripts/make_bindings.py" --list | while IFS=$'\t' read -r decorated name _; do
    printf '<dllentry dll="%s" name="%s" target="%s"/>\n' "$library" "$decorated" "$name"
  done
  printf '</dllmap></configuration>\n'
} >CallCheck.exe.config
mono CallCheck.exe
