#!/usr/bin/env python3
"""Which tests run again after a change."""
import importlib.machinery
import importlib.util
import os
import pathlib
import subprocess
import tempfile
import unittest

RUN_TESTS = pathlib.Path(__file__).resolve().parents[2] / "scripts/run-tests"
loader = importlib.machinery.SourceFileLoader("run_tests", str(RUN_TESTS))
loader_spec = importlib.util.spec_from_loader("run_tests", loader)
run_tests = importlib.util.module_from_spec(loader_spec)
loader.exec_module(run_tests)


class Tree:
    """A tree of five tests, of which the first three are left out by name; each counts its runs."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder)
        lines = []
        for name in ("a", "b", "c", "one", "two"):
            self.program(name, passes=True)
            lines.append(f'add_test([=[frame/{name}]=] "{self.folder}/{name}")\n')
        (self.folder / "CTestTestfile.cmake").write_text("".join(lines))

    def program(self, name, passes):
        file = self.folder / name
        file.write_text(f"#!/bin/sh\nprintf x >>{file}.runs\n{'true' if passes else 'false'}\n")
        file.chmod(0o755)

    def run(self, *options):
        """Whether it passed, and which tests ran."""
        for old in self.folder.glob("*.runs"):
            old.unlink()
        done = subprocess.run([RUN_TESTS, *options, self.folder, "-R", "one|two"],
                              stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL)
        return done.returncode == 0, sorted(file.stem for file in self.folder.glob("*.runs"))


class Rerun(unittest.TestCase):
    def setUp(self):
        self.place = tempfile.TemporaryDirectory()
        self.addCleanup(self.place.cleanup)
        self.tree = Tree(self.place.name)

    def test_what_has_passed_does_not_run_again(self):
        self.assertEqual((True, ["one", "two"]), self.tree.run("--changed"))
        self.assertEqual((True, []), self.tree.run("--changed"))
        self.assertEqual((True, ["one", "two"]), self.tree.run())
        self.assertEqual((True, []), self.tree.run("--changed"))

    def test_a_program_that_was_made_again_does(self):
        self.tree.run()
        os.utime(self.tree.folder / "two", (1, 1))
        self.assertEqual((True, ["two"]), self.tree.run("--changed"))

    def test_a_test_that_failed_does_until_it_passes(self):
        self.tree.run()
        self.tree.program("two", passes=False)
        for _ in range(2):
            self.assertEqual((False, ["two"]), self.tree.run("--changed"))
        self.tree.program("two", passes=True)
        self.assertEqual((True, ["two"]), self.tree.run("--changed"))

    def test_one_that_passed_and_then_fails_in_a_run_of_all_does(self):
        self.tree.run()
        self.tree.program("two", passes=False)
        self.assertEqual((False, ["one", "two"]), self.tree.run())
        self.assertEqual((False, ["two"]), self.tree.run("--changed"))

    def test_which_files_a_folder_may_read(self):
        files = run_tests.Files.__new__(run_tests.Files)
        files.hashes = dict.fromkeys([
            "src/window/a.cpp", "tests/window/a_test.cpp", "tests/window/rows.txt", "tests/frame/rows.txt",
            "tests/support/reader.py", "resources/a.qrc", "examples/p.yslib", "docs/support.md",
            "scripts/test", "CMakeLists.txt"], "")
        at_run_time = ["examples/p.yslib", "resources/a.qrc", "tests/support/reader.py"]
        for folder, expected in (("window", [*at_run_time, "tests/window/rows.txt"]),
                                 ("frame", [*at_run_time, "tests/frame/rows.txt"]),
                                 ("quorvanectl", [*at_run_time, "docs/support.md"]),
                                 ("docs", files.hashes), ("end_to_end", files.hashes)):
            with self.subTest(folder):
                self.assertEqual(sorted(expected), sorted(files.seen_by(folder)))


if __name__ == "__main__":
    unittest.main()
