#!/usr/bin/env python3
"""Holds the file LauncherDll.dll against the list of exports and against what is promised of it.

Usage: image_test.py OBJDUMP LauncherDll.dll exports.json VERSION
"""

import json
import re
import subprocess
import sys
import zlib

SYSTEM_LIBRARIES = {"ADVAPI32.dll", "KERNEL32.dll", "SHELL32.dll", "msvcrt.dll"}
NEEDED_FLAGS = {"DYNAMIC_BASE", "NX_COMPAT"}
LARGEST_SIZE = 700_000


def listed_exports(path):
    """The decorated names by ordinal."""
    with open(path, encoding="utf-8") as file:
        return {export["ordinal"]: export["decorated"] for export in json.load(file)["exports"]}


def version_texts(dll):
    """The texts of the version resource by name."""
    texts = {}
    for name in ("FileDescription", "FileVersion", "OriginalFilename", "ProductVersion"):
        key = (name + "\0").encode("utf-16-le")
        if dll.count(key) == 1:
            value = dll[dll.index(key) + len(key):].decode("utf-16-le", "replace")
            texts[name] = value.lstrip("\0").split("\0")[0]
    return texts


def main():
    objdump, path, export_list, version = sys.argv[1:]
    text = subprocess.run([objdump, "-pht", path], stdout=subprocess.PIPE, text=True,
                          check=True).stdout
    with open(path, "rb") as file:
        dll = file.read()
    with open(path + ".debug", "rb") as file:
        debug = file.read()
    faults = []

    def expect(what, found, wanted):
        if found != wanted:
            faults.append(f"{what}: found {found}, wanted {wanted}")

    listed = listed_exports(export_list)
    expect("the ordinals of the list", list(listed), list(range(1, 61)))
    expect("the order of the list", list(listed.values()),
           sorted(listed.values(), key=str.encode))
    name_in_file = re.search(r"^Name\s+[0-9a-f]+ (\S+)$", text, re.M)
    expect("the name in the export directory", name_in_file and name_in_file[1], "LauncherDll.dll")
    base = int(re.search(r"^Ordinal Base\s+(\d+)$", text, re.M)[1])
    names = text[text.index("[Ordinal/Name Pointer] Table"):]
    exports = {base + int(i): name for i, name in re.findall(r"^\t\[\s*(\d+)\] (\S+)$", names, re.M)}
    expect("the exports", exports, listed)

    imports = set(re.findall(r"DLL Name: (\S+)", text))
    expect("imports beyond the system's libraries", imports - SYSTEM_LIBRARIES, set())
    flags = text[text.index("DllCharacteristics"):text.index("SizeOfStackReserve")]
    expect("flags that are not set", {f for f in NEEDED_FLAGS if f not in flags}, set())
    expect("relocations, without which it has one place only", "HIGHLOW" in text, True)

    expect("the version", version_texts(dll), {
        "FileDescription": "Support library of the game's launcher and client",
        "FileVersion": version, "OriginalFilename": "LauncherDll.dll", "ProductVersion": version})
    expect("symbols in the DLL", "SYMBOL TABLE:\nno symbols" in text, True)
    expect("the symbols' checksum in the DLL",
           b"LauncherDll.dll.debug\0\0\0" + zlib.crc32(debug).to_bytes(4, "little") in dll, True)
    expect("symbols in their file", b"file_removal.cpp" in debug, True)
    expect("a size above what is promised", len(dll) > LARGEST_SIZE, False)

    sys.exit("\n".join(faults) or 0)


if __name__ == "__main__":
    main()
