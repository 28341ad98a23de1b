#!/usr/bin/env python3
"""Compares the list of exports with the public header, and with the results that the tests allow.

Usage: exports_json_test.py exports.json HEADER FRAME_TESTS

For a list that has a wrong signature, or lacks a result that an export can return. Exit status: 0 if
all is well, 1 if not, with a line for each fault.
"""

import json
import pathlib
import re
import subprocess
import sys

RANGES = {"ResultCode": (-2**31, 2**31 - 1), "CipherCode": (0, 2**31 - 1),
          "int32_t": (-2**31, 2**31 - 1), "uint8_t": (0, 255), "uint32_t": (0, 2**32 - 1),
          "uint64_t": (0, 2**64 - 1)}


def span(result):
    """The first and the last number that an explanation is for."""
    return (result["result"],) * 2 if "result" in result else (result["from"], result["to"])


def declarations(header):
    """By name: the return type, the arguments, and the comment before it."""
    pattern = r"/\*((?:(?!\*/).)*)\*/\nQX_API ([\w ]+?) QX_CALL (\w+)\(([^)]*)\);"
    found = {}
    for comment, returns, name, arguments in re.findall(pattern, header, re.S):
        listed = [" ".join(text.split()) for text in arguments.split(",")]
        found[name] = (returns, [] if listed == ["void"] else listed, comment)
    return found


def names_faults(exports):
    if [export["ordinal"] for export in exports] != list(range(1, 61)):
        yield "the ordinals are not 1 to 60"
    decorated = [export["decorated"] for export in exports]
    if decorated != sorted(set(decorated), key=str.encode):
        yield "the decorated names are not in ascending order"
    for export in exports:
        if export["decorated"] != f"_{export['name']}@{4 * len(export['arguments'])}":
            yield f"{export['decorated']} does not fit {export['name']} and its arguments"


def text_faults(export):
    keys = {"ordinal", "name", "decorated", "returns", "arguments", "checks", "effects", "results"}
    if set(export) != keys:
        yield f"its members differ from the list's: {set(export) ^ keys}"
    texts = export["checks"] + export["effects"] + [r["means"] for r in export["results"]]
    if not export["checks"] or not all(text.strip() for text in texts):
        yield "it has no checks, or an empty text"
    if (export["returns"] == "void") != (export["results"] == []):
        yield "it has results and is void, or the reverse"
    taken = []
    for result in export["results"]:
        first, last = span(result)
        low, high = RANGES[export["returns"]]
        if not low <= first <= last <= high:
            yield f"{first} to {last} is no result of its type"
        if any(first <= end and start <= last for start, end, _ in taken):
            yield f"{first} to {last} is explained twice"
        if result["means"] in [means for _, _, means in taken]:
            yield f"{first} to {last} means the same as another result"
        taken.append((first, last, result["means"]))
        if set(result) - {"result", "from", "to", "means", "do", "failure"} or \
                result.get("failure", True) is not True:
            yield f"{first} to {last} has members that nobody reads"
        if "failure" in result and not result["do"].strip():
            yield f"{first} to {last} is a failure without a next step"


def header_faults(export, declared, constants):
    name = export["name"]
    if name not in declared:
        yield "the header does not declare it"
        return
    returns, arguments, comment = declared[name]
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


def list_faults(document, header):
    exports = document["exports"]
    declared = declarations(header)
    constants = {name: int(value) for name, value in
                 re.findall(r"^#define (QX_[A-Z_]+) \(?(-?\d+)\)?", header, re.M)}
    yield from names_faults(exports)
    for name in sorted(set(declared) - {export["name"] for export in exports}):
        yield f"the list lacks {name}"
    if len(declared) != header.count("\nQX_API "):
        yield "the header has declarations that this check cannot read"
    for export in exports:
        for fault in [*text_faults(export), *header_faults(export, declared, constants)]:
            yield f"{export['name']}: {fault}"


def result_faults(exports, frame_tests):
    """The test prints the results that it allows for each export."""
    printed = subprocess.run([frame_tests, "--gtest_filter=FailureWalk.AllowsDocumentedResults"],
                             stdout=subprocess.PIPE, text=True, check=True).stdout
    for name, number in re.findall(r"^allowed: (\w+) (-?\d+)$", printed, re.M):
        spans = [span(result) for result in exports[name]["results"]]
        if spans and not any(first <= int(number) <= last for first, last in spans):
            yield f"{name}: {number} is allowed and not explained"


def main():
    path, header, frame_tests = sys.argv[1:]
    document = json.loads(pathlib.Path(path).read_text(encoding="utf-8"))
    exports = {export["name"]: export for export in document["exports"]}
    sys.exit("\n".join([*list_faults(document, pathlib.Path(header).read_text(encoding="utf-8")),
                        *result_faults(exports, frame_tests)]) or 0)


if __name__ == "__main__":
    main()
