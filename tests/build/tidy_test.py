#!/usr/bin/env python3
"""Which files scripts/tidy looks at again after a change."""
import hashlib
import importlib.machinery
import importlib.util
import os
import pathlib
import sys
import tempfile
import unittest

TIDY = pathlib.Path(__file__).resolve().parents[2] / "scripts/tidy"
sys.dont_write_bytecode = True
loader = importlib.machinery.SourceFileLoader("tidy", str(TIDY))
loader_spec = importlib.util.spec_from_loader("tidy", loader)
tidy = importlib.util.module_from_spec(loader_spec)
loader.exec_module(tidy)

COUNTS = """#!/bin/sh
printf x >>{folder}/{name}.runs
{then}
"""


class Again(unittest.TestCase):
    """A source file with a header, and programs in place of clang's that count their runs."""

    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="tidy test ")
        self.addCleanup(place.cleanup)
        self.folder = pathlib.Path(place.name)
        for name in ("known", "passed"):
            (self.folder / name).mkdir()
            setattr(tidy, name, self.folder / name)
        self.source, self.header = self.folder / "one.cpp", self.folder / "a header.h"
        self.source.write_text('#include "a header.h"\n')
        self.header.write_text("int one();\n")
        self.command = f"clang++ -o one.o -c {self.source.name}"
        self.checks = "some"
        self.programs(says_nothing=True)
        path = os.environ["PATH"]
        self.addCleanup(os.environ.__setitem__, "PATH", path)
        os.environ["PATH"] = f"{self.folder}/bin:{path}"

    def programs(self, says_nothing):
        behind = os.environ["PATH"].split(f"{self.folder}/bin:")[-1]
        for name, then in (("clang-tidy", "true" if says_nothing else "echo a finding; exit 1"),
                           ("clang++", f'PATH="{behind}" exec clang++ "$@"')):
            program = self.folder / "bin" / name
            program.parent.mkdir(exist_ok=True)
            program.write_text(COUNTS.format(folder=f"'{self.folder}'", name=name, then=then))
            program.chmod(0o755)

    def look(self):
        """What is said, whether that is nothing, and which programs ran for it."""
        tidy.hash_of.cache_clear()  # a run of its own
        for old in self.folder.glob("*.runs"):
            old.unlink()
        entry = {"command": self.command, "directory": str(self.folder)}
        said, is_clean = tidy.look_at(str(self.source), entry, hashlib.sha256(self.checks.encode()))
        return said, is_clean, sorted(file.stem for file in self.folder.glob("*.runs"))

    def test_what_has_passed_is_not_even_read_again(self):
        self.assertEqual(("", True, ["clang++", "clang-tidy"]), self.look())
        self.assertEqual(("", True, []), self.look())

    def test_what_has_changed_is_looked_at(self):
        def source():
            self.source.write_text('#include "a header.h"\n// and more\n')

        def header():
            self.header.write_text("int one();\nint two();\n")

        def command():
            self.command = self.command.replace("-o", "-DTWO -o")

        def checks():
            self.checks = "more"

        self.look()
        for change in (source, header, command, checks):
            with self.subTest(change.__name__):
                change()
                self.assertEqual(("", True, ["clang++", "clang-tidy"]), self.look())
                self.assertEqual(("", True, []), self.look())

    def test_a_text_that_is_back_is_read_and_not_looked_at(self):
        before = self.header.read_text()
        self.look()
        self.header.write_text("int other();\n")
        self.look()
        self.header.write_text(before)
        self.assertEqual(("", True, ["clang++"]), self.look())
        self.assertEqual(("", True, []), self.look())

    def test_a_finding_is_told_until_it_is_gone(self):
        self.programs(says_nothing=False)
        for _ in range(2):
            self.assertEqual(("a finding", False, ["clang++", "clang-tidy"]), self.look())
        self.programs(says_nothing=True)
        self.assertEqual(("", True, ["clang++", "clang-tidy"]), self.look())

    def test_a_header_that_is_gone_is_missed(self):
        self.look()
        self.header.unlink()
        self.programs(says_nothing=False)
        self.assertEqual(("a finding", False, ["clang++", "clang-tidy"]), self.look())


if __name__ == "__main__":
    unittest.main()
