#!/usr/bin/env python3
"""The installer under Wine: what it puts in place, what it leaves alone, and what a kill leaves.

    installer.py --builder build-installer --package PACKAGE.zip --placer placer.exe
                 --program started.exe --prefix PREFIX [--every N] [--first N]

Two versions of a small package are installed one over the other. The installer is killed after each of
the changes that it and its placer make below the installation (with --every, after each N-th): the old
program starts, whole, or the new one, or one of them does after one run of what the journal has started,
which is the entry under RunOnce and the same installer in turn. Each kill is listed with what came of it.
"""
import argparse
import collections
import json
import mmap
import os
import pathlib
import re
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time
import zipfile

from prefix import LOADER, SERVER, copy_prefix, end_server, environment

FOLDER = "产线 3 & line's"
WINDOWS_FOLDER = "C:\\" + FOLDER
CURRENT = r"Software\Microsoft\Windows\CurrentVersion"
RUN_ONCE = "HKLM\\" + CURRENT + r"\RunOnce"
VERSIONS = "bin/config/release_version.json"
STARTED = 42
DONE, REFUSED, UNFINISHED = 0, 2, 3


def check(condition, what):
    if not condition:
        raise AssertionError(what)
    print("ok:", what, flush=True)


def content_of(program, version):
    """The files of a small package. What stands behind a program's end is no matter to Windows."""
    return {
        "bin/Quorvaner.exe": program + version.encode(),
        "bin/library.dll": b"library " + version.encode(),
        f"bin/only in {version}.txt": b"x",
        "bin/same.txt": b"the same",
        "README.md": b"read me " + version.encode(),
        "bin/config/FunctionLib.ini": b"functions " + version.encode(),
        "bin/config/update.pub": b"key",
        "share/schemas/a.json": b"schema " + version.encode(),
    }


def make_package(path, files, folders=("USER/",)):
    with zipfile.ZipFile(path, "w") as archive:
        for name, content in files.items():
            archive.writestr("Quorvaner/" + name, content)
        for name in folders:
            archive.writestr("Quorvaner/" + name, b"")


class Wine:
    """A prefix of its own, whose server stands still where it is told to."""

    def __init__(self, root, stop, template):
        self.root = root
        self.token = f"QUORVANE_KILLED={root.name}"
        self.control_path = root / "control"
        self.control_path.write_bytes(bytes(12))
        self.trace = root / "trace"
        with open(self.control_path, "r+b") as file:
            self.control = mmap.mmap(file.fileno(), 12)
        self.prefix = root / "wine"
        copy_prefix(template, self.prefix)
        self.environment = environment(self.prefix, os.environ)
        self.environment.pop("DISPLAY", None)
        subprocess.run([SERVER, "-p"], check=True, env=dict(
            self.environment, LD_PRELOAD=str(stop), STOP_CONTROL=str(self.control_path), STOP_BELOW=FOLDER,
            STOP_TRACE=str(self.trace)))
        self.run("net", "start", "RpcSs")
        self.installed = self.prefix / "drive_c" / FOLDER

    def run(self, *command, check=False, text=False):
        return subprocess.run([LOADER, *map(str, command)], env=self.environment, check=check,
                              stdout=subprocess.PIPE if text else subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL, timeout=300)

    def number(self, at, value=None):
        if value is not None:
            self.control[at * 4:at * 4 + 4] = struct.pack("=I", value)
        return struct.unpack("=I", self.control[at * 4:at * 4 + 4])[0]

    def killed_after(self, change, *command):
        """Whether the change was reached; 0 lets the command end. The number of changes seen is kept."""
        self.number(1, 0)
        self.number(0, change)
        name, _, value = self.token.partition("=")
        process = subprocess.Popen([LOADER, *map(str, command)], stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL, env={**self.environment, name: value})
        while process.poll() is None and self.number(2) == 0:
            time.sleep(0.01)
        reached = self.number(2) != 0
        if reached:
            self.kill_family()
        self.number(0, 0)
        self.number(2, 0)
        process.wait(300)
        return reached, process.returncode

    def kill_family(self):
        for entry in pathlib.Path("/proc").iterdir():
            if not entry.name.isdigit():
                continue
            try:
                if self.token.encode() in (entry / "environ").read_bytes().split(b"\0"):
                    os.kill(int(entry.name), signal.SIGKILL)
            except (OSError, ProcessLookupError):
                pass

    def registry(self, key, value=None):
        answer = self.run("reg", "query", key, *(["/v", value] if value else ["/s"]), text=True)
        return answer.stdout.decode("utf-8", "replace") if answer.returncode == 0 else ""

    def run_once(self):
        """The command that the next logon would run, from a file, since what goes to a pipe is in ASCII."""
        exported = self.root / "run_once.reg"
        self.run("reg", "export", RUN_ONCE, "Z:" + str(exported), "/y")
        text = exported.read_bytes().decode("utf-16").replace("\r\n", "\n") if exported.exists() else ""
        exported.unlink(missing_ok=True)
        found = re.search(r'^".*"="\\"(.*)\\" (/finish)"$', text, re.M)
        return (found[1].replace("\\\\", "\\"), found[2]) if found else None

    def close(self):
        end_server(self.environment)


