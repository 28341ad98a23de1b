#!/usr/bin/env python3
"""docs_test.py ROOT: finds a broken link, code or output that is no longer true, and a wrong label in
the C++ wrapper. The site's own build finds the rest."""

import json
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(sys.argv.pop(1)).resolve()
NATIVE = ROOT / "build/native"
sys.path.insert(0, str(ROOT / "docs"))
from read_container import read  # noqa: E402


def text_of(name):
    return (ROOT / name).read_text(encoding="utf-8")


def blocks(kind, name):
    return re.findall(rf"^```{kind}\n(.*?)^```", text_of(name), re.S | re.M)


def output_of(script, **variables):
    path = f".:{NATIVE}/bin:{os.environ['PATH']}"
    with tempfile.TemporaryDirectory() as folder:
        return subprocess.check_output(["bash", "-ec", "exec 2>&1\n" + script], cwd=folder, text=True,
                                       env=dict(os.environ, PATH=path, **variables))


class Documents(unittest.TestCase):
    def test_links_lead_somewhere(self):
        # That build reports a missing page, but no missing anchor, and does not read this page.
        for target in re.findall(r"\]\(([^)#:]+)[)#]", text_of("README.md")):
            self.assertTrue((ROOT / target).exists(), target)
        subprocess.run([ROOT / "scripts/make_site.sh"], stdout=subprocess.DEVNULL, check=True)
        pages = {file.name: text_of(file) for file in (ROOT / "build/site/html").glob("*.html")}
        for name, page in pages.items():
            for target, anchor in re.findall(r'href="([\w-]+\.html|)#([^"]+)"', page):
                self.assertIn(f'id="{anchor}"', pages[target or name])

    def test_the_first_program_is_the_example(self):
        code = re.sub(r"^.*?(?=#include)", "", text_of("examples/first/main.c"), flags=re.S)
        for name in ("README.md", "docs/package.md", "docs/index.md"):
            self.assertIn(code, blocks("c", name))

    def test_bfbr_prints_what_is_shown(self):
        shown = blocks("text", "README.md")[0]
        script = "".join(f"printf '$ %s\\n' {shlex.quote(line)}\n{line} || :\n"
                         for line in re.findall(r"^\$ (.*)$", shown, re.M))
        # On a terminal the lines come in this order; here they do not.
        self.assertEqual(sorted(output_of(script).splitlines()), sorted(shown.splitlines()))

    def test_the_guide_runs(self):
        launcher, client = blocks("cpp", "docs/guide.md")
        printed = output_of(f"""
            for name in launcher client; do
              g++ -std=c++17 -x c++ -I{ROOT}/include - -o $name.exe <<<"${{!name}}" \
                -L{NATIVE}/lib -lLauncherDll -Wl,-rpath,{NATIVE}/lib
            done
            launcher.exe && cat client.log""", launcher=launcher, client=client)
        # Here the client has no console of its own: its lookups show in the launcher's output.
        printed = re.sub(r"^.* label: 1100[01]\n", "", printed, flags=re.M)
        self.assertEqual(printed, blocks("text", "docs/guide.md")[0])

    def test_the_wrapper_names_each_label(self):
        labels = re.findall(r"^    k\w+ = (\d+)", text_of("include/launcher_dll.hpp"), re.M)
        self.assertEqual(set(labels), set(re.findall(r"^\d+", text_of("tests/data/texts.txt"), re.M)))

    def test_the_reader_reads_every_vector(self):
        for vector in json.loads(text_of("docs/container-vectors.json"))["vectors"]:
            for whole in (False, True):
                is_read = vector["verdict"] in ("valid", "delivered whole" if whole else "")
                try:
                    found = read(bytes.fromhex(vector["container"]), bytes.fromhex(vector["key"]),
                                 vector["prefix"].encode(), whole).hex()
                except ValueError as error:
                    found = str(error)
                self.assertEqual(found, vector["payload" if is_read else "reason"])


if __name__ == "__main__":
    unittest.main()
