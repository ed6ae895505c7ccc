#!/usr/bin/env python3
"""Breaks a project update off at every file operation and looks at what lies on disk afterwards.

  run.py REFERENCE_APPLY INTERPOSER             all points: each operation fails with EACCES, ENOSPC
                                                and EIO, the process is killed at it (KILL), it
                                                fails at each further try (STUCK), from it on the
                                                disk is full (FULL), and an operation that moves
                                                data moves half of it before that (SHORT)
  run.py --sample N ...                         N of these, chosen by chance: others each run
  run.py --sample N --seed S ...                the N that a run with this seed chose; the environment
                                                variable FAULT_SEED gives one too
  run.py --every N ...                          each N-th operation
  run.py --only LAYOUT OPERATION FAULT ...      one of them, with its outcome in full
  run.py --list ...                             the operations of each layout
  run.py --results FILE ...                     keeps what came of each point in FILE, and tries only
                                                those that it does not know yet

Layouts: "one" has the data folder and the project on one volume, "two" on two. The outcome must be
the old project whole, the new project whole, the whole backup in its place or beside it, or one of
the cases that `named_case` knows. Ends with 1 if any other came.
"""
import argparse
import collections
import errno
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

import chance
import results
import volumes

Fault = collections.namedtuple("Fault", "errno stays short")
FAULTS = {"EACCES": Fault(errno.EACCES, False, False), "ENOSPC": Fault(errno.ENOSPC, False, False),
          "EIO": Fault(errno.EIO, False, False),
          "KILL": Fault(0, False, False),  # no errno: the process is killed
          "STUCK": Fault(errno.EACCES, True, False), "FULL": Fault(errno.ENOSPC, True, False),
          "SHORT": Fault(errno.ENOSPC, True, True)}
PATIENCE = 900  # seconds for one apply, also where only the time that nobody else wants is taken
MOVE_DATA = ("write", "pwrite64", "sendfile", "sendfile64", "copy_file_range")
PROJECT_FILE = "产线三.yslib"
SIDECAR = ".quorvane-installed-version"


def read_tree(folder):
    """Relative path -> content; empty folders end in a slash. None if there is no such folder."""
    if not folder.is_dir():
        return None
    tree, waiting = {}, [("", folder)]
    while waiting:
        below, path = waiting.pop()
        with os.scandir(path) as entries:
            found = list(entries)
        if not found and below:
            tree[below] = b""
        for entry in found:
            if entry.is_dir(follow_symlinks=False):
                waiting.append((f"{below}{entry.name}/", entry.path))
            else:
                with open(entry.path, "rb", buffering=0) as file:
                    tree[below + entry.name] = file.readall()
    return tree


def is_hidden(name):
    return any(part.startswith(".") for part in name.split("/"))


def without_hidden(tree):
    return {name: content for name, content in tree.items() if not is_hidden(name)}


def is_part_of(part, whole):
    """Every file of `part` is one of `whole`, or a file or folder of it that was cut short."""
    def known(name, content):
        if name.endswith("/"):
            return any(other.startswith(name) for other in whole)
        return name in whole and whole[name].startswith(content)
    return all(known(name, content) for name, content in part.items())


