#!/usr/bin/env bash
# Builds the DLL once more, from a copy of the sources in a folder of another name, and compares.
#
#   same_bytes_test.sh ROOT LauncherDll.dll WORK
#
# WORK is a folder for the copy. Exit status: 0 if both files are the same bytes.
set -euo pipefail

root=$1 dll=$2 copy="$3/a folder of another name"
rm -rf "$3"
mkdir -p "$copy"
tar -C "$root" --exclude=./build --exclude=./.git -cf - . | tar -C "$copy" -xf -
cd "$copy"
cmake --preset windows -DBUILD_TESTING=OFF >/dev/null
cmake --build --preset windows --target LauncherDll >/dev/null
cmp build/windows/bin/LauncherDll.dll "$dll"
