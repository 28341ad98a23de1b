#!/usr/bin/env python3
"""Tests of the program doctor: broken settings files, libraries that are none, Steam, reports.

Usage: doctor_test.py DOCTOR LIBRARY WORK_FOLDER [TEST...]

DOCTOR     the program; doctor.exe is run by scripts/wine.sh, with the few tests of class Windows
LIBRARY    the library that it is to load
"""

import json
import os
import pathlib
import pty
import random
import re
import resource
import shutil
import struct
import subprocess
import sys
import unittest
import zipfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
DOCTOR, LIBRARY, WORK = (pathlib.Path(path).resolve() for path in sys.argv[1:4])
DEFAULTS = (ROOT / "tests/data/default_config.json").read_bytes().replace(b"\r\n", b"\n")
EXPORTS = json.loads((ROOT / "src/frame/exports.json").read_text(encoding="utf-8"))["exports"]
RUN = [str(ROOT / "scripts/wine.sh")] if DOCTOR.suffix == ".exe" else []
ONE_VALUE = b'"Is_Staging": "true"'


def doctor(*arguments, library=LIBRARY, cwd=None, **more):
    if library and arguments[:1] != ("explain",):
        arguments += ("--library", str(library))
    return subprocess.run([*RUN, str(DOCTOR), *arguments], stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, cwd=cwd or WORK, stdin=subprocess.DEVNULL,
                          check=False, **more)


def findings(*arguments, **more):
    """The exit status and the findings."""
    done = doctor(*arguments, "--json", **more)
    report = json.loads(done.stdout)
    statuses = ["ok", "warning", "broken"]
    worst = max(statuses.index(finding["status"]) for finding in report["findings"])
    assert (report["status"], done.returncode) == (statuses[worst], worst), done
    return done.returncode, report["findings"]


def by_id(found):
    return {finding["id"]: finding for finding in found}


def snapshot(folder):
    return {path.relative_to(folder): path.read_bytes() if path.is_file() else None
            for path in sorted(folder.rglob("*"))}


def settings(text):
    """The twelve settings by section and name."""
    return {(section, key): value for section, members in json.loads(text).items()
            if section in ("Orvane", "Settings") for key, value in members.items()}


def edit(*changes):
    content = DEFAULTS
    for old, new in changes:
        assert content.count(old) == 1, old
        content = content.replace(old, new)
    return content


def place(content, where):
    """The line and column, in characters, at which `where` stands first."""
    before = content[:content.index(where)]
    start = before.rfind(b"\n") + 1
    return before.count(b"\n") + 1, len(before[start:].decode("utf-8", "replace")) + 1


# Name: the file, a finding's id, what stands at its place (or the place itself), its field, and
# what the repaired file holds other than the defaults.
SYNTAX, FIELD, SECTION, DOCUMENT = ("settings-syntax", "settings-field", "settings-section",
                                    "settings-document")
STAGING, API = ("Settings", "Is_Staging"), ("Orvane", "Api_server")
API_URL = settings(DEFAULTS)[API].encode()
NO_STAGING = "Settings.Is_Staging"


def staging(value):
    return edit((ONE_VALUE, b'"Is_Staging": ' + value))


