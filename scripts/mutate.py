#!/usr/bin/env python3
"""Makes small changes in src/, one at a time, and counts those that the native tests notice.

Usage: scripts/mutate.py [--count N] [--seed S] [--file GLOB] [--again LIST] [--jobs N]
                         [--sanitizers LIST] [--report FILE] [--list]

A change is made in a copy of the tree, which is then built, without sanitizers unless some are
named, and tested: the quickest tests first, up to the first failure. One that does not compile, or that gives the same
object code, is not counted. A test that takes too long counts as noticing, and is told apart.

The tests run in a sandbox of bubblewrap where all but an empty folder is read-only: a changed
QX_RemoveDirectory removes what it likes. The figures and the changes that survived go to
build/mutations.txt; copies and their builds are kept in build/mutations for the next run.

Exit status: 0 if the tests noticed at least 95 %, 1 if not, 2 if nothing could be counted.
"""

import argparse
import collections
import concurrent.futures
import fnmatch
import hashlib
import json
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
# The quickest first.
PROGRAMS = ("host_tests", "steam_tests", "unit_tests", "frame_tests", "export_tests")
TARGETS = (*PROGRAMS, "launch_child", "settings_child", "steam_child", "scripted_steam",
           "scripted_d3d9", "steam_api")
SLOW = 0.3  # seconds from which on a test runs in a process of its own
ENOUGH = 95  # per cent
GIBIBYTE = 1 << 30

Change = collections.namedtuple("Change", "file line column kind before after start end")


# ---- The changes

def blank(match):
    return re.sub(r"[^\n]", " ", match.group())


def hide_text(source):
    """Blanks out what is no code, so that places stay: comments, literals, preprocessor lines,
    assertions that only the compiler sees."""
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
    """The place behind the bracket that closes the one at `start`."""
    depth = 0
    for i in range(start, len(source)):
        depth += (source[i] in "([{") - (source[i] in ")]}")
        if depth == 0:
            return i + 1
    return len(source)


def find_changes(source):
    """Gives kind, start, end and replacement of each change."""
    code = hide_text(source)
    # Binary operators have blanks or a line's end around them; those of templates and pointers do
    # not.
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
    # A statement that begins with a call and has nothing else.
    for match in re.finditer(r"(?:(?<=[;{})])|(?<=else))\s*((?:[A-Za-z_](?:\w|::|\.|->)*)"
                             r"(?:<[\w:]+>)?)(\()", code):
        name = match.group(1)
        end = closing(code, match.start(2))
        if name in ("if", "while", "for", "switch", "return", "sizeof") or code[end:end + 1] != ";":
            continue
        yield "call", match.start(1), end, ""


def list_changes(pattern):
    changes = []
    for path in sorted([*ROOT.glob("src/**/*.cpp"), *ROOT.glob("src/**/*.h")]):
        file = path.relative_to(ROOT).as_posix()
        if not fnmatch.fnmatch(file, pattern):
            continue
        source = path.read_text(encoding="utf-8")
        for kind, start, end, after in sorted(find_changes(source), key=lambda c: (c[1], c[0])):
            line = source.count("\n", 0, start) + 1
            column = start - (source.rfind("\n", 0, start) + 1) + 1
            changes.append(Change(file, line, column, kind, source[start:end], after, start, end))
    return changes


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
                    # Many a change makes a compiler warn, which no test gets to see.
                    "-DCMAKE_CXX_FLAGS_DEBUG=-O1 -w",
                    f"-DLAUNCHER_SANITIZERS={self.sanitizers}",
                    "-DCMAKE_LINK_DEPENDS_NO_SHARED=ON",
                    "-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST",
                    *(linker if shutil.which("ld.lld") else [])])
        if done.returncode != 0:
            sys.exit(f"mutate: cmake failed:\n{done.stdout.decode()}")

    def make(self, *targets, jobs=1):
        return run(["cmake", "--build", self.build, "--parallel", str(jobs), "--target", *targets])

    def objects(self):
        """A digest of the library's object code."""
        digest = hashlib.sha256()
        for path in sorted((self.build / "src" / "CMakeFiles" / "launcher_core.dir").rglob("*.o")):
            digest.update(path.read_bytes())
        return digest.digest()

    def start(self, number, program, tests, output=None):
        """Starts some tests of a program in a folder of their own."""
        folder = self.scratch / str(number)
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        command = ["bwrap", "--ro-bind", "/", "/", "--dev", "/dev", "--proc", "/proc",
                   "--tmpfs", "/tmp", "--ro-bind", str(WORK), str(WORK),
                   "--bind", str(folder), str(folder), "--chdir", str(folder),
                   "--unshare-all", "--die-with-parent",
                   str(self.build / "bin" / program), "--gtest_fail_fast",
                   "--gtest_filter=" + ":".join(tests), *(output or ())]

        def limit():
            if not self.sanitizers:  # whose shadow memory takes terabytes of addresses
                resource.setrlimit(resource.RLIMIT_AS, (16 * GIBIBYTE, 16 * GIBIBYTE))
            resource.setrlimit(resource.RLIMIT_FSIZE, (8 * GIBIBYTE, 8 * GIBIBYTE))
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

        return subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                stderr=subprocess.DEVNULL, preexec_fn=limit)

    def time_tests(self):
        """Runs all tests on the unchanged library. Gives steps: of those tests that run at the same
        time, program and names, and how many seconds they took together."""
        quick, slow = [], []
        for program in PROGRAMS:
            process = self.start(program, program, ["*"], ["--gtest_output=json:times.json"])
            if process.wait() != 0:
                sys.exit(f"mutate: {program} fails without any change; see scripts/test.sh native")
            report = json.loads((self.scratch / program / "times.json").read_text())
            fast = []
            for suite in report["testsuites"]:
                for test in suite["testsuite"]:
                    name, seconds = f"{suite['name']}.{test['name']}", float(test["time"][:-1])
                    if seconds < SLOW:
                        fast.append((name, seconds))
                    else:
                        slow.append((program, [name], seconds))
            quick.append([(program, [name for name, _ in fast], sum(time for _, time in fast))])
        return [*quick, *([slow] if slow else [])]

    def test(self, steps):
        """Answers "killed", "too long" or "survived"."""
        for step in steps:
            limit = time.monotonic() + 20 + 4 * sum(seconds for _, _, seconds in step)
            running = [self.start(number, program, names)
                       for number, (program, names, _) in enumerate(step)]
            verdict = None
            while running and verdict is None:
                for process in running[:]:
                    status = process.poll()
                    if status is None:
                        continue
                    running.remove(process)
                    if status != 0:
                        verdict = "killed"
                if time.monotonic() > limit:
                    verdict = "too long"
                time.sleep(0.01)
            for process in running:
                process.kill()
                process.wait()
            if verdict is not None:
                return verdict
        return "survived"

    def judge(self, change, steps, unchanged):
        path = self.tree / change.file
        source = (ROOT / change.file).read_text(encoding="utf-8")
        path.write_text(source[:change.start] + change.after + source[change.end:], encoding="utf-8")
        try:
            if self.make("launcher_core").returncode != 0:
                return "not compiled"
            if self.objects() == unchanged:
                return "same code"
            if self.make(*TARGETS).returncode != 0:
                return "not compiled"
            return self.test(steps)
        finally:
            path.write_text(source, encoding="utf-8")