class Trials:
    def __init__(self, root, wish):
        self.root = root
        program = wish.program.read_bytes()
        self.content = {version: content_of(program, version) for version in ("1.0.0", "1.1.0")}
        self.setup = {}
        for version, files in self.content.items():
            package = root / f"{version}.zip"
            make_package(package, files)
            self.setup[version] = self.build(wish, package, version)
        stop = root / "server_stop.so"
        subprocess.run(["g++", "-O1", "-Wall", "-Wextra", "-Werror", "-shared", "-fPIC", "-o", stop,
                        pathlib.Path(__file__).with_name("server_stop.cpp"), "-ldl"], check=True)
        self.wine = Wine(root, stop, wish.prefix)
        self.second_runs = 0
        self.template = root / "template"

    def build(self, wish, package, version, *more):
        out = self.root / "installers"
        subprocess.run([wish.builder, "--quickly", "--package", package, "--placer", wish.placer, "--version", version,
                        "--libraries", wish.package, "--out", out, *more], check=True, stdout=subprocess.DEVNULL)
        return out / f"quorvaner-setup-{version}.exe"

    def command(self, version):
        # /D takes no quotes, which Wine would put around one argument.
        return [self.setup[version], "/S", *("/D=" + WINDOWS_FOLDER).split(" ")]

    def install(self, version):
        return self.wine.run(*self.command(version)).returncode

    def tree(self):
        root = self.wine.installed
        files = {path.relative_to(root).as_posix(): path.read_bytes() for path in root.rglob("*") if path.is_file()}
        return {name: text for name, text in files.items() if not name.startswith("setup/")}

    def first_installation(self):
        check(self.install("1.0.0") == DONE, "the first version is installed silently")
        expected = dict(self.content["1.0.0"])
        found = self.tree()
        check(json.loads(found.pop(VERSIONS)) == {"launcherPackageVersion": "1.0.0"}, "its version is told")
        check(found == expected, "its files are in place, and nothing else")
        check((self.wine.installed / "USER").is_dir(), "there is a folder for the user")
        entry = self.wine.registry("HKLM\\" + CURRENT + r"\Uninstall")
        for text in ("DisplayVersion    REG_SZ    1.0.0", "UninstallString", "EstimatedSize"):
            check(text in entry, f"the entry under the installed programs has {text}")
        links = list(self.wine.prefix.rglob("Quorvaner.lnk"))
        check(len(links) == 1, "there is an entry in the start menu")
        check(self.wine.run_once() is None, "nothing is left to be run once")

    def site_changes(self):
        root = self.wine.installed
        (root / "bin/config/FunctionLib.ini").write_bytes(b"of the site")
        (root / "USER/projects").mkdir()
        (root / "USER/projects/a.ys").write_bytes(b"project")
        (root / VERSIONS).write_text('{"launcherPackageVersion": "1.0.0", "runtimePackageVersion": "3.1.4"}')
        self.site = {"bin/config/FunctionLib.ini": b"of the site", "USER/projects/a.ys": b"project"}
        shutil.copytree(root, self.template)
        self.old = {**self.content["1.0.0"], **self.site}
        self.new = {**self.content["1.1.0"], **self.site,
                    "bin/config/FunctionLib.ini.new": b"functions 1.1.0"}

    def fresh(self):
        shutil.rmtree(self.wine.installed)
        shutil.copytree(self.template, self.wine.installed)
        self.wine.run("reg", "delete", RUN_ONCE, "/va", "/f")

    def state(self):
        """Which version is there, whole, and starts."""
        found = self.tree()
        versions = json.loads(found.pop(VERSIONS)) if VERSIONS in found else {}
        name = None
        if found == self.old:
            name = "old"
        elif found == self.new:
            told = versions.get("launcherPackageVersion")
            name = "new" if told == "1.1.0" else "new, its version not yet told"
        if name and self.wine.run(self.wine.installed / "bin/Quorvaner.exe").returncode != STARTED:
            return None
        if name and versions.get("runtimePackageVersion") != "3.1.4":
            raise AssertionError("the version of another component is lost")
        return name

    def kill(self, point):
        self.fresh()
        reached, _ = self.wine.killed_after(point, *self.command("1.1.0"))
        if not reached:
            return None
        after = self.state()
        journal = (self.wine.installed / "setup/journal.json").exists()
        again = "-"
        if after is None or journal or after.startswith("new,"):
            once = self.wine.run_once()
            self.second_runs += 1
            if self.second_runs % 2 and once:
                again = "RunOnce"
                code = self.wine.run(*once).returncode
            else:
                again = "the installer"
                code = self.install("1.1.0")
            if code != DONE or self.state() not in ("old", "new"):
                raise AssertionError(f"kill {point}, then {again}: {code}, {self.state()}")
        if (self.wine.installed / "setup/journal.json").exists():
            raise AssertionError(f"kill {point}: a journal is left")
        return after or "between the renames", again

    def kills(self, every, first):
        self.fresh()
        self.wine.trace.write_text("")
        check(self.wine.killed_after(0, *self.command("1.1.0"))[1] == DONE, "the next version is installed")
        check(self.state() == "new", "and is whole; what the site has changed is in force")
        number = self.wine.number(1)
        names = self.wine.trace.read_text(encoding="utf-8").splitlines()
        told = collections.Counter()
        for point in range(first, number + 1, every):
            result = self.kill(point)
            if result is None:
                break
            told[result] += 1
            name = names[point - 1].replace(str(self.wine.installed) + "/", "") if point <= len(names) else ""
            print(f"kill {point:3} of {number} after {name}: {result[0]}; second run: {result[1]}", flush=True)
        for (after, again), count in sorted(told.items()):
            print(f"kills: {count} left {after}; second run: {again}")
        check(sum(told.values()) >= 30, f"{sum(told.values())} kills")

    def removal(self):
        self.fresh()
        root = self.wine.installed
        # Entries of the version that is there, which the kills have written over.
        check(self.install("1.0.0") == DONE, "the version that is there is installed again")
        tool = max((root / "setup").glob("*/tool"), key=lambda path: int(path.parent.name))
        check(self.uninstall(tool) == {**self.site, VERSIONS: self.tree().get(VERSIONS)},
              "the uninstaller leaves what is the site's, and nothing else")
        check("Quorvaner" not in self.wine.registry("HKLM\\" + CURRENT + r"\Uninstall"),
              "the entry under the installed programs is gone")
        check(not list(self.wine.prefix.rglob("Quorvaner.lnk")), "the entry in the start menu is gone")

    def uninstall(self, tool):
        copy = self.root / "tool"
        shutil.copytree(tool, copy)  # as it does itself, where nobody can wait for it
        for expected in (DONE, REFUSED):
            code = self.wine.run(copy / "uninstall.exe", "/S",
                                 *f'/from={WINDOWS_FOLDER}'.split(" ")).returncode
            check(code == expected, f"the uninstaller ends with {expected}")
        return self.tree()


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    for name in ("--builder", "--package", "--placer", "--program", "--prefix"):
        parser.add_argument(name, type=pathlib.Path, required=True)
    parser.add_argument("--every", type=int, default=1)
    parser.add_argument("--first", type=int, default=1)
    wish = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="quorvane_installer_") as name:
        trials = Trials(pathlib.Path(name), wish)
        try:
            trials.first_installation()
            trials.site_changes()
            trials.kills(wish.every, wish.first)
            trials.removal()
        finally:
            trials.wine.close()


if __name__ == "__main__":
    sys.exit(main())