BROKEN = {
    "empty": (b"", SYNTAX, (1, 1), None, {}),
    "blanks": (b" \r\n\t", SYNTAX, (1, 1), None, {}),
    "zero bytes": (bytes(600), SYNTAX, (1, 1), None, {}),
    "a page": (b"<html>404</html>", SYNTAX, (1, 1), None, {}),
    "null": (b"null", SECTION, (1, 1), "Orvane", {}),
    "a list": (b"[1]", DOCUMENT, (1, 1), None, {}),
    "nothing in it": (b"{}", SECTION, (1, 1), "Settings", {}),
    "a number": (staging(b"7.50"), FIELD, b"7.50", NO_STAGING, {STAGING: "7.50"}),
    "a truth value": (staging(b"false"), FIELD, b"false,", NO_STAGING, {STAGING: "false"}),
    "a null": (staging(b"null"), FIELD, b"null", NO_STAGING, {}),
    "a list of one": (staging(b'["x"]'), FIELD, b"[", NO_STAGING, {STAGING: "x"}),
    "an object": (staging(b"{}"), FIELD, b"{}", NO_STAGING, {}),
    "a missing field": (edit((ONE_VALUE + b",", b"")), FIELD, b'{\n        "Is_Shipping"', NO_STAGING,
                        {}),
    "another case": (edit((ONE_VALUE, b'"is_staging": "x"')), FIELD, b'{\n        "Is_Shipping"',
                     NO_STAGING, {STAGING: "x"}),
    "two wrong fields": (edit((ONE_VALUE, b'"Is_Staging": 1'), (b'"' + API_URL + b'",\n        "Do',
                                                               b'2,\n        "Do')),
                         FIELD, b"2,", "Orvane.Api_server", {STAGING: "1", API: "2"}),
    "a section of text": (edit((b'"Settings": {', b'"Settings": "x", "y": {')), SECTION, b'"x"',
                          "Settings", {}),
    "a wrong section": (edit((b'"Settings"', b'"settings"')), SECTION, (1, 1), "Settings", {}),
    "an empty copy behind": (edit((b'"Settings": {', b'"Settings": 1, "Orvane": {}, "Settings": {')),
                             FIELD, b"{}", "Orvane.Api_server", {}),
    "a comma too many": (edit((b'"ssl_check": "false"', b'"ssl_check": "false",')), SYNTAX,
                         b",\n    }", None, {}),
    "two commas": (edit((ONE_VALUE + b",", ONE_VALUE + b",,")), SYNTAX, b",\n        \"game", None, {}),
    "a missing comma": (edit((ONE_VALUE + b",", ONE_VALUE)), SYNTAX, b'"game_version"', None, {}),
    "a semicolon": (edit((ONE_VALUE + b",", ONE_VALUE + b";")), SYNTAX, b";", None, {}),
    "a missing colon": (edit((ONE_VALUE, b'"Is_Staging" "true"')), SYNTAX, b'"true"', None, {}),
    "an equals sign": (edit((ONE_VALUE, b'"Is_Staging" = "true"')), SYNTAX, b'= "true"', None, {}),
    "single quotes": (staging(b"'x\"y'"), SYNTAX, b"'x", None, {STAGING: 'x"y'}),
    "typographic quotes": (staging("“x”".encode()), SYNTAX, "“".encode(), None, {STAGING: "x"}),
    "no quotes": (staging(b"http://x/y?z"), SYNTAX, b"http://x/y?z", None, {STAGING: "http://x/y?z"}),
    "a name without quotes": (edit((ONE_VALUE, b'Is_Staging: "true"')), SYNTAX, b"Is_Staging:", None,
                              {}),
    "an open quote": (staging(b'"x'), SYNTAX, b'"x', None, {STAGING: "x"}),
    "an open name": (edit((ONE_VALUE, b'"Is_Staging: "true"')), SYNTAX, b'"Is_Staging: ', None, {}),
    "a quote inside": (staging(b'"a "b" c"'), SYNTAX, b'"b" c', None, {STAGING: 'a "b" c'}),
    "a broken line": (staging(b'"a\n  b"'), SYNTAX, b"\n  b", None, {STAGING: "ab"}),
    "a tab": (staging(b'"a\tb"'), SYNTAX, b"\tb", None, {STAGING: "a\tb"}),
    "a path": (staging(b'"C:\\Games"'), SYNTAX, b"\\Games", None, {STAGING: "C:\\Games"}),
    "half a character": (staging(b'"\\uD83D"'), SYNTAX, b"\\uD83D", None, {STAGING: "\uFFFD"}),
    "a comment": (edit((ONE_VALUE, b"// on\n" + ONE_VALUE)), SYNTAX, b"// on", None, {}),
    "a long comment": (b"/* on */" + DEFAULTS, SYNTAX, (1, 1), None, {}),
    "an invisible character": (staging(b'\xC2\xA0"x"'), SYNTAX, b"\xC2\xA0", None, {STAGING: "x"}),
    "a capital letter": (staging(b"True"), SYNTAX, b"True", None, {STAGING: "true"}),
    "a leading zero": (staging(b"007"), SYNTAX, b"007", None, {STAGING: "007"}),
    "a huge number": (staging(b"1e999"), SYNTAX, b"1e999", None, {STAGING: "1e999"}),
    "no value": (staging(b""), SYNTAX, b',\n        "game', None, {}),
    "Windows-1252": (staging(b'"Stra\xDFe"'), SYNTAX, b"\xDF", None, {STAGING: "Straße"}),
    "UTF-16": (staging(b'"x"').decode().encode("utf-16"), SYNTAX, (1, 1), None, {STAGING: "x"}),
    "UTF-16 without a mark": (staging(b'"x"').decode().encode("utf-16-be"), SYNTAX, (1, 1), None,
                              {STAGING: "x"}),
    "an open end": (DEFAULTS.rstrip()[:-1], SYNTAX, (1, 1), None, {}),
    "an open section": (edit((b"    },\n    \"Settings\"", b"    \"Settings\"")), SYNTAX, (1, 1), None, {}),
    "a brace too many": (edit((b"    },\n    \"Settings\"", b"    }},\n    \"Settings\"")), SECTION,
                         (1, 1), "Settings", {}),
    "no brace": (DEFAULTS.replace(b"{", b"", 1), SYNTAX, b'"Orvane"', None, {}),
    "another bracket": (DEFAULTS.rstrip()[:-1] + b"]", SYNTAX, b"]", None, {}),
    "cut off": (DEFAULTS[:DEFAULTS.index(b'"Is_Staging"') + 19], SYNTAX, b'"tru', None, {}),
    "deep": (b'{"x": ' + b"[" * 5000, SYNTAX, (1, 207), None, {}),
}

