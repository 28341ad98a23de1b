#!/usr/bin/env python3
"""Tests bfbr as its users meet it: as a program.

  bfbr_test.py PROGRAM [--windows]

PROGRAM is what to test. --windows runs the part that also works under Wine, by scripts/wine.sh.
"""

import hashlib
import json
import os
import pathlib
import pty
import random
import resource
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
COMMANDS = ["encode", "decode", "verify", "inspect", "mark", "bench"]
PROGRAM = []
WINDOWS = False


VECTORS = json.loads((ROOT / "docs/container-vectors.json").read_text(encoding="ascii"))["vectors"]


def payload_of(vector):
    """The whole payload, prefix included; None if decoding fails."""
    if vector["verdict"] == "invalid":
        return None
    prefix = vector["prefix"] if vector["verdict"] == "valid" else ""
    return prefix.encode() + bytes.fromhex(vector["payload"])


# Name: key in hexadecimal, payload, container.
KNOWN = {vector["name"]: (vector["key"], payload_of(vector), bytes.fromhex(vector["container"]))
         for vector in VECTORS}
BUILT_IN = KNOWN["size-1"][0]
ODD_FILLER = {"filler-a5", "filler-ff", "length-93-of-100"}  # as no encoder makes it
MARKER = KNOWN["marker-alone"][1]


class Case(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="scratch-", dir=os.getcwd()))
        self.addCleanup(shutil.rmtree, self.folder)

    def run_tool(self, *arguments, data=b"", **options):
        options.setdefault("stdout", subprocess.PIPE)
        done = subprocess.run([*PROGRAM, *map(str, arguments)], input=data, cwd=self.folder,
                              stderr=subprocess.PIPE, timeout=1000 if WINDOWS else 300, **options)
        done.stderr = done.stderr.decode(errors="replace").replace("\r\n", "\n")
        return done

    def expect(self, exit_code, *arguments, says="", **options):
        """Runs it and returns what it printed; its complaint has to hold `says`."""
        done = self.run_tool(*arguments, **options)
        self.assertEqual(done.returncode, exit_code, (arguments, done.stderr))
        self.assertIn(says, done.stderr)
        if exit_code not in (0, 130):
            self.assertRegex(done.stderr, r"^bfbr: .+: .+", arguments)
        return done.stdout

    def objects(self, exit_code, *arguments, **options):
        out = self.expect(exit_code, *arguments, "--json", **options)
        return [json.loads(line) for line in out.splitlines()]

    def put(self, name, data):
        path = self.folder / name
        path.write_bytes(data)
        return path

    def names(self, folder="."):
        """The names in a folder; none if it does not exist."""
        found = self.folder / folder
        return sorted(entry.name for entry in found.iterdir()) if found.exists() else []

    @staticmethod
    def wait_until(is_so):
        while not is_so():
            time.sleep(0.001)

    @staticmethod
    def catches(pid, number):
        """True if the process has a handler for the signal."""
        status = pathlib.Path(f"/proc/{pid}/status").read_text()
        return int(re.search(r"^SigCgt:\s*(\w+)", status, re.M)[1], 16) >> (number - 1) & 1


