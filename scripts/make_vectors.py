#!/usr/bin/env python3
"""Makes docs/container-vectors.json: right and wrong containers, and what each decoder returns; and
tests/data/blowfish_key_vectors.txt: a block for every length of key.

Usage: scripts/make_vectors.py [--check]   (exit status 1 if a file differs)

The containers come from OpenSSL's libcrypto, the expected results from how each container was
made. Nothing here comes from the library or the reader that the vectors test.
"""

import ctypes
import hashlib
import json
import pathlib
import struct
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILT_IN_KEY = b"7E3A90C2D1F86B45"
OTHER_KEY = bytes(range(0xF0, 0x100))
MARKER = b"/* QTRMWO_Kd3Z_HLvN */"
LIBCRYPTO = ctypes.CDLL("libcrypto.so.3")


def sha256(data):
    digest = ctypes.create_string_buffer(32)
    LIBCRYPTO.SHA256(data, ctypes.c_size_t(len(data)), digest)
    return digest.raw


def encipher(key, region):
    """BF_encrypt takes a block's halves as numbers; the container has them little-endian."""
    subkeys = (ctypes.c_uint32 * 1042)()
    LIBCRYPTO.BF_set_key(subkeys, len(key), key)
    enciphered = b""
    for halves in struct.iter_unpack("<2I", region):
        block = (ctypes.c_uint32 * 2)(*halves)
        LIBCRYPTO.BF_encrypt(block, subkeys)
        enciphered += struct.pack("<2I", *block)
    return enciphered


def container(key, payload, length=None, filler=b"\0", digest=None):
    """A container. `length`, `filler` and `digest` replace what would be right."""
    region = struct.pack("<I", len(payload) if length is None else length)
    region += (digest or sha256(payload)) + payload
    region += filler * (-len(region) % 8)
    return b"BFBR" + encipher(key, region)


def pattern(size):
    return hashlib.shake_128(b"payload").digest(size)


def vector(name, why, block, payload=None, reason=None, key=BUILT_IN_KEY, prefix=b""):
    """One vector: with its payload if the container is intact, else with the reason."""
    intact = payload is not None
    starts = intact and payload.startswith(prefix)
    kept = payload[len(prefix) if starts else 0:] if intact else None
    expected = {"result": 0 if starts else 7}
    if intact:
        expected.update(payloadSize=len(kept), payloadOffset=40 + len(payload) - len(kept))
    made = {
        "name": name, "why": why,
        "verdict": "invalid" if not intact else "valid" if starts else "delivered whole",
        "reason": reason if reason or starts else "marker",
        "key": key.hex(), "prefix": prefix.decode(), "container": block.hex(),
        "payload": kept.hex() if intact else None,
        "encoded": bool(payload) and block == container(BUILT_IN_KEY, payload),
        "file_cipher_decode": expected,
    }
    if key == BUILT_IN_KEY:
        for check in (0, 1):
            skipped = 22 if check and intact and payload.startswith(MARKER) else 0
            made[f"QX_Decode, checkMarker {check}"] = (
                {"result": -1005} if not block else
                {"result": 0, "payloadSize": len(payload) - skipped if intact else 0,
                 "payloadOffset": 40 + skipped if intact else 0})
    return made


