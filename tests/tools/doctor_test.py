#!/usr/bin/env python3
"""Tests of the program doctor: doctor_test.py DOCTOR LIBRARY WORK_FOLDER [TEST...]

doctor.exe is run by scripts/wine.sh, with the tests of class Both.
"""

import json
import os
import pathlib
import random
import re
import resource
import shutil
import struct
import subprocess
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
DOCTOR, LIBRARY, WORK = (pathlib.Path(path).resolve() for path in sys.argv[1:4])
DEFAULTS = (ROOT / "tests/data/default_config.json").read_bytes().replace(b"\r\n", b"\n")
EXPORTS = json.loads((ROOT / "src/frame/exports.json").read_text(encoding="utf-8"))["exports"]
RUN = [str(ROOT / "scripts/wine.sh")] if DOCTOR.suffix == ".exe" else []
ONE = b'"Is_Staging": "true"'
IS_STAGING, VERSION = ("Settings", "Is_Staging"), ("Settings", "game_version")


def doctor(*arguments, library=LIBRARY, cwd=WORK, **more):
    if library and arguments[:1] != ("explain",):
        arguments += ("--library", str(library))
    return subprocess.run([*RUN, str(DOCTOR), *arguments], capture_output=True, stdin=subprocess.DEVNULL,
                          check=False, cwd=cwd, **more)


# The exit status, and the findings by id.
def findings(*arguments, **more):
    done = doctor(*arguments, "--json", **more)
    report = json.loads(done.stdout)
    assert report["status"] == ["ok", "warning", "broken"][done.returncode], done
    return done.returncode, {finding["id"]: finding for finding in report["findings"]}


def settings(text):
    return {(section, key): value for section, members in json.loads(text).items()
            if section in ("Orvane", "Settings") for key, value in members.items()}


def edit(old, new):
    assert DEFAULTS.count(old) == 1, old
    return DEFAULTS.replace(old, new)


def staging(value):
    return edit(ONE, b'"Is_Staging": ' + value)


# File, finding, line and column, setting Is_Staging after a repair, a word of the changes. Catches: a
# wrong place, a repair of the list in docs/doctor.md that is not made, a setting that a rewrite loses.
ALL, ONE_FIELD, SECTION = "settings", "settings-field", "settings-section"
BROKEN = {
    "empty": (b"", ALL, 1, 1, "true", "cannot be corrected"),
    "zero bytes": (bytes(600), ALL, 1, 1, "true", "cannot be corrected"),
    "a list": (b"[1]", ALL, None, None, "true", "cannot be corrected"),
    "a number": (staging(b"7.50"), ONE_FIELD, 14, 23, "7.50", "the number 7.50"),
    "a truth value": (staging(b"false"), ONE_FIELD, 14, 23, "false", "the truth value false"),
    "a list inside": (staging(b'["x", "y"]'), ONE_FIELD, 14, 23, "true", "a list"),
    "no setting": (edit(ONE + b",", b""), ONE_FIELD, 12, 5, "true", "missing"),
    "a section of text": (edit(b'"Settings": {', b'"Settings": "x", "y": {'), SECTION, 12, 17, "true", "in another place"),
    "a section's name": (staging(b'"x"').replace(b'"Settings"', b'"settings"'), SECTION, 1, 1, "x", ""),
    "a comma at the end": (edit(b'"false"\n', b'"false",\n'), ALL, 17, 5, "true", "removed 1 comma after"),
    "no comma": (staging(b'"x"').replace(b'"x",', b'"x"'), ALL, 15, 9, "x", "_version keeps"),
    "no quotes": (staging(b"http://x/y?z"), ALL, 14, 23, "true", "cannot be corrected"),
    "no second quote": (staging(b'"x').replace(b"1_63_0", b"\xC3\xA4"), ALL, 14, 26, "true", "it was not readable"),
    "a quote inside": (staging(b'"\xC3\xA4 "b" c"'), ALL, 14, 27, "true", "cannot be corrected"),
    "a path": (staging(b'"C:\\games\\new\\\\x\\"y"'), ALL, 14, 23, 'C:\\games\\new\\x"y', "backslashes"),
    "a user's path": (staging(b'"C:\\users"'), ALL, 14, 23, "C:\\users", "backslashes"),
    "comments": (b"/* a\n */" + staging(b'"//x" /**/').replace(ONE[:4], b"// ]\n" + ONE[:4]), ALL, 1, 1, "//x",
                 "removed 4 comments"),
    "UTF-16": (staging(b'"\xF0\x9F\x98\x80"').decode().encode("utf-16"), ALL, None, None, "\U0001F600", "UTF-8"),
    "UTF-16, no mark": (staging(b'"x"').decode().encode("utf-16-be"), ALL, None, None, "x", "UTF-8"),
    "a mark": (b"\xEF\xBB\xBF" + staging(b"1"), ONE_FIELD, 14, 23, "1", "byte order mark"),
    "cut off": (DEFAULTS[:DEFAULTS.index(ONE) + 19], ALL, 14, 28, "true", "cannot be corrected"),
    "a large number": (staging(b"1e999"), ALL, 14, 23, "true", "cannot be corrected"),
    "deep": (b'{"x": ' + b"[" * 5000, ALL, 1, 5007, "true", "cannot be corrected"),
}