class Everywhere(Case):
    """What is tried under Wine too, in few runs."""

    def test_round_trips(self):
        payloads = {vector["name"]: payload_of(vector) for vector in VECTORS if vector["encoded"]}
        for name, payload in payloads.items():
            self.put(name, payload)
        self.expect(0, "encode", "--out-dir", "packed", *payloads)
        for name in payloads:
            self.assertEqual((self.folder / "packed" / name).read_bytes(), KNOWN[name][2], name)
        self.expect(0, "decode", "--out-dir", "opened", *(f"packed/{name}" for name in payloads))
        for name, payload in payloads.items():
            self.assertEqual((self.folder / "opened" / name).read_bytes(), payload, name)
        self.assertEqual(self.names(), sorted([*payloads, "packed", "opened"]))

    def test_pipes_carry_every_byte(self):
        data = bytes(range(256)) * 300 + b"\r\n\x1a\n"
        container = self.expect(0, "encode", data=data)
        self.assertEqual(self.expect(0, "decode", "-", data=container), data)

    def test_tells_which_test_failed(self):
        reasons = {vector["name"]: vector["reason"] for vector in VECTORS
                   if vector["key"] == BUILT_IN and vector["reason"] != "marker"}
        for name in reasons:
            self.put(name, KNOWN[name][2])
        reasons["absent"] = "read"
        reasons["plain-text"] = "size"  # both are wrong, and bfbr tests the size before the magic
        for row in self.objects(3, "inspect", *reasons):
            name = row["file"]
            self.assertEqual((row["ok"], row["reason"]), (not reasons[name], reasons[name]), name)
            if not row["ok"]:
                continue
            payload, container = KNOWN[name][1:]
            blocks = [container[i:i + 8] for i in range(4, len(container), 8)]
            self.assertEqual(row, {
                "file": name, "ok": True, "reason": None, "message": None,
                "containerSize": len(container), "payloadSize": len(payload),
                "marker": payload.startswith(MARKER),
                "sha256": hashlib.sha256(payload).hexdigest(),
                "fillerZero": name not in ODD_FILLER,
                "repeatedBlocks": len(blocks) - len(set(blocks))})

    def test_never_replaces_unasked(self):
        self.put("data", b"abc")
        self.put("there", b"precious")
        self.expect(3, "encode", "data", "-o", "there", says="there: is there already")
        self.assertEqual((self.folder / "there").read_bytes(), b"precious")
        self.expect(0, "encode", "data", "-o", "there", "--force")
        self.assertEqual(self.expect(0, "decode", "there"), b"abc")
        self.assertEqual(self.names(), ["data", "there"])


class Data(Case):
    def test_markers(self):
        marked = self.expect(0, "mark", data=b"data")
        self.assertEqual(marked, MARKER + b"data")
        self.expect(0, "mark", data=marked, says="warning: the data have the marker already")
        packed = self.put("packed", self.expect(0, "encode", data=marked))
        plain = self.put("plain", KNOWN["size-44"][2])
        for how, wanted in (("keep", marked), ("strip", b"data"), ("require", b"data")):
            self.assertEqual(self.expect(0, "decode", f"--marker={how}", packed), wanted)
        self.assertEqual(self.expect(0, "decode", "--marker", "strip", plain), KNOWN["size-44"][1])
        for command in ("decode", "verify"):
            out = self.expect(1, command, "--marker=require", plain, says="marker:")
            self.assertEqual(out, b"")

    def test_keys(self):
        key, payload, container = KNOWN["other-key"]
        packed = self.put("packed", container)
        self.put("key", bytes.fromhex(key))
        self.put("line", b"k" * 56 + b"\n")
        self.assertEqual(self.expect(0, "decode", packed, "--key-file", "key"), payload)
        self.assertEqual(self.expect(0, "decode", packed, "--key-hex", key.upper()), payload)
        secret = "5ec4e700"
        for exit_code, arguments in (
                (1, ["--key-hex", secret]), (2, ["--key-hex", secret[:6]]),
                (2, ["--key-hex", "5ec4e7zz"]), (2, ["--key-hex", secret * 15]),
                (2, ["--key-hexx", secret]), (2, [f"--key={secret}"]),
                (2, ["--key-hex", secret, "--key-hex", secret]), (2, ["--key-file", "line"]),
                (2, ["--key-hex", secret, "--key-file", "key"]),
                (2, ["--key-hex", ""]), (2, ["--key-file", ""]), (3, ["--key-file", "absent"])):
            done = self.run_tool("decode", packed, *arguments)
            self.assertEqual((done.returncode, done.stdout), (exit_code, b""), arguments)
            self.assertNotIn("5ec4e7", done.stderr, arguments)
        self.expect(2, "encode", packed, "--key-hex", secret)

    def test_damage_delivers_nothing(self):
        container = KNOWN["size-44"][2]
        whole = len(container)
        for size in range(whole):
            self.put(f"cut{size}", container[:size])
            self.put(f"flip{size}", container[:size] + bytes([container[size] ^ 1]) +
                     container[size + 1:])
        names = self.names()
        rows = self.objects(1, "decode", "--out-dir", "opened", "-q", *names)
        self.assertEqual({row["reason"] for row in rows}, {"size", "magic", "length", "digest"})
        self.assertEqual([row["file"] for row in rows], names)
        # Changes to the filler's block alone, the last, cannot show beyond the payload's part.
        self.assertEqual(self.names("opened"), [])

    def test_sizes_that_the_format_has_not(self):
        self.expect(1, "encode", says="size: it is empty")
        sparse = self.folder / "sparse"
        for command, size in (("encode", 2**31), ("mark", 2**31 - 22), ("decode", 2**31 + 0x34),
                              ("verify", 2**33)):
            with open(sparse, "wb") as file:
                file.truncate(size)
            self.expect(1, command, sparse, "-o", "out", says="size: more than 2,147,483,")
        self.assertEqual(self.names(), ["sparse"])

    def test_warns_where_the_keyed_decoder_refuses(self):
        for size, warns in ((0xFFFD4, False), (0xFFFD5, True)):
            done = self.run_tool("encode", data=bytes(size))
            self.assertEqual((done.returncode, "QX_Decode" in done.stderr), (0, warns))

    def test_own_output_only(self):
        self.put("config.json", b"{ broken")
        out = self.expect(0, "verify", data=KNOWN["size-1"][2])
        self.assertEqual(out, b"standard input: fine, a payload of 1 bytes without the marker\n")
        self.assertEqual(self.names(), ["config.json"])
        self.assertEqual(self.run_tool("decode", data=KNOWN["size-1"][2]).stderr, "")