def vectors():
    signed = MARKER + pattern(51)
    for size, why in ((1, "the smallest that encoding makes"), (3, "one byte of filler"),
                      (4, "no filler"), (5, "seven bytes of filler"), (12, "no filler, two blocks"),
                      (13, "the most filler again"), (44, "several blocks"), (2048, "a launch line's size")):
        yield vector(f"size-{size}", why, container(BUILT_IN_KEY, pattern(size)), pattern(size))
    yield vector("empty", "no payload: decoders take it, encoders do not make it",
                 container(BUILT_IN_KEY, b""), b"")
    yield vector("empty-with-prefix", "no payload cannot begin with the marker",
                 container(BUILT_IN_KEY, b""), b"", prefix=MARKER)
    for filler, size in ((b"\xA5", 5), (b"\xFF", 3)):
        yield vector(f"filler-{filler.hex()}", "nobody looks at the filler",
                     container(BUILT_IN_KEY, pattern(size), filler=filler), pattern(size))
    yield vector("equal-stretches", "equal blocks look equal: there is no chaining",
                 container(BUILT_IN_KEY, bytes(40)), bytes(40))
    yield vector("other-key", "16 bytes that are no text", container(OTHER_KEY, pattern(77)),
                 pattern(77), key=OTHER_KEY)
    for key, why in ((b"abcd", "the shortest key"), (b"12345", "a key of no whole words"),
                     (bytes(range(200, 256)), "the longest key")):
        yield vector(f"key-of-{len(key)}", why, container(key, pattern(9)), pattern(9), key=key)
    whole = container(BUILT_IN_KEY, pattern(20))
    for size in (1, 3, 57):
        yield vector(f"key-of-{size}", "4 to 56 bytes are a key", whole, reason="key",
                     key=b"k" * size)
    yield vector("key-as-digits", "the built-in key is its 16 characters, not 8 bytes of value",
                 container(bytes.fromhex(BUILT_IN_KEY.decode()), pattern(20)), reason="length")
    yield vector("wrong-key", "shows as a wrong length", whole, reason="length", key=OTHER_KEY)

    yield vector("signed", "the marker and data", container(BUILT_IN_KEY, signed), signed,
                 prefix=MARKER)
    yield vector("signed-unasked", "without a prefix the marker is data",
                 container(BUILT_IN_KEY, signed), signed)
    yield vector("marker-alone", "the marker and nothing after it", container(BUILT_IN_KEY, MARKER),
                 MARKER, prefix=MARKER)
    for name, why, payload in (("unsigned", "no marker", pattern(51)),
                               ("marker-cut", "shorter than the marker", MARKER[:21]),
                               ("marker-other", "the marker's last character differs",
                                MARKER[:21] + b"X data")):
        yield vector(name, why, container(BUILT_IN_KEY, payload), payload, prefix=MARKER)
    yield vector("prefix-of-3", "any text can be the prefix", container(BUILT_IN_KEY, b"abcdef"),
                 b"abcdef", prefix=b"abc")

    body = pattern(100)
    for length in (92, 93, 100, 101):
        fits = 93 <= length <= 100
        yield vector(f"length-{length}-of-100", "93 to 100 bytes need as many blocks as are here",
                     container(BUILT_IN_KEY, body, length=length, digest=sha256(body[:length])),
                     body[:length] if fits else None, None if fits else "length")
    for length in (0xFFFFFFFD, 0xFFFFFFFF, 0x80000000):
        yield vector(f"length-{length:x}", "a sum in 32 bits may wrap and must not pass",
                     container(BUILT_IN_KEY, pattern(4), length=length), reason="length")
    yield vector("digest-of-other-data", "the digest is the payload's",
                 container(BUILT_IN_KEY, body, digest=sha256(b"other")), reason="digest")
    yield vector("digest-with-filler", "the digest does not cover the filler",
                 container(BUILT_IN_KEY, pattern(5), digest=sha256(pattern(5) + bytes(7))),
                 reason="digest")
    payload = next(b"%d" % i for i in range(10000) if sha256(b"%d" % i)[0] == 0)
    yield vector("digest-differs-at-its-end", "all 32 bytes count, also after a byte of zero",
                 container(BUILT_IN_KEY, payload, digest=sha256(payload)[:31] + b"\0"),
                 reason="digest")
    yield vector("length-big-endian", "the length is little-endian",
                 container(BUILT_IN_KEY, pattern(4), length=0x04000000), reason="length")
    yield vector("blocks-swapped", "the digest alone notices blocks that change places",
                 whole[:44] + whole[52:60] + whole[44:52], reason="digest")
    for offset, reason in ((4, "length"), (12, "digest"), (39, "digest"), (59, "digest")):
        broken = bytearray(whole)
        broken[offset] ^= 1
        yield vector(f"flipped-{offset}", "a bit of one block makes another block of it",
                     bytes(broken), reason=reason)
    for size in (0, 3, 4, 36, 39, 40, 43, 45, 52):
        yield vector(f"cut-to-{size}", "44 bytes or more, and 4 above a multiple of 8",
                     whole[:size], reason="length" if size == 52 else "size")
    for name, magic in (("magic-in-lower-case", b"bfbr"), ("magic-but-for-a-bit", b"BFBS")):
        yield vector(name, "the magic is BFBR", magic + whole[4:], reason="magic")
    yield vector("plain-text", "no container at all", b"{ \"plain\": \"text\" }" * 5, reason="magic")


def key_vectors():
    """One line for each length of key: key, clear block, cipher block, as in blowfish_vectors.txt."""
    for size in range(4, 57):
        key, block = (hashlib.shake_128(bytes([size, i])).digest(length)
                      for i, length in enumerate((size, 8)))
        halves = struct.unpack("<2I", encipher(key, struct.pack("<2I", *struct.unpack(">2I", block))))
        yield f"{key.hex()} {block.hex()} {struct.pack('>2I', *halves).hex()}\n"


def main():
    files = {"docs/container-vectors.json": json.dumps({"vectors": list(vectors())}, indent=1) + "\n",
             "tests/data/blowfish_key_vectors.txt":
                 "# Made by scripts/make_vectors.py with OpenSSL.\n" + "".join(key_vectors())}
    for name, text in files.items():
        if sys.argv[1:] != ["--check"]:
            (ROOT / name).write_text(text, encoding="ascii")
        elif (ROOT / name).read_text(encoding="ascii") != text:
            sys.exit(f"{name} is out of date: run scripts/make_vectors.py")


if __name__ == "__main__":
    main()
