#!/usr/bin/env python3
"""Holds the list of exports against the public header, or against what the tests see of results.

Usage: exports_json_test.py exports.json HEADER
       exports_json_test.py exports.json --run RECORDER FOLDER PROGRAM... -- PROGRAM [ARGUMENT...]

The second form runs the programs in the new folder FOLDER with the library RECORDER ahead of
LauncherDll, then the one behind "--", which writes down the results that it allows. Each of both
has to be explained in the list, and each export has to be among both. It prints which explanations
neither calls for.

Exit status: 0 if all is well, 1 if not, with a line for each fault.
"""

import json
import os
import pathlib
import re
import shutil
import subprocess
import sys

RANGES = {"ResultCode": (-2**31, 2**31 - 1), "CipherCode": (0, 2**31 - 1),
          "int32_t": (-2**31, 2**31 - 1), "uint8_t": (0, 255), "uint32_t": (0, 2**32 - 1),
          "uint64_t": (0, 2**64 - 1)}


def span(result):
    """The first and the last number that an explanation is for."""
    return (result["result"],) * 2 if "result" in result else (result["from"], result["to"])


def declarations(header):
    """By name: the return type, the arguments, and the comment ahead."""
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
    told = {constants[word] for word in re.findall(r"\bQX_[A-Z_]+\b", comment)}
    told |= {int(number) for number in re.findall(r"(?<![\w-])-?\d+\b", comment)}
    single = {r["result"]: r for r in export["results"] if "result" in r}
    for word in set(re.findall(r"\bQX_[A-Z_]+\b", comment)) - {"QX_SUCCEEDED"}:
        if constants[word] not in single:
            yield f"the header tells of {word}, the list does not"
    for number, result in single.items():
        if (number < 0 or "failure" in result) and number not in told:
            yield f"the list tells of {number}, the header does not"


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


def run(command, folder, record, **variables):
    """Runs a program; answers the (export, result) pairs in its record."""
    done = subprocess.run(command, cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          env={**os.environ, "RECORDED_RESULTS": str(record), **variables},
                          check=False)
    if done.returncode != 0:
        sys.stdout.buffer.write(done.stdout)
        sys.exit(f"{command[0]} failed: {done.returncode}")
    pairs = (line.split() for line in record.read_text(encoding="ascii").splitlines())
    return {(name, int(result)) for name, result in pairs}


def result_faults(document, recorder, folder, *commands):
    folder = pathlib.Path(folder)
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir()
    at = commands.index("--")
    seen = set()
    for program in commands[:at]:
        seen |= run([program], folder, folder / "seen.txt", LD_PRELOAD=recorder)
    allowed = run(list(commands[at + 1:]), folder, folder / "allowed.txt")

    for export in document["exports"]:
        name, results = export["name"], export["results"]
        if export["returns"] == "void":
            continue
        for pairs, what in ((seen, "was seen"), (allowed, "is allowed")):
            numbers = {result for of, result in pairs if of == name}
            if not numbers:
                yield f"{name}: no result {what}"
            for number in sorted(numbers):
                if not any(first <= number <= last for first, last in map(span, results)):
                    yield f"{name}: {number} {what} and not explained"
        for first, last in map(span, results):
            if not any(of == name and first <= number <= last for of, number in seen | allowed):
                print(f"no test meets {name} {first}" + (f" to {last}" if last != first else ""))


def main():
    path, second, *rest = sys.argv[1:]
    document = json.loads(pathlib.Path(path).read_text(encoding="utf-8"))
    if second == "--run":
        faults = result_faults(document, *rest)
    else:
        faults = list_faults(document, pathlib.Path(second).read_text(encoding="utf-8"))
    sys.exit("\n".join(faults) or 0)


if __name__ == "__main__":
    main()