class Bench:
    """The folders, the program and the trees that a run may end with."""

    def __init__(self, program, interposer, near, far):
        self.clock = 0  # seconds by which the system's clock is set between unpacking and swap
        self.place = near / "place"
        self.volumes = {"one": near, "two": far}
        self.interposer = interposer
        self.near = near
        (self.place / "app").mkdir(parents=True)
        self.program = self.place / "app" / "reference_apply"
        shutil.copy2(program, self.program)
        subprocess.run([self.program, "prepare", self.place], check=True)
        self.old = read_tree(self.place / "old")
        self.new = {}  # by layout
        self.operations = {}  # by layout: their names

    @classmethod
    def beside(cls, bench):
        """One with the same folders, trees and further attributes."""
        twin = cls.__new__(cls)
        vars(twin).update(vars(bench))
        return twin

    def measure(self, layout):
        """An apply without a fault."""
        trace = self.near / "trace"
        outcome = self.run(layout, 0, FAULTS["KILL"], trace)
        if not (outcome.told and outcome.told["success"]):
            sys.exit(f"the apply without a fault failed: {outcome.told}")
        self.new[layout] = outcome.project
        self.operations[layout] = trace.read_text(errors="replace").splitlines()

    def run(self, layout, operation, fault, trace=None):
        data = pathlib.Path(tempfile.mkdtemp(prefix="data", dir=self.near))
        home = pathlib.Path(tempfile.mkdtemp(prefix="project", dir=self.volumes[layout]))
        try:
            project = home / "产线三"
            shutil.copytree(self.place / "old", project)
            environment = dict(os.environ, LD_PRELOAD=str(self.interposer), FAULT_AT=str(operation),
                               FAULT_WITH=str(fault.errno), FAULT_STAYS=str(int(fault.stays)),
                               FAULT_SHORT=str(int(fault.short)), FAULT_CLOCK=str(self.clock),
                               XDG_DATA_HOME=str(data), LC_ALL="C.UTF-8")
            if trace:
                environment["FAULT_TRACE"] = str(trace)
            done = subprocess.run([self.program, "apply", self.place, project / PROJECT_FILE],
                                  env=environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                  timeout=PATIENCE)
            told = json.loads(done.stdout) if done.returncode == 0 else None
            return self.observe((layout, operation), told, done.returncode, data, project)
        finally:
            shutil.rmtree(data)
            shutil.rmtree(home)

    def observe(self, point, told, code, data, project):
        backups = sorted((data / "Quorvane/update/backup").iterdir())
        return Outcome(point[0], told, code, read_tree(project),
                       [read_tree(backup) for backup in backups])


Outcome = collections.namedtuple("Outcome", "layout told code project backups")


def whole(bench, outcome):
    """The name of a whole state, or None."""
    project, told = outcome.project, outcome.told
    backup = without_hidden(bench.old)
    new = bench.new[outcome.layout]
    killed = told is None
    if project == bench.old and (killed or not told["success"]):
        return "the old project, whole"
    if project == new and (killed or told["success"]):
        return "the new project, whole"
    if project == backup and (killed or not told["success"]):
        return "the backup in the project's place, whole: hidden entries are gone"
    if killed and backup in outcome.backups:
        return "killed during the swap: the backup lies whole in update/backup"
    return None


def is_stamp_file(name):
    """What the stamp writes: the project file, a new one beside it until it is whole, the sidecar."""
    return name in (PROJECT_FILE, SIDECAR) or name.startswith(PROJECT_FILE + ".")


def same_but_for_version(text, other):
    def content(json_text):
        document = json.loads(json_text)
        document["project"].pop("version", None)
        return document
    try:
        return content(text) == content(other)
    except ValueError:
        return False


def named_case(bench, outcome):
    """Outcomes that are known and kept, each also in docs/support.md. None for any other."""
    project, told = outcome.project, outcome.told
    killed = told is None
    message = "" if killed else told["message"]
    if project is None:
        return ("moving in and rolling back both fail: no project is left"
                if message.startswith("Replace failed, rolled back: unable to ") else None)
    new = bench.new[outcome.layout]
    unstamped = {name: content for name, content in new.items() if not is_stamp_file(name)}
    rest = {name: content for name, content in project.items() if not is_stamp_file(name)}
    whole_file = same_but_for_version(project.get(PROJECT_FILE, b""), new[PROJECT_FILE])
    if rest == unstamped and whole_file and (killed or told["success"]):
        return "version stamp: the new project is whole, its version is not recorded everywhere"
    if rest == unstamped and message == "No yslib after replace, rolled back.":
        return "told as rolled back: the new project stays"
    if rest == without_hidden(unstamped) and whole_file and (killed or told["success"]):
        return "moved in by copying: hidden files of the package are gone"
    if not killed and message.startswith("Replace failed, rolled back: unable to "):
        if is_part_of(project, without_hidden(bench.old)):
            return "partial backup or rollback: what was copied takes the project's place"
        if is_part_of(project, bench.old):
            return "removal fails twice: what is left of the project stays, without a backup"
    return None


