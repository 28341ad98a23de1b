#!/usr/bin/env python3
"""Tests the binaries of the package as files. Finds an export with a wrong name or ordinal, an import
that not every Windows has, hardening or a version that is missing, and symbols that do not match.

Usage: image_test.py OBJDUMP OLDEST_WINDOWS exports.json VERSION LauncherDll.dll PROGRAM_OR_DLL...
"""

import json
import pathlib
import re
import subprocess
import sys
import zlib

SYSTEM_LIBRARIES = {"ADVAPI32.dll", "KERNEL32.dll", "SHELL32.dll", "bcrypt.dll", "msvcrt.dll"}
# What the other binaries of the package import beyond these.
MORE_LIBRARIES = {"IMAGEHLP.DLL", "LauncherDll.dll", "SHLWAPI.dll", "VERSION.dll", "WINHTTP.dll"}
NEEDED = ("DYNAMIC_BASE", "NX_COMPAT", "NO_SEH", "HIGHLOW")  # the last are relocations
# mov $2, %ecx; int $0x29: only the stack protector calls it.
STACK_PROTECTOR = bytes.fromhex("b902000000cd29")
# A text of the version resource.
VERSION_TEXT = re.compile(r"(File\w+|\w+Version|OriginalFilename)\0+([^\0]+)")
LARGEST_SIZE = 700_000


def dump(objdump, path):
    return subprocess.run([objdump, "-pht", path], stdout=subprocess.PIPE, text=True,
                          check=True).stdout


def main():
    objdump, oldest_windows, export_list, version, path, *others = sys.argv[1:]
    text = dump(objdump, path)
    faults = []

    def expect(what, found, wanted):
        if found != wanted:
            faults.append(f"{what}: found {found}, wanted {wanted}")

    document = json.loads(pathlib.Path(export_list).read_text(encoding="utf-8"))
    listed = {export["ordinal"]: export["decorated"] for export in document["exports"]}
    name_in_file = re.search(r"^Name\s+[0-9a-f]+ (\S+)$", text, re.M)
    expect("the name in the export directory", name_in_file and name_in_file[1], "LauncherDll.dll")
    base = int(re.search(r"^Ordinal Base\s+(\d+)$", text, re.M)[1])
    names = text[text.index("[Ordinal/Name Pointer] Table"):]
    exports = {base + int(i): name for i, name in re.findall(r"^\t\[\s*(\d+)\] (\S+)$", names, re.M)}
    expect("the exports", exports, listed)

    for binary in (path, *others):
        shown, content = dump(objdump, binary), pathlib.Path(binary).read_bytes()
        imports = set(re.findall(r"DLL Name: (\S+)", shown)) - SYSTEM_LIBRARIES
        expect(f"more imports of {binary}", imports - (MORE_LIBRARIES if binary != path else set()),
               set())
        expect(f"what {binary} lacks", [sign for sign in NEEDED if sign not in shown], [])
        expect(f"the stack protector of {binary}", STACK_PROTECTOR in content, True)
        expect(f"the oldest Windows of {binary}", re.findall(r"SubsystemVersion\s+(\d+)", shown),
               oldest_windows.split("."))
        texts = dict(VERSION_TEXT.findall(content.decode("utf-16-le", "replace")))
        expect(f"{binary} has a description", "FileDescription" in texts, True)
        expect(f"the name and version of {binary}",
               [texts.get(name) for name in ("OriginalFilename", "FileVersion", "ProductVersion")],
               [pathlib.Path(binary).name, version, version])
    dll, debug = pathlib.Path(path).read_bytes(), pathlib.Path(path + ".debug").read_bytes()
    expect("symbols in the DLL", "SYMBOL TABLE:\nno symbols" in text, True)
    expect("the symbols' checksum in the DLL",
           b"LauncherDll.dll.debug\0\0\0" + zlib.crc32(debug).to_bytes(4, "little") in dll, True)
    expect("symbols in their file", b"file_removal.cpp" in debug, True)
    expect("a size above what is promised", len(dll) > LARGEST_SIZE, False)

    sys.exit("\n".join(faults) or 0)


if __name__ == "__main__":
    main()