class Files(Case):
    def test_what_cannot_be_read_or_written(self):
        self.put("data", b"abc")
        (self.folder / "folder").mkdir()
        self.expect(3, "encode", "absent", says="absent: cannot be opened: No such file")
        self.expect(3, "encode", "folder", says="folder: is a directory")
        self.expect(3, "encode", "data", "-o", "absent/out", says="absent/out: cannot be written")
        self.expect(3, "encode", "data", "-o", "folder", "--force", says="folder: ")
        self.expect(3, "encode", "data", "--out-dir", "data", says="data: cannot be made")
        self.expect(3, "verify", "--files-from", "absent", says="absent: cannot be read")
        self.expect(3, "encode", "data", "-o", "/dev/full", says="No space left")
        with open("/dev/full", "wb") as full:
            for arguments in (["encode", "data"], ["--help"], ["bench", "--seconds", "0.01"]):
                self.expect_full(full, *arguments)
            self.put("packed", KNOWN["size-1"][2])
            self.expect_full(full, "inspect", "packed")
        self.expect(0, "encode", "data", "-o", "/dev/null")
        self.assertEqual(self.names(), ["data", "folder", "packed"])

    def expect_full(self, full, *arguments):
        done = self.run_tool(*arguments, stdout=full)
        self.assertEqual(done.returncode, 3, (arguments, done.stderr))

    def test_leaves_nothing_where_room_runs_out(self):
        self.put("data", os.urandom(300000))
        self.put("there", b"precious")
        limit = lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (100000, 100000))
        for out in ("new", "there"):
            self.expect(3, "encode", "data", "-o", out, "--force", preexec_fn=limit,
                        says=f"{out}: cannot be written")
        self.assertEqual((self.folder / "there").read_bytes(), b"precious")
        self.assertEqual(self.names(), ["data", "there"])

    def test_tells_where_memory_runs_out(self):
        if b"__asan_init" in pathlib.Path(PROGRAM[0]).read_bytes():
            self.skipTest("the address sanitizer takes more addresses than the limit leaves")
        with open(self.folder / "sparse", "wb") as file:
            file.truncate(2**30)
        limit = lambda: resource.setrlimit(resource.RLIMIT_AS, (2**29, 2**29))
        self.expect(4, "encode", "sparse", "-o", "out", "-j1", preexec_fn=limit, says="memory: ")
        self.assertEqual(self.names(), ["sparse"])

    def test_replaces_what_is_meant(self):
        own = self.put("own", b"abc")
        self.expect(3, "encode", "own", "-o", "own", says="own: is there already")
        self.assertEqual(own.read_bytes(), b"abc")
        own.chmod(0o640)
        (self.folder / "link").symlink_to("own")
        (self.folder / "dangling").symlink_to("nowhere")
        self.expect(3, "encode", "own", "-o", "dangling")
        self.expect(0, "encode", "own", "-o", "link", "--force", "--sync")
        self.assertTrue((self.folder / "link").is_symlink())
        self.assertEqual(self.expect(0, "decode", "own"), b"abc")
        self.assertEqual(own.stat().st_mode & 0o777, 0o640)
        report = self.folder / "report"
        self.expect(0, "verify", "own", "-o", report)
        for path, says in (("report", "is there already"), ("absent/report", "cannot be written")):
            done = self.run_tool("verify", "absent", "-o", path)
            self.assertEqual(done.returncode, 3)
            # Told before any work is done.
            self.assertRegex(done.stderr, rf"^bfbr: {path}: .*{says}.*\n$")
        self.assertIn(b"own: fine", report.read_bytes())

    def test_thousands(self):
        names = [f"{number:04}" for number in range(2000)]
        for name in names:
            self.put(name, name.encode() * 50)
        self.put("list", "\n".join(names).encode())
        rows = self.objects(0, "encode", "--files-from", "list", "--out-dir", "packed", "-j2")
        self.assertEqual([row["file"] for row in rows], names)
        packed = "\n".join(f"packed/{name}" for name in names).encode()
        rows = self.objects(0, "verify", "--files-from", "-", "-j2", data=packed)
        self.assertEqual([row["sha256"] for row in rows],
                         [hashlib.sha256(name.encode() * 50).hexdigest() for name in names])

    def test_usage(self):
        for name in ("a", "b"):
            self.put(name, b"abc")
            (self.folder / f"folder{name}").mkdir()
            self.put(f"folder{name}/same", b"abc")
        for arguments in ([], ["absent"], ["encode", "a", "b"], ["encode", "-", "-"],
                          ["encode", "--what"],
                          ["encode", "--out-dir", "out", "foldera/same", "folderb/same"],
                          ["encode", "--out-dir", "out", "-"],
                          ["encode", "-o", "x", "--out-dir", "y", "a"],
                          ["encode", "-j0", "a"], ["decode", "--marker=no", "a"], ["bench", "a"],
                          ["verify", "--marker=strip", "a"],
                          ["verify", "--progress=no", "a"],
                          ["verify", "--files-from", "/dev/null"], ["verify", "--files-from", ""],
                          ["encode", ""], ["encode", "a", "-o", ""],
                          ["encode", "a", "--out-dir", ""], ["verify", "a", "-o", ""]):
            done = self.run_tool(*arguments)
            self.assertEqual((done.returncode, done.stdout), (2, b""), arguments)
            self.assertIn("bfbr", done.stderr)
        self.assertEqual(self.names(), ["a", "b", "foldera", "folderb"])

    def test_a_closed_stream_is_no_file(self):
        self.put("packed", KNOWN["size-1"][2])
        done = self.run_tool("verify", "--json", "absent", "packed", "-o", "report",
                             preexec_fn=lambda: os.close(2))
        self.assertEqual(done.returncode, 3)
        lines = (self.folder / "report").read_text().splitlines()
        self.assertEqual([json.loads(line)["ok"] for line in lines], [False, True])
        for stream in (0, 1):
            done = self.run_tool("decode", *["packed"] * stream,
                                 preexec_fn=lambda which=stream: os.close(which))
            self.assertEqual(done.returncode, 3)
            self.assertIn("Bad file descriptor", done.stderr)

    def test_terminals(self):
        self.put("data", b"abc")
        ours, theirs = pty.openpty()
        self.expect(2, "encode", "data", stdout=theirs, says="insist with -o -")
        self.expect(0, "encode", "data", "-o", "-", stdout=theirs)
        self.assertIn(b"BFBR", os.read(ours, 1000))
        os.close(theirs)
        os.close(ours)

    def test_a_reader_that_goes_away(self):
        reading, writing = os.pipe()
        os.close(reading)
        with open(writing, "wb") as pipe:
            done = self.run_tool("encode", data=b"abc", stdout=pipe)
        self.assertEqual(done.returncode, 3)
        self.assertIn("Broken pipe", done.stderr)


