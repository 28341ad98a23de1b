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
  sed -n "s|.*EntryPoint = \"\(_\(.*\)@.*\)\",|<dllentry dll=\"$library\" name=\"\1\" target=\"\2\"/>|p" \
    "$root/bindings/csharp/NativeMethods.cs"
  printf '</dllmap></configuration>\n'
} >CallCheck.exe.config
mono CallCheck.exe
