"""LauncherDll from Python: enciphered containers for a build pipeline, and all exports by ctypes.

    import launcher_dll

    with launcher_dll.Library() as library:
        container = library.encode(b"some data")
        assert library.decode(container) == b"some data"

On Windows the library is LauncherDll.dll, which needs a 32-bit Python; on Linux it is
libLauncherDll.so of the native build.
"""

import _ctypes
import ctypes
import os
import pathlib
import struct
import subprocess
import sys
import tempfile
from typing import Any, Mapping, Optional, Union

from ._exports import EXPORTS, VERSION, SystemInformation

__all__ = ["EXPORTS", "BytesLike", "Exports", "LauncherError", "Library", "SystemInformation",
           "argument_bytes"]
__version__ = VERSION

BytesLike = Union[bytes, bytearray, memoryview]

_KEY_LABEL = 11000
# Runs in a child process in a temporary folder: a lookup prints a line and reads or creates
# config.json in the current directory, which this package must not do to its caller.
_KEY_PROGRAM = """
import sys
sys.path.insert(0, sys.argv[1])
import launcher_dll
with open("key", "wb") as file:
    file.write(launcher_dll.Library(sys.argv[2]).text(int(sys.argv[3])))
"""


class LauncherError(Exception):
    """An export failed: `export` is its name, `result` what it returned."""

    def __init__(self, export: str, result: int, reason: str = "") -> None:
        super().__init__(f"{export} failed: {reason or f'it returned {result}'}")
        self.export = export
        self.result = result


def argument_bytes(name: str) -> int:
    """The size of an export's arguments in the 32-bit DLL: the number after the at sign in its
    decorated name."""
    return sum(4 if _is_pointer(kind) else (ctypes.sizeof(kind) + 3) // 4 * 4
               for kind in EXPORTS[name][2])


def _is_pointer(kind: Any) -> bool:
    return kind in (ctypes.c_void_p, ctypes.c_char_p) or issubclass(kind, ctypes._Pointer)


class Exports:
    """The exports of a loaded library as attributes, with the types of their arguments set."""

    def __init__(self, handle: Any, is_decorated: bool) -> None:
        for name, (decorated, result, arguments) in EXPORTS.items():
            function = handle[decorated if is_decorated else name]
            function.restype = result
            function.argtypes = arguments
            setattr(self, name, function)

    def __getattr__(self, name: str) -> Any:  # declares the attributes to type checkers
        raise AttributeError(f"no such export: {name}")