FINE = {
    "the defaults": DEFAULTS,
    "a mark": b"\xEF\xBB\xBF" + DEFAULTS,
    "other line ends": DEFAULTS.replace(b"\n", b"\r\n"),
    "more members": edit((b'"Settings": {', b'"More": [1, {"a": null}], "Settings": {"b": 1e3, ')),
    "escapes": staging(rb'"\u00e4\uD83D\uDE00\/\\\""'),
    "deep": edit((b'"Settings": {', b'"More": ' + b"[" * 300 + b"]" * 300 + b', "Settings": {')),
}
ODD = {
    "text behind": (DEFAULTS + b"}}", "settings-rest"),
    "a field twice": (edit((ONE_VALUE, b'"Is_Staging": 7, ' + ONE_VALUE)), "settings-twice"),
    "a section twice": (edit((b'"Orvane": {', b'"Orvane": 1, "Orvane": {')), "settings-twice"),
}


class Case(unittest.TestCase):
    def setUp(self):
        self.folder = WORK / self.id().rsplit(".", 1)[-1]
        shutil.rmtree(self.folder, ignore_errors=True)
        self.folder.mkdir(parents=True)
        self.config = self.folder / "config.json"

    def write(self, content):
        for path in self.folder.iterdir():
            path.unlink()
        self.config.write_bytes(content)


