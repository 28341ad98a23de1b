#!/usr/bin/env python3
"""Holds docs/read_container.py against every vector of docs/container-vectors.json.

Usage: reader_test.py DOCS
"""

import json
import pathlib
import sys
import unittest

DOCS = pathlib.Path(sys.argv.pop(1))
sys.path.insert(0, str(DOCS))
from read_container import read  # noqa: E402  pylint: disable=wrong-import-position


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

    def test_it_has_no_more_than_60_lines(self):
        lines = (DOCS / "read_container.py").read_text(encoding="ascii").splitlines()
        self.assertLessEqual(len(lines), 60)


if __name__ == "__main__":
    unittest.main()