class Library:
    """A loaded LauncherDll.

    path  the library's file. Without it: the environment variable LAUNCHER_DLL, else the file of the
          usual name beside this package's modules or in the current directory.

    Raises OSError if there is no such file or this Python cannot load it. `path` is the file that
    was loaded. A `with` statement unloads it at its end, as close() does.
    """

    def __init__(self, path: Union[str, "os.PathLike[str]", None] = None) -> None:
        is_windows = sys.platform == "win32"
        self.path = _find_library(path, is_windows)
        mismatch = _mismatch(self.path, is_windows, struct.calcsize("P"))
        if mismatch:
            raise OSError(f"{self.path}: {mismatch}")
        self._library: Any = getattr(ctypes, "WinDLL" if is_windows else "CDLL")(str(self.path))
        self._exports: Optional[Exports] = Exports(self._library, is_windows)
        self._key: Optional[bytes] = None

    def __enter__(self) -> "Library":
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def close(self) -> None:
        """Unloads the library. Every later call raises ValueError, but do not call a function that
        was taken from `exports` before."""
        if self._exports is None:
            return
        self._exports = None
        unload = getattr(_ctypes, "FreeLibrary" if sys.platform == "win32" else "dlclose")
        unload(self._library._handle)

    @property
    def exports(self) -> Exports:
        """All exports, called as in C: they raise nothing."""
        if self._exports is None:
            raise ValueError("the library is closed")
        return self._exports

    def text(self, label: int) -> bytes:
        """A text of the string table. Prints a line to the C standard output, and reads or creates
        config.json in the current directory."""
        text = ctypes.c_char_p()
        self._call("QX_LoadStringToMemory", label, ctypes.byref(text),
                   reasons={-1: "config.json does not load", -4: "no such label"})
        try:
            return text.value or b""
        finally:
            self.exports.QX_UnloadStringFromMemory(ctypes.byref(text))

    def system_information(self) -> SystemInformation:
        """The library's description of itself. Looks up two texts, as text() does."""
        record = SystemInformation()
        self._call("QX_GetSystemInformation", ctypes.byref(record), ctypes.sizeof(record))
        return record

    def built_in_key(self) -> bytes:
        """The key that encode() uses: the text of label 11000. The first call looks it up in a child
        process in a temporary folder, so that nothing is printed and no config.json is created
        here."""
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

    def sign(self, data: BytesLike) -> bytes:
        """The signature marker and then the data: a payload for encode()."""
        data = _to_bytes(data)
        payload = bytearray(self.exports.QX_GetSignatureSize() + len(data))
        if self.exports.QX_SignSignature(_address(payload), len(payload), data, len(data)) != 1:
            raise LauncherError("QX_SignSignature", 0, "it refused the data")
        return bytes(payload)

    def encode(self, payload: BytesLike) -> bytes:
        """The container for a payload of 1 byte to 2 GiB - 1, with the built-in key."""
        payload = _to_bytes(payload)
        if len(payload) > 0x7FFFFFFF:  # ctypes would cut the number
            raise LauncherError("file_cipher_encode", 7, "the payload has 2 GiB or more")
        output = bytearray(self.exports.file_cipher_get_encode_size(len(payload)))
        self._call("file_cipher_encode", payload, len(payload), _address(output),
                   reasons={7: "the system computes no SHA-256 digest" if payload
                            else "the payload is empty"})
        return bytes(output)

    def decode(self, container: BytesLike, key: Optional[BytesLike] = None,
               marker: str = "keep") -> bytes:
        """The payload of a container of any size.

        key     4 to 56 bytes; without it the built-in key
        marker  what to do with a signature marker at the start of the payload: "keep" it, "strip" it
                if it is there, or "require" and strip it

        Raises LauncherError if the container is not intact under that key, or a required marker is
        missing.
        """
        if marker not in ("keep", "strip", "require"):
            raise ValueError(f'marker is "keep", "strip" or "require", not {marker!r}')
        key = self.built_in_key() if key is None else _to_bytes(key)
        block = bytearray(_to_bytes(container))
        if len(block) > 0xFFFFFFFF:
            raise LauncherError("file_cipher_decode", 7, "the container has 4 GiB or more")
        size, offset = ctypes.c_uint32(), ctypes.c_uint32()
        prefix = None if marker == "keep" else self.sign(b"")
        result = self.exports.file_cipher_decode(
            _address(block), len(block), key, len(key), ctypes.byref(size), ctypes.byref(offset),
            prefix)
        # The outputs are written if the container is intact, even if the prefix is missing.
        if offset.value == 0:
            raise LauncherError("file_cipher_decode", result, "no intact container under this key")
        if result != 0 and marker == "require":
            raise LauncherError("file_cipher_decode", result, "the signature marker is missing")
        return bytes(memoryview(block)[offset.value:offset.value + size.value])

    def verify(self, container: BytesLike, key: Optional[BytesLike] = None,
               marker: str = "keep") -> bool:
        """True if decode() would return a payload."""
        try:
            self.decode(container, key, marker)
        except LauncherError as error:
            if error.export != "file_cipher_decode":
                raise
            return False
        return True

    def _call(self, name: str, *arguments: Any, reasons: Mapping[int, str] = {}) -> None:
        result = getattr(self.exports, name)(*arguments)
        if result != 0:
            raise LauncherError(name, result, reasons.get(result, ""))


def _to_bytes(data: BytesLike) -> bytes:
    # Not bytes(data): bytes(5) is five zero bytes.
    return bytes(memoryview(data))


def _address(block: bytearray) -> Any:
    """A bytearray's memory as an argument, without a copy."""
    return (ctypes.c_char * len(block)).from_buffer(block)


def _find_library(path: Union[str, "os.PathLike[str]", None], is_windows: bool) -> pathlib.Path:
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


def _mismatch(path: pathlib.Path, is_windows: bool, pointer_size: int) -> str:
    """The reason why a Python of that kind cannot load the file, or an empty text. The system's own
    message does not say it."""
    with open(path, "rb") as file:
        head = file.read(4096)
    is_dll = head[:2] == b"MZ"
    if is_dll and not is_windows:
        return "this is a library for Windows; on Linux it is libLauncherDll.so"
    if not is_dll:
        return "this is not a library for Windows" if is_windows else ""
    start = int.from_bytes(head[60:64], "little")
    machine = int.from_bytes(head[start + 4:start + 6], "little")
    if machine == 0x14C and pointer_size != 4:
        return f"a 32-bit library, and this Python has {8 * pointer_size} bits: use a 32-bit Python"
    return ""
