#!/usr/bin/env python3
"""Breaks a release off at its file operations and looks at the site that is published.

  release.py TOOL INTERPOSER            kills it at each operation that finds another disk than the one before
                                        did, and lets each of these fail: EACCES, ENOSPC, EIO, from then on a
                                        full disk (FULL)
  release.py --sample N ...             N of these, chosen by chance: others each run
  release.py --sample N --seed S ...    the N that a run with this seed chose; the environment variable
                                        FAULT_SEED gives one too
  release.py --kills ...                the kills alone, all of them
  release.py --only OPERATION FAULT ... one of them, with what the tool says
  release.py --results FILE ...         keeps what came of each point in FILE, and tries only those that it
                                        does not know yet

The site must verify, with the manifest before or the new one, and hold each package that it names with its
hash; where the tool says that it failed, the manifest must be the one before, to the byte. The next release
must succeed and leave nothing of the first one's work behind. Ends with 1 if anything else came.
"""
import argparse
import collections
import errno
import hashlib
import json
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile

import chance
import results
import volumes

Fault = collections.namedtuple("Fault", "errno stays")
FAULTS = {"KILL": Fault(0, False), "EACCES": Fault(errno.EACCES, False),
          "ENOSPC": Fault(errno.ENOSPC, False), "EIO": Fault(errno.EIO, False),
          "FULL": Fault(errno.ENOSPC, True)}
ONLY_LOOK = ("read", "pread64", "readdir", "readdir64", "opendir", "fdopendir")
PROJECT = {"schemaVersion": 1,
           "project": {"name": "line3", "displayName": "Line 3", "createdAt": "2026-01-02"},
           "scripts": [{"id": "main", "path": "main.ys", "role": "main"}],
           "tasks": {"main": {"entryScriptId": "main"}}}
NAMES = ["manifest.json", "packages", "packages/line3-1.0.0.zip", "packages/runtime-setup-1.3.0.exe"]


def names_below(folder):
    return sorted(str(path.relative_to(folder)) for path in folder.rglob("*"))


