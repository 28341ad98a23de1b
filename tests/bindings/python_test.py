#!/usr/bin/env python3
"""python_test.py LIBRARY: finds a type or direction that does not fit, an error that raises nothing, a
file that the binding should not load, a lookup that shows."""

import ctypes
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

PACKAGE = pathlib.Path(__file__).resolve().parent.parent.parent / "bindings/python"
sys.path.insert(0, str(PACKAGE))
import launcher_dll  # noqa: E402

LIBRARY = os.path.abspath(sys.argv.pop(1))


class PythonBinding(unittest.TestCase):
    def test_calls_return_or_raise(self):
        library = launcher_dll.Library(LIBRARY)
        key, marker = library.built_in_key(), library.sign(b"")
        bare, signed = library.encode(bytes(3_000_001)), library.encode(library.sign(b"data"))
        cases = [
            (b"7E3A90C2D1F86B45", library.built_in_key),
            ([0, 2, 5, 0], lambda: list(library.system_information().numbers)),
            (marker + b"data", library.decode, signed),
            (b"data", library.decode, bytearray(signed), memoryview(key), "strip"),
            (b"data", library.decode, signed, None, "require"),
            (bytes(3_000_001), library.decode, bare, None, "strip"),
            (True, library.verify, bare),
            (False, library.verify, bare, b"other key"),
            ("file_cipher_decode failed: the sig", library.decode, bare, key, "require"),
            ("marker is", library.decode, bare, None, "drop"),
            ("file_cipher_decode failed: no intact", library.decode, b""),
            ("file_cipher_encode failed: the payload", library.encode, b""),
            *[("memoryview: ", call, value) for value in (5, "text")
              for call in (library.encode, library.sign, library.decode)]]
        for expected, call, *arguments in cases:
            try:
                found = call(*arguments)
            except (launcher_dll.LauncherError, TypeError, ValueError) as error:
                found = str(error)[:len(str(expected))]
            self.assertEqual(found, expected)
        library.built_in_key = lambda: library.text(1)
        self.assertRaisesRegex(launcher_dll.LauncherError, "no such", library.verify, bare)

    def test_declares_the_exports(self):
        for name, (decorated, _, _) in launcher_dll.EXPORTS.items():
            self.assertEqual(decorated, f"_{name}@{launcher_dll.argument_bytes(name)}")
        # As on Windows: only the decorated names exist.
        launcher_dll.Exports({row[0]: lambda: 0 for row in launcher_dll.EXPORTS.values()}, True)
        with launcher_dll.Library(LIBRARY) as library:
            line, value = ctypes.create_string_buffer(b"abc80001a2b"), ctypes.c_uint32()
            self.assertEqual(library.exports.QX_RightDWORD(ctypes.byref(value), line), 0)
            self.assertEqual((value.value, line.value), (0x80001A2B, b"abc"))
        self.assertRaisesRegex(ValueError, "closed", library.sign, b"")

    def test_says_why_it_loads_nothing(self):
        with tempfile.TemporaryDirectory() as folder:
            dll = pathlib.Path(folder, "LauncherDll.dll")
            dll.write_bytes(b"MZ".ljust(60, b"\0") + b"\x40\0\0\0PE\0\0\x4C\x01")
            for file, size, reason in (dll, 8, "has 64 bits"), (dll, 4, "^$"), (LIBRARY, 4, "not a"):
                self.assertRegex(launcher_dll._mismatch(file, True, size), reason)
            self.assertRaisesRegex(OSError, "for Windows", launcher_dll.Library, dll)
            self.assertRaisesRegex(OSError, "LAUNCHER_DLL", launcher_dll.Library, folder)

    def test_the_first_program_leaves_no_trace(self):
        page = (PACKAGE / "README.md").read_text(encoding="utf-8")
        program, printed = re.search(r"```python\n(.*?)```.*?```text\n(.*?)```", page, re.S).groups()
        with tempfile.TemporaryDirectory() as folder:
            shown = subprocess.check_output(
                [sys.executable, "-c", program], cwd=folder, text=True,
                env=dict(os.environ, LAUNCHER_DLL=LIBRARY, PYTHONPATH=str(PACKAGE)))
            self.assertEqual((shown, os.listdir(folder)), (printed, []))


if __name__ == "__main__":
    unittest.main()
