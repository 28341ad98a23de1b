#!/usr/bin/env python3
"""Writes THIRD_PARTY_NOTICES.md and LauncherDll.spdx.json: the third-party parts of the package.

Usage: scripts/make_notices.py COMPONENTS VERSION FOLDER

COMPONENTS is cmake/third_party/components.json.in with the versions of this build filled in. VERSION
is the package's version. The texts of the licences are in cmake/third_party. The time in the second
file is SOURCE_DATE_EPOCH if that is set.
"""

import json
import os
import pathlib
import re
import sys
import time

TEXTS = pathlib.Path(__file__).resolve().parent.parent / "cmake" / "third_party"
NOASSERTION = "NOASSERTION"


def notices(components):
    lines = ["# Third-party notices", "",
             "LauncherDll itself is under the MIT licence: see `LICENSE`. It contains:", "",
             "| what | version | licence | in |", "|---|---|---|---|"]
    lines += [f"| [{c['name']}]({c['url']}) ({c['author']}) | {c['version']} | {c['license']} "
              f"| {c['in']} |" for c in components]
    lines += ["", "The cipher is Blowfish by Bruce Schneier, which is unpatented and free to use; the "
              "code is ours."]
    for component in components:
        if component["text"]:
            lines += ["", f"## {component['name']}", "", "```text", component["text"].strip(), "```"]
    return "\n".join(lines) + "\n"


def spdx(components, version):
    """An SPDX 2.3 document (ISO/IEC 5962)."""
    created = time.gmtime(int(os.environ.get("SOURCE_DATE_EPOCH", time.time())))
    own = {"name": "LauncherDll", "version": version, "author": "the LauncherDll authors",
           "license": "MIT", "url": NOASSERTION}
    packages, relationships = [], []
    for component in [own, *components]:
        identifier = "SPDXRef-" + re.sub(r"[^A-Za-z0-9]+", "-", component["name"]).strip("-")
        packages.append({
            "name": component["name"], "SPDXID": identifier, "versionInfo": component["version"],
            "supplier": "Organization: " + component["author"],
            "downloadLocation": component["url"], "filesAnalyzed": False,
            "licenseConcluded": component["license"], "licenseDeclared": component["license"],
            "copyrightText": NOASSERTION})
        kind, source = (("DESCRIBES", "SPDXRef-DOCUMENT") if component is own else
                        ("CONTAINS", packages[0]["SPDXID"]))
        relationships.append({"spdxElementId": source, "relationshipType": kind,
                              "relatedSpdxElement": identifier})
    return {
        "spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT",
        "name": f"LauncherDll-{version}",
        "documentNamespace": f"https://launcherdll.example/spdx/{version}/"
                             f"{time.strftime('%Y%m%d%H%M%S', created)}",
        "creationInfo": {"created": time.strftime("%Y-%m-%dT%H:%M:%SZ", created),
                         "creators": ["Tool: make_notices.py"]},
        "packages": packages, "relationships": relationships,
        "hasExtractedLicensingInfos": [
            {"licenseId": c["license"], "name": c["name"], "extractedText": c["text"]}
            for c in components if c["license"].startswith("LicenseRef-")]}


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    components = json.loads(pathlib.Path(sys.argv[1]).read_text(encoding="utf-8"))
    for component in components:
        if not re.fullmatch(r"\d+(\.\d+)*(-\w+)?", component["version"]):
            sys.exit(f"make_notices: no version of {component['name']}: '{component['version']}'")
        notice = component.get("notice")
        component["text"] = (TEXTS / notice).read_text(encoding="utf-8") if notice else ""
    folder = pathlib.Path(sys.argv[3])
    (folder / "THIRD_PARTY_NOTICES.md").write_text(notices(components), encoding="utf-8")
    (folder / "LauncherDll.spdx.json").write_text(
        json.dumps(spdx(components, sys.argv[2]), indent=2) + "\n", encoding="utf-8")


if __name__ == "__main__":
    main()
