#!/usr/bin/env python3
"""Makes the bindings' declarations of all exports from src/frame/exports.json.

Usage: scripts/make_bindings.py            write the files below
       scripts/make_bindings.py --check    write nothing; say which of them is stale

    bindings/python/launcher_dll/_exports.py
    bindings/csharp/NativeMethods.cs

Exit status: 0 for success, 1 if a file is stale, 2 for a wrong call.
"""

import json
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
TABLE = "src/frame/exports.json"
HEADER = "include/launcher_dll.h"
PYTHON = "bindings/python/launcher_dll/_exports.py"
CSHARP = "bindings/csharp/NativeMethods.cs"

PYTHON_TYPES = {
    "void": "None",
    "int32_t": "c_int32", "ResultCode": "c_int32", "CipherCode": "c_int32",
    "StringLabel": "c_int32",
    "uint8_t": "c_uint8", "uint32_t": "c_uint32", "uint64_t": "c_uint64",
    # An argument may be bytes, an array, or an address.
    "void*": "c_void_p", "const void*": "c_void_p",
    "uint8_t*": "c_void_p", "const uint8_t*": "c_void_p",
    "char*": "c_char_p", "const char*": "c_char_p",
    "void**": "POINTER(c_void_p)", "char**": "POINTER(c_char_p)",
    "uint32_t*": "POINTER(c_uint32)", "int32_t*": "POINTER(c_int32)",
    "SystemInformation*": "POINTER(SystemInformation)",
}

CSHARP_TYPES = {
    "void": "void",
    "int32_t": "int", "ResultCode": "int", "CipherCode": "int", "StringLabel": "int",
    "uint8_t": "byte", "uint32_t": "uint", "uint64_t": "ulong",
    "const void*": "byte[]", "const uint8_t*": "byte[]",
    "void*": "[In, Out] byte[]", "uint8_t*": "[In, Out] byte[]", "char*": "[In, Out] byte[]",
    "const char*": "string",
    "void**": "out IntPtr", "char**": "out IntPtr",
    "uint32_t*": "out uint", "int32_t*": "out int",
    "SystemInformation*": "out SystemInformation",
}
# Arguments whose type alone does not say how they are used.
CSHARP_EXCEPTIONS = {
    ("QX_Deallocate", "block"): "IntPtr",              # an address that the library gave
    ("QX_UnloadStringFromMemory", "text"): "ref IntPtr",  # read as well
}


class Export:
    def __init__(self, entry):
        self.name, self.decorated = entry["name"], entry["decorated"]
        self.returns = entry["returns"]
        self.arguments = [tuple(text.rsplit(" ", 1)) for text in entry["arguments"]]

    def types(self):
        return [kind for kind, _ in self.arguments]


def read_table():
    return [Export(e) for e in json.loads((ROOT / TABLE).read_text(encoding="utf-8"))["exports"]]


def python_text(exports, version):
    lines = [
        f"# Made by scripts/make_bindings.py from {TABLE}: the types of each export for ctypes.",
        "",
        "from ctypes import (POINTER, Structure, c_char, c_char_p, c_int32, c_uint8, c_uint32,",
        "                    c_uint64, c_void_p)",
        "from typing import Any, Dict, List, Tuple",
        "",
        f'VERSION = "{version}"',
        "",
        "",
        "class SystemInformation(Structure):",
        '    """The record that QX_GetSystemInformation fills: 176 bytes."""',
        "",
        '    _fields_ = [("numbers", c_uint32 * 4), ("buildName", c_char * 32),',
        '                ("vendorName", c_char * 128)]',
        "",
        "",
        "# By name: the name in the DLL, the result's type, the arguments' types.",
        "EXPORTS: Dict[str, Tuple[str, Any, List[Any]]] = {",
    ]
    for export in exports:
        types = ", ".join(PYTHON_TYPES[kind] for kind in export.types())
        lines.append(f'    "{export.name}": (')
        lines.append(f'        "{export.decorated}", {PYTHON_TYPES[export.returns]},')
        if len(types) > 88:
            cut = types.rindex(", ", 0, 80) + 1
            lines += [f"        [{types[:cut]}", f"         {types[cut + 1:]}]),"]
        else:
            lines.append(f"        [{types}]),")
    return "\n".join(lines) + "\n}\n"


def csharp_text(exports):
    lines = [
        f"// Made by scripts/make_bindings.py from {TABLE}.",
        "",
        "using System;",
        "using System.Runtime.InteropServices;",
        "",
        "namespace Launcher",
        "{",
        "    /// <summary>The library's description of itself: 176 bytes.</summary>",
        "    [StructLayout(LayoutKind.Sequential, Pack = 4)]",
        "    public struct SystemInformation",
        "    {",
        "        [MarshalAs(UnmanagedType.ByValArray, SizeConst = 4)]",
        "        public uint[] Numbers;",
        "        [MarshalAs(UnmanagedType.ByValArray, SizeConst = 32)]",
        "        public byte[] BuildName;",
        "        [MarshalAs(UnmanagedType.ByValArray, SizeConst = 128)]",
        "        public byte[] VendorName;",
        "    }",
        "",
        "    /// <summary>The exports; launcher_dll.h describes them. Text arguments are strings, text",
        "    /// results are bytes with a terminator. Null is allowed if C allows it, except for out",
        "    /// arguments.</summary>",
        "    public static class NativeMethods",
        "    {",
        '        private const string Library = "LauncherDll.dll";',
    ]
    for export in exports:
        head = f"        public static extern {CSHARP_TYPES[export.returns]} {export.name}("
        arguments = [f"{CSHARP_EXCEPTIONS.get((export.name, name), CSHARP_TYPES[kind])} {name}"
                     for kind, name in export.arguments]
        has_text = "const char*" in export.types()
        lines += [
            "",
            f'        [DllImport(Library, EntryPoint = "{export.decorated}",',
            "            CallingConvention = CallingConvention.StdCall, ExactSpelling = true"
            + ("," if has_text else ")]"),
        ]
        if has_text:
            # A character that the code page lacks is an error and not a question mark.
            lines.append("            CharSet = CharSet.Ansi, BestFitMapping = false,"
                         " ThrowOnUnmappableChar = true)]")
        whole = head + ", ".join(arguments) + ");"
        if len(whole) <= 100:
            lines.append(whole)
        else:
            lines.append(head)
            lines += [f"            {argument}," for argument in arguments[:-1]]
            lines.append(f"            {arguments[-1]});")
    return "\n".join(lines) + "\n    }\n}\n"


def main():
    if sys.argv[1:] not in ([], ["--check"]):
        print(__doc__, end="")
        sys.exit(0 if sys.argv[1:] == ["--help"] else 2)
    exports = read_table()
    header = (ROOT / HEADER).read_text(encoding="utf-8")
    version = re.search(r'^#define QX_VERSION "(.*)"$', header, re.MULTILINE)[1]
    faults = []
    for name, text in ((PYTHON, python_text(exports, version)), (CSHARP, csharp_text(exports))):
        path = ROOT / name
        if "--check" not in sys.argv:
            path.write_text(text, encoding="utf-8")
        elif not path.exists() or path.read_text(encoding="utf-8") != text:
            faults.append(f"{name} is stale: run scripts/make_bindings.py")
    sys.exit("\n".join(faults) or 0)


if __name__ == "__main__":
    main()
