#!/usr/bin/env bash
# Makes a website of the documents, with a page for each export: build/site/html/index.html.
#
#   scripts/make_site.sh [--serve]
#
#   --serve   then show it at http://127.0.0.1:8000/ until Ctrl+C; the search needs a server
#
# Needs MkDocs and its theme Material, which scripts/setup.sh site installs. Downloads nothing. Exit
# status: 0 if there was no warning, 1 if there was one, 2 if MkDocs or the theme is missing.
set -euo pipefail

case "$*" in
  '' | --serve) ;;
  --help) sed -n '2,/^set -/{/^set -/d;s/^# \{0,1\}//;p}' "$0"; exit 0 ;;
  *) sed -n '2,/^set -/{/^set -/d;s/^# \{0,1\}//;p}' "$0" >&2; exit 2 ;;
esac
cd "$(dirname "${BASH_SOURCE[0]}")/.."

if ! dpkg-query -W mkdocs mkdocs-material >/dev/null 2>&1; then
  echo 'site: MkDocs or its theme is missing: run scripts/setup.sh site' >&2
  exit 2
fi
rm -rf build/site
scripts/make_site_pages.py build/site
mkdocs build --strict --config-file build/site/mkdocs.yml
echo 'site: build/site/html/index.html'
[ $# -eq 0 ] || exec python3 -m http.server --bind 127.0.0.1 --directory build/site/html 8000
