#!/usr/bin/env bash
# Checks the layout (clang-format) and looks for suspicious code (clang-tidy, cppcheck; shellcheck in
# scripts), by the rules in the root's .clang-format and .clang-tidy.
#
#   scripts/lint.sh [--fix]
#
#   --fix   correct the layout instead of reporting it
#
# Exit status: 0 if nothing was found, 1 if something was, 2 if a tool is missing.
set -euo pipefail

case "${1:-}" in
  '') mode=(--dry-run -Werror) ;;
  --fix) mode=(-i) ;;
  --help)
    sed -n '2,/^set -/{/^set -/d;s/^# \{0,1\}//;p}' "$0"
    exit 0
    ;;
  *)
    sed -n '2,/^set -/{/^set -/d;s/^# \{0,1\}//;p}' "$0" >&2
    exit 2
    ;;
esac
cd "$(dirname "${BASH_SOURCE[0]}")/.."

for tool in clang-format clang-tidy cppcheck shellcheck; do
  if ! command -v "$tool" >/dev/null; then
    printf 'lint: %s is not installed: run scripts/setup.sh build lint\n' "$tool" >&2
    exit 2
  fi
done

git ls-files -z '*.h' '*.hpp' '*.c' '*.cpp' | xargs -0 clang-format "${mode[@]}" || exit 1
git grep -lzE '^#!/.*\b(ba)?sh$' -- scripts tests .ci | xargs -0 -n 4 -P "$(nproc)" shellcheck || exit 1
cppcheck --quiet -j "$(nproc)" --std=c++17 --enable=warning,performance,portability --inline-suppr \
  --error-exitcode=1 -Isrc -Iinclude -I. -Itools src platform steam_stand_in examples tools || exit 1

# The C++ wrapper is checked as a file, since only tests include it. Tests are not checked: clang-tidy
# reports too much in GoogleTest's macros. The combined sources of the tools are the largest files and
# come first; they include .cpp files, which bugprone-suspicious-include would report.
cmake --preset native -DCMAKE_EXPORT_COMPILE_COMMANDS=ON >/dev/null
{
  python3 - <<'PYTHON' || exit 1
import json, os
commands = json.load(open("build/native/compile_commands.json"))
files = sorted({os.path.relpath(command["file"]) for command in commands})
ours = ("src/", "platform/", "steam_stand_in/", "examples/", "tools/")
print(*[file for file in files if "/Unity/" in file],
      *[file for file in files if file.startswith(ours) and file.endswith(".cpp")], sep="\n")
PYTHON
  echo include/launcher_dll.hpp
} | xargs -d '\n' -n 1 -P "$(nproc)" clang-tidy --quiet -p build/native \
  --checks=-bugprone-suspicious-include 2> >(grep -v 'warnings\? generated' >&2) || exit 1
