#!/usr/bin/env python3
"""Fails when a text of the launcher has no entry in the documentation.

  documented_texts.py SOURCE_TREE LUPDATE [--list]

Texts are all that is translated, as lupdate finds it, each with its English; and the untranslated
ones: string literals of src with more than one word. They must stand in docs/operators.md or
docs/support.md to the letter, with %1 for what is filled in and <br> for a line feed; a line of the
launch log in the table of those lines. So they must in the Chinese pages of the same names. A literal
that nobody ever reads as a text is named in NO_TEXT. The pictures that the pages show must be there too.
"""
import pathlib
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree

# Where the pages of a language lie, and the heading over the lines of the log.
LANGUAGES = {"docs": "The launch log", "docs/zh": "启动日志"}
PAGES = ("operators.md", "support.md")
FOLDERS = ("frame", "launcher", "project", "script", "update", "window")

# Beginnings of literals that are no texts.
NO_TEXT = {
    "CREATE ", "INSERT ", "SELECT ", "UPDATE ", "DELETE ", "PRAGMA ", "BEGIN ",  # statements for the database
    "yyyy-MM-dd HH:mm:ss",                                  # the form of a time
    "QPushButton {", "#updateBanner {", "#updateTaskPanel {",  # style sheets
    "$ErrorActionPreference", "$ProgressPreference",        # scripts for PowerShell
    "-----BEGIN ",                                          # an expression that finds a key
    " else if (",                                           # a printed script
    "Ag状态",                                                # measures a font's height
}

# Files of which no literal is ever shown: the words of the flow's table, which a test prints.
NO_TEXTS_IN = {"src/launcher/transitions.cpp"}

MNEMONIC = re.compile(r"&(?=\w)")  # marks the letter of a key and is not shown

LITERAL = re.compile(r'''R"\((?P<raw>.*?)\)"|"(?P<plain>(?:[^"\\\n]|\\.)*)"|'(?:[^'\\]|\\.)+'|//[^\n]*|/\*.*?\*/|(?P<other>[^\s"'/]+|/)''', re.S)
ESCAPES = {"n": "\n", "t": "\t", "r": "\r", "\\": "\\", '"': '"', "0": "\0"}


def literals(text):
    """The string literals of a source file; neighbours are one."""
    joined = None
    for token in LITERAL.finditer(re.sub(r"^\s*#.*$", "", text, flags=re.M)):
        piece = token["raw"]
        if token["plain"] is not None:
            piece = re.sub(r"\\(.)", lambda m: ESCAPES.get(m[1], m[0]), token["plain"])
        if piece is not None:
            joined = (joined or "") + piece
        elif token["other"] and joined is not None:
            yield joined
            joined = None


def is_text(literal):
    words = re.findall(r"[A-Za-z]{2,}", literal)
    chinese = re.search(r"[\u4e00-\u9fff]", literal)
    return (chinese or (len(words) > 1 and " " in literal.strip())) and not any(
        literal.startswith(start) for start in NO_TEXT)


def translated(tree, lupdate):
    with tempfile.TemporaryDirectory() as place:
        found = pathlib.Path(place, "found.ts")
        subprocess.run([lupdate, "-silent", "-locations", "none", "-no-ui-lines", "-source-language",
                        "zh_CN", "-target-language", "en", "-extensions", "cpp,h", tree / "src",
                        "-ts", found], check=True)
        sources = {message.findtext("source")
                   for message in xml.etree.ElementTree.parse(found).iter("message")}
    english = {message.findtext("source"): MNEMONIC.sub("", message.findtext("translation")) for message in
               xml.etree.ElementTree.parse(tree / "resources/translations/quorvane_en.ts").iter("message")}
    return {source: english.get(source) or "" for source in sources}


def untranslated(tree, known):
    found = {}
    for folder in FOLDERS:
        for file in sorted((tree / "src" / folder).rglob("*.[ch]*")):
            if str(file.relative_to(tree)) in NO_TEXTS_IN:
                continue
            for literal in literals(file.read_text(encoding="utf-8")):
                if is_text(literal) and literal not in known:
                    found.setdefault(literal, file.relative_to(tree))
    return found


def logged(tree):
    """The texts in calls of appendLaunchLog."""
    for file in sorted((tree / "src").rglob("*.cpp")):
        for call in re.findall(r"\bappendLaunchLog\((.*?)\);", file.read_text(encoding="utf-8"), re.S):
            yield from filter(is_text, literals(call + " end"))


def as_written(text):
    return text.strip().replace("\n", "<br>").replace("|", "\\|")


def lacking(folder, log_heading, known, plain, lines):
    """What the pages in this folder do not tell."""
    documents = "\n".join((folder / name).read_text(encoding="utf-8") for name in PAGES)
    table = re.search(rf"\n## {log_heading}\n(.*?)\n## ", documents, re.S)
    for source, english in sorted(known.items()):
        if as_written(source) not in documents:
            yield f"{source!r} (translated)"
        if as_written(english) not in documents:
            yield f"{english!r} (English)"
    for text, file in plain.items():
        if as_written(text) not in documents:
            yield f"{text!r} of {file}"
    for line in lines:
        if not table or as_written(line) not in table[1]:
            yield f"{line!r} (a line of the launch log)"
    for picture in re.findall(r"\]\(((?:\.\./)?screenshots/[^)]*)\)", documents):
        if not (folder / picture).is_file():
            yield picture


def main():
    tree = pathlib.Path(sys.argv[1])
    known = translated(tree, sys.argv[2])
    plain = untranslated(tree, known)
    if "--list" in sys.argv:
        for text, file in plain.items():
            print(f"{file}: {as_written(text)}")
        return 0
    lines = list(logged(tree))
    missing = [f"{folder}: {entry}" for folder, heading in LANGUAGES.items()
               for entry in lacking(tree / folder, heading, known, plain, lines)]
    print(f"{len(known)} translated and {len(plain)} other texts; {len(lines)} calls of the log")
    for entry in missing:
        print("has no entry in the documentation,", entry)
    return 1 if missing or not known or not plain or not lines else 0


if __name__ == "__main__":
    sys.exit(main())
