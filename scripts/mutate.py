#!/usr/bin/env python3
"""Plants small faults in src/, steam_stand_in/ and tools/, one at a time, and counts those that the
native tests notice.

Usage: scripts/mutate.py [--count N] [--seed S] [--file GLOB...] [--again LIST] [--jobs N]
                         [--sanitizers LIST] [--report FILE] [--list]

Without --file the faults are in src/. For a sample outside:

    scripts/mutate.py --count 200 --file 'steam_stand_in/*' 'tools/*'

Each fault is planted in a copy of the tree. The copy is built, without sanitizers unless some are
named, and tested until the first failure. Programs that noticed most faults of the same folder run
first. A fault does not count if it does not compile, if the object code stays the same, if this
processor cannot run it, or if scripts/mutation_equivalents.txt lists it. A test that takes too long
counts as noticing and is reported separately.

The tests run in a sandbox of bubblewrap, in which everything except an empty folder is read-only: a
changed QX_RemoveDirectory can remove anything. The figures and the faults that survived are written
to build/mutations.txt. The copies and their builds stay in build/mutations for the next run.

Exit status: 0 if the tests noticed enough of each area (97 % in src/, 85 % elsewhere), 1 if not, 2
if nothing could be counted.
"""

import argparse
import collections
import concurrent.futures
import fnmatch
import hashlib
import json
import os
import pathlib
import queue
import random
import re
import resource
import shutil
import subprocess
import sys
import threading
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
WORK = ROOT / "build" / "mutations"
REPORT = ROOT / "build" / "mutations.txt"
EQUIVALENTS = ROOT / "scripts" / "mutation_equivalents.txt"
# Files of the other system, which the native build does not compile.
OTHER_SYSTEM = ("_windows.cpp", "_winhttp.cpp")
# Files whose code runs only on processors that /proc/cpuinfo lists with this feature.
NEEDS = {"src/cipher/ecb_byte_planes.cpp": "avx512_vbmi"}
SLOW = 0.3  # seconds from which on a test runs in a process of its own
GIBIBYTE = 1 << 30

# Runs the unittest program that follows up to its first failure.
UNITTEST = ("python3", "-B", "-c", """
import functools, runpy, sys, unittest
unittest.main = functools.partial(unittest.main, failfast=True)
del sys.argv[0]
runpy.run_path(sys.argv[0], run_name="__main__")""")

# By area, which is a folder with its objects in build/: what to build for these objects.
OBJECTS = {"src": ("launcher_core",), "steam_stand_in": ("steam_api",), "tools": ("bfbr", "doctor")}
ENOUGH = {"src": 97, "steam_stand_in": 85, "tools": 85}  # per cent

# Tests for faults in `files`: what to build, which for a GoogleTest program ends in "_tests", and
# the command.
Test = collections.namedtuple("Test", "files program command")
TESTS = (
    *(Test("src/*", program, ("{build}/bin/" + program,))
      for program in ("host_tests", "steam_tests", "unit_tests", "frame_tests", "export_tests")),
    Test("steam_stand_in/*", "steam_stand_in_tests",
         ("env", "STEAM_STAND_IN=stand_in", "python3", "-B", "{tree}/tests/support/http_server.py",
          "{build}/bin/steam_stand_in_tests")),
    Test("tools/*", "completions",
         (*UNITTEST, "{tree}/tests/tools/bfbr_manual_test.py", "{build}/bin/bfbr",
          "{build}/bin/doctor", "{build}/completions")),
    Test("tools/[ds]*", "doctor",
         (*UNITTEST, "{tree}/tests/tools/doctor_test.py", "{build}/bin/doctor",
          "{build}/lib/libLauncherDll.so", "work")),
    Test("tools/[bs]*", "bfbr", (*UNITTEST, "{tree}/tests/tools/bfbr_test.py", "{build}/bin/bfbr")),
)
# Tests that run at the same time, with their commands and the seconds that they take together.
Step = collections.namedtuple("Step", "files programs commands seconds")

Change = collections.namedtuple("Change", "file line column kind before after start end lines")


# ---- The changes

def blank(match):
    return re.sub(r"[^\n]", " ", match.group())