# File, exit status, finding. Catches: a file that loads and is changed, or gets no warning.
LOADING = {
    "the defaults": (DEFAULTS, 0, None),
    "a mark and line ends": (b"\xEF\xBB\xBF" + DEFAULTS.replace(b"\n", b"\r\n"), 0, None),
    "more members": (edit(b'"Settings": {', b'"More": [1, {"a": null}], "Settings": {"b": 1e3, '), 0, None),
    "escapes": (staging(rb'"\u00e4\uD83D\uDE00\/\\\""'), 0, None),
    "text after the end": (DEFAULTS + b"}}", 1, "settings-rest"),
    "a setting twice": (edit(ONE, b'"Is_Staging": 7, ' + ONE), 1, "settings-twice"),
    "a section twice": (edit(b'"Orvane": {', b'"Orvane": 1, "Orvane": {'), 1, "settings-twice"),
    "a path": (staging(b'"C:\\temp"'), 1, "settings-control"),
}

# Arguments, exit status, what is printed. Catches: a status that changes, a command that is not named.
COMMANDS = [
    (["frobnicate"], 3, "frobnicate"), (["config"], 3, "subcommand"), (["bundle"], 3, "OUT"),
    (["--jsom"], 3, "--jsom"), (["--config", "config.json"], 3, "config.json does not exist"),
    (["config", "repair", "--config", "no.json"], 3, "no.json"), (["--help"], 0, '"config repair" changes'),
    (["-V"], 0, "doctor "), (["explain"], 3, "FUNCTION"), (["explain", "QX_Encod"], 3, "QX_Encod"),
    (["explain", "QX_Encode", "many"], 3, "many"), (["explain", "QX_Encode", "4294967296"], 3, "4294967296"),
    (["explain", "qx_encode", "0xFFFFFFFF"], 0, "unlike: file_cipher_encode"), (["explain", "1.5"], 3, "1.5"),
    (["explain", "QX_CheckCert", "0xFF01"], 0, "QX_CheckCert 1: "), (["explain", "-2"], 0, "SteamAPI_ReadFile -2: "),
    (["explain", "76561198000000001"], 0, "QX_SteamAPI_GetSteamIDConvertToUint64 76561198000000001: "),
]

# Settings of the stand-in, finding. Catches: a result of Steam that is read wrongly.
STEAM = [({"running": False}, "steam-client"), ({"subscribed": False}, "steam-session"),
         ({"loggedOn": False}, "steam-user"), ({"currentLanguage": ""}, "steam-language"),
         ({"currentLanguage": "klingon"}, "steam-language"), ({"cloudEnabledForApp": False}, "steam-cloud")]


def with_checksum(content):
    """A library for Windows with the checksum that Microsoft's algorithm gives."""
    field = int.from_bytes(content[60:64], "little") + 88
    content = content[:field] + bytes(4) + content[field + 4:]
    total = sum(content[::2]) + 256 * sum(content[1::2])
    return content[:field] + struct.pack("<I", (total % 0xFFFF or 0xFFFF) + len(content)) + content[field + 4:]


def header(machine=0x14C, flags=0x2102):
    start = b"MZ".ljust(60, b"\0") + struct.pack("<I4sH", 64, b"PE", machine)
    return with_checksum(start.ljust(86, b"\0") + struct.pack("<H", flags) + bytes(range(151)))


