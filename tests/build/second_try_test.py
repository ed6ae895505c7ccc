#!/usr/bin/env python3
"""Which runs of the tests for Windows pass: a second try is for tests of a list alone, and for two."""
import pathlib
import subprocess
import sys
import tempfile
import unittest

SECOND_TRY = pathlib.Path(__file__).parents[1] / "windows/second_try.py"
LIST = "# why\n\nflow  loses an event\nlog  loses a line\nwindow  loses its focus\n"


class Run:
    """A tree of tests, of which each fails so many times before it passes."""

    def __init__(self, failures, listed, *arguments):
        with tempfile.TemporaryDirectory() as folder:
            self.tree = pathlib.Path(folder)
            self.lay(failures, listed)
            done = subprocess.run([sys.executable, SECOND_TRY, "--tree", folder, "--list",
                                   self.tree / "list.txt", *arguments],
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
            self.passes = done.returncode == 0
            self.said = [line for line in done.stdout.splitlines() if line.startswith("second_try: ")]
            self.runs = {name: len((self.tree / name).read_text()) for name in failures
                         if (self.tree / name).exists()}

    def lay(self, failures, listed):
        (self.tree / "list.txt").write_text(listed)
        lines = []
        for name, times in failures.items():
            file = self.tree / name
            script = f"printf x >> {file}; test $(wc -c < {file}) -gt {times}"
            lines.append(f'add_test([=[{name}]=] "sh" "-c" "{script}")\n'.replace("$(", "\\$("))
        (self.tree / "CTestTestfile.cmake").write_text("".join(lines))


class SecondTry(unittest.TestCase):
    def test_runs(self):
        reasons = {"flow": "second_try: flow: loses an event", "log": "second_try: log: loses a line"}
        unlisted = "second_try: none, since a test failed that has no reason to"
        for name, failures, passes, runs, said in (
                ("all pass at once", {}, True, {}, []),
                ("one of the list", {"flow": 1}, True, {"flow": 2},
                 [reasons["flow"], "second_try: 1 passed"]),
                ("two of the list", {"flow": 1, "log": 1}, True, {"flow": 2, "log": 2},
                 [reasons["flow"], reasons["log"], "second_try: 2 passed"]),
                ("three of the list", {"flow": 1, "log": 1, "window": 1}, False, {},
                 ["second_try: none, since 3 tests need it and 2 may"]),
                ("one that is not on it", {"files": 1}, False, {}, [unlisted]),
                ("one of each", {"files": 1, "flow": 1}, False, {}, [unlisted]),
                ("one that fails twice", {"flow": 2}, False, {"flow": 2}, [reasons["flow"]]),
                ("one of two that fails twice", {"flow": 2, "log": 1}, False, {"flow": 2, "log": 2},
                 [reasons["flow"], reasons["log"]])):
            with self.subTest(name):
                all_tests = dict.fromkeys(("flow", "log", "window", "files"), 0)
                run = Run({**all_tests, **failures}, LIST)
                self.assertEqual(run.passes, passes)
                self.assertEqual(run.runs, {**dict.fromkeys(all_tests, 1), **runs})
                self.assertEqual(run.said, said)

    def test_a_choice_of_tests_holds_for_the_second_try(self):
        run = Run({"flow": 1, "log": 1, "window": 5}, LIST, "-R", "^(flow|log)$")
        self.assertTrue(run.passes)
        self.assertEqual(run.runs, {"flow": 2, "log": 2})

    def test_no_test_at_all_is_no_success(self):
        self.assertFalse(Run({"flow": 0, "log": 0, "window": 0}, LIST, "-R", "none").passes)

    def test_a_test_of_many_is_known_by_its_name(self):
        others = dict.fromkeys((f"other{number}" for number in range(10)), 0)
        self.assertTrue(Run({"flow": 1, **others}, "flow  loses an event\n").passes)

    def test_lists_that_are_refused(self):
        for line, reason in (
                ("flow", "list.txt has no reason for flow"),
                ("flow  ", "list.txt has no reason for flow"),
                ("flow  a\nflow  b", "list.txt names flow twice"),
                ("gone  a", "list.txt names gone, and there is no such test")):
            with self.subTest(reason):
                run = Run({"flow": 0}, line + "\n")
                self.assertFalse(run.passes)
                self.assertEqual(run.said, ["second_try: " + reason])
                self.assertEqual(run.runs, {})


if __name__ == "__main__":
    unittest.main()
