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
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(cd "$here/../.." && pwd)
programs=(mingw-w64-i686/consumer microsoft_style/consumer as_typed/bin/first)

if [ "${4:-}" = run ]; then
  for program in "${programs[@]}"; do
    printf 'package: %s\n' "$program"
    "$root/scripts/wine.sh" "$work/$program.exe"
  done
  exit
fi

rm -rf "$work"
mkdir -p "$work/archives"
cd "$work"
trap '[ "$?" -eq 0 ] || cat log' EXIT
package="$work/package"
cmake --install "$build" --prefix "$package" >log

# The consumer project by find_package.
for toolchain in "$root/cmake/mingw-w64-i686.cmake" "$here/microsoft_style.cmake"; do
  folder=$(basename "$toolchain" .cmake)
  cmake -S "$here/consumer" -B "$folder" -G Ninja "-DVERSION=$version" \
    "-DCMAKE_TOOLCHAIN_FILE=$toolchain" "-DLauncherDll_DIR=$package/lib/cmake/LauncherDll" >log
  cmake --build "$folder" >log
  cp "$package/bin/LauncherDll.dll" "$folder"
done
# By the commands of the package's page, as they are.
cp -r "$package" as_typed
# shellcheck disable=SC2016  # The backquotes are those of Markdown.
(cd as_typed && bash -ec "$(sed -n '/^```sh$/,/^```$/{/^```/d;p}' README.md)")

# The archives hold what was installed, and the symbols apart.
(cd archives && cpack --config "$build/CPackConfig.cmake" -B "$PWD" >../log &&
  sha256sum --quiet --check ./*.sha256)
python3 - "$package" "archives/LauncherDll-$version-windows-x86" "$version" <<'PYTHON'
import json, pathlib, sys, zipfile

package, archive = pathlib.Path(sys.argv[1]), sys.argv[2]

def names(path):
    top = pathlib.Path(archive).name + "/"  # both unpack into one folder
    with zipfile.ZipFile(path) as file:
        return {n.removeprefix(top): file.read(n) for n in file.namelist() if not n.endswith("/")}

installed = {str(f.relative_to(package)): f.read_bytes() for f in package.rglob("*") if f.is_file()}
library, symbols = names(archive + ".zip"), names(archive + "-symbols.zip")
assert {**library, **symbols} == installed, sorted(installed)
assert all(n.endswith(".debug") for n in symbols) and len(symbols) == 2, sorted(symbols)
wanted = {"bin/LauncherDll.dll", "bin/bfbr.exe", "bin/doctor.exe", "docs/bfbr.md",
          "include/launcher_dll.h", "include/launcher_dll.hpp", "lib/libLauncherDll.dll.a",
          "lib/LauncherDll.lib", "steam-stand-in/steam_api.dll",
          "bindings/python/launcher_dll/_exports.py", "bindings/csharp/NativeMethods.cs",
          "README.md", "CHANGELOG.md", "LICENSE", "THIRD_PARTY_NOTICES.md", "SECURITY.md",
          "LauncherDll.spdx.json", "docs/guide.md", "docs/container-format.md",
          "examples/launcher/main.cpp"}
assert wanted <= set(library), sorted(wanted - set(library))
packages = json.loads(library["LauncherDll.spdx.json"])["packages"]
assert packages[0]["versionInfo"] == sys.argv[3] and len(packages) > 4, packages
PYTHON
