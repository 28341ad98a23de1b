#!/usr/bin/env python3
"""doctor_test.py DOCTOR LIBRARY WORK_FOLDER [TEST...]: tests doctor as a program, doctor.exe with class Both alone."""

import json
import os
import pathlib
import pwd
import re
import resource
import shutil
import signal
import struct
import subprocess
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
DOCTOR, LIBRARY, WORK = (pathlib.Path(path).resolve() for path in sys.argv[1:4])
DEFAULTS = (ROOT / "tests/data/default_config.json").read_bytes().replace(b"\r\n", b"\n")
EXPORTS = json.loads((ROOT / "src/frame/exports.json").read_text(encoding="utf-8"))["exports"]
RUN = [str(ROOT / "scripts/wine.sh")] if DOCTOR.suffix == ".exe" else []
CONFIG = pathlib.Path("config.json")
CHECK, REPAIR = ("config", "check"), ("config", "repair")
ONE = b'"Is_Staging": "true"'


def doctor(*arguments, library=LIBRARY, **more):
    command = [*RUN, str(DOCTOR), "--library", str(library), *arguments]
    return subprocess.run(command, capture_output=True, stdin=subprocess.DEVNULL, **more)


# The exit status, and the findings by id.
def findings(*arguments, **more):
    done = doctor(*arguments, "--json", **more)
    report = json.loads(done.stdout)
    assert report["status"] == ["ok", "warning", "broken"][done.returncode], done
    return done.returncode, {finding["id"]: finding for finding in report["findings"]}


def files():
    return {path.name: path.read_bytes() for path in pathlib.Path().iterdir() if path.is_file()}


def settings(text):
    return {(section, key): value for section, members in json.loads(text).items()
            if section in ("Orvane", "Settings") for key, value in members.items()}


def edit(old, new):
    assert DEFAULTS.count(old) == 1, old
    return DEFAULTS.replace(old, new)


def staging(value):
    return edit(ONE, b'"Is_Staging": ' + value)


# File, end of the finding's name, line and column, Is_Staging after a repair, a word of the changes. Catches: a wrong
# place, a repair of the list in docs/doctor.md that is not made, a setting that a rewrite loses.
PATH = (staging(b'"C:\\games\\new\\\\x\\"y"'), "", 14, 23, 'C:\\games\\new\\x"y', "backslashes")
BROKEN = [
    PATH,
    (staging(b'"C:\\uabcs"'), "", 14, 23, "C:\\uabcs", "backslashes"),
    (staging(b"7.50"), "-field", 14, 23, "7.50", "the number 7.50"),
    (staging(b"false"), "-field", 14, 23, "false", "the truth value false"),
    (edit(ONE + b",", b""), "-field", 12, 5, "true", "missing"),
    (edit(b'"Settings": {', b'"Settings": "x", "y": {'), "-section", 12, 17, "true", "in another place"),
    (staging(b'"x"').replace(b'"Settings"', b'"settings"'), "-section", 1, 1, "x", ""),
    (edit(b'"false"\n', b'"false", "y": [1,],\n'), "", 16, 39, "true", "removed 2 commas after"),
    (staging(b'"\xC3\xA4"').replace(b'\xA4",', b'\xA4"'), "", 15, 9, "\xE4", "_version keeps"),
    (b"/* a\n */" + staging(b'"//x" /**/').replace(ONE[:4], b"// ]\n" + ONE[:4]), "", 1, 1, "//x", "4 comments"),
    (staging(b'"\xF0\x9F\x98\x80"').decode().encode("utf-16"), "", None, None, "\U0001F600", "UTF-8"),
    *((staging(b'"x"').decode().encode(utf), "", None, None, "x", "UTF-8") for utf in ("utf-16-be", "utf-16-le")),
    (b"\xEF\xBB\xBF" + staging(b"1"), "-field", 14, 23, "1", "byte order mark"),
    # What cannot be read, with line and column.
    *((content, "", line, column, "true", "cannot be corrected") for content, line, column in (
        (b"", 1, 1), (bytes(600), 1, 1), (b"[1]", None, None), (b'{"x": ' + b"[" * 5000, 1, 5007),
        (staging(b"http://x/y?z"), 14, 23), (staging(b'"x'), 14, 26), (staging(b'"\xC3\xA4 "b" c"'), 14, 27),
        (staging(b"1e999"), 14, 23), (DEFAULTS[:DEFAULTS.index(ONE) + 19], 14, 28)))]

