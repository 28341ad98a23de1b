#!/usr/bin/env python3
"""Writes the pages of the website as Markdown to FOLDER/pages, and FOLDER/mkdocs.yml.

Usage: scripts/make_site_pages.py FOLDER

An export's page combines the prototype and the text of include/launcher_dll.h, the checks, effects
and results of src/frame/exports.json, and a snippet of examples/each. Exit status: 1, with the
reason, if an export lacks any of them.
"""

import json
import pathlib
import re
import shutil
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
HEADER = (ROOT / "include/launcher_dll.h").read_text(encoding="ascii")
EXPORTS = json.loads((ROOT / "src/frame/exports.json").read_text(encoding="utf-8"))["exports"]
# Name, number and meaning.
CONSTANTS = re.findall(r"^#define (QX_\w+) \(?(-?\d+)\)? +/\* (.*?) \*/$", HEADER, re.M)
NAMES = {("CipherCode" if "CIPHER" in name else "ResultCode", int(number)): name
         for name, number, _ in CONSTANTS}
LINKS = {export["name"]: f"{export['name']}.md" for export in EXPORTS}
LINKS.update((name, f"results.md#{name}") for name in NAMES.values())
# The page of each document. TARGETS also has the pages for links to other files.
PAGES = {path: f"{path.stem}.md" for path in [
    *(ROOT / "docs").glob("*.md"), ROOT / "SECURITY.md", ROOT / "CHANGELOG.md"]}
PAGES.update((ROOT / f"bindings/{name}/README.md", f"{name}.md") for name in ("python", "csharp"))
TARGETS = {**PAGES, ROOT / "README.md": "index.md", ROOT / "include/launcher_dll.h": "functions.md",
           ROOT / "include/launcher_dll.hpp": "cpp.md",
           ROOT / "docs/steam-stand-in/README.md": "steam-stand-in.md"}  # its name in the package
TARGETS.update((ROOT / "docs" / name, name) for name in ("functions.md", "results.md", "cpp.md"))


def prose(text):
    """A comment as Markdown: indented lines are code, names of exports and constants are links."""
    def part(match):
        code, word = match[1], match[2]
        if code:
            return code
        return f"[`{word}`]({LINKS[word]})" if word in LINKS else re.sub(r"[*_<]", r"\\\g<0>", match[0])
    return re.sub(r"(^    .*$|`[^`]*`)|\b(\w+)\b|[*<]", part, text, flags=re.M)


def summary(comment):
    return prose(re.split(r"(?<=\.)\s", " ".join(comment.split()), maxsplit=1)[0])


def constant(export, result):
    """The name of a result; a 0 that is a failure has none."""
    number = result.get("result")
    return "" if number == 0 and "failure" in result else NAMES.get((export["returns"], number), "")


def item(term, text):
    """An entry of a definition list, which a phone shows better than a table."""
    return f"{term}\n:   {text}\n"


def anchor(title):
    return re.sub(r"\s+", "-", re.sub(r"[^\w\s-]", "", title.lower()))


def header_parts():
    """Two dictionaries: the text of each section; the section, comment and prototype of each export."""
    sections, exports = {}, {}
    tokens = re.compile(r"/\* ---- (.*?) -+ \*/|/\* ((?:(?!\*/).)*?)\s*\*/\n(\n|QX_API .*?;)", re.S)
    for title, comment, code in tokens.findall(HEADER):
        comment = re.sub(r"^ \* ?", "", comment, flags=re.M)
        if title:
            section = title
            sections[section] = ""
        elif code == "\n" and sections:
            sections[section] = comment
        elif code.startswith("QX_API"):
            name = re.search(r"QX_CALL (\w+)\(", code)[1]
            exports[name] = (section, comment, code.removeprefix("QX_API "))
    return sections, exports


def snippets():
    """The code between the two lines that name an export, for each export."""
    return {name: code for file in sorted((ROOT / "examples/each").glob("*.c"))
            for name, code in re.findall(r"^/\* \[(\w+)\] \*/\n(.*?)^/\* \[\1\] \*/$",
                                         file.read_text(encoding="ascii"), re.S | re.M)}


def export_page(export, section, comment, prototype, snippet):
    prototype = re.sub(r"^ +", " " * (prototype.index("(") + 1), prototype, flags=re.M)
    # An argument's line begins with its name and two spaces or more; its next lines are indented.
    pattern = r"^(\w+)  +(\S.*(?:\n  .*)*)\n?"
    lines = [f"# {export['name']}", "", "```c", prototype, "```", "",
             prose(re.sub(pattern, "", comment, flags=re.M)), "",
             f"Group: [{section}](functions.md#{anchor(section)}). Name in the DLL: "
             f"`{export['decorated']}`. Ordinal: {export['ordinal']}.", ""]
    arguments = re.findall(pattern, comment, re.M)
    if arguments:
        lines += ["## Arguments", ""]
    lines += [item(f"`{name}`", prose(" ".join(text.split()))) for name, text in arguments]
    lines += ["## Order of checks", ""]
    lines += [f"{i}. {prose(text)}" for i, text in enumerate(export["checks"], 1)]
    lines += ["", "## Results", ""]
    for result in export["results"]:
        number = result.get("result", f"{result.get('from')} to {result.get('to')}")
        term = f"`{number}` {prose(constant(export, result))}"
        step = f"\n\n    **What to do:** {prose(result['do'])}" if result["do"] else ""
        lines.append(item(term, prose(result["means"]) + step))
    lines += [] if export["results"] else ["None.", ""]
    lines += ["## Side effects", ""]
    lines += [f"- {prose(text)}" for text in export["effects"]] or ["None."]
    lines += ["", "## Example", "", "```c", snippet.rstrip(), "```", ""]
    return "\n".join(lines)


