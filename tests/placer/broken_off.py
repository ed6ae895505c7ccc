#!/usr/bin/env python3
"""Breaks the placer off at each of its file operations, by a kill and by a full disk.

    broken_off.py PLACER INTERPOSER

After a kill the installation is the old one or the new one, whole; or it is so after one run of what the
journal started, which is asked for once by `finish` and once by the next installer. A full disk leaves
the old one, or what `finish` brings to an end once there is room again.
"""
import collections
import errno
import hashlib
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

OLD = {
    "bin/Quorvaner.exe": "launcher 1.0.0",
    "bin/Qt5Core.dll": "library 1",
    "bin/gone.dll": "only in 1.0.0",
    "bin/config/FunctionLib.ini": "functions 1",
    "bin/config/launcher_notice.txt": "notice 1",
    "bin/config/update.pub": "key",
}
NEW = {
    "bin/Quorvaner.exe": "launcher 1.1.0",
    "bin/Qt5Core.dll": "library 2",
    "bin/platforms/qwindows.dll": "only in 1.1.0",
    "bin/config/FunctionLib.ini": "functions 2",
    "bin/config/launcher_notice.txt": "notice 2",
    "bin/config/update.pub": "key",
}
SITE = {"bin/config/FunctionLib.ini": "of the site", "USER/projects/line/main.ys": "project",
        "bin/LineRunner.exe": "runtime"}
VERSIONS = "bin/config/release_version.json"
CHANGING = {"write", "pwrite64", "fsync", "syncfs", "rename", "renameat2", "unlink", "mkdir", "link"}
DONE, REFUSED, TAKEN_BACK, UNFINISHED = range(4)


def write(root, files):
    for name, text in files.items():
        path = root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)


def unpack(root, run, files, version):
    hashes = {name: hashlib.sha256(text.encode()).hexdigest() for name, text in files.items()}
    write(root / "setup" / run / "new", files)
    write(root / "setup" / run, {"package.json": json.dumps({"version": version, "files": hashes})})


def tree(root):
    """All but what belongs to the installer, with the launcher's version in place of its file."""
    found = {str(path.relative_to(root)): path.read_text() for path in root.rglob("*")
             if path.is_file() and path.relative_to(root).parts[0] != "setup"}
    versions = json.loads(found.pop(VERSIONS, "{}"))
    return found, versions


class Trials:
    def __init__(self, placer, interposer, folder):
        self.placer, self.interposer = placer, interposer
        self.template = folder / "template"
        self.root = folder / "installation"
        self.trace = folder / "trace"
        unpack(self.template, "1", OLD, "1.0.0")
        self.run("place", "1", at=self.template)
        self.run("tidy", "1", at=self.template)
        write(self.template, SITE)
        (self.template / VERSIONS).write_text(
            '{"launcherPackageVersion": "1.0.0", "runtimePackageVersion": "3.1.4"}')
        unpack(self.template, "2", NEW, "1.1.0")
        self.old = tree(self.template)
        self.fresh()
        assert self.run("place", "2") == DONE
        self.new = tree(self.root)
        assert self.new[1] == {"launcherPackageVersion": "1.1.0", "runtimePackageVersion": "3.1.4"}
        assert self.new[0]["bin/config/FunctionLib.ini"] == "of the site"

    def run(self, *arguments, at=None, **fault):
        environment = dict(os.environ)
        if fault:
            environment.update({name: str(value) for name, value in fault.items()},
                               LD_PRELOAD=str(self.interposer), FAULT_START="1")
        task, run = arguments
        return subprocess.run([self.placer, task, at or self.root, run], env=environment,
                              stderr=subprocess.DEVNULL, check=False).returncode

    def fresh(self):
        shutil.rmtree(self.root, ignore_errors=True)
        shutil.copytree(self.template, self.root)

    def operations(self):
        """The numbers of the operations on files that change something, or wait for it to be on the disk."""
        self.fresh()
        assert self.run("place", "2", FAULT_TRACE=self.trace) == DONE
        lines = self.trace.read_text().splitlines()
        return [number for number, line in enumerate(lines, 1) if line.split(" ")[0] in CHANGING]

    def state(self):
        """Which program starts there. The version is told by a file that is written last."""
        files, versions = tree(self.root)
        if files == self.old[0] and versions == self.old[1]:
            return "old"
        if files == self.new[0]:
            return "new" if versions == self.new[1] else "new, its version not yet told"
        return None

    def second_run(self, kind):
        if kind == "finish":
            return self.run("finish", "2")
        unpack(self.root, "3", NEW, "1.1.0")
        return self.run("place", "3")

    def kill(self, point, kind):
        self.fresh()
        self.run("place", "2", FAULT_AT=point, FAULT_WITH=0)
        after = self.state()
        outcome = self.second_run(kind)
        whole = self.state()
        assert outcome == DONE, f"{kind} after a kill at {point} ended with {outcome}"
        if (self.root / "setup/journal.json").exists():
            raise AssertionError(f"a journal stands after {kind}, kill at {point}")
        allowed = ("old", "new") if kind == "finish" else ("new",)
        assert whole in allowed, f"{kind} after a kill at {point}: neither program is whole"
        return after or "between the renames"

    def full_disk(self, point):
        self.fresh()
        outcome = self.run("place", "2", FAULT_AT=point, FAULT_WITH=errno.ENOSPC, FAULT_STAYS=1)
        state = self.state()
        if outcome in (REFUSED, TAKEN_BACK):
            assert state == "old", f"full disk at {point}: {outcome}, but not as before"
        elif outcome == UNFINISHED:
            assert self.run("finish", "2") == DONE and self.state() in ("old", "new"), \
                f"full disk at {point}: cannot be finished"
        else:
            assert outcome == DONE and state in ("new", "old"), f"full disk at {point}: {outcome}"
        return {REFUSED: "refused", TAKEN_BACK: "taken back", UNFINISHED: "unfinished, then finished",
                DONE: "done"}[outcome]


def main():
    with tempfile.TemporaryDirectory(prefix="quorvane_placer_") as name:
        trials = Trials(pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), pathlib.Path(name))
        points = trials.operations()
        for kind in ("finish", "next installer"):
            # The way from there is the same for both, but for its beginning.
            some = points if kind == "finish" else points[::3]
            told = collections.Counter(trials.kill(point, kind) for point in some)
            print(f"{len(some)} kills, then {kind}: {dict(told)}")
            assert {"old", "between the renames", "new"} <= set(told), "some kind of kill never came"
        told = collections.Counter(trials.full_disk(point) for point in points)
        print(f"{len(points)} times a full disk: {dict(told)}")


if __name__ == "__main__":
    main()