# File, warning. Catches: a file that loads and is changed, or gets no warning.
LOADING = [
    [b"\xEF\xBB\xBF" + DEFAULTS.replace(b"\n", b"\r\n")],
    [staging(rb'"\u00e4\uD83D\uDE00\/\\\""').replace(b'"Settings": {', b'"x": [{"a": null}], "Settings": {"b": 1, ')],
    [DEFAULTS + b"}}", "settings-rest"],
    [edit(ONE, b'"Is_Staging": 7, ' + ONE), "settings-twice"],
    [edit(b'"Orvane": {', b'"Orvane": 1, "Orvane": {'), "settings-twice"],
    [staging(b'"C:\\temp"'), "settings-control"],
    [DEFAULTS.ljust(4 << 20)],
]

# Arguments, exit status, what is printed. Catches: a status that changes, a command that is not named.
COMMANDS = [
    (["config"], 3, "subcommand"), (["--jsom"], 3, "--jsom"), (["--help"], 0, '"config repair"'),
    (["--config", "config.json"], 3, "config.json does not exist"), (["--config", ""], 3, "does not exist"),
    (["explain", "QX_Encode", "-2147483648"], 0, "never"), (["explain", "1.5"], 3, "1.5"),
    (["explain", "QX_Encod"], 3, "QX_Encod"),
    (["explain", "QX_Encode", "4294967296"], 3, "4294967296"), (["explain", "-2"], 0, "SteamAPI_ReadFile -2: "),
    (["explain", "qx_encode", "0xFFFFFFFF"], 0, "unlike: file_cipher_encode"),
    (["explain", "QX_CheckCert", "0xFF01"], 0, "QX_CheckCert 1: "),
    (["explain", "76561198000000001"], 0, "QX_SteamAPI_GetSteamIDConvertToUint64 76561198000000001: "),
]

# Settings of the stand-in, finding. Catches: a result of Steam that is read wrongly.
STEAM = [('"running": false', "client"), ('"subscribed": false', "session"), ('"loggedOn": false', "user"),
         ('"currentLanguage": ""', "language"), ('"currentLanguage": "eng"', "language"),
         ('"cloudEnabledForApp": false', "cloud")]


# A library for Windows with the checksum that Microsoft's algorithm gives.
def with_checksum(content):
    field = int.from_bytes(content[60:64], "little") + 88
    content = content[:field] + bytes(4) + content[field + 4:]
    total = sum(content[::2]) + 256 * sum(content[1::2])
    return content[:field] + struct.pack("<I", (total % 0xFFFF or 0xFFFF) + len(content)) + content[field + 4:]


def header(machine=0x14C, flags=0x2102):
    start = b"MZ".ljust(60, b"\0") + struct.pack("<I4sH", 64, b"PE", machine)
    return with_checksum(start.ljust(86, b"\0") + struct.pack("<H", flags) + bytes(range(255)) * 999)


def shared_library(source, file):
    compiler = "i686-w64-mingw32-gcc" if RUN else "cc"
    subprocess.run([compiler, "-shared", "-fPIC", "-xc", "-", "-o", file], input=source, check=True)


# File, finding, a word of it. Catches: a wrong library that passes, or is loaded.
def libraries():
    whole = LIBRARY.read_bytes()
    damaged = whole[:-1] + b"!"
    cases = [(b"", "image", "not "), (whole[:5000], "image", "damaged"), (damaged, "image", "damaged")]
    if not RUN:
        return cases + [(header(), "version", "only the checksum"), (header()[:-1] + b"!", "image", "damaged"),
                        (header(0x8664), "image", "32-bit"), (header(flags=0x102), "image", "a program")]
    shared_library(b"void __stdcall ExitProcess(int);"
                   b"int __stdcall DllMain(void* a, int b, void* c) { ExitProcess(7); }", "crash.dll")
    older = whole.replace(b"\xBD\x04\xEF\xFE\0\0\1\0\0\0\1\0", b"\xBD\x04\xEF\xFE\0\0\1\0\x09\0\0\0")
    return cases + [(files()["crash.dll"], "load", "crashed"), (with_checksum(damaged), "image", "damaged"),
                    (with_checksum(older), "version", "version 0.9.0"),
                    (whole.replace(b"PE\0\0\x4C\x01", b"PE\0\0\x64\x86"), "image", "32-bit")]


class Case(unittest.TestCase):
    def setUp(self):
        folder = WORK / self.id().rsplit(".", 1)[-1]
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        os.chdir(folder)

    def write(self, content):
        self.setUp()
        CONFIG.write_bytes(content)

    # What a repair prints, and the settings after it. It must lose nothing.
    def repaired(self, content):
        done = doctor(*REPAIR)
        self.assertEqual((done.returncode, files().get("config.json.broken-1")), (0, content), done)
        return done.stdout.decode(), settings(CONFIG.read_text(encoding="utf-8"))