def faults_at(operation):
    moves_data = operation.split(" ", 1)[0] in MOVE_DATA
    return [name for name, fault in FAULTS.items() if moves_data or not fault.short]


def name_of(bench, outcome, fault):
    """None for an outcome that is not listed."""
    if outcome.told is None and not (fault == "KILL" and outcome.code == -9):
        return None
    return whole(bench, outcome) or named_case(bench, outcome)


def judge(bench, layout, operation, fault):
    outcome = bench.run(layout, operation, FAULTS[fault])
    return name_of(bench, outcome, fault), outcome


def points_of(bench, layouts, every=1):
    return [(layout, operation, fault) for layout in layouts
            for operation in range(1, len(bench.operations[layout]) + 1, every)
            for fault in faults_at(bench.operations[layout][operation - 1])]


def explain(bench, layout, outcome):
    new = bench.new[layout]
    lines = [f"  told: {outcome.told}, exit code {outcome.code}, {len(outcome.backups)} backups"]
    if outcome.project is None:
        return "\n".join([*lines, "  there is no project folder"])
    for title, tree in (("old", bench.old), ("new", new)):
        missing = sorted(name for name in tree if name not in outcome.project)
        other = sorted(name for name in tree
                       if name in outcome.project and tree[name] != outcome.project[name])
        extra = sorted(name for name in outcome.project if name not in tree)
        lines.append(f"  beside the {title} project: missing {missing[:5]} ({len(missing)}), "
                     f"different {other[:5]} ({len(other)}), more {extra[:5]} ({len(extra)})")
    return "\n".join(lines)


def result_of(bench, point):
    try:
        name, outcome = judge(bench, *point)
    except subprocess.TimeoutExpired:
        return results.Result(None, f"  it did not end within {PATIENCE} s")
    return results.Result(name, "" if name else explain(bench, point[0], outcome))


def arguments():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--sample", type=int)
    chance.add_seed(parser)
    parser.add_argument("--every", type=int, default=1)
    parser.add_argument("--only", nargs=3, metavar=("LAYOUT", "OPERATION", "FAULT"))
    parser.add_argument("--list", action="store_true")
    results.add_options(parser)
    parser.add_argument("program", type=pathlib.Path)
    parser.add_argument("interposer", type=pathlib.Path)
    return parser.parse_args()


def run_points(bench, points, options):
    return results.run_points(options,
                              [(" ".join(map(str, point)), bench.operations[point[0]][point[1] - 1])
                               for point in points],
                              lambda number: result_of(bench, points[number]), "NOT LISTED")


def main():
    options = arguments()
    results.end_on_request()
    with volumes.two() as (near, far):
        bench = Bench(options.program, options.interposer.resolve(), near, far)
        layouts = volumes.layouts(near, far)
        if layouts == ["one"]:
            print("there is only one volume here: the layout \"two\" is left out")
        for layout in layouts:
            bench.measure(layout)
            print(f"layout {layout}: {len(bench.operations[layout])} operations")
        if options.list:
            for layout in layouts:
                for number, name in enumerate(bench.operations[layout], 1):
                    print(layout, number, name)
            return 0
        if options.only:
            layout, operation, fault = options.only
            name, outcome = judge(bench, layout, int(operation), fault)
            print(bench.operations[layout][int(operation) - 1])
            print(name or "NOT LISTED")
            print(explain(bench, layout, outcome))
            return 0 if name else 1
        points = points_of(bench, layouts, options.every)
        if options.sample:
            points = chance.sample_of(points, options.sample, chance.seed_of(options))
        failed = run_points(bench, points, options)
        print(f"{failed} outcomes that are not listed")
        return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
