#!/usr/bin/env python3
"""Which tests run again after a change."""
import importlib.machinery
import importlib.util
import os
import pathlib
import subprocess
import tempfile
import unittest
import unittest.mock

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

    def test_which_files_a_test_may_read(self):
        files = run_tests.Files.__new__(run_tests.Files)
        papers = ["docs/support.md"]
        scripts = ["CMakeLists.txt", "scripts/test"]
        at_run_time = ["examples/p.yslib", "resources/a.qrc", "tests/support/reader.py"]
        rows = ["tests/frame/rows.txt", "tests/window/rows.txt"]
        headers = ["src/window/a.h", "tests/window/a.h"]
        sources = ["src/window/a.cpp", "tests/fault/b.cpp", "tests/window/a_test.cpp", "tests/windows/c.cpp"]
        no_code = [*scripts, *papers, *at_run_time, *rows]
        files.hashes = dict.fromkeys([*no_code, *headers, *sources], "")
        for test, expected in (("window/text", [*at_run_time, "tests/window/rows.txt"]),
                               ("frame/main", [*at_run_time, "tests/frame/rows.txt"]),
                               ("quorvanectl/entry/man_page", [*at_run_time, *papers]),
                               ("editors/neovim", [*at_run_time, *papers]),
                               ("build/documented_texts", files.hashes),
                               ("build/one_that_is_new", files.hashes),
                               ("build/files_cannot_include_window", [*no_code, *headers]),
                               ("build/files_includes_itself", [*no_code, *headers]),
                               ("build/mutation", [*no_code]),
                               ("docs/schemas", no_code),
                               ("fault/order", [*no_code, "tests/fault/b.cpp"]),
                               ("end_to_end/closing_as_user", no_code),
                               ("windows/installer", [*no_code, "tests/windows/c.cpp"])):
            with self.subTest(test):
                self.assertEqual(sorted(expected), sorted(files.seen_by(test)))

    def test_which_programs_a_test_runs(self):
        """A tree of the launcher, the tool and two tests, beside one with a tool of its own."""
        with tempfile.TemporaryDirectory() as place, unittest.mock.patch.object(
                run_tests, "root", pathlib.Path(place).resolve()):
            tree = run_tests.Tree.__new__(run_tests.Tree)
            tree.folder = run_tests.root / "build/windows"
            for name in ("launcher", "tool", "test_build_root", "test_windows_program", "../release/tool"):
                file = tree.folder / name
                file.parent.mkdir(parents=True, exist_ok=True)
                file.write_text("")
                file.chmod(0o755)
            at = f"{tree.folder}/"
            for test, words, expected in (
                    ("window/text", [f"{at}launcher"], ["launcher"]),
                    ("docs/schemas", ["python3", "--tool", f"{at}tool"], ["tool"]),
                    ("docs/chinese_pages", ["python3", "pages"], []),
                    ("fault/order", ["python3", f"{at}tool", f"{at}gone"], ["tool"]),
                    ("build/files_cannot_include_window", ["c++", "-E"], []),
                    ("build/root", [f"{at}test_build_root"], ["test_build_root"]),
                    ("build/one_that_is_new", ["python3", f"{at}tool"], ["tool", "all"]),
                    ("windows/program", ["wine", f"{at}test_windows_program"], ["test_windows_program"]),
                    ("windows/road", [f"{at}tool", f"{run_tests.root}/build/release/tool"],
                     ["tool", "../release/tool", "all"]),
                    ("windows/portable", ["python3", "--tree", at], ["all"]),
                    ("end_to_end/closing_as_user", ["python3"], ["all"])):
                with self.subTest(test):
                    self.assertEqual(expected, tree.targets(test, words))

    def test_what_sees_the_whole_build_sees_each_of_its_programs(self):
        """Also one that nothing but a name is made of, as the launcher."""
        with tempfile.TemporaryDirectory() as place:
            tree = run_tests.Tree.__new__(run_tests.Tree)
            tree.folder = pathlib.Path(place)
            (tree.folder / "build.ninja").write_text("rule copy\n  command = cp $in $out && chmod +x $out\n"
                                                     "build bin/launcher: copy text\n"
                                                     "build launcher: phony bin/launcher\n"
                                                     "build all: phony launcher\n")
            (tree.folder / "text").touch()
            subprocess.run(["ninja", "-C", place], check=True, stdout=subprocess.DEVNULL)
            self.assertEqual(["bin/launcher"], tree.programs_of("all"))

    def test_what_a_test_has_made_is_no_program_of_the_build(self):
        with tempfile.TemporaryDirectory() as place:
            tree = run_tests.Tree.__new__(run_tests.Tree)
            tree.folder = pathlib.Path(place)
            (tree.folder / "build.ninja").write_text("rule copy\n  command = cp $in $out\n"
                                                     "build made.exe: copy part.exe\n")
            for name in ("part.exe", "made.exe", "setup.exe"):
                (tree.folder / name).write_text("")
            self.assertEqual(["made.exe", "part.exe"], tree.programs_of("made.exe"))
            self.assertEqual([], tree.programs_of("setup.exe"))
            (tree.folder / "build.ninja").write_text("no rules\n")
            self.assertRaises(subprocess.CalledProcessError, tree.programs_of, "part.exe")


if __name__ == "__main__":
    unittest.main()
