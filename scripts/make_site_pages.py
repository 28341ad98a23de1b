#!/usr/bin/env python3
"""Writes the site's pages as Markdown: one for each export, an index of them, and the documents.

Usage: scripts/make_site_pages.py FOLDER

An export's page puts together what is told in three places and nowhere else: the prototype and the
text of include/launcher_dll.h, checks, effects and results of src/frame/exports.json, and a snippet
of examples/each. Exit status: 1, with the reason, if an export lacks any of them.
"""

import json
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
CONSTANT = re.compile(r"^#define (QX_\w+) \(?(-?\d+)\)?", re.M)


def header_parts(header):
    """For each export its section, its comment and its prototype."""
    parts = {}
    section, comment = None, ""
    tokens = re.compile(r"/\* ---- (.*?) -+ \*/|/\* ?(.*?) ?\*/|^QX_API .*?;", re.S | re.M)
    for token in tokens.finditer(header):
        if token[1]:
            section, comment = token[1], ""
        elif token[2] is not None:
            comment = re.sub(r"^ \* ?", "", token[2], flags=re.M)
        else:
            name = re.search(r"QX_CALL (\w+)\(", token[0])[1]
            parts[name] = (section, comment, token[0].replace("QX_API ", ""))
    return parts


def snippets():
    """For each export what stands between the two lines that name it."""
    return {name: code for file in sorted((ROOT / "examples/each").glob("*.c"))
            for name, code in re.findall(r"^/\* \[(\w+)\] \*/\n(.*?)^/\* \[\1\] \*/$",
                                         file.read_text(encoding="ascii"), re.S | re.M)}


def split_comment(comment):
    """The text of an export without its lines on arguments, and what those say of each.

    Such a line begins with the name and two blanks or more; a longer text goes on below itself."""
    arguments, rest, name, column = {}, [], None, 0
    for line in comment.strip().split("\n"):
        begun = re.match(r"(\w+)  +(?=\S)", line)
        if begun:
            name, column = begun[1], begun.end()
            arguments[name] = line[column:]
        elif name and line[:column].isspace():
            arguments[name] += " " + line.strip()
        else:
            name = None
            rest.append(line)
    return re.sub(r"\n{3,}", "\n\n", "\n".join(rest)).strip(), arguments


def cell(text):
    """A text for a table's cell, where only what stands in backquotes is markup."""
    parts = text.replace("|", "\\|").split("`")
    parts[::2] = [re.sub(r"([*_<])", r"\\\1", part) for part in parts[::2]]
    # Doxygen leaves backslashes standing between quotes.
    return "`".join(parts).replace('"', "&quot;")


def number(result):
    if "result" in result:
        return str(result["result"])
    return f"{result['from']} to {result['to']}"


def page(export, part, snippet, names):
    section, (comment, told), prototype = part[0], split_comment(part[1]), part[2]
    prototype = re.sub(r"^ +", " " * (prototype.index("(") + 1), prototype, flags=re.M)
    lines = [f"# {export['name']} {{#{export['name']}}}", "",
             f"{section}. In the export table: `{export['decorated']}`, ordinal {export['ordinal']}.",
             "", "```c", prototype, "```", "", "## What it does", "", "```text", comment, "```"]
    if export["arguments"]:
        lines += ["", "## Arguments", "", "| | type | |", "|---|---|---|"]
        for argument in export["arguments"]:
            kind, name = re.fullmatch(r"(.*?)(\w+)", argument).groups()
            lines.append(f"| `{name}` | `{kind.strip()}` | {cell(told.get(name, 'see above'))} |")
    if export["checks"]:
        lines += ["", "## In this order", ""]
        lines += [f"{i}. {cell(text)}" for i, text in enumerate(export["checks"], 1)]
    lines += ["", "## Results", ""]
    if export["results"]:
        lines += ["| result | name | meaning | what to do |", "|---|---|---|---|"]
        for result in export["results"]:
            named = names.get((export["returns"], result.get("result")), "")
            lines.append(f"| {number(result)} | {f'`{named}`' if named else ''} | "
                         f"{cell(result['means'])} | {cell(result['do'])} |")
    else:
        lines.append("None.")
    lines += ["", "## Side effects", ""]
    lines += [f"- {cell(text)}" for text in export["effects"]] or ["None."]
    lines += ["", "## An example", "", "```c", snippet.rstrip(), "```", ""]
    return "\n".join(lines)


def write_documents(folder):
    """Copies the documents into one folder; links to what is no page become plain words."""
    documents = [ROOT / "SECURITY.md", ROOT / "CHANGELOG.md", *sorted((ROOT / "docs").glob("*.md"))]
    pages = {document.name for document in documents}

    def link(match):
        text, target = match[1], match[2].rsplit("/", 1)[-1]
        if match[2].startswith(("http", "#")) or target in pages or target.endswith(".svg"):
            return f"[{text}]({target if '://' not in match[2] else match[2]})"
        return text

    for document in documents:
        text = re.sub(r"(?<!\!)\[([^]]+)\]\(([^)#]+)\)", link, document.read_text(encoding="utf-8"))
        (folder / document.name).write_text(text, encoding="utf-8")


def main():
    folder = pathlib.Path(sys.argv[1])
    header = (ROOT / "include/launcher_dll.h").read_text(encoding="ascii")
    table = json.loads((ROOT / "src/frame/exports.json").read_text(encoding="utf-8"))["exports"]
    parts = header_parts(header)
    examples = snippets()
    names = {("CipherCode" if "CIPHER" in name else "ResultCode", int(value)): name
             for name, value in CONSTANT.findall(header)}

    lacking = [f"{export['name']}: no {what}" for export in table
               for what, where in (("declaration in the header", parts), ("example", examples))
               if export["name"] not in where]
    lacking += [f"{name}: its example does not call it" for name, code in examples.items()
                if f"{name}(" not in code]
    if lacking or len(table) != 60:
        sys.exit("\n".join(lacking) or f"{len(table)} exports where 60 are wanted")

    folder.mkdir(parents=True, exist_ok=True)
    sections = {}
    for export in table:
        part = parts[export["name"]]
        text = page(export, part, examples[export["name"]], names)
        (folder / f"{export['name']}.md").write_text(text, encoding="utf-8")
        sections.setdefault(part[0], []).append((export["name"], part[1]))
    index = ["# The 60 functions {#functions}", ""]
    for section in dict.fromkeys(part[0] for part in parts.values()):
        index += [f"## {section}", "", "| | |", "|---|---|"]
        for name, comment in sections[section]:
            first = re.split(r"(?<=\.)\s", " ".join(comment.split()), maxsplit=1)[0]
            index.append(f"| @ref {name} | {cell(first)} |")
        index.append("")
    (folder / "functions.md").write_text("\n".join(index), encoding="utf-8")
    write_documents(folder)


if __name__ == "__main__":
    main()