def inverted(content, at):
    return content[:at] + bytes(byte ^ 0xFF for byte in content[at:at + 16]) + content[at + 16:]


def shared_library(source, file):
    compiler = "i686-w64-mingw32-gcc" if RUN else "cc"
    subprocess.run([compiler, "-shared", "-fPIC", "-xc", "-", "-o", str(file)], input=source, check=True)


def libraries():
    """File, exit status, finding, a word of it. Catches: a wrong library that passes, or is loaded."""
    whole = LIBRARY.read_bytes()
    cases = [(whole[:5000], 2, "image", "damaged"), (b"", 2, "image", "not "), (b"not found", 2, "image", "not ")]
    cases += [(inverted(whole, at), 2, "image", "damaged") for at in range(200, len(whole) - 16, len(whole) // 7)]
    if not RUN:
        return cases + [(header(), 1, "version", "only the checksum"), (inverted(header(), 200), 2, "image", "damaged"),
                        (header(0x8664), 2, "image", "32-bit"), (header(flags=0x102), 2, "image", "a program")]
    crash = b"void __stdcall ExitProcess(int); int __stdcall DllMain(void* a, int b, void* c) { ExitProcess(7); }"
    shared_library(crash, WORK / "crash.dll")
    older = whole.replace(b"\xBD\x04\xEF\xFE\0\0\1\0\0\0\1\0", b"\xBD\x04\xEF\xFE\0\0\1\0\x09\0\0\0")
    return cases + [((WORK / "crash.dll").read_bytes(), 2, "load", "crashed"), (older, 2, "image", "damaged"),
                    (with_checksum(older), 1, "version", "version 0.9.0"),
                    (with_checksum(inverted(whole, 90000)), 2, "image", "damaged"),
                    (whole.replace(b"PE\0\0\x4C\x01", b"PE\0\0\x64\x86"), 2, "image", "32-bit")]


class Case(unittest.TestCase):
    def setUp(self):
        self.folder = WORK / self.id().rsplit(".", 1)[-1]
        shutil.rmtree(self.folder, ignore_errors=True)
        self.folder.mkdir(parents=True)
        self.config = self.folder / "config.json"

    def files(self):
        return {path.name: path.read_bytes() for path in self.folder.iterdir() if path.is_file()}

    def write(self, content):
        self.setUp()
        self.config.write_bytes(content)

    def repaired(self, content):
        """What a repair prints, and the settings after it. It must lose nothing."""
        done = doctor("config", "repair", cwd=self.folder)
        self.assertEqual((done.returncode, self.files().get("config.json.broken-1")), (0, content), done)
        self.assertLess(findings("config", "check", cwd=self.folder)[0], 2)
        return done.stdout.decode(), settings(self.config.read_text(encoding="utf-8"))


# What Wine shows too.
class Both(Case):
    def test_all_is_well_and_nothing_is_changed(self):
        self.write(DEFAULTS)
        status, found = findings(cwd=self.folder)
        self.assertEqual((status, [kind for kind in found if found[kind]["status"] != "ok"]), (1, ["steam-stand-in"]))
        self.assertLessEqual({"image", "exports", "calls", "settings", "steam-user"}, found.keys())
        self.assertEqual((RUN != [], self.files()), ("display" in found, {"config.json": DEFAULTS}))

    def test_a_repair_and_a_report(self):
        self.write(BROKEN["a path"][0])
        self.assertEqual(self.repaired(BROKEN["a path"][0])[1][IS_STAGING], BROKEN["a path"][4])
        self.assertEqual(doctor("bundle", "report.txt", "--yes", cwd=self.folder).returncode, 1)
        self.assertIn(b"ssl_check", self.files()["report.txt"])

    def test_libraries(self):
        file = self.folder / LIBRARY.name
        for content, status, kind, text in libraries():
            file.write_bytes(content)
            found = findings(library=file)
            self.assertEqual((found[0], "calls" in found[1]), (status, status == 1 and RUN != []), found)
            self.assertIn(text, found[1][kind]["text"])


class Settings(Case):
    def test_broken_files(self):
        for name, (content, kind, line, column, value, change) in BROKEN.items():
            self.write(content)
            status, found = findings("config", "check", cwd=self.folder)
            self.assertEqual((status, *map(found[kind].get, ("line", "column"))), (2, line, column), found)
            self.assertNotIn("settings-verdict", found)
            self.assertIn("[json.exception.", found["settings"]["json_error"])
            done = doctor("config", "repair", "--dry-run", cwd=self.folder)
            self.assertEqual((done.returncode, self.files()), (0, {"config.json": content}))
            text, after = self.repaired(content)
            self.assertEqual((change in text, self.config.read_bytes() in done.stdout), (True, True), text)
            version = {VERSION: "Ver_\xE4"} if "second" in name else {}
            self.assertLessEqual((settings(DEFAULTS) | {IS_STAGING: value} | version).items(), after.items())

    def test_files_that_load_stay(self):
        for name, (content, status, kind) in LOADING.items():
            self.write(content)
            found = findings("config", "check", cwd=self.folder)
            self.assertEqual((found[0], list(found[1])[1:]), (status, [kind] if kind else []), name)
            self.assertEqual((doctor("config", "repair", cwd=self.folder).returncode, self.files()),
                             (0, {"config.json": content}))

    def test_the_line_and_the_words(self):
        # Catches: a caret that counts bytes, a secret in the line, words for programmers.
        self.write(edit(b'"Orvane": {', b'"Orvane": {"token": "hidden", "\xC3\xA4" oops '))
        text = doctor("config", "check", cwd=self.folder).stdout.decode()
        line, caret = re.findall(r"(?m)^ +\| (.*)$", text)
        self.assertEqual((line[caret.index("^"):].strip(), "hidden" in text, "exception" in text), ("oops", False, False))
        self.assertIn("exception", doctor("config", "check", "--verbose", cwd=self.folder).stdout.decode())

    def test_a_repair_keeps_what_it_does_not_know(self):
        self.write(staging(b'7, "big": 123456789012345678901234567890, "1.0": [1.0, {"\xC3\xA4": null}]'))
        self.config.chmod(0o600)
        self.repaired(self.config.read_bytes())
        self.assertIn('"7", "big": 123456789012345678901234567890, "1.0": [1.0, {"ä": null}]',
                      self.config.read_text(encoding="utf-8"))
        self.config.write_bytes(b"{{")
        doctor("config", "repair", cwd=self.folder)
        self.assertEqual(self.files()["config.json.broken-2"], b"{{")
        self.assertEqual({path.stat().st_mode & 0o777 for path in self.folder.iterdir()}, {0o600})

    def test_a_file_that_changes_meanwhile(self):
        # Catches: an edit that is overwritten; a repaired file that the library did not test, here with bad defaults.
        for word, content in ((b"broken", b"{\n"), (b"config", b"{")):
            shared_library(b"#include <errno.h>\n#include <stdlib.h>\nint renameat2(int a, char* b, int c, char* to) {"
                           b'if (__builtin_strstr(to, "%s")) system("echo >>config.json"); '
                           b"errno = EINVAL; return -1; }" % word, WORK / "hook.so")
            self.write(b"{")
            done = doctor("config", "repair", cwd=self.folder, env=dict(
                os.environ, LD_PRELOAD=str(WORK / "hook.so"), ASAN_OPTIONS="verify_asan_link_order=0"))
            self.assertEqual((done.returncode, self.files()), (2, {"config.json": content}), done)

    def test_library_and_doctor_agree(self):
        draw = random.Random(7)
        for _ in range(30):
            at, size = draw.randrange(len(DEFAULTS)), draw.choice([0, 1, 40])
            content = DEFAULTS[:at] + bytes([draw.choice(b'"{},:\\\n\xFF\x007[]')]) + DEFAULTS[at + size:]
            self.write(content)
            status, found = findings("config", "check", cwd=self.folder)
            self.assertNotIn("settings-verdict", found, content)
            if status == 2:
                self.repaired(content)

    def test_a_repair_that_fails_changes_nothing(self):
        self.write(b"{" + b" " * 300)
        before = self.files()
        for limit in (0, len(DEFAULTS) - 1):
            done = doctor("config", "repair", cwd=self.folder,
                          preexec_fn=lambda size=limit: resource.setrlimit(resource.RLIMIT_FSIZE, (size, size)))
            self.assertEqual((done.returncode != 0, self.files()), (True, before))
        for library in ("no.so", __file__):
            self.assertEqual(doctor("config", "repair", cwd=self.folder, library=library).returncode, 2)
            self.assertEqual(list(findings("config", "check", cwd=self.folder, library=library)[1])[0], "library")
        self.assertEqual(self.files(), before)


class Checks(Case):
    def test_commands(self):
        for arguments, status, text in COMMANDS:
            done = doctor(*arguments, library=None)
            self.assertEqual((done.returncode, text in (done.stdout + done.stderr).decode()), (status, True), done)

    def test_every_result_is_explained(self):
        for export in EXPORTS:
            text = doctor("explain", export["decorated"].upper()).stdout.decode()
            for entry in export["results"]:
                value = entry.get("result", entry.get("from"))
                self.assertRegex(text, rf"(?m)^{export['name']} {value}\b.*: {re.escape(entry['means'])}")

    def test_steam(self):
        for members, kind in STEAM:
            (self.folder / "steam_settings.json").write_text(json.dumps(members), encoding="utf-8")
            status, found = findings(env=dict(os.environ, STEAM_STAND_IN=str(self.folder)))
            self.assertEqual((status, found[kind]["status"]), (1, "warning"), found)
        shutil.copy(LIBRARY, self.folder)
        crash = b"__attribute__((constructor)) static void Crash(void) { __builtin_trap(); }"
        for source, kind, status in ((None, "steam-library", "warning"), (b"int x;", "steam-library", "broken"),
                                     (crash, "load", "broken")):
            if source:
                shared_library(source, self.folder / "libsteam_api.so")
            found = findings(library=self.folder / LIBRARY.name)[1]
            self.assertEqual((found[kind]["status"], found["calls"]["status"]), (status, "ok"), found)

    def test_a_report_hides_secrets(self):
        home = self.folder / "ada"
        home.mkdir()
        config = home / "config.json"
        config.write_bytes(edit(b'"Settings": {', b'"Settings": {"apiToken": "s1", "a": {"passwords": ["s2", '
                                b'{"b": "s3"}], "c": "kept"}, "home": "%s/x", ' % str(home).encode()))
        report = home / "report.txt"
        more = {"cwd": home, "env": dict(os.environ, HOME=str(home))}
        self.assertEqual((doctor("bundle", str(report), **more).returncode, report.exists()), (2, False))
        text = doctor("bundle", str(report), "--yes", **more).stdout.decode()
        self.assertIn(report.read_text(encoding="utf-8"), text)
        self.assertEqual(re.findall(r"s[123]|kept|~/x|/ada", text), ["kept", "~/x"])
        config.write_bytes(b'{"key": "s1" oops, Secret: s2,\n "x": "kept" // pass=s3\n')
        self.assertIn(b"--force", doctor("bundle", str(report), "--yes", **more).stderr)
        doctor("bundle", str(report), "--yes", "--force", **more)
        self.assertEqual(re.findall(r"s[123]\b|kept", report.read_text(encoding="utf-8")), ["kept"])

    def test_output_that_is_lost(self):
        report = self.folder / "report.txt"
        for close in (lambda: os.close(1), lambda: os.dup2(os.open("/dev/full", os.O_WRONLY), 1)):
            for arguments in (["bundle", str(report), "--yes"], ["explain", "QX_Encode"], ["config", "check"]):
                done = doctor(*arguments, cwd=self.folder, preexec_fn=close)
                self.assertEqual((done.returncode, report.exists()), (2, False), done)

    def test_a_report_needs_a_yes(self):
        done = subprocess.run(["script", "-qec", f"{DOCTOR} bundle report.txt --library {LIBRARY}", "/dev/null"],
                              input=b"n\n", cwd=self.folder, capture_output=True)
        self.assertEqual((done.returncode, b"[y/N]" in done.stdout, self.files()), (2, True, {}))


def load_tests(loader, _tests, _pattern):
    cases = [Both] if RUN else [Both, Settings, Checks]
    return unittest.TestSuite(loader.loadTestsFromTestCase(case) for case in cases)


if __name__ == "__main__":
    WORK.mkdir(parents=True, exist_ok=True)
    unittest.main(argv=[sys.argv[0], *sys.argv[4:]])
