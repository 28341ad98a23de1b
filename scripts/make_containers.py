#!/usr/bin/env python3
"""Makes tests/data/containers.txt with the openssl program, so that the known answers do not come
from the library that they test.

Usage: scripts/make_containers.py > tests/data/containers.txt
       scripts/make_containers.py --check tests/data/containers.txt   (exit status 1 if it differs)

A line is: what is special, the key, the payload or "fails", the container; the last three in
hexadecimal digits, "-" for no bytes.
"""

import ctypes
import hashlib
import struct
import subprocess
import sys

BUILT_IN_KEY = b"7E3A90C2D1F86B45"
OTHER_KEY = bytes(range(0xF0, 0x100))
MARKER = b"/* QTRMWO_Kd3Z_HLvN */"


def openssl(*arguments, data):
    done = subprocess.run(["openssl", *arguments], input=data, stdout=subprocess.PIPE, check=True)
    return done.stdout


def turn_words(data):
    """openssl reads a block's halves most significant byte first, the container least."""
    words = struct.unpack(f"<{len(data) // 4}I", data)
    return struct.pack(f">{len(words)}I", *words)


def encipher_by_libcrypto(key, region):
    """For keys of other than 16 bytes, which the program does not take."""
    libcrypto = ctypes.CDLL("libcrypto.so.3")
    subkeys = (ctypes.c_uint32 * 1042)()
    libcrypto.BF_set_key(subkeys, len(key), key)
    enciphered = b""
    for halves in struct.iter_unpack("<2I", region):
        block = (ctypes.c_uint32 * 2)(*halves)
        libcrypto.BF_encrypt(block, subkeys)
        enciphered += struct.pack("<2I", *block)
    return enciphered


def encipher(key, region):
    if len(key) != 16:
        return encipher_by_libcrypto(key, region)
    return turn_words(openssl("enc", "-bf-ecb", "-provider", "legacy", "-provider", "default",
                              "-nopad", "-K", key.hex(), data=turn_words(region)))


def container(key, payload, length=None, filler=b"\0", digest_of=None):
    """A container; with a length, a filler or a digest that does not belong to it where given."""
    digest = openssl("dgst", "-sha256", "-binary", data=payload if digest_of is None else digest_of)
    region = struct.pack("<I", len(payload) if length is None else length) + digest + payload
    region += filler * (-len(region) % 8)
    return b"BFBR" + encipher(key, region)


def pattern(size):
    return hashlib.shake_128(b"payload").digest(size)


def entries():
    for size in (1, 3, 4, 5, 11, 12, 13, 44, 100, 2048):
        payload = pattern(size)
        yield f"size-{size}", BUILT_IN_KEY, payload, container(BUILT_IN_KEY, payload)
    signed = MARKER + pattern(51)
    yield "signed", BUILT_IN_KEY, signed, container(BUILT_IN_KEY, signed)
    yield "marker-alone", BUILT_IN_KEY, MARKER, container(BUILT_IN_KEY, MARKER)
    yield "marker-cut", BUILT_IN_KEY, MARKER[:21], container(BUILT_IN_KEY, MARKER[:21])
    yield "equal-stretches", BUILT_IN_KEY, bytes(40), container(BUILT_IN_KEY, bytes(40))
    yield "empty", BUILT_IN_KEY, b"", container(BUILT_IN_KEY, b"")
    yield "other-key", OTHER_KEY, pattern(77), container(OTHER_KEY, pattern(77))
    yield "filler-not-zero", BUILT_IN_KEY, pattern(5), container(BUILT_IN_KEY, pattern(5),
                                                                 filler=b"\xA5")

    # 100 bytes behind the header: of the lengths around that, only 93 to 100 need so many blocks.
    body = pattern(100)
    for length in (92, 93, 100, 101):
        fits = 93 <= length <= 100
        yield (f"length-{length}-of-100", BUILT_IN_KEY, body[:length] if fits else None,
               container(BUILT_IN_KEY, body, length=length, digest_of=body[:length]))
    # The rounded size of this length wraps round to that of the block.
    yield "length-wraps", BUILT_IN_KEY, None, container(BUILT_IN_KEY, pattern(4), length=0xFFFFFFFD)
    yield "digest-wrong", BUILT_IN_KEY, None, container(BUILT_IN_KEY, body, digest_of=b"other")


def main():
    lines = ["# Made by scripts/make_containers.py: name, key, payload, container."]
    for name, key, payload, block in entries():
        text = "fails" if payload is None else payload.hex() or "-"
        lines.append(f"{name} {key.hex()} {text} {block.hex()}")
    made = "\n".join(lines) + "\n"
    if len(sys.argv) == 3 and sys.argv[1] == "--check":
        with open(sys.argv[2], encoding="ascii") as file:
            sys.exit(0 if file.read() == made else f"{sys.argv[2]} is not what openssl gives")
    sys.stdout.write(made)


if __name__ == "__main__":
    main()
