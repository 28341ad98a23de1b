#!/usr/bin/env python3
"""Prints src/cipher/blowfish_pi.h: the fraction of pi that Blowfish begins with.

Usage: scripts/make_blowfish_pi.py > src/cipher/blowfish_pi.h

The cipher's initial state is the binary fraction of pi, cut into 32-bit words. This program computes
it by Machin's formula, pi = 16 atan(1/5) - 4 atan(1/239), and needs no other source of the table.
"""

WORDS = 18 + 4 * 256
GUARD_BITS = 64


def arctan_of_inverse(x, one):
    """atan(1/x), scaled by `one`, by its Taylor series."""
    power = one // x
    total = power
    divisor = 1
    while power:
        power //= -x * x
        divisor += 2
        total += power // divisor
    return total


def rows(words, indent):
    lines = []
    for start in range(0, len(words), 8):
        lines.append(indent + ", ".join(f"0x{w:08x}" for w in words[start:start + 8]))
    return ",\n".join(lines)


def main():
    bits = 32 * WORDS
    one = 1 << (bits + GUARD_BITS)
    pi = 16 * arctan_of_inverse(5, one) - 4 * arctan_of_inverse(239, one)
    fraction = (pi - 3 * one) >> GUARD_BITS
    words = [fraction >> (bits - 32 * (i + 1)) & 0xFFFFFFFF for i in range(WORDS)]
    boxes = [words[18 + 256 * i:18 + 256 * (i + 1)] for i in range(4)]

    print("// The initial Blowfish state: the fraction of pi in 32-bit words, P first, then S[0] to S[3].")
    print("// Made by scripts/make_blowfish_pi.py; a test compares it with that program's output.")
    print()
    print("#ifndef LAUNCHER_CIPHER_BLOWFISH_PI_H_")
    print("#define LAUNCHER_CIPHER_BLOWFISH_PI_H_")
    print()
    print('#include "cipher/blowfish.h"')
    print()
    print("namespace launcher {")
    print()
    print("// clang-format off")
    print("inline constexpr BlowfishContext kBlowfishPi = {")
    print("    {" + rows(words[:18], "     ").lstrip() + "},")
    print("    {{" + "},\n     {".join(rows(box, "      ").lstrip() for box in boxes) + "}}};")
    print("// clang-format on")
    print()
    print("}  // namespace launcher")
    print()
    print("#endif  // LAUNCHER_CIPHER_BLOWFISH_PI_H_")


if __name__ == "__main__":
    main()