class Settings(Case):
    def check(self):
        """Of the check, which never changes anything."""
        before = snapshot(self.folder)
        found = findings("config", "check", cwd=self.folder)
        self.assertEqual(snapshot(self.folder), before)
        self.assertNotIn("settings-verdict", by_id(found[1]), "the library says otherwise")
        return found

    def repair(self, content):
        """Repairs the file, which must lose nothing, and answers its settings."""
        dry = doctor("config", "repair", "--dry-run", cwd=self.folder)
        self.assertEqual((dry.returncode, snapshot(self.folder)), (0, {pathlib.Path("config.json"): content}),
                         dry)
        done = doctor("config", "repair", cwd=self.folder)
        self.assertEqual(done.returncode, 0, done)
        after = snapshot(self.folder)
        self.assertEqual(sorted(map(str, after)), ["config.json", "config.json.broken-1"])
        self.assertEqual(after[pathlib.Path("config.json.broken-1")], content)
        self.assertEqual(self.check()[0], 0)
        return settings(self.config.read_text(encoding="utf-8"))

    def test_broken_files_are_understood_and_repaired(self):
        for name, (content, kind, where, field, values) in BROKEN.items():
            with self.subTest(name):
                self.write(content)
                status, found = self.check()
                self.assertEqual(status, 2)
                where = where if isinstance(where, tuple) else place(content, where)
                self.assertIn((kind, *where, field), [
                    (f["id"], f.get("line"), f.get("column"), f.get("field")) for f in found])
                self.assertIn("[json.exception.", by_id(found)["settings"]["json_error"])
                for finding in found[1:]:
                    self.assertTrue(finding["cause"] and finding["next"], finding)
                repaired = self.repair(content)
                self.assertEqual({key: repaired[key] for key in settings(DEFAULTS)}, settings(DEFAULTS) | values)

    def test_every_wrong_field_is_told(self):
        content = DEFAULTS
        for _, key in settings(DEFAULTS):
            content = content.replace(b'"%s": "' % key.encode(), b'"%s": 7, "x": "' % key.encode())
        self.write(content)
        wanted = set()
        for section, key in settings(DEFAULTS):
            line, column = place(content, b'"%s": 7' % key.encode())
            wanted.add((f"{section}.{key}", line, column + len(key) + 4))
        self.assertEqual({(f["field"], f["line"], f["column"]) for f in self.check()[1] if f["id"] == FIELD},
                         wanted)

    def test_files_that_load_are_left_alone(self):
        for name, content in FINE.items():
            with self.subTest(name):
                self.write(content)
                self.assertEqual(self.check()[0], 0)
                self.assertEqual(doctor("config", "repair", cwd=self.folder).returncode, 0)
                self.assertEqual(snapshot(self.folder), {pathlib.Path("config.json"): content})
        for name, (content, kind) in ODD.items():
            with self.subTest(name):
                self.write(content)
                status, found = self.check()
                self.assertEqual((status, found[-1]["id"]), (1, kind))

    def test_library_and_doctor_agree_whatever_the_file(self):
        draw = random.Random(7)
        for _ in range(40):
            content = bytearray(DEFAULTS)
            for _ in range(draw.randint(1, 3)):
                at = draw.randrange(len(content))
                content[at:at + draw.choice([0, 1, 1, 40])] = draw.choice(
                    [b"", b'"', b"{", b"}", b",", b":", b"\\", b"\n", b"\xFF", b"\0", b"7", b"[", b"]"])
            with self.subTest(bytes(content)):
                self.write(bytes(content))
                if self.check()[0] == 2:
                    self.repair(bytes(content))

    def test_what_else_is_in_a_file_stays(self):
        content = edit((b'"Settings": {', b'"More": {"big": 123456789012345678901234567890, "t": [true, 1.0]},'
                                          b' "Settings": {"note": "\xC3\xA4", '),
                       (ONE_VALUE, b'"Is_Staging": 1'))
        self.write(content)
        self.repair(content)
        text = self.config.read_text(encoding="utf-8")
        self.assertIn('"big": 123456789012345678901234567890', text)
        self.assertIn("1.0", text)
        self.assertIn('"note": "ä"', text)

    def test_a_broken_file_that_was_kept_is_never_lost(self):
        for number in (1, 2, 3):
            self.config.write_bytes(b"{" * number)
            self.assertEqual(doctor("config", "repair", cwd=self.folder).returncode, 0)
        self.assertEqual([(self.folder / f"config.json.broken-{n}").read_bytes() for n in (1, 2, 3)],
                         [b"{", b"{{", b"{{{"])

    def test_a_full_disk_changes_nothing(self):
        self.write(b"{" + b" " * 300)
        before = snapshot(self.folder)
        for limit in (0, 400, len(DEFAULTS) - 1):
            done = doctor("config", "repair", cwd=self.folder, preexec_fn=lambda size=limit: resource.setrlimit(
                resource.RLIMIT_FSIZE, (size, size)))
            self.assertNotEqual(done.returncode, 0)
            self.assertEqual(snapshot(self.folder), before)

    def test_without_a_library_nothing_is_repaired(self):
        self.write(b"{")
        before = snapshot(self.folder)
        self.assertEqual(doctor("config", "repair", cwd=self.folder, library="no.so").returncode, 2)
        self.assertEqual(findings("config", "check", cwd=self.folder, library="no.so")[0], 2)
        self.assertEqual(snapshot(self.folder), before)


