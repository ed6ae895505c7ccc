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

# It tells what it read as the plug-in does.
PROGRAM = """#!/bin/sh
printf x >>{folder}/runs
cd {folder} && ls *.cpp *.h 2>/dev/null >"$QUORVANE_TIDY_READ"
{then}
"""


class Again(unittest.TestCase):
    """A source file with a header, and a program in place of clang-tidy that tells its runs."""

    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="tidy test ")
        self.addCleanup(place.cleanup)
        self.folder = pathlib.Path(place.name)
        for name in ("read_for", "passed"):
            (self.folder / name).mkdir()
            setattr(tidy, name, self.folder / name)
        self.source, self.header = self.folder / "one.cpp", self.folder / "a header.h"
        self.source.write_text('#include "a header.h"\n')
        self.header.write_text("int one();\n")
        self.command = f"clang++ -o one.o -c {self.source.name}"
        self.checks = "some"
        self.program(says_nothing=True)
        path = os.environ["PATH"]
        self.addCleanup(os.environ.__setitem__, "PATH", path)
        os.environ["PATH"] = f"{self.folder}/bin:{path}"

    def program(self, says_nothing):
        program = self.folder / "bin/clang-tidy"
        program.parent.mkdir(exist_ok=True)
        program.write_text(PROGRAM.format(folder=f"'{self.folder}'",
                                          then="true" if says_nothing else "echo a finding; exit 1"))
        program.chmod(0o755)

    def look(self):
        """What is said, whether that is nothing, and whether the program ran for it."""
        tidy.hash_of.cache_clear()  # a run of its own
        (self.folder / "runs").unlink(missing_ok=True)
        entry = {"command": self.command, "directory": str(self.folder)}
        said, is_clean = tidy.look_at(str(self.source), entry, hashlib.sha256(self.checks.encode()))
        return said, is_clean, (self.folder / "runs").exists()

    def test_what_has_passed_is_not_even_read_again(self):
        self.assertEqual(("", True, True), self.look())
        self.assertEqual(("", True, False), self.look())

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
                self.assertEqual(("", True, True), self.look())
                self.assertEqual(("", True, False), self.look())

    def test_a_text_that_is_back_is_not_looked_at(self):
        before = self.header.read_text()
        self.look()
        self.header.write_text("int other();\n")
        self.look()
        self.header.write_text(before)
        self.assertEqual(("", True, False), self.look())

    def test_a_header_more_is_one_more_to_change(self):
        self.look()
        self.source.write_text('#include "a header.h"\n#include "another.h"\n')
        another = self.folder / "another.h"
        another.write_text("int another();\n")
        self.assertEqual(("", True, True), self.look())
        another.write_text("int two();\n")
        self.assertEqual(("", True, True), self.look())

    def test_what_nobody_told_of_is_looked_at_again(self):
        (self.folder / "bin/clang-tidy").write_text(f"#!/bin/sh\ntouch '{self.folder}/runs'\n")
        for _ in range(2):
            self.assertEqual(("", True, True), self.look())

    def test_a_finding_is_told_until_it_is_gone(self):
        self.program(says_nothing=False)
        for _ in range(2):
            self.assertEqual(("a finding", False, True), self.look())
        self.program(says_nothing=True)
        self.assertEqual(("", True, True), self.look())

    def test_a_header_that_is_gone_is_missed(self):
        self.look()
        self.header.unlink()
        self.program(says_nothing=False)
        self.assertEqual(("a finding", False, True), self.look())


if __name__ == "__main__":
    unittest.main()
