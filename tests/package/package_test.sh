#!/usr/bin/env bash
# Finds a file that is missing from the package, and an import library or a project file that its
# users cannot build with.
#
#   package_test.sh BUILD VERSION WORK [run]
#
# BUILD is the build folder, WORK one for what comes out. With "run" it starts the programs that an
# earlier call has built. Exit status: 0 if all is well.
set -euo pipefail

build=$(realpath "$1") version=$2 work=$(realpath -m "$3")
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)

if [ "${4:-}" = run ]; then
  for program in "$work"/{mingw-w64-i686/consumer,microsoft_style/consumer,as_typed/bin/first}.exe; do
    printf 'package: %s\n' "$program"
    "$root/scripts/wine.sh" "$program"
  done
  exit
fi

rm -rf "$work"
mkdir -p "$work"
cd "$work"
trap '[ "$?" -eq 0 ] || cat "$work/log"' EXIT
cmake --install "$build" --prefix package >log

# The consumer project by find_package.
for toolchain in "$root/cmake/mingw-w64-i686.cmake" "$root/tests/package/microsoft_style.cmake"; do
  folder=$(basename "$toolchain" .cmake)
  cmake -S "$root/tests/package/consumer" -B "$folder" -G Ninja "-DVERSION=$version" \
    "-DCMAKE_TOOLCHAIN_FILE=$toolchain" "-DLauncherDll_DIR=$work/package/lib/cmake/LauncherDll" >log
  cmake --build "$folder" >log
  cp package/bin/LauncherDll.dll "$folder"
done
# By the commands of the package's page, as they are.
cp -r package as_typed
# shellcheck disable=SC2016  # The backquotes are those of Markdown.
(cd as_typed && bash -ec "$(sed -n '/^```sh$/,/^```$/{/^```/d;p}' README.md)")

# One archive holds what was installed, and at least what the package's page lists; the other one the
# symbols.
cpack --config "$build/CPackConfig.cmake" -B "$work/archives" >log
(cd archives && sha256sum --quiet --check ./*.sha256)
name=LauncherDll-$version-windows-x86
python3 -m zipfile -e "archives/$name.zip" .
python3 -m zipfile -e "archives/$name-symbols.zip" symbols
diff <(cd package && find . -name '*.debug' | sort) <(cd "symbols/$name" && find . -type f | sort)
rm package/{bin,steam-stand-in}/*.debug
diff -r package "$name"
cd "$name"
sed -n 's/^| \(`[^-*][^|]*\).*/\1/p' README.md | tr -d '`,' | xargs ls -d steam-stand-in/*.dll >../log
[ "$(grep -c versionInfo LauncherDll.spdx.json)" -gt 4 ]
