#!/usr/bin/env python3
"""bfbr_manual_test.py PROGRAM: its manual page and completions have what --help lists, and no more."""

import json
import pathlib
import re
import subprocess
import sys
import unittest

TOOLS = pathlib.Path(__file__).resolve().parents[2] / "tools"
COMPLETIONS = TOOLS / "bfbr/completions"
WORDS = {("decode", "--marker"): {"keep", "strip", "require"}, ("verify", "--marker"): {"keep", "require"},
         ("verify", "--progress"): {"auto", "always", "never"}}
SCRIPTS = {
    "bash": """. "$0/bfbr.bash"; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); COMPREPLY=()
        $(complete -p bfbr | sed 's/.*-F //; s/ .*//'); printf '%s\\n' "${COMPREPLY[@]}\"""",
    # What it asks of zsh's own functions, since those work in a line editor only.
    "zsh": """compdef() { }; _arguments() { print -rl -- "$@" }; _describe() { print -rl -- ${(P)4} }
        . "$0/_bfbr"; words=("$@"); CURRENT=$#; _bfbr""",
    "fish": 'source $argv[1]/bfbr.fish; complete -C "$argv[2..]"',
}


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def completed(shell, *words):
    """The options, commands and words that the shell offers behind these."""
    alone = {"bash": "--norc", "zsh": "-f", "fish": "--no-config"}[shell]
    lines = run(shell, alone, "-c", SCRIPTS[shell], COMPLETIONS, "bfbr", *words).splitlines()
    if shell == "zsh":
        for line in lines:
            if line.startswith(f"{words[-2]}[" if len(words) > 2 else " "):
                return set(re.search(r":\((.*)\)$", line)[1].split())
        return {re.sub(r"^(\([^)]*\))?([\w-]+)(\[|:).*", r"\2", line) for line in lines} - {"*:file:_files", "-s"}
    return {line.split("\t")[0] for line in lines}


def told(*command):
    """The options and commands in the help."""
    rows = re.findall(r"^  ([-a-z].*?)(?:  |$| [A-Z])", run(PROGRAM, *command, "--help").split("Example:")[0], re.M)
    return {word for row in rows for word in row.split(",") if word[0] == "-" or not command}


class Manual(unittest.TestCase):
    def test_completions_offer_what_help_lists(self):
        commands = {word for word in told() if word[0] != "-"}
        self.assertIn("decode", commands)
        for shell in SCRIPTS:
            self.assertEqual(completed(shell, "") | completed(shell, "-"), told(), shell)
            for command in commands:
                with self.subTest(shell=shell, command=command):
                    self.assertEqual(completed(shell, command, "-"), told(command))

    def test_completions_know_the_words(self):
        for (command, option), words in WORDS.items():
            for shell in SCRIPTS:
                self.assertEqual(completed(shell, command, option, ""), words, (shell, command))
            refused = subprocess.run([PROGRAM, command, option, "no"], capture_output=True, text=True)
            self.assertEqual(set(re.search("none of (.*?):", refused.stderr)[1].split(", ")), words)

    def test_manual_page_has_what_help_lists_and_json_prints(self):
        text = (TOOLS / "bfbr/bfbr.1").read_text()
        commands = {word for word in told() if word[0] != "-"}
        options = set().union(told(), *map(told, commands))
        rows = re.findall(r"^\.It Fl (.*?)(?: Ar \w+)?$", text, re.M)
        self.assertEqual({f"-{word}" for row in rows for word in row.split(" , ")} | commands, options)
        self.assertEqual(set(re.findall(r"^\.It Cm (\w+)$", text, re.M)), commands)
        fields = json.loads(subprocess.run([PROGRAM, "verify", "--json", "/none"], capture_output=True).stdout)
        self.assertEqual(re.findall(r"^\.It Va (\w+)$", text, re.M), list(fields))

    def test_all_is_well_formed(self):
        for file in COMPLETIONS.iterdir():
            run(file.suffix[1:] or "zsh", "-n", file)
        run("mandoc", "-T", "lint", "-W", "warning", *TOOLS.glob("*/*.1"))


if __name__ == "__main__":
    PROGRAM = str(pathlib.Path(sys.argv.pop()).resolve())
    unittest.main()
