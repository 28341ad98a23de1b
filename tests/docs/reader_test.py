#!/usr/bin/env python3
"""Finds a reader, docs/read_container.py, that disagrees with a vector of
docs/container-vectors.json, and a worked example in docs/container-format.md that is wrong.

Usage: reader_test.py DOCS
"""

import json
import pathlib
import re
import struct
import sys
import unittest

DOCS = pathlib.Path(sys.argv.pop(1))
sys.path.insert(0, str(DOCS))
from read_container import BUILT_IN_KEY, Blowfish, read  # noqa: E402  pylint: disable=wrong-import-position


class Reader(unittest.TestCase):
    def answer(self, vector, whole):
        """The payload in hexadecimal digits, and the reason where there is none."""
        try:
            return read(*(bytes.fromhex(vector[k]) for k in ("container", "key")),
                        vector["prefix"].encode(), whole).hex(), None
        except ValueError as error:
            return None, str(error)

    def test_it_agrees_with_every_vector(self):
        vectors = json.loads((DOCS / "container-vectors.json").read_text(encoding="ascii"))["vectors"]
        self.assertGreaterEqual(len(vectors), 40)
        for vector in vectors:
            with self.subTest(vector["name"]):
                payload, reason, verdict = vector["payload"], vector["reason"], vector["verdict"]
                if verdict == "delivered whole":
                    self.assertEqual(self.answer(vector, False), (None, reason))
                    reason = None
                self.assertEqual(self.answer(vector, True), (payload, reason))

    def test_the_page_works_its_example_out_right(self):
        page = (DOCS / "container-format.md").read_text(encoding="utf-8")
        rows = re.findall(r"^\| \d+ \| `([0-9a-f ]+)` \| (\w{8}) (\w{8}) \| `([0-9a-f ]+)` \|$", page, re.M)
        self.assertEqual(len(rows), 5)
        cipher = Blowfish(BUILT_IN_KEY)
        for plain, left, right, enciphered in rows:
            halves = int(left, 16), int(right, 16)
            self.assertEqual(bytes.fromhex(plain), struct.pack("<2I", *halves))
            self.assertEqual(bytes.fromhex(enciphered), struct.pack("<2I", *cipher.crypt(*halves, cipher.p)))
        self.assertEqual(read(b"BFBR" + b"".join(bytes.fromhex(row[3]) for row in rows)), b"Hi!")
        words = {"P[0]": cipher.p[0], "P[1]": cipher.p[1], "S[0][0]": cipher.s[0], "S[3][255]": cipher.s[-1]}
        self.assertEqual(dict(re.findall(r"([PS]\[[\d\]\[]+) (?:is )?([0-9a-f]{8})", page)),
                         {name: f"{word:08x}" for name, word in words.items()})


if __name__ == "__main__":
    unittest.main()
