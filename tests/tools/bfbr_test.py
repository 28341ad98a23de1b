#!/usr/bin/env python3
"""bfbr_test.py PROGRAM [--windows]: tests bfbr as its users meet it, as a program; --windows under Wine."""

import hashlib
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
WINDOWS = "--windows" in sys.argv
PROGRAM = [str(ROOT / "scripts/wine.sh")] * WINDOWS + [str(pathlib.Path(sys.argv[1]).resolve())]
SHELL = ["env", f"PATH={pathlib.Path(PROGRAM[-1]).parent}:{os.environ['PATH']}", "bash", "-o", "pipefail", "-c"]
VECTORS = json.loads((ROOT / "docs/container-vectors.json").read_text(encoding="ascii"))["vectors"]
# By name: payload, with the prefix that the vector asks for; container; key.
KNOWN = {v["name"]: ((v["prefix"] if v["verdict"] == "valid" else "").encode() + bytes.fromhex(v["payload"] or ""),
                     bytes.fromhex(v["container"]), bytes.fromhex(v["key"])) for v in VECTORS}
ODD_FILLER = {"filler-a5", "filler-ff", "length-93-of-100"}  # as no encoder makes it
FILES = {"data": KNOWN["size-44"][0], "packed": KNOWN["size-44"][1], "there": b"precious", "brace": b"{\n",
         "signed": KNOWN["signed"][1], "signed-payload": KNOWN["signed"][0], "other": KNOWN["other-key"][1],
         "other-payload": KNOWN["other-key"][0], "key": KNOWN["other-key"][2], "long": b"k" * 56 + b"\n",
         "line": KNOWN["other-key"][2] + b"\n", "list": b"tree/a/same\r\n\ndata",
         "tree/a/same": KNOWN["size-44"][0], "tree/b/same": KNOWN["signed"][0]}
LINKS = "mkdir none; mkfifo tree/p; ln -s there link; ln -s nowhere dangling; ln -s ../there tree; ln -s . tree/loop; "


class Case(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="scratch-", dir=os.getcwd()))
        self.addCleanup(shutil.rmtree, self.folder)

    def put(self, files):
        for name, data in files.items():
            (self.folder / name).parent.mkdir(parents=True, exist_ok=True)
            (self.folder / name).write_bytes(data)

    # What each file holds.
    def files(self):
        return {path.relative_to(self.folder).as_posix(): path.read_bytes()
                for path in self.folder.rglob("*") if path.is_file() and not path.is_symlink()}

    def expect(self, exit_code, *command, **options):
        done = subprocess.run(command, cwd=self.folder, capture_output=True, timeout=1000, **options)
        self.assertEqual(done.returncode, exit_code, (command, done.stderr))
        return done


# What is tried under Wine too, in few runs.
class Everywhere(Case):
    def test_vectors(self):
        payloads = {v["name"]: KNOWN[v["name"]][0] for v in VECTORS if v["encoded"]}
        self.put({f"in/{name}": payload for name, payload in payloads.items()})
        self.expect(0, *PROGRAM, "encode", "-r", "--out-dir", "packed", "in/")
        self.expect(0, *PROGRAM, "decode", "--out-dir", "out", "-r", "packed/in")
        self.assertEqual(self.files(), {f"{folder}/{name}": KNOWN[name][folder == "packed/in"] for name in payloads
                                        for folder in ("in", "packed/in", "out/in")})

    def test_reasons_and_fields(self):
        reasons = {v["name"]: v["reason"] for v in VECTORS if v["key"] == VECTORS[0]["key"] and v["reason"] != "marker"}
        self.put({name: KNOWN[name][1] for name in reasons})
        reasons.update({"absent": "read", "plain-text": "size"})
        rows = [json.loads(row) for row in self.expect(3, *PROGRAM, "inspect", "--json", *reasons).stdout.splitlines()]
        self.assertEqual([(row["file"], row["reason"]) for row in rows], list(reasons.items()))
        for row in filter(lambda row: row["ok"], rows):
            payload, container, _ = KNOWN[row["file"]]
            blocks = [container[i:i + 8] for i in range(4, len(container), 8)]
            self.assertEqual(row, {
                "file": row["file"], "ok": True, "reason": None, "message": None, "containerSize": len(container),
                "payloadSize": len(payload), "marker": payload.startswith(KNOWN["marker-alone"][0]),
                "sha256": hashlib.sha256(payload).hexdigest(), "fillerZero": row["file"] not in ODD_FILLER,
                "repeatedBlocks": len(blocks) - len(set(blocks))})

    def test_bytes_and_existing_files(self):
        data = bytes(range(256)) * 300 + b"\r\n\x1a\n"
        container = self.expect(0, *PROGRAM, "encode", input=data).stdout
        self.assertEqual(self.expect(0, *PROGRAM, "decode", input=container).stdout, data)
        for exit_code, *force in ((0,), (3,), (0, "--force")):
            self.expect(exit_code, *PROGRAM, "encode", "-o", "there", *force, input=data)
            self.assertEqual(self.files(), {"there": container})
        closed_pipe = 'exec 3> >(:); wait $!; "$@" decode there >&3'
        self.assertEqual(self.expect(3, "bash", "-c", closed_pipe, "-", *PROGRAM).stderr, b"")

    @unittest.skipUnless(WINDOWS, "a shell expands them")
    def test_wildcards_from_cmd(self):
        self.put(dict.fromkeys(("data/a.dat", "data/b.dat", "data/c.txt"), b"abc"))
        program = PROGRAM[-1].replace("/", "\\")
        self.expect(0, PROGRAM[0], "cmd", "/c", program, "encode", "--out-dir", "out", "data\\*.dat")
        self.assertEqual(sorted(os.listdir(self.folder / "out")), ["a.dat", "b.dat"])