def hide_text(source):
    """Replaces what is not code with blanks, so that every position stays: comments, literals,
    preprocessor lines, static assertions."""
    source = re.sub(r"//[^\n]*|/\*.*?\*/|\"(?:\\.|[^\"\\\n])*\"|(?<![0-9A-Fa-f])'(?:\\.|[^'\\\n])+'",
                    blank, source, flags=re.S)
    source = re.sub(r"^[ \t]*#(?:[^\n]*\\\n)*[^\n]*", blank, source, flags=re.M)
    return re.sub(r"\bstatic_assert\b.*?;", blank, source, flags=re.S)


SWAPS = {
    "relation": {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "=="},
    "arithmetic": {"+": "-", "-": "+", "*": "+", "/": "*", "%": "/", "+=": "-=", "-=": "+=",
                   "<<": ">>", ">>": "<<", "&": "|", "|": "&", "^": "|", "^=": "|="},
    "logic": {"&&": "||", "||": "&&"},
}
WORDS = {
    "boolean": {"true": "false", "false": "true", "TRUE": "FALSE", "FALSE": "TRUE"},
    "jump": {"break;": ";", "continue;": ";"},
}


def closing(source, start):
    """The position after the bracket that closes the one at `start`."""
    depth = 0
    for i in range(start, len(source)):
        depth += (source[i] in "([{") - (source[i] in ")]}")
        if depth == 0:
            return i + 1
    return len(source)


def find_changes(source):
    """Yields the kind, start, end and replacement of each change."""
    code = hide_text(source)
    # A binary operator is between blanks, or a blank and the end of the line. The signs of templates
    # and pointers are not.
    for match in re.finditer(r"(?<=[ ])[<>=!+\-*/%&|^]{1,2}(?=[ \n])", code):
        for kind, swaps in SWAPS.items():
            if match.group() in swaps:
                yield kind, match.start(), match.end(), swaps[match.group()]
    for match in re.finditer(r"\+\+|--", code):
        yield "arithmetic", match.start(), match.end(), "--" if match.group() == "++" else "++"
    for kind, words in WORDS.items():
        pattern = "|".join(re.escape(word) for word in words)
        for match in re.finditer(rf"\b(?:{pattern})(?![\w])", code):
            yield kind, match.start(), match.end(), words[match.group()]
    for match in re.finditer(r"\b(?:if|while) \(", code):
        end = closing(code, match.end() - 1)
        condition = source[match.end():end - 1]
        yield "condition", match.end(), end - 1, f"!({condition})"
    for match in re.finditer(r"(?<![\w.])(0[xX][0-9A-Fa-f]+|\d+)([uUlL]*)(?![\w.])", code):
        digits = match.group(1)
        number = int(digits, 0) + 1
        more = f"0x{number:X}" if digits[:2] in ("0x", "0X") else str(number)
        yield "constant", match.start(), match.end(), more + match.group(2)
    for match in re.finditer(r"\bQX_[A-Z_]+\b", code):
        success = match.group() in ("QX_SUCCEEDED", "QX_CIPHER_SUCCEEDED")
        yield "result", match.start(), match.end(), "QX_FAILED" if success else "QX_SUCCEEDED"
    for match in re.finditer(r"\breturn ([^;{}]+);", code):
        if not re.fullmatch(r"true|false|\d+|QX_[A-Z_]+|nullptr", match.group(1)):
            yield "result", match.start(1), match.end(1), "{}"
    # A statement that is only a call.
    for match in re.finditer(r"(?:(?<=[;{})])|(?<=else))\s*((?:[A-Za-z_](?:\w|::|\.|->)*)"
                             r"(?:<[\w:]+>)?)(\()", code):
        name = match.group(1)
        end = closing(code, match.start(2))
        if name in ("if", "while", "for", "switch", "return", "sizeof") or code[end:end + 1] != ";":
            continue
        yield "call", match.start(1), end, ""


def list_changes(patterns):
    changes = []
    names = (path.relative_to(ROOT).as_posix() for area in OBJECTS
             for path in ROOT.glob(f"{area}/**/*.[ch]*"))
    for file in sorted(names):
        if not any(fnmatch.fnmatch(file, pattern) for pattern in patterns):
            continue
        if not file.endswith((".cpp", ".h")) or file.endswith(OTHER_SYSTEM):
            continue
        source = (ROOT / file).read_text(encoding="utf-8")
        for kind, start, end, after in sorted(find_changes(source), key=lambda c: (c[1], c[0])):
            line = source.count("\n", 0, start) + 1
            first, last = source.rfind("\n", 0, start) + 1, source.find("\n", end)
            lines = (source[first:last], source[first:start] + after + source[end:last])
            changes.append(Change(file, line, start - first + 1, kind, source[start:end], after,
                                  start, end, tuple(map(one_line, lines))))
    return changes