class ReleaseBench:
    """A site with one release, and the project of which the next one is made."""

    def __init__(self, tool, interposer, place):
        self.tool = tool
        self.interposer = interposer
        self.place = place
        project = place / "line3"
        project.mkdir()
        (project / "line3.yslib").write_text(json.dumps(PROJECT), encoding="utf-8")
        (project / "main.ys").write_text("int a = 1;\n", encoding="utf-8")
        self.must("keys", "new", "keys", "--no-encrypt")
        self.site = place / "site"
        self.must("update", "release", "site", "line3", "--version", "1.0.0", "--key",
                  "keys/private.pem")
        (self.site / "packages/runtime-setup-1.3.0.exe").write_bytes(b"an installer")
        self.must("update", "manifest", "--out", "site/next.json", "--previous",
                  "site/manifest.json", "--runtime", "site/packages/runtime-setup-1.3.0.exe")
        self.must("update", "sign", "site/next.json", "--key", "keys/private.pem", "--out",
                  "site/manifest.json", "--force")
        (self.site / "next.json").unlink()
        assert names_below(self.site) == NAMES, names_below(self.site)
        (project / "main.ys").write_text("int a = 2;\n", encoding="utf-8")
        self.operations = []

    def call(self, folder, *arguments, **more):
        environment = dict(os.environ, LC_ALL="C.UTF-8", TMPDIR=str(folder), **more)
        return subprocess.run([self.tool, *arguments], cwd=folder, env=environment,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, timeout=300, check=False)

    def must(self, *arguments):
        done = self.call(self.place, *arguments)
        if done.returncode != 0:
            sys.exit(f"{arguments}: {done.stdout}")

    def release(self, folder, **more):
        return self.call(folder, "update", "release", "site", str(self.place / "line3"),
                         "--version", "1.1.0", "--key", str(self.place / "keys/private.pem"), **more)

    def measure(self):
        with tempfile.TemporaryDirectory(dir=self.place) as folder:
            trace = pathlib.Path(folder, "trace")
            shutil.copytree(self.site, pathlib.Path(folder, "site"))
            done = self.release(folder, LD_PRELOAD=str(self.interposer), FAULT_START="1",
                                FAULT_TRACE=str(trace))
            if done.returncode != 0:
                sys.exit(f"a release without a fault: {done.stdout}")
            self.operations = trace.read_text(encoding="utf-8", errors="replace").splitlines()

    def points(self, faults):
        """Two operations with nothing but looking in between find the same disk."""
        kinds = [operation.split(" ")[0] for operation in self.operations]
        first = next(number for number, operation in enumerate(self.operations)
                     if "site" in operation)
        for number in range(first, len(kinds)):
            if number == first or kinds[number - 1] not in ONLY_LOOK:
                yield from ((number + 1, fault) for fault in faults
                            if fault == "KILL" or kinds[number] not in ONLY_LOOK)

    def run(self, operation, fault):
        """The outcome and what the tool said."""
        wanted = FAULTS[fault]
        with tempfile.TemporaryDirectory(dir=self.place) as folder:
            site = pathlib.Path(folder, "site")
            shutil.copytree(self.site, site)
            done = self.release(folder, LD_PRELOAD=str(self.interposer), FAULT_START="1",
                                FAULT_AT=str(operation), FAULT_WITH=str(wanted.errno),
                                FAULT_STAYS=str(int(wanted.stays)))
            name = self.judge(site, done.returncode, fault)
            if name is None:
                return results.Result(None, f"{done.returncode}: {done.stdout}{names_below(site)}")
            again = self.release(folder)
            if not self.is_brought_on(site, name, again):
                return results.Result(None, f"{done.stdout}again: {again.stdout}{names_below(site)}")
            return results.Result(name, done.stdout)

    def judge(self, site, code, fault):
        if not self.is_published(site):
            return None
        is_old = (site / "manifest.json").read_bytes() == (self.site / "manifest.json").read_bytes()
        if fault == "KILL":
            if code not in (-signal.SIGKILL, 0):
                return None
            return "killed: the manifest before" if is_old else "killed: the new manifest"
        if code == 0:
            return None if is_old else "it went on: the new manifest"
        # What it could not clear away stays until the next release.
        return "it failed: the manifest before" if code in (1, 2) and is_old else None

    def is_published(self, site):
        manifest = site / "manifest.json"
        verified = self.call(self.place, "update", "verify", str(manifest), "--key",
                             "keys/update.pub")
        if verified.returncode != 0:
            return False
        offered = json.loads(manifest.read_text(encoding="utf-8"))
        records = [(offered["runtime"]["setupUrl"], offered["runtime"]["setupSha256"])]
        records += [(one["zipUrl"], one["zipSha256"]) for one in offered["projects"]]
        return all(hashlib.sha256((site / url).read_bytes()).hexdigest() == wanted
                   for url, wanted in records)

    def is_brought_on(self, site, name, again):
        is_done = ("is not above 1.1.0" in again.stdout and again.returncode == 2
                   if name.endswith("the new manifest") else again.returncode == 0)
        return (is_done and self.is_published(site) and
                names_below(site) == sorted([*NAMES, "packages/line3-1.1.0.zip"]))


def arguments():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--sample", type=int)
    parser.add_argument("--kills", action="store_true")
    chance.add_seed(parser)
    parser.add_argument("--only", nargs=2, metavar=("OPERATION", "FAULT"))
    results.add_options(parser)
    for name in ("tool", "interposer"):
        parser.add_argument(name, type=pathlib.Path)
    return parser.parse_args()


def main():
    options = arguments()
    results.end_on_request()
    with volumes.one() as place:
        bench = ReleaseBench(options.tool.resolve(), options.interposer.resolve(), place)
        bench.measure()
        if options.only:
            operation, fault = options.only
            result = bench.run(int(operation), fault)
            print(f"{bench.operations[int(operation) - 1]}\n{result.said}\n{result.name}")
            return 0 if result.name else 1
        points = list(bench.points(["KILL"] if options.kills else FAULTS))
        print(f"{len(bench.operations)} operations, {len(points)} points")
        if options.sample:
            points = chance.sample_of(points, options.sample, chance.seed_of(options))
        bad = results.run_points(options,
                                 [(f"{operation} {fault}", bench.operations[operation - 1])
                                  for operation, fault in points],
                                 lambda number: bench.run(*points[number]), "NOT PUBLISHED")
        print(f"{bad} of {len(points)} left a site that nobody may find")
        return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
