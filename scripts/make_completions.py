#!/usr/bin/env python3
"""Writes the completions of bfbr and doctor for bash, zsh and fish.

  make_completions.py FOLDER

Each program has a row for each command, and one for the call without a command: what the command
does, its options, and the kind of its other words. A test compares the table with what --help lists.
"""

import pathlib
import shlex
import sys

FILE, FOLDER, TEXT = "file", "folder", "text"  # the kind of an option's value, if not one of a few words

HELP = ("-h --help", None, "print help")
BFBR_ALL = [
    HELP,
    ("--files-from", FILE, "read more names from a file"),
    ("-r --recursive", None, "take the files in folders"),
    ("-j --jobs", TEXT, "files worked on at the same time"),
    ("--json", None, "print one JSON object a line for each file"),
    ("--progress", "auto always never", "when to show the progress"),
    ("-q --quiet", None, "print errors only"),
    ("--force", None, "replace existing files"),
    ("-o --output", FILE, "write to this file"),
]
BFBR_DATA = [
    ("--out-dir", FOLDER, "write each file into this directory"),
    ("--sync", None, "flush each file to the disk before it appears"),
]
BFBR_KEY = [
    ("--key-file", FILE, "the key is all bytes of this file"),
    ("--key-hex", TEXT, "the key in hexadecimal digits"),
]
BFBR_CHECK = BFBR_ALL + BFBR_KEY + [("--marker", "keep require", "the signature marker")]
BFBR_OPEN = BFBR_ALL + BFBR_DATA + BFBR_KEY + [("--marker", "keep require strip", "the signature marker")]
DOCTOR_FILES = [
    HELP,
    ("--library", FILE, "the library's file"),
    ("--config", FILE, "the settings file"),
]
FINDINGS = [
    ("--json", None, "print the findings as one JSON object"),
    ("--verbose", None, "add details for programmers"),
]

PROGRAMS = {
    "bfbr": {
        "": ("", [HELP, ("-V --version", None, "print the version")], None),
        "encode": ("make a container of each file", BFBR_ALL + BFBR_DATA, FILE),
        "decode": ("write a container's payload if its digest is right", BFBR_OPEN, FILE),
        "verify": ("check containers, write no payload", BFBR_CHECK, FILE),
        "inspect": ("show what is known of containers", BFBR_CHECK, FILE),
        "mark": ("put the signature marker before the data", BFBR_ALL + BFBR_DATA, FILE),
    },
    "doctor": {
        "": ("", DOCTOR_FILES + FINDINGS + [("-V --version", None, "print the version")], None),
        "config": ("the settings file alone", [HELP], None),
        "config check": ("show what is wrong with the settings file", DOCTOR_FILES + FINDINGS, None),
        "config repair": ("repair the settings file",
                          DOCTOR_FILES + [("--dry-run", None, "show what would be done")], None),
        "explain": ("show what a result of an export means", [HELP], None),
        "bundle": ("write one text file to send to support", DOCTOR_FILES + [
            ("--yes", None, "do not ask"), ("--force", None, "replace an existing file")], FILE),
    },
}


def next_words(commands, command):
    """The words that can follow a command, each with what it does."""
    depth = len(command.split())
    return [(path.split()[-1], row[0]) for path, row in commands.items()
            if len(path.split()) == depth + 1 and path.split()[:depth] == command.split()]


def patterns(words):
    return " | ".join(f"'{word}'" for word in words)


