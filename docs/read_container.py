#!/usr/bin/env python3
"""read_container.py CONTAINER [KEY-IN-HEX] writes the payload of a BFBR container to the standard
output. It uses only Python's standard library. container-format.md describes the format."""
import hashlib, struct, sys

BUILT_IN_KEY = b"7E3A90C2D1F86B45"


def pi_words(count):  # the fractional part of pi in 32-bit words, by Machin's formula
    def arctan(x, total=0, n=1, sign=1):
        power = (1 << 32 * count + 64) // x
        while power:
            total, power, n, sign = total + sign * (power // n), power // x**2, n + 2, -sign
        return total
    fraction = 4 * (4 * arctan(5) - arctan(239))
    return [fraction >> 64 + 32 * i & 0xFFFFFFFF for i in reversed(range(count))]


class Blowfish:
    def __init__(self, key):
        words, keys = pi_words(18 + 1024), key * 18
        self.p = [words[i] ^ int.from_bytes(keys[4 * i:4 * i + 4], "big") for i in range(18)]
        self.s = words[18:]
        pair = 0, 0
        for table in (self.p, self.s):
            for i in range(0, len(table), 2):
                table[i:i + 2] = pair = self.crypt(*pair, self.p)

    def crypt(self, left, right, subkeys):
        s = self.s
        for subkey in subkeys[:16]:
            left ^= subkey
            f = (s[left >> 24] + s[256 + (left >> 16 & 255)]) ^ s[512 + (left >> 8 & 255)]
            left, right = right ^ (f + s[768 + (left & 255)] & 0xFFFFFFFF), left
        return right ^ subkeys[17], left ^ subkeys[16]


def read(block, key=BUILT_IN_KEY, prefix=b"", whole_without_prefix=False):
    """Returns the payload after the prefix, or raises ValueError with the check that failed."""
    def test(holds, reason):
        if not holds:
            raise ValueError(reason)
    test(len(block) >= 40, "size")
    test(block[:4] == b"BFBR", "magic")
    test(len(block) % 8 == 4, "size")
    test(4 <= len(key) <= 56, "key")
    cipher = Blowfish(key)
    region = b"".join(struct.pack("<2I", *cipher.crypt(left, right, cipher.p[::-1]))
                      for left, right in struct.iter_unpack("<2I", block[4:]))
    size = int.from_bytes(region[:4], "little")
    test(size <= len(region) - 36 and (size + 43) // 8 * 8 == len(region), "length")
    payload = region[36:36 + size]
    test(hashlib.sha256(payload).digest() == region[4:36], "digest")
    test(payload.startswith(prefix) or whole_without_prefix, "marker")
    return payload[len(prefix) if payload.startswith(prefix) else 0:]


if __name__ == "__main__":
    with open(sys.argv[1], "rb") as file:
        sys.stdout.buffer.write(read(file.read(), *map(bytes.fromhex, sys.argv[2:3])))
