#!/usr/bin/env python3
"""Holds the file LauncherDll.dll against the list of exports, and looks at its imports and flags.

Usage: image_test.py OBJDUMP LauncherDll.dll exports.list
"""

import re
import subprocess
import sys

SYSTEM_LIBRARIES = {"ADVAPI32.dll", "KERNEL32.dll", "SHELL32.dll", "msvcrt.dll"}
NEEDED_FLAGS = {"DYNAMIC_BASE", "NX_COMPAT"}


def listed_exports(path):
    """The decorated names by ordinal: those that are built, and those that are reserved."""
    built, reserved = {}, {}
    with open(path, encoding="ascii") as file:
        for line in file:
            fields = line.split()
            if not fields or fields[0] == "#":
                continue
            ordinal, name, size = fields[0], fields[-2], fields[-1]
            target = reserved if fields[1] == "-" else built
            target[int(ordinal)] = f"_{name}@{size}"
    return built, reserved


def main():
    objdump, dll, export_list = sys.argv[1:]
    text = subprocess.run([objdump, "-p", dll], stdout=subprocess.PIPE, text=True, check=True).stdout
    faults = []

    def expect(what, found, wanted):
        if found != wanted:
            faults.append(f"{what}: found {found}, wanted {wanted}")

    built, reserved = listed_exports(export_list)
    every = {**built, **reserved}
    expect("the ordinals of the list", sorted(every), list(range(1, 61)))
    expect("the order of the list", [every[i] for i in sorted(every)],
           sorted(every.values(), key=str.encode))

    name_in_file = re.search(r"^Name\s+[0-9a-f]+ (\S+)$", text, re.M)
    expect("the name in the export directory", name_in_file and name_in_file[1], "LauncherDll.dll")
    base = int(re.search(r"^Ordinal Base\s+(\d+)$", text, re.M)[1])
    names = text[text.index("[Ordinal/Name Pointer] Table"):]
    exports = {base + int(i): name for i, name in re.findall(r"^\t\[\s*(\d+)\] (\S+)$", names, re.M)}
    expect("the exports", exports, built)

    imports = set(re.findall(r"DLL Name: (\S+)", text))
    expect("imports beyond the system's libraries", imports - SYSTEM_LIBRARIES, set())
    flags = text[text.index("DllCharacteristics"):text.index("SizeOfStackReserve")]
    expect("flags that are not set", {f for f in NEEDED_FLAGS if f not in flags}, set())

    sys.exit("\n".join(faults) or 0)


if __name__ == "__main__":
    main()