def for_bash(program, commands):
    values, words, others = [], [], []
    for command, (_, options, rest) in commands.items():
        for names, value, _ in options:
            if value:
                kind = {FILE: "files=-f", FOLDER: "files=-d", TEXT: "return"}.get(value, f"words='{value}'")
                values.append(f"    {patterns(f'{command}:{name}' for name in names.split())}) {kind} ;;")
        names = " ".join(names for names, *_ in options)
        following = " ".join(word for word, _ in next_words(commands, command))
        words.append(f"        '{command}:-'*) words='{names}' ;;")
        others.append(f"        '{command}:'*) words='{following}'{' files=-f' if rest else ''} ;;")
    return f"""# bash completion for {program}

_{program}() {{
  local current=${{COMP_WORDS[COMP_CWORD]}} previous=${{COMP_WORDS[COMP_CWORD-1]}}
  local command='' word words='' files=''
  COMPREPLY=()
  # Bash passes "--option=value" as three words, or as one if "=" is not in COMP_WORDBREAKS.
  if [[ $current == = ]]; then current=''; fi
  if [[ $previous == = ]]; then previous=${{COMP_WORDS[COMP_CWORD-2]}}; fi
  for word in "${{COMP_WORDS[@]:1:COMP_CWORD-1}}"; do
    case "$command${{command:+ }}$word" in
      {patterns(filter(None, commands))}) command+=${{command:+ }}$word ;;
    esac
  done
  case "$command:$previous" in
{chr(10).join(values)}
    *)
      case "$command:$current" in
{chr(10).join(words + others)}
      esac
      ;;
  esac
  mapfile -t COMPREPLY < <(compgen ${{files:+"$files"}} -W "$words" -- "$current")
}}
complete -o filenames -F _{program} {program}
"""


def for_zsh(program, commands):
    cases = []
    for command, (_, options, rest) in commands.items():
        words = []
        for names, value, text in options:
            action = {None: "", FILE: ":file:_files", FOLDER: ":folder:_files -/", TEXT: ":value:"}.get(
                value, f":word:({value})")
            words += [f"({names}){name}[{text}]{action}" for name in names.split()]
        if rest:
            words.append("*:file:_files")
        following = [f"{word}:{text}" for word, text in next_words(commands, command)]
        lines = [f"    '{command}')"]
        if following:
            lines += [f"      following=({' '.join(map(shlex.quote, following))})",
                      "      if (( CURRENT == 2 )); then _describe -t commands command following; fi"]
        lines += ["      _arguments -s " + " \\\n        ".join(map(shlex.quote, words)), "      ;;"]
        cases.append("\n".join(lines))
    return f"""#compdef {program}
# zsh completion for {program}

_{program}() {{
  local command='' word
  local -a taken following
  for word in ${{words[2,CURRENT-1]}}; do
    case "$command${{command:+ }}$word" in
      {patterns(filter(None, commands))}) taken+=($word) command=${{(j: :)taken}} ;;
      *) break ;;
    esac
  done
  # _arguments looks at the words after the command.
  shift $#taken words
  (( CURRENT -= $#taken ))
  case $command in
{chr(10).join(cases)}
  esac
}}

# Runs the completion if zsh has loaded this file for it; otherwise only defines it.
if [[ $zsh_eval_context[-1] == loadautofunc ]]; then _{program} "$@"; else compdef _{program} {program}; fi
"""


def for_fish(program, commands):
    lines = []
    for command, (_, options, rest) in commands.items():
        start = f"complete -c {program} -n \"__{program}_at '{command}'\""
        if not rest:
            lines.append(f"{start} -f")
        lines += [f"{start} -a {word} -d {shlex.quote(text)}" for word, text in next_words(commands, command)]
        for names, value, text in options:
            short = "".join(f" -s {name[1:]}" for name in names.split() if name[1] != "-")
            long = "".join(f" -l {name[2:]}" for name in names.split() if name[1] == "-")
            kind = {None: "", FILE: " -r -F", FOLDER: " -x -a '(__fish_complete_directories)'", TEXT: " -x"}.get(
                value, f" -x -a '{value}'")
            lines.append(f"{start}{short}{long}{kind} -d {shlex.quote(text)}")
    return f"""# fish completion for {program}

# True if the words so far are those of this command.
function __{program}_at
  set -l command ''
  for word in (commandline -opc)[2..]
    set -l longer (string trim "$command $word")
    if contains -- $longer {' '.join(f"'{path}'" for path in commands if path)}
      set command $longer
    end
  end
  test "$command" = "$argv[1]"
end

""" + "\n".join(lines) + "\n"


def main():
    folder = pathlib.Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    for program, commands in PROGRAMS.items():
        (folder / f"{program}.bash").write_text(for_bash(program, commands), encoding="ascii")
        (folder / f"_{program}").write_text(for_zsh(program, commands), encoding="ascii")
        (folder / f"{program}.fish").write_text(for_fish(program, commands), encoding="ascii")


if __name__ == "__main__":
    main()
