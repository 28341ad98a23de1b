#!/usr/bin/env python3
"""Finds what the Python binding itself can do wrong: a type or a direction that does not fit the
library, an error that becomes no exception, a file that it should not load, a lookup that shows.

Usage: python_test.py LIBRARY exports.json container-vectors.json
"""

import ctypes
import json
import os
import pathlib
import struct
import subprocess
import sys
import tempfile
import unittest
from unittest import mock

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "bindings" / "python"))
import launcher_dll  # noqa: E402
from launcher_dll import LauncherError  # noqa: E402

LIBRARY, EXPORT_LIST, VECTORS = map(os.path.abspath, sys.argv[1:4])
KEY = b"7E3A90C2D1F86B45"


class PythonBinding(unittest.TestCase):
    library = launcher_dll.Library(LIBRARY)

    def test_loads_decorated_names_and_argument_sizes(self):
        for name, (decorated, _, _) in launcher_dll.EXPORTS.items():
            self.assertEqual(decorated, f"_{name}@{launcher_dll.argument_bytes(name)}")
        handle = {row[0]: mock.Mock() for row in launcher_dll.EXPORTS.values()}
        exports = launcher_dll.Exports(handle, is_decorated=True)
        self.assertEqual(exports.QX_Allocate.argtypes[1], ctypes.c_uint32)

    def test_says_why_a_library_does_not_load(self):
        with tempfile.TemporaryDirectory() as folder:
            dll, text = pathlib.Path(folder, "LauncherDll.dll"), pathlib.Path(folder, "text")
            dll.write_bytes(b"MZ".ljust(60, b"\0") + struct.pack("<I", 64) + b"PE\0\0\x4C\x01")
            text.write_bytes(b"no library")
            for file, is_windows, pointer_size, reason in (
                    (dll, True, 8, "this Python has 64 bits"), (dll, True, 4, "^$"),
                    (dll, False, 8, "for Windows"), (text, True, 4, "no library for Windows"),
                    (pathlib.Path(LIBRARY), False, 8, "^$")):
                self.assertRegex(launcher_dll._mismatch(file, is_windows, pointer_size), reason)
            with self.assertRaisesRegex(OSError, "for Windows"):
                launcher_dll.Library(dll)
            with self.assertRaisesRegex(FileNotFoundError, "LAUNCHER_DLL"):
                launcher_dll.Library(pathlib.Path(folder, "none"))
        with mock.patch.dict(os.environ, LAUNCHER_DLL=LIBRARY):
            self.assertEqual(launcher_dll.Library().path, pathlib.Path(LIBRARY).resolve())

    def test_makes_and_reads_known_containers(self):
        for vector in json.loads(pathlib.Path(VECTORS).read_text(encoding="ascii"))["vectors"]:
            with self.subTest(vector["name"]):
                key, container = bytes.fromhex(vector["key"]), bytes.fromhex(vector["container"])
                is_intact = vector["verdict"] != "invalid"
                self.assertEqual(self.library.verify(container, key), is_intact)
                if not is_intact:
                    continue
                self.assertEqual(self.library.verify(container), key == KEY)
                prefix = vector["prefix"].encode() if vector["verdict"] == "valid" else b""
                payload = prefix + bytes.fromhex(vector["payload"])
                self.assertEqual(self.library.decode(container, key), payload)
                if vector["encoded"]:
                    self.assertEqual(self.library.encode(payload), container)

    def test_treats_the_marker_as_asked(self):
        marker = self.library.sign(b"")
        self.assertEqual(len(marker), 22)
        bare = self.library.encode(memoryview(bytes(3_000_001)))
        signed = self.library.encode(self.library.sign(b"data"))
        for container, how, payload in (
                (signed, "keep", marker + b"data"), (signed, "strip", b"data"),
                (bytearray(signed), "require", b"data"), (bare, "strip", bytes(3_000_001))):
            self.assertEqual(self.library.decode(container, marker=how), payload)
        for how, kind, reason in (("require", LauncherError, "decode answered 7: the signature"),
                                  ("drop", ValueError, "drop")):
            with self.assertRaisesRegex(kind, reason):
                self.library.decode(bare, marker=how)
        with self.assertRaisesRegex(LauncherError, "file_cipher_decode answered 7: no intact"):
            self.library.decode(b"")
        with self.assertRaisesRegex(LauncherError, "^file_cipher_encode answered 7$"):
            self.library.encode(b"")

    # In processes of their own, whose output and folder can be looked at.
    def test_gets_the_key_without_a_trace(self):
        for call, status, printed, errors, files in (
                ("built_in_key()", 0, False, KEY, []),
                ("text(2001)", 0, True, b"Forbidden", ["config.json"]),
                ("text(1)", 1, True, b"QX_LoadStringToMemory answered -4", ["config.json"])):
            program = (f"import sys; sys.path.insert(0, {str(ROOT / 'bindings/python')!r})\n"
                       f"import launcher_dll; library = launcher_dll.Library({LIBRARY!r})\n"
                       f"sys.stderr.write(library.{call}.decode())\n")
            with tempfile.TemporaryDirectory() as folder:
                done = subprocess.run([sys.executable, "-c", program], cwd=folder, check=False,
                                      stdout=subprocess.PIPE, stderr=subprocess.PIPE)
                self.assertEqual((done.returncode, os.listdir(folder)), (status, files))
            self.assertIn(errors, done.stderr)
            self.assertEqual(done.stdout != b"", printed)

    def test_passes_each_kind_of_argument(self):
        exports = self.library.exports
        line, value = ctypes.create_string_buffer(b"abc00001a2b"), ctypes.c_uint32()
        self.assertEqual(exports.QX_RightDWORD(ctypes.byref(value), line), 0)
        self.assertEqual((value.value, line.value), (0x1A2B, b"abc"))
        block = ctypes.c_void_p()
        self.assertEqual(exports.QX_Allocate(ctypes.byref(block), 4), 0)
        self.assertEqual(ctypes.string_at(block, 4), bytes(4))
        self.assertEqual(exports.QX_Deallocate(block), 0)
        self.assertEqual(exports.QX_IsFailed(-1005), 1)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