def functions_page(sections, exports):
    lines = [f"# The {len(EXPORTS)} functions", ""]
    for section, text in sections.items():
        lines += [f"## {section}", ""]
        lines += [f"- {prose(name)}<br>{summary(comment)}"
                  for name, (place, comment, _) in exports.items() if place == section]
        lines += ["", prose(text), ""]
    return "\n".join(lines)


def results_page():
    lines = ["# Result codes", "", "The page of each function explains its results and what to do "
             "next.", ""]
    for kind in ("ResultCode", "CipherCode"):
        lines += [f"## {kind}", ""]
        for name, number, meaning in CONSTANTS:
            if NAMES.get((kind, int(number))) == name:
                users = [prose(export["name"]) for export in EXPORTS
                         if name in [constant(export, result) for result in export["results"]]]
                text = prose(meaning[0].upper() + meaning[1:])
                lines.append(item(f"`{name}` `{number}` {{#{name}}}",
                                  f"{text}.\n\n    " + ", ".join(users)))
    return "\n".join(lines)


def wrapper_page():
    """The classes and functions of the C++ wrapper with their comments, by section."""
    text = (ROOT / "include/launcher_dll.hpp").read_text(encoding="ascii")
    text = re.sub(r"^namespace detail \{.*?^\}  // namespace detail$", "", text, flags=re.S | re.M)
    lines = ["# The C++ wrapper", ""]
    tokens = re.compile(r"^// ---- (.*?)(?: -+)?$|^((?://.*\n)+)"
                        r"((?:template.*\n)?(?:class|struct|enum)(?:.|\n)*?^\};|"
                        r"(?:template|inline|using|constexpr)(?:[^;{]|\{\})*|$)", re.M)
    for title, comment, code in tokens.findall(text):
        if title:
            lines += [f"## {title}", ""]
        else:
            code = re.sub(r"\s* private:.*", "\n};", code, flags=re.S).strip()
            if code.startswith("inline "):
                code = code.replace("\n       ", "\n").removeprefix("inline ")
            # Removes the bodies of members, and the initializers of constructors.
            code = re.sub(r"(\))([\w ]*)(?:\s+: [^;]*?)? \{(?:[^{}]|\{[^{}]*\})*\}(?=\n)", r"\1\2;", code)
            lines += ["```cpp", code, "```"] if code else []
            lines += [prose(re.sub(r"^// ?", "", comment, flags=re.M)), ""]
    return "\n".join(lines)


def document(path, folder):
    """The text of a document for the site: with links to the site's pages, also for names of exports
    and constants.

    Copies other files that the document links to."""
    def link(match):
        target, name = (path.parent / match[2]).resolve(), match[2]
        if not name or target.is_dir():
            return match[0] if not name else match[1]
        if target in TARGETS:
            name = TARGETS[target]
        elif target.is_file():
            name = str(target.relative_to(ROOT))
            (folder / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(target, folder / name)
        return f"[{match[1]}]({name}{match[3]})"

    text = re.sub(r"\[([^]]+)\]\(([^)#]*)(#[^)]*|)\)", link, path.read_text(encoding="utf-8"))
    return re.sub(r"(?<!\[)`(\w+)`", lambda name: prose(name[1]) if name[1] in LINKS else name[0], text)


def main():
    folder = pathlib.Path(sys.argv[1]) / "pages"
    folder.mkdir(parents=True)
    sections, exports = header_parts()
    examples = snippets()
    lacking = [f"{export['name']}: no {what}" for export in EXPORTS
               for what, found in (("declaration in the header", exports), ("example", examples))
               if export["name"] not in found]
    lacking += [f"{name}: its example does not call it" for name, code in examples.items()
                if f"{name}(" not in code]
    if lacking:
        sys.exit("\n".join(lacking))

    pages = {LINKS[export["name"]]: export_page(export, *exports[export["name"]],
                                                examples[export["name"]]) for export in EXPORTS}
    pages.update({"functions.md": functions_page(sections, exports), "results.md": results_page(),
                  "cpp.md": wrapper_page()})
    pages.update((name, document(path, folder)) for path, name in PAGES.items())
    for name, text in pages.items():
        (folder / name).write_text(text, encoding="utf-8")
    functions = ["functions.md", "results.md", *({section: [
        LINKS[name] for name, part in exports.items() if part[0] == section]} for section in sections)]
    settings = (ROOT / "docs/mkdocs.yml").read_text(encoding="utf-8")
    settings = settings.replace("FUNCTIONS", json.dumps(functions)).replace(
        "VERSION", re.search(r'#define QX_VERSION "(.*)"', HEADER)[1])
    (folder.parent / "mkdocs.yml").write_text(settings, encoding="utf-8")


if __name__ == "__main__":
    main()
