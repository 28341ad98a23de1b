"""LauncherDll from Python: enciphered containers for a build pipeline, and all exports by ctypes.

    import launcher_dll

    library = launcher_dll.Library()
    container = library.encode(b"some data")
    assert library.decode(container) == b"some data"

LauncherDll.dll needs a 32-bit Python for Windows; on Linux the library is libLauncherDll.so of the
native build.
"""

import ctypes
import os
import pathlib
import struct
import subprocess
import sys
import tempfile

from ._exports import EXPORTS, SystemInformation

__all__ = ["EXPORTS", "Exports", "LauncherError", "Library", "SystemInformation", "argument_bytes"]

_KEY_LABEL = 11000
# Run by a Python of its own, in a folder of its own: a lookup prints a line and reads or makes
# config.json in the current directory, which are the process's and not this package's to change.
_KEY_PROGRAM = """
import sys
sys.path.insert(0, sys.argv[1])
import launcher_dll
with open("key", "wb") as file:
    file.write(launcher_dll.Library(sys.argv[2]).text(int(sys.argv[3])))
"""


class LauncherError(Exception):
    """An export could not do its work: `export` is its name, `result` what it answered."""

    def __init__(self, export, result, reason=""):
        super().__init__(f"{export} answered {result}" + (f": {reason}" if reason else ""))
        self.export = export
        self.result = result


def argument_bytes(name):
    """The bytes that an export's arguments take in the 32-bit DLL: the number behind its at sign."""
    return sum(4 if _is_pointer(kind) else (ctypes.sizeof(kind) + 3) // 4 * 4
               for kind in EXPORTS[name][2])


def _is_pointer(kind):
    return kind in (ctypes.c_void_p, ctypes.c_char_p) or issubclass(kind, ctypes._Pointer)


class Exports:
    """The exports of a loaded library as attributes, with the types of their arguments set."""

    def __init__(self, handle, is_decorated):
        for name, (decorated, result, arguments) in EXPORTS.items():
            function = handle[decorated if is_decorated else name]
            function.restype = result
            function.argtypes = arguments
            setattr(self, name, function)