class Native(Case):
    def test_cases(self):
        # The address sanitizer takes more addresses than a limit leaves.
        pattern = r"^\d(?!.*ulimit -v).*" if b"__asan_init" in pathlib.Path(PROGRAM[0]).read_bytes() else r"^\d.*"
        contents = {**FILES, "packed-key": self.expect(0, *PROGRAM, "encode", input=FILES["key"]).stdout}
        for case in re.findall(pattern, pathlib.Path(__file__).with_name("bfbr_cases.txt").read_text("ascii"), re.M):
            exit_code, line, says, out, makes = (*map(str.strip, case.split("::")), "", "", "")[:5]
            with self.subTest(case=case):
                self.setUp()
                self.put(FILES)
                done = self.expect(int(exit_code), *SHELL, LINKS + line, input=b"")
                self.assertRegex(done.stderr.decode(), says or "^$")
                self.assertNotIn(b"5ec4e7", done.stderr)
                wanted = re.escape(contents[out[1:]]) + rb"\Z" if out[:1] == "=" else out.encode() or b"^$"
                self.assertRegex(done.stdout, wanted)
                made = dict(pair.split("=") for pair in makes.split())
                self.assertEqual(self.files(), {**FILES, **{name: contents[made[name]] for name in made}})

    def test_damage_delivers_nothing(self):
        packed = FILES["packed"]
        self.put({"in/a": packed + bytes(8 << 20)})  # takes longer than those after it
        for size, byte in enumerate(packed):
            self.put({f"in/cut{size:03}": packed[:size],
                      f"in/flip{size:03}": packed[:size] + bytes([byte ^ 1]) + packed[size + 1:]})
        before = self.files()
        done = self.expect(1, *PROGRAM, *"decode -rqj3 --json --out-dir out in".split())
        rows = [json.loads(row) for row in done.stdout.splitlines()]
        self.assertEqual({row["reason"] for row in rows}, {"size", "magic", "length", "digest"})
        self.assertEqual([row["file"] for row in rows], sorted(before))
        self.assertEqual(self.files(), before)

    def test_leaves_whole_files_alone_at_any_moment(self):
        self.put({f"in/{number}": os.urandom(8 << 20) for number in range(6)})
        encode = [*PROGRAM, *"encode -rq --force --out-dir out in".split()]
        self.expect(0, *encode)
        wanted = self.files()
        out = self.folder / "out/in"
        exit_codes = set()
        for number, how in enumerate((signal.SIGKILL, signal.SIGINT, signal.SIGTERM) * 8):
            if number % 2:
                shutil.rmtree(self.folder / "out")
            before = set(out.glob("*"))
            process = subprocess.Popen(encode, cwd=self.folder, stderr=subprocess.DEVNULL)
            # The first of each kind at once, so that load cannot let all of them come too late.
            while process.poll() is None and not set(out.glob("*")) - before:
                time.sleep(0.001)
            time.sleep(number // 3 / 50)
            process.send_signal(how)
            # A signal that comes before the program watches for it ends it as usual.
            self.assertIn(process.wait(timeout=60), (0, 130, -how), how)
            exit_codes.add(process.returncode)
            temporaries = self.files().keys() - wanted.keys()
            self.assertLessEqual(len(temporaries), 2 if how == signal.SIGKILL else 0, temporaries)
            for name in temporaries:
                (self.folder / name).unlink()
            self.assertTrue(self.files().items() <= wanted.items())
            self.assertLessEqual(before, set(out.glob("*")))
        self.assertLessEqual({130, -9}, exit_codes)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2, defaultTest="Everywhere" if WINDOWS else None)