def equivalents():
    """Each paragraph of the list is a file, its line before the change and after it, and why."""
    paragraphs = EQUIVALENTS.read_text(encoding="utf-8").split("\n\n")
    return {tuple(paragraph.strip().split("\n")[:3]) for paragraph in paragraphs}


def area_of(change):
    return change.file.split("/")[0]


def one_line(text):
    return re.sub(r"\s+", " ", text).strip() or "nothing"


def describe(change):
    return (f"{change.file}:{change.line}:{change.column}: {change.kind}: "
            f"{one_line(change.before)} -> {one_line(change.after)}")


def sample(changes, count, seed):
    """Takes one of each file in turn, so that small files are not lost beside large ones."""
    rng = random.Random(seed)
    piles = collections.defaultdict(list)
    for change in changes:
        piles[change.file].append(change)
    for pile in piles.values():
        rng.shuffle(pile)
    taken = []
    while len(taken) < count and any(piles.values()):
        for pile in piles.values():
            if pile and len(taken) < count:
                taken.append(pile.pop())
    return sorted(taken)


# ---- Building and testing

def run(command, **more):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          stdin=subprocess.DEVNULL, check=False, **more)


class Copy:
    """A copy of the tree with its build."""

    def __init__(self, number, sanitizers):
        self.sanitizers = sanitizers
        self.tree = WORK / f"copy-{number}"
        self.build = WORK / f"{'sanitized' if sanitizers else 'build'}-{number}"
        self.scratch = WORK / f"scratch-{number}"

    def refresh(self):
        names = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
                               cwd=ROOT, stdout=subprocess.PIPE, check=True).stdout
        wanted = {name for name in names.decode().split("\0") if name and (ROOT / name).is_file()}
        for path in self.tree.rglob("*"):
            if path.is_file() and path.relative_to(self.tree).as_posix() not in wanted:
                path.unlink()
        for name in wanted:
            target = self.tree / name
            if not target.exists() or target.read_bytes() != (ROOT / name).read_bytes():
                target.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(ROOT / name, target)

    def configure(self):
        linker = ["-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld", "-DCMAKE_SHARED_LINKER_FLAGS=-fuse-ld=lld"]
        done = run(["cmake", "-G", "Ninja", "-S", self.tree, "-B", self.build,
                    "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_C_FLAGS_DEBUG=-O1",
                    # A fault may cause a warning, which must not count as an error.
                    "-DCMAKE_CXX_FLAGS_DEBUG=-O1 -w",
                    f"-DLAUNCHER_SANITIZERS={self.sanitizers}",
                    "-DCMAKE_LINK_DEPENDS_NO_SHARED=ON", "-DCMAKE_UNITY_BUILD=OFF",
                    "-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST",
                    *(linker if shutil.which("ld.lld") else [])])
        if done.returncode != 0:
            sys.exit(f"mutate: cmake failed:\n{done.stdout.decode()}")

    def make(self, *targets, jobs=1):
        return run(["ninja", "-C", self.build, f"-j{jobs}", *targets])

    def objects(self, area):
        """A digest of the area's object code."""
        digest = hashlib.sha256()
        for path in sorted((self.build / area).rglob("*.o")):
            digest.update(path.read_bytes())
        return digest.digest()

    def start(self, number, command):
        """Starts a command in a folder of its own. It sees the programs in another one, since some
        tests put files beside them."""
        folder, programs = self.scratch / str(number), self.scratch / f"bin-{number}"
        for path in (folder, programs):
            shutil.rmtree(path, ignore_errors=True)
        folder.mkdir(parents=True)
        shutil.copytree(self.build / "bin", programs, copy_function=os.link)
        command = ["bwrap", "--ro-bind", "/", "/", "--dev", "/dev", "--proc", "/proc",
                   "--tmpfs", "/tmp", "--ro-bind", str(WORK), str(WORK),
                   "--bind", str(programs), str(self.build / "bin"),
                   "--bind", str(folder), str(folder), "--chdir", str(folder),
                   "--unshare-all", "--die-with-parent",
                   *(word.format(tree=self.tree, build=self.build) for word in command)]

        def limit():
            if not self.sanitizers:  # their shadow memory takes terabytes of addresses
                resource.setrlimit(resource.RLIMIT_AS, (16 * GIBIBYTE, 16 * GIBIBYTE))
            resource.setrlimit(resource.RLIMIT_FSIZE, (8 * GIBIBYTE, 8 * GIBIBYTE))
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

        return subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                stderr=subprocess.DEVNULL, preexec_fn=limit)

    def time_tests(self, tests):
        """Runs the tests on the unchanged code and returns them as steps."""
        steps = []
        slow = collections.defaultdict(list)
        for test in tests:
            is_google = test.program.endswith("_tests")
            command = (*test.command, *(["--gtest_fail_fast"] if is_google else []))
            begin = time.monotonic()
            if self.start(0, (*command, *(["--gtest_output=json:times.json"] * is_google))).wait():
                sys.exit(f"mutate: the tests of {test.program} fail in the sandbox without any fault")
            if not is_google:
                steps.append(Step(test.files, [test.program], [command], time.monotonic() - begin))
                continue
            report = json.loads((self.scratch / "0" / "times.json").read_text())
            times = {f"{suite['name']}.{one['name']}": float(one["time"][:-1])
                     for suite in report["testsuites"] for one in suite["testsuite"]}
            quick = [name for name, seconds in times.items() if seconds < SLOW]
            steps.append(Step(test.files, [test.program],
                              [(*command, "--gtest_filter=" + ":".join(quick))],
                              sum(times[name] for name in quick)))
            slow[test.files] += [(test.program, (*command, "--gtest_filter=" + name), seconds)
                                 for name, seconds in times.items() if seconds >= SLOW]
        for files, those in slow.items():
            programs, commands, seconds = zip(*those)
            steps.append(Step(files, sorted(set(programs)), commands, sum(seconds)))
        return steps

    def test(self, step):
        """Returns "killed", "too long" or "survived"."""
        limit = time.monotonic() + 20 + 4 * step.seconds
        running = [self.start(number, command) for number, command in enumerate(step.commands)]
        verdict = "survived"
        while running and verdict == "survived":
            for process in running[:]:
                status = process.poll()
                if status is not None:
                    running.remove(process)
                    if status != 0:
                        verdict = "killed"
            if running and time.monotonic() > limit:
                verdict = "too long"
            time.sleep(0.01)
        for process in running:
            process.kill()
            process.wait()
        return verdict

    def judge(self, change, steps, kills, unchanged):
        path = self.tree / change.file
        folder, _, _ = change.file.rpartition("/")
        area = area_of(change)
        source = (ROOT / change.file).read_text(encoding="utf-8")
        path.write_text(source[:change.start] + change.after + source[change.end:], encoding="utf-8")
        try:
            if self.make(*OBJECTS[area]).returncode != 0:
                return "not compiled"
            if self.objects(area) == unchanged[area]:
                return "same code"
            own = [i for i, step in enumerate(steps) if fnmatch.fnmatch(change.file, step.files)]
            for i in sorted(own, key=lambda i: -kills[folder, i]):
                step = steps[i]
                if self.make(*step.programs).returncode != 0:
                    return "not compiled"
                verdict = self.test(step)
                if verdict != "survived":
                    kills[folder, i] += 1
                    return verdict
            return "survived"
        finally:
            path.write_text(source, encoding="utf-8")


