#!/usr/bin/env python3
"""Holds what the portable archive for Linux carries to the licences beside it and to THIRD-PARTY.md.

    linux_package.py SOURCE_TREE BUILD_TREE QUORVANER QUORVANECTL
"""
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile


def complaints(tree, folder, programs):
    for program in programs:
        shutil.copy(program, folder)
    licences = folder / "licences"
    subprocess.run([tree / "packaging/linux/copy_qt", folder, licences], check=True)
    named = set(re.findall(r"`(lib[^`]*)`", (tree / "THIRD-PARTY.md").read_text(encoding="utf-8")))
    texts = {text.stem: text.read_text(encoding="utf-8", errors="replace")
             for text in licences.iterdir()}
    carried = sorted((folder / "lib").iterdir())
    print(f"{len(carried)} libraries, {len(texts)} licences")
    if not carried:
        yield "nothing is carried"
    for library in carried:
        if library.name.split(".so")[0] not in named:
            yield f"THIRD-PARTY.md does not name {library.name}"
    # One text for each package; the longer ones, to which they refer, lie beside them.
    for wanted in ("libkeyutils1", "libqt5core5a", "libqt5sql5-sqlite", "libssl3", "LGPL-2.1", "LGPL-3"):
        if not texts.get(wanted):
            yield f"there is no licence {wanted}"
    for stem, text in texts.items():
        for name in re.findall(r"/usr/share/common-licenses/([A-Za-z0-9.-]*[A-Za-z0-9])", text):
            if name not in texts and pathlib.Path("/usr/share/common-licenses", name).exists():
                yield f"{stem} refers to {name}, which is not there"


def a_foreign_library_is_refused(tree, folder, programs):
    """What no package of the system brought has terms that nobody knows."""
    for program in programs:
        shutil.copy(program, folder)
    library = folder / "libforeign.so"
    subprocess.run(["cc", "-shared", "-o", library, "-x", "c", "/dev/null"], check=True)
    script = (tree / "packaging/linux/copy_qt").read_text(encoding="utf-8")
    functions = script[script.index("packages_of()"):script.index("# Terms name longer texts")]
    done = subprocess.run(["bash", "-c", f"set -euo pipefail\n{functions}\npackages_of {library}"],
                          stderr=subprocess.PIPE, text=True)
    if done.returncode != 1 or "is of no package: its licence is not known" not in done.stderr:
        yield f"a library of no package is not refused: {done.stderr}"


def pages_that_are_missing(build, folder):
    """README and THIRD-PARTY, and the pictures that the first shows."""
    subprocess.run(["cmake", "--install", build, "--prefix", folder, "--component", "documents"],
                   stdout=subprocess.DEVNULL, check=True)
    wanted = ["README.md", "README.zh-CN.md", "CHANGELOG.md", "SECURITY.md", "THIRD-PARTY.md", "docs/support.md"]
    for page in wanted[:2]:
        if (folder / page).exists():
            wanted += re.findall(r"^!\[.*?\]\((.*?)\)", (folder / page).read_text(encoding="utf-8"), re.M)
    for page in wanted:
        if not (folder / page).is_file():
            yield f"the package lacks {page}"


def main():
    tree = pathlib.Path(sys.argv[1])
    programs = sys.argv[3:]
    found = []
    with tempfile.TemporaryDirectory() as folder:
        found += pages_that_are_missing(sys.argv[2], pathlib.Path(folder))
    for test in (complaints, a_foreign_library_is_refused):
        with tempfile.TemporaryDirectory() as folder:
            found += test(tree, pathlib.Path(folder), programs)
    print(*found, sep="\n")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
