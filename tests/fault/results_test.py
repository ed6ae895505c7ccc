#!/usr/bin/env python3
"""A run of many points goes on where one stopped."""
import contextlib
import io
import json
import os
import pathlib
import tempfile
import types
import unittest

import results
from results import Result

POINTS = [("one 1 KILL", "open64 a"), ("one 1 EIO", "open64 a"), ("two 1 KILL", "write 产线")]


class GoingOn(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.path = pathlib.Path(folder.name, "apply.jsonl")
        self.tried = []

    def run_all(self, outcome="whole", points=tuple(POINTS), keep=True, kills=0):
        """What the run says; `outcome` is that of each point, or raised by it."""
        def try_one(number):
            self.tried.append(points[number][0])
            if isinstance(outcome, BaseException):
                raise outcome
            return Result(outcome, "what it said", kills)
        options = types.SimpleNamespace(results=str(self.path) if keep else None, jobs=1)
        with contextlib.redirect_stdout(io.StringIO()) as said:
            self.bad = results.run_points(options, points, try_one, "NOT LISTED")
        return said.getvalue()

    def kept(self):
        return [json.loads(line) for line in self.path.read_text(encoding="utf-8").splitlines()]

    def test_each_point_is_a_line_of_the_file(self):
        self.run_all()
        self.assertEqual(self.kept()[2], {"point": "two 1 KILL", "operation": "write 产线",
                                          "outcome": "whole", "said": ""})
        self.assertEqual(len(self.kept()), 3)

    def test_only_what_the_file_does_not_know_is_tried(self):
        self.run_all(points=POINTS[:2])
        self.tried.clear()
        self.assertEqual(self.run_all(), "3 runs, 2 of them done before\n      3  whole\n")
        self.assertEqual(self.tried, ["two 1 KILL"])
        self.assertEqual(len(self.kept()), 3)

    def test_without_a_file_all_are_tried_each_time(self):
        self.run_all(keep=False)
        self.run_all(keep=False)
        self.assertEqual(len(self.tried), 6)
        self.assertFalse(self.path.exists())

    def test_points_of_another_run_are_kept_and_not_counted(self):
        self.run_all()
        self.assertEqual(self.run_all(points=POINTS[:1]),
                         "1 runs, 1 of them done before\n      1  whole\n")
        self.assertEqual(len(self.kept()), 3)

    def test_half_a_line_is_tried_again(self):
        self.run_all()
        whole = self.path.read_bytes()
        for cut in (1, 2, 30):
            with self.subTest(cut=cut):
                self.tried.clear()
                self.path.write_bytes(whole[:-cut])
                self.run_all()
                self.assertEqual(self.tried, ["two 1 KILL"])
                self.assertEqual(self.path.read_bytes(), whole)

    def test_a_bad_outcome_stays_one_and_is_told_each_time(self):
        said = ("3 runs, {} of them done before\n      3  NOT LISTED\n"
                "not listed: --only one 1 KILL: open64 a\nwhat it said\n"
                "not listed: --only one 1 EIO: open64 a\nwhat it said\n"
                "not listed: --only two 1 KILL: write 产线\nwhat it said\n")
        self.assertEqual(self.run_all(None), said.format(0))
        self.assertEqual(self.run_all("whole"), said.format(3))
        self.assertEqual(self.bad, 3)

    def test_what_breaks_the_run_off_leaves_the_points_before_it(self):
        self.run_all(points=POINTS[:1])
        with self.assertRaises(KeyboardInterrupt):
            self.run_all(KeyboardInterrupt())
        self.assertEqual([line["point"] for line in self.kept()], ["one 1 KILL"])

    def test_several_jobs_are_processes_that_share_one_file(self):
        options = types.SimpleNamespace(results=str(self.path), jobs=2)
        points = [(f"one {number} EIO", "open64 a") for number in range(20)]
        with contextlib.redirect_stdout(io.StringIO()):
            results.run_points(options, points, lambda number: Result(f"by {os.getpid()}", ""), "NOT LISTED")
        self.assertEqual({line["point"] for line in self.kept()}, {point for point, _ in points})
        self.assertNotIn(f"by {os.getpid()}", {line["outcome"] for line in self.kept()})

    def test_what_breaks_a_process_off_breaks_the_run_off(self):
        options = types.SimpleNamespace(results=str(self.path), jobs=2)
        def break_off(number):
            raise OSError("no space")
        with contextlib.redirect_stdout(io.StringIO()), self.assertRaises(OSError):
            results.run_points(options, POINTS, break_off, "NOT LISTED")

    def test_recoveries_that_were_killed_are_counted(self):
        self.assertEqual(self.run_all(kills=2).splitlines()[-1], "6 recoveries were killed themselves")

    def test_two_runs_on_one_file_are_refused(self):
        first = results.Results(self.path)
        with self.assertRaises(SystemExit) as refused:
            results.Results(self.path)
        self.assertEqual(refused.exception.code, f"another run writes to {self.path}")
        first.file.close()


if __name__ == "__main__":
    unittest.main()