# What Wine shows too.
class Both(Case):
    def test_all_is_well_and_nothing_is_changed(self):
        self.write(DEFAULTS)
        status, found = findings()
        self.assertEqual((status, [kind for kind in found if found[kind]["status"] != "ok"]), (1, ["steam-stand-in"]))
        self.assertLessEqual({"image", "exports", "calls", "settings", "steam-user"}, found.keys())
        self.assertEqual((RUN != [], files()), ("display" in found, {"config.json": DEFAULTS}))

    def test_a_repair_and_a_report(self):
        self.write(PATH[0])
        self.assertEqual(self.repaired(PATH[0])[1]["Settings", "Is_Staging"], PATH[4])
        self.assertEqual(doctor("bundle", "report.txt", "--yes").returncode, 1)
        self.assertIn(b"ssl_check", files()["report.txt"])

    def test_libraries(self):
        for content, kind, text in libraries():
            pathlib.Path(LIBRARY.name).write_bytes(content)
            status, found = findings(library=LIBRARY.name)
            is_accepted = kind == "version"
            self.assertEqual((status, "calls" in found), (2 - is_accepted, is_accepted and RUN != []), found)
            self.assertIn(text, found[kind]["text"])


class Settings(Case):
    def test_broken_files(self):
        for content, kind, line, column, value, change in BROKEN:
            self.write(content)
            status, found = findings(*CHECK)
            self.assertEqual((status, *map(found["settings" + kind].get, ("line", "column"))), (2, line, column), found)
            self.assertNotIn("settings-verdict", found)
            self.assertIn("[json.exception.", found["settings"]["json_error"])
            done = doctor(*REPAIR, "--dry-run")
            self.assertEqual((done.returncode, files()), (0, {"config.json": content}))
            text, after = self.repaired(content)
            self.assertEqual((change in text, CONFIG.read_bytes() in done.stdout), (True, True), text)
            self.assertLessEqual((settings(DEFAULTS) | {("Settings", "Is_Staging"): value}).items(), after.items())

    def test_files_that_load_stay(self):
        for content, *kinds in LOADING:
            self.write(content)
            status, found = findings(*CHECK)
            self.assertEqual((status, [*found][1:]), (len(kinds), kinds))
            self.assertEqual((doctor(*REPAIR).returncode, files()), (0, {"config.json": content}))
        self.write(DEFAULTS.ljust((4 << 20) + 1))
        self.assertEqual(findings(*CHECK)[0], 2)

    def test_the_line_and_the_words(self):
        # Catches: a caret that counts bytes, a secret in the line, words for programmers.
        self.write(edit(b'"Orvane": {', b'"Orvane": {"token": "hidden", "\xC3\xA4" oops '))
        text = doctor(*CHECK).stdout.decode()
        line, caret = re.findall(r"(?m)^ +\| (.*)$", text)
        self.assertEqual(line[caret.index("^"):].strip(), "oops")
        self.assertEqual(re.findall("hidden|exception|cause:", text), ["cause:"])
        self.assertIn(b"exception", doctor(*CHECK, "--verbose").stdout)

    def test_a_repair_keeps_what_it_does_not_know(self):
        more = '"big": 123456789012345678901234567890, "1.0": [1.0, {"\xE4": null}]'
        self.write(staging(b"7, " + more.encode()))
        CONFIG.chmod(0o600)
        self.repaired(CONFIG.read_bytes())
        self.assertIn('"7", ' + more, CONFIG.read_text(encoding="utf-8"))
        CONFIG.write_bytes(b"{{")
        doctor(*REPAIR)
        self.assertEqual(files()["config.json.broken-2"], b"{{")
        self.assertEqual({path.stat().st_mode & 0o777 for path in pathlib.Path().iterdir()}, {0o600})

    def test_an_edit_meanwhile_is_not_overwritten(self):
        hook = str(WORK / "hook.so")
        shared_library(b"#include <errno.h>\n#include <stdlib.h>\nint renameat2(int a, char* b, int c, char* to) {"
                       b'if (__builtin_strstr(to, "broken")) system("echo >>config.json"); '
                       b"errno = EINVAL; return -1; }", hook)
        self.write(b"{")
        done = doctor(*REPAIR, env=dict(os.environ, LD_PRELOAD=hook, ASAN_OPTIONS="verify_asan_link_order=0"))
        self.assertEqual((done.returncode, files()), (2, {"config.json": b"{\n"}), done)

    def test_a_repair_that_fails_changes_nothing(self):
        # Not enough room for the copy of the old file, and for the new one.
        for content, room in ((b"{" + b" " * 2000, -1), (staging(b"7") + b" " * 2000, 1)):
            self.write(content)
            limit = (len(content) + room,) * 2
            done = doctor(*REPAIR, preexec_fn=lambda: (signal.signal(signal.SIGXFSZ, signal.SIG_IGN),
                                                       resource.setrlimit(resource.RLIMIT_FSIZE, limit)))
            self.assertEqual((done.returncode, files()), (2, {"config.json": content}), done)
        self.assertIn("library", findings(*CHECK, library="no.so")[1])
        self.assertEqual((doctor(*REPAIR, library="no.so").returncode, files()), (2, {"config.json": content}))


