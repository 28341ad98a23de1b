#!/usr/bin/env python3
"""Compares the list of exports with the public header.

Usage: exports_json_test.py exports.json HEADER

Finds a wrong signature, a result that only one of the two names or that the list explains twice, and
a wrong ordinal or decorated name, and a failure without advice. Exit status: 0 if all is well, 1 if
not, with a line for each fault.
"""

import json
import pathlib
import re
import sys


def span(result):
    """The first and the last number that an entry explains."""
    return (result["result"],) * 2 if "result" in result else (result["from"], result["to"])


def declarations(header):
    """By name: the return type, the arguments, and the comment before it."""
    pattern = r"/\*((?:(?!\*/).)*)\*/\nQX_API ([\w ]+?) QX_CALL (\w+)\(([^)]*)\);"
    found = {}
    for comment, returns, name, arguments in re.findall(pattern, header, re.S):
        listed = [" ".join(text.split()) for text in arguments.split(",")]
        found[name] = (returns, [] if listed == ["void"] else listed, comment)
    return found


def result_faults(export):
    results = export["results"]
    next_free = 0 if export["returns"].startswith("uint") else -2**31
    for first, last in sorted(map(span, results)):
        if not next_free <= first <= last:
            yield f"{first} to {last} is no result of its type, or explained twice"
        next_free = last + 1
    for result in results:
        if result.get("failure") and not result["do"].strip():
            yield f"{span(result)[0]} is a failure without a next step"


def header_faults(export, declared, constants):
    returns, arguments, comment = declared[export["name"]]
    if (returns, arguments) != (export["returns"], export["arguments"]):
        yield f"the header declares {returns} ({', '.join(arguments)})"
    for other in re.findall(r"what\s+(?:\*\s+)?(QX_\w+) returns", comment):
        comment += declared[other][2]
    named = {constants[word] for word in re.findall(r"\bQX_[A-Z_]+\b", comment)}
    named |= {int(number) for number in re.findall(r"(?<![\w-])-?\d+\b", comment)}
    single = {r["result"]: r for r in export["results"] if "result" in r}
    for word in set(re.findall(r"\bQX_[A-Z_]+\b", comment)) - {"QX_SUCCEEDED"}:
        if constants[word] not in single:
            yield f"the header names {word}, the list does not"
    for number, result in single.items():
        if (number < 0 or "failure" in result) and number not in named:
            yield f"the list names {number}, the header does not"


def list_faults(exports, header):
    declared = declarations(header)
    constants = {name: int(value) for name, value in
                 re.findall(r"^#define (QX_[A-Z_]+) \(?(-?\d+)\)?", header, re.M)}
    if header.count("\nQX_API ") != len(exports):
        yield "the header declares other exports than the list"
    names = sorted(f"_{export['name']}@{4 * len(export['arguments'])}" for export in exports)
    if [(e["ordinal"], e["decorated"]) for e in exports] != list(enumerate(names, 1)):
        yield "the ordinals do not ascend with the decorated names"
    for export in exports:
        for fault in [*result_faults(export), *header_faults(export, declared, constants)]:
            yield f"{export['name']}: {fault}"


def main():
    document, header = [pathlib.Path(path).read_text(encoding="utf-8") for path in sys.argv[1:]]
    sys.exit("\n".join(list_faults(json.loads(document)["exports"], header)) or 0)


if __name__ == "__main__":
    main()
