#!/usr/bin/env bash
# Builds the DLL once more, from a copy of the sources in a folder of another name, and compares.
#
#   same_bytes_test.sh ROOT BUILD WORK
#
# BUILD is the build folder, WORK one for the copy. Exit status: 0 if the DLL and what comes with it
# are the same bytes.
set -euo pipefail

root=$1 build=$2 copy="$3/a folder of another name"
rm -rf "$3"
mkdir -p "$copy"
tar -C "$root" --exclude=__pycache__ --exclude=./build --exclude=./.git -cf - . | tar -C "$copy" -xf -
cd "$copy"
cmake --preset windows -DBUILD_TESTING=OFF >/dev/null
cmake --build --preset windows --target LauncherDll microsoft_import_library >/dev/null
for file in bin/LauncherDll.dll bin/LauncherDll.dll.debug lib/libLauncherDll.dll.a lib/LauncherDll.lib; do
  cmp "build/windows/$file" "$build/$file"
done