class Checks(Case):
    def test_commands(self):
        for arguments, status, text in COMMANDS:
            done = doctor(*arguments)
            self.assertEqual((done.returncode, text in (done.stdout + done.stderr).decode()), (status, True), done)

    def test_every_result_is_explained(self):
        for export in EXPORTS:
            text = doctor("explain", export["decorated"].upper()).stdout.decode()
            for entry in export["results"]:
                value = entry.get("result", entry.get("from"))
                self.assertRegex(text, rf"(?m)^{export['name']} {value}\b.*: {re.escape(entry['means'])}")

    def test_steam(self):
        for members, kind in STEAM:
            pathlib.Path("steam_settings.json").write_text("{" + members + "}")
            status, found = findings(env=dict(os.environ, STEAM_STAND_IN=os.getcwd()))
            self.assertEqual((status, found["steam-" + kind]["status"]), (1, "warning"), found)
        shutil.copy(LIBRARY, ".")
        crash = b"__attribute__((constructor)) void f() { __builtin_trap(); }"
        for source, kind, status in ((None, "steam-library", "warning"), (b"int x;", "steam-library", "broken"),
                                     (crash, "load", "broken")):
            if source:
                shared_library(source, "libsteam_api.so")
            found = findings(library=LIBRARY.name)[1]
            self.assertEqual((found[kind]["status"], found["calls"]["status"]), (status, "ok"), found)

    def test_a_report_hides_secrets(self):
        home, name = os.getcwd(), pwd.getpwuid(os.getuid()).pw_name.encode()
        bundle = ("bundle", home + "/report.txt")
        env = dict(os.environ, HOME=home + "/")
        self.write(edit(b'"Settings": {', b'"Settings": {"apiToken": "s-1", "a": {"passwords": ["s-2", '
                        b'{"b": "s-3"}], "c": "kept %s"}, "home": "%s/x", ' % (name, home.encode())))
        self.assertEqual((doctor(*bundle, env=env).returncode, [*files()]), (2, ["config.json"]))
        self.assertEqual(doctor("bundle", "none/report.txt", "--yes").returncode, 2)
        text = doctor(*bundle, "--yes", env=env).stdout.decode()
        self.assertIn(files()["report.txt"].decode(), text)
        self.assertEqual(re.findall(rf"s-[123]|kept \$USER|~/x|{home}", text), ["kept $USER", "~/x"])
        CONFIG.write_bytes(b'{"key" /**/: "s-1" oops, Secret: s-2,\n "x": "kept\a" // token: s-3, pass\n')
        self.assertIn(b"--force", doctor(*bundle, "--yes").stderr)
        doctor(*bundle, "--yes", "--force")
        kept = re.findall(rb's-[123]|\n "x": "kept "|token:', files()["report.txt"])
        self.assertEqual(kept, [b'\n "x": "kept "', b"token:"])

    def test_output_that_is_lost(self):
        for close in (lambda: os.close(1), lambda: os.dup2(os.open("/dev/full", os.O_WRONLY), 1)):
            for arguments in (["bundle", "report.txt", "--yes"], ["explain", "QX_Encode"], CHECK):
                self.assertEqual((doctor(*arguments, preexec_fn=close).returncode, files()), (2, {}), arguments)

    def test_a_report_needs_a_yes(self):
        for end, asks in ("", True), ("</dev/null", False):
            ask = f"{DOCTOR} bundle report.txt --library {LIBRARY} {end}"
            done = subprocess.run(["script", "-qec", ask, "/dev/null"], input=b"n\n", capture_output=True)
            self.assertEqual((done.returncode, b"[y/N]" in done.stdout, files()), (2, asks, {}))


def load_tests(loader, _tests, _pattern):
    cases = [Both] if RUN else [Both, Settings, Checks]
    return unittest.TestSuite(loader.loadTestsFromTestCase(case) for case in cases)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[4:]])