# ---- The run

def report_text(verdicts):
    counted = {change: verdict for change, verdict in verdicts.items()
               if verdict in ("killed", "too long", "survived")}
    lines = [f"{len(verdicts)} faults: "
             f"{sum(v == 'equivalent' for v in verdicts.values())} listed as equivalent, "
             f"{sum(v == 'cannot run' for v in verdicts.values())} cannot run on this processor, "
             f"{sum(v == 'not compiled' for v in verdicts.values())} did not compile, "
             f"{sum(v == 'same code' for v in verdicts.values())} gave the same code, "
             f"{len(counted)} counted", ""]
    scores = {}
    groups = [*sorted({change.kind for change in counted}), *OBJECTS]
    for group in groups:
        those = [v for change, v in counted.items() if group in (change.kind, area_of(change))]
        if not those:
            continue
        missed = those.count("survived")
        noticed = len(those) - missed
        scores[group] = 100 * noticed / len(those)
        lines.append(f"{group:<15}{len(those):5} counted{noticed:6} noticed"
                     f"{those.count('too long'):4} of them by their time"
                     f"{missed:4} survived{scores[group]:7.1f} %")
    lines += ["", "survived, each with its line before and after:"]
    for change, verdict in sorted(counted.items()):
        if verdict == "survived":
            lines += [describe(change), *("    " + line for line in change.lines)]
    return "\n".join(lines) + "\n", scores


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, metavar="N", help="try N faults, evenly from all files")
    parser.add_argument("--seed", type=int, default=1, help="seed of the sample (default: 1)")
    parser.add_argument("--file", default=["src/*"], nargs="+", metavar="GLOB",
                        help="files to plant faults in (default: src/*)")
    parser.add_argument("--again", metavar="LIST", help="only the faults that a report lists")
    parser.add_argument("--jobs", type=int, default=2,
                        help="copies that work at the same time (default: 2)")
    parser.add_argument("--sanitizers", default="", metavar="LIST",
                        help="for example address,undefined")
    parser.add_argument("--report", type=pathlib.Path, default=REPORT, metavar="FILE",
                        help="instead of build/mutations.txt")
    parser.add_argument("--list", action="store_true", help="only list the faults")
    options = parser.parse_args()

    changes = list_changes(options.file)
    if options.again:
        listed = set(pathlib.Path(options.again).read_text(encoding="utf-8").splitlines())
        changes = [change for change in changes if describe(change) in listed]
    if options.count is not None:
        changes = sample(changes, options.count, options.seed)
    if options.list or not changes:
        for change in changes:
            print(describe(change))
        print(f"mutate: {len(changes)} faults", file=sys.stderr)
        sys.exit(0 if options.list else 2)
    if not shutil.which("bwrap"):
        print("mutate: bwrap is not installed: run scripts/setup.sh build test mutate", file=sys.stderr)
        sys.exit(2)

    # Removed after sampling, so that a longer list does not change the sample.
    listed = equivalents()
    verdicts = {change: "equivalent" for change in changes if (change.file, *change.lines) in listed}
    features = pathlib.Path("/proc/cpuinfo").read_text(encoding="ascii").split()
    verdicts.update({change: "cannot run" for change in changes
                     if change.file in NEEDS and NEEDS[change.file] not in features})
    changes = [change for change in changes if change not in verdicts]
    areas = sorted({area_of(change) for change in changes})
    tests = [test for test in TESTS
             if any(fnmatch.fnmatch(change.file, test.files) for change in changes)]
    copies = queue.Queue()
    for number in range(min(options.jobs, len(changes))):
        copy = Copy(number, options.sanitizers)
        copy.refresh()
        copy.configure()
        print(f"mutate: building copy {number}", file=sys.stderr)
        done = copy.make(*(target for area in areas for target in OBJECTS[area]), "steam_api",
                         *(test.program for test in tests), jobs=options.jobs)
        if done.returncode != 0:
            sys.exit(f"mutate: the unchanged tree does not build:\n{done.stdout.decode()}")
        if number == 0:
            steps = copy.time_tests(tests)
        copies.put((copy, {area: copy.objects(area) for area in areas}))

    # One copy tries all faults of a file in turn: each build also undoes the fault before.
    piles = collections.defaultdict(list)
    for change in changes:
        piles[change.file].append(change)
    total = len(verdicts) + len(changes)
    kills = collections.Counter()
    lock = threading.Lock()

    def work(pile):
        copy, unchanged = copies.get()
        for change in pile:
            begin = time.monotonic()
            verdict = copy.judge(change, steps, kills, unchanged)
            with lock:
                verdicts[change] = verdict
                print(f"{len(verdicts)}/{total} {time.monotonic() - begin:.1f} s "
                      f"{verdict}: {describe(change)}", file=sys.stderr, flush=True)
                options.report.write_text(report_text(verdicts)[0], encoding="utf-8")
        copies.put((copy, unchanged))

    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        list(pool.map(work, sorted(piles.values(), key=len, reverse=True)))

    text, scores = report_text(verdicts)
    print(text, end="")
    if not scores:
        sys.exit(2)
    sys.exit(0 if all(scores.get(area, 100) >= ENOUGH[area] for area in OBJECTS) else 1)


if __name__ == "__main__":
    main()
