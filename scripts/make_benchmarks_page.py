#!/usr/bin/env python3
"""Makes a page with tables, and a plot, of what the benchmarks measured.

Usage: make_benchmarks_page.py benchmarks.json page.md plot.svg

A figure is the median of the repetitions. A ratio is that of two medians; behind it, in brackets,
stand the lower and the upper quartile of the ratios repetition by repetition.
"""

import collections
import json
import os
import platform
import statistics
import sys

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


def figure(family, size, values):
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
    lines = [f"### {title[0].upper()}{title[1:]}", "",
             "| | median | " + " | ".join(f"{who} is faster by" for who in ours) + " |",
             "|---|---|" + "---|" * len(ours)]
    for who in sorted(entries, key=lambda who: statistics.median(entries[who])):
        cells = ["" if is_ours(who) else ratio(entries[who], entries[one]) for one in ours]
        mark = " (the best of the others)" if who == best and len(peers) > 1 else ""
        lines.append(f"| {who}{mark} | {figure(family, size, entries[who])} | " +
                     " | ".join(cells) + " |")
    return lines + [""]


def plot(families):
    entries = families["cipher"][65536]
    speeds = sorted(((65536 / statistics.median(values) * 1e3, who)
                     for who, values in entries.items()), reverse=True)
    top, row = speeds[0][0], 26
    lines = [f'<svg xmlns="http://www.w3.org/2000/svg" width="760" height="{len(speeds) * row + 40}"'
             ' font-family="sans-serif" font-size="13">',
             '<rect width="100%" height="100%" fill="white"/>',
             '<text x="10" y="20">Blowfish over 64 KiB, MB/s</text>']
    for i, (speed, who) in enumerate(speeds):
        y = 34 + i * row
        color = "#1f6feb" if is_ours(who) else "#9aa4b2"
        lines.append(f'<text x="10" y="{y + 15}">{who}</text>'
                     f'<rect x="220" y="{y}" width="{speed / top * 450:.0f}" height="20"'
                     f' fill="{color}"/>'
                     f'<text x="{226 + speed / top * 450:.0f}" y="{y + 15}">{speed:,.0f}</text>')
    return lines + ["</svg>"]


def processor():
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        found = {key.strip(): value.strip() for key, _, value in
                 (line.partition(":") for line in file) if value}
    return (f"{found.get('model name', platform.machine())}, family {found.get('cpu family')}, "
            f"model {found.get('model')}")


def main():
    source, page, picture = sys.argv[1:]
    context, families = read(source)
    lines = [
        "# Benchmarks", "",
        "Made by `scripts/bench.sh`; do not edit. Native 64-bit build, one thread, its CPU time,",
        "medians of interleaved repetitions. A ratio above 1 means that the library is faster; in",
        "brackets the quartiles of the ratios, repetition by repetition.", "",
        f"- Processor: {processor()}",
        f"- Kernels that ran: {context['kernels']}",
        f"- Peers that were not installed: {context['absent peers']}", "",
        f"![Blowfish over 64 KiB]({os.path.basename(picture)})", ""]
    notes = {
        "cipher": "Electronic-codebook mode, in place, with the key set up before.",
        "key setup": "A key of 16 bytes that is not the built-in one.",
        "encode": "A whole container: digest, copy, cipher. The peers set up their key and use "
                  "OpenSSL's SHA-256, as the native library does; the built-in key's set-up is "
                  "done by the compiler.",
        "decode": "A whole container that is copied ahead of each turn, the copy included.",
        "lookup": "QX_LoadString of a setting, beside opening, reading and parsing `config.json`.",
        "removal of 20,000 files": "20 folders. The native layer asks for each entry's attributes "
                                   "as Windows' listing gives them, which is its extra cost.",
    }
    for family, note in notes.items():
        lines += [f"## {family[0].upper()}{family[1:]}", "", note, ""]
        for size in sorted(families[family]):
            lines += table(family, size, families[family][size])
    with open(page, "w", encoding="utf-8") as file:
        file.write("\n".join(lines).rstrip() + "\n")
    with open(picture, "w", encoding="utf-8") as file:
        file.write("\n".join(plot(families)) + "\n")


if __name__ == "__main__":
    main()
