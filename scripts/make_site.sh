#!/usr/bin/env bash
# Makes the documents' site, with a page for each export: build/site/html/index.html.
#
#   scripts/make_site.sh [--help]
#
# Needs Doxygen, which scripts/setup.sh site installs. Exit status: 0 if all went without a warning.
set -euo pipefail

[ $# -eq 0 ] || { sed -n '2,/^set -/{/^set -/d;s/^# \{0,1\}//;p}' "$0" >&2; exit 2; }
cd "$(dirname "${BASH_SOURCE[0]}")/.."

if ! command -v doxygen >/dev/null; then
  echo 'site: Doxygen is not installed: run scripts/setup.sh site' >&2
  exit 2
fi
rm -rf build/site
mkdir -p build/site/sources
scripts/make_site_pages.py build/site/sources
LAUNCHER_VERSION=$(sed -n 's/^#define QX_VERSION "\(.*\)"$/\1/p' include/launcher_dll.h)
export LAUNCHER_VERSION
# From there, since a link to a page is taken for one to a file of that name where there is one.
(cd build/site && doxygen ../../docs/Doxyfile)
echo 'site: build/site/html/index.html'