class Interrupts(Case):
    def start(self, *arguments, **options):
        return subprocess.Popen([*PROGRAM, *map(str, arguments)], cwd=self.folder,
                                stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, **options)

    def test_ends_at_any_moment_with_whole_files_alone(self):
        names = [f"in{number}" for number in range(6)]
        for name in names:
            self.put(name, os.urandom(8 << 20))
        begin = time.monotonic()
        self.expect(0, "encode", "-q", "--out-dir", "packed", *names)
        whole = time.monotonic() - begin
        wanted = {name: (self.folder / "packed" / name).read_bytes() for name in names}
        chance = random.Random(7)
        exit_codes = set()
        for number in range(24):
            how = (signal.SIGKILL, signal.SIGINT, signal.SIGTERM)[number % 3]
            before = {}
            if number % 2:
                shutil.rmtree(self.folder / "packed")
            else:
                before = {name: (self.folder / "packed" / name).read_bytes()
                          for name in self.names("packed") if name in wanted}
            process = self.start("encode", "-q", "--force", "--out-dir", "packed", *names)
            # The first of each kind at once, so that load cannot let all of them come too late.
            self.wait_until(lambda: process.poll() is not None or set(self.names("packed")) -
                            set(before))
            time.sleep(chance.uniform(0, whole / 2) if number > 2 else 0)
            process.send_signal(how)
            process.communicate(timeout=60)
            # A signal that comes before the program watches for it ends it as usual.
            self.assertIn(process.returncode, (0, 130, -how), how)
            exit_codes.add(process.returncode)
            (self.folder / "packed").mkdir(exist_ok=True)
            left = self.names("packed")
            temporaries = [name for name in left if name not in wanted]
            self.assertLessEqual(len(temporaries), 2 if how == signal.SIGKILL else 0, left)
            for name in temporaries:
                (self.folder / "packed" / name).unlink()
            for name in left:
                if name in wanted:
                    self.assertTrue((self.folder / "packed" / name).read_bytes() == wanted[name])
            self.assertLessEqual(set(before), set(left))
        self.assertLessEqual({130, -9}, exit_codes)

    def test_ends_while_it_waits(self):
        process = self.start("encode", "-o", "out", stdin=subprocess.PIPE)
        process.stdin.write(b"abc")
        process.stdin.flush()
        self.wait_until(lambda: process.poll() is not None or
                        self.catches(process.pid, signal.SIGINT))
        process.send_signal(signal.SIGINT)
        process.wait(timeout=60)
        self.assertEqual(process.returncode, 130)
        self.assertIn(b"interrupted", process.stderr.read())
        process.stdin.close()
        process.stderr.close()
        self.assertEqual(self.names(), [])

    def test_the_progress_opens_no_pipe(self):
        with open(self.folder / "slow", "wb") as file:
            file.truncate(2**27)
        fifo = self.folder / "fifo"
        os.mkfifo(fifo)
        written = []
        writer = threading.Thread(daemon=True, target=lambda: written.append(
            fifo.write_bytes(KNOWN["size-1"][2] + bytes(1 << 20))))
        writer.start()
        process = self.start("verify", "--progress=always", "-j1", "slow", "fifo")
        try:
            error = process.communicate(timeout=60)[1]
        finally:
            process.kill()
        writer.join(10)
        self.assertEqual((process.returncode, len(written)), (1, 1), error)
        self.assertIn(b"fifo: length field", error)

    def test_shows_progress_from_one_second_on(self):
        for how, shows in (("always", True), ("auto", False)):
            process = self.start("verify", f"--progress={how}", "-", stdin=subprocess.PIPE)
            process.stdin.write(KNOWN["size-1"][2])
            process.stdin.flush()
            error = b""
            if shows:
                while b"MB/s" not in error and (piece := process.stderr.read1()):
                    error += piece
            else:
                time.sleep(1.3)
            error += process.communicate()[1]
            self.assertEqual((process.returncode, b"MB/s" in error), (0, shows), error)


