#!/usr/bin/env python3
"""Makes a page with tables and a plot from the results of the benchmarks.

A figure is the median of the repetitions. A ratio is the ratio of two medians. The brackets have the
lower and the upper quartile of the ratios of the single repetitions.
"""

import argparse
import collections
import json
import math
import os
import platform
import statistics
import time

DLL = "## The DLL"
NATIVE = "## The native library"
SIZES = {64: "64 B", 2048: "2 KiB", 65536: "64 KiB", 1048576: "1 MiB", 16777216: "16 MiB"}


def read(path):
    with open(path, encoding="utf-8") as file:
        report = json.load(file)
    times = collections.defaultdict(list)
    for run in report["benchmarks"]:
        if run["run_type"] == "iteration":
            nanoseconds = run["cpu_time"] * {"ns": 1, "us": 1e3, "ms": 1e6}[run["time_unit"]]
            times[run["run_name"].removesuffix("/iterations:1")].append(nanoseconds)
    families = collections.defaultdict(lambda: collections.defaultdict(dict))
    for name, values in times.items():
        family, who, *size = name.split("/")
        families[family][int(size[0]) if size else 0][who] = values
    return report["context"], families


def is_ours(who):
    return who.startswith("ours")


def ratio(peer, ours):
    pairs = sorted(p / o for p, o in zip(peer, ours))
    low, high = pairs[len(pairs) // 4], pairs[-1 - len(pairs) // 4]
    return f"{statistics.median(peer) / statistics.median(ours):.2f} ({low:.2f} to {high:.2f})"


def figure(size, values):
    nanoseconds = statistics.median(values)
    if size and size >= 2048:
        return f"{size / nanoseconds * 1e3:,.0f} MB/s"
    if nanoseconds >= 1e6:
        return f"{nanoseconds / 1e6:,.1f} ms"
    return f"{nanoseconds / 1e3:,.2f} µs"


def table(family, size, entries):
    peers = [who for who in entries if not is_ours(who)]
    best = min(peers, key=lambda who: statistics.median(entries[who]))
    ours = sorted((who for who in entries if is_ours(who)),
                  key=lambda who: statistics.median(entries[who]))
    title = family + (f", {SIZES[size]}" if size else "")
    lines = [f"#### {title[0].upper()}{title[1:]}", "",
             "| | median | " + " | ".join(f"{who} is faster by" for who in ours) + " |",
             "|---|---|" + "---|" * len(ours)]
    for who in sorted(entries, key=lambda who: statistics.median(entries[who])):
        cells = ["" if is_ours(who) else ratio(entries[who], entries[one]) for one in ours]
        mark = " (the best of the others)" if who == best and len(peers) > 1 else ""
        lines.append(f"| {who}{mark} | {figure(size, entries[who])} | " +
                     " | ".join(cells) + " |")
    return lines + [""]


def processor():
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        found = {key.strip(): value.strip() for key, _, value in
                 (line.partition(":") for line in file) if value}
    return (f"{found.get('model name', platform.machine())}, family {found.get('cpu family')}, "
            f"model {found.get('model')}")


def measured_on(*more):
    return (f"Measured on {time.strftime('%Y-%m-%d')}: " +
            "; ".join([processor(), *more]) + ".")


def native_section(path):
    context, families = read(path)
    lines = [
        NATIVE, "",
        "The 64-bit build for Linux and other libraries, each with one thread, in CPU time. \"Ours\" is",
        "LauncherDll. A ratio of 2 means that LauncherDll is twice as fast. The numbers in parentheses",
        "are the quartiles of the ratios of the single runs.", "",
        "LauncherDll has two implementations of the cipher: *byte planes*, 256 blocks at a time with",
        "AVX-512 VBMI, and *side by side*, eight blocks at a time. *One block at a time* is a simple",
        "loop for comparison.", "",
        measured_on(f"implementations that ran: {context['kernels']}",
                    f"libraries that were not installed: {context['absent peers']}"), ""]
    notes = {
        "cipher": "Electronic-codebook mode, in place. The time does not include the key setup.",
        "key setup": "A key of 16 bytes that is not the built-in one.",
        "encode": "A whole container: digest, copy, cipher. All use OpenSSL's SHA-256. The other "
                  "libraries set up their key; LauncherDll does not set up the built-in key at run "
                  "time.",
        "decode": "A whole container. Decoding works in place, so the time includes a copy of the "
                  "container.",
        "lookup": "QX_LoadString of a setting, compared with opening, reading and parsing "
                  "`config.json` with the JSON library.",
        "removal of 20,000 files": "In 20 folders. The native build is slower because it asks "
                                   "Linux for the attributes of each entry, which a listing of "
                                   "Windows contains.",
    }
    for family, note in notes.items():
        lines += [f"### {family[0].upper()}{family[1:]}", "", note, ""]
        for size in sorted(families[family]):
            lines += table(family, size, families[family][size])
    return lines


def read_dll(path):
    """The median microseconds by what was timed and its size in bytes."""
    times = collections.defaultdict(list)
    with open(path, encoding="utf-8") as file:
        for line in file:
            name, size, microseconds = line.rstrip("\n").split("\t")
            times[name, int(size)].append(float(microseconds))
    return {key: statistics.median(values) for key, values in times.items()}


def microseconds(value):
    return f"{value:,.0f}" if value >= 100 else f"{value:,.1f}"


def dll_section(times, wine, picture):
    sizes = [size for name, size in times if name == "file_cipher_encode"]
    lines = [
        DLL, "",
        "The 32-bit DLL under Wine. The table shows the time of whole calls in microseconds.", "",
        measured_on(wine), "",
        f"![Whole calls of the DLL]({os.path.basename(picture)})", "",
        "| | " + " | ".join(SIZES[size] for size in sizes) + " |",
        "|---|" + "---|" * len(sizes)]
    for name in ("file_cipher_encode", "file_cipher_decode", "digest by CNG",
                 "digest by CryptoAPI"):
        cells = [microseconds(times[name, size]) for size in sizes]
        lines.append(f"| {name} | " + " | ".join(cells) + " |")
    lookup = times["lookup, output to file", 0]
    lines += [
        "",
        "The key is the built-in one. Decoding works in place, so its time includes a copy of the",
        "container. The digest is a part of both calls. The DLL computes it with CNG, and with CryptoAPI",
        "only on Windows before 10. For 2 KiB, one CryptoAPI digest takes",
        f"{times['digest by CryptoAPI', 2048] / times['file_cipher_encode', 2048]:,.0f} times as long"
        " as the call of file_cipher_encode.", "",
        "| | time in µs | |", "|---|---|---|",
        f"| QX_Decode, 2 KiB | {microseconds(times['QX_Decode', 2048])} |"
        f" {times['QX_Decode', 2048] / times['three lookups', 0]:.2f} times as long as three lookups, which it"
        " contains |"]
    for output in ("file", "pipe", "character device"):
        value = times[f"lookup, output to {output}", 0]
        lines.append(f"| QX_LoadString, output to a {output} | {microseconds(value)} |"
                     f" {value / lookup:.2f} times as long as to a file |")
    lines.append("| opening and reading `config.json` alone | "
                 f"{microseconds(times['config.json, opened and read', 0])} | |")
    lines.append(f"| key setup | {microseconds(times['key set-up', 0])} | not needed for the built-in key |")
    for name, size in times:
        if name.startswith("cipher, "):
            lines.append(f"| {name}, 64 KiB | {microseconds(times[name, size])} |"
                         f" {size / times[name, size]:,.0f} MB/s |")
    return lines + [""]


def plot(times):
    """Bars for whole calls of the DLL, and grey bars for a part of the work without the DLL.

    A label is above its bar, so that the plot can be read on a phone."""
    rows = [(name, "2 KiB", times[name, 2048]) for name in (
        "file_cipher_encode", "file_cipher_decode", "QX_Decode", "digest by CNG", "digest by CryptoAPI")]
    rows.append(("QX_LoadString", "output to a file", times["lookup, output to file", 0]))
    rows.append(("config.json", "opened and read", times["config.json, opened and read", 0]))
    rows.sort(key=lambda row: row[2])
    height = 38
    whole = len(rows) * height + 34
    lines = [f'<svg xmlns="http://www.w3.org/2000/svg" width="400" height="{whole}"'
             f' viewBox="0 0 400 {whole}" font-family="sans-serif" font-size="14">',
             '<rect width="100%" height="100%" fill="white"/>',
             '<text x="8" y="20">Microseconds, logarithmic; grey: without the DLL</text>']
    scale = 310 / math.log10(rows[-1][2])
    for i, (name, what, value) in enumerate(rows):
        y = 32 + i * height
        width = max(math.log10(value), 0.02) * scale
        color = "#1f6feb" if name.startswith(("file_", "QX_")) else "#9aa4b2"
        lines.append(f'<text x="8" y="{y + 12}">{name}, {what}</text>'
                     f'<rect x="8" y="{y + 17}" width="{width:.0f}" height="14" fill="{color}"/>'
                     f'<text x="{14 + width:.0f}" y="{y + 29}">{microseconds(value)}</text>')
    return lines + ["</svg>"]


def section_of(page, heading):
    """The section of the page so far."""
    with open(page, encoding="utf-8") as file:
        lines = file.read().splitlines()
    start = lines.index(heading)
    ends = [i for i, line in enumerate(lines) if i > start and line.startswith("## ")]
    return lines[start:ends[0] if ends else None]


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--native", metavar="JSON", help="results of the native benchmarks")
    parser.add_argument("--dll", metavar="TSV", help="results of dll_benchmark")
    parser.add_argument("--wine", help="the version of Wine")
    parser.add_argument("old_page", help="has the sections that were not measured now")
    parser.add_argument("page")
    parser.add_argument("plot")
    given = parser.parse_args()

    lines = ["# Benchmarks", "",
             "`scripts/bench.sh` writes this page; do not edit it. Each number is the median of several",
             "runs. The runs of the programs that are compared alternate.", ""]
    if given.dll:
        times = read_dll(given.dll)
        lines += dll_section(times, given.wine, given.plot)
        with open(given.plot, "w", encoding="utf-8") as file:
            file.write("\n".join(plot(times)) + "\n")
    else:
        lines += section_of(given.old_page, DLL)
    lines += native_section(given.native) if given.native else section_of(given.old_page, NATIVE)
    with open(given.page, "w", encoding="utf-8") as file:
        file.write("\n".join(lines).rstrip() + "\n")


if __name__ == "__main__":
    main()