def small_pe(names, machine=0x014C, flags=0x2102, version=(1, 0, 0, 0)):
    """A library file with nothing but exports, by ordinals in order, and a version."""
    count, base = len(names), 0x1000
    table = 40
    functions, name_table = table, table + 4 * count
    numbers, texts = name_table + 4 * count, name_table + 6 * count
    body, addresses = b"", []
    for name in ["LauncherDll.dll", *(name for name, _ in names)]:
        addresses.append(base + texts + len(body))
        body += name.encode() + b"\0"
    highest = max((ordinal for _, ordinal in names), default=0)
    section = struct.pack("<IIHHIIIIIII", 0, 0, 0, 0, addresses[0], 1, max(count, highest), count,
                          base + functions, base + name_table, base + numbers)
    section += struct.pack(f"<{count}I", *[base] * count)
    section += struct.pack(f"<{count}I", *addresses[1:])
    section += struct.pack(f"<{count}H", *[ordinal - 1 for _, ordinal in names]) + body
    section += bytes(-len(section) % 4)
    resources = len(section)
    for identifier, offset in ((16, 24), (1, 48)):
        section += struct.pack("<IIHHHHII", 0, 0, 0, 0, 0, 1, identifier, 0x80000000 | offset)
    section += struct.pack("<IIHHHHII", 0, 0, 0, 0, 0, 1, 0x409, 72)
    section += struct.pack("<IIII", base + resources + 88, 92, 0, 0)
    section += struct.pack("<HHH", 92, 52, 0) + "VS_VERSION_INFO\0".encode("utf-16-le") + bytes(2)
    section += struct.pack("<IIIIII", 0xFEEF04BD, 0x10000, version[0] << 16 | version[1],
                           version[2] << 16 | version[3], 0, 0)
    header = b"MZ" + bytes(58) + struct.pack("<I", 64) + b"PE\0\0"
    header += struct.pack("<HHIIIHH", machine, 1, 0, 0, 0, 224, flags)
    header += struct.pack("<H", 0x10B) + bytes(90) + struct.pack("<I", 16)
    header += struct.pack("<IIIIII", base, resources, 0, 0, base + resources, 200) + bytes(104)
    header += b".all\0\0\0\0" + struct.pack("<IIIIIIHHI", len(section), base, len(section), 512, 0, 0, 0, 0, 0)
    return header.ljust(512, b"\0") + section


GOOD_NAMES = [(export["decorated"], export["ordinal"]) for export in EXPORTS]


