#!/usr/bin/env python3
"""Finds a document whose link leads nowhere, whose code does not compile or no longer does what the
page shows, and an export without a page in the site.

Usage: docs_test.py ROOT
"""

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
SITE = ROOT / "build/site/html"
C_FLAGS = ["-fsyntax-only", "-Wall", "-Wextra", "-Werror", f"-I{ROOT}/include"]
COMPILERS = {"c": ["i686-w64-mingw32-gcc", "-std=c99", "-xc"],
             "cpp": ["i686-w64-mingw32-g++", "-std=c++17", "-xc++"]}


def documents():
    names = subprocess.run(["git", "ls-files", "*.md"], cwd=ROOT, stdout=subprocess.PIPE, text=True,
                           check=True).stdout.split()
    return [ROOT / name for name in names]


def anchors(text):
    """The anchors of a page's headings, as the hosts of repositories make them."""
    titles = re.findall(r"^#+ (.*)$", re.sub(r"^```.*?^```", "", text, flags=re.S | re.M), re.M)
    return {re.sub(r"[^\w -]", "", title.lower()).replace(" ", "-") for title in titles}


def blocks():
    for document in documents():
        for kind, code in re.findall(r"^```(\w+)\n(.*?)^```", document.read_text(encoding="utf-8"),
                                     re.S | re.M):
            yield document.relative_to(ROOT), kind, code


class Documents(unittest.TestCase):
    def test_links_lead_somewhere(self):
        for document in documents():
            text = document.read_text(encoding="utf-8")
            for target in re.findall(r"\]\(([^)\s]+)\)", text):
                if "://" in target or document.name == "index.md":
                    continue
                name, _, anchor = target.partition("#")
                file = document.parent / name if name else document
                with self.subTest(f"{document.name}: {target}"):
                    # In the package, the stand-in's page is in another folder.
                    if (document.name, target) != ("package.md", "steam-stand-in/README.md"):
                        self.assertTrue(file.exists())
                        if anchor:
                            self.assertIn(anchor, anchors(file.read_text(encoding="utf-8")))

    def test_code_is_code(self):
        tried = 0
        for document, kind, code in blocks():
            with self.subTest(f"{document}: {code[:60]}"):
                if kind in COMPILERS:
                    done = subprocess.run([*COMPILERS[kind], *C_FLAGS, "-"], input=code, text=True,
                                          stderr=subprocess.PIPE, check=False)
                    self.assertEqual((done.returncode, done.stderr), (0, ""))
                elif kind == "python":
                    compile(code, str(document), "exec")
                else:
                    continue
                tried += 1
        self.assertGreater(tried, 4)

    def test_the_first_program_is_the_example(self):
        first = (ROOT / "examples/first/main.c").read_text(encoding="ascii")
        code = first[first.index("#include"):]
        for name in ("README.md", "docs/package.md", "docs/index.md"):
            self.assertIn(code, (ROOT / name).read_text(encoding="utf-8"))

    def test_bfbr_prints_what_the_first_page_shows(self):
        shown = re.search(r"^```text\n(\$ .*?)^```", (ROOT / "README.md").read_text(encoding="utf-8"), re.S | re.M)[1]
        commands = re.findall(r"^\$ (.*)$", shown, re.M)
        # Prints each line before it runs, as a shell does; "cat" replaces the terminal.
        script = "".join(f"printf '$ %s\\n' {shlex.quote(line)}\n{{ {line}; }} | cat\n" for line in commands)
        environment = dict(os.environ, PATH=f"{ROOT}/build/native/bin:{os.environ['PATH']}")
        with tempfile.TemporaryDirectory() as folder:
            done = subprocess.run(["bash", "-c", "exec 2>&1\n" + script], cwd=folder, env=environment,
                                  stdout=subprocess.PIPE, text=True, check=True)
        # Not in the order of a terminal, which gets each line at once.
        self.assertEqual(sorted(done.stdout.splitlines()), sorted(shown.splitlines()))

    def test_the_wrapper_names_each_label(self):
        wrapper = (ROOT / "include/launcher_dll.hpp").read_text(encoding="ascii")
        wrapper = wrapper[wrapper.index("struct Label"):]
        labels = {int(number): name
                  for name, number in re.findall(r"^ +k(\w+) = (\d+)",
                                             wrapper[:wrapper.index("};")], re.M)}
        texts = (ROOT / "tests/data/texts.txt").read_text(encoding="ascii")
        self.assertEqual(sorted(labels), sorted(map(int, re.findall(r"^\d+", texts, re.M))))
        settings = re.findall(r"\b(\d{4}) ([A-Z]\w+_\w+)",
                              (ROOT / "include/launcher_dll.h").read_text(encoding="ascii"))
        self.assertEqual(len(settings), 8)
        for number, setting in settings:
            self.assertEqual(labels[int(number)].lower(), setting.replace("_", "").lower())

    def test_the_guide_runs(self):
        """Its launcher and client, unchanged, linked with the native library."""
        guide = (ROOT / "docs/guide.md").read_text(encoding="utf-8")
        programs = dict(zip(("launcher", "client"), re.findall(r"^```cpp\n(.*?)^```", guide,
                                                               re.S | re.M)))
        printed = re.search(r"^```text\n(.*?)^```", guide, re.S | re.M)[1]
        library = ROOT / "build/native/lib"
        with tempfile.TemporaryDirectory() as folder:
            for name, code in programs.items():
                (pathlib.Path(folder) / f"{name}.cpp").write_text(code, encoding="ascii")
                subprocess.run(
                    ["g++", "-std=c++17", f"-I{ROOT}/include", f"{name}.cpp", "-o", f"{name}.exe",
                     f"-L{library}", "-lLauncherDll", f"-Wl,-rpath,{library}"],
                    cwd=folder, check=True)
            done = subprocess.run(["sh", "-c", "PATH=.:$PATH ./launcher.exe && cat client.log"],
                                  cwd=folder, stdout=subprocess.PIPE, text=True, check=True)
            # Here the client has no console of its own: its lookups show in the launcher's output.
            shown = re.sub(r"^.* label: 1100[01]\n", "", done.stdout, flags=re.M)
            self.assertEqual(shown, printed)


class Site(unittest.TestCase):
    def test_each_export_has_its_page(self):
        # A link to a page that does not exist is an error when the site is made; an anchor is not.
        subprocess.run([ROOT / "scripts/make_site.sh"], stdout=subprocess.DEVNULL, check=True)
        pages = {file.stem: file.read_text(encoding="utf-8") for file in SITE.glob("*.html")}
        exports = json.loads((ROOT / "src/frame/exports.json").read_text(encoding="utf-8"))["exports"]
        for export in exports:
            self.assertIn(export["decorated"], pages[export["name"]])
        for name, page in pages.items():
            for target, anchor in re.findall(r'href="(functions|results)\.html#([^"]+)"', page):
                self.assertIn(f'id="{anchor}"', pages[target], f"a link of {name}.html")


if __name__ == "__main__":
    unittest.main()
