#!/usr/bin/env python3
"""Brings a project back from its package where an update that failed has left no whole copy of it.

  recover_from.py TOOL REFERENCE_APPLY INTERPOSER   at each operation from the backup on, on one volume and
                                                    two, each fault but a kill; before it those that stay
  recover_from.py --every N ...                     each N-th of these points
  recover_from.py --sample N ...                    N of them, chosen by chance: others each run
  recover_from.py --sample N --seed S ...           the N that a run with this seed chose; the environment
                                                    variable FAULT_SEED gives one too
  recover_from.py --only LAYOUT OPERATION FAULT ... one of them, with what the tool says
  recover_from.py --again N ...                     kills the recovery too, at N operations of it chosen by
                                                    chance (by the seed) for each point, and runs it again
  recover_from.py --results FILE ...                keeps what came of each point in FILE, and tries only
                                                    those that it does not know yet

Most points leave a whole project, and are counted as such. After the others the new project must be in
place, whole, with the logs that lay there; what lay there must be kept; and a second run must find nothing
to do. Ends with 1 if anything else came.
"""
import argparse
import os
import random
import signal
import subprocess
import sys

import chance
import results
import volumes
from run import (FAULTS, PATIENCE, PROJECT_FILE, Bench, Outcome, faults_at, is_stamp_file, named_case,
                 read_tree, same_but_for_version, whole, without_hidden)

NOT_WHOLE = ("partial backup", "removal fails twice", "moving in and rolling back")
LEFT_WHOLE = "whole after the update: nothing to bring back"


class PackageBench(Bench):
    """A bench on which the tool runs after an apply that left no whole project."""

    def __init__(self, tool, kills, seed, *rest):
        super().__init__(*rest)
        self.tool = tool
        self.kills = kills
        self.seed = seed
        self.recovering = False

    def observe(self, point, told, code, data, project):
        outcome = super().observe(point, told, code, data, project)
        if not self.recovering:
            return outcome
        return self.after(point, whole(self, outcome) or named_case(self, outcome), data, project)

    def after(self, point, name, data, project):
        """`name` is what run.py calls the outcome of the update."""
        if name is None or not name.startswith(NOT_WHOLE):
            return results.Result(LEFT_WHOLE, "")
        return self.recover(point, name, data, project)

    def call(self, data, project, *options, **more):
        environment = dict(os.environ, XDG_DATA_HOME=str(data), LC_ALL="C.UTF-8", **more)
        return subprocess.run([self.tool, "project", "recover", project / PROJECT_FILE,
                               "--from", self.place / "line3.zip",
                               "--manifest", self.place / "manifest.json",
                               "--key", self.place / "app/config/update.pub", *options],
                              env=environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              text=True, timeout=PATIENCE)

    def killed_recoveries(self, point, data, project):
        dice = random.Random(f"{self.seed} {point}")
        return sum(self.call(data, project, "--apply", LD_PRELOAD=str(self.interposer),
                             FAULT_START="1", FAULT_AT=str(dice.randrange(1, 6000)),
                             FAULT_WITH="0").returncode == -signal.SIGKILL
                   for _ in range(self.kills))

    def recover(self, point, name, data, project):
        before = read_tree(project)
        kills = self.killed_recoveries(point, data, project)
        done = self.call(data, project, "--apply")
        again = self.call(data, project)
        said = f"{name}\n{done.stdout}{again.stdout}"
        fault = (f"ended with {done.returncode}" if done.returncode != 0 else
                 "a second run finds something to do"
                 if again.returncode != 0 or "wholly in place" not in again.stdout else
                 self.fault_of(point[0], before, read_tree(project)) or
                 self.not_kept(before, data, project))
        if fault:
            return results.Result(None, f"  {fault}\n{said}")
        return results.Result(f"brought back after: {name}" + (" (killed)" if kills else ""), "")

    def fault_of(self, layout, before, after):
        """What differs from the new project with the logs that lay in the folder."""
        wanted = dict(without_hidden(self.new[layout]))
        wanted = {name: content for name, content in wanted.items() if not name.startswith("logs/")}
        logs = {name: content for name, content in (before or {}).items()
                if name.startswith("logs/") and not name.endswith("/")}
        there = without_hidden(after or {})
        missing = [name for name, content in logs.items() if there.get(name) != content]
        rest = {name: content for name, content in there.items() if not name.startswith("logs/")}
        if missing:
            return f"logs are gone: {missing[:3]}"
        if not same_but_for_version(rest.pop(PROJECT_FILE, b""), wanted.pop(PROJECT_FILE)):
            return "the project file is another"
        other = sorted(name for name in rest.keys() | wanted.keys()
                       if not is_stamp_file(name) and rest.get(name) != wanted.get(name))
        return f"it differs in {other[:5]}" if other else None

    def not_kept(self, before, data, project):
        """What lay in the project's place lies elsewhere, hidden entries too."""
        if before is None:
            return None
        places = [*(data / "Quorvane/update/backup").iterdir(), *project.parent.iterdir()]
        return None if any(read_tree(place) == before for place in places) else "it was not kept"


def points_of(bench, layouts):
    """From the backup on: what comes before takes nothing from a project, unless it stays."""
    points = []
    for layout in layouts:
        operations = bench.operations[layout]
        first = next(i for i, name in enumerate(operations) if "/update/backup/" in name)
        points += [(layout, number, fault) for number, name in enumerate(operations, 1)
                   for fault in faults_at(name)
                   if fault != "KILL" and (number > first or FAULTS[fault].stays)]
    return points


def result_of(bench, point):
    layout, operation, fault = point
    try:
        return bench.run(layout, operation, FAULTS[fault])
    except subprocess.TimeoutExpired:
        return results.Result(None, f"  it did not end within {PATIENCE} s")


def run_points(bench, points, options):
    again = f" --again {bench.kills} --seed {bench.seed}" if bench.kills else ""
    bad = results.run_points(options,
                             [(" ".join(map(str, point)) + again,
                               bench.operations[point[0]][point[1] - 1]) for point in points],
                             lambda number: result_of(bench, points[number]), "NOT WHOLE")
    print(f"{bad} of {len(points)} were not brought back")
    return 1 if bad else 0


def arguments():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--every", type=int, default=1)
    parser.add_argument("--sample", type=int)
    chance.add_seed(parser)
    parser.add_argument("--only", nargs=3, metavar=("LAYOUT", "OPERATION", "FAULT"))
    parser.add_argument("--again", type=int, default=0)
    results.add_options(parser)
    results.add_programs(parser)
    return parser.parse_args()


def main():
    options = arguments()
    results.end_on_request()
    with volumes.two() as (near, far):
        seed = chance.seed_of(options) if options.sample or options.again else 0
        bench = PackageBench(options.tool.resolve(), options.again, seed, options.program,
                             options.interposer.resolve(), near, far)
        layouts = volumes.layouts(near, far)
        for layout in layouts:
            bench.measure(layout)
        bench.recovering = True
        if options.only:
            layout, operation, fault = options.only
            result = bench.run(layout, int(operation), FAULTS[fault])
            print(f"{bench.operations[layout][int(operation) - 1]}\n{result.said}\n{result.name}")
            return 0 if result.name else 1
        points = points_of(bench, layouts)[::options.every]
        if options.sample:
            points = chance.sample_of(points, options.sample, seed)
        return run_points(bench, points, options)


if __name__ == "__main__":
    sys.exit(main())