class Images(Case):
    def look(self, content):
        file = self.folder / "LauncherDll.dll"
        file.write_bytes(content)
        status, found = findings(library=file, cwd=self.folder)
        self.assertEqual(file.read_bytes(), content)
        return status, by_id(found)

    def test_a_library_of_windows_is_examined_without_loading_it(self):
        status, found = self.look(small_pe(GOOD_NAMES))
        self.assertEqual(status, 0, found)
        self.assertIn("not tried", found["load"]["text"])
        self.assertIn("1.0.0", found["version"]["text"])

    def test_what_is_wrong_with_a_library_is_told(self):
        swapped = GOOD_NAMES[:]
        swapped[3], swapped[4] = (swapped[3][0], 5), (swapped[4][0], 4)
        cases = {
            "missing": (small_pe(GOOD_NAMES[1:]), 2, "exports", "_QX_Allocate@8"),
            "plain": (small_pe([(e["name"], e["ordinal"]) for e in EXPORTS]), 2, "exports", "60 functions"),
            "ordinal": (small_pe(swapped), 2, "ordinals", "_QX_CreateProcess@12 (4 in place of 5)"),
            "64 bits": (small_pe(GOOD_NAMES, 0x8664), 2, "bitness", "64-bit x86"),
            "a program": (small_pe(GOOD_NAMES, flags=0x102), 2, "bitness", "is a program"),
            "version": (small_pe(GOOD_NAMES, version=(0, 9, 1, 0)), 1, "version", "0.9.1"),
            "empty": (b"", 2, "image", "empty"),
            "text": (b"not found", 2, "image", "no library at all"),
            "DOS": (b"MZ" + bytes(100), 2, "image", "DOS"),
            "ELF": (b"\x7fELF\1\1\1" + bytes(9) + b"\3" + bytes(60), 2, "bitness", "32-bit Linux"),
        }
        for name, (content, status, kind, text) in cases.items():
            with self.subTest(name):
                found = self.look(content)
                self.assertEqual(found[0], status, found)
                self.assertIn(text, found[1][kind]["text"])

    def test_damaged_libraries_are_told_and_do_no_harm(self):
        good = small_pe(GOOD_NAMES)
        draw = random.Random(11)
        for size in [*range(0, 700, 40), *range(700, len(good), 300)]:
            self.assertEqual(self.look(good[:size])[0], 2, size)
        for _ in range(50):
            damaged = bytearray(good)
            for _ in range(4):
                at = draw.choice([draw.randrange(64, 560), draw.randrange(len(good))])
                damaged[at] = draw.choice([0, 255, draw.randrange(256)])
            with self.subTest(damaged=bytes(damaged).hex()):
                self.assertIn(self.look(bytes(damaged))[0], (0, 1, 2))


class CheckUps(Case):
    def stand_in(self, **members):
        folder = self.folder / "steam"
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir()
        (folder / "steam_settings.json").write_text(json.dumps(members), encoding="utf-8")
        return dict(os.environ, STEAM_STAND_IN=str(folder))

    def test_all_is_well(self):
        status, found = findings(cwd=self.folder)
        self.assertEqual(status, 0, found)
        self.assertLessEqual({"library", "bitness", "exports", "load", "cipher", "readers", "settings",
                              "steam-library", "steam-user", "display", "code-page"}, by_id(found).keys())

    def test_a_library_that_crashes_is_told(self):
        calls = "".join(f"void {export['name']}(void) {{ __builtin_trap(); }}\n" for export in EXPORTS)
        library = self.folder / LIBRARY.name
        subprocess.run(["cc", "-shared", "-fPIC", "-xc", "-", "-o", str(library)], input=calls.encode(), check=True)
        done = doctor(library=library)
        self.assertEqual((done.returncode, done.stderr[:29]), (2, b"doctor: a call into the libra"), done)
        self.assertIn(b"all 60 functions are there", done.stdout)

    def test_nothing_is_changed(self):
        self.write(DEFAULTS)
        environment = self.stand_in()
        folders = [self.folder, LIBRARY.parent, DOCTOR.parent]
        before = [[(path, path.stat().st_mtime_ns, path.stat().st_size) for path in sorted(folder.rglob("*"))]
                  for folder in folders]
        for arguments in ([], ["--json"], ["config", "check"]):
            doctor(*arguments, cwd=self.folder, env=environment)
        self.assertEqual([[(path, path.stat().st_mtime_ns, path.stat().st_size)
                           for path in sorted(folder.rglob("*"))] for folder in folders], before)

    def test_steam_is_told_apart(self):
        for members, kind in (({"running": False}, "steam-client"), ({"subscribed": False}, "steam-session"),
                              ({"loggedOn": False}, "steam-user"), ({"currentLanguage": ""}, "steam-language"),
                              ({"currentLanguage": "klingon"}, "steam-language"),
                              ({"cloudEnabledForApp": False}, "steam-cloud")):
            with self.subTest(kind):
                status, found = findings(env=self.stand_in(**members))
                self.assertEqual((status, by_id(found)[kind]["status"]), (1, "warning"), found)
        alone = self.folder / LIBRARY.name
        shutil.copy(LIBRARY, alone)
        status, found = findings(library=alone)
        self.assertEqual((status, by_id(found)["steam-library"]["status"]), (1, "warning"))
        (self.folder / "libsteam_api.so").write_bytes(b"\x7fELF\1\1\1" + bytes(9) + b"\3" + bytes(60))
        status, found = findings(library=alone)
        self.assertEqual((status, by_id(found)["steam-library"]["status"]), (2, "broken"))

    def test_a_usage_that_is_wrong(self):
        for arguments in (["frobnicate"], ["config"], ["explain"], ["bundle"], ["--jsom"],
                          ["explain", "QX_Encod"], ["explain", "QX_Encode", "many"],
                          ["explain", "QX_Encode", "4294967296"]):
            done = doctor(*arguments, library=None)
            self.assertEqual((done.returncode, done.stdout), (3, b""), arguments)
        self.assertIn(b"QX_Encode", doctor("explain", "QX_Encod").stderr)

    def test_every_result_has_its_explanation(self):
        for export in EXPORTS:
            told = doctor("explain", export["decorated"]).stdout.decode()
            for entry in export["results"]:
                value = entry.get("result", entry.get("from"))
                self.assertRegex(told, rf"(?m)^{export['name']} {value}\b.*: {re.escape(entry['means'])}")
                # Alone, and in the last one's decimal form too.
                texts = {hex(value % 2**32)} if export["returns"] != "uint64_t" else {str(value)}
                for text in texts | ({str(value)} if entry is export["results"][-1] else set()):
                    done = doctor("explain", export["name"], text)
                    self.assertEqual(done.returncode, 0, done)
                    self.assertIn(f"{export['name']} {value}: {entry['means']}", done.stdout.decode())