# ---- The run

def report_text(verdicts):
    counted = {change: verdict for change, verdict in verdicts.items()
               if verdict in ("killed", "too long", "survived")}
    lines = [f"{len(verdicts)} changes: "
             f"{sum(v == 'not compiled' for v in verdicts.values())} did not compile, "
             f"{sum(v == 'same code' for v in verdicts.values())} gave the same code, "
             f"{len(counted)} counted", ""]
    for kind in [*sorted({change.kind for change in counted}), "all"]:
        of_kind = [v for change, v in counted.items() if kind in (change.kind, "all")]
        missed = of_kind.count("survived")
        lines.append(f"{kind:<12}{len(of_kind):5} counted{len(of_kind) - missed:6} noticed"
                     f"{of_kind.count('too long'):4} of them by their time{missed:4} survived"
                     f"{100 * (len(of_kind) - missed) / max(len(of_kind), 1):7.1f} %")
    lines += ["", "survived:"]
    lines += [describe(change) for change, verdict in sorted(counted.items())
              if verdict == "survived"]
    return "\n".join(lines) + "\n", counted


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, help="try N changes, from all files alike; else all")
    parser.add_argument("--seed", type=int, default=1, help="which ones, with --count (1)")
    parser.add_argument("--file", default="*", metavar="GLOB", help="only in such files of src/")
    parser.add_argument("--again", metavar="LIST", help="only those that a report lists")
    parser.add_argument("--jobs", type=int, default=2, help="copies that work at a time (2)")
    parser.add_argument("--sanitizers", default="", metavar="LIST", help="as address,undefined")
    parser.add_argument("--report", type=pathlib.Path, default=REPORT, metavar="FILE",
                        help="instead of build/mutations.txt")
    parser.add_argument("--list", action="store_true", help="only list the changes")
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
        print(f"mutate: {len(changes)} changes", file=sys.stderr)
        sys.exit(0 if options.list else 2)
    if not shutil.which("bwrap"):
        print("mutate: bwrap is not installed: run scripts/setup.sh build mutate", file=sys.stderr)
        sys.exit(2)

    copies = queue.Queue()
    for number in range(min(options.jobs, len(changes))):
        copy = Copy(number, options.sanitizers)
        copy.refresh()
        copy.configure()
        print(f"mutate: building copy {number}", file=sys.stderr)
        done = copy.make("launcher_core", *TARGETS, jobs=options.jobs)
        if done.returncode != 0:
            sys.exit(f"mutate: the unchanged tree does not build:\n{done.stdout.decode()}")
        if number == 0:
            steps = copy.time_tests()
        elif copy.test(steps) != "survived":
            sys.exit("mutate: the tests fail in another copy without any change")
        copies.put((copy, copy.objects()))

    # Changes of one file follow one another in one copy: each build also undoes the one before.
    piles = collections.defaultdict(list)
    for change in changes:
        piles[change.file].append(change)
    verdicts = {}
    lock = threading.Lock()

    def work(pile):
        copy, unchanged = copies.get()
        for change in pile:
            begin = time.monotonic()
            verdict = copy.judge(change, steps, unchanged)
            with lock:
                verdicts[change] = verdict
                print(f"{len(verdicts)}/{len(changes)} {time.monotonic() - begin:.1f} s "
                      f"{verdict}: {describe(change)}", file=sys.stderr, flush=True)
                options.report.write_text(report_text(verdicts)[0], encoding="utf-8")
        copies.put((copy, unchanged))

    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        list(pool.map(work, sorted(piles.values(), key=len, reverse=True)))

    text, counted = report_text(verdicts)
    print(text, end="")
    if not counted:
        sys.exit(2)
    noticed = sum(verdict != "survived" for verdict in counted.values())
    sys.exit(0 if 100 * noticed >= ENOUGH * len(counted) else 1)


if __name__ == "__main__":
    main()