class Library:
    """A loaded LauncherDll.

    path  the library's file. Without it: the environment variable LAUNCHER_DLL, else the file of the
          usual name beside this package or in the current directory.

    Raises OSError where there is no such file, or one that this Python cannot load.
    `exports` has all exports, `path` where the library came from.
    """

    def __init__(self, path=None):
        is_windows = sys.platform == "win32"
        self.path = _find_library(path, is_windows)
        mismatch = _mismatch(self.path, is_windows, struct.calcsize("P"))
        if mismatch:
            raise OSError(f"{self.path}: {mismatch}")
        loader = ctypes.WinDLL if is_windows else ctypes.CDLL
        self.exports = Exports(loader(str(self.path)), is_windows)
        self._key = None

    def text(self, label):
        """A text of the string table, as bytes. Prints a line to the C standard output, and reads or
        makes config.json in the current directory."""
        text = ctypes.c_char_p()
        self._call("QX_LoadStringToMemory", label, ctypes.byref(text))
        try:
            return text.value
        finally:
            self.exports.QX_UnloadStringFromMemory(ctypes.byref(text))

    def system_information(self):
        """What the library is. Does what two calls of text() do."""
        record = SystemInformation()
        self._call("QX_GetSystemInformation", ctypes.byref(record), ctypes.sizeof(record))
        return record

    def built_in_key(self):
        """The key that encode() uses: the text of label 11000 under the default settings. It is
        looked up once, by a child process in a temporary folder, so that nothing is printed and no
        config.json is made here."""
        if self._key is None:
            with tempfile.TemporaryDirectory() as folder:
                package = pathlib.Path(__file__).resolve().parent.parent
                done = subprocess.run(
                    [sys.executable, "-c", _KEY_PROGRAM, str(package), str(self.path),
                     str(_KEY_LABEL)],
                    cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                    stderr=subprocess.PIPE, check=False)
                key = pathlib.Path(folder, "key")
                if done.returncode != 0 or not key.exists():
                    raise LauncherError("QX_LoadStringToMemory", done.returncode,
                                        done.stderr.decode(errors="replace").strip())
                self._key = key.read_bytes()
        return self._key

    def sign(self, data):
        """The signature marker and then the data: a payload for encode()."""
        data = bytes(data)
        payload = bytearray(self.exports.QX_GetSignatureSize() + len(data))
        if self.exports.QX_SignSignature(_address(payload), len(payload), data, len(data)) != 1:
            raise LauncherError("QX_SignSignature", 0)
        return bytes(payload)

    def encode(self, payload):
        """The container for a payload of 1 byte to 2 GiB, with the built-in key."""
        payload = bytes(payload)
        if len(payload) > 0x7FFFFFFF:  # ctypes would cut the number
            raise LauncherError("file_cipher_encode", 7, "the payload has 2 GiB or more")
        output = bytearray(self.exports.file_cipher_get_encode_size(len(payload)))
        self._call("file_cipher_encode", payload, len(payload), _address(output))
        return bytes(output)

    def decode(self, container, key=None, marker="keep"):
        """The payload of a container of any size.

        key     4 to 56 bytes; without it the built-in key
        marker  what becomes of a signature marker ahead of the payload: "keep", "strip" where there
                is one, or "require", which strips it too

        Raises LauncherError for what is no intact container under that key, and for a marker that
        is required and missing.
        """
        if marker not in ("keep", "strip", "require"):
            raise ValueError(f'marker is "keep", "strip" or "require", not {marker!r}')
        key = self.built_in_key() if key is None else bytes(key)
        block = bytearray(container)
        if len(block) > 0xFFFFFFFF:
            raise LauncherError("file_cipher_decode", 7, "the container has 4 GiB or more")
        size, offset = ctypes.c_uint32(), ctypes.c_uint32()
        prefix = None if marker == "keep" else self.sign(b"")
        result = self.exports.file_cipher_decode(
            _address(block), len(block), key, len(key), ctypes.byref(size), ctypes.byref(offset),
            prefix)
        # The outputs are written if the container is intact, also where the prefix is missing.
        if offset.value == 0:
            raise LauncherError("file_cipher_decode", result, "no intact container under this key")
        if result != 0 and marker == "require":
            raise LauncherError("file_cipher_decode", result, "the signature marker is missing")
        return bytes(memoryview(block)[offset.value:offset.value + size.value])

    def verify(self, container, key=None, marker="keep"):
        """Whether decode() would give a payload."""
        try:
            self.decode(container, key, marker)
        except LauncherError as error:
            if error.export != "file_cipher_decode":
                raise
            return False
        return True

    def _call(self, name, *arguments):
        result = getattr(self.exports, name)(*arguments)
        if result != 0:
            raise LauncherError(name, result)


def _address(block):
    """A bytearray's memory, as an argument: nothing is copied."""
    return (ctypes.c_char * len(block)).from_buffer(block)


def _find_library(path, is_windows):
    name = "LauncherDll.dll" if is_windows else "libLauncherDll.so"
    given = path or os.environ.get("LAUNCHER_DLL")
    tried = [pathlib.Path(given)] if given else [
        pathlib.Path(__file__).resolve().parent / name, pathlib.Path.cwd() / name]
    for file in tried:
        if file.is_file():
            return file.resolve()
    raise FileNotFoundError(
        f"{' and '.join(map(str, tried))}: no such file; give its path to Library, or in the "
        "environment variable LAUNCHER_DLL")


def _mismatch(path, is_windows, pointer_size):
    """Why a Python of that kind cannot load the file, which the system's own message does not tell;
    empty where nothing speaks against it."""
    with open(path, "rb") as file:
        head = file.read(4096)
    is_dll = head[:2] == b"MZ"
    if is_dll and not is_windows:
        return "this is a library for Windows; on Linux it is libLauncherDll.so"
    if not is_dll:
        return "this is no library for Windows" if is_windows else ""
    start = int.from_bytes(head[60:64], "little")
    machine = int.from_bytes(head[start + 4:start + 6], "little")
    if machine == 0x14C and pointer_size != 4:
        return f"a 32-bit library, and this Python has {8 * pointer_size} bits: use a 32-bit Python"
    return ""