class Bundles(Case):
    def setUp(self):
        super().setUp()
        self.home = self.folder / "home" / "ada"
        self.home.mkdir(parents=True)
        self.config = self.home / "config.json"
        self.config.write_bytes(edit((API_URL + b'",\n        "Do', str(self.home).encode() + b'/x",\n        "Do')))
        stand_in = self.home / "steam"
        stand_in.mkdir()
        (stand_in / "steam_settings.json").write_text(
            '{"personaName": "Countess", "accountId": 76561198000000001}', encoding="utf-8")
        self.environment = dict(os.environ, HOME=str(self.home), STEAM_STAND_IN=str(stand_in))
        self.zip = self.home / "report.zip"

    def bundle(self, *arguments):
        return doctor("bundle", str(self.zip), *arguments, cwd=self.home, env=self.environment)

    def test_a_bundle_is_whole_and_tells_nobody_who_the_user_is(self):
        done = self.bundle("--yes")
        self.assertEqual(done.returncode, 0, done)
        with zipfile.ZipFile(self.zip) as file:
            self.assertIsNone(file.testzip())
            contents = {name: file.read(name) for name in file.namelist()}
        self.assertEqual(set(contents), {"report.txt", "report.json", "versions.txt", "config.json"})
        self.assertIn(b"~/x", contents["config.json"])
        for secret in (str(self.home).encode(), b"Countess", b"76561198000000001"):
            for content in (*contents.values(), done.stdout, done.stderr):
                self.assertNotIn(secret, content)
        for name, content in contents.items():
            self.assertIn(b"---- " + name.encode() + b"\n" + content, done.stdout)

    def test_a_bundle_is_asked_for_and_replaces_nothing(self):
        self.assertEqual((self.bundle().returncode, self.zip.exists()), (2, False))
        self.zip.write_bytes(b"mine")
        self.assertEqual((self.bundle("--yes").returncode, self.zip.read_bytes()), (2, b"mine"))
        self.assertEqual(self.bundle("--yes", "--force").returncode, 0)
        self.assertTrue(zipfile.is_zipfile(self.zip))

    def test_what_cannot_be_shown_is_not_done(self):
        for close in (lambda: os.close(1), lambda: os.dup2(os.open("/dev/full", os.O_WRONLY), 1)):
            done = doctor("bundle", str(self.zip), "--yes", cwd=self.home, preexec_fn=close)
            self.assertEqual((done.returncode, self.zip.exists()), (2, False), done)
            done = doctor("explain", "QX_Encode", preexec_fn=close)
            self.assertEqual((done.returncode, done.stderr[:18]), (2, b"doctor: the output"))
        done = doctor("bundle", str(self.zip), "--yes", cwd=self.home, preexec_fn=lambda: os.close(2))
        self.assertEqual(done.returncode, 0)
        self.assertTrue(zipfile.is_zipfile(self.zip))

    def test_the_answer_counts(self):
        for answer in (b"n", b"y"):
            pid, terminal = pty.fork()
            if pid == 0:
                os.chdir(self.home)
                os.execve(DOCTOR, ["doctor", "bundle", "report.zip", "--library", str(LIBRARY)], self.environment)
            text = b""
            while b"[y/N]" not in text:
                text += os.read(terminal, 4096)
            os.write(terminal, answer + b"\n")
            try:
                while os.read(terminal, 4096):
                    pass
            except OSError:
                pass  # the end of a terminal
            os.close(terminal)
            self.assertEqual(os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1]), 0 if answer == b"y" else 2)
            self.assertEqual(self.zip.exists(), answer == b"y")


