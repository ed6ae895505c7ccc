#!/usr/bin/env python3
"""Makes the extension in editors/vscode, and holds it to the function library, the schema and the tool.

Ends with 77 where what it is made with cannot be had."""
import argparse
import json
import pathlib
import re
import shutil
import subprocess
import unittest

import npm_project

parser = argparse.ArgumentParser()
for option in ("tool", "tree", "folder"):
    parser.add_argument(f"--{option}", required=True, type=pathlib.Path)
given = parser.parse_args()
# The extension takes the schema from where it lies beside it.
shutil.copytree(given.tree / "share/schemas", given.folder / "share/schemas", dirs_exist_ok=True)
made = given.folder / "editors/vscode"
node = npm_project.compiled(given.tree / "editors/vscode", made)
package = json.loads((made / "package.json").read_text())
grammar = json.loads((made / "ys.tmLanguage.json").read_text())


def scopes_in(text):
    """(what stands there, its scope) as an editor reads a line: the first match counts, of several the first rule."""
    scopes, at = [], 0
    while True:
        matches = [(match.start(), number, match) for number, rule in enumerate(grammar["patterns"])
                   if (match := re.compile(rule.get("match", rule.get("begin"))).search(text, at))]
        if not matches:
            return scopes
        start, number, match = min(matches)
        rule, end = grammar["patterns"][number], match.end()
        if "begin" in rule:
            inner = [one["match"] for one in rule.get("patterns", [])]
            rest = re.compile("|".join([f"(?P<end>{rule['end']})", *inner]))
            while (found := rest.search(text, end)) and not found["end"]:
                end = found.end()
            end = found.end() if found else len(text)
        scopes.append((text[start:end], rule["name"]))
        at = end


class Extension(unittest.TestCase):
    maxDiff = None

    def test_the_grammar_is_made_from_the_function_library(self):
        wanted = subprocess.run([given.tree / "editors/make-grammar", given.tool], check=True,
                                stdout=subprocess.PIPE, text=True).stdout
        self.assertEqual(wanted, (made / "ys.tmLanguage.json").read_text(),
                         "run editors/make-grammar TOOL >editors/vscode/ys.tmLanguage.json")

    def test_what_each_word_of_a_line_is(self):
        for line, expected in (
                ("global int cam1_sum = 0 // all if",
                 [("global", "storage.modifier.ys"), ("int", "storage.type.ys"), ("=", "keyword.operator.ys"),
                  ("0", "constant.numeric.ys"), ("// all if", "comment.line.double-slash.ys")]),
                (r'print("a \" // b") ' + r"'\' if",
                 [("print", "support.function.ys"), (r'"a \" // b"', "string.quoted.double.ys"),
                  (r"'\'", "string.quoted.single.ys"), ("if", "keyword.control.ys")]),
                ("function measureCap(int image) { threshold(image) }",
                 [("function", "keyword.other.ys"), ("measureCap", "entity.name.function.ys"),
                  ("int", "storage.type.ys"), ("threshold", "support.function.ys")]),
                ("检测 (1.5) 检if end_if if_",
                 [("检测", "entity.name.function.ys"), ("1.5", "constant.numeric.ys")]),
                ("ioDrive a1 && x++", [("ioDrive", "support.class.ys"), ("&&", "keyword.operator.ys"),
                                       ("++", "keyword.operator.ys")]),
                ('print("open', [("print", "support.function.ys"), ('"open', "string.quoted.double.ys")])):
            with self.subTest(line):
                self.assertEqual(expected, scopes_in(line))

    def test_the_files_that_the_package_names_are_there(self):
        contributes = package["contributes"]
        named = [package["main"], *(language["configuration"] for language in contributes["languages"]
                                    if "configuration" in language),
                 *(one["path"] for one in contributes["grammars"]),
                 *(one["url"] for one in contributes["jsonValidation"])]
        self.assertEqual(["./out/extension.js", "./language-configuration.json", "./ys.tmLanguage.json",
                          "./out/yslib.schema.json"], named)
        for name in named:
            with self.subTest(name):
                self.assertTrue((made / name).is_file())
        self.assertEqual((given.tree / "share/schemas/yslib.schema.json").read_bytes(),
                         (made / "out/yslib.schema.json").read_bytes())

    def test_how_the_server_is_started(self):
        setting = package["contributes"]["configuration"]["properties"]["quorvane.tool"]
        self.assertEqual(("machine", "quorvanectl"), (setting["scope"], setting["default"]))
        for tool, command in (([], "quorvanectl"), (["/opt/q/bin/quorvanectl"], "/opt/q/bin/quorvanectl")):
            done = subprocess.run([node, given.tree / "tests/editors/vscode.js", made / package["main"], *tool],
                                  check=True, stdout=subprocess.PIPE, text=True)
            with self.subTest(command):
                self.assertEqual([
                    {"id": "quorvane", "name": "Quorvane",
                     "server": {"command": command, "args": ["language-server"], "options": {"cwd": "/extension"}},
                     "client": {"documentSelector": [{"scheme": "file", "language": "ys"},
                                                     {"scheme": "untitled", "language": "ys"},
                                                     {"scheme": "file", "pattern": "**/*.yslib"}]}},
                    "started", "stopped"], json.loads(done.stdout))


unittest.main(argv=["vscode"])
