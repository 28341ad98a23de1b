#!/usr/bin/env python3
"""The Python binding with the native library, and as much of its Windows side as needs no Windows.

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
MARKER = b"/* QTRMWO_Kd3Z_HLvN */"


class PythonBinding(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.library = launcher_dll.Library(LIBRARY)

    def test_knows_every_export(self):
        listed = json.loads(pathlib.Path(EXPORT_LIST).read_text(encoding="utf-8"))["exports"]
        self.assertEqual(len(listed), 60)
        self.assertEqual({e["name"]: e["decorated"] for e in listed},
                         {name: row[0] for name, row in launcher_dll.EXPORTS.items()})
        widths = {"void": 0, "uint8_t": 1, "uint64_t": 8}
        for entry in listed:
            name = entry["name"]
            function = getattr(self.library.exports, name)
            self.assertEqual(launcher_dll.argument_bytes(name),
                             int(entry["decorated"].split("@")[1]), name)
            self.assertEqual(ctypes.sizeof(function.restype) if function.restype else 0,
                             widths.get(entry["returns"], 4), name)
        self.assertEqual(ctypes.sizeof(launcher_dll.SystemInformation), 176)

    def test_takes_decorated_names_from_the_dll(self):
        class Dll(dict):  # as a WinDLL is asked
            def __missing__(self, name):
                return self.setdefault(name, mock.Mock())
        dll = Dll()
        exports = launcher_dll.Exports(dll, is_decorated=True)
        self.assertEqual(len(dll), 60)
        self.assertIs(exports.QX_Allocate, dll["_QX_Allocate@8"])
        self.assertEqual(exports.QX_Allocate.argtypes[1], ctypes.c_uint32)

    def test_tells_why_a_library_does_not_load(self):
        with tempfile.TemporaryDirectory() as folder:
            dll = pathlib.Path(folder, "LauncherDll.dll")
            dll.write_bytes(b"MZ".ljust(60, b"\0") + struct.pack("<I", 64) + b"PE\0\0\x4C\x01")
            text = pathlib.Path(folder, "text")
            text.write_bytes(b"no library")
            for file, is_windows, pointer_size, reason in (
                    (dll, True, 8, "this Python has 64 bits"), (dll, True, 4, ""),
                    (dll, False, 8, "for Windows"), (text, True, 4, "no library for Windows"),
                    (pathlib.Path(LIBRARY), False, 8, "")):
                self.assertRegex(launcher_dll._mismatch(file, is_windows, pointer_size),
                                 reason or "^$")
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
                self.assertEqual(self.library.verify(container, key), vector["verdict"] != "invalid")
                if vector["verdict"] == "invalid":
                    with self.assertRaises(LauncherError) as caught:
                        self.library.decode(container, key)
                    self.assertEqual((caught.exception.export, caught.exception.result),
                                     ("file_cipher_decode", 7))
                    continue
                payload = bytes.fromhex(vector["payload"])
                if vector["verdict"] == "valid":
                    payload = vector["prefix"].encode() + payload
                self.assertEqual(self.library.decode(container, key), payload)
                self.assertEqual(self.library.verify(container), key == KEY)
                if vector["encoded"]:
                    self.assertEqual(self.library.encode(payload), container)

    def test_treats_the_marker_as_asked(self):
        signed = self.library.encode(self.library.sign(b"data"))
        bare = self.library.encode(b"data")
        self.assertEqual(self.library.decode(signed), MARKER + b"data")
        self.assertEqual(self.library.decode(bytearray(signed), marker="strip"), b"data")
        self.assertEqual(self.library.decode(bare, marker="strip"), b"data")
        self.assertEqual(self.library.decode(signed, marker="require"), b"data")
        with self.assertRaisesRegex(LauncherError, "marker is missing"):
            self.library.decode(bare, marker="require")
        with self.assertRaises(ValueError):
            self.library.decode(bare, marker="drop")

    def test_has_no_limit_of_a_mebibyte(self):
        payload = os.urandom(3_000_001)
        container = self.library.encode(memoryview(payload))
        self.assertEqual(self.library.decode(container), payload)

    def test_refuses(self):
        container = self.library.encode(b"data")
        for call in (lambda: self.library.encode(b""),
                     lambda: self.library.decode(b"")):
            with self.assertRaises(LauncherError) as caught:
                call()
            self.assertEqual(caught.exception.result, 7)

    # In a process of its own, whose output and folder can be looked at.
    def test_gets_the_key_without_a_trace(self):
        program = (f"import sys; sys.path.insert(0, {str(ROOT / 'bindings/python')!r})\n"
                   "import launcher_dll\n"
                   f"library = launcher_dll.Library({LIBRARY!r})\n"
                   "sys.stderr.write(library.built_in_key().decode())\n")
        with tempfile.TemporaryDirectory() as folder:
            done = subprocess.run([sys.executable, "-c", program], cwd=folder, check=True,
                                  stdout=subprocess.PIPE, stderr=subprocess.PIPE)
            self.assertEqual((done.stdout, done.stderr, os.listdir(folder)), (b"", KEY, []))

            # text() does what the export does.
            program = program.replace("built_in_key()", "text(2001)")
            done = subprocess.run([sys.executable, "-c", program], cwd=folder, check=True,
                                  stdout=subprocess.PIPE, stderr=subprocess.PIPE)
            self.assertIn(b"called with label: 2001\n", done.stdout)
            self.assertEqual((done.stderr, os.listdir(folder)), (b"Forbidden", ["config.json"]))
            failing = program.replace("2001", "1")
            done = subprocess.run([sys.executable, "-c", failing], cwd=folder, check=False,
                                  stdout=subprocess.PIPE, stderr=subprocess.PIPE)
            self.assertIn(b"LauncherError: QX_LoadStringToMemory answered -4", done.stderr)

    def test_reaches_the_other_exports(self):
        exports = self.library.exports
        self.assertEqual(exports.QX_IsFailed(-1005), 1)
        line = ctypes.create_string_buffer(b"abc00001a2b")
        value = ctypes.c_uint32()
        self.assertEqual(exports.QX_RightDWORD(ctypes.byref(value), line), 0)
        self.assertEqual((value.value, line.value), (0x1A2B, b"abc"))
        block = ctypes.c_void_p()
        self.assertEqual(exports.QX_Allocate(ctypes.byref(block), 4), 0)
        self.assertEqual(ctypes.string_at(block, 4), bytes(4))
        self.assertEqual(exports.QX_Deallocate(block), 0)
        self.assertEqual(exports.QX_SteamAPI_GetSteamIDConvertToUint64(), 0)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