class Windows(Case):
    """What Wine alone can show, in few starts."""

    def test_the_library_itself(self):
        self.write(DEFAULTS)
        before = snapshot(self.folder)
        status, found = findings(library=None, cwd=self.folder)
        self.assertLess(status, 2, found)
        told = by_id(found)
        self.assertLessEqual({"load", "exports", "ordinals", "cipher", "readers", "memory", "system-information",
                              "steam-library", "steam-user", "display", "code-page"}, told.keys())
        for kind in ("bitness", "version", "ordinals", "cipher", "settings", "steam-user", "code-page"):
            self.assertEqual(told[kind]["status"], "ok", told[kind])
        self.assertEqual(snapshot(self.folder), before)

    def test_a_repair_and_a_bundle(self):
        content, _, _, _, values = BROKEN["a comma too many"]
        self.write(content)
        done = doctor("config", "repair", library=None, cwd=self.folder)
        self.assertEqual(done.returncode, 0, done)
        self.assertEqual((self.folder / "config.json.broken-1").read_bytes(), content)
        self.assertEqual(settings(self.config.read_text(encoding="utf-8")), settings(DEFAULTS) | values)
        done = doctor("bundle", "report.zip", "--yes", library=None, cwd=self.folder)
        self.assertLess(done.returncode, 2, done)
        with zipfile.ZipFile(self.folder / "report.zip") as file:
            self.assertIsNone(file.testzip())

    def test_other_libraries(self):
        for file in (DOCTOR, LIBRARY):
            shutil.copy(file, self.folder)
        alone = self.folder / DOCTOR.name
        done = subprocess.run([*RUN, str(alone), "--json"], stdout=subprocess.PIPE, cwd=self.folder, check=False)
        self.assertEqual((done.returncode, by_id(json.loads(done.stdout)["findings"])["steam-library"]["status"]),
                         (1, "warning"), done)
        (self.folder / LIBRARY.name).write_bytes(small_pe(GOOD_NAMES, 0x8664))
        done = subprocess.run([*RUN, str(alone)], stdout=subprocess.PIPE, cwd=self.folder, check=False)
        self.assertEqual(done.returncode, 2, done)
        self.assertIn(b"error 193", done.stdout)


def load_tests(loader, _tests, _pattern):
    cases = [Windows] if RUN else [Settings, Images, CheckUps, Bundles]
    return unittest.TestSuite(loader.loadTestsFromTestCase(case) for case in cases)


if __name__ == "__main__":
    WORK.mkdir(parents=True, exist_ok=True)
    unittest.main(argv=[sys.argv[0], *sys.argv[4:]])
