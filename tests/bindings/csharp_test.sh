#!/usr/bin/env bash
# Compiles the C# binding, and calls the native library through it.
#
#   csharp_test.sh LIBRARY WORK
#
# LIBRARY is libLauncherDll.so, WORK a folder for the outputs. Exit status: 0 if all is well.
set -euo pipefail

library=$(realpath "$1") work=$(realpath -m "$2")
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(cd "$here/../.." && pwd)

rm -rf "$work"
mkdir -p "$work"
cd "$work"
"$root/scripts/make_bindings.py" --list >table.txt
mcs -warnaserror+ -warn:4 -target:library -out:LauncherDll.Net.dll "$root"/bindings/csharp/*.cs
mcs -warnaserror+ -warn:4 -r:LauncherDll.Net.dll "$here/CallCheck.cs" -out:CallCheck.exe

# The native library has the plain names.
{
  printf '<configuration><dllmap dll="LauncherDll.dll" target="%s">\n' "$library"
  while IFS=$'\t' read -r decorated name _; do
    printf '<dllentry dll="%s" name="%s" target="%s"/>\n' "$library" "$decorated" "$name"
  done <table.txt
  printf '</dllmap></configuration>\n'
} >LauncherDll.Net.dll.config
mono CallCheck.exe
