#!/usr/bin/env python3
"""What run.py, recover.py and recover_from.py try, at once: an update is broken off once at each point, and
what it left is judged, and cleared up or brought back where one of the other two does that.

  everything.py TOOL REFERENCE_APPLY INTERPOSER   all points; see run.py
  everything.py --sample N ...                    N of these, chosen by chance: others each run
  everything.py --sample N --seed S ...           the N that a run with this seed chose; the environment
                                                  variable FAULT_SEED gives one too
  everything.py --results FOLDER ...              keeps what came of each point in apply.jsonl, recover.jsonl and
                                                  from.jsonl, as each of the three does by itself, and tries only
                                                  the points that one of them does not know yet

Ends with 1 if an outcome came that any of the three does not allow.
"""
import argparse
import os
import pathlib
import subprocess
import sys

import chance
import recover
import recover_from
import results
import run
import volumes

# What a point is for, by the names of their files, and what stands in the table for a bad outcome.
KINDS = {"apply": "NOT LISTED", "recover": "NOT WHOLE", "from": "NOT WHOLE"}


class EverythingBench(recover_from.PackageBench):
    """A bench on which what an update left is judged first and brought back then."""

    def look_with(self, points):
        """From now on; `points` are those that recover_from.py tries."""
        self.recovering = True
        self.packaged = set(points)
        self.recovery = recover.RecoveryBench.beside(self)

    def try_point(self, point):
        """{kind: Result}"""
        layout, operation, self.fault = point
        try:
            return self.run(layout, operation, run.FAULTS[self.fault])
        except subprocess.TimeoutExpired:
            late = results.Result(None, f"  it did not end within {run.PATIENCE} s")
            return {kind: late for kind in self.kinds_of(point)}

    def kinds_of(self, point):
        return ["apply"] + ["recover"] * (point[2] == "KILL") + ["from"] * (point in self.packaged)

    def observe(self, point, told, code, data, project):
        outcome = run.Bench.observe(self, point, told, code, data, project)
        if not self.recovering:
            return outcome
        name = run.name_of(self, outcome, self.fault)
        found = {"apply": results.Result(name, "" if name else run.explain(self, point[0], outcome))}
        kinds = self.kinds_of((*point, self.fault))
        if "recover" in kinds:
            found["recover"] = recover.result_from(self.recovery.after(point, code, data, project))
        if "from" in kinds:
            found["from"] = self.after(point, name, data, project)
        return found


def text_of(point, kind):
    """As the kind's own program names it."""
    return " ".join(map(str, point[:2] if kind == "recover" else point))


def try_all(bench, points, files, jobs):
    left = [number for number, point in enumerate(points)
            if any(text_of(point, kind) not in files[kind].done for kind in bench.kinds_of(point))]
    print(f"{len(points)} runs, {len(points) - len(left)} of them done before", flush=True)
    for number, found in results.results_of(left, lambda number: bench.try_point(points[number]), jobs):
        layout, operation, _ = points[number]
        for kind, result in found.items():
            files[kind].add(text_of(points[number], kind), bench.operations[layout][operation - 1], result)


def tell(bench, points, files):
    bad = 0
    for kind, unlisted in KINDS.items():
        known = [(text_of(point, kind), bench.operations[point[0]][point[1] - 1]) for point in points
                 if kind in bench.kinds_of(point)]
        print(f"{kind}: {len(known)} points")
        bad += results.tell(known, files[kind], unlisted)
    return bad


def arguments():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--sample", type=int)
    chance.add_seed(parser)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--results", type=pathlib.Path, metavar="FOLDER")
    results.add_programs(parser)
    return parser.parse_args()


def main():
    options = arguments()
    results.end_on_request()
    with volumes.two() as (near, far):
        bench = EverythingBench(options.tool.resolve(), 0, 0, options.program, options.interposer.resolve(), near,
                                far)
        layouts = volumes.layouts(near, far)
        for layout in layouts:
            bench.measure(layout)
        bench.look_with(recover_from.points_of(bench, layouts))
        points = run.points_of(bench, layouts)
        if options.sample:
            points = chance.sample_of(points, options.sample, chance.seed_of(options))
        files = {kind: results.Results(options.results and options.results / f"{kind}.jsonl") for kind in KINDS}
        try:
            try_all(bench, points, files, options.jobs)
        finally:
            for file in files.values():
                file.close()
        bad = tell(bench, points, files)
        print(f"{bad} bad outcomes")
        return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
