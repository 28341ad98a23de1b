#!/usr/bin/env python3
"""bfbr_manual_test.py BFBR DOCTOR COMPLETIONS: completions and bfbr's page have what --help lists, and no more."""

import json
import pathlib
import re
import subprocess
import sys
import unittest

TOOLS = pathlib.Path(__file__).resolve().parents[2] / "tools"
*PROGRAMS, COMPLETIONS = map(pathlib.Path, sys.argv[1:])
# Only this table catches a value that a completion does not know, or that one command has and the next has not.
VALUES = [("bfbr decode --marker", "keep,require,strip"), ("bfbr verify --marker", "keep,require"),
          ("bfbr mark x --progress", "auto,always,never")]
SCRIPTS = {
    "bash": ("--norc", """. "$0/$1.bash"; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); COMPREPLY=()
        $(complete -p $1 | sed 's/.*-F //; s/ .*//'); printf '%s\\n' "${COMPREPLY[@]}\""""),
    # What it asks of zsh's own functions, since those work in a line editor only.
    "zsh": ("-f", """compdef() { }; _arguments() { print -rl -- "$@" }; _describe() { print -rl -- ${(P)4} }
        . "$0/_$1"; words=("$@"); CURRENT=$#; _$1"""),
    "fish": ("--no-config", 'source $argv[1]/$argv[2].fish; complete -C "$argv[2..]"'),
}


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


# The options, commands and words that the shell offers after these.
def completed(shell, *words):
    alone, script = SCRIPTS[shell]
    text = run(shell, alone, "-c", script, COMPLETIONS, *words)
    if shell == "zsh" and words[-2][0] == "-":
        return set(re.search(rf"\){words[-2]}\[.*:\((.*)\)$", text, re.M)[1].split())
    if shell == "zsh":
        return set(re.findall(r"^(?:\(.*?\))?([\w-]+)(?:\[|:)", text, re.M))
    return {line.split("\t")[0] for line in text.splitlines()} - {""}


# Each command with the options and the commands in its help.
def walk(program, *command):
    parts = re.split(r"^(\w+):\n", run(program, *command, "--help").split("Example:")[0], flags=re.M)
    rows = {title: re.findall(r"^  ([-a-z].*?)(?:  |$| [A-Z])", part, re.M)
            for title, part in zip(parts[1::2], parts[2::2])}
    commands = rows.get("Subcommands", [])
    yield command, {word for row in rows["Options"] for word in row.split(",")}, commands
    for word in commands:
        yield from walk(program, *command, word)


class Manual(unittest.TestCase):
    def test_completions_offer_what_help_lists(self):
        for program in PROGRAMS:
            for command, options, commands in walk(program):
                for shell in SCRIPTS:
                    offered = completed(shell, program.name, *command, "-")
                    offered |= completed(shell, program.name, *command, "") if commands else set()
                    self.assertEqual(offered, options | set(commands), (program.name, command, shell))

    def test_completions_know_the_values(self):
        for line, values in VALUES:
            for shell in SCRIPTS:
                self.assertEqual(completed(shell, *line.split(), ""), set(values.split(",")), (shell, line))

    def test_manual_page(self):
        text = (TOOLS / "bfbr/bfbr.1").read_text()
        rows = re.findall(r"^\.It Fl (.*?)(?: Ar \w+)?$", text, re.M)
        (_, options, commands), *others = walk(PROGRAMS[0])
        self.assertEqual({f"-{word}" for row in rows for word in row.split(" , ")},
                         options.union(*(row[1] for row in others)))
        self.assertEqual(re.findall(r"^\.It Cm (\w+)$", text, re.M), commands)
        fields = json.loads(subprocess.run([PROGRAMS[0], "verify", "--json", "/none"], capture_output=True).stdout)
        self.assertEqual(re.findall(r"^\.It Va (\w+)$", text, re.M), list(fields))
        run("mandoc", "-T", "lint", "-W", "warning", *TOOLS.glob("*/*.1"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