class Figures(Case):
    def test_tells_its_version_and_an_example_of_each_command(self):
        self.assertIn(b"--version", self.expect(0, "--help"))
        self.assertRegex(self.expect(0, "--version"), rb"^bfbr \d+\.\d+\.\d+\n$")
        for command in COMMANDS:
            text = self.expect(0, command, "--help").decode()
            self.assertIn(f"bfbr {command}", text.split("Example:")[1])

    def test_bench(self):
        rows = self.objects(0, "bench", "--seconds", "0.01")
        self.assertEqual(len(rows), 5)
        for row in rows:
            self.assertGreater(min(row["encodeRate"], row["decodeRate"]), 0)

    def test_timing_adds_up(self):
        self.put("data", bytes(1 << 20))
        error = self.run_tool("encode", "data", "--timing").stderr
        self.assertAlmostEqual(sum(map(float, re.findall(r"([\d.]+) %", error))), 100, delta=0.5)


if __name__ == "__main__":
    WINDOWS = "--windows" in sys.argv
    PROGRAM = [str(pathlib.Path(sys.argv[1]).resolve())]
    if WINDOWS:
        PROGRAM.insert(0, str(ROOT / "scripts/wine.sh"))
    unittest.main(argv=sys.argv[:1], verbosity=2, defaultTest="Everywhere" if WINDOWS else None)
