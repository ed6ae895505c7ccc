#!/usr/bin/env python3
"""Kills a project update at its file operations and lets `quorvanectl project recover` clear up.

  recover.py TOOL REFERENCE_APPLY INTERPOSER    after a kill at each operation, on one volume and two
  recover.py --sample N ...                     N of these, chosen by chance: others each run
  recover.py --sample N --seed S ...            the N that a run with this seed chose; the environment
                                                variable FAULT_SEED gives one too
  recover.py --part I N ...                     each N-th point, beginning with the I-th of them
  recover.py --only LAYOUT OPERATION ...        one of them, with what the tool says
  recover.py --clock SECONDS ...                the system's clock is set by so much between unpacking
                                                and swap
  recover.py --again N ...                      kills the recovery too, at N operations of it chosen by
                                                chance (by the seed) for each point, and runs it again
  recover.py --results FILE ...                 keeps what came of each point in FILE, and tries only
                                                those that it does not know yet

After it the project must be the old one whole or the new one whole, and pass the validator; a second
run must find nothing to do. A project file that was being written comes from the package, which the
tool is given only if it does without it in no other way. Ends with 1 if anything else came.
"""
import argparse
import collections
import os
import random
import signal
import subprocess
import sys

import chance
import results
import volumes
from run import (FAULTS, PATIENCE, PROJECT_FILE, Bench, is_stamp_file, read_tree,
                 same_but_for_version, without_hidden)

FROM_PACKAGE = "the new project, whole; its project file from the package"

Recovered = collections.namedtuple("Recovered", "name said kills")


class RecoveryBench(Bench):
    """A bench on which the tool runs after the apply."""

    def __init__(self, tool, kills, seed, *rest):
        super().__init__(*rest)
        self.tool = tool
        self.kills = kills
        self.seed = seed
        self.recovering = False

    def further_options(self):
        """What the same run of one point needs besides."""
        return ((f" --again {self.kills} --seed {self.seed}" if self.kills else "") +
                (f" --clock {self.clock}" if self.clock else ""))

    def observe(self, point, told, code, data, project):
        outcome = super().observe(point, told, code, data, project)
        if not self.recovering:
            return outcome
        return self.after(point, code, data, project)

    def after(self, point, code, data, project):
        """`code` is what the update ended with."""
        if code != -signal.SIGKILL:
            return Recovered(None, f"the update was not killed: {code}", 0)
        return self.recover(point, data, project)

    def call(self, data, project, *options, **more):
        environment = dict(os.environ, XDG_DATA_HOME=str(data), LC_ALL="C.UTF-8", **more)
        return subprocess.run([self.tool, "project", "recover", project / PROJECT_FILE, *options],
                              env=environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              text=True, timeout=PATIENCE)

    def killed_recoveries(self, point, data, project):
        """Recoveries that were killed. One that came to its end is no more than an early recovery."""
        dice = random.Random(f"{self.seed} {point}")
        kills = 0
        for _ in range(self.kills):
            at = dice.randrange(1, 3000)
            done = self.call(data, project, "--apply", LD_PRELOAD=str(self.interposer),
                             FAULT_START="1", FAULT_AT=str(at), FAULT_WITH="0")
            kills += done.returncode == -signal.SIGKILL
        return kills

    def recover(self, point, data, project):
        kills = self.killed_recoveries(point, data, project)
        done = self.call(data, project, "--apply")
        package = ()
        if done.returncode == 1 and "No whole copy was found" in done.stdout:
            package = ("--package", self.place / "line3.zip")
            done = self.call(data, project, "--apply", *package)
        said = done.stdout
        again = self.call(data, project)
        if done.returncode != 0 or again.returncode != 0 or "The project is whole." not in again.stdout:
            return Recovered(None, said + again.stdout, kills)
        return Recovered(self.whole(point[0], read_tree(project), bool(package)), said, kills)

    def whole(self, layout, tree, package):
        tree = without_hidden(tree or {})
        if tree == without_hidden(self.old):
            return "the old project, whole"
        new = without_hidden(self.new[layout])
        rest, wanted = ({name: content for name, content in files.items() if not is_stamp_file(name)}
                        for files in (tree, new))
        text = tree.get(PROJECT_FILE, b"")
        if rest != wanted or not same_but_for_version(text, new[PROJECT_FILE]):
            return None
        if package:
            return FROM_PACKAGE
        return ("the new project, whole" if text == new[PROJECT_FILE] else
                "the new project, whole; its version is not recorded")


def arguments():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--sample", type=int)
    chance.add_seed(parser)
    parser.add_argument("--part", nargs=2, type=int, metavar=("I", "N"), default=(1, 1))
    parser.add_argument("--only", nargs=2, metavar=("LAYOUT", "OPERATION"))
    parser.add_argument("--again", type=int, default=0)
    parser.add_argument("--clock", type=int, default=0)
    results.add_options(parser)
    results.add_programs(parser)
    return parser.parse_args()


def result_of(bench, point):
    try:
        return result_from(bench.run(*point, FAULTS["KILL"]))
    except subprocess.TimeoutExpired:
        return results.Result(None, f"  it did not end within {PATIENCE} s")


def result_from(recovered):
    return results.Result(recovered.name, recovered.said, recovered.kills)


def run_points(bench, points, options):
    bad = results.run_points(options,
                             [(f"{layout} {operation}{bench.further_options()}",
                               bench.operations[layout][operation - 1]) for layout, operation in points],
                             lambda number: result_of(bench, points[number]), "NOT WHOLE")
    print(f"{bad} of {len(points)} were not brought back")
    return 1 if bad else 0


def main():
    options = arguments()
    results.end_on_request()
    with volumes.two() as (near, far):
        seed = chance.seed_of(options) if options.sample or options.again else 0
        bench = RecoveryBench(options.tool.resolve(), options.again, seed, options.program,
                              options.interposer.resolve(), near, far)
        bench.clock = options.clock
        layouts = volumes.layouts(near, far)
        for layout in layouts:
            bench.measure(layout)
        bench.recovering = True
        points = [(layout, operation) for layout in layouts
                  for operation in range(1, len(bench.operations[layout]) + 1)]
        points = points[options.part[0] - 1::options.part[1]]
        if options.only:
            layout, operation = options.only
            result = bench.run(layout, int(operation), FAULTS["KILL"])
            print(f"{bench.operations[layout][int(operation) - 1]}\n{result.said}\n{result.name}")
            return 0 if result.name else 1
        if options.sample:
            points = chance.sample_of(points, options.sample, seed)
        return run_points(bench, points, options)


if __name__ == "__main__":
    sys.exit(main())
